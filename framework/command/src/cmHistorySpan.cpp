#include "framework/command/src/cmHistorySpan.h"

#include "base/assertions.h"

#include <algorithm>
#include <new>
#include <utility>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\command\\src\\cmCommandStack"};

// Where a boundary between elements lies after the removal of the elements from `first` up to `end`.
int moved(int boundary, int first, int end) noexcept {
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

CmCommandStack::Span::StateScope::StateScope(Span const& span, State during) noexcept : _span(span) {
    if (_span._stack) _before = std::exchange(_span._stack->_state, during);
}

CmCommandStack::Span::StateScope::~StateScope() {
    if (_span._stack) _span._stack->_state = _before;
}

bool CmCommandStack::Span::requireUntouched() const {
    if (!_stack) return false;
    source.require(!_isTouched && _stack->_current == _running, "isUntouched(position)");
    return true;
}

void CmCommandStack::Span::drop() noexcept {
    while (_stack && _first < _end) {
        Removed removed(_end - _first);
        remove(std::min(_end - _first, removed.getCapacity()), removed);
    }
}

void CmCommandStack::Span::release() noexcept {
    _running = none;
    _kept.reset();
}

void CmCommandStack::Span::remove(int count, Removed& removed) noexcept {
    int const first = _first;
    int const end = _first + count;
    CmCommandStack& stack = *_stack;
    for (Span* span = stack._innermostSpan; span; span = span->_outer)
        span->follow(first, end);
    auto const begin = stack._stack.begin() + first;
    for (int index = 0; index < count; ++index)
        removed.add(std::move(begin[index]));
    stack._stack.erase(begin, begin + count);
    stack._current = moved(stack._current + 1, first, end) - 1;
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
    _first = moved(_first, first, end);
    _end = moved(_end, first, end);
}

} // namespace Ko
