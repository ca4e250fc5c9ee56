#pragma once

#include "framework/command/cmCommand.h"
#include "internalAPI/cbDispatcher.h"
#include "pluginAPI/piCommandStack.h"

#include <deque>
#include <exception>
#include <string>

namespace Ko {

/// The undo history of one document: executed commands with a cursor. What lies at and below the cursor can be undone,
/// what lies above it redone.
///
/// The first element is always the null command "Initial State", which is never undone or removed. At most
/// `getMaxStackHeight()` elements are kept, that one included; logging on a full stack drops the oldest command.
///
/// A command that fails leaves a history that cannot be trusted: a failed undo drops it and everything older, a failed
/// redo it and everything newer. An expected failure, `CmEx::ExCommandFailure`, is logged and swallowed; any other
/// exception is logged and passed on.
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
    /// The elements, the oldest first:
    using Commands = std::deque<RCShdPtr<CmCommand>>;
    using ConstIterator = Commands::const_iterator;

    CmCommandStack();
    ~CmCommandStack() override;

    /// Executes and logs in one step, outside any guard. What the command throws passes on; nothing is logged then.
    void executeAndLog(RCShdPtr<CmCommand> const& cmd);
    /// Logs a command that was executed already. What could be redone is dropped. Where memory runs out, so that it cannot be
    /// logged, the whole history is: without that command it would lead to states that never were.
    void log(RCShdPtr<CmCommand> const& cmd);

    void undo() override;
    void redo() override;
    bool canUndo() const override { return _current > 0; }
    bool canRedo() const override { return _current + 1 < getStackHeight(); }
    /// Undoes or redoes until `target`, an element of this stack and not its end, is the current one, or until history is dropped on the
    /// way because a command failed.
    void moveTo(ConstIterator target);

    /// The number of elements, "Initial State" included.
    int getStackHeight() const noexcept { return static_cast<int>(_stack.size()); }
    /// 1000 unless something else was set.
    int getMaxStackHeight() const noexcept { return _maxStackHeight; }
    /// If there are more elements than `height`, drops the oldest commands; but if there are more excess elements than
    /// commands that can be undone, drops all. Executes and unexecutes nothing.
    /// @param height at least 2, "Initial State" included.
    void setMaxStackHeight(int height);
    /// How many times `undo()` is possible.
    int getNbUndoableCommands() const noexcept { return _current; }

    /// Drops the last element without undoing it; does nothing on "Initial State".
    void removeLast();
    /// Drops all but "Initial State", without undoing anything.
    void clear();

    /// From "Initial State" to behind the last element; the current one is what `undo()` takes back. Valid until the history
    /// changes:
    ConstIterator getBegin() const noexcept { return _stack.begin(); }
    ConstIterator getCurrent() const noexcept { return _stack.begin() + _current; }
    ConstIterator getEnd() const noexcept { return _stack.end(); }

    /// For callers that changed the document through commands which were deliberately not logged: tells the listeners.
    void commandProcessedNoLog();

    /// Runs the command with logging suspended, so that what it does through guards of its own is not collected again:
    static void executeStatic(RCShdPtr<CmCommand> const& cmd);
    static void unexecuteStatic(RCShdPtr<CmCommand> const& cmd);

    /// Called after any command was executed, undone or redone. Handlers are not owned:
    void addCommandProcessedCallback(CbHandler<CbEmptyType>* handler);
    void removeCommandProcessedCallback(CbHandler<CbEmptyType>* handler);
    /// Called after any change of the history, trimming and clearing included. Handlers are not owned:
    void addChangeCallback(CbHandler<CbEmptyType>* handler);
    void removeChangeCallback(CbHandler<CbEmptyType>* handler);

    State getState() const override { return _state; }
    std::string const& getName() const override { return _name; }
    /// For display; empty unless it was set.
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
