// The cost of external programs as jobs, compared with the least: starting a program and waiting for it, and a loop that reads.

#include "base/evEventManager.h"
#include "base/inInitMgr.h"
#include "framework/bgTask/bgJob.h"
#include "framework/bgTask/bgProcess.h"
#include "resmgt/lkEvent.h"
#include "resmgt/osEnv.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <deque>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace Ko;
using Clock = std::chrono::steady_clock;

constexpr std::int64_t children = 200;
constexpr std::int64_t floodSize = 100'000'000;

// Memory of a host, with pages that are really allocated.
class HeldMemory {
public:
    explicit HeldMemory(std::int64_t megabytes) : _pages(static_cast<std::size_t>(megabytes) << 20, 1) {}

private:
    std::vector<char> _pages;
};

void perChild(benchmark::State& state) {
    state.counters["perChild"] = benchmark::Counter(
        static_cast<double>(state.iterations() * children), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Launch(benchmark::State& state) {
    HeldMemory const held(state.range(0));
    for (auto _ : state)
        for (std::int64_t child = 0; child < children; ++child)
            BgProcess("/bin/true", "bench").start();
    perChild(state);
}

pid_t spawn(std::vector<std::string> words, int stream, int number = STDOUT_FILENO) {
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    if (stream >= 0) ::posix_spawn_file_actions_adddup2(&actions, stream, number);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t child = 0;
    ::posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return child;
}

void LaunchLeast(benchmark::State& state) {
    HeldMemory const held(state.range(0));
    for (auto _ : state)
        for (std::int64_t child = 0; child < children; ++child)
            ::waitpid(spawn({"/bin/true"}, -1), nullptr, 0);
    perChild(state);
}

class Reader : public BgProcess {
public:
    explicit Reader(std::string const& steps) : BgProcess(std::string(KO_BENCH_CHILD) + " " + steps, "bench") {}

    std::size_t bytes = 0;

protected:
    void processOutputString(std::string const& line) override { bytes += line.size() + 1; }
};

void check(benchmark::State& state, std::size_t bytes) {
    if (bytes != floodSize) state.SkipWithError("bytes are missing");
    state.SetBytesProcessed(state.iterations() * floodSize);
}

void Read(benchmark::State& state) {
    std::size_t bytes = 0;
    for (auto _ : state) {
        Reader reader("flood " + std::to_string(floodSize) + " " + std::to_string(state.range(0)));
        reader.start();
        bytes = reader.bytes;
    }
    check(state, bytes);
}

void ReadLeast(benchmark::State& state) {
    std::size_t bytes = 0;
    std::vector<char> buffer(64 * 1024);
    for (auto _ : state) {
        bytes = 0;
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) return state.SkipWithError("no pipe");
        pid_t const child =
            spawn({KO_BENCH_CHILD, "flood", std::to_string(floodSize), std::to_string(state.range(0))}, ends[1]);
        ::close(ends[1]);
        for (ssize_t count = 0; (count = ::read(ends[0], buffer.data(), buffer.size())) > 0;)
            bytes += static_cast<std::size_t>(count);
        ::close(ends[0]);
        ::waitpid(child, nullptr, 0);
    }
    check(state, bytes);
}

// The same through a file without a name, which jobs use; read after the end of the program.
void ReadFileLeast(benchmark::State& state) {
    std::size_t bytes = 0;
    std::vector<char> buffer(64 * 1024);
    for (auto _ : state) {
        bytes = 0;
        int const file = ::open("/tmp", O_TMPFILE | O_RDWR | O_APPEND | O_CLOEXEC, 0600);
        pid_t const child =
            spawn({KO_BENCH_CHILD, "flood", std::to_string(floodSize), std::to_string(state.range(0))}, file);
        ::waitpid(child, nullptr, 0);
        for (ssize_t count = 0; (count = ::pread(file, buffer.data(), buffer.size(), static_cast<off_t>(bytes))) > 0;)
            bytes += static_cast<std::size_t>(count);
        ::close(file);
    }
    check(state, bytes);
}

// The lines of a program that the application thread collects: an event for each, or one for each batch. Each event also
// costs what a list on a screen needs to take in a change.
class Listing : public BgProcess {
public:
    static constexpr std::int64_t lines = 900'000, rate = 300'000;

    Listing()
        : BgProcess(
              std::string(KO_BENCH_CHILD) + " pace " + std::to_string(lines) + " " + std::to_string(rate), "bench") {}

    std::deque<std::string> list;
    bool hasEnded = false;

protected:
    void processOutputString(std::string const& line) override {
        EvEventManager::getInstance().postRequest([this, line] {
            list.push_back(line);
            updateView();
        });
    }
    void handleExit(int) override {
        EvEventManager::getInstance().postRequest([this] { hasEnded = true; });
    }
    static void updateView() {
        auto const end = Clock::now() + std::chrono::microseconds(10);
        while (Clock::now() < end) {
        }
    }
};

class BatchedListing : public Listing {
public:
    BatchedListing() { gatherLines(std::chrono::milliseconds(50)); }

protected:
    void processOutputStrings(Vector<std::string> const& batch) override {
        EvEventManager::getInstance().postRequest([this, batch] {
            list.insert(list.end(), batch.begin(), batch.end());
            updateView();
        });
    }
};

// How long the application thread is away at most while a program writes 300,000 lines a second for it.
template <class SomeListing>
void LongestAbsence(benchmark::State& state) {
    LkEvent awake("bench", true);
    EvEventManager::getInstance().setWakeUpHandler([&awake] { awake.set(); });
    for (auto _ : state) {
        SomeListing listing;
        std::jthread const worker([&listing] { listing.start(); });
        Clock::duration longest{};
        while (!listing.hasEnded) {
            awake.wait();
            awake.reset();
            auto const begin = Clock::now();
            EvEventManager::getInstance().processEvents();
            longest = std::max(longest, Clock::now() - begin);
        }
        state.counters["longest_ms"] = std::chrono::duration<double, std::milli>(longest).count();
        if (std::ssize(listing.list) != Listing::lines) state.SkipWithError("lines are missing");
    }
    EvEventManager::getInstance().setWakeUpHandler({});
}

// Writes an input as the program takes it.
class Feeder : public BgProcess {
public:
    Feeder() : BgProcess(std::string(KO_BENCH_CHILD) + " drain", "bench") {}

protected:
    void provideInput() override {
        while (_left > 0) {
            std::size_t const count = write(std::string_view(_piece).substr(0, std::min(_left, _piece.size())));
            _left -= count;
            if (count < _piece.size() && _left > 0) return;
        }
        closeInput();
    }

private:
    std::string const _piece = std::string(64 * 1024, 'x');
    std::size_t _left = floodSize;
};

void Write(benchmark::State& state) {
    for (auto _ : state)
        Feeder().start();
    state.SetBytesProcessed(state.iterations() * floodSize);
}

void WriteLeast(benchmark::State& state) {
    std::string const piece(64 * 1024, 'x');
    for (auto _ : state) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) return state.SkipWithError("no pipe");
        pid_t const child = spawn({KO_BENCH_CHILD, "drain"}, ends[0], STDIN_FILENO);
        ::close(ends[0]);
        for (std::size_t left = floodSize; left > 0;)
            left -= static_cast<std::size_t>(::write(ends[1], piece.data(), std::min(left, piece.size())));
        ::close(ends[1]);
        ::waitpid(child, nullptr, 0);
    }
    state.SetBytesProcessed(state.iterations() * floodSize);
}

