// The same work written by hand, with the minimum that it needs.

#include "bench/peers/workloads.h"
#include "bench/support/leastPool.h"
#include "bench/support/leastStack.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace {

using namespace KoBench;

long document = 0;

class AddCommand final : public Least::Command {
public:
    void execute() override { ++document; }
    void unexecute() override { --document; }
};

void undo(benchmark::State& state) {
    Least::Stack stack;
    undoAndRedo(
        state, [&] { stack.executeAndLog(Ko::RCShdPtr<AddCommand>::create()); }, [&] { stack.undo(); },
        [&] { stack.redo(); },
        [&] {
            stack.commands.clear();
            stack.current = 0;
        });
}

void tasksOfPool(benchmark::State& state) {
    LeastPool pool(workersOf(state));
    emptyTasks(state, [&](Countdown& countdown) { pool.add(std::make_unique<LeastCountingTask>(countdown)); });
}

void jobsAsTasks(benchmark::State& state) {
    LeastPool pool(6);
    emptyJobs(
        state, [&](Countdown& countdown) { pool.add(std::make_unique<LeastCountingTask>(countdown)); }, [] {});
}

void taskAndBack(benchmark::State& state) {
    LeastPool pool(workers());
    roundTrip(state, [&](Countdown& countdown) { pool.add(std::make_unique<LeastCountingTask>(countdown)); });
}

void notify(benchmark::State& state) {
    long updates = 0;
    std::mutex mutex;
    std::vector<std::function<void(int)>> observers;
    for (std::int64_t observer = 0; observer < state.range(0); ++observer)
        observers.emplace_back([&updates](int) { benchmark::DoNotOptimize(++updates); });
    notifyAll(state, updates, [&] {
        std::lock_guard const guard(mutex);
        for (auto const& observer : observers)
            observer(7);
    });
}

void swappedVector(benchmark::State& state) {
    std::mutex mutex;
    std::vector<std::function<void()>> posted, taken;
    postedEvents(
        state,
        [&](long& processed) {
            std::lock_guard const guard(mutex);
            posted.emplace_back([&processed] { ++processed; });
        },
        [&] {
            {
                std::lock_guard const guard(mutex);
                taken.swap(posted);
            }
            for (auto const& event : taken)
                event();
            taken.clear();
        });
}

BENCHMARK(undo)->Name("undo/least");
BENCHMARK(tasksOfPool)->Name("tasks2/least")->Arg(2)->UseRealTime();
BENCHMARK(tasksOfPool)->Name("tasks6/least")->Arg(6)->UseRealTime();
BENCHMARK(jobsAsTasks)->Name("jobs/least")->UseRealTime();
BENCHMARK(taskAndBack)->Name("roundTrip/least")->UseRealTime();
BENCHMARK(notify)->Name("notify1/least")->Arg(1);
BENCHMARK(notify)->Name("notify10/least")->Arg(10);
BENCHMARK(notify)->Name("notify1000/least")->Arg(1000);
BENCHMARK(swappedVector)->Name("events/least")->UseRealTime();

} // namespace
