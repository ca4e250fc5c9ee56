#include "script/interpreter.h"

#include "framework/command/cmUndoGuard.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "script/scriptReader.h"

#include <algorithm>
#include <istream>
#include <ostream>

namespace compositor {

namespace {

// Each group takes some of the stack.
constexpr int deepestGroup = 200;

bool opensGroup(Statement const& statement) {
    return statement.word() == "group" || statement.word() == "quietly";
}

// An error with its line.
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
    } catch (InputError const& error) {
        throw PlacedError{reader.line(), error.what()};
    }
    if (!open.empty())
        throw PlacedError{
            open.back().line, "the script ends inside this " + open.back().word() + "; \"end\" is missing"};
    return statements;
}

// No errors, so that only a run catches them: they end it from inside any number of groups.
struct Stop {};
struct Quit {};

} // namespace

bool Interpreter::runScript(std::istream& script, std::string const& name) {
    bool isWell = false;
    try {
        std::vector<Statement> const statements = readAll(script);
        isWell = run(name, true, [next = statements.begin(), end = statements.end()]() mutable {
            return next == end ? std::nullopt : std::optional(*next++);
        });
    } catch (PlacedError const& error) {
        _name = name;
        report(error.line, error.message);
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
                _output << (_editor.history()->isClean() ? "> " : "*> ") << std::flush;
                return reader.next();
            } catch (InputError const& error) {
                report(reader.line(), error.what());
            }
    });
    _output << std::endl;
    _jobs.wait();
}

// Returns whether no error has ended it.
bool Interpreter::run(std::string const& name, bool stopsAtErrors, Source source) {
    _name = name;
    _stopsAtErrors = stopsAtErrors;
    _next = std::move(source);
    bool isWell = true;
    try {
        runBlock(false);
    } catch (Quit const&) {
        _jobs.stopAll();
    } catch (Stop const&) {
        isWell = false;
    }
    endDrag();
    return isWell;
}

// Like a window that closes while the mouse is pressed.
void Interpreter::endDrag() {
    if (_gestures.isDragging()) _gestures.cancel();
}

// Runs statements up to the end of the group, or of the input. Returns whether the group has ended.
bool Interpreter::runBlock(bool isGroup) {
    while (std::optional<Statement> const statement = _next()) {
        if (isGroup && statement->word() == "end") return true;
        if (_pace && !_pace(*statement)) quit();
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
        throw InputError(std::string("write: ") + word.usage);
    requirePlace(word);
    word.run(*this, statement);
}

void Interpreter::requirePlace(Word const& word) const {
    if (word.place != Place::Anywhere && _depth > 0)
        throw InputError(quoted(word.name) + " is not possible inside a group");
    if (word.place == Place::OutsideSteps && _gestures.isDragging())
        throw InputError(quoted(word.name) + " is not possible during a drag");
}

// Jobs have displayed the message of a failure already.
void Interpreter::updateJobs() {
    _jobs.update();
    if (_stopsAtErrors && _jobs.takeFailure()) {
        _jobs.wait();
        throw Stop();
    }
}

void Interpreter::submit(Statement const& statement, Ko::OPtr<Ko::BgJobProtocol> protocol) {
    _jobs.submit(placeOf(statement), std::move(protocol));
}

std::string Interpreter::placeOf(Statement const& statement) const {
    return _name + ":" + std::to_string(statement.line);
}

void Interpreter::report(int line, std::string const& message) {
    _errors << _name << ':' << line << ": " << message << std::endl;
}

void Interpreter::quit() {
    throw Quit();
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
        throw InputError("groups inside groups go at most " + std::to_string(deepestGroup) + " deep");
    struct Deeper {
        explicit Deeper(int& depth) : _depth(depth) { ++_depth; }
        ~Deeper() { --_depth; }
        int& _depth;
    } const deeper(_depth);
    if (!runBlock(true)) throw InputError("the input ends inside this " + statement.word());
}

} // namespace compositor
