#pragma once

#include <cstdlib>
#include <string>

namespace KoTest {

/// Sets a variable of the environment, for this process and its children.
inline void setVariable(std::string const& name, std::string const& value) {
    ::setenv(name.c_str(), value.c_str(), 1);
}
inline void unsetVariable(std::string const& name) {
    ::unsetenv(name.c_str());
}

} // namespace KoTest
