#include "bench/peers/workloads.h"

#include <QCoreApplication>
#include <QObject>
#include <QThreadPool>
#include <QUndoStack>
#include <memory>
#include <vector>

namespace {

using namespace KoBench;

// Qt delivers events to the thread of the application object.
void needApplication() {
    static int argc = 1;
    static char name[] = "bench";
    static char* argv[] = {name, nullptr};
    static QCoreApplication const application(argc, argv);
}

long document = 0;

class AddCommand final : public QUndoCommand {
public:
    AddCommand() : QUndoCommand(QStringLiteral("Add")) {}
    void redo() override { ++document; }
    void undo() override { --document; }
};

void undo(benchmark::State& state) {
    needApplication();
    QUndoStack stack;
    undoAndRedo(
        state, [&] { stack.push(std::make_unique<AddCommand>().release()); }, [&] { stack.undo(); },
        [&] { stack.redo(); }, [&] { stack.clear(); });
}

void tasksOfPool(benchmark::State& state) {
    QThreadPool pool;
    pool.setMaxThreadCount(workersOf(state));
    emptyTasks(state, [&](Countdown& countdown) { pool.start([&countdown] { countdown.done(); }); });
}

void taskAndBack(benchmark::State& state) {
    QThreadPool pool;
    pool.setMaxThreadCount(workers());
    roundTrip(state, [&](Countdown& countdown) { pool.start([&countdown] { countdown.done(); }); });
}

class Subject final : public QObject {
    Q_OBJECT
Q_SIGNALS:
    void changed(int hint);
};

class Observer final : public QObject {
    Q_OBJECT
public:
    explicit Observer(long& updates) : _updates(updates) {}
    void update(int) { ++_updates; }

private:
    long& _updates;
};

void notify(benchmark::State& state) {
    long updates = 0;
    Subject subject;
    std::vector<std::unique_ptr<Observer>> observers;
    for (std::int64_t observer = 0; observer < state.range(0); ++observer) {
        observers.push_back(std::make_unique<Observer>(updates));
        QObject::connect(&subject, &Subject::changed, observers.back().get(), &Observer::update);
    }
    notifyAll(state, updates, [&] { Q_EMIT subject.changed(7); });
}

void queuedCalls(benchmark::State& state) {
    needApplication();
    QObject receiver;
    postedEvents(
        state,
        [&](long& processed) {
            QMetaObject::invokeMethod(
                &receiver, [&processed] { ++processed; }, Qt::QueuedConnection);
        },
        [] { QCoreApplication::processEvents(); });
}

BENCHMARK(undo)->Name("undo/Qt");
BENCHMARK(tasksOfPool)->Name("tasks2/Qt")->Arg(2)->UseRealTime();
BENCHMARK(tasksOfPool)->Name("tasks6/Qt")->Arg(6)->UseRealTime();
BENCHMARK(taskAndBack)->Name("roundTrip/Qt")->UseRealTime();
BENCHMARK(notify)->Name("notify1/Qt")->Arg(1);
BENCHMARK(notify)->Name("notify10/Qt")->Arg(10);
BENCHMARK(notify)->Name("notify1000/Qt")->Arg(1000);
BENCHMARK(queuedCalls)->Name("events/Qt")->UseRealTime();

} // namespace

#include "qt.moc"
