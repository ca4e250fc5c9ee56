// Input: a script of the compositor, which is run. It cannot affect the system: only words that are known to be harmless are
// kept, and file names are replaced by names in a temporary folder.
#include "base/inInitMgr.h"
#include "document/documentFile.h"
#include "framework/command/cmCommandStackGuard.h"
#include "framework/command/cmUndoGuard.h"
#include "host/actions.h"
#include "host/plugIns.h"
#include "script/interpreter.h"
#include "script/scriptReader.h"
#include "tests/fuzz/fuzzing.h"

#include <algorithm>
#include <iostream>
#include <sstream>

namespace {

using namespace compositor;
using namespace KoFuzz;

constexpr std::size_t mostStatements = 60;
constexpr std::string_view harmless[] = {"canvas", "checker", "gradient", "move", "opacity", "blend", "rename",
    "remove", "reorder", "drag", "nudge", "grab", "pull", "release", "cancel", "flatten", "memory", "select", "menu",
    "do", "options", "copy", "cut", "paste", "group", "quietly", "end", "undo", "redo", "history", "goto", "limit",
    "layers", "dump", "plugins", "jobs", "stop", "wait", "echo", "help", "quit", "fly"};
constexpr std::string_view withSizes[] = {"canvas", "checker", "gradient", "do"};
constexpr std::string_view withFiles[] = {"render", "save", "open"};

bool isOneOf(std::string const& word, auto const& words) {
    return std::ranges::find(words, word) != std::end(words);
}

// Large pictures are slow: lengths get two digits, and pictures never grow.
void keepSmall(std::vector<std::string>& words) {
    bool isScaled = false;
    for (std::string& word : words) {
        bool const isLength = word.find_first_not_of("0123456789") == std::string::npos &&
                              std::strtoull(word.c_str(), nullptr, 10) < 65536;
        if (isLength && word != "000000") word.erase(0, std::max<std::size_t>(word.size(), 2) - 2);
        if (isScaled) word = "0.5";
        isScaled = isScaled || word == "scale";
    }
}

std::string tamed(std::vector<std::string> words, Folder const& folder) {
    bool const hasFile = isOneOf(words[0], withFiles);
    if (hasFile ? words.size() < 2 : !isOneOf(words[0], harmless)) return {};
    if (hasFile) words[1] = folder / (words[0] == "render" || words[1].ends_with(".png") ? "x.png" : "x.koc");
    if (isOneOf(words[0], withSizes)) keepSmall(words);
    return quotedWords(words) + '\n';
}

// The statements of a script that may be run.
std::string tamedScript(std::string const& script, Folder const& folder) {
    std::istringstream stream(script);
    std::string result = "canvas 32 32\n";
    ScriptReader reader(stream);
    for (std::size_t count = 0; count < mostStatements; ++count)
        try {
            std::optional<Statement> const statement = reader.next();
            if (!statement) break;
            expect(splitWords(quotedWords(statement->words)) == statement->words, "quoted words stay as they are");
            result += tamed(statement->words, folder);
        } catch (InputError const&) {
        }
    return result;
}

// Undoes and redoes the whole history. Not for scripts with "quietly": these edits can make a step fail.
void checkHistory(Editor& editor) {
    Ko::CmCommandStack& history = *editor.history();
    Document const document = editor.document();
    int steps = 0;
    for (; history.canUndo(); ++steps)
        history.undo();
    for (; steps > 0; --steps)
        history.redo();
    expect(document.canvas() == editor.document().canvas() && document.layers() == editor.document().layers(),
        "the same document after undoing and redoing everything");
}

void run(std::string const& script, bool isTyped) {
    std::ostringstream output, errors;
    Editor editor;
    Ko::CmCommandStackGuard const active(editor.history());
    Jobs jobs(output, errors, Jobs::Bars::NotShown);
    Interpreter interpreter(editor, jobs, output, errors);
    std::istringstream stream(script);
    if (isTyped)
        interpreter.runTerminal(stream);
    else
        expect(interpreter.runScript(stream, "fuzz") == errors.str().empty(), "a script that fails reports an error");
    expect(!Ko::CmUndoGuard::isGuardActive(), "no group stays open");
    if (script.find("\"quietly\"") == std::string::npos) checkHistory(editor);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static Folder const folder;
    static bool const isPrepared = (Ko::InInitMgr::initialize(), Ko::InInitMgr::isInitialized());
    expect(isPrepared, "the framework starts");
    static EditActions const actions;
    static PlugIns const plugIns(std::cerr);
    std::string const script = tamedScript(std::string(textOf(data, size)), folder);
    for (bool const isTyped : {false, true}) {
        for (char const* const name : {"x.png", "x.koc"})
            std::filesystem::remove(folder / name);
        run(script, isTyped);
    }
    return 0;
}
