// The bench of what the framework and its peers take for the same work: "workload/who".

#include "base/inInitMgr.h"
#include "resmgt/osEnv.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

int main(int argc, char** argv) {
    // Memory that was used once stays with the process, as in one that has been at work for a while.
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    Ko::OsEnv::putVariable("KO_BGEXEC_WAIT_TIME=0");
    Ko::InInitScope const scope;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
