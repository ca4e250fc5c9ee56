#include "host/interpreter.h"

#include "framework/command/cmUndoGuard.h"
#include "framework/command/cmUndoGuardNoLog.h"

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
    } catch (ScriptError const& error) {
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
        run(name, true, [next = statements.begin(), end = statements.end()]() mutable {
            return next == end ? std::nullopt : std::optional(*next++);
        });
        isWell = true;
    } catch (PlacedError const& error) {
        _name = name;
        report(error.line, error.message);
    } catch (Stop const&) {
        // Reported already.
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

// Runs statements up to the end of the group, or of the input. Returns whether the group has ended.
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

// Jobs have displayed the message of a failure already.
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
        throw ScriptError("groups inside groups go at most " + std::to_string(deepestGroup) + " deep");
    struct Deeper {
        explicit Deeper(int& depth) : _depth(depth) { ++_depth; }
        ~Deeper() { --_depth; }
        int& _depth;
    } const deeper(_depth);
    if (!runBlock(true)) throw ScriptError("the input ends inside this " + statement.word());
}

} // namespace compositor
