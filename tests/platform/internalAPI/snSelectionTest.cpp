#include "internalAPI/snSelection.h"
#include "base/exBase.h"
#include "internalAPI/snItemBasic.imp.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace {

using namespace Ko;

/// A number with a hash that tells only few numbers apart, so that probes have to look further.
struct Clashing {
    int number;
    friend bool operator==(Clashing const&, Clashing const&) = default;
    friend std::ostream& operator<<(std::ostream& stream, Clashing const& value) { return stream << value.number; }
};

} // namespace

template <>
struct std::hash<Clashing> {
    std::size_t operator()(Clashing const& value) const noexcept { return static_cast<std::size_t>(value.number % 3); }
};

namespace {

template <class T>
RCShdPtr<SnItem const> itemOf(int number) {
    return SnItemBasic<T>::create(T{number});
}

template <class T>
std::vector<int> contentOf(SnSelection const& selection) {
    std::vector<int> numbers;
    for (RCShdPtr<SnItem const> const& item : selection.getItems())
        if constexpr (std::is_same_v<T, int>)
            numbers.push_back(dynamic_cast<SnItemBasic<T> const&>(*item).get());
        else
            numbers.push_back(dynamic_cast<SnItemBasic<T> const&>(*item).get().number);
    EXPECT_EQ(numbers.size(), selection.getCount());
    EXPECT_EQ(numbers.empty(), selection.isEmpty());
    return numbers;
}

using Numbers = std::vector<int>;

class SnSelectionTest : public testing::Test {
protected:
    static RCShdPtr<SnSelection> of(Numbers const& numbers) {
        auto const selection = SnSelection::create();
        for (int const number : numbers)
            selection->add(itemOf<int>(number));
        return selection;
    }
    Numbers content() const { return contentOf<int>(*selection); }

    RCShdPtr<SnSelection> const selection = of({3, 1, 2});
};

TEST_F(SnSelectionTest, KeepsEachItemOnceInTheOrderOfInsertion) {
    EXPECT_FALSE(selection->add(itemOf<int>(1)));
    EXPECT_EQ((Numbers{3, 1, 2}), content());
    EXPECT_TRUE(selection->remove(itemOf<int>(3)));
    EXPECT_FALSE(selection->remove(itemOf<int>(3)));
    EXPECT_TRUE(selection->add(itemOf<int>(3)));
    EXPECT_EQ((Numbers{1, 2, 3}), content());
    selection->toggle(itemOf<int>(1));
    selection->toggle(itemOf<int>(4));
    EXPECT_EQ((Numbers{2, 3, 4}), content());
    selection->clear();
    EXPECT_EQ(Numbers(), content());
    EXPECT_THROW(selection->add(nullptr), ExNullPtr);
}

TEST_F(SnSelectionTest, FindsTheItemThatIsSelectedByAnEqualOne) {
    auto const item = itemOf<int>(7);
    selection->add(item);
    EXPECT_EQ(item, selection->find(*itemOf<int>(7)));
    EXPECT_TRUE(selection->contains(*itemOf<int>(7)));
    EXPECT_TRUE(selection->find(*itemOf<int>(8)).isNull());
    EXPECT_FALSE(selection->contains(*SnItemBasic<int>::create(7, SnParts::create({"part"}))));
}

TEST_F(SnSelectionTest, ChangesWithAllItemsOfAnotherOneOrOfItself) {
    auto const others = of({2, 5, 3});
    selection->add(*others);
    EXPECT_EQ((Numbers{3, 1, 2, 5}), content());
    selection->remove(*of({1, 9, 2}));
    EXPECT_EQ((Numbers{3, 5}), content());
    selection->toggle(*others);
    EXPECT_EQ((Numbers{2}), content());
    selection->replace(*others);
    selection->add(*selection);
    EXPECT_EQ((Numbers{2, 5, 3}), content());
    selection->remove(*selection);
    EXPECT_EQ(Numbers(), content());
    selection->add(*others);
    selection->toggle(*selection);
    EXPECT_EQ(Numbers(), content());
    EXPECT_EQ((Numbers{2, 5, 3}), contentOf<int>(*others)) << "what was shared has changed";
}

TEST_F(SnSelectionTest, ChangesApartFromItsCopies) {
    auto const copy = selection->copy();
    copy->add(itemOf<int>(4));
    EXPECT_EQ((Numbers{3, 1, 2}), content());
    selection->remove(itemOf<int>(1));
    EXPECT_EQ((Numbers{3, 1, 2, 4}), contentOf<int>(*copy));
    EXPECT_EQ((Numbers{3, 2}), content());
}

TEST_F(SnSelectionTest, CanChangeWhileItIsWalked) {
    Numbers seen;
    for (auto const& item : selection->getItems()) {
        seen.push_back(static_cast<SnItemBasic<int> const&>(*item).get());
        selection->clear();
        selection->add(itemOf<int>(9));
    }
    EXPECT_EQ((Numbers{3, 1, 2}), seen);
    EXPECT_EQ((Numbers{9}), content());
}

TEST_F(SnSelectionTest, DumpsItsItems) {
    std::ostringstream stream;
    of({5, 4}).dump(stream);
    EXPECT_LT(stream.str().find("Data:      5"), stream.str().find("Data:      4"));
}

// Random changes, each compared with those of a plain list.
template <class T>
void compareWithAList(int range) {
    unsigned const seed = std::random_device()();
    std::mt19937 random(seed);
    auto const selection = SnSelection::create();
    RCShdPtr<SnSelection> copy = selection->copy();
    Numbers model, modelOfCopy;
    for (int step = 0; step < 3000; ++step) {
        int const number = static_cast<int>(random() % static_cast<unsigned>(range));
        auto const found = std::find(model.begin(), model.end(), number);
        bool const isIn = found != model.end();
        auto const kind = random() % 100;
        bool const removes = isIn && kind >= 40 && kind < 99;
        bool const adds = !isIn && kind < 70;
        if (kind == 99) {
            ASSERT_EQ(modelOfCopy, contentOf<T>(*copy)) << "seed " << seed << ", step " << step;
            copy = selection->copy();
            modelOfCopy = model;
        } else if (kind < 40)
            ASSERT_EQ(adds, selection->add(itemOf<T>(number))) << "seed " << seed << ", step " << step;
        else if (kind < 70)
            selection->toggle(itemOf<T>(number));
        else
            ASSERT_EQ(removes, selection->remove(itemOf<T>(number))) << "seed " << seed << ", step " << step;
        if (removes) model.erase(found);
        if (adds) model.push_back(number);
        ASSERT_EQ(model, contentOf<T>(*selection)) << "seed " << seed << ", step " << step;
    }
}

TEST(SnSelection, IsASetInOrderWhateverIsDoneToIt) {
    compareWithAList<int>(12);
    compareWithAList<int>(300);
    compareWithAList<Clashing>(100);
}

} // namespace
