#pragma once

#include "bench/support/perItem.h"
#include "bench/support/plugInCopies.h"

#include <benchmark/benchmark.h>
#include <string>
#include <vector>

namespace KoBench {

constexpr int plugIns = 200;

/// Copies of a plug-in are opened, each in the same fresh process: `open(paths, folder)` returns how many were.
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

/// The same for who opens files one by one: `open(path)` tells whether it could.
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
