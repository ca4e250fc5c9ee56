#include "resmgt/liStringParser.h"

#include "base/assertions.h"

#include <algorithm>

namespace Ko {

namespace {

constexpr AssertionSource source{"resmgt\\src\\liStringParser"};

} // namespace

Vector<LiString> LiStringParser::splitList(LiString const& text, LiString const& separator) {
    source.require(!separator.empty(), "!separator.empty()");
    Vector<LiString> pieces;
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t const end = std::min(text.find(separator, begin), text.size());
        if (end > begin) pieces.push_back(text.substr(begin, end - begin));
        begin = end + separator.size();
    }
    return pieces;
}

bool LiStringParser::splitString(LiString const& text, LiString const& separator, LiString& head, LiString& tail) {
    source.require(!separator.empty(), "!separator.empty()");
    auto const position = text.find(separator);
    bool const isFound = position != LiString::npos;
    LiString rest = isFound ? text.substr(position + separator.size()) : LiString();
    head = text.substr(0, position);
    tail = std::move(rest);
    return isFound;
}

} // namespace Ko
