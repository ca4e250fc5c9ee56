#pragma once

#include "base/exBase.h"
#include "tests/support/caught.h"

#include <string>

namespace KoTest {

/// What the call throws, in words: "reason [file]", or "reason [file:line]".
template <class Ex = Ko::ExAssertionFailed, class Call>
std::string thrownBy(Call call, bool withLine = false) {
    Ex const error = caught<Ex>(call);
    return error.getReason() + " [" + error.getFile() + (withLine ? ":" + std::to_string(error.getLine()) : "") + "]";
}

} // namespace KoTest
