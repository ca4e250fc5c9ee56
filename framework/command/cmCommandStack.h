#pragma once

#include "base/oPtr.h"
#include "framework/command/cmCommand.h"
#include "framework/command/cmReplay.h"
#include "internalAPI/cbDispatcher.h"
#include "pluginAPI/piCommandStack.h"

#include <algorithm>
#include <deque>
#include <exception>
#include <functional>
#include <string>

namespace Ko {

class CmMerger;
struct CmHistoryChange;
extern template class KO_FRAMEWORK_API CbDispatcher<CmHistoryChange>;

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
    /// Unexecutes a command with logging suspended. The command must not be released while it runs.
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

    /// Undoes like `undo()`, but answers where nothing can be undone or the command fails. What listeners throw passes on.
    CmReplay tryUndo();
    /// Redoes like `redo()`, but answers where nothing can be redone or the command fails. What listeners throw passes on.
    CmReplay tryRedo();
    /// Moves like `moveTo()`, but answers where `target` is the current element or a command fails. What listeners throw passes on.
    CmReplay tryMoveTo(ConstIterator target);

    /// The description of the command that `undo()` would take back; empty if there is none.
    [[nodiscard]] LiString getUndoText() const;
    /// The description of the command that `redo()` would repeat; empty if there is none.
    [[nodiscard]] LiString getRedoText() const;

    /// Marks the present state as the one that is saved.
    /// @throws ExInternalError while a step is open that has collected commands.
    void setClean();
    /// Forgets the state that is saved, for instance because saving it failed after all. Possible at any time.
    void resetClean();
    /// Whether the document is as it was at the last `setClean()`, or as at the beginning where there was none. False while a
    /// step is open that has collected commands. Never again true until the next `setClean()` once that state is gone: dropped,
    /// replaced, lost by a failed or an unlogged change, or left by undoing or redoing a command that is older than such a change.
    [[nodiscard]] bool isClean() const noexcept { return _clean == _current && !_openStep; }
    /// The position of the state that is saved, counted from "Initial State"; -1 when the history does not lead there.
    [[nodiscard]] int getCleanPosition() const noexcept { return _clean; }

    /// Decides from now on which logged commands join the last one; null keeps all apart.
    void setMerger(RCShdPtr<CmMerger> merger);

    /// Limits the memory of all commands, as far as they tell it (`CmSized`): while it is exceeded, the oldest commands are dropped.
    /// The newest one, and commands that can be redone, stay.
    /// @param bytes 0 for no limit.
    void setMaxMemory(std::size_t bytes);
    /// The limit in bytes; 0 when there is none.
    [[nodiscard]] std::size_t getMaxMemory() const noexcept;
    /// The memory that counts towards the limit, in bytes; 0 when there is no limit.
    [[nodiscard]] std::size_t getMemory() const noexcept;

    /// Calls `callable` after any change of the history, before all callbacks above and before `onCleanChange`. During a move over several
    /// steps it is called with the last one.
    [[nodiscard]] CbSubscription onHistoryChange(std::function<void(CmHistoryChange const&)> callable);
    /// Calls `callable` when `isClean()` has changed.
    [[nodiscard]] CbSubscription onCleanChange(std::function<void()> callable);
    /// Calls `callable` whenever a handler of `addCommandProcessedCallback` would be called.
    [[nodiscard]] CbSubscription onCommandProcessed(std::function<void()> callable);
    /// Calls `callable` whenever a handler of `addChangeCallback` would be called.
    [[nodiscard]] CbSubscription onChange(std::function<void()> callable);

    [[nodiscard]] State getState() const override { return _state; }
    [[nodiscard]] std::string const& getName() const override { return _name; }
    /// Sets the name for display and diagnosis; empty at first.
    void setName(std::string const& name) { _name = name; }

private:
    friend class StepCollector;
    class Span;

    class Keeper;
    class Replay;

