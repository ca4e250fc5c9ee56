#include "base/exBase.h"
#include "framework/command/cmUndoGuard.h"
#include "pluginAPI/piUndoGuardFactory.h"
#include "tests/support/recordingCommand.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

class UndoGuardFacades : public testing::Test {
protected:
    // Code that knows the framework, called from code that knows the facades alone.
    void execute(char const* name) {
        CmUndoGuard guard(nullptr, "", {});
        guard.execAndAddUndoCommand(RecordingCommand::create(name, journal));
    }
    LiString lastDescription() { return (*stack->getCurrent())->getDescription(); }

    Journal journal;
    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();
    RCShdPtr<PiCommandStack> plugInsView = stack;
};

TEST_F(UndoGuardFacades, GroupSuspendAndMarkLikeTheGuardsBehindThem) {
    {
        PiUndoGuard const guard(plugInsView, "Step");
        execute("a");
        {
            PiUndoGuardNoLog const quiet(false);
            execute("b");
        }
        PiUndoGuardNoRedo const noRedo;
        execute("c");
    }
    EXPECT_EQ("Step", lastDescription());
    journal.clear();
    plugInsView->undo();
    plugInsView->redo();
    EXPECT_EQ((Journal{"-c", "-a", "+a"}), journal);
}

TEST_F(UndoGuardFacades, CallBackOnceWhenTheOutermostGuardCloses) {
    auto callback = RCShdPtr<FunctionHandler>::create([this] { journal.push_back("callback"); });
    {
        PiUndoGuard const outer(plugInsView, "Step");
        { PiUndoGuard const inner(plugInsView, "", {}, std::exchange(callback, {})); }
        execute("a");
    }
    { PiUndoGuard const another(plugInsView, ""); }
    EXPECT_EQ((Journal{"+a", "callback"}), journal);
}

class RecordingTarget : public PiUndoScopeTarget {
public:
    explicit RecordingTarget(Journal& journal) : _journal(journal) {}
    void scopeReached(bool end) override { _journal.push_back(end ? "end" : "begin"); }

private:
    Journal& _journal;
};

TEST_F(UndoGuardFacades, TellAScopesTargetBeginBeforeEndInEveryDirection) {
    {
        PiUndoGuard const guard(plugInsView, "");
        PiUndoScope const scope(RCShdPtr<RecordingTarget>::create(journal));
        execute("a");
    }
    EXPECT_EQ("Macro: Scope begin; a; Scope end", lastDescription());
    plugInsView->undo();
    plugInsView->redo();
    EXPECT_EQ((Journal{"begin", "+a", "end", "begin", "-a", "end", "begin", "+a", "end"}), journal);
}

TEST_F(UndoGuardFacades, KeepTheEndOfAScopeWhoseTargetThrowsThere) {
    class ThrowingTarget : public PiUndoScopeTarget {
    public:
        void scopeReached(bool end) override {
            if (end) throw std::runtime_error("end");
        }
    };
    {
        PiUndoGuard const guard(plugInsView, "");
        EXPECT_THROW(
            {
                PiUndoScope const scope(RCShdPtr<ThrowingTarget>::create());
                execute("a");
            },
            std::runtime_error);
    }
    EXPECT_EQ("Macro: Scope begin; a; Scope end", lastDescription());
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

TEST_F(UndoGuardFacades, RefuseAStackThatIsNotTheFrameworks) {
    EXPECT_THROW(PiUndoGuard(RCShdPtr<ForeignStack>::create(), ""), ExAssertionFailed);
    EXPECT_FALSE(CmUndoGuard::isGuardActive());
}

} // namespace
