#include "resmgt/osEnv.h"

#include "base/assertions.h"

#include <cstdlib>
#include <string_view>

namespace Ko {

namespace {

constexpr AssertionSource source{"resmgt\\src\\osEnv"};

void appendUtf8(std::string& text, char32_t code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
        return;
    }
    int const following = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    text += static_cast<char>((0xF00 >> (following + 1) & 0xFF) | code >> 6 * following);
    for (int index = following; index-- > 0;)
        text += static_cast<char>(0x80 | (code >> 6 * index & 0x3F));
}

std::string toUtf8(std::wstring_view text) {
    std::string result;
    for (wchar_t const code : text)
        appendUtf8(result, static_cast<char32_t>(code));
    return result;
}

} // namespace

bool OsEnv::getVariable(LiString const& name, LiString& value) {
    char const* const found = std::getenv(name.c_str());
    if (!found) return false;
    value = found;
    return true;
}

void OsEnv::putVariable(std::wstring const& assignment) {
    auto const separator = assignment.find(L'=');
    source.require(separator != std::wstring::npos && separator != 0, "separator > 0");
    std::wstring_view const text = assignment;
    std::string const name = toUtf8(text.substr(0, separator));
    std::string const value = toUtf8(text.substr(separator + 1));
    source.require(::setenv(name.c_str(), value.c_str(), 1) == 0, "setenv( name, value, 1 ) == 0");
}

} // namespace Ko
