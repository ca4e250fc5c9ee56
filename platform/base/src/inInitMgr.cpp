#include "base/inInitMgr.h"

#include "base/assertions.h"
#include "base/src/inConfiguration.h"
#include "base/src/inRegistry.h"

#include <exception>
#include <iostream>
#include <memory>

namespace Ko {

namespace {

constexpr AssertionSource source{"base\\src\\inInitMgr"};

enum class Stage { NotStarted, Starting, Started, Failed, Ended };
std::atomic<Stage> stage{Stage::NotStarted};

// A process starts once: packages are not initialised again after a failure or the end.
void requireFirstStart() {
    source.require(stage != Stage::Starting && stage != Stage::Started, "!initialized");
    if (stage == Stage::Failed)
        throw InInitEx(
            source.file(), __LINE__, "The framework cannot be initialised again: its start-up failed before.");
    if (stage == Stage::Ended)
        throw InInitEx(source.file(), __LINE__, "The framework cannot be initialised again: it was finalised before.");
}

} // namespace

std::atomic<std::thread::id> InInitMgr::_applicationThread{};

InInitEx::InInitEx(char const* file, int line, std::string reason) : ExBase(file, line, std::move(reason)) {}
ExBase* InInitEx::clone() const {
    return copyOf(*this);
}
void InInitEx::raise() const {
    throw *this;
}

void InInitMgr::initialize(int& argc, char** argv) {
    requireFirstStart();
    _applicationThread = std::this_thread::get_id();
    stage = Stage::Starting;
    try {
        InRegistry& registry = InRegistry::getInstance();
        InConfiguration::getInstance().read(argc, argv, registry.argumentAliases());
        registry.initialize(nullptr, Standard);
    } catch (...) {
        stage = Stage::Failed;
        throw;
    }
    stage = Stage::Started;
}

void InInitMgr::initialize() {
    int noArguments = 0;
    initialize(noArguments, nullptr);
}

void InInitMgr::finalize() {
    Stage started = Stage::Started;
    if (stage.compare_exchange_strong(started, Stage::Ended)) InRegistry::getInstance().finalizeAll();
}

bool InInitMgr::isInitialized() noexcept {
    return stage == Stage::Started;
}

InInitScope::~InInitScope() noexcept(false) {
    bool const unwinding = std::uncaught_exceptions() > 0;
    try {
        InInitMgr::finalize();
    } catch (std::exception const& error) {
        if (!unwinding) throw;
        std::cerr << error.what() << std::endl;
    }
}

InOpeningGuard::InOpeningGuard() : _outer(InRegistry::enter(this)) {}
InOpeningGuard::~InOpeningGuard() {
    InRegistry::getInstance().drop(this);
    InRegistry::enter(_outer);
}

void InReinitGuard::initializePackages() {
    InRegistry::getInstance().initialize(this, InInitMgr::Reinitialization);
}

void InRecursiveInitGuard::initializePackages() {
    initializePackages(LateFailure());
}
void InRecursiveInitGuard::initializePackages(LateFailure const& onLateFailure) {
    InRegistry::getInstance().initialize(
        this, InInitMgr::Recursive, std::make_shared<LateFailure const>(onLateFailure));
}

} // namespace Ko
