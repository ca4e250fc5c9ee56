#include "framework/command/cmMacroCommand.h"
#include "framework/command/cmUndoGuard.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "framework/command/cmUndoGuardNoRedo.h"
#include "tests/faults/faultsTest.h"
#include "tests/support/recordingCommand.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

char const* const longText = "a description that is too long to be kept inside of the string itself";

/// Writes a number into the document. It knows what stood there when it was made, and tells when something else does.
class WriteCommand : public CmCommand {
public:
    WriteCommand(int& document, int number, int before) : _document(document), _number(number), _before(before) {}
    LiString getDescription() const override { return longText; }

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

/// A document with some steps of history. Whatever an attempt did to it, its history leads back and forth.
class Document {
public:
    explicit Document(int steps = 3, int undone = 0) {
        while (number < steps)
            stack->executeAndLog(next());
        for (; undone > 0; --undone)
            stack->undo();
    }

    // To be executed now.
    RCShdPtr<CmCommand> next() { return following(content); }
    // To be executed after the one that writes `before`.
    RCShdPtr<CmCommand> following(int before) { return RCShdPtr<WriteCommand>::create(content, ++number, before); }

    void expectHistory(int undoable, int redoable) const {
        EXPECT_EQ(undoable, stack->getNbUndoableCommands());
        EXPECT_EQ(undoable + redoable + 1, stack->getStackHeight());
    }
    // Every command expects the state that it finds; afterwards all is as it was.
    void expectUsable() {
        EXPECT_FALSE(CmUndoGuard::isGuardActive());
        EXPECT_EQ(PiCommandStack::Idle, stack->getState());
        stack->moveTo(stack->getBegin());
        stack->moveTo(stack->getEnd() - 1);
        stack->setMaxStackHeight(1000);
        {
            CmUndoGuard guard(stack, "Next", {});
            guard.execAndAddUndoCommand(next());
        }
        stack->executeAndLog(next());
        stack->undo();
        stack->undo();
        EXPECT_TRUE(stack->canRedo());
    }

