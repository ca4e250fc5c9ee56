#include "framework/command/cmHistoryChange.h"
#include "framework/command/cmMerger.h"
#include "framework/command/cmSized.h"
#include "framework/command/cmUndoGuard.h"
#include "tests/faults/faultsTest.h"
#include "tests/support/recordingCommand.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

char const* const longText = "a description that is too long to be kept inside of the string itself";

/// Replaces one number by another. A failed expectation shows when it is run on any other document.
class WriteCommand : public CmCommand, public CmSized {
public:
    WriteCommand(int& document, int number, int before) : _document(document), _number(number), _before(before) {}
    LiString getDescription() const override { return longText; }
    std::size_t getMemorySize() const noexcept override { return 1; }
    void takeUp(WriteCommand const& later) {
        auto const needed = std::make_unique<int>(later._number);
        _number = *needed;
    }

protected:
    void executeInternal() override {
        auto const needed = std::make_unique<int>(_number); // may fail, and has changed nothing then
        exchange(_before, *needed);
    }
    void unexecuteInternal() override { exchange(_number, _before); }

private:
    void exchange(int from, int to) {
        EXPECT_EQ(from, _document) << "undone or redone from a state that never was";
        _document = to;
    }

    int& _document;
    int _number;
    int _before;
};

/// Joins each step with the last one, or none.
class WriteMerger : public CmMerger {
public:
    explicit WriteMerger(bool joins) : _joins(joins) {}
    RCShdPtr<CmCommand> merge(RCShdPtr<CmCommand> const& last, RCShdPtr<CmCommand> const& next) override {
        auto const needed = std::make_unique<int>();
        if (_joins) dynamic_cast<WriteCommand&>(*last).takeUp(dynamic_cast<WriteCommand const&>(*next));
        return _joins ? last : nullptr;
    }

private:
    bool _joins;
};

/// A document with some steps of history, which can be undone and redone after any attempt.
class Document {
public:
    explicit Document(int steps = 3, int undone = 0, bool isWatched = false) {
        if (isWatched) watch();
        while (number < steps)
            stack->executeAndLog(next());
        for (; undone > 0; --undone)
            stack->undo();
    }
    // A list of the history that its changes keep, a budget, and a merger that keeps all steps apart.
    void watch() {
        list = {*stack->getBegin()};
        stack->setMaxMemory(1000);
        stack->setMerger(RCShdPtr<WriteMerger>::create(false));
        changes = stack->onHistoryChange([this](CmHistoryChange const& change) {
            AllocationFaults::Pause const pause;
            for (CmHistorySplice const& splice : change.splices) {
                auto const first = list.begin() + splice.first;
                auto const next = list.erase(first, first + splice.numRemoved);
                list.insert(
                    next, static_cast<std::size_t>(splice.numInserted), RCShdPtr<CmCommand const>(change.logged));
            }
        });
    }

    // To be executed now.
    RCShdPtr<CmCommand> next() { return following(content); }
    // To be executed one after the other.
    Vector<RCShdPtr<CmCommand>> next(int count) {
        Vector<RCShdPtr<CmCommand>> commands{next()};
        while (--count > 0)
            commands.push_back(following(number));
        return commands;
    }

    void expectHistory(int undoable, int redoable) const {
        EXPECT_EQ(undoable, stack->getNbUndoableCommands());
        EXPECT_EQ(undoable + redoable + 1, stack->getStackHeight());
    }
    // Undoes and redoes everything: each command expects the state before it.
    void expectUsable() {
        EXPECT_FALSE(CmUndoGuard::isGuardActive());
        EXPECT_EQ(PiCommandStack::Idle, stack->getState());
        EXPECT_TRUE(list.empty() || std::equal(list.begin(), list.end(), stack->getBegin(), stack->getEnd()));
        stack->moveTo(stack->getBegin());
        stack->moveTo(stack->getEnd() - 1);
        stack->setMaxStackHeight(1000);
        CmUndoGuard(stack, "Next").execAndAddUndoCommand(next());
        stack->executeAndLog(next());
        stack->undo();
        stack->undo();
        EXPECT_TRUE(stack->canRedo());
    }

    int content = 0;
    int number = 0;
    RCShdPtr<CmCommandStack> const stack = RCShdPtr<CmCommandStack>::create();
    Vector<RCShdPtr<CmCommand const>> list;
    CbSubscription changes;

private:
    RCShdPtr<CmCommand> following(int before) { return RCShdPtr<WriteCommand>::create(content, ++number, before); }
};

class CommandFaults : public FaultsTest {};

