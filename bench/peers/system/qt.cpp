#include "bench/peers/plugIns.h"
#include "bench/peers/workloads.h"

#include <QPluginLoader>
#include <QProcess>
#include <memory>

namespace {

using namespace KoBench;

void processes(benchmark::State& state) {
    launch(state, [] {
        QProcess process;
        process.start(QStringLiteral("/bin/true"), {});
        bool const hasEnded = process.waitForFinished();
        benchmark::DoNotOptimize(process.readAll());
        return hasEnded && process.exitCode() == 0;
    });
}

// Opens the library and creates its object.
void open(benchmark::State& state) {
    openPlugInsOneByOne(state, KO_BENCH_QT_PLUG_IN,
        [](std::string const& path) { return QPluginLoader(QString::fromStdString(path)).instance() != nullptr; });
}

BENCHMARK(processes)->Name("launch/Qt")->UseRealTime();
BENCHMARK(open)->Name("plugIns/Qt")->UseManualTime();

} // namespace