// Reads the time that a child writes, and notes when it arrives.
class Listener : public BgProcess {
public:
    explicit Listener(char const* mode) : BgProcess(std::string(KO_BENCH_CHILD) + " " + mode, "bench") {}

    Clock::time_point written, heard;

protected:
    void processOutputString(std::string const& line) override { take(line); }
    void processErrorString(std::string const& line) override { take(line); }

private:
    void take(std::string const& line) {
        heard = Clock::now();
        written = Clock::time_point(Clock::duration(std::stoll(line)));
    }
};

double secondsBetween(Clock::time_point begin, Clock::time_point end) {
    return std::chrono::duration<double>(end - begin).count();
}

// Includes the time that the child needs to exit after it has written the time.
void ExitToComplete(benchmark::State& state) {
    for (auto _ : state) {
        auto owned = std::make_unique<Listener>("end");
        Listener const& listener = *owned;
        auto const job = BgJob::create(std::move(owned));
        job->execute();
        state.SetIterationTime(secondsBetween(listener.written, Clock::now()));
    }
}

void ErrorToHook(benchmark::State& state) {
    for (auto _ : state) {
        Listener listener("error");
        listener.start();
        state.SetIterationTime(secondsBetween(listener.written, listener.heard));
    }
}

void hosts(benchmark::internal::Benchmark* bench) {
    bench->ArgName("heldMiB")->Arg(0)->Arg(2048)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(1);
}

void lines(benchmark::internal::Benchmark* bench) {
    bench->ArgName("lineLength")->Arg(2)->Arg(50)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(1);
}

BENCHMARK(Launch)->Apply(hosts);
BENCHMARK(LaunchLeast)->Apply(hosts);
BENCHMARK(Read)->Apply(lines);
BENCHMARK(ReadLeast)->Apply(lines);
BENCHMARK(ReadFileLeast)->Apply(lines);
BENCHMARK(LongestAbsence<Listing>)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(LongestAbsence<BatchedListing>)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(Write)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(WriteLeast)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(ExitToComplete)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(ErrorToHook)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

int main(int argc, char** argv) {
    OsEnv::putVariable("KO_BGEXEC_WAIT_TIME=0");
    InInitScope const scope;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
