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
#include "tests/support/thrown.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

// As for the error of a job: a worker keeps it, and another thread raises it.
template <class Ex>
void expectFaithful(Ex const& thrown) {
    OPtr<ExBase> const kept(thrown.clone());
    EXPECT_EQ(thrown.getReason() + " [source:7]", thrownBy<Ex>([&] { kept->raise(); }, true));
}

template <class... Ex>
void expectAllFaithful(Ex const&... thrown) {
    (expectFaithful(thrown), ...);
}

TEST(Exceptions, KeepTheirTypeWhenAnotherThreadRaisesThem) {
    expectAllFaithful(ExAssertionFailed("source", 7, "a == b"), ExProgramAborted("source", 7, "impossible"),
        ExInternalError("source", 7, "broken"), ExNullPtr("source", 7, "null"), InInitEx("source", 7, "no package"),
        InSingletonEx::ExAlreadyInitialized("source", 7, "Type"), InSingletonEx::ExNotInitialized("source", 7, "Type"),
        InSingletonEx::ExAlreadyDestroyed("source", 7, "Type"), IteratorEx::ExOutOfRange("source", 7),
        OsFileEx::ExInvalidPath("source", 7, "function", "path"), OsSharedLibEx("source", 7, "no library"),
        CmEx::ExCommandFailure("source", 7), BgEx::ExBgManager("source", 7, "text"),
        BgEx::ExBgTaskFailed("source", 7, "text"), PimEx::ExLibMultipleLoad("source", 7, "path"));
}

TEST(ExBase, PutsContextBeforeTheReason) {
    ExNullPtr error("source", 1, "inner");
    error.addContext("middle");
    error.addContext("outer");
    EXPECT_STREQ("outer: middle: inner", error.what());
}

TEST(Assertions, NameTheirSourceTheCallersLineAndTheExpression) {
    constexpr AssertionSource source{"module\\src\\file"};
    EXPECT_NO_THROW(source.require(true, "true"));
    int const line = __LINE__ + 1;
    auto const error = caught<ExAssertionFailed>([&] { source.require(1 > 2, "1 > 2"); });
    EXPECT_STREQ("1 > 2", error.what());
    EXPECT_STREQ("module\\src\\file", error.getFile());
    EXPECT_EQ(line, error.getLine());
}

} // namespace
