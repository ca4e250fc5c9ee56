#include "base/exBase.h"
#include "framework/command/cmUndoGuard.h"
#include "pluginAPI/piUndoGuardFactory.h"
#include "tests/support/recordingCommand.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;

class UndoGuardFacades : public testing::Test {
protected:
    // Uses the framework, and is called by code that uses only the facades.
    void execute(char const* name) {
        CmUndoGuard guard(nullptr, "");
        guard.execAndAddUndoCommand(RecordingCommand::create(name, journal));
    }
    LiString lastDescription() { return (*stack->getCurrent())->getDescription(); }

    Journal journal;
    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();
    RCShdPtr<PiCommandStack> plugInsView = stack;
};

TEST_F(UndoGuardFacades, GroupSuspendMarkAndCallBackLikeTheFrameworksGuards) {
    auto callback = RCShdPtr<FunctionHandler>::create([this] { journal.push_back("callback"); });
    {
        PiUndoGuard const guard(plugInsView, "Step", PiExecParam::BEGIN_TRANSITION);
        execute("a");
        {
            PiUndoGuardNoLog const quiet(false);
            execute("b");
        }
        PiUndoGuardNoRedo const noRedo;
        execute("c");
    }
    EXPECT_EQ("*0", history(*stack));
    { PiUndoGuard const last(plugInsView, "", PiExecParam::END_TRANSITION, std::exchange(callback, {})); }
    { PiUndoGuard const another(plugInsView, ""); }
    EXPECT_EQ("0 *Step", history(*stack));
    plugInsView->undo();
    plugInsView->redo();
    EXPECT_EQ((Journal{"+a", "+b", "+c", "callback", "-c", "-a", "+a"}), journal);
}

TEST_F(UndoGuardFacades, NotifyListenersOfUnloggedCommandsUnlessTheyAreQuiet) {
    FunctionHandler listener([this] { journal.push_back("processed"); });
    stack->addCommandProcessedCallback(&listener);
    for (bool const quiet : {false, true}) {
        {
            PiUndoGuardNoLog const guard(quiet);
            PiUndoGuard const attached(plugInsView, "");
        }
        journal.push_back(quiet ? "quiet" : "not quiet");
    }
    EXPECT_EQ((Journal{"processed", "not quiet", "quiet"}), journal);
    stack->removeCommandProcessedCallback(&listener);
}

class RecordingTarget : public PiUndoScopeTarget {
public:
    explicit RecordingTarget(Journal& journal) : _journal(journal) {}
    void scopeReached(bool end) override {
        _journal.push_back(end ? "end" : "begin");
        if (end && throwsAtEnd) throw std::runtime_error("end");
    }
    bool throwsAtEnd = false;

private:
    Journal& _journal;
};

TEST_F(UndoGuardFacades, CallAScopesTargetWithBeginBeforeEndInEachDirection) {
    auto const target = RCShdPtr<RecordingTarget>::create(journal);
    for (bool const throwsAtEnd : {false, true}) {
        journal.clear();
        target->throwsAtEnd = throwsAtEnd;
        try {
            PiUndoGuard const guard(plugInsView, "");
            PiUndoScope const scope(target);
            execute("a");
        } catch (std::runtime_error const&) {
            EXPECT_TRUE(throwsAtEnd);
        }
        target->throwsAtEnd = false;
        EXPECT_EQ("Macro: Scope begin; a; Scope end", lastDescription());
        plugInsView->undo();
        plugInsView->redo();
        EXPECT_EQ((Journal{"begin", "+a", "end", "begin", "-a", "end", "begin", "+a", "end"}), journal);
    }
}

class ForeignStack : public PiCommandStack {
public:
    bool canUndo() const override { return false; }
    bool canRedo() const override { return false; }
    void undo() override {}
    void redo() override {}
    State getState() const override { return Idle; }
    std::string const& getName() const override { return _name; }

private:
    std::string _name;
};

TEST_F(UndoGuardFacades, RefuseAnotherThreadAndThenAStackThatIsNotTheFrameworks) {
    auto const open = [] { PiUndoGuard const guard(RCShdPtr<ForeignStack>::create(), ""); };
    std::thread([&] {
        EXPECT_EQ("PiAppThread::isCurrent() [framework\\command\\src\\cmUndoGuard]", thrownBy(open));
    }).join();
    EXPECT_EQ(
        "dynamic_cast<CmCommandStack*>(stack.get()) [framework\\command\\src\\cmUndoGuardFactory]", thrownBy(open));
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
}

} // namespace
