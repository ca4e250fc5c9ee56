#include "framework/command/cmCommandStack.h"

#include "base/assertions.h"
#include "base/exBase.h"
#include "framework/command/cmNullCommand.h"
#include "framework/command/src/cmHistoryKeeper.h"
#include "framework/command/src/cmHistorySpan.h"
#include "framework/command/src/cmLog.h"
#include "framework/command/src/cmOpenGuards.h"
#include "resmgt/lgFirstError.h"
#include "resmgt/xmlWriter.h"

#include <algorithm>
#include <utility>

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\command\\src\\cmCommandStack"};

} // namespace

CmCommandStack::CmCommandStack() : _stack{CmNullCommand::create()} {}

// The commands are destroyed one by one while the stack is whole: their destructors may use it.
CmCommandStack::~CmCommandStack() {
    Span::leaveStack(*this);
    _current = 0;
    while (_stack.size() > 1) {
        RCShdPtr<CmCommand> const last = std::move(_stack.back());
        _stack.pop_back();
        forgetLastFound();
    }
}

// The command is shared, as it may release its caller's pointer. It may also release the last owner of the stack.
void CmCommandStack::executeAndLog(RCShdPtr<CmCommand> const& cmd) {
    source.require(!cmd->getDisableExecutionOnRedo(), "!cmd->getDisableExecutionOnRedo()");
    OpenGuards::NoLogScope const guard;
    RCShdPtr<CmCommand> shared = cmd;
    {
        Span const span(*this, 0, 0);
        shared->execute();
        if (!span.isAlive()) return;
    }
    append(std::move(shared));
}

void CmCommandStack::log(RCShdPtr<CmCommand> const& cmd) {
    append(cmd);
}

// @param isOutdated whether the command contains others that were executed before an unlogged change.
void CmCommandStack::append(RCShdPtr<CmCommand> cmd, bool isOutdated) {
    source.require(!_stack.empty(), "!_stack.empty()");
    CmLog::write(CmLog::commandFlow, "Executed ", *cmd);
    if (_keeper && _keeper->canMerge() && joinLast(cmd)) return;
    int const height = getStackHeight();
    try {
        prepare();
        if (_keeper) _keeper->addSize(*cmd);
        _stack.push_back(std::move(cmd));
        forgetLastFound();
    } catch (...) {
        if (_keeper) _keeper->truncateSizes(height);
        CmLog::write(CmLog::unexpectedFailure, "The history is dropped, as it lacks ", *cmd);
        giveUpHistory();
        throw;
    }
    int const redoable = std::exchange(_current, height) + 1;
    if (_innermostSpan) [[unlikely]]
        _innermostSpan->touch();
    int const surplus = countSurplus(redoable);
    if (_clean >= redoable) _clean = noPosition;
    _numOutdated = isOutdated ? redoable : std::min(_numOutdated, redoable - 1);
    if (_keeper) [[unlikely]]
        _keeper->recordLogged(redoable, height, surplus);
    dropForLogged(redoable, height, surplus);
}

// What could be redone, and the oldest commands where there are too many.
void CmCommandStack::dropForLogged(int redoable, int height, int surplus) {
    if (redoable == height && surplus == 0) return notify(true);
    if (surplus == 0) return drop(redoable, height, true);
    forgetOldest(surplus);
    if (redoable == height) return drop(1, 1 + surplus, true);
    Span redo(*this, redoable, height);
    Span oldest(*this, 1, 1 + surplus);
    Span::drop(redo, oldest);
    if (redo.isAlive()) notify(true);
}

// As `countSurplus`, where there is more than the height.
int CmCommandStack::countSurplusOfMemory(int newest) const noexcept {
    return _keeper->countSurplus(newest, getStackHeight() - 1, newest - 1);
}

// Merging is user code: it may throw, release its owner, or change the history, and destroy the stack.
bool CmCommandStack::joinLast(RCShdPtr<CmCommand> const& next) {
    RCShdPtr<CmMerger> const merger = _keeper->merger;
    int const position = _current;
    RCShdPtr<CmCommand> const last = *getCurrent();
    RCShdPtr<CmCommand> merged;
    {
        Span const span(*this, position, position + 1);
        LgFirstError error("The merging of commands");
        error.capture([&] {
            prepare();
            merged = merger->merge(last, next);
        });
        error.log();
        if (!span.isAlive()) return true;
        if (!merged || span.isTouched() || _current != position) return false;
    }
    _stack[static_cast<std::size_t>(_current)] = merged;
    _keeper->setSize(_current, *merged);
    int const surplus = countSurplus(_current);
    _keeper->recordMerged(merged, surplus);
    dropForLogged(getStackHeight(), getStackHeight(), surplus);
    return true;
}

void CmCommandStack::prepare() const {
    if (_keeper) [[unlikely]]
        _keeper->makeRoom();
}

