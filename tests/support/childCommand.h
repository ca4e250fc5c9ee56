#pragma once

#include "namedPipe.h"

#include <string>

namespace KoTest {

/// The command line of the test child. @param steps see tests/fixtures/child, for this system.
inline std::string childCommand(std::string const& steps) {
    return "\"" KO_TEST_CHILD "\" " + steps;
}

} // namespace KoTest
