#pragma once

#include "framework/command/cmCommand.h"
#include "internalAPI/cbDispatcher.h"
#include "pluginAPI/piCommandStack.h"

#include <deque>
#include <iterator>
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
/// with the operation done. Commands must not change the history from inside their execution or unexecution.
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
    bool canUndo() const override { return getCurrent() != _stack.begin(); }
    bool canRedo() const override { return std::next(getCurrent()) != _stack.end(); }
    /// Undoes or redoes until `target`, an element of this stack and not its end, is the current one, or until history is dropped on the
    /// way because a command failed.
    void moveTo(ConstIterator target);

    /// The number of elements, "Initial State" included.
    int getStackHeight() const noexcept { return static_cast<int>(_stack.size()); }
    /// 1000 unless something else was set.
    int getMaxStackHeight() const noexcept { return _maxStackHeight; }
    /// Drops the oldest commands where there are too many; drops all if the current one would be among them.
    /// @param height at least 2.
    void setMaxStackHeight(int height);
    /// How many times `undo()` is possible.
    int getNbUndoableCommands() const noexcept { return static_cast<int>(getCurrent() - _stack.begin()); }

    /// Drops the last element without undoing it; does nothing on "Initial State".
    void removeLast();
    /// Drops all but "Initial State", without undoing anything.
    void clear();

    /// From "Initial State" to behind the last element; the current one is what `undo()` takes back. Valid until the history
    /// changes:
    ConstIterator getBegin() const noexcept { return _stack.begin(); }
    ConstIterator getCurrent() const noexcept { return _current; }
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
    template <class Step, class DropHistory>
    void replay(State state, char const* verb, CmCommand const& command, Step step, DropHistory dropHistory);
    // Whether a command that was run at this position left the history as it was.
    bool isUntouched(ConstIterator position) const noexcept { return getCurrent() == position && _dropped.empty(); }
    void makeRoomForDropped();
    void giveUpHistory() noexcept;
    void drop(Commands::iterator first, Commands::iterator end) noexcept;
    void dropOldest() noexcept;
    void notifyProcessed();
    void notifyChanged();

    Commands _stack;
    Commands::iterator _current;
    int _maxStackHeight = 1000;
    CbDispatcher<CbEmptyType> _commandProcessedCallbacks;
    CbDispatcher<CbEmptyType> _changeCallbacks;
    State _state = Idle;
    std::string _name;
    // What was dropped while it may be running.
    Vector<RCShdPtr<CmCommand>> _dropped;
};

/// Writes the history as XML, the current command marked, as `RCShdPtr<CmCommandStack>::dump` does.
KO_FRAMEWORK_API void dumpObject(std::ostream& stream, CmCommandStack const& stack);

} // namespace Ko
