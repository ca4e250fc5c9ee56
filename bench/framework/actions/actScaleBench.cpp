// How the registry's operations grow: a group of many actions is unregistered, a drop has many targets, composites share
// their members over several layers. Each time should grow in proportion to the number in the name of its row.

#include "base/inInitMgr.h"
#include "bench/support/perItem.h"
#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actDndUtils.h"
#include "framework/actions/actRegistry.h"
#include "internalAPI/snItemBasic.h"

#include <benchmark/benchmark.h>
#include <memory>
#include <string>
#include <utility>

namespace {

using namespace Ko;

using Item = RCShdPtr<SnItem const>;

char const* const group = "a group";

template <class Base>
class Named : public Base {
public:
    Named(std::string description, std::string compositeName)
        : _description(std::move(description)), _compositeName(std::move(compositeName)) {}
    LiString getDescription() const override { return _description; }
    std::string getGroup() const override { return group; }
    std::string getCompositeName() const override { return _compositeName; }

private:
    std::string _description, _compositeName;
};

class Plain final : public Named<ActAction> {
public:
    Plain(std::string description, std::string compositeName, bool isValid)
        : Named(std::move(description), std::move(compositeName)), _isValid(isValid) {}
    bool inputValid(Item const&, Item const&) const override { return _isValid; }
    void performAction(Item const&, Item const&, RCShdPtr<SnSelection> const&) const override {}

private:
    bool _isValid;
};

ActRegistry& registry() {
    return ActRegistry::getInstance();
}
void add(OPtr<ActAction> action) {
    registry().registerAction(std::move(action), ActRegistry::Static);
}

void UnregisterGroup(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        for (std::int64_t number = 0; number < state.range(0); ++number)
            add(std::make_unique<Plain>("action", "", true));
        state.ResumeTiming();
        registry().unregisterActionsInGroup(group);
    }
    KoBench::perItem(state, state.range(0));
}

// A hundred actions take drops on any target; the query only asks whether there is one.
void AskForDrop(benchmark::State& state) {
    for (int number = 0; number < 100; ++number)
        add(std::make_unique<Plain>("action", "", true));
    auto const targets = SnSelection::create();
    for (std::int64_t number = 0; number < state.range(0); ++number)
        targets->add(SnItemBasic<LiString>::create(std::to_string(number)));
    RCShdPtr<SnSelection const> const all = targets;
    auto const carrier = DrCarrier::create(SnSelection::create());
    for (auto _ : state)
        benchmark::DoNotOptimize(ActDndUtils::performCarrierActions(all, carrier, targets, false));
    registry().unregisterActionsInGroup(group);
}

// Each layer has two composites that share the two of the layer below; the lowest two have a member that is not valid.
void AskCompositeLayers(benchmark::State& state) {
    auto const nameOf = [](std::int64_t layer) { return layer < 0 ? std::string() : "layer " + std::to_string(layer); };
    for (std::int64_t layer = 0; layer < state.range(0); ++layer)
        for (int times = 0; times < 2; ++times)
            add(std::make_unique<Named<ActCompositeAction>>(nameOf(layer), nameOf(layer - 1)));
    add(std::make_unique<Plain>("action", nameOf(state.range(0) - 1), false));
    Item const item = SnItemBasic<LiString>::create("item");
    for (auto _ : state)
        benchmark::DoNotOptimize(registry().getActions(item, item, "", ActRegistry::FirstOnly));
    registry().unregisterActionsInGroup(group);
}

BENCHMARK(UnregisterGroup)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(AskForDrop)->Arg(1)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(AskCompositeLayers)->Arg(1)->Arg(6)->Arg(12)->Arg(18)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    InInitScope const scope;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
