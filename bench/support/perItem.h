#pragma once

#include <benchmark/benchmark.h>
#include <cstdint>

namespace KoBench {

/// Shows what one of so many items costs that each iteration treats.
inline void perItem(benchmark::State& state, std::int64_t items) {
    state.counters["perItem"] = benchmark::Counter(
        static_cast<double>(state.iterations() * items), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

} // namespace KoBench
