#include "framework/command/cmEx.h"
#include "framework/command/cmHistoryChange.h"
#include "framework/command/cmMerger.h"
#include "framework/command/cmSized.h"
#include "framework/command/cmUndoGuard.h"
#include "tests/support/randomSteps.h"

#include <array>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

/// The value of a document, different after every change that was ever made.
using Value = unsigned long long;

enum class Failure { None, Expected, Unexpected };

/// Replaces the document's value by a new one; has a size, and fails when it is told to.
class Change : public CmCommand, public CmSized {
public:
    Change(Value& document, Value value, std::size_t size, Failure& failure)
        : _document(document), _before(document), _after(value), _size(size), _failure(failure) {}

    LiString getDescription() const override { return std::to_string(_after); }
    std::size_t getMemorySize() const noexcept override { return _size; }
    void takeUp(Change const& later) {
        _after = later._after;
        _size += later._size;
    }

protected:
    void executeInternal() override { changeTo(_after); }
    void unexecuteInternal() override { changeTo(_before); }

private:
    // A failure leaves the document half changed, as a macro does.
    void changeTo(Value value) {
        Failure const failure = std::exchange(_failure, Failure::None);
        _document = failure == Failure::None ? value : _document + 1'000'000'000;
        if (failure == Failure::Expected) throw CmEx::ExCommandFailure("change", 1);
        if (failure == Failure::Unexpected) throw std::runtime_error("change");
    }

    Value& _document;
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
/// equals the history, a clean history means the saved document, and the saved document means a clean history, unless the
/// document was altered beside the history.
class HistoryMachine {
public:
    static constexpr std::array operations{"Log", "Execute", "Undo", "Redo", "Move", "Clear", "Remove", "Limit",
        "Budget", "Merge", "Save", "Unlogged", "Fail", "React", "Guard", "Abandon"};

    HistoryMachine() : _stack(RCShdPtr<CmCommandStack>::create()), _model(*_stack) {
        _stack->setMaxStackHeight(12);
        _changes = _stack->onHistoryChange([this](CmHistoryChange const& change) {
            _model.apply(change);
            if (isOneOf(change.kind, {Kind::CutByFailure, Kind::Unlogged})) forgetSaved();
            react(Reaction::OnHistoryChange);
        });
        _processed = _stack->onCommandProcessed([this] {
            if (!_isMoving) check(_model.compare(*_stack));
            react(Reaction::OnProcessed);
        });
        _clean = _stack->onCleanChange([this] { _toldClean = _stack->isClean(); });
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
            return removeLast();
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

    RCShdPtr<CmCommand> change(std::size_t size) {
        return RCShdPtr<Change>::create(_document, ++_lastValue, size, _failure);
    }
    void log(std::size_t size) {
        RCShdPtr<CmCommand> const command = change(size);
        _document = _lastValue;
        _stack->log(command);
    }
    void execute(std::size_t size) { _stack->executeAndLog(change(size)); }
    void move(Choices& choices) {
        _isMoving = true;
        static_cast<void>(
            _stack->tryMoveTo(_stack->getBegin() + choices.take(static_cast<unsigned>(_stack->getStackHeight()))));
        _isMoving = false;
    }
    // Takes out the current step without undoing it: no position of the history is the saved document any more.
    void removeLast() {
        if (_stack->canUndo() && !_stack->canRedo()) forgetSaved();
        _stack->removeLast();
    }
    // A position whose state is not what its command made counts as modified once it was left.
    void forgetSaved() {
        _saved.reset();
        _isExact = false;
    }
    void save() {
        _stack->setClean();
        _saved = _document;
    }
    void changeUnlogged() {
        _document = ++_lastValue;
        _stack->commandProcessedNoLog();
    }
    // A guard that is taken back in part or as a whole.
    void guard(Choices& choices) {
        CmUndoGuard guard(_stack, "");
        for (unsigned left = choices.take(3); left > 0; --left)
            guard.execAndAddUndoCommand(change(choices.take(50)));
        if (choices.take(2)) guard.rollBack();
        for (unsigned left = choices.take(2); left > 0; --left)
            guard.execAndAddUndoCommand(change(choices.take(50)));
        check(difference());
    }
    void abandon(Choices& choices) {
        Value const before = _document;
        for (auto const part : {PiExecParam::BEGIN_TRANSITION, PiExecParam::TRANSITION})
            CmUndoGuard(_stack, "", part).execAndAddUndoCommand(change(choices.take(50)));
        CmUndoGuard::abandonLongTransition();
        if (_document != before) check("the document is not as it was before the transaction");
    }
    void react(Reaction when) {
        if (_reaction != when) return;
        _reaction = Reaction::None;
        if (_stack->canUndo() && _lastValue % 3 == 0) return static_cast<void>(_stack->tryUndo());
        if (_lastValue % 3 == 1) return _stack->clear();
        execute(10);
    }

    void check(std::string const& difference) {
        if (_difference.empty()) _difference = difference;
    }
    std::string difference() {
        check(_model.compare(*_stack));
        bool const isSaved = _saved == _document;
        if (_stack->isClean() && !isSaved) check("clean, but the document is not the saved one");
        if (_isExact && !_stack->isClean() && isSaved) check("not clean, but the document is the saved one");
        if (_toldClean != _stack->isClean()) check("the clean mark changed without a call");
        bool const isLogged = isOneOf(_model.last(), {Kind::Logged, Kind::Merged});
        bool const isOver = _stack->getMaxMemory() > 0 && _stack->getMemory() > _stack->getMaxMemory();
        if (isLogged && isOver && _stack->getStackHeight() > 2) check("over the budget");
        return _difference;
    }

    Value _document = 0;
    Value _lastValue = 0;
    std::optional<Value> _saved = 0;
    Failure _failure = Failure::None;
    Reaction _reaction = Reaction::None;
    bool _isExact = true;
    bool _isMoving = false;
    bool _toldClean = true;
    std::string _difference;
    RCShdPtr<CmCommandStack> _stack;
    ListModel _model;
    CbSubscription _changes, _processed, _clean;
};

TEST(CmHistory, AListModelAndTheCleanMarkFollowEveryOperation) {
    tryRandomSteps<HistoryMachine>(3000, 40);
}

} // namespace
