#include "base/inInitMgr.h"

#include "base/assertions.h"
#include "base/src/inConfiguration.h"
#include "base/src/inRegistry.h"

#include <exception>
#include <iostream>

namespace Ko {

namespace {

constexpr AssertionSource source{"base\\src\\inInitMgr"};

std::atomic<bool> initialized{false};

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
    source.require(!initialized, "!initialized");
    _applicationThread = std::this_thread::get_id();
    InRegistry& registry = InRegistry::getInstance();
    InConfiguration::getInstance().read(argc, argv, registry.argumentAliases());
    registry.initialize(nullptr, Standard);
    initialized = true;
}

void InInitMgr::initialize() {
    int noArguments = 0;
    initialize(noArguments, nullptr);
}

void InInitMgr::finalize() {
    if (initialized.exchange(false)) InRegistry::getInstance().finalizeAll();
}

bool InInitMgr::isInitialized() noexcept {
    return initialized;
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
    InRegistry::getInstance().initialize(this, InInitMgr::Recursive);
}

} // namespace Ko
