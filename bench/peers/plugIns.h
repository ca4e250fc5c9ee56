#pragma once

#include "bench/support/perItem.h"
#include "bench/support/plugInCopies.h"

#include <benchmark/benchmark.h>
#include <string>
#include <vector>

namespace KoBench {

constexpr int plugIns = 200;

/// Opens copies of a plug-in, all in one new process: `open(paths, folder)` returns how many it opened.
template <class Open>
void openPlugIns(benchmark::State& state, char const* plugIn, Open open) {
    Folder const folder("koPeerPlugIns");
    auto const paths = copyPlugIn(folder, plugIn, plugIns);
    for (auto _ : state) {
        double const seconds = secondsInChild(plugIns, [&] { return open(paths, folder.path()); });
        if (seconds < 0.0) return state.SkipWithError("not all plug-ins were opened");
        state.SetIterationTime(seconds);
    }
    perItem(state, plugIns);
}

/// The same for libraries that open one file at a time: `open(path)` returns whether it was opened.
template <class Open>
void openPlugInsOneByOne(benchmark::State& state, char const* plugIn, Open open) {
    openPlugIns(state, plugIn, [&](std::vector<std::string> const& paths, std::string const&) {
        int opened = 0;
        for (std::string const& path : paths)
            if (open(path)) ++opened;
        return opened;
    });
}

} // namespace KoBench
