#include "bench/peers/plugIns.h"
#include "bench/peers/workloads.h"

#include <boost/dll/shared_library.hpp>
#include <boost/process/child.hpp>
#include <boost/process/io.hpp>
#include <boost/process/pipe.hpp>
#include <string>
#include <vector>

namespace {

using namespace KoBench;

void processes(benchmark::State& state) {
    launch(state, [] {
        boost::process::ipstream output;
        boost::process::child process("/bin/true", boost::process::std_out > output);
        for (std::string line; std::getline(output, line);) {
        }
        process.wait();
        return process.exit_code() == 0;
    });
}

void open(benchmark::State& state) {
    openPlugInsOneByOne(state, KO_BENCH_PLUG_IN, [](std::string const& path) {
        static std::vector<boost::dll::shared_library> opened;
        opened.emplace_back(path, boost::dll::load_mode::rtld_now);
        return opened.back().is_loaded();
    });
}

BENCHMARK(processes)->Name("launch/Boost")->UseRealTime();
BENCHMARK(open)->Name("plugIns/Boost")->UseManualTime();

} // namespace
