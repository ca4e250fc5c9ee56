#include "resmgt/xmlWriter.h"

#include "base/assertions.h"
#include "resmgt/liUtf8.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <string_view>

namespace Ko {

namespace {

constexpr AssertionSource source{"resmgt\\src\\xmlWriter"};
constexpr char const* replacement = "\xEF\xBF\xBD";

// Characters that no XML 1.0 document may contain, not even escaped: most control characters, U+FFFE and U+FFFF.
bool isForbidden(char32_t code) {
    bool const isControl = code < 0x20 && code != '\t' && code != '\n' && code != '\r';
    return isControl || code == 0xFFFE || code == 0xFFFF;
}

std::string_view escaped(std::string_view character) {
    switch (character[0]) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&apos;";
    case '\r':
        return "&#13;";
    default:
        return character;
    }
}

void writeEscaped(std::ostream& stream, std::string_view text) {
    while (!text.empty()) {
        auto const [code, length] = LiUtf8::first(text);
        stream << (length == 0 || isForbidden(code) ? replacement : escaped(text.substr(0, length)));
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

} // namespace

std::ostream& XmlWriter::indent() {
    return _stream << std::setw(_indentation * static_cast<int>(_openTags.size())) << "";
}

void XmlWriter::openTag(LiString const& name) {
    indent() << '<' << name << ">\n";
    _openTags.push_back(name);
}

void XmlWriter::writeTag(LiString const& name, LiString const& text) {
    indent() << '<' << name << '>';
    writeEscaped(_stream, text);
    _stream << "</" << name << ">\n";
}

void XmlWriter::closeTag() {
    source.require(!_openTags.empty(), "!_openTags.empty()");
    LiString const name = std::move(_openTags.back());
    _openTags.pop_back();
    indent() << "</" << name << ">\n";
}

} // namespace Ko
