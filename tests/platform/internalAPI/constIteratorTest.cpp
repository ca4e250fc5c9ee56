#include "internalAPI/constIterator.h"
#include "internalAPI/constIterator.imp.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;

TEST(ConstIterator, GoesBothWaysAndStopsAtBothEnds) {
    ConstIterator<LiString> position;
    position = ConstIterator<LiString>({"a", "b", "c"});
    EXPECT_THROW(position.previous(), IteratorEx::ExOutOfRange);
    EXPECT_EQ("a", *position++);
    EXPECT_EQ("c", *++position);
    EXPECT_EQ(1u, position->size());
    position.next();
    EXPECT_TRUE(position.atEnd());
    EXPECT_THROW(*position, IteratorEx::ExOutOfRange);
    EXPECT_THROW(position->size(), IteratorEx::ExOutOfRange);
    EXPECT_THROW(++position, IteratorEx::ExOutOfRange);
    EXPECT_EQ("c", *--position) << "a step that failed moved nothing";
    EXPECT_EQ("c", *position--);
    EXPECT_EQ("b", *position);
    position.last();
    EXPECT_EQ("c", position.item());
    position.first();
    EXPECT_EQ("a", position.item());
}

TEST(ConstIterator, OverNothingIsAtBothEnds) {
    for (ConstIterator<LiString> position : {ConstIterator<LiString>(), ConstIterator<LiString>(Vector<LiString>())}) {
        position.last();
        EXPECT_TRUE(position.atBegin());
        EXPECT_TRUE(position.atEnd());
        EXPECT_THROW(position.item(), IteratorEx::ExOutOfRange);
    }
}

} // namespace
