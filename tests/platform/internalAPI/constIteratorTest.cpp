#include "internalAPI/constIterator.h"
#include "internalAPI/constIterator.imp.h"

#include <gtest/gtest.h>
#include <ranges>

namespace {

using namespace Ko;

TEST(ConstIterator, MovesBothWaysAndStopsAtBothEnds) {
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
    std::string all;
    for (LiString const& element : ConstIterator<LiString>({"a", "b"}).elements()) // lives as long as the range
        all += element;
    for (LiString const& element : position.elements())
        all += element;
    EXPECT_EQ("ababc", all);
    position.first();
    EXPECT_EQ("a", position.item());
}

TEST(ConstIterator, OverAnEmptySequenceIsAtBothEnds) {
    for (ConstIterator<LiString> position : {ConstIterator<LiString>(), ConstIterator<LiString>(Vector<LiString>())}) {
        position.last();
        EXPECT_TRUE(position.atBegin());
        EXPECT_TRUE(position.atEnd());
        EXPECT_THROW(position.next(), IteratorEx::ExOutOfRange);
        EXPECT_TRUE(std::ranges::empty(position.elements()));
    }
}

} // namespace
