#pragma once

#include "base/exBase.h"

#include <stdexcept>
#include <string>

namespace KoTest {

/// The exception that the call throws, of type `Exception`.
template <class Exception, class Call>
Exception caught(Call call) {
    try {
        call();
    } catch (Exception const& error) {
        return error;
    }
    throw std::logic_error("nothing was thrown");
}

/// The message of the exception that the call throws.
template <class Call>
std::string messageOf(Call call) {
    try {
        static_cast<void>(call());
    } catch (std::exception const& error) {
        return error.what();
    }
    return "nothing was thrown";
}

/// The exception that the call throws, as text: "reason [file]", or "reason [file:line]".
template <class Ex = Ko::ExAssertionFailed, class Call>
std::string thrownBy(Call call, bool withLine = false) {
    Ex const error = caught<Ex>(call);
    return error.getReason() + " [" + error.getFile() + (withLine ? ":" + std::to_string(error.getLine()) : "") + "]";
}

} // namespace KoTest
