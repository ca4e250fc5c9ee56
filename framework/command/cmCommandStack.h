#pragma once

#include "framework/command/cmCommand.h"
#include "internalAPI/cbDispatcher.h"
#include "pluginAPI/piCommandStack.h"

#include <deque>
#include <exception>
#include <string>

namespace Ko {

/// The undo history of one document: executed commands and a cursor, the current command. The commands up to the cursor can
/// be undone, those after it redone.
///
/// The first element is always the null command "Initial State", which is never undone or removed. At most
/// `getMaxStackHeight()` elements are kept, that one included; logging on a full stack drops the oldest command.
///
/// A command that fails makes a part of the history unreliable. A failed undo drops the command and all older ones, a failed
/// redo the command and all newer ones. An expected failure, `CmEx::ExCommandFailure`, is logged and does not reach the caller;
/// any other exception is logged and passed on.
///
/// Application thread only. Listeners are called when the stack is consistent; they may read it, log, undo and redo, add
/// and remove listeners. All of them are called, whatever one throws; the first such exception then reaches the caller,
/// with the operation done. A command that changes the history while it is undone or redone has failed unexpectedly; what
/// it logged meanwhile stays.
///
/// While guards have collected commands for this stack and not logged them, the history does not match the document: `undo`,
/// `redo`, `moveTo`, `setMaxStackHeight`, `removeLast` and `clear` throw `ExInternalError` then, and change nothing.
class KO_FRAMEWORK_API CmCommandStack : public PiCommandStack {
public:
    /// The elements, the oldest first.
    using Commands = std::deque<RCShdPtr<CmCommand>>;
    /// Refers to one element; valid until the history changes.
    using ConstIterator = Commands::const_iterator;

    CmCommandStack();
    ~CmCommandStack() override;

    /// Executes a command and logs it. If the command throws, nothing is logged and the exception passes on.
    /// @throws ExAssertionFailed when the execution of the command is disabled.
    void executeAndLog(RCShdPtr<CmCommand> const& cmd);
    /// Logs a command that has been executed, and drops the commands that could be redone. If memory is exhausted and the
    /// command cannot be logged, drops the whole history: without that command it would lead to wrong states.
    void log(RCShdPtr<CmCommand> const& cmd);

    void undo() override;
    void redo() override;
    [[nodiscard]] bool canUndo() const override { return _current > 0; }
    [[nodiscard]] bool canRedo() const override { return _current + 1 < getStackHeight(); }
    /// Undoes or redoes step by step until `target` is the current element, or until `target` is dropped on the way, because
    /// a command failed or a listener changed the history. The stack exists until the last step.
    /// @param target an element of this stack, not `getEnd()`.
    void moveTo(ConstIterator target);

    /// The number of elements, "Initial State" included.
    [[nodiscard]] int getStackHeight() const noexcept { return static_cast<int>(_stack.size()); }
    /// The largest permitted number of elements; 1000 unless another was set.
    [[nodiscard]] int getMaxStackHeight() const noexcept { return _maxStackHeight; }
    /// If there are more elements than `height`, drops the oldest commands; but if there are more excess elements than
    /// commands that can be undone, drops all. Executes and unexecutes nothing.
    /// @param height at least 2, "Initial State" included.
    void setMaxStackHeight(int height);
    /// How many commands can be undone; also the position of the current element, counted from "Initial State".
    [[nodiscard]] int getNbUndoableCommands() const noexcept { return _current; }

    /// Drops the last element without undoing it. Does nothing if that is "Initial State".
    void removeLast();
    /// Drops all but "Initial State", without undoing anything.
    void clear();

    /// The element "Initial State".
    [[nodiscard]] ConstIterator getBegin() const noexcept { return _stack.begin(); }
    /// The element that `undo()` reverts next.
    [[nodiscard]] ConstIterator getCurrent() const noexcept { return _stack.begin() + _current; }
    /// The position after the last element.
    [[nodiscard]] ConstIterator getEnd() const noexcept { return _stack.end(); }

    /// Calls the command-processed and the change callbacks, after commands that were deliberately not logged.
    void commandProcessedNoLog();

    /// Executes a command with logging suspended, so that commands inside its own guards are not collected again.
    /// @param cmd must not be released while the command runs.
    static void executeStatic(RCShdPtr<CmCommand> const& cmd);
    /// Unexecutes a command in the same way.
    static void unexecuteStatic(RCShdPtr<CmCommand> const& cmd);

    /// Registers a handler that is called after any command was executed, undone or redone. The handler is not owned.
    void addCommandProcessedCallback(CbHandler<CbEmptyType>* handler);
    /// Ends a registration.
    void removeCommandProcessedCallback(CbHandler<CbEmptyType>* handler);
    /// Registers a handler that is called after any change of the history, trimming and clearing included. The handler is not
    /// owned.
    void addChangeCallback(CbHandler<CbEmptyType>* handler);
    /// Ends a registration.
    void removeChangeCallback(CbHandler<CbEmptyType>* handler);

    [[nodiscard]] State getState() const override { return _state; }
    [[nodiscard]] std::string const& getName() const override { return _name; }
    /// Sets the name for display and diagnosis; empty at first.
    void setName(std::string const& name) { _name = name; }

private:
    friend class StepCollector;
    class Span;

    void append(RCShdPtr<CmCommand> cmd);
    template <class Run>
    void replay(Span& span, State state, char const* verb, Run run);
    [[noreturn]] void rethrowAfterNotification(Span const& span, std::exception_ptr const& unexpected);
    void drop(int first, int end, bool isProcessed);
    void giveUpHistory() noexcept;
    void requireNoOpenStep() const {
        if (_openStep) [[unlikely]]
            refuseWhileStepIsOpen();
    }
    [[noreturn]] void refuseWhileStepIsOpen() const;
    void setOpenStep(CmCommand const* step) noexcept { _openStep = step; }
    void notifyProcessed();
    void notifyChanged();

    Commands _stack;
    int _current = 0;
    int _maxStackHeight = 1000;
    CbDispatcher<CbEmptyType> _commandProcessedCallbacks;
    CbDispatcher<CbEmptyType> _changeCallbacks;
    State _state = Idle;
    std::string _name;
    // The commands that guards have collected for this stack and not logged yet; null if there are none.
    CmCommand const* _openStep = nullptr;
    Span* _innermostSpan = nullptr;
};

/// Writes the history as XML, the current command marked, as `RCShdPtr<CmCommandStack>::dump` does.
KO_FRAMEWORK_API void dumpObject(std::ostream& stream, CmCommandStack const& stack);

} // namespace Ko
