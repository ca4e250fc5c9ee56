#include "bench/peers/workloads.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/signals2/signal.hpp>

namespace {

using namespace KoBench;

void tasksOfPool(benchmark::State& state) {
    boost::asio::thread_pool pool(static_cast<std::size_t>(workersOf(state)));
    emptyTasks(state, [&](Countdown& countdown) { boost::asio::post(pool, [&countdown] { countdown.done(); }); });
}

void taskAndBack(benchmark::State& state) {
    boost::asio::thread_pool pool(static_cast<std::size_t>(workers()));
    roundTrip(state, [&](Countdown& countdown) { boost::asio::post(pool, [&countdown] { countdown.done(); }); });
}

void notify(benchmark::State& state) {
    long updates = 0;
    boost::signals2::signal<void(int)> changed;
    for (std::int64_t observer = 0; observer < state.range(0); ++observer)
        changed.connect([&updates](int) { ++updates; });
    notifyAll(state, updates, [&] { changed(7); });
}

void postedToContext(benchmark::State& state) {
    boost::asio::io_context context;
    auto const work = boost::asio::make_work_guard(context);
    postedEvents(
        state, [&](long& processed) { boost::asio::post(context, [&processed] { ++processed; }); },
        [&] { context.poll(); });
}

BENCHMARK(tasksOfPool)->Name("tasks2/Boost")->Arg(2)->UseRealTime();
BENCHMARK(tasksOfPool)->Name("tasks6/Boost")->Arg(6)->UseRealTime();
BENCHMARK(taskAndBack)->Name("roundTrip/Boost")->UseRealTime();
BENCHMARK(notify)->Name("notify1/Boost")->Arg(1);
BENCHMARK(notify)->Name("notify10/Boost")->Arg(10);
BENCHMARK(notify)->Name("notify1000/Boost")->Arg(1000);
BENCHMARK(postedToContext)->Name("events/Boost")->UseRealTime();

} // namespace
