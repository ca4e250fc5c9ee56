#include "framework/plugInMgr/pimUtils.h"
#include "tests/support/plugInTest.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;
using namespace KoTest;

using PimUtilsTest = PlugInTest;

TEST_F(PimUtilsTest, LoadsByTypeInTheOrderOfNamesWithoutRegardToCase) {
    folder.add("one/B.typed" KO_SUFFIX, "blur.op" KO_SUFFIX);
    folder.add("one/a.typed" KO_SUFFIX, "grade.op" KO_SUFFIX);
    folder.add("one/c.other" KO_SUFFIX, "noise.gen" KO_SUFFIX);
    EXPECT_EQ(2, PimUtils::loadType(folder.path("one"), "typed", InInitMgr::Reinitialization, PimUtils::getNullCb()));
    EXPECT_EQ((std::vector<std::string>{"+grade", "*grade", "+blur", "*blur"}), plugInJournal());
}

TEST_F(PimUtilsTest, RefusesWhatIsNoPlugInAndGoesOn) {
    folder.write("text.op" KO_SUFFIX, std::string(1000, 'x'));
    folder.write("empty.op" KO_SUFFIX, "");
    for (char const* const bad : {"text.op" KO_SUFFIX, "empty.op" KO_SUFFIX, "missing.op" KO_SUFFIX})
        EXPECT_FALSE(PimUtils::load(folder.path(bad), InInitMgr::Reinitialization)) << bad;
    EXPECT_FALSE(PimUtils::load(folder.add("failing.op" KO_SUFFIX), InInitMgr::Reinitialization));
    plugInJournal().clear();
    EXPECT_TRUE(PimUtils::load(folder.add("blur.op" KO_SUFFIX), InInitMgr::Reinitialization));
    EXPECT_EQ((std::vector<std::string>{"+blur", "*blur"}), plugInJournal());
}

} // namespace
