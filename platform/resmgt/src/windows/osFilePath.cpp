#include "resmgt/osFilePath.h"

#include "resmgt/liUtf8.h"
#include "resmgt/src/files/pathRoot.h"

#include <algorithm>
#include <array>
#include <windows.h>

namespace Ko {

namespace {

bool isSlash(char character) noexcept {
    return character == '/' || character == '\\';
}

bool isLetter(char character) noexcept {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

bool startsWithDrive(std::string_view path) noexcept {
    return path.size() >= 2 && isLetter(path[0]) && path[1] == ':';
}

/// A character as the system compares it.
class Units {
public:
    explicit Units(char32_t code) noexcept {
        constexpr char32_t firstPair = 0x10000;
        if (code < firstPair) {
            _units[0] = static_cast<wchar_t>(code);
            return;
        }
        _length = 2;
        _units = {static_cast<wchar_t>(0xD800 + ((code - firstPair) >> 10)),
            static_cast<wchar_t>(0xDC00 + ((code - firstPair) & 0x3FF))};
    }

    int compare(Units const& other) const noexcept {
        return ::CompareStringOrdinal(_units.data(), _length, other._units.data(), other._length, TRUE) - CSTR_EQUAL;
    }

private:
    std::array<wchar_t, 2> _units{};
    int _length = 1;
};

// Removes the first character. Both separators are the same; a byte that is not UTF-8 stands for itself.
char32_t take(std::string_view& text) noexcept {
    auto const [code, length] = LiUtf8::first(text);
    char32_t const taken = length > 0 ? code : static_cast<unsigned char>(text[0]);
    text.remove_prefix(std::max<std::size_t>(length, 1));
    return taken == U'\\' ? U'/' : taken;
}

} // namespace

char OsFilePath::getSeparator() noexcept {
    return '/';
}

char OsFilePath::getMultiPathSeparator() noexcept {
    return ';';
}

bool OsFilePath::isSeparator(char character) noexcept {
    return isSlash(character);
}

// A path on the current drive counts as absolute: no folder can stand before it.
bool OsFilePath::isAbsolute() const noexcept {
    if (_path.empty()) return false;
    return isSlash(_path[0]) || (startsWithDrive(_path) && _path.size() > 2 && isSlash(_path[2]));
}

// Without allocating: the function is noexcept, and sorts lists of files.
int OsFilePath::compare(OsFilePath const& other) const noexcept {
    std::string_view left = _path;
    std::string_view right = other._path;
    while (!left.empty() && !right.empty()) {
        char32_t const first = take(left), second = take(right);
        if (first == second) continue;
        if (int const order = Units(first).compare(Units(second)); order != 0) return order;
    }
    return static_cast<int>(!left.empty()) - static_cast<int>(!right.empty());
}

std::size_t pathRootLength(std::string_view path) noexcept {
    std::size_t const drive = startsWithDrive(path) ? 2 : 0;
    return drive < path.size() && isSlash(path[drive]) ? drive + 1 : drive;
}

} // namespace Ko
