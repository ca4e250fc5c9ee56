#include "framework/command/cmCommandStackManager.h"
#include "framework/command/cmCommandStackGuard.h"
#include "tests/support/recordingCommand.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

class CmCommandStackManagerTest : public testing::Test {
protected:
    ~CmCommandStackManagerTest() override { manager.set(nullptr); }
    static RCShdPtr<CmCommandStack> make(char const* name) {
        auto stack = RCShdPtr<CmCommandStack>::create();
        stack->setName(name);
        return stack;
    }

    CmCommandStackManager& manager = CmCommandStackManager::getInstance();
    Journal journal;
    CbSubscription const listener =
        manager.onChange([this] { journal.push_back(manager.get().isNull() ? "none" : manager.get()->getName()); });
};

TEST_F(CmCommandStackManagerTest, GuardsNestAndNotifyOnlyOfRealChanges) {
    RCShdPtr<CmCommandStack> const s0 = make("S0"), s1 = make("S1");
    manager.set(s0);
    {
        CmCommandStackGuard const first(s1);
        CmCommandStackGuard const same(s1);
        CmCommandStackGuard const second(make("S2"));
    }
    manager.set(s0);
    manager.set(nullptr);
    EXPECT_EQ((Journal{"S0", "S1", "S2", "S1", "S0", "none"}), journal);
}

TEST_F(CmCommandStackManagerTest, RestoresTheStackWhateverAListenerThrows) {
    manager.set(make("S0"));
    FunctionHandler thrower([] { throw std::runtime_error("listener"); });
    auto const scope = [&](bool fail) {
        CmCommandStackGuard const guard(make("S1"));
        manager.addCallback(&thrower);
        if (fail) throw std::logic_error("first");
    };
    EXPECT_THROW(scope(false), std::runtime_error);
    manager.removeCallback(&thrower);
    EXPECT_EQ("S0", manager.get()->getName());
    EXPECT_THROW(scope(true), std::logic_error);
    EXPECT_EQ("S0", manager.get()->getName());
    EXPECT_THROW(CmCommandStackGuard const guard(make("S1")), std::runtime_error) << "at the begin";
    manager.removeCallback(&thrower);
    EXPECT_EQ("S0", manager.get()->getName());
}

} // namespace
