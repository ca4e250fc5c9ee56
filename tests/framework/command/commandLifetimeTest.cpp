#include "base/exBase.h"
#include "base/inBuildInfo.h"
#include "base/inInitMgr.h"
#include "base/inSingleton.h"
#include "framework/command/cmCommandStackGuard.h"
#include "framework/command/cmCommandStackManager.h"
#include "framework/command/cmUndoGuard.h"
#include "tests/support/childProcess.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace Ko;
using KoTest::inChildProcess;

TEST(CommandPackage, RefusesItsServicesOnceItIsFinalised) {
    inChildProcess([] {
        auto const stack = RCShdPtr<CmCommandStack>::create();
        auto open = std::make_unique<CmUndoGuard>(stack, "left open");
        auto scope = std::make_unique<CmCommandStackGuard>(stack);
        InInitMgr::finalize();
        EXPECT_THROW(CmCommandStackManager::getInstance(), InSingletonEx::ExNotInitialized);
        EXPECT_THROW(CmCommandStackGuard const guard{stack}, InSingletonEx::ExNotInitialized);
        EXPECT_THROW(CmUndoGuard const guard(stack, ""), ExAssertionFailed);
        EXPECT_THROW(stack->undo(), ExAssertionFailed);
        CmUndoGuard* const guard = open.release();
        EXPECT_THROW(delete guard, ExAssertionFailed);
        CmCommandStackGuard* const stackGuard = scope.release();
        EXPECT_THROW(delete stackGuard, InSingletonEx::ExNotInitialized);
    });
}

TEST(CommandPackage, EndsWithTheProcessWhenTheHostForgetsToFinalise) {
    inChildProcess([] {
        static auto const stack = RCShdPtr<CmCommandStack>::create();
        CmCommandStackManager::getInstance().set(stack);
        CmUndoGuard const guard(stack, "Step");
        std::exit(testing::Test::HasFailure() ? 1 : 0);
    });
}

TEST(FrameworkPackage, PublishesItsBuild) {
    std::vector<InBuildInfo const*> const infos = InBuildInfoUtil::getInfos();
    ASSERT_EQ(1u, infos.size());
    InBuildInfo const& info = *infos[0];
    EXPECT_EQ("Marlo Library, libKoframework 8.0", info.getProductDescription() + ", " + info.getLibraryName() + " " +
                                                       info.getVersion() + info.getReleaseSuffix());
    EXPECT_EQ("42 opt.x86_64.intel", std::to_string(info.getReleaseKind()) + " " + info.getBuildFlavour());
}

} // namespace
