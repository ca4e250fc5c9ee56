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

RCShdPtr<SnItem const> itemOf(int number) {
    return SnItemBasic<Clashing>::create(Clashing{number});
}

using Numbers = std::vector<int>;

Numbers contentOf(SnSelection const& selection) {
    Numbers numbers;
    for (RCShdPtr<SnItem const> const& item : selection.getItems())
        numbers.push_back(dynamic_cast<SnItemBasic<Clashing> const&>(*item).get().number);
    EXPECT_EQ(numbers.size(), selection.getCount());
    return numbers;
}

TEST(SnSelection, FindsTheItemThatIsSelectedByAnEqualOne) {
    auto const selection = SnSelection::create();
    auto const item = itemOf(7);
    selection->add(item);
    EXPECT_EQ(item, selection->find(*itemOf(7)));
    EXPECT_TRUE(selection->contains(*itemOf(7)));
    EXPECT_TRUE(selection->find(*itemOf(10)).isNull());
    EXPECT_FALSE(selection->contains(*SnItemBasic<Clashing>::create(Clashing{7}, SnParts::create({"part"}))));
    EXPECT_THROW(selection->add(nullptr), ExNullPtr);
    std::ostringstream stream;
    selection->dump(stream);
    EXPECT_NE(std::string::npos, stream.str().find("Data:      7"));
}

TEST(SnSelection, IsASetInOrderAlsoWhereHashesClash) {
    unsigned const seed = std::random_device()();
    std::mt19937 random(seed);
    auto const selection = SnSelection::create();
    Numbers model;
    for (int step = 0; step < 3000; ++step) {
        int const number = static_cast<int>(random() % 100);
        auto const found = std::find(model.begin(), model.end(), number);
        bool const isIn = found != model.end();
        selection->toggle(itemOf(number));
        if (isIn)
            model.erase(found);
        else
            model.push_back(number);
        ASSERT_EQ(model, contentOf(*selection)) << "seed " << seed << ", step " << step;
    }
}

} // namespace