void CmCommandStack::setMaxStackHeight(int height) {
    requireNoOpenStep();
    source.require(height >= 2, "height >= 2");
    int const excess = getStackHeight() - height;
    if (excess >= 1) prepare();
    _maxStackHeight = height;
    if (excess < 1) return;
    if (excess > _current) return dropAll();
    dropOldest(excess);
}

void CmCommandStack::dropOldest(int count) {
    forgetOldest(count);
    if (_keeper) _keeper->record(Keeper::Kind::Trimmed, {{1, count, 0}}, _current - count);
    drop(1, 1 + count, false);
}

// The document stays as it is: it is the new initial state.
void CmCommandStack::dropAll() {
    _clean = _clean == _current ? 0 : noPosition;
    _numOutdated = 0;
    if (_keeper) _keeper->record(Keeper::Kind::Cleared, {{1, getStackHeight() - 1, 0}}, 0);
    drop(1, getStackHeight(), false);
}

void CmCommandStack::removeLast() {
    requireNoOpenStep();
    source.require(!_stack.empty(), "!_stack.empty()");
    if (_stack.size() == 1) return;
    prepare();
    int const last = getStackHeight() - 1;
    // The document keeps the change of a step that is taken out while it is the current one, and the steps before do not lead to it.
    if (_current == last) {
        _clean = _clean == last ? last - 1 : noPosition;
        _numOutdated = last - 1;
    } else if (_clean == last) {
        _clean = noPosition;
    }
    if (_keeper) _keeper->record(Keeper::Kind::Trimmed, {{last, 1, 0}}, std::min(_current, last - 1));
    drop(last, last + 1, false);
}

void CmCommandStack::clear() {
    requireNoOpenStep();
    source.require(!_stack.empty(), "!_stack.empty()");
    prepare();
    dropAll();
}

LiString CmCommandStack::getUndoText() const {
    return canUndo() ? _stack[static_cast<std::size_t>(_current)]->getDescription() : LiString();
}

LiString CmCommandStack::getRedoText() const {
    return canRedo() ? _stack[static_cast<std::size_t>(_current) + 1]->getDescription() : LiString();
}

void CmCommandStack::setClean() {
    requireNoOpenStep();
    _clean = _current;
    updateCleanMark();
}

void CmCommandStack::resetClean() {
    _clean = noPosition;
    updateCleanMark();
}

void CmCommandStack::setMerger(RCShdPtr<CmMerger> merger) {
    getKeeper().merger.swap(merger);
}

void CmCommandStack::setMaxMemory(std::size_t bytes) {
    requireNoOpenStep();
    getKeeper().makeRoom();
    _keeper->setMaxMemory(bytes);
    int const surplus = _keeper->countSurplus(0, 0, canRedo() ? _current : _current - 1);
    if (surplus > 0) dropOldest(surplus);
}

std::size_t CmCommandStack::getMaxMemory() const noexcept {
    return _keeper ? _keeper->getMaxMemory() : 0;
}
std::size_t CmCommandStack::getMemory() const noexcept {
    return _keeper ? _keeper->getMemory() : 0;
}

void CmCommandStack::refuseWhileStepIsOpen() const {
    throw ExInternalError(source.file(), __LINE__,
        "The history cannot be changed while the step \"" + CmLog::describe(*_openStep) +
            "\" is open: its commands are executed but not logged yet.");
}

void CmCommandStack::commandProcessedNoLog() {
    source.require(!_stack.empty(), "!_stack.empty()");
    prepare();
    loseCleanMark(getStackHeight() - 1);
    if (_keeper) _keeper->record(Keeper::Kind::Unlogged, {}, _current);
    notify(true);
}

// A command of an open guard was executed that the history will lack. Listeners are notified when the guard closes, as far as they are.
void CmCommandStack::noteUnlogged() {
    loseCleanMark(getStackHeight() - 1);
    if (_keeper) _keeper->endMerging();
    updateCleanMark();
}

// A command was executed that the history lacks.
void CmCommandStack::giveUpHistory() noexcept {
    LgFirstError error("A listener of the command stack");
    error.capture([this] {
        _clean = noPosition;
        dropAll();
    });
    error.log();
}

// Removes elements and notifies the listeners, unless a destructor of a command has released the stack.
void CmCommandStack::drop(int first, int end, bool isProcessed) {
    Span span(*this, first, end);
    span.drop();
    if (span.isAlive()) notify(isProcessed);
}

void dumpObject(std::ostream& stream, CmCommandStack const& stack) {
    XmlWriter writer(stream, 3);
    writer.openTag("CommandStack");
    if (!stack.getName().empty()) writer.writeTag("Name", stack.getName());
    for (int position = 0; position < stack.getStackHeight(); ++position) {
        RCShdPtr<CmCommand> const command = stack.getBegin()[position];
        command->dump(writer);
        if (position == stack.getNbUndoableCommands()) writer.writeTag("Current", "");
    }
    writer.closeTag();
}

} // namespace Ko
