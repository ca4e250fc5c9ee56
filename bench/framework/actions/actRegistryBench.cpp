// The cost of the registry's queries, each beside the minimum for the same answer by hand: one loop over the same actions,
// and a sort over descriptions that were fetched once.

#include "base/inInitMgr.h"
#include "bench/framework/actions/leastQueries.h"
#include "bench/framework/actions/manyActions.h"
#include "framework/actions/actFinder.h"
#include "framework/actions/actRegistry.h"
#include "internalAPI/snItemBasic.h"

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Ko;
using namespace KoBench;

// Gives the minimum the same actions.
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

template <class Query>
void measure(benchmark::State& state, Query query) {
    Targets const many = targets(state.range(0));
    Item const input = item("input");
    for (auto _ : state)
        benchmark::DoNotOptimize(query(many, input));
}

template <class Query>
void measureLeast(benchmark::State& state, Query query) {
    measure(state, [&](Targets const& many, Item const& input) { return query(actions, many, input); });
}

// With one target, the query for a single target is used.
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
    measureLeast(state, &Least::unsorted);
}
void Sorted(benchmark::State& state) {
    query(state, ActRegistry::AllSorted);
}
void SortedLeast(benchmark::State& state) {
    if (state.range(0) == 1)
        measureLeast(state, &Least::sorted);
    else
        measureLeast(state, &Least::sortedByAction);
}

// Finds the action that was registered last.
void Lookup(benchmark::State& state) {
    LiString const description = actions.back()->getDescription();
    for (auto _ : state)
        benchmark::DoNotOptimize(ActRegistry::getInstance().getAction(description, ""));
}
void LookupLeast(benchmark::State& state) {
    LiString const description = actions.back()->getDescription();
    for (auto _ : state)
        benchmark::DoNotOptimize(Least::find(actions, description, ""));
}

// A palette's answer to a pattern that all actions match, and to one that few match.
void FindByTyping(benchmark::State& state, char const* pattern) {
    ActFinder finder;
    finder.collect();
    RCShdPtr<SnItem const> const none;
    for (auto _ : state)
        benchmark::DoNotOptimize(finder.find(pattern, none, none, 50));
}

BENCHMARK_CAPTURE(FindByTyping, all, "a")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FindByTyping, few, "act 99")->Unit(benchmark::kMicrosecond);
BENCHMARK(Unsorted)->Arg(1)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(UnsortedLeast)->Arg(1)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(Sorted)->Arg(1)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(SortedLeast)->Arg(1)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(Lookup)->Unit(benchmark::kMicrosecond);
BENCHMARK(LookupLeast)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    // Keeps freed memory in the process, as in a process that runs for long: otherwise page faults take most of the time.
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    InInitScope const scope;
    fillRegistry();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
