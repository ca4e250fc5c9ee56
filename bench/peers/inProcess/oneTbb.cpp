#include "bench/peers/workloads.h"

#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/task_arena.h>
#include <oneapi/tbb/task_group.h>

namespace {

using namespace KoBench;

// The workers, and a slot for the thread that adds tasks.
class Arena {
public:
    explicit Arena(int workers) : _workers(workers) {}

    void execute(auto const& work) { _arena.execute(work); }
    void enqueue(auto const& task) { _arena.enqueue(task); }

private:
    int _workers;
    oneapi::tbb::global_control _limit{
        oneapi::tbb::global_control::max_allowed_parallelism, static_cast<std::size_t>(_workers) + 1};
    oneapi::tbb::task_arena _arena{_workers + 1, 1};
};

// The thread that waits for the group executes tasks meanwhile, which is the intended use.
void tasksOfGroup(benchmark::State& state) {
    Arena arena(workersOf(state));
    oneapi::tbb::task_group group;
    for (auto _ : state)
        arena.execute([&group] {
            Countdown countdown(tasks);
            for (std::int64_t task = 0; task < tasks; ++task)
                group.run([&countdown] { countdown.done(); });
            group.wait();
        });
    perItem(state, tasks);
}

void taskAndBack(benchmark::State& state) {
    Arena arena(workers());
    roundTrip(state, [&](Countdown& countdown) { arena.enqueue([&countdown] { countdown.done(); }); });
}

BENCHMARK(tasksOfGroup)->Name("tasks2/oneTBB")->Arg(2)->UseRealTime();
BENCHMARK(tasksOfGroup)->Name("tasks6/oneTBB")->Arg(6)->UseRealTime();
BENCHMARK(taskAndBack)->Name("roundTrip/oneTBB")->UseRealTime();

} // namespace
