#pragma once

#include "framework/command/cmCommandStack.h"

#include <utility>

namespace Ko {

/// A part of a history that stays known while user code runs, whatever that does to the history: its positions follow
/// its elements, and it knows when the stack is destroyed. Spans nest, as the functions do that hold them.
class CmCommandStack::Span {
public:
    static constexpr int none = -1;

    /// The elements from `first` up to and without `end`.
    /// @param running position of the command that is about to run; it survives its removal and the stack until `dropFailed`.
    Span(CmCommandStack& stack, int first, int end, int running = none) noexcept
        : _stack(&stack), _outer(stack._innermostSpan), _first(first), _end(end), _running(running) {
        stack._innermostSpan = this;
    }
    ~Span() {
        if (_stack) _stack->_innermostSpan = _outer;
    }
    Span(Span const&) = delete;
    Span& operator=(Span const&) = delete;

    /// Sets the state of the stack while a command runs.
    class StateScope {
    public:
        StateScope(Span const& span, State during) noexcept : _span(span) {
            if (_span._stack) _before = std::exchange(_span._stack->_state, during);
        }
        ~StateScope() {
            if (_span._stack) _span._stack->_state = _before;
        }
        StateScope(StateScope const&) = delete;
        StateScope& operator=(StateScope const&) = delete;

    private:
        Span const& _span;
        State _before = Idle;
    };

    /// Whether the stack still exists.
    bool isAlive() const noexcept { return _stack != nullptr; }
    /// Whether elements came or went since the span was made.
    bool isTouched() const noexcept { return _isTouched; }
    int getFirst() const noexcept { return _first; }
    int getLength() const noexcept { return _end - _first; }
    /// The position that `position` has once the span is dropped; an element of the span gives the one before the span.
    int moved(int position) const noexcept;
    /// @returns `isAlive()`.
    /// @throws ExAssertionFailed when the running command changed the history.
    bool requireUntouched() const {
        if (!_stack) return false;
        if (_isTouched || _stack->_current != _running) [[unlikely]]
            refuseChange();
        return true;
    }

    /// Removes the elements from the history and destroys them when the history is consistent again, as their destructors
    /// may run arbitrary code. Where memory is exhausted, they go in several portions.
    void drop() noexcept;
    /// Drops the span after the running command has failed, and stops keeping that alive.
    void dropFailed() noexcept;
    /// Drops two spans, and destroys the elements of both when both are removed.
    static void drop(Span& one, Span& other) noexcept;

    /// Marks this span and those around it: elements came or went.
    void touch() noexcept;
    /// Called by the destructor of the stack.
    static void leaveStack(CmCommandStack& stack) noexcept;

private:
    class Removed;

    [[noreturn]] static void refuseChange();
    void dropOnly() noexcept;
    void remove(Removed& removed) noexcept;
    template <class Take>
    void remove(int count, Take take) noexcept;
    void follow(int first, int end) noexcept;
    void keepRunning() noexcept;

    CmCommandStack* _stack;
    Span* _outer;
    int _first;
    int _end;
    int _running;
    bool _isTouched = false;
    RCShdPtr<CmCommand> _kept;
};

} // namespace Ko
