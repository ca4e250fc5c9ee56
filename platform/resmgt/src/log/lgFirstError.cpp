#include "resmgt/lgFirstError.h"

#include "base/exBase.h"
#include "resmgt/lgPackageGroup.h"

namespace Ko {

namespace {

LiString describe(std::exception_ptr const& error) {
    try {
        std::rethrow_exception(error);
    } catch (ExBase const& exception) {
        return exception.getTypeName() + ": " + exception.getReason();
    } catch (std::exception const& exception) {
        return exception.what();
    } catch (...) {
        return "an exception of an unknown type";
    }
}

} // namespace

void LgFirstError::keep() noexcept {
    if (_first)
        write(std::current_exception());
    else
        _first = std::current_exception();
}

void LgFirstError::write(std::exception_ptr const& error) const noexcept {
    try {
        LgPackageGroup::write("Errors", 0, LiString(_context) + " failed: " + describe(error));
    } catch (...) {
        // The log was the last resort.
    }
}

} // namespace Ko
