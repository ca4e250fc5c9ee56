// The cost of finding, choosing and loading plug-ins, each beside the minimum for the same work by hand: the system's loader,
// a walk through the directory, a comparison of the name.

#include "bench/support/plugInCopies.h"
#include "framework/plugInMgr/pimUtils.h"
#include "resmgt/lgGroups.h"
#include "resmgt/msgServer.h"
#include "resmgt/osFile.h"

#include <array>
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <fstream>
#include <link.h>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace {

using namespace Ko;
using namespace KoBench;

constexpr int plugIns = 200;
constexpr int refused = 990;
constexpr int notRefused = 10;
constexpr int files = 10000;
constexpr int types = 100;
constexpr auto mode = InInitMgr::Reinitialization;

// Empty files, which are found but not loaded.
void fillWithNames(Folder const& folder) {
    for (int index = 0; index < files; ++index)
        std::ofstream(folder.file("file" + std::to_string(index) + ".t" + std::to_string(index % types) + ".so"));
}

template <class Load>
void loadInChildren(benchmark::State& state, Load load) {
    for (auto _ : state) {
        double const seconds = secondsInChild(plugIns, load);
        if (seconds < 0.0) return state.SkipWithError("not all plug-ins were loaded");
        state.SetIterationTime(seconds);
    }
    state.counters["perPlugIn"] = benchmark::Counter(
        static_cast<double>(state.iterations() * plugIns), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void LoadPlugIns(benchmark::State& state, Folder const& folder) {
    loadInChildren(state, [&] { return PimUtils::loadType(folder.path(), "op", mode, PimUtils::getNullCb()); });
}

void LoadPlugInsLeast(benchmark::State& state, std::vector<std::string> const& paths) {
    loadInChildren(state, [&] {
        int loaded = 0;
        for (std::string const& path : paths)
            if (::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) ++loaded;
        return loaded;
    });
}

// Copies that declare another interface than that of the framework.
std::vector<std::string> copyRefused(Folder const& folder, char const* plugIn) {
    std::string library = OsFile::read(plugIn);
    std::string const interface = "interface=framework ";
    library.at(library.find(interface) + interface.size()) = '9';
    std::vector<std::string> paths;
    for (int index = 0; index < refused; ++index) {
        paths.push_back(folder.file("refused" + std::to_string(index) + ".op.so"));
        std::ofstream(paths.back(), std::ios::binary) << library;
    }
    return paths;
}

// The number of libraries that the system's loader has mapped into this process so far.
int libraryLoads() {
    unsigned long long loads = 0;
    ::dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* result) {
            *static_cast<unsigned long long*>(result) = info->dlpi_adds;
            return 1;
        },
        &loads);
    return static_cast<int>(loads);
}

