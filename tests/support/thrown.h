#pragma once

#include "base/exBase.h"

#include <string>

namespace KoTest {

/// Makes a call that has to throw. @returns "reason [file]", or "reason [file:line]" of what it throws.
template <class Ex = Ko::ExAssertionFailed, class Call>
std::string thrownBy(Call call, bool withLine = false) {
    try {
        call();
        return "nothing is thrown";
    } catch (Ex const& error) {
        std::string const line = withLine ? ":" + std::to_string(error.getLine()) : "";
        return error.getReason() + " [" + error.getFile() + line + "]";
    }
}

} // namespace KoTest
