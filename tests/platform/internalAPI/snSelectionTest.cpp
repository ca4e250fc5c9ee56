#include "internalAPI/snSelection.h"
#include "base/exBase.h"
#include "internalAPI/snItemBasic.imp.h"
#include "tests/support/items.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace {

using namespace Ko;
using KoTest::Fuse;

/// A number with a hash of few values, so that probes collide.
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

Numbers numbersOf(SnSelection::Items const& items) {
    Numbers numbers;
    for (RCShdPtr<SnItem const> const& item : items)
        numbers.push_back(dynamic_cast<SnItemBasic<Clashing> const&>(*item).get().number);
    return numbers;
}

Numbers contentOf(SnSelection const& selection) {
    Numbers const numbers = numbersOf(selection.getItems());
    EXPECT_EQ(numbers.size(), selection.getCount());
    return numbers;
}

TEST(SnSelection, FindsTheSelectedItemByAnEqualOne) {
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

// The destructor of a removed item clears the selection, or releases its last owner.
TEST(SnSelection, ReleasesItemsAfterTheChangeIsComplete) {
    using Change = std::function<void(SnSelection&, SnSelection const&)>;
    RCShdPtr<SnItem const> const fuse = RCShdPtr<Fuse>::create([] {});
    for (auto const& [name, change, left] : std::vector<std::tuple<char const*, Change, std::size_t>>{
             {"remove", [&](auto&selection, auto&) { selection.remove(fuse); }, 100},
             {"toggle", [&](auto&selection, auto&) { selection.toggle(fuse); }, 100},
             {"remove all", [](auto&selection, auto&others) { selection.remove(others); }, 50},
             {"toggle all", [](auto&selection, auto&others) { selection.toggle(others); }, 50},
             {"replace", [](auto&selection, auto&others) { selection.replace(others); }, 51},
             {"clear", [](auto&selection, auto&) { selection.clear(); }, 0}})
        for (bool const releasesOwner : {false, true}) {
            auto selection = SnSelection::create(), others = SnSelection::create();
            others->add(fuse);
            std::size_t seen = 1000;
            selection->add(RCShdPtr<Fuse>::create([&] {
                seen = selection->getCount();
                selection->clear();
                if (releasesOwner) selection.reset();
            }));
            for (int number = 0; number < 100; ++number) {
                selection->add(itemOf(number));
                if (number < 50) others->add(itemOf(number));
            }
            change(*selection, *others);
            EXPECT_EQ(left, seen) << name;
            EXPECT_TRUE(releasesOwner ? selection.isNull() : selection->isEmpty()) << name;
        }
}

TEST(SnSelection, CopiesKeepTheirContent) {
    unsigned const seed = std::random_device()();
    std::mt19937 random(seed);
    std::vector<std::pair<RCShdPtr<SnSelection>, Numbers>> copies{{SnSelection::create(), {}}};
    std::vector<std::pair<SnSelection::Items, Numbers>> walked;
    for (int step = 0; step < 3000; ++step) {
        auto& [selection, model] = copies[random() % copies.size()];
        for (unsigned times = random() % 4; times > 0; --times) {
            int const number = static_cast<int>(random() % 100);
            selection->toggle(itemOf(number));
            if (std::erase(model, number) == 0) model.push_back(number);
        }
        if (random() % 8 == 0) walked.emplace_back(selection->getItems(), model);
        if (walked.size() > 3) walked.erase(walked.begin());
        auto const copy = std::pair(selection->copy(), model);
        if (copies.size() < 20)
            copies.push_back(copy);
        else
            copies[random() % 20] = copy;
        auto const& [other, expected] = copies[random() % copies.size()];
        ASSERT_EQ(expected.size(), other->getCount()) << "seed " << seed << ", step " << step;
        ASSERT_EQ(expected, contentOf(*other)) << "seed " << seed << ", step " << step;
        for (auto const& [items, numbers] : walked)
            ASSERT_EQ(numbers, numbersOf(items)) << "seed " << seed << ", step " << step;
    }
}

} // namespace
