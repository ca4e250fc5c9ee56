// The costs of tasks, jobs, notifications and events, each beside a minimal implementation of the same work.

#include "base/evEventManager.h"
#include "base/inInitMgr.h"
#include "bench/framework/bgTask/countingWork.h"
#include "bench/support/countdown.h"
#include "bench/support/leastPool.h"
#include "bench/support/perItem.h"
#include "framework/bgTask/bgManager.h"
#include "resmgt/mtGroup.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <malloc.h>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using namespace Ko;
using namespace KoBench;

constexpr int workers = 6;
constexpr std::int64_t million = 1000000;

// Calls `produce(items, countdown)` on `state.range(0)` threads.
template <class Produce>
void throughput(benchmark::State& state, std::int64_t items, Produce produce) {
    std::int64_t const producers = state.range(0);
    for (auto _ : state) {
        Countdown countdown(items);
        std::vector<std::jthread> threads;
        for (std::int64_t producer = 1; producer < producers; ++producer)
            threads.emplace_back([&] { produce(items / producers, countdown); });
        produce(items / producers, countdown);
        countdown.wait();
    }
    perItem(state, items);
}

// The tasks exist already, as in the minimal implementation.
void Tasks(benchmark::State& state) {
    MtGroup<std::queue<MtTask>> group("Bench", workers);
    throughput(state, million, [&group](std::int64_t items, Countdown& countdown) {
        std::vector<RCShdPtr<CountingTask>> tasks;
        for (int task = 0; task < 1024; ++task)
            tasks.push_back(RCShdPtr<CountingTask>::create(countdown));
        while (items-- > 0)
            group.add(tasks[static_cast<std::size_t>(items) % tasks.size()]);
    });
}

void NewTasks(benchmark::State& state) {
    MtGroup<std::queue<MtTask>> group("Bench", workers);
    throughput(state, million, [&group](std::int64_t items, Countdown& countdown) {
        while (items-- > 0)
            group.add(RCShdPtr<CountingTask>::create(countdown));
    });
}

void TasksLeast(benchmark::State& state) {
    LeastPool pool(workers);
    throughput(state, million, [&pool](std::int64_t items, Countdown& countdown) {
        while (items-- > 0)
            pool.add(std::make_unique<LeastCountingTask>(countdown));
    });
}

/// An observer of the manager, as in a host.
class ManagerObserver final : public ObObserver<BgManagerTag> {
private:
    void update(ObObserver const*, ObHints const& hints) override { benchmark::DoNotOptimize(hints.size()); }
};

template <class Submit>
void jobs(benchmark::State& state, Submit submit) {
    BgManager& manager = BgManager::getInstance();
    ManagerObserver observer;
    manager.attachObserver(&observer);
    for (auto _ : state) {
        Countdown countdown(state.range(0));
        for (std::int64_t job = 0; job < state.range(0); ++job)
            submit(manager, std::make_unique<CountingProtocol>(countdown));
        countdown.wait();
        EvEventManager::getInstance().processEvents();
        state.PauseTiming();
        manager.stopAllJobs();
        EvEventManager::getInstance().processEvents();
        state.ResumeTiming();
    }
    perItem(state, state.range(0));
}

void UiJobs(benchmark::State& state) {
    jobs(state, [](BgManager& manager, OPtr<BgJobProtocol> protocol) { manager.addUiJob(std::move(protocol), 0); });
}

void Jobs(benchmark::State& state) {
    jobs(state, [](BgManager& manager, OPtr<BgJobProtocol> protocol) { manager.addJob(std::move(protocol)); });
}

void SubmitListDelete(benchmark::State& state) {
    BgManager& manager = BgManager::getInstance();
    for (auto _ : state) {
        Countdown countdown(state.range(0));
        for (std::int64_t job = 0; job < state.range(0); ++job)
            manager.addJob(std::make_unique<CountingProtocol>(countdown));
        auto const listed = manager.getJobs();
        for (auto const& job : listed)
            manager.stopAndDeleteJob(job);
    }
    EvEventManager::getInstance().processEvents();
    perItem(state, state.range(0));
}

// One task at a time, to sleeping workers and back.
template <class Add>
void roundTrip(benchmark::State& state, Add add) {
    for (auto _ : state) {
        Countdown countdown(1);
        add(countdown);
        countdown.wait();
    }
}

void RoundTrip(benchmark::State& state) {
    MtGroup<std::queue<MtTask>> group("Bench", workers);
    roundTrip(state, [&group](Countdown& countdown) { group.add(RCShdPtr<CountingTask>::create(countdown)); });
}

void RoundTripLeast(benchmark::State& state) {
    LeastPool pool(workers);
    roundTrip(state, [&pool](Countdown& countdown) { pool.add(std::make_unique<LeastCountingTask>(countdown)); });
}

class Subject final : public ObSubject<BgJobTag> {};
class Observer final : public ObObserver<BgJobTag> {
public:
    long updates = 0;

private:
    void update(ObObserver const*, ObHints const& hints) override {
        if (hints.findHint<BgJobHintProgress>()) ++updates;
    }
};

