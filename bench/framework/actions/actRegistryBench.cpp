// What queries of the registry cost, each beside the least that the same answer could cost by hand: one loop over the same
// actions, and a sort over descriptions that were fetched once.

#include "base/inInitMgr.h"
#include "framework/actions/actRegistry.h"
#include "internalAPI/snItemBasic.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Ko;

using Item = RCShdPtr<SnItem const>;
using Targets = List<Item>;

constexpr int actionCount = 10000;

// One of three is valid for nothing, one of ten is in a sub-menu. They are of several classes, as in any application, so
// that no loop is compiled for one of them.
template <int kind>
class Action final : public ActAction {
public:
    explicit Action(int number) : _number(number) {}

    bool inputValid(Item const& target, Item const& input) const override {
        return kind != 0 && target.get() && input.get();
    }
    void performAction(Item const&, Item const&, RCShdPtr<SnSelection> const&) const override {}
    LiString getDescription() const override {
        return "Rename Layer " + std::to_string((_number * 7919L) % actionCount);
    }
    std::string getCompositeName() const override { return _number % 10 == 9 ? "Tools" : ""; }

private:
    int _number;
};

OPtr<ActAction> makeAction(int number) {
    switch (number % 3) {
    case 0:
        return std::make_unique<Action<0>>(number);
    case 1:
        return std::make_unique<Action<1>>(number);
    default:
        return std::make_unique<Action<2>>(number);
    }
}

std::vector<ActAction const*> actions;

void fillRegistry() {
    for (int number = 0; number < actionCount; ++number) {
        OPtr<ActAction> action = makeAction(number);
        actions.push_back(action.get());
        ActRegistry::getInstance().registerAction(std::move(action), ActRegistry::Static);
    }
}

Item item(std::string const& text) {
    return SnItemBasic<LiString>::create(text);
}

Targets targets(std::int64_t count) {
    Targets result;
    for (std::int64_t number = 0; number < count; ++number)
        result.push_back(item(std::to_string(number)));
    return result;
}

// The minimum.
namespace Least {

struct Entry {
    ActAction const* action;
    Item target;
    Item input;
};

// Calls `found` with every entry; goes on to the next action when it answers false.
template <class Found>
void query(Targets const& targets, Item const& input, std::string const& compositeName, Found found) {
    for (ActAction const* const action : actions) {
        if (action->getCompositeName() != compositeName) continue;
        for (Item const& target : targets)
            if (action->inputValid(target, input) && !found(Entry{action, target, input})) break;
    }
}

std::vector<Entry> unsorted(Targets const& targets, Item const& input) {
    std::vector<Entry> result;
    query(targets, input, "", [&](Entry entry) { return result.push_back(std::move(entry)), false; });
    return result;
}

// For one target: descriptions and entries are sorted together.
std::vector<std::pair<LiString, Entry>> sorted(Targets const& targets, Item const& input) {
    std::vector<std::pair<LiString, Entry>> result;
    query(targets, input, "", [&](Entry entry) {
        LiString description = entry.action->getDescription();
        return result.emplace_back(std::move(description), std::move(entry)), false;
    });
    std::sort(result.begin(), result.end(), [](auto const& a, auto const& b) { return a.first < b.first; });
    return result;
}

// For many targets: the entries of one action are kept together, and moved in order at the end.
std::vector<Entry> sortedByAction(Targets const& targets, Item const& input) {
    std::vector<std::pair<LiString, std::vector<Entry>>> byAction;
    ActAction const* last = nullptr;
    std::size_t count = 0;
    query(targets, input, "", [&](Entry entry) {
        if (std::exchange(last, entry.action) != entry.action)
            byAction.emplace_back(entry.action->getDescription(), std::vector<Entry>()).second.reserve(targets.size());
        return byAction.back().second.push_back(std::move(entry)), ++count, true;
    });
    std::sort(byAction.begin(), byAction.end(), [](auto const& a, auto const& b) { return a.first < b.first; });
    std::vector<Entry> result;
    result.reserve(count);
    for (auto& [description, entries] : byAction)
        result.insert(result.end(), std::move_iterator(entries.begin()), std::move_iterator(entries.end()));
    return result;
}

ActAction const* find(LiString const& description, std::string const& compositeName) {
    for (ActAction const* const action : actions)
        if (action->getCompositeName() == compositeName && action->getDescription() == description) return action;
    return nullptr;
}

} // namespace Least

template <class Query>
void measure(benchmark::State& state, Query query) {
    Targets const many = targets(state.range(0));
    Item const input = item("input");
    for (auto _ : state)
        benchmark::DoNotOptimize(query(many, input));
}

// With one target it is the form for one target that is asked.
void query(benchmark::State& state, ActRegistry::Numerator order) {
    ActRegistry const& registry = ActRegistry::getInstance();
    if (state.range(0) == 1)
        measure(state,
            [&](Targets const& one, Item const& input) { return registry.getActions(one.front(), input, "", order); });
    else
        measure(
            state, [&](Targets const& many, Item const& input) { return registry.getActions(many, input, "", order); });
}

void Unsorted(benchmark::State& state) {
    query(state, ActRegistry::FirstOnly);
}
void UnsortedLeast(benchmark::State& state) {
    measure(state, &Least::unsorted);
}
void Sorted(benchmark::State& state) {
    query(state, ActRegistry::AllSorted);
}
void SortedLeast(benchmark::State& state) {
    if (state.range(0) == 1)
        measure(state, &Least::sorted);
    else
        measure(state, &Least::sortedByAction);
}

// The last one of all.
void Lookup(benchmark::State& state) {
    LiString const description = actions.back()->getDescription();
    for (auto _ : state)
        benchmark::DoNotOptimize(ActRegistry::getInstance().getAction(description, ""));
}
void LookupLeast(benchmark::State& state) {
    LiString const description = actions.back()->getDescription();
    for (auto _ : state)
        benchmark::DoNotOptimize(Least::find(description, ""));
}

BENCHMARK(Unsorted)->Arg(1)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(UnsortedLeast)->Arg(1)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(Sorted)->Arg(1)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(SortedLeast)->Arg(1)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(Lookup)->Unit(benchmark::kMicrosecond);
BENCHMARK(LookupLeast)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    InInitScope const scope;
    fillRegistry();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
