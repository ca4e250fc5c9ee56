#include "base/src/inRegistry.h"

#include "base/inVariable.h"
#include "base/typeName.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <utility>

namespace Ko {

namespace {

constexpr char const* source = "base\\src\\inRegistry";

bool contains(InRegistry::Packages const& packages, InPackageInit::Type type) {
    return std::any_of(
        packages.begin(), packages.end(), [&](InPackageInit* package) { return package->getPackageType() == type; });
}

std::string quoted(InPackageInit const& package) {
    return "\"" + package.getName() + "\"";
}

std::string names(InRegistry::Packages const& packages) {
    std::string result;
    for (InPackageInit const* const package : packages)
        result += (result.empty() ? "" : ", ") + quoted(*package);
    return result;
}

// Runs a hook; what it throws goes on with the package's name before its reason, and with its own type where that is one
// of the framework's.
template <class Hook>
void callHook(InPackageInit& package, char const* what, Hook hook) {
    std::string const context = "Package " + quoted(package) + " could not be " + what;
    try {
        hook(package);
    } catch (ExBase& error) {
        error.addContext(context);
        throw;
    } catch (std::exception const& error) {
        throw InInitEx(source, __LINE__, context + ": " + error.what());
    } catch (...) {
        throw InInitEx(source, __LINE__, context);
    }
}

void initializePackage(InPackageInit& package) {
    callHook(package, "initialised", [](InPackageInit& initialized) {
        for (InVariableBase* const variable : initialized.getVariables())
            variable->resolve();
        initialized.initialize();
    });
    package.setInitialized(true);
}

void keepFirst(std::exception_ptr& first) {
    if (!first) {
        first = std::current_exception();
        return;
    }
    try {
        throw;
    } catch (std::exception const& error) {
        std::cerr << error.what() << std::endl;
    }
}

} // namespace

InRegistry& InRegistry::getInstance() {
    // Packages register before, and may leave after, every other static object.
    static auto& registry = *std::make_unique<InRegistry>().release();
    return registry;
}

void InRegistry::add(InPackageInit* package) {
    std::lock_guard const guard(_mutex);
    _waiting.push_back(package);
}

void InRegistry::remove(InPackageInit* package) {
    std::lock_guard const guard(_mutex);
    std::erase(_waiting, package);
    std::erase(_initialized, package);
    std::erase(_toPostInitialize, package);
}

std::vector<std::string> InRegistry::argumentAliases() {
    std::lock_guard const guard(_mutex);
    std::vector<std::string> aliases;
    for (InPackageInit const* const package : _waiting)
        for (InVariableBase const* const variable : package->getVariables())
            aliases.insert(aliases.end(), variable->getArgumentAliases().begin(), variable->getArgumentAliases().end());
    return aliases;
}

void InRegistry::dropWaiting() {
    takeWaiting();
}

InRegistry::Packages InRegistry::takeWaiting() {
    std::lock_guard const guard(_mutex);
    return std::exchange(_waiting, {});
}

bool InRegistry::isInitialized(InPackageInit::Type type) {
    std::lock_guard const guard(_mutex);
    return contains(_initialized, type);
}

// Always the first registered package whose dependencies come before it.
InRegistry::Packages InRegistry::inOrder(Packages packages) {
    Packages ordered;
    auto const isBefore = [&](InPackageInit::Type type) { return contains(ordered, type) || isInitialized(type); };
    for (InPackageInit const* const package : packages)
        for (InPackageInit::Type const type : package->getDependencies())
            if (!contains(packages, type) && !isInitialized(type))
                throw InInitEx(source, __LINE__,
                    "Package " + quoted(*package) + " depends on " + typeNameOf(type.name()) +
                        ", which is not registered.");
    while (!packages.empty()) {
        auto const next = std::find_if(packages.begin(), packages.end(), [&](InPackageInit const* package) {
            return std::all_of(package->getDependencies().begin(), package->getDependencies().end(), isBefore);
        });
        if (next == packages.end())
            throw InInitEx(source, __LINE__, "Packages depend on each other in a circle: " + names(packages) + ".");
        ordered.push_back(*next);
        packages.erase(next);
    }
    return ordered;
}

void InRegistry::initializeWaiting(InInitMgr::InitType type) {
    Packages const batch = inOrder(takeWaiting());
    ++_startUps;
    try {
        initializeBatch(batch);
        if (type != InInitMgr::Recursive || _startUps == 1) callPostInitialize();
    } catch (...) {
        --_startUps;
        rollBack(batch);
        throw;
    }
    --_startUps;
}

void InRegistry::initializeBatch(Packages const& batch) {
    for (InPackageInit* const package : batch) {
        initializePackage(*package);
        std::lock_guard const guard(_mutex);
        _initialized.push_back(package);
        _toPostInitialize.push_back(package);
    }
}

void InRegistry::callPostInitialize() {
    Packages packages;
    {
        std::lock_guard const guard(_mutex);
        packages.swap(_toPostInitialize);
    }
    for (InPackageInit* const package : packages)
        callHook(*package, "initialised", [](InPackageInit& initialized) { initialized.postInitialize(); });
}

// Those of the batch that are initialised, and whatever depends on them by now, in the order of their initialisation.
InRegistry::Packages InRegistry::withDependents(Packages const& batch) {
    std::lock_guard const guard(_mutex);
    Packages doomed;
    for (InPackageInit* const package : _initialized) {
        auto const& dependencies = package->getDependencies();
        bool const depends = std::any_of(dependencies.begin(), dependencies.end(),
            [&](InPackageInit::Type dependency) { return contains(doomed, dependency); });
        if (depends || std::find(batch.begin(), batch.end(), package) != batch.end()) doomed.push_back(package);
    }
    return doomed;
}

void InRegistry::rollBack(Packages const& batch) {
    std::exception_ptr ignored = std::current_exception();
    finalizePackages(withDependents(batch), ignored);
}

void InRegistry::finalizeAll() {
    std::exception_ptr firstError;
    finalizePackages(Packages(_initialized), firstError);
    if (firstError) std::rethrow_exception(firstError);
}

void InRegistry::finalizePackages(Packages const& packages, std::exception_ptr& firstError) {
    auto const callEach = [&](auto hook) {
        for (auto package = packages.rbegin(); package != packages.rend(); ++package)
            try {
                callHook(**package, "finalised", hook);
            } catch (...) {
                keepFirst(firstError);
            }
    };
    callEach([](InPackageInit& package) { package.preFinalize(); });
    callEach([this](InPackageInit& package) {
        package.setInitialized(false);
        {
            std::lock_guard const guard(_mutex);
            std::erase(_initialized, &package);
            std::erase(_toPostInitialize, &package);
        }
        package.finalize();
    });
}

} // namespace Ko
