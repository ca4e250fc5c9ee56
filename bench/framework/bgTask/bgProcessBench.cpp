// The cost of external programs as jobs, compared with the least: starting a program and waiting for it, and a loop that reads.

#include "base/inInitMgr.h"
#include "framework/bgTask/bgJob.h"
#include "framework/bgTask/bgProcess.h"
#include "resmgt/osEnv.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
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

pid_t spawn(std::vector<std::string> words, int output) {
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    if (output >= 0) ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t number = 0;
    ::posix_spawn(&number, arguments[0], &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return number;
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
BENCHMARK(ExitToComplete)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(ErrorToHook)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

int main(int argc, char** argv) {
    OsEnv::putVariable("KO_BGEXEC_WAIT_TIME=0");
    InInitScope const scope;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
