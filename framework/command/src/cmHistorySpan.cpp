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

// The bottom element stays.
template <class Elements, class Take>
void removeOldest(Elements& elements, int count, Take take) noexcept {
    for (; count > 0; --count) {
        auto oldest = elements.begin();
        ++oldest;
        oldest->swap(elements.front());
        take(elements.front());
        elements.pop_front();
    }
}

template <class Elements, class Take>
void removeLater(Elements& elements, int first, int count, Take take) noexcept {
    auto const begin = elements.begin() + first;
    auto const end = begin + count;
    std::for_each(begin, end, take);
    elements.erase(begin, end);
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
    void add(RCShdPtr<CmCommand>& command) noexcept {
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
    if (getLength() == 1) [[likely]]
        return dropOnly();
    while (_stack && _first < _end) {
        Removed removed(getLength());
        remove(removed);
    }
}

void CmCommandStack::Span::dropOnly() noexcept {
    RCShdPtr<CmCommand> removed;
    if (_stack) remove(1, [&removed](RCShdPtr<CmCommand>& command) { removed.swap(command); });
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
    remove(std::min(getLength(), removed.getCapacity()),
        [&removed](RCShdPtr<CmCommand>& command) { removed.add(command); });
}

// Takes out the first `count` elements.
template <class Take>
void CmCommandStack::Span::remove(int count, Take take) noexcept {
    CmCommandStack& stack = *_stack;
    int const first = _first;
    int const end = _first + count;
    for (Span* span = stack._innermostSpan; span; span = span->_outer)
        span->follow(first, end);
    if (first == 1)
        removeOldest(stack._stack, count, take);
    else
        removeLater(stack._stack, first, count, take);
    stack.forgetLastFound();
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
