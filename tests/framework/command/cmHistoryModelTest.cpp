#include "framework/command/cmEx.h"
#include "framework/command/cmHistoryChange.h"
#include "framework/command/cmMerger.h"
#include "framework/command/cmSized.h"
#include "framework/command/cmUndoGuard.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "tests/support/randomSteps.h"

#include <array>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

/// The value of a document. Every change makes one that never was before.
using Value = unsigned long long;
struct Document {
    Value value = 0;
    Value last = 0;
    Value makeNew() { return value = ++last; }
};

enum class Failure { None, Expected, Unexpected };

/// Leads from the value that the document has now to another, and back. From any other value, as after an unlogged change, it leads
/// to a new one. Has a size, and fails when it is asked to.
class Change : public CmCommand, public CmSized {
public:
    Change(Document& document, std::size_t size, Failure& failure)
        : _document(document), _before(document.value), _after(++document.last), _size(size), _failure(failure) {}

    LiString getDescription() const override { return std::to_string(_after); }
    std::size_t getMemorySize() const noexcept override { return _size; }
    void takeUp(Change const& later) {
        _after = later._after;
        _size += later._size;
    }

protected:
    void executeInternal() override { change(_before, _after); }
    void unexecuteInternal() override { change(_after, _before); }

private:
    // A failure leaves the document half changed, as a macro does.
    void change(Value from, Value to) {
        Failure const failure = std::exchange(_failure, Failure::None);
        if (failure == Failure::None && _document.value == from)
            _document.value = to;
        else
            _document.makeNew();
        if (failure == Failure::Expected) throw CmEx::ExCommandFailure("change", 1);
        if (failure == Failure::Unexpected) throw std::runtime_error("change");
    }

    Document& _document;
    Value _before;
    Value _after;
    std::size_t _size;
    Failure& _failure;
};

/// Joins every second step with the one before it.
class EverySecond : public CmMerger {
public:
    RCShdPtr<CmCommand> merge(RCShdPtr<CmCommand> const& last, RCShdPtr<CmCommand> const& next) override {
        auto* const earlier = dynamic_cast<Change*>(last.get());
        auto const* const later = dynamic_cast<Change const*>(next.get());
        if (!earlier || !later || ++_calls % 2 == 0) return nullptr;
        earlier->takeUp(*later);
        return last;
    }

private:
    int _calls = 0;
};

/// What a panel shows of a history, kept by the changes alone.
class ListModel {
public:
    explicit ListModel(CmCommandStack const& stack) : _rows{(*stack.getBegin()).get()} {}

    void apply(CmHistoryChange const& change) {
        for (CmHistorySplice const& splice : change.splices) {
            auto const first = _rows.begin() + splice.first;
            auto const next = _rows.erase(first, first + splice.numRemoved);
            _rows.insert(next, static_cast<std::size_t>(splice.numInserted), change.logged);
        }
        _current = change.current;
        _last = change.kind;
    }
    std::string compare(CmCommandStack const& stack) const {
        std::vector<CmCommand const*> shown;
        for (auto element = stack.getBegin(); element != stack.getEnd(); ++element)
            shown.push_back(element->get());
        if (shown != _rows) return "the list differs";
        return _current == stack.getNbUndoableCommands() ? "" : "the current element differs";
    }
    CmHistoryChange::Kind last() const { return _last; }

private:
    std::vector<CmCommand const*> _rows;
    int _current = 0;
    CmHistoryChange::Kind _last = CmHistoryChange::Kind::Cleared;
};

/// A history with a list model, a budget, a merger and a document, whose listeners change it again. Holds after every step: the model
/// equals the history, and the history is clean exactly when the document has the value that was saved.
class HistoryMachine {
public:
    static constexpr std::array operations{"Log", "Execute", "Undo", "Redo", "Move", "Clear", "Remove", "Limit",
        "Budget", "Merge", "Save", "Unlogged", "Fail", "React", "Guard", "Abandon"};

    HistoryMachine() : _stack(RCShdPtr<CmCommandStack>::create()), _model(*_stack) {
        _stack->setMaxStackHeight(12);
        _changes = _stack->onHistoryChange([this](CmHistoryChange const& change) {
            _model.apply(change);
            react(Reaction::OnHistoryChange);
        });
        _processed = _stack->onCommandProcessed([this] {
            if (!_isMoving) check(_model.compare(*_stack));
            react(Reaction::OnProcessed);
        });
        _clean = _stack->onCleanChange([this] { _shownClean = _stack->isClean(); });
    }

    std::string perform(std::size_t operation, unsigned number) {
        Choices choices(number);
        try {
            dispatch(operation, choices);
        } catch (std::runtime_error const&) { // from a command that failed unexpectedly
        }
        _failure = Failure::None;
        return difference();
    }
    std::string finish() { return {}; }

private:
    using Kind = CmHistoryChange::Kind;
    enum class Reaction { None, OnHistoryChange, OnProcessed };

