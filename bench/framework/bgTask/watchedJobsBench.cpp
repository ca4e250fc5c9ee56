// The costs of jobs that are watched, chained, stopped together, or that report much.

#include "base/evEventManager.h"
#include "bench/framework/bgTask/countingWork.h"
#include "bench/support/perItem.h"
#include "framework/bgTask/bgManager.h"
#include "framework/bgTask/bgProcess.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

namespace {

using namespace Ko;
using namespace KoBench;

void SubscribedJobs(benchmark::State& state) {
    BgManager& manager = BgManager::getInstance();
    std::int64_t ended = 0;
    auto const list = manager.onJobs([](BgManagerHintJobs const& hint) { benchmark::DoNotOptimize(&hint); });
    for (auto _ : state) {
        Countdown countdown(state.range(0));
        std::vector<ObSubscription> subscriptions;
        for (std::int64_t job = 0; job < state.range(0); ++job) {
            auto const added = BgJob::create(std::make_unique<CountingProtocol>(countdown));
            subscriptions.push_back(added->onEnd([&ended](BgJob&) { ++ended; }));
            manager.addJob(added);
        }
        for (std::int64_t const end = ended + state.range(0); ended < end;)
            EvEventManager::getInstance().processEvents();
        state.PauseTiming();
        manager.stopAllJobs();
        EvEventManager::getInstance().processEvents();
        state.ResumeTiming();
    }
    perItem(state, state.range(0));
}

void JobsInARow(benchmark::State& state) {
    BgManager& manager = BgManager::getInstance();
    for (auto _ : state) {
        Countdown countdown(state.range(0));
        RCShdPtr<BgJob> last;
        for (std::int64_t job = 0; job < state.range(0); ++job) {
            auto const next = BgJob::create(std::make_unique<CountingProtocol>(countdown));
            manager.addJob(next, {last ? Vector<RCShdPtr<BgJob>>{last} : Vector<RCShdPtr<BgJob>>()});
            last = next;
        }
        countdown.wait();
        state.PauseTiming();
        manager.stopAllJobs();
        EvEventManager::getInstance().processEvents();
        state.ResumeTiming();
    }
    perItem(state, state.range(0));
}

/// Reports in a loop; the application thread processes the events meanwhile.
class TalkingProtocol final : public BgJobProtocol {
public:
    explicit TalkingProtocol(std::int64_t messages) : BgJobProtocol("job", "talk"), _messages(messages) {}
    void execute() override {
        for (std::int64_t message = 0; message < _messages; ++message) {
            reportMessage(BgMessage::Severity::Information, "A message of ordinary length");
            reportUnits(message, _messages, "messages");
        }
    }

private:
    std::int64_t const _messages;
};

/// Measures the longest time between two turns of the application's loop.
class Absence {
public:
    void turn() {
        auto const now = Clock::now();
        _longest = std::max(_longest, std::chrono::duration<double>(now - _last).count());
        _last = now;
    }
    void show(benchmark::State& state) const { state.counters["longestAbsence_ms"] = _longest * 1000.0; }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point _last = Clock::now();
    double _longest = 0.0;
};

void Messages(benchmark::State& state) {
    Absence absence;
    std::int64_t shown = 0;
    for (auto _ : state) {
        auto const job = BgJob::create(std::make_unique<TalkingProtocol>(state.range(0)));
        bool hasEnded = false;
        auto const messages = job->on<BgJobHintMessage>(
            [&](BgJobHintMessage const& hint) { shown += static_cast<std::int64_t>(hint.getMessages().size()); });
        auto const end = job->onEnd([&](BgJob&) { hasEnded = true; });
        BgManager::getInstance().addUiJob(job, 0);
        while (!hasEnded) {
            EvEventManager::getInstance().processEvents();
            absence.turn();
            std::this_thread::yield();
        }
        BgManager::getInstance().stopAndDeleteJob(job);
    }
    absence.show(state);
    state.counters["shown"] = static_cast<double>(shown) / static_cast<double>(state.iterations());
    perItem(state, state.range(0));
}

class IgnoringProtocol final : public BgJobProtocol {
public:
    IgnoringProtocol() : BgJobProtocol("job", "ignore") {}
    void execute() override { std::this_thread::sleep_for(std::chrono::seconds(3)); }
};
class PoliteProtocol final : public BgJobProtocol {
public:
    PoliteProtocol() : BgJobProtocol("job", "polite") {}
    void execute() override {
        while (continueExecution())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
};

// Twenty jobs, of which three are programs that ignore their break, and one ignores everything for three seconds.
void StopWithoutAWait(benchmark::State& state) {
    BgManager& manager = BgManager::getInstance();
    for (auto _ : state) {
        manager.addJob(std::make_unique<IgnoringProtocol>());
        for (int program = 0; program < 3; ++program)
            manager.addJob(std::make_unique<BgProcess>("sh -c 'trap \"\" INT; while :; do sleep 1; done'", "program"));
        for (int job = 0; job < 16; ++job)
            manager.addUiJob(std::make_unique<PoliteProtocol>(), static_cast<unsigned>(job) % 2);
        std::this_thread::sleep_for(std::chrono::milliseconds(500)); // until the programs run
        Absence absence;
        bool hasEnded = false;
        std::size_t unended = 0;
        manager.stopAllJobs(std::chrono::seconds(2), [&](Vector<RCShdPtr<BgJob>> const& jobs) {
            unended = jobs.size();
            hasEnded = true;
        });
        while (!hasEnded) {
            absence.turn();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            EvEventManager::getInstance().processEvents();
        }
        absence.show(state);
        state.counters["unended"] = static_cast<double>(unended);
        manager.stopAllJobs();
    }
}

BENCHMARK(SubscribedJobs)->Arg(1000)->Arg(100000)->UseRealTime();
BENCHMARK(JobsInARow)->Arg(1000)->Arg(100000)->UseRealTime();
BENCHMARK(Messages)->Arg(1000000)->UseRealTime();
BENCHMARK(StopWithoutAWait)->Iterations(1)->UseRealTime();

} // namespace
