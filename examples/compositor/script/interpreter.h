#pragma once

#include "host/editor.h"
#include "host/gestures.h"
#include "script/jobs.h"
#include "text/statement.h"

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

namespace compositor {

/// Runs the script language on an editor. Results are written to one stream, errors with file and line to another. Rendering,
/// saving and external programs become jobs, and the script continues while they run.
class Interpreter {
public:
    Interpreter(Editor& editor, Jobs& jobs, std::ostream& output, std::ostream& errors)
        : _editor(editor), _gestures(editor), _jobs(jobs), _output(output), _errors(errors) {}

    /// Runs a whole script, and waits for the jobs that it has started. Reads all of it first, so that a script with a missing
    /// "end" changes nothing. The first error, also of a job, ends the script.
    /// @param name for error messages, before the line.
    /// @returns whether there was no error.
    bool runScript(std::istream& script, std::string const& name);

    /// Runs the lines of a terminal, with a prompt before each, and continues after errors.
    void runTerminal(std::istream& terminal);

    /// Called before each statement. A guard may be open. @returns whether to continue; false ends the script like "quit".
    using Pace = std::function<bool(Statement const& next)>;
    void setPace(Pace pace) { _pace = std::move(pace); }

    /// Where a word is possible: not outside groups of edits means that it changes the history itself.
    enum class Place { Anywhere, OutsideGroups, OutsideSteps };
    /// One word of the language.
    struct Word {
        char const* name;
        char const* usage;
        std::size_t fewestArguments;
        std::size_t mostArguments;
        Place place;
        void (*run)(Interpreter& self, Statement const& statement);
        /// More lines for "help WORD".
        char const* details = "";
    };
    [[nodiscard]] static std::vector<Word> const& words();
    /// @throws InputError when there is no such word.
    [[nodiscard]] static Word const& wordOf(std::string const& name);

private:
    /// The next statement; nothing at the end.
    using Source = std::function<std::optional<Statement>()>;

    bool run(std::string const& name, bool stopsAtErrors, Source source);
    void endDrag();
    bool runBlock(bool isGroup);
    void runStatement(Statement const& statement);
    void runGroup(Statement const& statement);
    void updateJobs();
    void requirePlace(Word const& word) const;
    std::string placeOf(Statement const& statement) const;
    void submit(Statement const& statement, Ko::OPtr<Ko::BgJobProtocol> protocol);
    void report(int line, std::string const& message);

    void editLayer(Statement const& statement, char const* action);
    void editDocument(Statement const& statement, char const* action);
    void group(Statement const& statement);
    void quietly(Statement const& statement);
    void open(Statement const& statement);
    void blend(Statement const& statement);
    void drag(Statement const& statement);
    void drop(std::vector<std::string> const& names, std::vector<std::string> const& place);
    void pull(Statement const& statement);
    void cancel();
    void perform(Statement const& statement);
    void options(Statement const& statement);
    void layers();
    void undo(Statement const& statement);
    void redo(Statement const& statement);
    void history();
    void goTo(Statement const& statement);
    void limitMemory(Statement const& statement);
    void save(Statement const& statement);
    void flatten(Statement const& statement);
    void after(Statement const& statement);
    void frames(Statement const& statement);
    void runProgram(Statement const& statement);
    void exportPicture(Statement const& statement);
    void echo(Statement const& statement);
    void help(Statement const& statement);
    [[noreturn]] void quit();

    static std::vector<Word> const _words;

    Editor& _editor;
    Gestures _gestures;
    Jobs& _jobs;
    std::ostream& _output;
    std::ostream& _errors;
    std::string _name;
    bool _stopsAtErrors = true;
    Source _next;
    Pace _pace;
    int _depth = 0;
};

} // namespace compositor