// Ten of a thousand plug-ins fit. The others must not reach the system's loader.
template <class Load>
void loadFew(benchmark::State& state, Load load) {
    for (auto _ : state) {
        double const seconds = secondsInChild(notRefused, [&] {
            int const before = libraryLoads(), loaded = load();
            return libraryLoads() - before == notRefused ? loaded : -1;
        });
        if (seconds < 0.0) return state.SkipWithError("other libraries were loaded than those that fit");
        state.SetIterationTime(seconds);
    }
    state.counters["libraryLoads"] = notRefused;
    state.counters["perPlugIn"] = benchmark::Counter(static_cast<double>(state.iterations() * (refused + notRefused)),
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void RefusePlugIns(benchmark::State& state, Folder const& folder) {
    loadFew(state, [&] { return PimUtils::loadType(folder.path(), "op", mode, PimUtils::getNullCb()); });
}

// Four reads of each file, for the header, the table of sections, their names, and the declaration.
void RefusePlugInsLeast(
    benchmark::State& state, std::vector<std::string> const& others, std::vector<std::string> const& fit) {
    loadFew(state, [&] {
        std::array<char, 64> bytes{};
        ssize_t sum = 0;
        for (std::string const& path : others) {
            int const file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
            for (int piece = 0; piece < 4; ++piece)
                sum += ::pread(file, bytes.data(), bytes.size(), 1000 * piece);
            ::close(file);
        }
        benchmark::DoNotOptimize(sum);
        int loaded = 0;
        for (std::string const& path : fit)
            if (::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) ++loaded;
        return loaded;
    });
}

void ScanForType(benchmark::State& state, Folder const& folder, std::string const& type) {
    for (auto _ : state)
        benchmark::DoNotOptimize(PimUtils::loadType(folder.path(), type, mode, PimUtils::getNullCb()));
}

void ScanForTypeLeast(benchmark::State& state, Folder const& folder) {
    for (auto _ : state) {
        int found = 0;
        DIR* const stream = ::opendir(folder.path().c_str());
        while (::readdir(stream))
            ++found;
        ::closedir(stream);
        benchmark::DoNotOptimize(found);
    }
}

// A plug-in that is filtered out costs a query whether it is loaded, and then the filter.
void Filter(benchmark::State& state) {
    OsFilePath const path = "/plugIns/jpeg.io.so";
    for (auto _ : state)
        if (PimUtils::load(path, mode)) return state.SkipWithError("was not filtered out");
}

void FilterLeast(benchmark::State& state) {
    std::unordered_map<std::string, std::vector<std::string>> const exclusions = {{"io", {"tiff", "jp"}}};
    std::string const path = "/plugIns/jpeg.io.so";
    for (auto _ : state) {
        std::string_view const file = std::string_view(path).substr(path.rfind('/') + 1);
        std::string_view const base = file.substr(0, file.rfind('.'));
        auto const dot = base.rfind('.');
        bool isFilteredOut = false;
        if (auto const rule = exclusions.find(std::string(base.substr(dot + 1))); rule != exclusions.end())
            for (std::string const& fragment : rule->second)
                isFilteredOut = isFilteredOut || base.substr(0, dot).find(fragment) != std::string_view::npos;
        benchmark::DoNotOptimize(isFilteredOut);
    }
}

BENCHMARK(Filter);
BENCHMARK(FilterLeast);

} // namespace

int main(int argc, char** argv) {
    std::vector<char*> arguments(argv, argv + argc);
    std::string include = "plugins_include:io=tiff,io=jpeg", exclude = "plugins_exclude:io=tiff,io=jp";
    arguments.insert(arguments.end(), {include.data(), exclude.data(), nullptr});
    int count = argc + 2;
    InInitScope const scope(count, arguments.data());
    benchmark::Initialize(&count, arguments.data());

    // The reports of plug-ins that are refused.
    MsgProtocol::setHandler([](Msg const&) {});
    LgSinks::replace({});
    Folder const loaded("koBenchPlugIns"), scanned("koBenchNames"), mixed("koBenchRefused");
    auto const paths = copyPlugIn(loaded, KO_BENCH_PLUG_IN, plugIns);
    auto const others = copyRefused(mixed, KO_BENCH_PLUG_IN), fit = copyPlugIn(mixed, KO_BENCH_PLUG_IN, notRefused);
    fillWithNames(scanned);
    benchmark::RegisterBenchmark("LoadPlugIns", LoadPlugIns, std::cref(loaded))->UseManualTime();
    benchmark::RegisterBenchmark("LoadPlugInsLeast", LoadPlugInsLeast, std::cref(paths))->UseManualTime();
    benchmark::RegisterBenchmark("RefusePlugIns", RefusePlugIns, std::cref(mixed))->UseManualTime();
    benchmark::RegisterBenchmark("RefusePlugInsLeast", RefusePlugInsLeast, std::cref(others), std::cref(fit))
        ->UseManualTime();
    benchmark::RegisterBenchmark("ScanForType/none", ScanForType, std::cref(scanned), "op");
    benchmark::RegisterBenchmark("ScanForType/one of 100", ScanForType, std::cref(scanned), "t42");
    benchmark::RegisterBenchmark("ScanForTypeLeast", ScanForTypeLeast, std::cref(scanned));
    benchmark::RunSpecifiedBenchmarks();
}
