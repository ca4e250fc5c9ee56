#include "framework/command/cmSized.h"
#include "script/interpreter.h"

#include <cmath>
#include <iomanip>
#include <limits>
#include <ostream>
#include <sstream>

namespace compositor {

namespace {

using Outcome = Ko::CmReplay::Outcome;

constexpr float bytesInMebibyte = 1024.0f * 1024.0f;

int stepsOf(Statement const& statement) {
    return statement.arguments() == 1 ? statement.integer(1, 1, std::numeric_limits<int>::max()) : 1;
}

// Ends the statement where a step has failed. @param what the step and what it cannot be.
void requireDone(Ko::CmReplay const& result, std::string const& what) {
    if (result.outcome != Outcome::Failed) return;
    bool const isOne = result.numDropped == 1;
    throw InputError(what + " any more (" + result.error->getReason() + "); " + std::to_string(result.numDropped) +
                     (isOne ? " step was" : " steps were") + " dropped");
}

std::string mebibytes(std::size_t bytes) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << static_cast<float>(bytes) / bytesInMebibyte << " MiB";
    return text.str();
}

// The words after an element of the history.
std::string noteOf(Ko::CmCommand const& command, bool isSaved) {
    std::size_t const memory = Ko::CmSized::of(command);
    std::string const size = memory > 0 ? mebibytes(memory) : "";
    std::string const note = isSaved && memory > 0 ? "saved, " + size : isSaved ? "saved" : size;
    return note.empty() ? "" : " (" + note + ")";
}

} // namespace

void Interpreter::undo(Statement const& statement) {
    Ko::CmCommandStack& stack = *_editor.history();
    for (int steps = stepsOf(statement); steps > 0; --steps) {
        std::string const step = stack.getUndoText();
        Ko::CmReplay const result = stack.tryUndo();
        if (result.outcome == Outcome::NothingToDo) throw InputError("there is nothing to undo");
        requireDone(result, quoted(step) + " cannot be undone");
    }
}

void Interpreter::redo(Statement const& statement) {
    Ko::CmCommandStack& stack = *_editor.history();
    for (int steps = stepsOf(statement); steps > 0; --steps) {
        std::string const step = stack.getRedoText();
        Ko::CmReplay const result = stack.tryRedo();
        if (result.outcome == Outcome::NothingToDo) throw InputError("there is nothing to redo");
        requireDone(result, quoted(step) + " cannot be redone");
    }
}

void Interpreter::history() {
    Ko::CmCommandStack const& stack = *_editor.history();
    int position = 0;
    for (auto command = stack.getBegin(); command != stack.getEnd(); ++command, ++position)
        _output << (command == stack.getCurrent() ? "> " : "  ") << position << " " << (*command)->getDescription()
                << noteOf(**command, position == stack.getCleanPosition()) << "\n";
    if (stack.getMaxMemory() > 0)
        _output << "  " << mebibytes(stack.getMemory()) << " of " << mebibytes(stack.getMaxMemory()) << "\n";
}

void Interpreter::goTo(Statement const& statement) {
    Ko::CmCommandStack& stack = *_editor.history();
    int const position = statement.integer(1, 0, stack.getStackHeight() - 1);
    requireDone(stack.tryMoveTo(stack.getBegin() + position), "a step on the way cannot be made");
}

void Interpreter::limitMemory(Statement const& statement) {
    constexpr float most = 1024.0f * 1024.0f;
    _editor.history()->setMaxMemory(static_cast<std::size_t>(statement.number(1, 0.0f, most) * bytesInMebibyte));
}

void Interpreter::cancel() {
    requireDone(_gestures.cancel(), "the drag cannot be taken back");
}

} // namespace compositor