// Each notification has a hint of its own, as in applications.
void Notify(benchmark::State& state) {
    Subject subject;
    std::vector<std::unique_ptr<Observer>> observers;
    for (std::int64_t observer = 0; observer < state.range(0); ++observer)
        subject.attachObserver(observers.emplace_back(std::make_unique<Observer>()).get());
    for (auto _ : state)
        subject.notify(ObHints(RCShdPtr<BgJobHintProgress>::create()));
    perItem(state, state.range(0));
}

// Minimal implementation: a vector of functions, behind a mutex that is taken once for all of them.
void NotifyLeast(benchmark::State& state) {
    std::mutex mutex;
    std::vector<std::function<void(ObHints const&)>> observers;
    long updates = 0;
    for (std::int64_t observer = 0; observer < state.range(0); ++observer)
        observers.emplace_back([&updates](ObHints const&) { benchmark::DoNotOptimize(++updates); });
    for (auto _ : state) {
        ObHints const hints(RCShdPtr<BgJobHintProgress>::create());
        std::lock_guard const guard(mutex);
        for (auto const& observer : observers)
            observer(hints);
    }
    perItem(state, state.range(0));
}

void AttachNotifyDetach(benchmark::State& state) {
    auto const count = static_cast<std::size_t>(state.range(0));
    std::vector<Subject> subjects(count);
    std::vector<Observer> observers(count);
    ObHints const hints(RCShdPtr<BgJobHintProgress>::create());
    for (auto _ : state) {
        for (std::size_t index = 0; index < count; ++index)
            subjects[index].attachObserver(&observers[index]);
        for (Subject& subject : subjects)
            subject.notify(hints);
        for (std::size_t index = 0; index < count; ++index)
            subjects[index].detachObserver(&observers[index]);
    }
    perItem(state, state.range(0));
}

class ReportingProtocol final : public BgJobProtocol {
public:
    explicit ReportingProtocol(benchmark::State& state) : BgJobProtocol("job", "report"), _state(state) {}
    void execute() override {
        for (auto _ : _state)
            for (int done = 1; done <= 1000; ++done)
                reportProgress(done, static_cast<int>(million));
    }

private:
    benchmark::State& _state;
};

void ThrottledReport(benchmark::State& state) {
    auto const job = BgJob::create(std::make_unique<ReportingProtocol>(state));
    Observer observer;
    job->attachObserver(&observer);
    job->execute();
    perItem(state, 1000);
}

void Events(benchmark::State& state) {
    EvEventManager& events = EvEventManager::getInstance();
    long processed = 0;
    for (auto _ : state) {
        std::jthread const poster([&] {
            for (std::int64_t event = 0; event < state.range(0); ++event)
                events.postRequest([&processed] { ++processed; });
        });
        for (long const end = processed + state.range(0); processed < end;)
            events.processEvents();
    }
    perItem(state, state.range(0));
}

// Minimal implementation: a vector behind a mutex, swapped by the application thread.
void EventsLeast(benchmark::State& state) {
    std::mutex mutex;
    std::vector<std::function<void()>> posted;
    std::vector<std::function<void()>> taken;
    long processed = 0;
    for (auto _ : state) {
        std::jthread const poster([&] {
            for (std::int64_t event = 0; event < state.range(0); ++event) {
                std::lock_guard const guard(mutex);
                posted.emplace_back([&processed] { ++processed; });
            }
        });
        for (long const end = processed + state.range(0); processed < end;) {
            {
                std::lock_guard const guard(mutex);
                taken.swap(posted);
            }
            for (auto const& event : taken)
                event();
            taken.clear();
        }
    }
    perItem(state, state.range(0));
}

BENCHMARK(Tasks)->Arg(1)->Arg(4)->UseRealTime();
BENCHMARK(NewTasks)->Arg(1)->Arg(4)->UseRealTime();
BENCHMARK(TasksLeast)->Arg(1)->Arg(4)->UseRealTime();
BENCHMARK(UiJobs)->Arg(1000)->Arg(100000)->Arg(million)->UseRealTime();
BENCHMARK(Jobs)->Arg(1000)->Arg(100000)->Arg(million)->UseRealTime();
BENCHMARK(SubmitListDelete)->Arg(1000)->Arg(100000)->Arg(million)->UseRealTime();
BENCHMARK(RoundTrip)->UseRealTime();
BENCHMARK(RoundTripLeast)->UseRealTime();
BENCHMARK(Notify)->Arg(1)->Arg(10)->Arg(1000);
BENCHMARK(NotifyLeast)->Arg(1)->Arg(10)->Arg(1000);
BENCHMARK(AttachNotifyDetach)->Arg(1000)->Arg(100000)->Arg(million);
BENCHMARK(ThrottledReport);
BENCHMARK(Events)->Arg(100000)->UseRealTime();
BENCHMARK(EventsLeast)->Arg(100000)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    // Freed memory stays with the process, as in a host that has been running for a while.
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    setenv("KO_BGEXEC_WAIT_TIME", "0", 1); // programs start together
    InInitScope const scope;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
