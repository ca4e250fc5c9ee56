// Input: a message catalogue. The messages A, B and MSG_C are looked at.
#include "resmgt/lgGroups.h"
#include "resmgt/msgServer.h"
#include "tests/fuzz/fuzzing.h"

#include <map>
#include <optional>
#include <sstream>

namespace {

using namespace Ko;
using namespace KoFuzz;

Vector<LiString> const substitutions{"first", "%2", "\\n"};

// A text with some of its pairs of characters replaced; `replacement` is null for those that stay.
template <class Replacement>
std::string withReplaced(std::string const& text, Replacement replacement) {
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        auto const replaced = index + 1 < text.size() ? replacement(text[index], text[index + 1]) : std::nullopt;
        result += replaced.value_or(text.substr(index, 1));
        if (replaced) ++index;
    }
    return result;
}

std::optional<std::string> unescaped(char first, char second) {
    if (first != '\\') return std::nullopt;
    return std::string(1, second == 'n' ? '\n' : second);
}

std::optional<std::string> substituted(char first, char second) {
    if (first != '%' || (second != '%' && (second < '1' || second > '9'))) return std::nullopt;
    auto const number = static_cast<std::size_t>(second - '1');
    return second == '%' ? "%" : number < substitutions.size() ? substitutions[number] : "";
}

std::map<std::string, std::string> modelRead(std::string const& catalogue) {
    constexpr char const* blanks = " \t\r";
    std::map<std::string, std::string> texts;
    std::istringstream stream(catalogue);
    for (std::string line; std::getline(stream, line);) {
        line.erase(0, line.find_first_not_of(blanks));
        std::size_t const idEnd = line.find_first_of(blanks), quote = line.find_first_not_of(blanks, idEnd);
        if (line.starts_with('#') || idEnd == line.npos || quote == line.npos || line[quote] != '"') continue;
        std::size_t end = quote + 1;
        while (end < line.size() && line[end] != '"')
            end += line[end] == '\\' ? 2 : 1;
        std::size_t const rest = line.find_first_not_of(blanks, end + 1);
        if (end < line.size() && (rest == line.npos || line[rest] == '#'))
            texts[line.substr(0, idEnd)] = withReplaced(line.substr(quote + 1, end - quote - 1), &unescaped);
    }
    return texts;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static Folder const folder;
    static bool const isPrepared = ::setenv("KO_INSTALL_DIR", (folder / "").c_str(), 1) == 0;
    expect(isPrepared, "the folder can be set");
    LgSinks::replace({}); // for lines that cannot be read
    std::string const catalogue(textOf(data, size));
    folder.write("messages/fuzz.msg", catalogue);
    folder.write("messages/none.msg", "A \"none\"\nB \"none\"\nMSG_C \"none\"\n");
    MsgFileGuard const none("none.msg");
    MsgFileGuard const guard("fuzz.msg");
    auto const texts = modelRead(catalogue);
    for (char const* const id : {"A", "B", "MSG_C"}) {
        auto const text = texts.find(id);
        expect(MsgSubscription(id).format(substitutions) ==
                   (text == texts.end() ? "none" : withReplaced(text->second, &substituted)),
            "the text of a message is what its last line says");
    }
    return 0;
}
