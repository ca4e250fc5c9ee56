// Input: a message catalogue. The messages A, B and MSG_C are looked at.
#include "resmgt/lgGroups.h"
#include "resmgt/msgServer.h"
#include "tests/fuzz/fuzzing.h"

#include <map>
#include <optional>
#include <regex>
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
    static std::regex const message(
        R"re([ \t\r]*([^# \t\r][^ \t\r]*)[ \t\r]+"((?:[^"\\]|\\[\s\S])*)"[ \t\r]*(?:#[\s\S]*)?)re",
        std::regex::optimize);
    std::map<std::string, std::string> texts;
    std::istringstream stream(catalogue);
    std::smatch parts;
    for (std::string line; std::getline(stream, line);)
        if (std::regex_match(line, parts, message)) texts[parts[1]] = withReplaced(parts[2], &unescaped);
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
