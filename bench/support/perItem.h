#pragma once

#include <benchmark/benchmark.h>
#include <cstdint>

namespace KoBench {

/// Reports the cost per item, for iterations that process many items.
inline void perItem(benchmark::State& state, std::int64_t items) {
    state.counters["perItem"] = benchmark::Counter(
        static_cast<double>(state.iterations() * items), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

} // namespace KoBench
