#include "base/exBase.h"
#include "internalAPI/snItemBasic.imp.h"
#include "internalAPI/snItemConvert.imp.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using namespace Ko;

using Text = SnItemBasic<LiString>;
using Number = SnItemBasic<int>;

/// Carries a text, but is another kind of item.
class Title : public Text {
public:
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
    struct {
        char const* name;
        RCShdPtr<SnItem const> item;
        bool isEqual, isEqualIgnoringParts;
    } const rows[] = {
        {"itself", text, true, true},
        {"equal", Text::create("5"), true, true},
        {"no parts are the whole", Text::create("5", SnParts::create({})), true, true},
        {"other value", Text::create("6"), false, false},
        {"other carried type", number, false, false},
        {"other class", RCShdPtr<Title>::create("5", nullptr), false, false},
        {"a part", masked, false, true},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(row.isEqual, text->isEqual(*row.item)) << row.name;
        EXPECT_EQ(row.isEqual, row.item->isEqual(*text)) << row.name;
        EXPECT_EQ(row.isEqualIgnoringParts, text->isEqualIgnoreParts(*row.item)) << row.name;
        if (row.isEqual) {
            EXPECT_EQ(text->getHash(), row.item->getHash()) << row.name;
        }
        if (row.isEqualIgnoringParts) {
            EXPECT_EQ(text->getHashIgnoreParts(), row.item->getHashIgnoreParts()) << row.name;
        }
    }
    EXPECT_TRUE(masked->isEqual(*Text::create("5", SnParts::create({"mask"}))));
    EXPECT_FALSE(masked->isEqual(*Text::create("5", SnParts::create({"mask", "red"}))));
    EXPECT_NE(text->getHash(), masked->getHash()) << "parts of one item would all collide";
}

TEST_F(SnItemTest, ClonesValueAndParts) {
    RCShdPtr<SnItem const> const clone(masked->clone());
    EXPECT_FALSE(clone == masked);
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
    try {
        SnItemConvert<LiString>::get(nullptr);
        ADD_FAILURE();
    } catch (ExNullPtr const& error) {
        EXPECT_NE(std::string::npos, error.getReason().find("Ko::SnItemBasic<std::")) << error.what();
    }
}

TEST_F(SnItemTest, IsConvertedAsLongAsOnePackageNeedsTheConversion) {
    using Convert = SnItemConvert<int>;
    try {
        Convert::test(number);
        ADD_FAILURE();
    } catch (ExAssertionFailed const& error) {
        EXPECT_STREQ("_pred != 0", error.what());
        EXPECT_STREQ("internalAPI/snIsItem.imp", error.getFile());
        EXPECT_EQ(76, error.getLine());
    }
    Convert::initialize();
    Convert::initialize();
    Convert::finalize();
    EXPECT_TRUE(Convert::test(number));
    Convert::finalize();
    EXPECT_THROW(Convert::getPredicate(), ExAssertionFailed);
}

} // namespace
