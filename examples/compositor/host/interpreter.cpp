#include "host/interpreter.h"

#include "framework/command/cmUndoGuard.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "image/generators.h"

#include <algorithm>
#include <charconv>
#include <istream>
#include <limits>
#include <ostream>

namespace compositor {

namespace {

constexpr std::size_t any = std::numeric_limits<std::size_t>::max();
constexpr int largest = std::numeric_limits<int>::max();

// "rrggbb" or "rrggbbaa".
Colour colourOf(std::string const& text) {
    std::uint32_t value = 0;
    char const* const end = text.data() + text.size();
    bool const isHexadecimal =
        (text.size() == 6 || text.size() == 8) && std::from_chars(text.data(), end, value, 16).ptr == end;
    if (!isHexadecimal) throw ScriptError("\"" + text + "\" is not a colour; write rrggbb or rrggbbaa");
    if (text.size() == 6) value = value << 8 | 0xFF;
    auto const byte = [value](int shift) { return static_cast<std::uint8_t>(value >> shift & 0xFF); };
    return {byte(24), byte(16), byte(8), byte(0)};
}

Size sizeOf(Statement const& statement, std::size_t index) {
    int const width = statement.integer(index, 1, 65535);
    return {width, statement.integer(index + 1, 1, 65535)};
}

int stepsOf(Statement const& statement) {
    return statement.arguments() == 1 ? statement.integer(1, 1, largest) : 1;
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
    auto const found = std::ranges::find_if(words(), [&](Word const& word) { return statement.word() == word.name; });
    if (found == words().end())
        throw ScriptError("unknown word " + quoted(statement.word()) + "; \"help\" lists the words");
    if (statement.arguments() < found->fewestArguments || statement.arguments() > found->mostArguments)
        throw ScriptError(std::string("write: ") + found->usage);
    if (!found->insideGroups && Ko::CmUndoGuard::isGuardActive())
        throw ScriptError(quoted(statement.word()) + " is not possible inside a group");
    (this->*found->run)(statement);
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
    static std::vector<Word> const table{
        {"canvas", "canvas WIDTH HEIGHT", 2, 2, true, &I::canvas},
        {"open", "open FILE.png [NAME] (adds a layer) or open FILE.koc (a document)", 1, 2, true, &I::open},
        {"checker", "checker NAME WIDTH HEIGHT CELL COLOUR COLOUR", 6, 6, true, &I::checker},
        {"gradient", "gradient NAME WIDTH HEIGHT COLOUR COLOUR [horizontal|vertical]", 5, 6, true, &I::gradient},
        {"move", "move NAME X Y", 3, 3, true, &I::move},
        {"opacity", "opacity NAME 0..1", 2, 2, true, &I::opacity},
        {"blend", "blend NAME over|add|multiply|screen", 2, 2, true, &I::blend},
        {"rename", "rename NAME NEW", 2, 2, true, &I::rename},
        {"remove", "remove NAME", 1, 1, true, &I::remove},
        {"reorder", "reorder NAME POSITION (0 is the bottom)", 2, 2, true, &I::reorder},
        {"drag", "drag NAME X Y [X Y ...]", 3, any, true, &I::drag},
        {"group", "group NAME ... end (one undo step)", 1, 1, true, &I::group},
        {"quietly", "quietly ... end (not in the history)", 0, 0, true, &I::quietly},
        {"undo", "undo [STEPS]", 0, 1, false, &I::undo},
        {"redo", "redo [STEPS]", 0, 1, false, &I::redo},
        {"history", "history", 0, 0, true, &I::history},
        {"goto", "goto POSITION (as history shows it)", 1, 1, false, &I::goTo},
        {"limit", "limit COMMANDS (that the history keeps)", 1, 1, false, &I::limit},
        {"layers", "layers", 0, 0, true, &I::layers},
        {"dump", "dump (the history as XML)", 0, 0, true, &I::dump},
        {"render", "render FILE.png (a job)", 1, 1, true, &I::render},
        {"save", "save FILE.koc (a job)", 1, 1, true, &I::save},
        {"jobs", "jobs (those that have ended are listed once)", 0, 0, true, &I::jobs},
        {"stop", "stop JOB", 1, 1, true, &I::stop},
        {"wait", "wait (until all jobs have ended)", 0, 0, true, &I::wait},
        {"echo", "echo TEXT", 0, any, true, &I::echo},
        {"help", "help", 0, 0, true, &I::help},
        {"quit", "quit (stops all jobs)", 0, 0, true, &I::quit},
    };
    return table;
}

void Interpreter::group(Statement const& statement) {
    Ko::CmUndoGuard const guard(_editor.history(), statement.words[1], {});
    runGroup(statement);
}

void Interpreter::quietly(Statement const& statement) {
    Ko::CmUndoGuardNoLog const guard(false);
    runGroup(statement);
}

void Interpreter::runGroup(Statement const& statement) {
    if (!runBlock(true)) throw ScriptError("the input ends inside this " + statement.word());
}

void Interpreter::canvas(Statement const& statement) {
    _editor.setCanvas(sizeOf(statement, 1));
}

void Interpreter::open(Statement const& statement) {
    std::filesystem::path const path = statement.words[1];
    _editor.open(path, statement.arguments() == 2 ? statement.words[2] : path.stem().string());
}

void Interpreter::checker(Statement const& statement) {
    auto const& words = statement.words;
    _editor.addLayer(words[1],
        makeChecker(sizeOf(statement, 2), statement.integer(4, 1, 65535), colourOf(words[5]), colourOf(words[6])));
}

void Interpreter::gradient(Statement const& statement) {
    auto const& words = statement.words;
    bool const isVertical = statement.arguments() == 6 && words[6] == "vertical";
    if (statement.arguments() == 6 && !isVertical && words[6] != "horizontal")
        throw ScriptError(quoted(words[6]) + " is not a direction; write horizontal or vertical");
    _editor.addLayer(words[1], makeGradient(sizeOf(statement, 2), colourOf(words[4]), colourOf(words[5]),
                                   isVertical ? Direction::Vertical : Direction::Horizontal));
}

void Interpreter::move(Statement const& statement) {
    int const x = statement.integer(2, -largest, largest);
    _editor.moveLayer(statement.words[1], x, statement.integer(3, -largest, largest));
}

void Interpreter::opacity(Statement const& statement) {
    _editor.setOpacity(statement.words[1], statement.number(2, 0.0f, 1.0f));
}

void Interpreter::blend(Statement const& statement) {
    _editor.setBlend(statement.words[1], blendModeOf(statement.words[2]));
}

void Interpreter::rename(Statement const& statement) {
    _editor.renameLayer(statement.words[1], statement.words[2]);
}

void Interpreter::remove(Statement const& statement) {
    _editor.removeLayer(statement.words[1]);
}

void Interpreter::reorder(Statement const& statement) {
    _editor.reorderLayer(statement.words[1], static_cast<std::size_t>(statement.integer(2, 0, largest)));
}

void Interpreter::drag(Statement const& statement) {
    if (statement.arguments() % 2 == 0) throw ScriptError("a path is made of pairs of X and Y");
    std::vector<Editor::Point> path;
    for (std::size_t index = 2; index < statement.words.size(); index += 2) {
        int const x = statement.integer(index, -largest, largest);
        path.push_back({x, statement.integer(index + 1, -largest, largest)});
    }
    _editor.dragLayer(statement.words[1], path);
}

void Interpreter::layers(Statement const&) {
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

void Interpreter::history(Statement const&) {
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

void Interpreter::limit(Statement const& statement) {
    // The initial state is an element of the history too.
    _editor.history()->setMaxStackHeight(statement.integer(1, 1, largest - 1) + 1);
}

void Interpreter::dump(Statement const&) {
    _editor.history().dump(_output);
}

void Interpreter::render(Statement const& statement) {
    submit(statement, makeRenderProtocol(_editor.document(), statement.words[1]));
}

void Interpreter::save(Statement const& statement) {
    submit(statement, makeSaveProtocol(_editor.document(), statement.words[1]));
}

void Interpreter::jobs(Statement const&) {
    _jobs.list();
}

void Interpreter::stop(Statement const& statement) {
    _jobs.stop(statement.integer(1, 1, largest));
}

void Interpreter::wait(Statement const&) {
    _jobs.wait();
}

void Interpreter::echo(Statement const& statement) {
    for (std::size_t index = 1; index < statement.words.size(); ++index)
        _output << (index > 1 ? " " : "") << statement.words[index];
    _output << "\n";
}

void Interpreter::help(Statement const&) {
    for (Word const& word : words())
        _output << "  " << word.usage << "\n";
}

void Interpreter::quit(Statement const&) {
    throw Quit();
}

} // namespace compositor
