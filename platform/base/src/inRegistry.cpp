#include "base/src/inRegistry.h"

#include "base/inVariable.h"
#include "base/neverDestroyed.h"
#include "base/src/libraryPath.h"
#include "base/typeName.h"

#include <algorithm>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
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
    // Made only where it is needed: a hook is called also when no memory is left.
    auto const context = [&] { return "Package " + quoted(package) + " could not be " + what; };
    try {
        hook(package);
    } catch (ExBase& error) {
        error.addContext(context());
        throw;
    } catch (std::exception const& error) {
        throw InInitEx(source, __LINE__, context() + ": " + error.what());
    } catch (...) {
        throw InInitEx(source, __LINE__, context());
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

thread_local InOpeningGuard const* currentGuard = nullptr;

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

struct InRegistry::StartUp {
    StartUp() : outer(std::exchange(innermost, this)) {}
    ~StartUp() { innermost = outer; }
    StartUp(StartUp const&) = delete;
    StartUp& operator=(StartUp const&) = delete;

    // Of those that go on in this thread.
    static inline thread_local StartUp* innermost = nullptr;
    StartUp* const outer;
};

struct InRegistry::Batch {
    Batch(Packages toInitialize, InInitMgr::InitType initType)
        : packages(std::move(toInitialize)), type(initType),
          // A library's own static objects are constructed after those of the libraries that it needs.
          library(packages.empty() ? nullptr : libraryOf(packages.back())) {}

    bool contains(InPackageInit const* package) const {
        return std::find(packages.begin(), packages.end(), package) != packages.end();
    }
    // Whether a package goes down with the one that failed. What the start-up of the process had to initialise does; of a
    // library that was opened, all that lies in it.
    bool isAtFault(InPackageInit const* package) const {
        if (type == InInitMgr::Standard || package == failed) return true;
        void const* const own = libraryOf(package);
        return contains(package) && (own == library || (failed && own == libraryOf(failed)));
    }

    Packages packages;
    InInitMgr::InitType type;
    void const* library;
    // Whose turn it is, and with it, the one that failed when something is thrown.
    InPackageInit* failed = nullptr;
    // How many have had their turn, or have it.
    std::size_t turns = 0;
};

InRegistry& InRegistry::getInstance() {
    // Packages register before, and may leave after, every other static object.
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
    std::erase(_initialized, package);
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

// As in `takeBack`: what lies in a library that was only needed waits for the next one that needs it.
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

bool InRegistry::isInitialized(InPackageInit::Type type) {
    std::lock_guard const guard(_mutex);
    return contains(_initialized, type);
}

// Also takes what the batch needs of the packages that belong to no guard.
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

// Always the first registered package whose dependencies come before it.
void InRegistry::orderPackages(Batch& batch) {
    Packages ordered, rest = batch.packages;
    auto const isBefore = [&](InPackageInit::Type type) { return contains(ordered, type) || isInitialized(type); };
    for (InPackageInit* const package : rest)
        for (InPackageInit::Type const type : package->getDependencies()) {
            if (contains(rest, type) || isInitialized(type)) continue;
            batch.failed = package;
            throw InInitEx(source, __LINE__,
                "Package " + quoted(*package) + " depends on " + typeNameOf(type.name()) +
                    ", which is not registered.");
        }
    while (!rest.empty()) {
        auto const next = std::find_if(rest.begin(), rest.end(), [&](InPackageInit const* package) {
            return std::all_of(package->getDependencies().begin(), package->getDependencies().end(), isBefore);
        });
        if (next == rest.end())
            throw InInitEx(source, __LINE__, "Packages depend on each other in a circle: " + names(rest) + ".");
        ordered.push_back(*next);
        rest.erase(next);
    }
    batch.packages = ordered;
}

void InRegistry::initialize(InOpeningGuard const* guard, InInitMgr::InitType type) {
    Batch batch(take(guard), type);
    std::optional<StartUp> own;
    if (type != InInitMgr::Recursive || !StartUp::innermost) own.emplace();
    try {
        takeDependencies(batch.packages);
        orderPackages(batch);
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
            noteInitialized(*package);
        } catch (...) {
            package->setInitialized(false);
            package->finalize();
            throw;
        }
    }
}

void InRegistry::noteInitialized(InPackageInit& package) {
    std::lock_guard const guard(_mutex);
    _initialized.push_back(&package);
    try {
        _toPostInitialize.push_back({&package, StartUp::innermost});
    } catch (...) {
        _initialized.pop_back();
        throw;
    }
}

// Those that hooks add meanwhile are called too.
void InRegistry::callPostInitialize(StartUp const& startUp, Batch& batch) {
    while ((batch.failed = nextToPostInitialize(startUp)))
        callHook(*batch.failed, "initialised", [](InPackageInit& package) { package.postInitialize(); });
}

// For what stays although something else of its start-up failed, which is being told already.
void InRegistry::callPostInitializeOfRest(StartUp const& startUp) {
    std::exception_ptr firstError = std::current_exception();
    while (InPackageInit* const package = nextToPostInitialize(startUp))
        try {
            callHook(*package, "initialised", [](InPackageInit& initialized) { initialized.postInitialize(); });
        } catch (...) {
            keepFirst(firstError);
        }
}

InPackageInit* InRegistry::nextToPostInitialize(StartUp const& startUp) {
    std::lock_guard const guard(_mutex);
    auto const next = std::find_if(_toPostInitialize.begin(), _toPostInitialize.end(),
        [&](ToPostInitialize const& entry) { return entry.startUp == &startUp; });
    if (next == _toPostInitialize.end()) return nullptr;
    InPackageInit* const package = next->package;
    _toPostInitialize.erase(next);
    return package;
}

// Whether a package that is initialised is at fault, or depends on one that is. Called under the lock.
bool InRegistry::isDoomed(InPackageInit const& package, Batch const& batch) const {
    if (batch.isAtFault(&package)) return true;
    auto const& dependencies = package.getDependencies();
    return std::any_of(_initialized.begin(), _initialized.end(), [&](InPackageInit const* other) {
        bool const isNeeded =
            std::find(dependencies.begin(), dependencies.end(), other->getPackageType()) != dependencies.end();
        return isNeeded && isDoomed(*other, batch);
    });
}

// What is not at fault and had no turn waits, outside of any guard, for the next one that needs it. Nothing of this takes
// memory: it may be the lack of it that has failed. There is room for what waits, as it had waited before.
void InRegistry::takeBack(Batch const& batch) {
    std::exception_ptr firstError = std::current_exception();
    finalizePackages([&](InPackageInit const& package) { return isDoomed(package, batch); }, firstError);
    for (std::size_t index = batch.turns; index < batch.packages.size(); ++index) {
        InPackageInit* const package = batch.packages[index];
        if (batch.isAtFault(package) || isInitialized(package->getPackageType())) continue;
        std::lock_guard const guard(_mutex);
        _waiting.push_back({package, nullptr});
    }
}

void InRegistry::finalizeAll() {
    std::exception_ptr firstError;
    finalizePackages([](InPackageInit const&) { return true; }, firstError);
    if (firstError) std::rethrow_exception(firstError);
}

// Those that are chosen, the last initialised first.
template <class Choice>
void InRegistry::finalizePackages(Choice isChosen, std::exception_ptr& firstError) {
    auto const call = [&](InPackageInit& package, auto hook) {
        try {
            callHook(package, "finalised", hook);
        } catch (...) {
            keepFirst(firstError);
        }
    };
    // The last of those before an end, which becomes its place.
    auto const previous = [&](std::size_t& end) -> InPackageInit* {
        std::lock_guard const guard(_mutex);
        for (end = std::min(end, _initialized.size()); end-- > 0;)
            if (isChosen(*_initialized[end])) return _initialized[end];
        return nullptr;
    };
    for (std::size_t end = std::numeric_limits<std::size_t>::max(); InPackageInit* const package = previous(end);)
        call(*package, [](InPackageInit& chosen) { chosen.preFinalize(); });
    for (std::size_t end = std::numeric_limits<std::size_t>::max(); InPackageInit* const package = previous(end);) {
        package->setInitialized(false);
        {
            std::lock_guard const guard(_mutex);
            std::erase(_initialized, package);
            std::erase_if(_toPostInitialize, [&](ToPostInitialize const& entry) { return entry.package == package; });
        }
        call(*package, [](InPackageInit& chosen) { chosen.finalize(); });
    }
}

} // namespace Ko
