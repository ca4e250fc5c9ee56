// Input: a message catalogue. The messages A, B and MSG_C are looked at.
#include "resmgt/lgGroups.h"
#include "resmgt/msgServer.h"
#include "tests/fuzz/fuzzing.h"

#include <algorithm>
#include <map>
#include <optional>
#include <sstream>

namespace {

using namespace Ko;
using namespace KoFuzz;

Vector<LiString> const substitutions{"first", "%2", "\\n"};

// Takes off what a text begins with.
std::string take(std::string& text, std::size_t length) {
    std::string const taken = text.substr(0, length);
    text.erase(0, length);
    return taken;
}

void skipBlanks(std::string& text) {
    take(text, std::min(text.find_first_not_of(" \t\r"), text.size()));
}

// None where there is no end.
std::optional<std::string> takeQuoted(std::string& text) {
    std::string result;
    if (take(text, 1) != "\"") return std::nullopt;
    for (std::string next; !(next = take(text, 1)).empty();) {
        if (next == "\"") return result;
        if (next == "\\" && text.empty()) return std::nullopt;
        if (next == "\\" && (next = take(text, 1)) == "n") next = "\n";
        result += next;
    }
    return std::nullopt;
}

std::map<std::string, std::string> modelRead(std::string const& catalogue) {
    std::map<std::string, std::string> texts;
    std::istringstream stream(catalogue);
    for (std::string line; std::getline(stream, line);) {
        skipBlanks(line);
        if (line.starts_with('#')) continue;
        std::string const id = take(line, std::min(line.find_first_of(" \t\r"), line.size()));
        skipBlanks(line);
        auto const text = takeQuoted(line);
        skipBlanks(line);
        if (text && (line.empty() || line.starts_with('#'))) texts[id] = *text;
    }
    return texts;
}

std::string modelFormat(std::string text) {
    std::string result;
    for (std::string next; !(next = take(text, 1)).empty();) {
        bool const isPlaceholder = next == "%" && !text.empty() && text[0] >= '1' && text[0] <= '9';
        if (next == "%" && text.starts_with('%'))
            take(text, 1);
        else if (isPlaceholder) {
            auto const number = static_cast<std::size_t>(std::stoi(take(text, 1)));
            next = number > substitutions.size() ? "" : substitutions[number - 1];
        }
        result += next;
    }
    return result;
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
        expect(MsgSubscription(id).format(substitutions) == (text == texts.end() ? "none" : modelFormat(text->second)),
            "the text of a message is what its last line says");
    }
    return 0;
}
