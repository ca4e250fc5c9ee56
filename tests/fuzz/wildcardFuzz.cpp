// Input: a pattern, and in the next field a name.
#include "resmgt/osWildcardFilter.h"
#include "tests/fuzz/fuzzing.h"

namespace {

using namespace Ko;
using namespace KoFuzz;

// The well-formed sequences of UTF-8, as the table of the standard lists them.
constexpr struct {
    unsigned firstLead, lastLead, lowestSecond, highestSecond;
    std::size_t length;
} wellFormed[] = {{0x00, 0x7F, 0, 0, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
    {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};

std::size_t lengthOfCharacter(std::string_view text) {
    auto const isWithin = [text](std::size_t index, unsigned first, unsigned last) {
        return index < text.size() && static_cast<unsigned char>(text[index]) >= first &&
               static_cast<unsigned char>(text[index]) <= last;
    };
    for (auto const& row : wellFormed) {
        bool isWhole = isWithin(0, row.firstLead, row.lastLead);
        for (std::size_t index = 1; index < row.length; ++index)
            isWhole =
                isWhole && isWithin(index, index == 1 ? row.lowestSecond : 0x80, index == 1 ? row.highestSecond : 0xBF);
        if (isWhole) return row.length;
    }
    return 1;
}

std::vector<std::string_view> charactersOf(std::string_view text) {
    std::vector<std::string_view> characters;
    for (; !text.empty(); text.remove_prefix(characters.back().size()))
        characters.push_back(text.substr(0, lengthOfCharacter(text)));
    return characters;
}

// Determines, for each prefix of the pattern, which prefixes of the name it matches.
bool modelMatches(std::string_view pattern, std::string_view name) {
    auto const characters = charactersOf(name);
    std::vector<bool> matched(characters.size() + 1);
    matched[0] = true;
    for (std::string_view const part : charactersOf(pattern)) {
        std::vector<bool> next(matched.size());
        for (std::size_t length = 0; length < next.size(); ++length) {
            bool const fits = length > 0 && (part == "?" || part == characters[length - 1]);
            next[length] =
                part == "*" ? matched[length] || (length > 0 && next[length - 1]) : fits && matched[length - 1];
        }
        matched = next;
    }
    return matched.back();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const fields = fieldsOf(textOf(data, size), 2);
    expect(OsWildcardFilter(fields[0]).matches(fields[1]) == modelMatches(fields[0], fields[1]),
        "a pattern matches what it stands for, and nothing else");
    return 0;
}
