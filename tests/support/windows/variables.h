#pragma once

#include <cstdlib>
#include <string>
#include <windows.h>

namespace KoTest {

/// Sets a variable of the environment, for this process and its children.
inline void setVariable(std::string const& name, std::string const& value) {
    ::_putenv_s(name.c_str(), value.c_str());
    // The C library removes a variable that becomes empty.
    ::SetEnvironmentVariableA(name.c_str(), value.c_str());
}
inline void unsetVariable(std::string const& name) {
    ::_putenv_s(name.c_str(), "");
}

} // namespace KoTest
