#include "bench/peers/plugIns.h"
#include "bench/peers/workloads.h"

#include <gio/gio.h>
#include <gmodule.h>
#include <memory>

namespace {

using namespace KoBench;

void processes(benchmark::State& state) {
    launch(state, [] {
        std::unique_ptr<GSubprocess, decltype(&g_object_unref)> const process(
            g_subprocess_new(G_SUBPROCESS_FLAGS_STDOUT_PIPE, nullptr, "/bin/true", nullptr), g_object_unref);
        GBytes* output = nullptr;
        bool const hasEnded = g_subprocess_communicate(process.get(), nullptr, nullptr, &output, nullptr, nullptr);
        g_bytes_unref(output);
        return hasEnded && g_subprocess_get_successful(process.get());
    });
}

void open(benchmark::State& state) {
    openPlugInsOneByOne(state, KO_BENCH_PLUG_IN,
        [](std::string const& path) { return g_module_open(path.c_str(), G_MODULE_BIND_LOCAL) != nullptr; });
}

BENCHMARK(processes)->Name("launch/GLib")->UseRealTime();
BENCHMARK(open)->Name("plugIns/GLib")->UseManualTime();

} // namespace
