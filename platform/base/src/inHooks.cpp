#include "base/src/inHooks.h"

#include "base/inInitMgr.h"
#include "base/typeName.h"

#include <iostream>

namespace Ko {

namespace {

constexpr char const* source = "base\\src\\inHooks";

} // namespace

void rethrowWithPackage(InPackageInit const& package, char const* attempt) {
    std::string const context = "Package \"" + package.getName() + "\" could not be " + attempt;
    try {
        throw;
    } catch (ExBase& error) {
        error.addContext(context);
        throw;
    } catch (std::exception const& error) {
        throw InInitEx(source, __LINE__, context + ": " + error.what());
    } catch (...) {
        throw InInitEx(source, __LINE__, context + ": it threw an exception of the type " + currentExceptionTypeName());
    }
}

void InFirstError::add() {
    if (!_first) {
        _first = std::current_exception();
        return;
    }
    try {
        throw;
    } catch (std::exception const& error) {
        std::cerr << error.what() << std::endl;
    }
}

void InFirstError::rethrow() const {
    if (_first) std::rethrow_exception(_first);
}

} // namespace Ko
