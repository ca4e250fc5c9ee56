#include "base/evEventManager.h"
#include "bench/framework/bgTask/countingWork.h"
#include "bench/peers/workloads.h"
#include "framework/bgTask/bgManager.h"
#include "framework/command/cmCommandStack.h"
#include "resmgt/mtGroup.h"

#include <memory>
#include <vector>

namespace {

using namespace Ko;
using namespace KoBench;

long document = 0;

class AddCommand final : public CmCommand {
public:
    LiString getDescription() const override { return "Add"; }

protected:
    void executeInternal() override { ++document; }
    void unexecuteInternal() override { --document; }
};

void undo(benchmark::State& state) {
    auto const stack = RCShdPtr<CmCommandStack>::create();
    stack->setMaxStackHeight(2 * undoSteps);
    undoAndRedo(
        state, [&] { stack->executeAndLog(RCShdPtr<AddCommand>::create()); }, [&] { stack->undo(); },
        [&] { stack->redo(); }, [&] { stack->clear(); });
}

void tasksOfGroup(benchmark::State& state) {
    MtGroup<std::queue<MtTask>> group("Bench", workersOf(state));
    emptyTasks(state, [&](Countdown& countdown) { group.add(RCShdPtr<CountingTask>::create(countdown)); });
}

void jobsOfManager(benchmark::State& state) {
    BgManager& manager = BgManager::getInstance();
    std::vector<RCShdPtr<BgJob>> added;
    emptyJobs(
        state,
        [&](Countdown& countdown) { added.push_back(manager.addJob(std::make_unique<CountingProtocol>(countdown))); },
        [&] {
            for (auto const& job : added)
                manager.stopAndDeleteJob(job);
            added.clear();
            EvEventManager::getInstance().processEvents();
        });
}

void taskAndBack(benchmark::State& state) {
    MtGroup<std::queue<MtTask>> group("Bench", workers());
    roundTrip(state, [&](Countdown& countdown) { group.add(RCShdPtr<CountingTask>::create(countdown)); });
}

class Subject final : public ObSubject<BgJobTag> {};
class Observer final : public ObObserver<BgJobTag> {
public:
    explicit Observer(long& updates) : _updates(updates) {}

private:
    void update(ObObserver const*, ObHints const& hints) override {
        if (hints.findHint<BgJobHintProgress>()) ++_updates;
    }

    long& _updates;
};

void notify(benchmark::State& state) {
    long updates = 0;
    Subject subject;
    std::vector<std::unique_ptr<Observer>> observers;
    for (std::int64_t observer = 0; observer < state.range(0); ++observer)
        subject.attachObserver(observers.emplace_back(std::make_unique<Observer>(updates)).get());
    notifyAll(state, updates, [&] { subject.notify(ObHints(RCShdPtr<BgJobHintProgress>::create())); });
}

void postRequests(benchmark::State& state) {
    EvEventManager& manager = EvEventManager::getInstance();
    postedEvents(
        state, [&](long& processed) { manager.postRequest([&processed] { ++processed; }); },
        [&] { manager.processEvents(); });
}

BENCHMARK(undo)->Name("undo/framework");
BENCHMARK(tasksOfGroup)->Name("tasks2/framework")->Arg(2)->UseRealTime();
BENCHMARK(tasksOfGroup)->Name("tasks6/framework")->Arg(6)->UseRealTime();
BENCHMARK(jobsOfManager)->Name("jobs/framework")->UseRealTime();
BENCHMARK(taskAndBack)->Name("roundTrip/framework")->UseRealTime();
BENCHMARK(notify)->Name("notify1/framework")->Arg(1);
BENCHMARK(notify)->Name("notify10/framework")->Arg(10);
BENCHMARK(notify)->Name("notify1000/framework")->Arg(1000);
BENCHMARK(postRequests)->Name("events/framework")->UseRealTime();

} // namespace
