#include "host/interpreter.h"

#include <limits>
#include <ostream>

namespace compositor {

namespace {

int stepsOf(Statement const& statement) {
    return statement.arguments() == 1 ? statement.integer(1, 1, std::numeric_limits<int>::max()) : 1;
}

} // namespace

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

} // namespace compositor
