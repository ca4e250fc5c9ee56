#include "framework/command/src/cmHistorySpan.h"

#include "base/assertions.h"
#include "framework/command/src/cmHistoryKeeper.h"

#include <algorithm>
#include <new>
#include <utility>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\command\\src\\cmCommandStack"};

// Where a boundary between elements lies after the removal of the elements from `first` up to `end`.
int movedBoundary(int boundary, int first, int end) noexcept {
    if (boundary <= first) return boundary;
    return boundary < end ? first : boundary - (end - first);
}

} // namespace

/// The elements that were removed together.
class CmCommandStack::Span::Removed {
public:
    explicit Removed(int wanted) noexcept {
        try {
            if (wanted > 1) _others.reserve(static_cast<std::size_t>(wanted - 1));
        } catch (std::bad_alloc const&) {
            // One at a time, then.
        }
    }
    int getCapacity() const noexcept { return static_cast<int>(_others.capacity()) + 1; }
    void add(RCShdPtr<CmCommand>&& command) noexcept {
        if (!_first)
            _first = std::move(command);
        else
            _others.push_back(std::move(command));
    }

private:
    RCShdPtr<CmCommand> _first;
    Vector<RCShdPtr<CmCommand>> _others;
};

void CmCommandStack::Span::refuseChange() {
    source.fail("isUntouched(position)");
}

int CmCommandStack::Span::moved(int position) const noexcept {
    return movedBoundary(position + 1, _first, _end) - 1;
}

void CmCommandStack::Span::drop() noexcept {
    while (_stack && _first < _end) {
        Removed removed(getLength());
        remove(removed);
    }
}

void CmCommandStack::Span::drop(Span& one, Span& other) noexcept {
    {
        Removed removed(one.getLength()), removedToo(other.getLength());
        one.remove(removed);
        other.remove(removedToo);
    }
    one.drop();
    other.drop();
}

void CmCommandStack::Span::dropFailed() noexcept {
    _running = none;
    drop();
    _kept.reset();
}

void CmCommandStack::Span::remove(Removed& removed) noexcept {
    int const count = std::min(getLength(), removed.getCapacity());
    int const first = _first;
    int const end = _first + count;
    CmCommandStack& stack = *_stack;
    for (Span* span = stack._innermostSpan; span; span = span->_outer)
        span->follow(first, end);
    // The bottom element takes the place of the last one that is removed after it; the front of the queue goes cheaply.
    if (first == 1) stack._stack[0].swap(stack._stack[static_cast<std::size_t>(count)]);
    auto const begin = stack._stack.begin() + (first == 1 ? 0 : first);
    for (int index = 0; index < count; ++index)
        removed.add(std::move(begin[index]));
    stack._stack.erase(begin, begin + count);
    if (stack._keeper) stack._keeper->removeSizes(first, count);
    stack._current = movedBoundary(stack._current + 1, first, end) - 1;
}

void CmCommandStack::Span::touch() noexcept {
    for (Span* span = this; span; span = span->_outer)
        span->_isTouched = true;
}

void CmCommandStack::Span::leaveStack(CmCommandStack& stack) noexcept {
    for (Span* span = std::exchange(stack._innermostSpan, nullptr); span; span = span->_outer) {
        span->keepRunning();
        span->_stack = nullptr;
    }
}

void CmCommandStack::Span::keepRunning() noexcept {
    if (_running == none) return;
    _kept = _stack->_stack[static_cast<std::size_t>(_running)];
    _running = none;
}

// Called before the elements are removed.
void CmCommandStack::Span::follow(int first, int end) noexcept {
    _isTouched = true;
    if (_running >= first && _running < end)
        keepRunning();
    else if (_running >= end)
        _running -= end - first;
    _first = movedBoundary(_first, first, end);
    _end = movedBoundary(_end, first, end);
}

} // namespace Ko
