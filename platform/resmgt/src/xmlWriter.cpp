#include "resmgt/xmlWriter.h"

#include "base/assertions.h"

#include <iomanip>
#include <ostream>
#include <string_view>

namespace Ko {

namespace {

constexpr AssertionSource source{"resmgt\\src\\xmlWriter"};
constexpr char const* replacement = "\xEF\xBF\xBD";

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// The length of the well-formed UTF-8 sequence that the text begins with; 0 if there is none.
std::size_t sequenceLength(std::string_view text) {
    auto const lead = static_cast<unsigned char>(text[0]);
    std::size_t const length = lead < 0x80                   ? 1
                               : lead >= 0xC2 && lead < 0xE0 ? 2
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xF0 && lead < 0xF5 ? 4
                                                             : 0;
    if (length == 0 || text.size() < length) return 0;
    for (std::size_t index = 1; index < length; ++index)
        if (!isContinuation(text[index])) return 0;
    auto const second = length > 1 ? static_cast<unsigned char>(text[1]) : 0;
    bool const overlongOrSurrogate = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second >= 0xA0) ||
                                     (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second >= 0x90);
    return overlongOrSurrogate ? 0 : length;
}

// Characters that no XML 1.0 document may contain, not even escaped: most control characters, U+FFFE and U+FFFF.
bool isForbidden(std::string_view sequence) {
    return static_cast<unsigned char>(sequence[0]) < 0x20 || sequence == "\xEF\xBF\xBE" || sequence == "\xEF\xBF\xBF";
}

std::string_view escaped(std::string_view sequence) {
    switch (sequence[0]) {
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
    case '\t':
    case '\n':
        return sequence;
    case '\r':
        return "&#13;";
    default:
        return isForbidden(sequence) ? replacement : sequence;
    }
}

void writeEscaped(std::ostream& stream, std::string_view text) {
    while (!text.empty()) {
        std::size_t const length = sequenceLength(text);
        stream << (length == 0 ? replacement : escaped(text.substr(0, length)));
        text.remove_prefix(length == 0 ? 1 : length);
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
