#include "base/src/inRegistry.h"

#include "base/inVariable.h"
#include "base/neverDestroyed.h"
#include "base/src/inHooks.h"
#include "base/src/inOrder.h"
#include "base/src/inRegistryParts.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace Ko {

namespace {

thread_local InOpeningGuard const* currentGuard = nullptr;

void initializePackage(InPackageInit& package) {
    callHook(package, "initialised", [](InPackageInit& initialized) {
        for (InVariableBase* const variable : initialized.getVariables())
            variable->resolve();
        initialized.initialize();
    });
    package.setInitialized(true);
}

} // namespace

InRegistry& InRegistry::getInstance() {
    // Packages register before every other static object, and may be destroyed after it.
    static NeverDestroyed<InRegistry> registry;
    return *registry;
}

InOpeningGuard const* InRegistry::enter(InOpeningGuard const* guard) noexcept {
    return std::exchange(currentGuard, guard);
}

void InRegistry::add(InPackageInit* package) {
    std::lock_guard const guard(_mutex);
    _waiting.push_back({package, currentGuard});
}

void InRegistry::remove(InPackageInit* package) {
    auto const isOf = [package](auto const& entry) { return entry.package == package; };
    std::lock_guard const guard(_mutex);
    std::erase_if(_waiting, isOf);
    std::erase_if(_initialized, isOf);
    std::erase_if(_toPostInitialize, isOf);
}

std::vector<std::string> InRegistry::argumentAliases() {
    std::lock_guard const guard(_mutex);
    std::vector<std::string> aliases;
    for (Waiting const& waiting : _waiting)
        for (InVariableBase const* const variable : waiting.package->getVariables())
            aliases.insert(aliases.end(), variable->getArgumentAliases().begin(), variable->getArgumentAliases().end());
    return aliases;
}

void InRegistry::drop(InOpeningGuard const* guard) noexcept {
    std::lock_guard const lock(_mutex);
    auto const last = std::find_if(
        _waiting.rbegin(), _waiting.rend(), [guard](Waiting const& waiting) { return waiting.guard == guard; });
    if (last == _waiting.rend()) return;
    void const* const library = libraryOf(last->package);
    std::erase_if(_waiting,
        [&](Waiting const& waiting) { return waiting.guard == guard && libraryOf(waiting.package) == library; });
    for (Waiting& waiting : _waiting)
        if (waiting.guard == guard) waiting.guard = nullptr;
}

InRegistry::Packages InRegistry::take(InOpeningGuard const* guard) {
    std::lock_guard const lock(_mutex);
    Packages packages;
    for (Waiting const& waiting : _waiting)
        if (waiting.guard == guard) packages.push_back(waiting.package);
    std::erase_if(_waiting, [guard](Waiting const& waiting) { return waiting.guard == guard; });
    return packages;
}

unsigned long InRegistry::nextBatchNumber() {
    std::lock_guard const guard(_mutex);
    return ++_batches;
}

InPackageInit const* InRegistry::findInitialized(InPackageInit::Type type) {
    std::lock_guard const guard(_mutex);
    auto const found = std::find_if(_initialized.begin(), _initialized.end(),
        [&](Initialized const& entry) { return entry.package->getPackageType() == type; });
    return found == _initialized.end() ? nullptr : found->package;
}

// Adds the waiting packages without a guard on which the batch depends.
void InRegistry::takeDependencies(Packages& batch) {
    std::lock_guard const guard(_mutex);
    for (std::size_t index = 0; index < batch.size(); ++index)
        for (InPackageInit::Type const type : std::vector(batch[index]->getDependencies())) {
            auto const found = std::find_if(_waiting.begin(), _waiting.end(),
                [type](Waiting const& waiting) { return !waiting.guard && waiting.package->getPackageType() == type; });
            if (found == _waiting.end()) continue;
            batch.push_back(found->package);
            _waiting.erase(found);
        }
}

void InRegistry::initialize(
    InOpeningGuard const* guard, InInitMgr::InitType type, std::shared_ptr<LateFailure const> const& onLateFailure) {
    Batch batch(take(guard), type, nextBatchNumber(), onLateFailure);
    std::optional<StartUp> own;
    if (type != InInitMgr::Recursive || !StartUp::innermost) own.emplace();
    try {
        takeDependencies(batch.packages);
        sortByDependencies(
            batch.packages, [this](InPackageInit::Type package) { return findInitialized(package); }, batch.failed);
        initializePackages(batch);
        if (own) callPostInitialize(*own, batch);
    } catch (...) {
        takeBack(batch);
        if (own) callPostInitializeOfRest(*own);
        throw;
    }
}

void InRegistry::initializePackages(Batch& batch) {
    for (InPackageInit* const package : batch.packages) {
        batch.failed = package;
        ++batch.turns;
        initializePackage(*package);
        try {
            noteInitialized(*package, batch);
        } catch (...) {
            package->setInitialized(false);
            package->finalize();
            throw;
        }
    }
}

void InRegistry::noteInitialized(InPackageInit& package, Batch const& batch) {
    std::lock_guard const guard(_mutex);
    _initialized.push_back({&package, batch.number});
    try {
        _toPostInitialize.push_back({&package, batch.number, StartUp::innermost, batch.onLateFailure});
    } catch (...) {
        _initialized.pop_back();
        throw;
    }
}

} // namespace Ko
