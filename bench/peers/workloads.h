#pragma once

#include "bench/support/countdown.h"
#include "bench/support/perItem.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <thread>

/// The workloads, the same for all peers. Each peer passes its operations as functions.
namespace KoBench {

/// The number of workers: one for each core of the machine.
inline int workers() {
    return static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
}

constexpr std::int64_t undoSteps = 1000;
constexpr std::int64_t tasks = 1'000'000;
constexpr std::int64_t jobs = 100'000;
constexpr std::int64_t events = 100'000;
constexpr std::int64_t children = 200;

/// Pushes steps, which executes them, undoes all, redoes all and drops them.
template <class Push, class Undo, class Redo, class Clear>
void undoAndRedo(benchmark::State& state, Push push, Undo undo, Redo redo, Clear clear) {
    for (auto _ : state) {
        for (std::int64_t step = 0; step < undoSteps; ++step)
            push();
        for (std::int64_t step = 0; step < undoSteps; ++step)
            undo();
        for (std::int64_t step = 0; step < undoSteps; ++step)
            redo();
        clear();
    }
    perItem(state, undoSteps);
}

/// The workers of a bench of empty tasks.
inline int workersOf(benchmark::State const& state) {
    return static_cast<int>(state.range(0));
}

/// One thread passes empty tasks, an object each, to the workers until all have been executed: `add(countdown)`.
template <class Add>
void emptyTasks(benchmark::State& state, Add add) {
    for (auto _ : state) {
        Countdown countdown(tasks);
        for (std::int64_t task = 0; task < tasks; ++task)
            add(countdown);
        countdown.wait();
    }
    perItem(state, tasks);
}

/// Jobs that do nothing, of 6 workers: `add(countdown)` submits one, `end()` deletes those that were submitted.
template <class Add, class End>
void emptyJobs(benchmark::State& state, Add add, End end) {
    for (auto _ : state) {
        Countdown countdown(jobs);
        for (std::int64_t job = 0; job < jobs; ++job)
            add(countdown);
        countdown.wait();
        end();
    }
    perItem(state, jobs);
}

/// The time from adding a task to sleeping workers until its completion is seen.
template <class Add>
void roundTrip(benchmark::State& state, Add add) {
    for (auto _ : state) {
        Countdown countdown(1);
        add(countdown);
        countdown.wait();
    }
    perItem(state, 1);
}

/// One notification of state.range(0) observers, which read its content and count. The content is new each time.
template <class Notify>
void notifyAll(benchmark::State& state, long const& updates, Notify notify) {
    for (auto _ : state)
        notify();
    if (updates != state.iterations() * state.range(0)) state.SkipWithError("not every observer was notified");
    perItem(state, state.range(0));
}

/// Another thread posts events with `post(count)`, which counts up; this thread processes them with `process()`.
template <class Post, class Process>
void postedEvents(benchmark::State& state, Post post, Process process) {
    long processed = 0;
    for (auto _ : state) {
        std::jthread const poster([&] {
            for (std::int64_t event = 0; event < events; ++event)
                post(processed);
        });
        for (long const end = processed + events; processed < end;)
            process();
    }
    perItem(state, events);
}

/// Programs that do nothing, one at a time: `run()` returns when the program has ended and its output was read.
template <class Run>
void launch(benchmark::State& state, Run run) {
    for (auto _ : state)
        for (std::int64_t child = 0; child < children; ++child)
            if (!run()) return state.SkipWithError("a program failed");
    perItem(state, children);
}

} // namespace KoBench