// As many steps as make the queue allocate, and one fewer.
TEST_F(CommandFaults, AStepIsLoggedOrTheHistoryIsGivenUp) {
    for (int const steps : {60, 61, 62, 63, 64, 65, 66, 67})
        for (int const how : {0, 1, 2, 3}) {
            int const undone = how & 2;
            bool const isWatched = how & 1;
            tryAllFaults("executeAndLog", [&](FaultyAttempt& attempt) {
                Document document(steps, undone, isWatched);
                auto const command = document.next();
                int const before = document.content;
                if (attempt([&] { document.stack->executeAndLog(command); }))
                    document.expectHistory(steps - undone + 1, 0);
                else if (document.content == before)
                    document.expectHistory(steps - undone, undone);
                else
                    document.expectHistory(0, 0);
                document.expectUsable();
            });
            tryAllFaults("log", [&](FaultyAttempt& attempt) {
                Document document(steps, undone, isWatched);
                auto const command = document.next();
                CmCommandStack::executeStatic(command);
                bool const isLogged = attempt([&] { document.stack->log(command); });
                document.expectHistory(isLogged ? steps - undone + 1 : 0, 0);
                document.expectUsable();
            });
        }
}

TEST_F(CommandFaults, WhatOnlyMovesInTheHistoryCannotFailByItselfAndAFailedRedoDropsWhatCouldBeRedone) {
    struct Row {
        char const* name;
        std::function<void(CmCommandStack&)> operation;
        int undoable, redoable;
    };
    auto const requireDone = [](CmReplay const& result) {
        if (result.outcome != CmReplay::Outcome::Done) throw std::bad_alloc();
    };
    for (Row const& row : {Row{"undo", [](CmCommandStack& stack) { stack.undo(); }, 1, 3},
             Row{"redo", [](CmCommandStack& stack) { stack.redo(); }, 3, 1},
             Row{"clear", [](CmCommandStack& stack) { stack.clear(); }, 0, 0},
             Row{"removeLast", [](CmCommandStack& stack) { stack.removeLast(); }, 2, 1},
             Row{"setMaxStackHeight", [](CmCommandStack& stack) { stack.setMaxStackHeight(4); }, 1, 2},
             Row{"setMaxStackHeight to less", [](CmCommandStack& stack) { stack.setMaxStackHeight(2); }, 0, 0},
             Row{"moveTo", [](CmCommandStack& stack) { stack.moveTo(stack.getBegin()); }, 0, 4},
             Row{"tryUndo", [&](CmCommandStack& stack) { requireDone(stack.tryUndo()); }, 1, 3},
             Row{"tryRedo", [&](CmCommandStack& stack) { requireDone(stack.tryRedo()); }, 3, 1},
             Row{"tryMoveTo", [&](CmCommandStack& stack) { requireDone(stack.tryMoveTo(stack.getBegin())); }, 0, 4}})
        for (bool const isWatched : {false, true})
            tryAllFaults(row.name, [&](FaultyAttempt& attempt) {
                Document document(4, 2, isWatched);
                bool const isDone = attempt([&] { row.operation(*document.stack); });
                EXPECT_TRUE(isDone || row.undoable == 3) << "not a redo";
                isDone ? document.expectHistory(row.undoable, row.redoable) : document.expectHistory(2, 0);
                document.expectUsable();
            });
}

TEST_F(CommandFaults, AListenerABudgetAndAMergerAreAddedOrNot) {
    tryAllFaults("onHistoryChange", [](FaultyAttempt& attempt) {
        Document document;
        int calls = 0;
        CbSubscription changes, clean, transactions;
        bool const isDone = attempt([&] {
            changes = document.stack->onHistoryChange([&](CmHistoryChange const&) { ++calls; });
            clean = document.stack->onCleanChange([&] { ++calls; });
            transactions = CmUndoGuard::onTransaction([&](bool) { ++calls; });
        });
        document.stack->setClean();
        CmUndoGuard(document.stack, longText).execAndAddUndoCommand(document.next());
        EXPECT_TRUE(isDone ? calls == 5 : calls < 5) << calls;
    });
    tryAllFaults("setMaxMemory", [](FaultyAttempt& attempt) {
        Document document(6);
        bool const isDone = attempt([&] { document.stack->setMaxMemory(4); });
        EXPECT_EQ(isDone ? 4u : 0u, document.stack->getMemory());
        document.expectHistory(isDone ? 4 : 6, 0);
        document.stack->setMaxMemory(0);
        document.expectUsable();
    });
    tryAllFaults("merge", [](FaultyAttempt& attempt) {
        Document document(0, 0, true);
        document.stack->setMerger(RCShdPtr<WriteMerger>::create(true));
        auto const commands = document.next(2);
        bool const isDone = attempt([&] {
            document.stack->executeAndLog(commands[0]);
            document.stack->executeAndLog(commands[1]);
        });
        EXPECT_TRUE(!isDone || document.content == 2);
        document.stack->setMerger(nullptr);
        document.expectUsable();
    });
}

