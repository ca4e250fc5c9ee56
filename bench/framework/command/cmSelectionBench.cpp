// The cost of selection commands and of their undo, beside a minimal hand-written set in insertion order: a hash table and a
// list of the same items, changed and changed back, without a copy that would restore the order.

#include "base/inInitMgr.h"
#include "framework/command/cmCommandStack.h"
#include "framework/command/cmSelectionChangeCmd.h"
#include "internalAPI/snItemBasic.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <list>
#include <malloc.h>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

using namespace Ko;

using Item = RCShdPtr<SnItem const>;
using Items = std::vector<Item>;
using Type = CmSelectionChangeWithItemsCmd::Type;

// The layers of these numbers in a random order, which is also their order in memory.
Items layers(std::int64_t begin, std::int64_t end) {
    std::vector<std::int64_t> numbers;
    for (std::int64_t number = begin; number < end; ++number)
        numbers.push_back(number);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937());
    Items result;
    for (std::int64_t const number : numbers)
        result.push_back(SnItemBasic<LiString>::create("Layer " + std::to_string(number)));
    return result;
}

// The minimum.
class LeastSelection {
public:
    void add(Items const& items) {
        for (Item const& item : items)
            if (auto const [found, isNew] = _set.try_emplace(item); isNew)
                found->second = _list.insert(_list.end(), item);
    }
    void remove(Items const& items) {
        for (Item const& item : items)
            if (auto const found = _set.find(item); found != _set.end()) erase(found);
    }
    void toggle(Items const& items) {
        for (Item const& item : items)
            if (auto const [found, isNew] = _set.try_emplace(item); isNew)
                found->second = _list.insert(_list.end(), item);
            else
                erase(found);
    }

private:
    struct Hash {
        std::size_t operator()(Item const& item) const { return item->getHash(); }
    };
    struct Equal {
        bool operator()(Item const& a, Item const& b) const { return a->isEqual(*b); }
    };
    using Places = std::unordered_map<Item, std::list<Item>::iterator, Hash, Equal>;

    void erase(Places::iterator place) {
        _list.erase(place->second);
        _set.erase(place);
    }

    std::list<Item> _list;
    Places _set;
};

// This many layers are selected, and as many are changed; half of these are selected.
class Layers {
public:
    explicit Layers(std::int64_t count)
        : selected(layers(0, count)), both(layers(count / 2, count)), others(layers(count, count + count / 2)),
          changed(both) {
        changed.insert(changed.end(), others.begin(), others.end());
    }

    Items selected, both, others, changed;
};

RCShdPtr<SnSelection> selectionOf(Items const& items) {
    auto const selection = SnSelection::create();
    for (Item const& item : items)
        selection->add(item);
    return selection;
}

void perItem(benchmark::State& state) {
    state.counters["perItem"] = benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void changeAndUndo(benchmark::State& state, Type type) {
    Layers const layers(state.range(0));
    auto const selection = selectionOf(layers.selected), items = selectionOf(layers.changed);
    auto const stack = RCShdPtr<CmCommandStack>::create();
    for (auto _ : state) {
        stack->executeAndLog(CmSelectionChangeWithItemsCmd::create(selection, items, type));
        stack->undo();
    }
    perItem(state);
}

template <class Change>
void leastChangeAndUndo(benchmark::State& state, Change change) {
    Layers const layers(state.range(0));
    LeastSelection selection;
    selection.add(layers.selected);
    for (auto _ : state)
        change(selection, layers);
    perItem(state);
}

void Add(benchmark::State& state) {
    changeAndUndo(state, Type::Add);
}
void AddLeast(benchmark::State& state) {
    leastChangeAndUndo(state, [](LeastSelection& selection, Layers const& layers) {
        selection.add(layers.changed);
        selection.remove(layers.others);
    });
}
void Toggle(benchmark::State& state) {
    changeAndUndo(state, Type::Toggle);
}
void ToggleLeast(benchmark::State& state) {
    leastChangeAndUndo(state, [](LeastSelection& selection, Layers const& layers) {
        selection.toggle(layers.changed);
        selection.toggle(layers.changed);
    });
}
void Remove(benchmark::State& state) {
    changeAndUndo(state, Type::Remove);
}
void RemoveLeast(benchmark::State& state) {
    leastChangeAndUndo(state, [](LeastSelection& selection, Layers const& layers) {
        selection.remove(layers.changed);
        selection.add(layers.both);
    });
}

// One command for each item, undone at once.
void ToggleOneByOne(benchmark::State& state) {
    Layers const layers(state.range(0));
    auto const selection = selectionOf(layers.selected);
    auto const stack = RCShdPtr<CmCommandStack>::create();
    for (auto _ : state)
        for (Item const& item : layers.others) {
            stack->executeAndLog(CmSelectionChangeCmd::create(selection, item, CmSelectionChangeCmd::Add));
            stack->undo();
        }
    perItem(state);
}

// A history of commands that toggle one item each: time, and memory for each kept command.
void toggleHistory(benchmark::State& state, RCShdPtr<SnSelection> const& selection) {
    constexpr int commands = 200;
    auto const one = selectionOf(layers(-1, 0));
    auto const usedBytes = [] { return static_cast<double>(mallinfo2().uordblks + mallinfo2().hblkhd); };
    double bytes = 0;
    for (auto _ : state) {
        auto const stack = RCShdPtr<CmCommandStack>::create();
        stack->setMaxStackHeight(commands + 1);
        double const before = usedBytes();
        for (int number = 0; number < commands; ++number)
            stack->executeAndLog(CmSelectionChangeWithItemsCmd::create(selection, one, Type::Toggle));
        bytes = usedBytes() - before;
    }
    state.counters["bytesPerCommand"] = bytes / commands;
}
void HistoryBesideMany(benchmark::State& state) {
    toggleHistory(state, selectionOf(layers(0, state.range(0))));
}
void HistoryAfterMany(benchmark::State& state) {
    auto const selection = selectionOf(layers(0, state.range(0)));
    selection->remove(*selection->copy());
    toggleHistory(state, selection);
}

// A selection that is filled item by item.
void Fill(benchmark::State& state) {
    Items const items = layers(0, state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(selectionOf(items));
    perItem(state);
}
void FillLeast(benchmark::State& state) {
    Items const items = layers(0, state.range(0));
    for (auto _ : state) {
        LeastSelection selection;
        selection.add(items);
        benchmark::DoNotOptimize(selection);
    }
    perItem(state);
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(1000)->Arg(100000)->Arg(1000000);
}

BENCHMARK(Add)->Apply(sizes);
BENCHMARK(AddLeast)->Apply(sizes);
BENCHMARK(Toggle)->Apply(sizes);
BENCHMARK(ToggleLeast)->Apply(sizes);
BENCHMARK(Remove)->Apply(sizes);
BENCHMARK(RemoveLeast)->Apply(sizes);
BENCHMARK(Fill)->Apply(sizes);
BENCHMARK(FillLeast)->Apply(sizes);
BENCHMARK(ToggleOneByOne)->Apply(sizes);
BENCHMARK(HistoryBesideMany)->Arg(1)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(HistoryAfterMany)->Arg(1)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    InInitScope const scope;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
