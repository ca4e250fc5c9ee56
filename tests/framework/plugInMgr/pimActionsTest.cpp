#include "framework/frameworkLib/pimActions.h"
#include "tests/support/recordingAction.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using namespace Ko;
using namespace KoTest;

using Names = std::vector<std::string>;

Names registered() {
    Names names;
    for (ActAction const* const action :
        ActRegistry::getInstance().getActionsInGroup("PimActions", ActRegistry::FirstOnly).elements())
        names.push_back(action->getDescription());
    return names;
}

TEST(PimActions, RegistersAllItsActionsAndDestroysThem) {
    Names journal;
    auto const maker = [&journal](char const* description) {
        return [&journal, description] {
            return std::make_unique<RecordingAction>(ActionTraits{description, "", "PimActions", {}}, journal);
        };
    };
    PimActions<struct Good> good("good", {maker("first"), [] { return nullptr; }, maker("second")});
    good.initialize();
    EXPECT_EQ((Names{"first", "second"}), registered());
    good.finalize();
    EXPECT_EQ(Names{}, registered());
    EXPECT_EQ((Names{"~second", "~first"}), journal);

    auto const fail = []() -> OPtr<ActAction> { throw std::runtime_error("no licence"); };
    PimActions<struct Bad> bad("bad", {maker("third"), fail, maker("fourth")});
    EXPECT_THROW(bad.initialize(), std::runtime_error);
    EXPECT_EQ(Names{}, registered());
    EXPECT_EQ((Names{"~second", "~first", "~third"}), journal);
}

} // namespace
