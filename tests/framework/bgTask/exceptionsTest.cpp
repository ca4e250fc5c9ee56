#include "base/assertions.h"
#include "base/inInitMgr.h"
#include "base/inSingleton.h"
#include "base/oPtr.h"
#include "framework/bgTask/bgEx.h"
#include "framework/command/cmEx.h"
#include "framework/plugInMgr/pimEx.h"
#include "internalAPI/constIterator.h"
#include "resmgt/osFile.h"
#include "resmgt/osSharedLib.h"

#include <gtest/gtest.h>
#include <typeindex>

namespace {

using namespace Ko;

// As a job's error is: kept by a worker, and raised in the thread that waits.
template <class Ex>
void expectFaithful(Ex const& thrown) {
    OPtr<ExBase> const kept(thrown.clone());
    try {
        kept->raise();
    } catch (Ex const& raised) {
        EXPECT_EQ(std::type_index(typeid(Ex)), typeid(raised));
        EXPECT_EQ(thrown.getReason(), raised.getReason());
        EXPECT_STREQ("source", raised.getFile());
        EXPECT_EQ(7, raised.getLine());
    } catch (...) {
        ADD_FAILURE() << thrown.getTypeName() << " became something else";
    }
}

TEST(Exceptions, AreOfTheSameKindWhenAnotherThreadRaisesThem) {
    expectFaithful(ExAssertionFailed("source", 7, "a == b"));
    expectFaithful(ExProgramAborted("source", 7, "impossible"));
    expectFaithful(ExInternalError("source", 7, "broken"));
    expectFaithful(ExNullPtr("source", 7, "null"));
    expectFaithful(InInitEx("source", 7, "no package"));
    expectFaithful(InSingletonEx::ExAlreadyInitialized("source", 7, "Type"));
    expectFaithful(InSingletonEx::ExNotInitialized("source", 7, "Type"));
    expectFaithful(InSingletonEx::ExAlreadyDestroyed("source", 7, "Type"));
    expectFaithful(IteratorEx::ExOutOfRange("source", 7));
    expectFaithful(OsFileEx::ExInvalidPath("source", 7, "function", "path"));
    expectFaithful(OsSharedLibEx("source", 7, "no library"));
    expectFaithful(CmEx::ExCommandFailure("source", 7));
    expectFaithful(BgEx::ExBgManager("source", 7, "text"));
    expectFaithful(BgEx::ExBgTaskFailed("source", 7, "text"));
    expectFaithful(PimEx::ExLibMultipleLoad("source", 7, "path"));
}

} // namespace
