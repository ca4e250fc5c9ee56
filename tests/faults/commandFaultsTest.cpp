#include "framework/command/cmUndoGuard.h"
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
    // Every command expects the state that it finds; afterwards all is as it was.
    void expectUsable() {
        EXPECT_FALSE(CmUndoGuard::isGuardActive());
        EXPECT_EQ(PiCommandStack::Idle, stack->getState());
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

private:
    RCShdPtr<CmCommand> following(int before) { return RCShdPtr<WriteCommand>::create(content, ++number, before); }
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
                if (attempt([&] { document.stack->executeAndLog(command); }))
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
    for (Row const& row : {Row{"undo", [](CmCommandStack& stack) { stack.undo(); }, 1, 3},
             Row{"redo", [](CmCommandStack& stack) { stack.redo(); }, 3, 1},
             Row{"clear", [](CmCommandStack& stack) { stack.clear(); }, 0, 0},
             Row{"removeLast", [](CmCommandStack& stack) { stack.removeLast(); }, 2, 1},
             Row{"setMaxStackHeight", [](CmCommandStack& stack) { stack.setMaxStackHeight(4); }, 1, 2},
             Row{"setMaxStackHeight to less", [](CmCommandStack& stack) { stack.setMaxStackHeight(2); }, 0, 0},
             Row{"moveTo", [](CmCommandStack& stack) { stack.moveTo(stack.getBegin()); }, 0, 4}})
        tryAllFaults(row.name, [&](FaultyAttempt& attempt) {
            Document document(4, 2);
            bool const isDone = attempt([&] { row.operation(*document.stack); });
            EXPECT_TRUE(isDone || row.name == std::string("redo"));
            isDone ? document.expectHistory(row.undoable, row.redoable) : document.expectHistory(2, 0);
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
    // So many that every part of the table of weak references has its memory.
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

/// Tells when it hears an end without a begin, or the other way round.
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