    static bool isOneOf(Kind kind, std::initializer_list<Kind> kinds) {
        return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
    }

    void dispatch(std::size_t operation, Choices& choices) {
        switch (operation) {
        case 0:
            return log(choices.take(100));
        case 1:
            return execute(choices.take(100));
        case 2:
            return static_cast<void>(_stack->tryUndo());
        case 3:
            return static_cast<void>(_stack->tryRedo());
        case 4:
            return move(choices);
        case 5:
            return _stack->clear();
        case 6:
            return _stack->removeLast();
        case 7:
            return _stack->setMaxStackHeight(static_cast<int>(2 + choices.take(12)));
        case 8:
            return _stack->setMaxMemory(choices.take(2) ? 0 : choices.take(500));
        case 9:
            return _stack->setMerger(choices.take(2) ? RCShdPtr<EverySecond>::create() : nullptr);
        case 10:
            return save();
        case 11:
            return changeUnlogged();
        case 12:
            _failure = choices.take(2) ? Failure::Expected : Failure::Unexpected;
            return choices.take(2) ? static_cast<void>(_stack->tryUndo()) : static_cast<void>(_stack->tryRedo());
        case 13:
            _reaction = choices.take(2) ? Reaction::OnHistoryChange : Reaction::OnProcessed;
            return;
        case 14:
            return guard(choices);
        default:
            return abandon(choices);
        }
    }

    RCShdPtr<CmCommand> change(std::size_t size) { return RCShdPtr<Change>::create(_document, size, _failure); }
    void log(std::size_t size) {
        RCShdPtr<CmCommand> const command = change(size);
        CmCommandStack::executeStatic(command);
        _stack->log(command);
    }
    void execute(std::size_t size) { _stack->executeAndLog(change(size)); }
    void move(Choices& choices) {
        _isMoving = true;
        static_cast<void>(
            _stack->tryMoveTo(_stack->getBegin() + choices.take(static_cast<unsigned>(_stack->getStackHeight()))));
        _isMoving = false;
    }
    void save() {
        _stack->setClean();
        _saved = _document.value;
    }
    void changeUnlogged() {
        _document.makeNew();
        _stack->commandProcessedNoLog();
    }
    // A guard, also with changes that are not collected, that is taken back in part or as a whole.
    void guard(Choices& choices) {
        CmUndoGuard guard(_stack, "");
        for (unsigned left = choices.take(3); left > 0; --left)
            guard.execAndAddUndoCommand(change(choices.take(50)));
        if (choices.take(4) == 3) {
            CmUndoGuardNoLog const quiet(choices.take(2) != 0);
            guard.execAndAddUndoCommand(change(0));
        }
        if (choices.take(2)) guard.rollBack();
        for (unsigned left = choices.take(2); left > 0; --left)
            guard.execAndAddUndoCommand(change(choices.take(50)));
        check(difference());
    }
    void abandon(Choices& choices) {
        Value const before = _document.value;
        for (auto const part : {PiExecParam::BEGIN_TRANSITION, PiExecParam::TRANSITION})
            CmUndoGuard(_stack, "", part).execAndAddUndoCommand(change(choices.take(50)));
        CmUndoGuard::abandonLongTransition();
        if (_document.value != before) check("the document is not as it was before the transaction");
    }
    void react(Reaction when) {
        if (_reaction != when) return;
        _reaction = Reaction::None;
        if (_stack->canUndo() && _document.last % 3 == 0) return static_cast<void>(_stack->tryUndo());
        if (_document.last % 3 == 1) return _stack->clear();
        execute(10);
    }

    void check(std::string const& difference) {
        if (_difference.empty()) _difference = difference;
    }
    std::string difference() {
        check(_model.compare(*_stack));
        bool const isSaved = _saved == _document.value;
        if (_stack->isClean() != isSaved) check(isSaved ? "saved, but not clean" : "clean, but not saved");
        if (_shownClean != _stack->isClean()) check("the clean mark changed without a call");
        bool const isLogged = isOneOf(_model.last(), {Kind::Logged, Kind::Merged});
        bool const isOver = _stack->getMaxMemory() > 0 && _stack->getMemory() > _stack->getMaxMemory();
        if (isLogged && isOver && _stack->getStackHeight() > 2) check("over the budget");
        return _difference;
    }

    Document _document;
    Value _saved = 0;
    Failure _failure = Failure::None;
    Reaction _reaction = Reaction::None;
    bool _isMoving = false;
    bool _shownClean = true;
    std::string _difference;
    RCShdPtr<CmCommandStack> _stack;
    ListModel _model;
    CbSubscription _changes, _processed, _clean;
};

TEST(CmHistory, AListModelAndTheCleanMarkFollowEveryOperation) {
    tryRandomSteps<HistoryMachine>(5000, 40);
}

} // namespace
