#include "bench/peers/workloads.h"
#include "bench/support/leastPool.h"

#include <glib-object.h>
#include <memory>

namespace {

using namespace KoBench;

// A fixed set of workers.
class Pool {
public:
    explicit Pool(int workers) : _pool(g_thread_pool_new(execute, nullptr, workers, TRUE, nullptr)) {}
    ~Pool() { g_thread_pool_free(_pool, FALSE, TRUE); }
    Pool(Pool const&) = delete;
    Pool& operator=(Pool const&) = delete;

    void add(Countdown& countdown) {
        g_thread_pool_push(_pool, std::make_unique<LeastCountingTask>(countdown).release(), nullptr);
    }

private:
    static void execute(void* task, void*) {
        std::unique_ptr<LeastCountingTask>(static_cast<LeastCountingTask*>(task))->execute();
    }

    GThreadPool* _pool;
};

void tasksOfPool(benchmark::State& state) {
    Pool pool(workersOf(state));
    emptyTasks(state, [&](Countdown& countdown) { pool.add(countdown); });
}

void taskAndBack(benchmark::State& state) {
    Pool pool(workers());
    roundTrip(state, [&](Countdown& countdown) { pool.add(countdown); });
}

void update(GObject*, int, long* updates) {
    ++*updates;
}

// A type of GLib with one signal.
guint changedSignal() {
    static GType const type = g_type_register_static_simple(
        G_TYPE_OBJECT, "KoBenchSubject", sizeof(GObjectClass), nullptr, sizeof(GObject), nullptr, GTypeFlags(0));
    static guint const signal =
        g_signal_new("changed", type, G_SIGNAL_RUN_LAST, 0, nullptr, nullptr, nullptr, G_TYPE_NONE, 1, G_TYPE_INT);
    return signal;
}

void notify(benchmark::State& state) {
    long updates = 0;
    guint const changed = changedSignal();
    std::unique_ptr<void, decltype(&g_object_unref)> const subject(
        g_object_new(g_type_from_name("KoBenchSubject"), nullptr), g_object_unref);
    for (std::int64_t observer = 0; observer < state.range(0); ++observer)
        g_signal_connect(subject.get(), "changed", G_CALLBACK(update), &updates);
    notifyAll(state, updates, [&] { g_signal_emit(subject.get(), changed, 0, 7); });
}

int countUp(void* processed) {
    ++*static_cast<long*>(processed);
    return G_SOURCE_REMOVE;
}

void invokedInContext(benchmark::State& state) {
    GMainContext* const context = g_main_context_default();
    // Otherwise the posting thread would own the context and call the function at once.
    g_main_context_acquire(context);
    postedEvents(
        state, [&](long& processed) { g_main_context_invoke(context, countUp, &processed); },
        [&] { g_main_context_iteration(context, FALSE); });
    g_main_context_release(context);
}

BENCHMARK(tasksOfPool)->Name("tasks2/GLib")->Arg(2)->UseRealTime();
BENCHMARK(tasksOfPool)->Name("tasks6/GLib")->Arg(6)->UseRealTime();
BENCHMARK(taskAndBack)->Name("roundTrip/GLib")->UseRealTime();
BENCHMARK(notify)->Name("notify1/GLib")->Arg(1);
BENCHMARK(notify)->Name("notify10/GLib")->Arg(10);
BENCHMARK(notify)->Name("notify1000/GLib")->Arg(1000);
BENCHMARK(invokedInContext)->Name("events/GLib")->UseRealTime();

} // namespace
