// The post-initialise hooks, and finalising packages: after a failure and at the end of the process.
#include "base/exBase.h"
#include "base/src/inHooks.h"
#include "base/src/inRegistry.h"
#include "base/src/inRegistryParts.h"

#include <algorithm>
#include <iostream>
#include <limits>

namespace Ko {

namespace {

constexpr std::size_t afterAll = std::numeric_limits<std::size_t>::max();

// Reports the current exception. An exception that is not an ordinary error is thrown again.
void reportLateFailure(InRegistry::LateFailure const* onFailure) {
    try {
        throw;
    } catch (ExProgramAborted const&) {
        throw;
    } catch (ExBase const& error) {
        if (onFailure && *onFailure)
            (*onFailure)(error);
        else
            std::cerr << error.what() << std::endl;
    }
}

} // namespace

// Also calls the hooks of packages that other hooks add meanwhile.
void InRegistry::callPostInitialize(StartUp const& startUp, Batch& batch) {
    for (ToPostInitialize entry; (entry = nextToPostInitialize(startUp)).package;)
        callPostInitialize(entry, &batch);
}

// For the packages that stay initialised after another one of their start-up has failed. The first error is passed on by the
// caller.
void InRegistry::callPostInitializeOfRest(StartUp const& startUp) {
    InFirstError errors;
    for (ToPostInitialize entry; (entry = nextToPostInitialize(startUp)).package;)
        try {
            callPostInitialize(entry, nullptr);
        } catch (...) {
            errors.add();
        }
}

// A failure of a package of `batch`, which may be null, is passed on. Any other package belongs to a library that was opened
// within the start-up: only the packages of that library are finalised, and the start-up goes on.
void InRegistry::callPostInitialize(ToPostInitialize const& entry, Batch* batch) {
    try {
        callHook(*entry.package, "initialised", [](InPackageInit& package) { package.postInitialize(); });
    } catch (...) {
        if (batch && entry.batch == batch->number) {
            batch->failed = entry.package;
            throw;
        }
        InFirstError errors;
        void const* const library = libraryOf(entry.package);
        finalizePackages({false, entry.batch, library, library}, errors);
        reportLateFailure(entry.onFailure.get());
    }
}

InRegistry::ToPostInitialize InRegistry::nextToPostInitialize(StartUp const& startUp) {
    std::lock_guard const guard(_mutex);
    auto const next = std::find_if(_toPostInitialize.begin(), _toPostInitialize.end(),
        [&](ToPostInitialize const& entry) { return entry.startUp == &startUp; });
    if (next == _toPostInitialize.end()) return {};
    ToPostInitialize entry = std::move(*next);
    _toPostInitialize.erase(next);
    return entry;
}

// Packages that did not fail and were not initialised return to the waiting ones, without a guard. Must not allocate, as
// memory may have run out: the packages come from the waiting ones, so there is room for them.
void InRegistry::takeBack(Batch const& batch) {
    InFirstError errors;
    Fault const fault = batch.getFault();
    finalizePackages(fault, errors);
    for (std::size_t index = batch.turns; index < batch.packages.size(); ++index) {
        InPackageInit* const package = batch.packages[index];
        if (fault.includes(package, batch.number) || findInitialized(package->getPackageType())) continue;
        std::lock_guard const guard(_mutex);
        _waiting.push_back({package, nullptr});
    }
}

void InRegistry::finalizeAll() {
    InFirstError errors;
    finalizePackages({true}, errors);
    errors.rethrow();
}

// In the reverse order of initialisation. Must not allocate.
void InRegistry::finalizePackages(Fault const& fault, InFirstError& errors) {
    auto const call = [&](InPackageInit& package, auto hook) {
        try {
            callHook(package, "finalised", hook);
        } catch (...) {
            errors.add();
        }
    };
    std::size_t end = afterAll;
    while (InPackageInit* const package = lastAtFault(fault, end))
        call(*package, [](InPackageInit& chosen) { chosen.preFinalize(); });
    // The search starts at the end each time, as a hook may have initialised packages.
    while (InPackageInit* const package = lastAtFault(fault, end = afterAll)) {
        package->setInitialized(false);
        {
            auto const isOf = [package](auto const& entry) { return entry.package == package; };
            std::lock_guard const guard(_mutex);
            std::erase_if(_initialized, isOf);
            std::erase_if(_toPostInitialize, isOf);
        }
        call(*package, [](InPackageInit& chosen) { chosen.finalize(); });
    }
}

// The last package before `end` that has to be finalised; `end` becomes its place.
InPackageInit* InRegistry::lastAtFault(Fault const& fault, std::size_t& end) {
    std::lock_guard const guard(_mutex);
    markAtFault(fault);
    for (end = std::min(end, _initialized.size()); end-- > 0;)
        if (_initialized[end].isAtFault) return _initialized[end].package;
    return nullptr;
}

// One pass is enough, as packages come after their dependencies. Called under the lock.
void InRegistry::markAtFault(Fault const& fault) {
    std::size_t first = _initialized.size();
    for (std::size_t index = 0; index < _initialized.size(); ++index) {
        Initialized& entry = _initialized[index];
        entry.isAtFault = fault.includes(entry.package, entry.batch) || dependsOnFault(*entry.package, first, index);
        if (entry.isAtFault) first = std::min(first, index);
    }
}

bool InRegistry::dependsOnFault(InPackageInit const& package, std::size_t first, std::size_t end) const {
    auto const& types = package.getDependencies();
    for (std::size_t index = first; index < end; ++index)
        if (_initialized[index].isAtFault &&
            std::find(types.begin(), types.end(), _initialized[index].package->getPackageType()) != types.end())
            return true;
    return false;
}

} // namespace Ko
