#include "base/src/inConfigurationFile.h"

#include "base/inInitMgr.h"
#include "base/utf8Path.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace Ko {

namespace {

constexpr char const* source = "base\\src\\inConfigurationFile";
constexpr std::string_view blanks = " \t\r";

[[noreturn]] void failToRead(std::string const& path, std::string const& why) {
    throw InInitEx(source, __LINE__, "The configuration file \"" + path + "\" cannot be read: " + why + ".");
}

std::string messageOf(int error) {
    return std::generic_category().message(error);
}

/// The lines of a file, and the place of the present one for messages.
class Lines {
public:
    explicit Lines(std::string const& path) : _path(path) {
        errno = 0;
        _file.open(toPath(path));
        if (!_file) failToRead(path, messageOf(errno));
    }

    bool next(std::string& line) {
        errno = 0;
        if (!std::getline(_file, line)) {
            if (_file.bad() || errno != 0) failToRead(_path, messageOf(errno));
            return false;
        }
        ++_number;
        return true;
    }
    bool isFirst() const { return _number == 1; }
    [[noreturn]] void fail(std::string const& problem) const {
        throw InInitEx(source, __LINE__, _path + ":" + std::to_string(_number) + ": " + problem + ".");
    }

private:
    std::string const& _path;
    std::ifstream _file;
    int _number = 0;
};

std::string_view trimmed(std::string_view text) {
    auto const first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The marks of UTF-8 and of both byte orders of UTF-16.
bool startsWithByteOrderMark(std::string_view line) {
    constexpr std::array<std::string_view, 3> marks{"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"};
    return std::any_of(marks.begin(), marks.end(), [&](std::string_view mark) { return line.starts_with(mark); });
}

// `text` begins with a quotation mark; two of them within the value stand for one.
std::string quotedValue(std::string_view text, Lines const& lines) {
    std::string value;
    for (std::size_t index = 1; index < text.size(); ++index) {
        if (text[index] != '"') {
            value += text[index];
            continue;
        }
        std::string_view const rest = text.substr(index + 1);
        if (!rest.starts_with('"')) {
            std::string_view const after = trimmed(rest);
            if (!after.empty() && after[0] != '#') lines.fail("only a comment may follow the closing quotation mark");
            return value;
        }
        value += '"';
        ++index;
    }
    lines.fail("the closing quotation mark is missing");
}

std::string valueOf(std::string_view text, Lines const& lines) {
    std::string_view const value = trimmed(text);
    return value.starts_with('"') ? quotedValue(value, lines) : std::string(trimmed(value.substr(0, value.find('#'))));
}

// Key and value; nothing for a line that is empty or a comment.
std::optional<std::pair<std::string, std::string>> assignmentIn(std::string_view line, Lines const& lines) {
    auto const separator = line.find('=');
    std::string_view const before = line.substr(0, std::min(separator, line.find('#')));
    std::string_view const key = trimmed(before);
    if (separator == std::string_view::npos || before.size() < separator) {
        if (!key.empty()) lines.fail("expected \"key = value\"");
        return std::nullopt;
    }
    if (key.empty()) lines.fail("the key before \"=\" is empty");
    return std::pair(std::string(key), valueOf(line.substr(separator + 1), lines));
}

bool isThere(std::string const& path) {
    std::error_code error;
    auto const type = std::filesystem::status(toPath(path), error).type();
    if (type == std::filesystem::file_type::directory) failToRead(path, messageOf(EISDIR));
    // Other errors, such as a missing permission, occur again when it is opened.
    return type != std::filesystem::file_type::not_found;
}

} // namespace

std::map<std::string, std::string> readConfigurationFile(std::string const& path, bool mustExist) {
    std::map<std::string, std::string> values;
    if (!isThere(path) && !mustExist) return values;
    Lines lines(path);
    for (std::string line; lines.next(line);) {
        if (lines.isFirst() && startsWithByteOrderMark(line))
            lines.fail("the file starts with a byte-order mark; save it as UTF-8 without one");
        if (auto assignment = assignmentIn(line, lines)) values[assignment->first] = std::move(assignment->second);
    }
    return values;
}

} // namespace Ko
