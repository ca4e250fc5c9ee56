#include "framework/command/src/cmHistoryKeeper.h"

#include "base/exBase.h"
#include "framework/command/src/cmHistorySpan.h"
#include "internalAPI/cbDispatcher.imp.h"
#include "resmgt/lgFirstError.h"

#include <algorithm>
#include <utility>

namespace Ko {

template class CbDispatcher<CmHistoryChange>;

void CmCommandStack::Keeper::growQueue() {
    _queue.reserve(_queue.size() + 2 * spareChanges);
}

CmCommandStack::Keeper::Pending::Pending(
    Kind itsKind, std::initializer_list<CmHistorySplice> itsSplices, int itsCurrent, bool itIsPartOfMove) noexcept
    : kind(itsKind), current(itsCurrent), isPartOfMove(itIsPartOfMove) {
    for (CmHistorySplice const& splice : itsSplices)
        if (splice.numRemoved > 0 || splice.numInserted > 0) splices[numSplices++] = splice;
}

// @param complete sets what only some kinds of changes have.
template <class Complete>
void CmCommandStack::Keeper::queue(Kind kind, std::initializer_list<CmHistorySplice> splices, int current,
    bool isPartOfMove, Complete complete) noexcept {
    if (!_queue.empty() && _queue.back().isPartOfMove) _queue.pop_back();
    LgFirstError error("A listener of a history misses a change");
    error.capture([&] { complete(_queue.emplace_back(kind, splices, current, isPartOfMove)); });
    error.log();
}

void CmCommandStack::Keeper::record(
    Kind kind, std::initializer_list<CmHistorySplice> splices, int current, bool isPartOfMove) noexcept {
    _isFresh = false;
    if (!changes.isEmpty()) queue(kind, splices, current, isPartOfMove, [](Pending const&) {});
}

void CmCommandStack::Keeper::queueLogged(int redoable, int endRedoable, int numOldest) noexcept {
    queue(Kind::Logged, {{endRedoable, 0, 1}, {redoable, endRedoable - redoable, 0}, {1, numOldest, 0}},
        redoable - numOldest, false, [this](Pending& pending) { pending.logged = _stack._stack.back(); });
}

void CmCommandStack::Keeper::recordMerged(RCShdPtr<CmCommand> const& merged, int numOldest) noexcept {
    _isFresh = true;
    if (changes.isEmpty()) return;
    int const position = _stack._current;
    queue(Kind::Merged, {{position, 1, 1}, {1, numOldest, 0}}, position - numOldest, false,
        [&](Pending& pending) { pending.logged = merged; });
}

void CmCommandStack::Keeper::recordCut(Span const& span, CmCommand& failed, std::exception_ptr const& error) noexcept {
    _isFresh = false;
    if (changes.isEmpty()) return;
    queue(Kind::CutByFailure, {{span.getFirst(), span.getLength(), 0}}, span.moved(_stack._current), false,
        [&](Pending& pending) {
            pending.failed = RCShdPtr<CmCommand>(&failed);
            LgFirstError lost("The copy of a command's error");
            lost.capture([&] { pending.error = toExBase(error); });
            lost.log();
        });
}

bool CmCommandStack::Keeper::deliverAll(LgFirstError& error) {
    if (_isDelivering) return true;
    _isDelivering = true;
    bool isAlive = deliverChanges(error);
    while (isAlive && _deliveredClean != _stack.isClean()) {
        _deliveredClean = !_deliveredClean;
        isAlive = cleanChanges.call({}, error) && deliverChanges(error);
    }
    if (isAlive) _isDelivering = false;
    return isAlive;
}

// Listeners may change the history again; those changes are at the end of the queue.
bool CmCommandStack::Keeper::deliverChanges(LgFirstError& error) {
    while (!_queue.empty()) {
        Pending const next = std::move(_queue.front());
        _queue.erase(_queue.begin());
        CmHistoryChange const change{next.kind, {next.splices.data(), next.numSplices}, next.current, next.logged.get(),
            next.failed.get(), next.error.get()};
        if (!changes.call(change, error)) return false;
    }
    return true;
}

bool CmCommandStack::Keeper::takePostponed(bool& isProcessed) noexcept {
    isProcessed = _numProcessed > 0;
    int& left = isProcessed ? _numProcessed : _numChanged;
    if (left == 0) return false;
    --left;
    return true;
}

void CmCommandStack::Keeper::setMaxMemory(std::size_t bytes) {
    std::deque<std::size_t> sizes;
    std::size_t memory = 0;
    if (bytes > 0)
        for (RCShdPtr<CmCommand> const& command : _stack._stack)
            memory += sizes.emplace_back(_sizeOf(*command));
    _sizes.swap(sizes);
    _memory = memory;
    _maxMemory = bytes;
}

void CmCommandStack::Keeper::addSize(CmCommand const& command) {
    if (_maxMemory > 0) _memory += _sizes.emplace_back(_sizeOf(command));
}

void CmCommandStack::Keeper::setSize(int position, CmCommand const& command) noexcept {
    if (_sizes.empty()) return;
    std::size_t const size = _sizeOf(command);
    _memory += size - std::exchange(_sizes[static_cast<std::size_t>(position)], size);
}

void CmCommandStack::Keeper::truncateSizes(int height) noexcept {
    int const surplus = static_cast<int>(_sizes.size()) - height;
    if (surplus > 0) removeSizes(height, surplus);
}

void CmCommandStack::Keeper::removeSizes(int first, int count) noexcept {
    if (_sizes.empty()) return;
    auto const begin = _sizes.begin() + first;
    for (int index = 0; index < count; ++index)
        _memory -= begin[index];
    _sizes.erase(begin, begin + count);
}

int CmCommandStack::Keeper::countSurplus(int firstRedoable, int endRedoable, int limit) const noexcept {
    if (_sizes.empty()) return 0;
    std::size_t memory = _memory;
    for (int position = firstRedoable; position < endRedoable; ++position)
        memory -= _sizes[static_cast<std::size_t>(position)];
    int surplus = 0;
    while (memory > _maxMemory && surplus < limit)
        memory -= _sizes[static_cast<std::size_t>(++surplus)];
    return surplus;
}

} // namespace Ko
