#include "resmgt/osEnv.h"

#include "base/assertions.h"
#include "resmgt/src/windows/utf16.h"

#include <cstdlib>
#include <memory>
#include <string_view>
#include <windows.h>

namespace Ko {

namespace {

constexpr AssertionSource source{"resmgt\\src\\osEnv"};

struct BlockRelease {
    void operator()(wchar_t* block) const noexcept { ::FreeEnvironmentStringsW(block); }
};

} // namespace

// From the system: the C library's copy is in the code page of the machine, and lacks what other code has set since the start.
bool OsEnv::getVariable(LiString const& name, LiString& value) {
    if (name.find('\0') != LiString::npos) return false;
    std::wstring const wideName = toUtf16(name);
    std::wstring found(256, L'\0');
    for (;;) {
        ::SetLastError(ERROR_SUCCESS);
        auto const size = static_cast<DWORD>(found.size());
        DWORD const length = ::GetEnvironmentVariableW(wideName.c_str(), found.data(), size);
        if (length == 0 && ::GetLastError() == ERROR_ENVVAR_NOT_FOUND) return false;
        found.resize(length);
        // With too little space, the result is the size that is needed, with the terminating zero.
        if (length >= size) continue;
        value = fromUtf16(found);
        return true;
    }
}

void OsEnv::putVariable(LiString const& assignment) {
    auto const separator = assignment.find('=');
    source.require(separator != LiString::npos && separator != 0, "separator > 0");
    source.require(assignment.find('\0') == LiString::npos, "the assignment has no zero byte");
    std::wstring const name = toUtf16(assignment.substr(0, separator));
    std::wstring const value = toUtf16(assignment.substr(separator + 1));
    // First by the C library, so that `getenv` sees it; that removes a variable whose value is empty, so the system follows.
    source.require(::_wputenv_s(name.c_str(), value.c_str()) == 0, "_wputenv_s( name, value ) == 0");
    source.require(
        ::SetEnvironmentVariableW(name.c_str(), value.c_str()) != 0, "SetEnvironmentVariable( name, value ) != 0");
}

void OsEnv::putVariable(std::wstring const& assignment) {
    putVariable(fromUtf16(assignment));
}

Vector<LiString> OsEnv::getEntries() {
    Vector<LiString> entries;
    std::unique_ptr<wchar_t, BlockRelease> const block(::GetEnvironmentStringsW());
    for (wchar_t const* entry = block.get(); entry && *entry;) {
        std::wstring_view const text = entry;
        // Names that begin with "=" are the system's own: the current folder of each drive.
        if (text.front() != L'=') entries.push_back(fromUtf16(text));
        entry += text.size() + 1;
    }
    return entries;
}

} // namespace Ko