    int content = 0;
    int number = 0;
    RCShdPtr<CmCommandStack> const stack = RCShdPtr<CmCommandStack>::create();
};

class CommandFaults : public FaultsTest {};

// As many steps as make the queue allocate, and one fewer.
TEST_F(CommandFaults, AStepIsLoggedOrTheHistoryIsGivenUp) {
    for (int steps = 60; steps < 68; ++steps)
        for (int const undone : {0, 2}) {
            tryAllFaults("executeAndLog", [&](FaultyAttempt& attempt) {
                Document document(steps, undone);
                auto const command = document.next();
                int const before = document.content;
                Outcome const outcome = attempt([&] { document.stack->executeAndLog(command); });
                if (outcome == Outcome::Done)
                    document.expectHistory(steps - undone + 1, 0);
                else if (document.content == before)
                    document.expectHistory(steps - undone, undone);
                else
                    document.expectHistory(0, 0);
                document.expectUsable();
            });
            tryAllFaults("log", [&](FaultyAttempt& attempt) {
                Document document(steps, undone);
                auto const command = document.next();
                CmCommandStack::executeStatic(command);
                bool const isLogged = attempt([&] { document.stack->log(command); }) == Outcome::Done;
                document.expectHistory(isLogged ? steps - undone + 1 : 0, 0);
                document.expectUsable();
            });
        }
}

TEST_F(CommandFaults, WhatOnlyMovesInTheHistoryCannotFailByItself) {
    struct Row {
        char const* name;
        std::function<void(CmCommandStack&)> operation;
        int undoable, redoable;
    };
    for (Row const& row : {Row{"undo", [](CmCommandStack& stack) { stack.undo(); }, 1, 3},
             Row{"clear", [](CmCommandStack& stack) { stack.clear(); }, 0, 0},
             Row{"removeLast", [](CmCommandStack& stack) { stack.removeLast(); }, 2, 1},
             Row{"setMaxStackHeight", [](CmCommandStack& stack) { stack.setMaxStackHeight(4); }, 1, 2},
             Row{"setMaxStackHeight to less", [](CmCommandStack& stack) { stack.setMaxStackHeight(2); }, 0, 0},
             Row{"moveTo", [](CmCommandStack& stack) { stack.moveTo(stack.getBegin()); }, 0, 4}})
        tryAllFaults(row.name, [&](FaultyAttempt& attempt) {
            Document document(4, 2);
            attempt.withoutFail([&] { row.operation(*document.stack); });
            document.expectHistory(row.undoable, row.redoable);
            document.expectUsable();
        });
}

TEST_F(CommandFaults, ARedoThatFailsDropsWhatCouldBeRedone) {
    tryAllFaults("redo", [&](FaultyAttempt& attempt) {
        Document document(4, 2);
        bool const isDone = attempt([&] { document.stack->redo(); }) == Outcome::Done;
        document.expectHistory(isDone ? 3 : 2, isDone ? 1 : 0);
        document.expectUsable();
    });
}

TEST_F(CommandFaults, ListenersAreAddedOrNot) {
    tryAllFaults("addChangeCallback", [](FaultyAttempt& attempt) {
        Document document;
        int calls = 0;
        FunctionHandler handler([&] { ++calls; });
        bool const isAdded = attempt([&] { document.stack->addChangeCallback(&handler); }) == Outcome::Done;
        document.stack->undo();
        EXPECT_EQ(isAdded ? 1 : 0, calls);
        document.stack->removeChangeCallback(&handler);
    });
}

TEST_F(CommandFaults, AMacroKeepsItsCommands) {
    tryAllFaults("CmMacroCommand", [](FaultyAttempt& attempt) {
        Document document(0);
        auto const first = document.next();
        auto const second = document.following(1);
        RCShdPtr<CmMacroCommand> macro;
        bool const isDone = attempt([&] {
            macro = CmMacroCommand::create();
            macro->setDescription(longText);
            macro->add(first);
            macro->add(second);
        }) == Outcome::Done;
        if (!isDone) return;
        document.stack->executeAndLog(macro);
        document.expectHistory(1, 0);
        document.expectUsable();
    });
}

// A transaction of two guards, one inside the other, with three commands.
TEST_F(CommandFaults, AGuardClosesAndUndoIsRight) {
    for (int const steps : {3, 61, 62, 63, 64})
        tryAllFaults("CmUndoGuard", [steps](FaultyAttempt& attempt) {
            Document document(steps);
            int const before = document.content;
            Vector<RCShdPtr<CmCommand>> commands{document.next()};
            for (int index = 0; index < 2; ++index)
                commands.push_back(document.following(document.number));
            bool const isDone = attempt([&] {
                CmUndoGuard outer(document.stack, longText, {});
                outer.execAndAddUndoCommand(commands[0]);
                CmUndoGuard inner(document.stack, longText, {});
                inner.execAndAddUndoCommand(commands[1]);
                CmCommandStack::executeStatic(commands[2]);
                inner.addUndoCommand(commands[2]);
            }) == Outcome::Done;
            bool const isChanged = document.content != before;
            int const undoable = document.stack->getNbUndoableCommands();
            EXPECT_TRUE(undoable == steps + (isChanged ? 1 : 0) || (isChanged && !isDone && undoable <= 1));
            document.expectUsable();
        });
}

TEST_F(CommandFaults, ALongTransactionEndsAndUndoIsRight) {
    tryAllFaults("long transaction", [](FaultyAttempt& attempt) {
        Document document;
        Vector<RCShdPtr<CmCommand>> commands{document.next()};
        for (int index = 0; index < 2; ++index)
            commands.push_back(document.following(document.number));
        auto const perform = [&](std::size_t index, PiExecParam::Transition transition) {
            CmUndoGuard guard(document.stack, longText, transition);
            guard.execAndAddUndoCommand(commands[index]);
        };
        attempt([&] {
            perform(0, PiExecParam::BEGIN_TRANSITION);
            perform(1, PiExecParam::TRANSITION);
            perform(2, PiExecParam::END_TRANSITION);
        });
        if (CmUndoGuard::isLongTransition()) CmUndoGuard(document.stack, "", PiExecParam::END_TRANSITION);
        document.expectUsable();
    });
}

TEST_F(CommandFaults, GuardsThatOnlySuspendCannotFail) {
    tryAllFaults("CmUndoGuardNoLog", [](FaultyAttempt& attempt) {
        Document document;
        attempt.withoutFail([] {
            CmUndoGuardNoLog const outer(false);
            CmUndoGuardNoRedo const inner;
        });
        document.expectUsable();
    });
}

TEST_F(CommandFaults, EndCallbacksAreCalledOnceOrNotAdded) {
    // So many that every part of the table of weak references has its memory.
    Vector<std::pair<RCShdPtr<FunctionHandler>, RCWeakPtr<FunctionHandler>>> table;
    for (int count = 0; count < 1000; ++count) {
        auto const handler = RCShdPtr<FunctionHandler>::create([] {});
        table.emplace_back(handler, handler);
    }
    table.clear();
    tryAllFaults("end callbacks", [](FaultyAttempt& attempt) {
        Document document;
        int calls = 0;
        auto const handler = RCShdPtr<FunctionHandler>::create([&] { ++calls; });
        bool const isDone = attempt([&] {
            PiUndoGuard const guard(document.stack, longText, {}, handler);
            CmUndoGuard::addEndOfOutermostGuardCallback(RCShdPtr<CbHandler<CbEmptyType>>(handler));
        }) == Outcome::Done;
        EXPECT_TRUE(isDone ? calls == 2 : calls <= 1) << calls;
        document.expectUsable();
    });
}

/// Tells when it hears an end without a begin, or the other way round.
class PairTarget : public PiUndoScopeTarget {
public:
    void scopeReached(bool end) override {
        EXPECT_EQ(end, isInside);
        isInside = !end;
        ++calls;
    }
    bool isInside = false;
    int calls = 0;
};

TEST_F(CommandFaults, AScopeThatBeginsEnds) {
    tryAllFaults("PiUndoScope", [](FaultyAttempt& attempt) {
        Document document;
        auto const target = RCShdPtr<PairTarget>::create();
        auto const innerTarget = RCShdPtr<PairTarget>::create();
        Vector<RCShdPtr<CmCommand>> commands{document.next()};
        for (int index = 0; index < 5; ++index)
            commands.push_back(document.following(document.number));
        attempt([&] {
            CmUndoGuard guard(document.stack, longText, {});
            PiUndoScope const scope(target);
            PiUndoScope const inner(innerTarget);
            for (auto const& command : commands)
                guard.execAndAddUndoCommand(command);
        });
        for (bool const isReplayed : {false, true}) {
            EXPECT_FALSE(target->isInside || innerTarget->isInside);
            if (!isReplayed) document.expectUsable();
        }
    });
}

} // namespace
