#include "base/src/environment.h"

#include "base/src/windows/utf16.h"

#include <windows.h>

namespace Ko {

// From the system: the copy of the C library is in the code page of the machine, and lacks what others have set since the start.
std::optional<std::string> readEnvironment(std::string const& name) {
    std::wstring const wideName = toUtf16(name);
    std::wstring value(256, L'\0');
    for (;;) {
        ::SetLastError(ERROR_SUCCESS);
        DWORD const size = static_cast<DWORD>(value.size());
        DWORD const length = ::GetEnvironmentVariableW(wideName.c_str(), value.data(), size);
        if (length == 0 && ::GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
        value.resize(length);
        // With too little space, the result is the size that is needed, with the terminating zero.
        if (length < size) return fromUtf16(value);
    }
}

} // namespace Ko
