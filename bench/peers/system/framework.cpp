#include "bench/peers/plugIns.h"
#include "bench/peers/workloads.h"
#include "framework/bgTask/bgProcess.h"
#include "framework/plugInMgr/pimUtils.h"

namespace {

using namespace Ko;
using namespace KoBench;

void processes(benchmark::State& state) {
    launch(state, [] {
        BgProcess("/bin/true", "bench").start();
        return true;
    });
}

// Also initialises the package of each plug-in.
void loadType(benchmark::State& state) {
    openPlugIns(state, KO_BENCH_PLUG_IN, [](auto const&, std::string const& folder) {
        return PimUtils::loadType(folder, "op", InInitMgr::Reinitialization, PimUtils::getNullCb());
    });
}

BENCHMARK(processes)->Name("launch/framework")->UseRealTime();
BENCHMARK(loadType)->Name("plugIns/framework")->UseManualTime();

} // namespace