    // A deque finds an element slowly by its position; undo and redo need the last element again, or a neighbour of it.
    RCShdPtr<CmCommand>& find(int position) {
        if (position == _lastFound + 1)
            ++_lastElement;
        else if (position == _lastFound - 1)
            --_lastElement;
        else if (position != _lastFound)
            _lastElement = _stack.begin() + position;
        _lastFound = position;
        return *_lastElement;
    }
    // Called after elements came or went.
    void forgetLastFound() noexcept { _lastFound = neverFound; }
    void append(RCShdPtr<CmCommand> cmd, bool isOutdated = false);
    bool joinLast(RCShdPtr<CmCommand> const& next);
    // How many of the oldest commands are too many when the last element is logged and moves to position `newest`.
    int countSurplus(int newest) const noexcept {
        int const tooHigh = newest >= _maxStackHeight ? 1 : 0;
        return _keeper ? std::max(tooHigh, countSurplusOfMemory(newest)) : tooHigh;
    }
    int countSurplusOfMemory(int newest) const noexcept;
    void dropForLogged(int redoable, int height, int surplus);
    bool undoStep(bool isLast, Replay* answer);
    bool redoStep(bool isLast, Replay* answer);
    void replayTo(ConstIterator target, Replay* answer);
    template <class Run>
    bool replay(Span& span, State state, char const* verb, bool isLast, Replay* answer, Run run);
    void cutFailed(Span& span, CmCommand& failed, Replay* answer) noexcept;
    void notifyQuietly() noexcept;
    int cut(Span& span, CmCommand& failed, std::exception_ptr const& error) noexcept;
    void cutByFailure(CmCommand& failed, std::exception_ptr const& error) noexcept;
    void dropOldest(int count);
    void dropAll();
    void drop(int first, int end, bool isProcessed);
    void prepare() const;
    void giveUpHistory() noexcept;
    void loseCleanMark(int numOutdated) noexcept {
        _clean = noPosition;
        _numOutdated = numOutdated;
    }
    void noteUnlogged();
    void forgetOldest(int count) noexcept {
        _clean = _clean >= count ? _clean - count : noPosition;
        _numOutdated = std::max(_numOutdated - count, 0);
    }
    void stepBack() noexcept {
        loseCleanMarkIfOutdated(_current);
        --_current;
    }
    void confirmStepForward() noexcept { loseCleanMarkIfOutdated(_current); }
    // Undoing and redoing an outdated command may lead to a state that never was, for which all commands are outdated.
    void loseCleanMarkIfOutdated(int command) noexcept {
        if (command <= _numOutdated) [[unlikely]]
            loseCleanMark(getStackHeight() - 1);
    }
    void requireNoOpenStep() const {
        if (_openStep) [[unlikely]]
            refuseWhileStepIsOpen();
    }
    [[noreturn]] void refuseWhileStepIsOpen() const;
    void setOpenStep(CmCommand const* step) noexcept { _openStep = step; }
    // Notifies the listeners of the clean mark if that has changed.
    void updateCleanMark() {
        if (_keeper) [[unlikely]]
            deliverChanges();
    }
    void deliverChanges();
    void notify(bool isProcessed, bool isLast = true);
    void notifyWithChanges(bool isProcessed, bool isLast, LgFirstError& error);
    bool callListeners(bool isProcessed, LgFirstError& error);
    Keeper& getKeeper();

    static OPtr<ExBase const> toExBase(std::exception_ptr const& error);

    static constexpr int noPosition = -1;
    static constexpr int neverFound = -2;

    Commands _stack;
    int _current = 0;
    Commands::iterator _lastElement;
    int _lastFound = neverFound;
    int _maxStackHeight = 1000;
    CbDispatcher<CbEmptyType> _commandProcessedCallbacks;
    CbDispatcher<CbEmptyType> _changeCallbacks;
    State _state = Idle;
    std::string _name;
    // The commands that guards have collected for this stack and not logged yet; null if there are none.
    CmCommand const* _openStep = nullptr;
    Span* _innermostSpan = nullptr;
    // The position of the state that was saved; `noPosition` when the history does not lead there.
    int _clean = 0;
    // How many of the oldest commands were executed before the last unlogged or failed change.
    int _numOutdated = 0;
    OPtr<Keeper> _keeper;
};

/// Writes the history as XML, the current command marked, as `RCShdPtr<CmCommandStack>::dump` does.
KO_FRAMEWORK_API void dumpObject(std::ostream& stream, CmCommandStack const& stack);

} // namespace Ko
