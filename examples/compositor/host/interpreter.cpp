#include "host/interpreter.h"

#include "framework/command/cmUndoGuard.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "host/actions.h"

#include <algorithm>
#include <istream>
#include <limits>
#include <ostream>

namespace compositor {

namespace {

constexpr std::size_t any = std::numeric_limits<std::size_t>::max();
constexpr int largest = std::numeric_limits<int>::max();
// Each group takes some of the stack.
constexpr int deepestGroup = 200;

constexpr char const* blendFormulas =
    "    over      s + d (1 - a)\n"
    "    add       min(1, s + d)\n"
    "    multiply  s d + s (1 - b) + d (1 - a)\n"
    "    screen    s + d - s d\n"
    "    s: a channel of the layer, d: of what lies below it, both in linear light and multiplied by their alphas,\n"
    "    a and b; a is the layer's own alpha times its opacity. The resulting alpha: the same with a for s and b for "
    "d.\n";

int stepsOf(Statement const& statement) {
    return statement.arguments() == 1 ? statement.integer(1, 1, largest) : 1;
}

std::vector<std::string> argumentsOf(Statement const& statement) {
    return {statement.words.begin() + 1, statement.words.end()};
}

std::string quoted(std::string const& text) {
    return "\"" + text + "\"";
}

bool opensGroup(Statement const& statement) {
    return statement.word() == "group" || statement.word() == "quietly";
}

// An error in a script, with its line.
struct PlacedError {
    int line;
    std::string message;
};

std::vector<Statement> readAll(std::istream& stream) {
    ScriptReader reader(stream);
    std::vector<Statement> statements;
    std::vector<Statement> open;
    try {
        while (std::optional<Statement> statement = reader.next()) {
            if (opensGroup(*statement))
                open.push_back(*statement);
            else if (statement->word() == "end" && !open.empty())
                open.pop_back();
            statements.push_back(std::move(*statement));
        }
    } catch (ScriptError const& error) {
        throw PlacedError{reader.line(), error.what()};
    }
    if (!open.empty())
        throw PlacedError{
            open.back().line, "the script ends inside this " + open.back().word() + "; \"end\" is missing"};
    return statements;
}

// Not errors: they end a run from wherever it is, and pass through the guards of the groups on the way.
struct Stop {};
struct Quit {};

} // namespace

bool Interpreter::runScript(std::istream& script, std::string const& name) {
    bool isWell = false;
    try {
        std::vector<Statement> const statements = readAll(script);
        run(name, true, [next = statements.begin(), end = statements.end()]() mutable {
            return next == end ? std::nullopt : std::optional(*next++);
        });
        isWell = true;
    } catch (PlacedError const& error) {
        _name = name;
        report(error.line, error.message);
    } catch (Stop const&) {
        // Reported where it happened.
    }
    _jobs.wait();
    return !_jobs.takeFailure() && isWell;
}

void Interpreter::runTerminal(std::istream& terminal) {
    ScriptReader reader(terminal);
    run("input", false, [this, &reader]() -> std::optional<Statement> {
        for (;;)
            try {
                _jobs.update();
                _output << "> " << std::flush;
                return reader.next();
            } catch (ScriptError const& error) {
                report(reader.line(), error.what());
            }
    });
    _output << std::endl;
    _jobs.wait();
}

void Interpreter::run(std::string const& name, bool stopsAtErrors, Source source) {
    _name = name;
    _stopsAtErrors = stopsAtErrors;
    _next = std::move(source);
    try {
        runBlock(false);
    } catch (Quit const&) {
        _jobs.stopAll();
    }
}

// Runs statements up to the end of the group, or of the input. Returns whether the group was ended.
bool Interpreter::runBlock(bool isGroup) {
    while (std::optional<Statement> const statement = _next()) {
        if (isGroup && statement->word() == "end") return true;
        try {
            runStatement(*statement);
            updateJobs();
        } catch (std::exception const& error) {
            report(statement->line, error.what());
            if (_stopsAtErrors) throw Stop();
        }
    }
    return false;
}

void Interpreter::runStatement(Statement const& statement) {
    Word const& word = wordOf(statement.word());
    if (statement.arguments() < word.fewestArguments || statement.arguments() > word.mostArguments)
        throw ScriptError(std::string("write: ") + word.usage);
    if (!word.insideGroups && Ko::CmUndoGuard::isGuardActive())
        throw ScriptError(quoted(statement.word()) + " is not possible inside a group");
    word.run(*this, statement);
}

Interpreter::Word const& Interpreter::wordOf(std::string const& name) {
    auto const found = std::ranges::find_if(words(), [&](Word const& word) { return name == word.name; });
    if (found == words().end()) throw ScriptError("unknown word " + quoted(name) + "; \"help\" lists the words");
    return *found;
}

// The message was shown already.
void Interpreter::updateJobs() {
    _jobs.update();
    if (_stopsAtErrors && _jobs.takeFailure()) {
        _jobs.wait();
        throw Stop();
    }
}

void Interpreter::submit(Statement const& statement, Ko::OPtr<Ko::BgJobProtocol> protocol) {
    _jobs.submit(_name + ":" + std::to_string(statement.line), std::move(protocol));
}

void Interpreter::report(int line, std::string const& message) {
    _errors << _name << ':' << line << ": " << message << std::endl;
}

std::vector<Interpreter::Word> const& Interpreter::words() {
    using I = Interpreter;
    using S = Statement const;
    // Words with the name of an action are short for it: with a layer, whose name comes first, or with the document.
    static std::vector<Word> const table{
        {"canvas", "canvas WIDTH HEIGHT", 2, 2, true, [](I& self, S& line) { self.editDocument(line, "Set Canvas"); }},
        {"open", "open FILE.png [NAME] (adds a layer) or open FILE.koc (a document)", 1, 2, true,
            [](I& self, S& line) { self.open(line); }},
        {"checker", "checker NAME WIDTH HEIGHT CELL COLOUR COLOUR", 6, 6, true,
            [](I& self, S& line) { self.editDocument(line, "Add Checker"); }},
        {"gradient", "gradient NAME WIDTH HEIGHT COLOUR COLOUR [horizontal|vertical]", 5, 6, true,
            [](I& self, S& line) { self.editDocument(line, "Add Gradient"); }},
        {"move", "move NAME X Y", 3, 3, true, [](I& self, S& line) { self.editLayer(line, "Move"); }},
        {"opacity", "opacity NAME 0..1", 2, 2, true, [](I& self, S& line) { self.editLayer(line, "Opacity"); }},
        {"blend", "blend NAME over|add|multiply|screen", 2, 2, true, [](I& self, S& line) { self.blend(line); },
            blendFormulas},
        {"rename", "rename NAME NEW", 2, 2, true, [](I& self, S& line) { self.editLayer(line, "Rename"); }},
        {"remove", "remove NAME", 1, 1, true, [](I& self, S& line) { self.editLayer(line, "Remove"); }},
        {"reorder", "reorder NAME POSITION (0 is the bottom)", 2, 2, true,
            [](I& self, S& line) { self.editLayer(line, "Reorder"); }},
        {"drag", "drag NAME X Y [X Y ...] (along a path) or drag NAME [NAME ...] to NAME (a drop)", 3, any, true,
            [](I& self, S& line) { self.drag(line); }},
        {"select", "select [NAME ...] (none clears the selection)", 0, any, true,
            [](I& self, S& line) { self._gestures.select(argumentsOf(line)); }},
        {"menu", "menu (what can be done with the selected layers, or the document)", 0, 0, true,
            [](I& self, S&) { self._gestures.showMenu(self._output); }},
        {"do",
            "do ACTION [ARGUMENT ...] (with the selected layers, or the document; \"Blend > screen\" is one of a "
            "sub-menu)",
            1, any, true, [](I& self, S& line) { self.perform(line); }},
        {"options", "options ACTION", 1, 1, true, [](I& self, S& line) { self.options(line); }},
        {"copy", "copy", 0, 0, true, [](I& self, S&) { self._gestures.copy(); }},
        {"cut", "cut", 0, 0, true, [](I& self, S&) { self._gestures.cut(); }},
        {"paste", "paste", 0, 0, true, [](I& self, S&) { self._gestures.paste(); }},
        {"plugins", "plugins (where they were looked for, and what became of them)", 0, 0, true,
            [](I& self, S&) { self._plugIns.list(self._output); }},
        {"group", "group NAME ... end (one undo step)", 1, 1, true, [](I& self, S& line) { self.group(line); }},
        {"quietly", "quietly ... end (not in the history)", 0, 0, true, [](I& self, S& line) { self.quietly(line); }},
        {"undo", "undo [STEPS]", 0, 1, false, [](I& self, S& line) { self.undo(line); }},
        {"redo", "redo [STEPS]", 0, 1, false, [](I& self, S& line) { self.redo(line); }},
        {"history", "history", 0, 0, true, [](I& self, S&) { self.history(); }},
        {"goto", "goto POSITION (as history shows it)", 1, 1, false, [](I& self, S& line) { self.goTo(line); }},
        // The initial state is an element of the history too.
        {"limit", "limit COMMANDS (that the history keeps)", 1, 1, false,
            [](I& self, S& line) { self._editor.history()->setMaxStackHeight(line.integer(1, 1, largest - 1) + 1); }},
        {"layers", "layers", 0, 0, true, [](I& self, S&) { self.layers(); }},
        {"dump", "dump (the history as XML)", 0, 0, true,
            [](I& self, S&) { self._editor.history().dump(self._output); }},
        {"render", "render FILE.png (a job)", 1, 1, true,
            [](I& self, S& line) { self.submit(line, makeRenderProtocol(self._editor.document(), line.words[1])); }},
        {"save", "save FILE.koc (a job)", 1, 1, true,
            [](I& self, S& line) { self.submit(line, makeSaveProtocol(self._editor.document(), line.words[1])); }},
        {"run", "run \"COMMAND LINE\" [NAME=VALUE ...] (a job; its lines are shown)", 1, any, true,
            [](I& self, S& line) { self.runProgram(line); }},
        {"export", "export FILE \"COMMAND with %f\" (a job; %f is a rendered picture, %o the file)", 2, 2, true,
            [](I& self, S& line) { self.exportPicture(line); },
            "    %f and %o need no quotation marks, whatever the path. Inside the quoted text of a shell they are "
            "words for\n"
            "    that shell: export copy.png \"sh -c 'cp %f %o'\"\n"},
        {"jobs", "jobs (those that have ended are listed once)", 0, 0, true, [](I& self, S&) { self._jobs.list(); }},
        {"stop", "stop JOB", 1, 1, true, [](I& self, S& line) { self._jobs.stop(line.integer(1, 1, largest)); }},
        {"wait", "wait (until all jobs have ended)", 0, 0, true, [](I& self, S&) { self._jobs.wait(); }},
        {"echo", "echo TEXT", 0, any, true, [](I& self, S& line) { self.echo(line); }},
        {"help", "help [WORD]", 0, 1, true, [](I& self, S& line) { self.help(line); }},
        {"quit", "quit (stops all jobs)", 0, 0, true, [](I&, S&) { throw Quit(); }},
    };
    return table;
}

void Interpreter::group(Statement const& statement) {
    Ko::CmUndoGuard const guard(_editor.history(), statement.words[1]);
    runGroup(statement);
}

void Interpreter::quietly(Statement const& statement) {
    Ko::CmUndoGuardNoLog const guard(false);
    runGroup(statement);
}

void Interpreter::runGroup(Statement const& statement) {
    if (_depth == deepestGroup)
        throw ScriptError("groups inside groups go at most " + std::to_string(deepestGroup) + " deep");
    struct Deeper {
        explicit Deeper(int& depth) : _depth(depth) { ++_depth; }
        ~Deeper() { --_depth; }
        int& _depth;
    } const deeper(_depth);
    if (!runBlock(true)) throw ScriptError("the input ends inside this " + statement.word());
}

void Interpreter::editLayer(Statement const& statement, char const* action) {
    EditActions::perform(_editor, action, {_editor.document().layer(statement.words[1])},
        {statement.words.begin() + 2, statement.words.end()});
}

void Interpreter::editDocument(Statement const& statement, char const* action) {
    EditActions::perform(_editor, action, argumentsOf(statement));
}

void Interpreter::open(Statement const& statement) {
    std::filesystem::path const path = statement.words[1];
    _editor.open(path, statement.arguments() == 2 ? statement.words[2] : path.stem().string());
}

void Interpreter::blend(Statement const& statement) {
    std::string const mode = toString(blendModeOf(statement.words[2]));
    EditActions::perform(_editor, "Blend > " + mode, {_editor.document().layer(statement.words[1])}, {});
}

void Interpreter::drag(Statement const& statement) {
    auto const& words = statement.words;
    if (words[words.size() - 2] == "to") return _gestures.drag({words.begin() + 1, words.end() - 2}, words.back());
    if (statement.arguments() % 2 == 0) throw ScriptError("a path is made of pairs of X and Y");
    std::vector<Gestures::Point> path;
    for (std::size_t index = 2; index < words.size(); index += 2) {
        int const x = statement.integer(index, -largest, largest);
        path.push_back({x, statement.integer(index + 1, -largest, largest)});
    }
    _gestures.dragAlong(words[1], path);
}

void Interpreter::perform(Statement const& statement) {
    std::vector<Layer> const layers = _gestures.selected();
    std::vector<std::string> const arguments(statement.words.begin() + 2, statement.words.end());
    if (layers.empty())
        EditActions::perform(_editor, statement.words[1], arguments);
    else
        EditActions::perform(_editor, statement.words[1], layers, arguments);
}

void Interpreter::options(Statement const& statement) {
    std::vector<Layer> const layers = _gestures.selected();
    if (layers.empty()) throw ScriptError("no layer is selected");
    for (std::string const& option : EditActions::options(_editor, statement.words[1], layers.front()))
        _output << "  " << option << "\n";
}

void Interpreter::layers() {
    Document const& document = _editor.document();
    _output << "canvas " << document.canvas().width << " x " << document.canvas().height << "\n";
    for (std::size_t index = document.layers().size(); index-- > 0;) {
        Layer const& layer = document.layers()[index];
        Size const size = layer.placed.picture->size();
        _output << "  " << index << " " << quoted(layer.name) << " " << size.width << " x " << size.height << " at ("
                << layer.placed.x << ", " << layer.placed.y << "), opacity " << layer.placed.opacity << ", "
                << toString(layer.placed.blend) << "\n";
    }
}

void Interpreter::undo(Statement const& statement) {
    Ko::CmCommandStack& stack = *_editor.history();
    for (int steps = stepsOf(statement); steps > 0; --steps) {
        if (!stack.canUndo()) throw ScriptError("there is nothing to undo");
        int const before = stack.getNbUndoableCommands();
        stack.undo();
        if (stack.getNbUndoableCommands() != before - 1)
            throw ScriptError("a step cannot be undone any more; it and the steps before it were dropped");
    }
}

void Interpreter::redo(Statement const& statement) {
    Ko::CmCommandStack& stack = *_editor.history();
    for (int steps = stepsOf(statement); steps > 0; --steps) {
        if (!stack.canRedo()) throw ScriptError("there is nothing to redo");
        int const before = stack.getNbUndoableCommands();
        stack.redo();
        if (stack.getNbUndoableCommands() != before + 1)
            throw ScriptError("a step cannot be redone any more; it and the steps after it were dropped");
    }
}

void Interpreter::history() {
    Ko::CmCommandStack const& stack = *_editor.history();
    int position = 0;
    for (auto command = stack.getBegin(); command != stack.getEnd(); ++command)
        _output << (command == stack.getCurrent() ? "> " : "  ") << position++ << " " << (*command)->getDescription()
                << "\n";
}

void Interpreter::goTo(Statement const& statement) {
    Ko::CmCommandStack& stack = *_editor.history();
    int const position = statement.integer(1, 0, stack.getStackHeight() - 1);
    stack.moveTo(stack.getBegin() + position);
    if (stack.getNbUndoableCommands() != position)
        throw ScriptError("a step on the way cannot be made any more; steps that depend on it were dropped");
}

void Interpreter::runProgram(Statement const& statement) {
    auto const& words = statement.words;
    submit(statement, makeRunProtocol(words[1], {words.begin() + 2, words.end()}, _jobs.nextJobsLines()));
}

void Interpreter::exportPicture(Statement const& statement) {
    auto const& words = statement.words;
    submit(statement, makeExportProtocol(_editor.document(), words[1], words[2], _jobs.nextJobsLines()));
}

void Interpreter::echo(Statement const& statement) {
    for (std::size_t index = 1; index < statement.words.size(); ++index)
        _output << (index > 1 ? " " : "") << statement.words[index];
    _output << "\n";
}

void Interpreter::help(Statement const& statement) {
    if (statement.arguments() == 0) {
        for (Word const& word : words())
            _output << "  " << word.usage << "\n";
    } else {
        Word const& word = wordOf(statement.words[1]);
        _output << "  " << word.usage << "\n" << word.details;
    }
}

} // namespace compositor
