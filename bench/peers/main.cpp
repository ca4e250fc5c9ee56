// Measures the same workloads with the framework and its peers: "workload/library".

#include "base/inInitMgr.h"
#include "resmgt/osEnv.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

int main(int argc, char** argv) {
    // Keeps freed memory in the process, as in a process that has run for some time.
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    Ko::OsEnv::putVariable("KO_BGEXEC_WAIT_TIME=0");
    Ko::InInitScope const scope;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
