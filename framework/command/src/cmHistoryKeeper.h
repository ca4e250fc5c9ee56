#pragma once

#include "framework/command/cmCommandStack.h"
#include "framework/command/cmHistoryChange.h"
#include "framework/command/cmMerger.h"
#include "framework/command/src/cmSizeFinder.h"

#include <array>
#include <deque>
#include <initializer_list>

namespace Ko {

/// What a history does beyond keeping commands: notify listeners of its changes, merge steps, and stay within a budget. Made when
/// one of these is used for the first time, so that other histories pay nothing.
class CmCommandStack::Keeper {
public:
    using Kind = CmHistoryChange::Kind;

    explicit Keeper(CmCommandStack& stack) : _stack(stack), _deliveredClean(stack.isClean()) {}

    CbDispatcher<CmHistoryChange> changes;
    CbDispatcher<CbEmptyType> cleanChanges;
    RCShdPtr<CmMerger> merger;

    /// Makes `record` unable to fail.
    void makeRoom() {
        if (_queue.capacity() - _queue.size() < spareChanges) growQueue();
    }
    /// Queues a change. Called when the change is made, before the destructors of removed commands run.
    /// @param isPartOfMove whether the next change of the same move replaces this one.
    void record(
        Kind kind, std::initializer_list<CmHistorySplice> splices, int current, bool isPartOfMove = false) noexcept;
    /// Queues the logging of the last element, which drops the redoable elements before it and the oldest ones.
    void recordLogged(int redoable, int endRedoable, int numOldest) noexcept {
        _isFresh = true;
        if (!changes.isEmpty()) queueLogged(redoable, endRedoable, numOldest);
    }
    /// Queues the replacement of the current element, which drops the oldest ones.
    void recordMerged(RCShdPtr<CmCommand> const& merged, int numOldest) noexcept;
    /// Queues the loss of a span, which is dropped next.
    void recordCut(Span const& span, CmCommand& failed, std::exception_ptr const& error) noexcept;

    /// Delivers all queued changes and then the clean mark. Called inside such a delivery, it leaves them to the outer call.
    /// @returns whether the stack still exists.
    bool deliver(LgFirstError& error) {
        return (_queue.empty() && _deliveredClean == _stack.isClean()) || deliverAll(error);
    }
    bool isDelivering() const noexcept { return _isDelivering; }
    /// Remembers listeners that cannot be called during a delivery.
    void postpone(bool isProcessed) noexcept { ++(isProcessed ? _numProcessed : _numChanged); }
    /// @returns false when no postponed call is left; otherwise sets `isProcessed` to its kind.
    bool takePostponed(bool& isProcessed) noexcept;

    /// Whether the merger is to be asked about the next command.
    bool canMerge() const noexcept {
        bool const isOnTop = _stack._current + 1 == _stack.getStackHeight();
        return merger && _isFresh && _stack._current > 0 && isOnTop && _stack._clean != _stack._current;
    }
    /// The next command is kept apart from the last one.
    void endMerging() noexcept { _isFresh = false; }

    void setMaxMemory(std::size_t bytes);
    std::size_t getMaxMemory() const noexcept { return _maxMemory; }
    std::size_t getMemory() const noexcept { return _memory; }
    /// Adds the size of a command that is about to be appended.
    void addSize(CmCommand const& command);
    /// Sets the size of an element that was replaced.
    void setSize(int position, CmCommand const& command) noexcept;
    /// Follows removed elements.
    void removeSizes(int first, int count) noexcept;
    /// Drops the sizes of elements that were not appended after all.
    void truncateSizes(int height) noexcept;
    /// How many of the oldest commands exceed the budget once the elements from `firstRedoable` up to `endRedoable` are gone; at most
    /// `limit`.
    int countSurplus(int firstRedoable, int endRedoable, int limit) const noexcept;

private:
    // A change that is not delivered yet.
    struct Pending {
        Pending(Kind itsKind, std::initializer_list<CmHistorySplice> itsSplices, int itsCurrent,
            bool itIsPartOfMove = false) noexcept;

        Kind kind;
        std::array<CmHistorySplice, 3> splices{};
        std::size_t numSplices = 0;
        int current;
        RCShdPtr<CmCommand> logged{};
        RCShdPtr<CmCommand> failed{};
        OPtr<ExBase const> error{};
        // A step of a move: the next step replaces it.
        bool isPartOfMove;
    };

    // One change of the operation itself, and some of operations that are nested in it.
    static constexpr std::size_t spareChanges = 8;

    void growQueue();
    void queueLogged(int redoable, int endRedoable, int numOldest) noexcept;
    template <class Complete>
    void queue(Kind kind, std::initializer_list<CmHistorySplice> splices, int current, bool isPartOfMove,
        Complete complete) noexcept;
    bool deliverAll(LgFirstError& error);
    bool deliverChanges(LgFirstError& error);

    CmCommandStack& _stack;
    Vector<Pending> _queue;
    bool _isDelivering = false;
    int _numProcessed = 0;
    int _numChanged = 0;
    bool _deliveredClean;
    // Whether the last change logged the current command.
    bool _isFresh = false;
    CmSizeFinder _sizeOf;
    std::size_t _maxMemory = 0;
    std::size_t _memory = 0;
    // By position, while there is a budget; empty otherwise.
    std::deque<std::size_t> _sizes;
};

} // namespace Ko
