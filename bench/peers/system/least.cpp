// The same work written by hand, with the minimum that it needs.

#include "bench/peers/plugIns.h"
#include "bench/peers/workloads.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace KoBench;

pid_t spawn(char const* program, int output) {
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    std::string name = program;
    char* const arguments[] = {name.data(), nullptr};
    pid_t number = -1;
    if (::posix_spawn(&number, program, &actions, nullptr, arguments, environ) != 0) number = -1;
    ::posix_spawn_file_actions_destroy(&actions);
    return number;
}

bool runAndRead() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return false;
    pid_t const child = spawn("/bin/true", ends[1]);
    ::close(ends[1]);
    char buffer[4096];
    while (::read(ends[0], buffer, sizeof buffer) > 0) {
    }
    ::close(ends[0]);
    int status = -1;
    return ::waitpid(child, &status, 0) == child && status == 0;
}

void processes(benchmark::State& state) {
    launch(state, runAndRead);
}

void open(benchmark::State& state) {
    openPlugInsOneByOne(state, KO_BENCH_PLUG_IN,
        [](std::string const& path) { return ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL) != nullptr; });
}

BENCHMARK(processes)->Name("launch/least")->UseRealTime();
BENCHMARK(open)->Name("plugIns/least")->UseManualTime();

} // namespace
