#include "base/exBase.h"
#include "internalAPI/snItemBasic.imp.h"
#include "internalAPI/snItemConvert.imp.h"
#include "tests/support/thrown.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using namespace Ko;
using KoTest::caught;

using Text = SnItemBasic<LiString>;
using Number = SnItemBasic<int>;

/// Another class of item that carries a text.
struct Title : Text {
    using Text::Text;
};

class SnItemTest : public testing::Test {
protected:
    SnItemTest() { SnItemConvert<LiString>::initialize(); }
    ~SnItemTest() override { SnItemConvert<LiString>::finalize(); }

    RCShdPtr<SnItem const> const text = Text::create("5");
    RCShdPtr<SnItem const> const number = Number::create(5);
    RCShdPtr<SnItem const> const masked = Text::create("5", SnParts::create({"mask"}));
};

TEST_F(SnItemTest, ComparesTypeValueAndParts) {
    for (auto const& [name, item, isEqual, isEqualIgnoringParts] :
        std::vector<std::tuple<char const*, RCShdPtr<SnItem const>, bool, bool>>{
            {"equal", Text::create("5"), true, true},
            {"no parts are the whole", Text::create("5", SnParts::create({})), true, true},
            {"other value", Text::create("6"), false, false}, {"other carried type", number, false, false},
            {"other class", RCShdPtr<Title>::create("5", nullptr), false, false}, {"a part", masked, false, true}}) {
        EXPECT_EQ(isEqual, text->isEqual(*item)) << name;
        EXPECT_EQ(isEqual, item->isEqual(*text)) << name;
        EXPECT_EQ(isEqualIgnoringParts, text->isEqualIgnoreParts(*item)) << name;
        EXPECT_TRUE(!isEqual || text->getHash() == item->getHash()) << name;
        EXPECT_TRUE(!isEqualIgnoringParts || text->getHashIgnoreParts() == item->getHashIgnoreParts()) << name;
    }
    EXPECT_TRUE(masked->isEqual(*Text::create("5", SnParts::create({"mask"}))));
    EXPECT_FALSE(masked->isEqual(*Text::create("5", SnParts::create({"mask", "red"}))));
    EXPECT_NE(text->getHash(), masked->getHash()) << "parts of one item would all collide";
}

TEST_F(SnItemTest, ClonesValueAndParts) {
    RCShdPtr<SnItem const> const clone(masked->clone());
    EXPECT_TRUE(clone->isEqual(*masked));
    EXPECT_EQ(1u, clone->getReferenceCount());
}

TEST_F(SnItemTest, DumpsTypePartsAndData) {
    std::ostringstream stream;
    number.dump(stream);
    RCShdPtr<SnItem>(Text::create("a", SnParts::create({"red", "mask"}))).dump(stream);
    EXPECT_EQ(0u, stream.str().find("Type:      Ko::SnItemBasic<int>\nParts:     \nData:      5\nType: "))
        << stream.str();
    EXPECT_NE(std::string::npos, stream.str().find("\nParts:     mask, red\nData:      a\n")) << stream.str();
}

TEST_F(SnItemTest, IsConvertedToTheValueThatItCarries) {
    EXPECT_TRUE(SnItemConvert<LiString>::getPredicate().test(RCShdPtr<Title>::create("t", nullptr)));
    EXPECT_FALSE(SnItemConvert<LiString>::test(number));
    EXPECT_FALSE(SnItemConvert<LiString>::test(nullptr));
    EXPECT_EQ("5", SnItemConvert<LiString>::get(text));
    auto const error = caught<ExNullPtr>([] { return SnItemConvert<LiString>::get(nullptr); });
    EXPECT_NE(std::string::npos, error.getReason().find("Ko::SnItemBasic<std::")) << error.what();
}

TEST_F(SnItemTest, IsConvertedWhileAnyPackageNeedsTheConversion) {
    using Convert = SnItemConvert<int>;
    auto const error = caught<ExAssertionFailed>([&] { return Convert::test(number); });
    EXPECT_STREQ("_pred != 0", error.what());
    EXPECT_STREQ("internalAPI/snIsItem.imp", error.getFile());
    EXPECT_EQ(76, error.getLine());
    Convert::initialize();
    Convert::initialize();
    Convert::finalize();
    EXPECT_TRUE(Convert::test(number));
    Convert::finalize();
    EXPECT_THROW(static_cast<void>(Convert::getPredicate()), ExAssertionFailed);
}

} // namespace
