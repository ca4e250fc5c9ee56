#include "resmgt/osEnv.h"

#include "base/assertions.h"

#include <cstdlib>
#include <string_view>
#include <unistd.h>

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
    char const* const found = name.find('\0') == LiString::npos ? std::getenv(name.c_str()) : nullptr;
    if (!found) return false;
    value = found;
    return true;
}

void OsEnv::putVariable(LiString const& assignment) {
    auto const separator = assignment.find('=');
    source.require(separator != LiString::npos && separator != 0, "separator > 0");
    source.require(assignment.find('\0') == LiString::npos, "the assignment has no zero byte");
    LiString const name = assignment.substr(0, separator);
    char const* const value = assignment.c_str() + separator + 1;
    source.require(::setenv(name.c_str(), value, 1) == 0, "setenv( name, value, 1 ) == 0");
}

void OsEnv::putVariable(std::wstring const& assignment) {
    putVariable(toUtf8(assignment));
}

Vector<LiString> OsEnv::getEntries() {
    Vector<LiString> entries;
    for (char const* const* entry = environ; entry && *entry; ++entry)
        entries.emplace_back(*entry);
    return entries;
}

} // namespace Ko