TEST_F(CommandFaults, WhatIsTakenBackLeavesDocumentAndHistoryAsTheyWere) {
    tryAllFaults("rollBack", [](FaultyAttempt& attempt) {
        Document document(3, 1, true);
        auto const commands = document.next(5);
        int const before = document.content;
        attempt([&] {
            CmUndoGuard guard(document.stack, longText);
            try {
                for (RCShdPtr<CmCommand> const& command : commands)
                    guard.execAndAddUndoCommand(command);
            } catch (std::bad_alloc const&) {
                guard.rollBack();
                throw;
            }
            guard.rollBack();
        });
        EXPECT_EQ(before, document.content);
        document.expectHistory(2, 1);
        document.expectUsable();
    });
    tryAllFaults("abandonLongTransition", [](FaultyAttempt& attempt) {
        Document document(3, 1, true);
        auto const commands = document.next(2);
        int const before = document.content;
        int calls = 0, handedOver = 0;
        attempt([&] {
            CmUndoGuard(document.stack, longText, PiExecParam::BEGIN_TRANSITION).execAndAddUndoCommand(commands[0]);
            CmUndoGuard::callOutside([&calls, text = LiString(longText)] { ++calls; });
            ++handedOver;
            CmUndoGuard(document.stack, longText, PiExecParam::TRANSITION).execAndAddUndoCommand(commands[1]);
            CmUndoGuard::abandonLongTransition();
        });
        if (CmUndoGuard::isLongTransition()) CmUndoGuard::abandonLongTransition();
        EXPECT_EQ(handedOver, calls);
        EXPECT_EQ(before, document.content);
        document.expectHistory(2, 1);
        document.expectUsable();
    });
}

// A transaction of two guards, one inside the other, with more commands than there is room for at first.
TEST_F(CommandFaults, AGuardClosesAndUndoIsRight) {
    for (int const steps : {3, 61, 62, 63, 64})
        tryAllFaults("CmUndoGuard", [steps](FaultyAttempt& attempt) {
            Document document(steps);
            int const before = document.content;
            auto const commands = document.next(5);
            bool const isDone = attempt([&] {
                CmUndoGuard outer(document.stack, longText);
                for (auto const* command = &commands[0]; command != &commands[3]; ++command)
                    outer.execAndAddUndoCommand(*command);
                CmUndoGuard inner(document.stack, longText);
                inner.execAndAddUndoCommand(commands[3]);
                CmCommandStack::executeStatic(commands[4]);
                inner.addUndoCommand(commands[4]);
            });
            bool const isChanged = document.content != before;
            int const undoable = document.stack->getNbUndoableCommands();
            EXPECT_TRUE(undoable == steps + (isChanged ? 1 : 0) || (isChanged && !isDone && undoable <= 1));
            document.expectUsable();
        });
}

TEST_F(CommandFaults, ALongTransactionEndsAndUndoIsRight) {
    tryAllFaults("long transaction", [](FaultyAttempt& attempt) {
        Document document;
        auto const commands = document.next(3);
        auto const perform = [&](std::size_t index, PiExecParam::Transition transition) {
            CmUndoGuard guard(document.stack, longText, transition);
            guard.execAndAddUndoCommand(commands[index]);
        };
        attempt([&] {
            perform(0, PiExecParam::BEGIN_TRANSITION);
            perform(1, PiExecParam::TRANSITION);
            perform(2, PiExecParam::END_TRANSITION);
        });
        if (CmUndoGuard::isLongTransition()) CmUndoGuard const guard(document.stack, "", PiExecParam::END_TRANSITION);
        document.expectUsable();
    });
}

TEST_F(CommandFaults, EndCallbacksAreCalledOnceOrNotAdded) {
    // Enough references that each shard of the table of weak references has allocated its memory.
    Vector<std::pair<RCShdPtr<FunctionHandler>, RCWeakPtr<FunctionHandler>>> table(1000);
    for (auto& [handler, reference] : table)
        reference = handler = RCShdPtr<FunctionHandler>::create([] {});
    table.clear();
    tryAllFaults("end callbacks", [](FaultyAttempt& attempt) {
        Document document;
        int calls = 0;
        auto const handler = RCShdPtr<FunctionHandler>::create([&] { ++calls; });
        bool const isDone = attempt([&] {
            PiUndoGuard const guard(document.stack, longText, {}, handler);
            CmUndoGuard::addEndOfOutermostGuardCallback(RCShdPtr<CbHandler<CbEmptyType>>(handler));
        });
        EXPECT_TRUE(isDone ? calls == 2 : calls <= 1) << calls;
        document.expectUsable();
    });
}

/// Expects begins and ends in turn.
class PairTarget : public PiUndoScopeTarget {
public:
    void scopeReached(bool end) override { EXPECT_EQ(end, std::exchange(isInside, !end)); }
    bool isInside = false;
};

TEST_F(CommandFaults, AScopeThatBeginsEnds) {
    tryAllFaults("PiUndoScope", [](FaultyAttempt& attempt) {
        Document document;
        auto const target = RCShdPtr<PairTarget>::create(), innerTarget = RCShdPtr<PairTarget>::create();
        auto const commands = document.next(6);
        attempt([&] {
            CmUndoGuard guard(document.stack, longText);
            PiUndoScope const scope(target);
            PiUndoScope const inner(innerTarget);
            for (auto const* command = &commands[0]; command != &commands[5]; ++command)
                guard.execAndAddUndoCommand(*command);
            CmCommandStack::executeStatic(commands[5]);
            guard.addUndoCommand(commands[5]);
        });
        EXPECT_FALSE(target->isInside || innerTarget->isInside);
        document.expectUsable();
        EXPECT_FALSE(target->isInside || innerTarget->isInside);
    });
}

} // namespace
