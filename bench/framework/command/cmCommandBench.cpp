// The cost of commands, stacks and guards, each beside a minimal hand-written version: reference counted commands in a deque, a
// virtual call, one callback.

#include "base/inInitMgr.h"
#include "bench/support/leastStack.h"
#include "framework/command/cmCommandStack.h"
#include "framework/command/cmHistoryChange.h"
#include "framework/command/cmMacroCommand.h"
#include "framework/command/cmMerger.h"
#include "framework/command/cmSized.h"
#include "framework/command/cmUndoGuard.h"
#include "internalAPI/cbDispatcher.h"
#include "resmgt/lgGroups.h"

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <memory>
#include <vector>

namespace {

using namespace Ko;
using namespace KoBench;

// Changed by both kinds of command.
long document = 0;

class AddCommand final : public CmCommand {
public:
    static RCShdPtr<CmCommand> create() { return RCShdPtr<AddCommand>::create(); }
    LiString getDescription() const override { return "Add"; }

protected:
    void executeInternal() override { ++document; }
    void unexecuteInternal() override { --document; }
};

class SizedAddCommand final : public CmCommand, public CmSized {
public:
    static RCShdPtr<CmCommand> create() { return RCShdPtr<SizedAddCommand>::create(); }
    LiString getDescription() const override { return "Add"; }
    std::size_t getMemorySize() const noexcept override { return 1000; }

protected:
    void executeInternal() override { ++document; }
    void unexecuteInternal() override { --document; }
};

class DecliningMerger final : public CmMerger {
public:
    RCShdPtr<CmCommand> merge(RCShdPtr<CmCommand> const&, RCShdPtr<CmCommand> const&) override { return nullptr; }
};

class LeastAddCommand final : public Least::Command {
public:
    static RCShdPtr<Least::Command> create() { return RCShdPtr<LeastAddCommand>::create(); }
    void execute() override { ++document; }
    void unexecute() override { --document; }
};

class Counter final : public CbHandler<CbEmptyType> {
public:
    void call(CbEmptyType const&) override { ++calls; }
    long calls = 0;
};

constexpr int unbounded = 1 << 30;

// A stack with one listener, filled with commands.
class Logged {
public:
    explicit Logged(std::int64_t commands, int maximum = unbounded) {
        stack->setMaxStackHeight(maximum);
        stack->addChangeCallback(&_counter);
        add(commands);
    }
    ~Logged() { stack->removeChangeCallback(&_counter); }
    Logged(Logged const&) = delete;
    Logged& operator=(Logged const&) = delete;

    void add(std::int64_t commands) {
        while (commands-- > 0)
            stack->executeAndLog(AddCommand::create());
    }

    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();

private:
    Counter _counter;
};

class LeastLogged {
public:
    explicit LeastLogged(std::int64_t commands) { add(commands); }

    void add(std::int64_t commands) {
        while (commands-- > 0)
            stack.executeAndLog(LeastAddCommand::create());
    }

    Least::Stack stack;
};

void perCommand(benchmark::State& state, std::int64_t commands) {
    state.counters["perCommand"] = benchmark::Counter(
        static_cast<double>(state.iterations() * commands), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

template <class Stack>
void executeAndLog(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto logged = std::make_unique<Stack>(0);
        state.ResumeTiming();
        logged->add(state.range(0));
        state.PauseTiming();
        logged.reset();
        state.ResumeTiming();
    }
    perCommand(state, state.range(0));
}

void ExecuteAndLog(benchmark::State& state) {
    executeAndLog<Logged>(state);
}
void ExecuteAndLogLeast(benchmark::State& state) {
    executeAndLog<LeastLogged>(state);
}

void UndoRedo(benchmark::State& state) {
    Logged const logged(state.range(0));
    for (auto _ : state) {
        while (logged.stack->canUndo())
            logged.stack->undo();
        while (logged.stack->canRedo())
            logged.stack->redo();
    }
    perCommand(state, 2 * state.range(0));
}

void UndoRedoLeast(benchmark::State& state) {
    LeastLogged logged(state.range(0));
    for (auto _ : state) {
        while (logged.stack.current > 0)
            logged.stack.undo();
        while (logged.stack.current < logged.stack.commands.size())
            logged.stack.redo();
    }
    perCommand(state, 2 * state.range(0));
}

constexpr std::int64_t batch = 1000;

// Each logged command is destroyed in the end: here when the stack is cleared, in LogOnFullStack when it is dropped.
void LogAndClear(benchmark::State& state) {
    Logged logged(0);
    for (auto _ : state) {
        logged.add(batch);
        logged.stack->clear();
    }
    perCommand(state, batch);
}

// The same for a stack that also notifies a list model, keeps a budget that is never exceeded, asks a merger, or all of that.
class Extended {
public:
    enum Use { Model = 1, Budget = 2, Merger = 4, All = 7, None = 0 };

    explicit Extended(int use) : _createCommand(use & Budget ? &SizedAddCommand::create : &AddCommand::create) {
        stack->setMaxStackHeight(unbounded);
        if (use & Model) _changes = stack->onHistoryChange([this](CmHistoryChange const& change) { follow(change); });
        if (use & Budget) stack->setMaxMemory(std::size_t{1} << 40);
        if (use & Merger) stack->setMerger(RCShdPtr<DecliningMerger>::create());
    }
    void add(std::int64_t commands) {
        while (commands-- > 0)
            stack->executeAndLog(_createCommand());
    }

    RCShdPtr<CmCommandStack> const stack = RCShdPtr<CmCommandStack>::create();

private:
    void follow(CmHistoryChange const& change) {
        for (CmHistorySplice const& splice : change.splices) {
            auto const first = _rows.begin() + splice.first;
            auto const next = _rows.erase(first, first + splice.numRemoved);
            if (splice.numInserted > 0) _rows.insert(next, change.logged);
        }
    }

    RCShdPtr<CmCommand> (*_createCommand)();
    std::vector<CmCommand const*> _rows{nullptr};
    long _calls = 0;
    CbSubscription const _views = stack->onChange([this] { ++_calls; });
    CbSubscription _changes;
};

void LogAndClearWith(benchmark::State& state, int use) {
    Extended extended(use);
    for (auto _ : state) {
        extended.add(batch);
        extended.stack->clear();
    }
    perCommand(state, batch);
}

void LogOnFullStack(benchmark::State& state) {
    Logged logged(state.range(0), static_cast<int>(state.range(0)));
    for (auto _ : state)
        logged.add(batch);
    perCommand(state, batch);
}

RCShdPtr<CmCommandStack> openGuardOn() {
    auto stack = RCShdPtr<CmCommandStack>::create();
    stack->setMaxStackHeight(2);
    return stack;
}

// Commands are collected and logged; destroying the previous step is not measured.
void RecordThroughGuard(benchmark::State& state) {
    auto const stack = openGuardOn();
    for (auto _ : state) {
        {
            CmUndoGuard guard(stack, "Step");
            for (std::int64_t index = 0; index < state.range(0); ++index)
                guard.execAndAddUndoCommand(AddCommand::create());
        }
        state.PauseTiming();
        stack->clear();
        state.ResumeTiming();
    }
    perCommand(state, state.range(0));
}

void RecordThroughGuardLeast(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<RCShdPtr<Least::Command>> macro;
        for (std::int64_t index = 0; index < state.range(0); ++index) {
            RCShdPtr<Least::Command> const command = LeastAddCommand::create();
            command->execute();
            macro.push_back(command);
        }
        state.PauseTiming();
        macro.clear();
        state.ResumeTiming();
    }
    perCommand(state, state.range(0));
}

void UndoRedoMacro(benchmark::State& state) {
    auto const stack = openGuardOn();
    {
        CmUndoGuard guard(stack, "Step");
        for (std::int64_t index = 0; index < state.range(0); ++index)
            guard.execAndAddUndoCommand(AddCommand::create());
    }
    for (auto _ : state) {
        stack->undo();
        stack->redo();
    }
    perCommand(state, 2 * state.range(0));
}

void UndoRedoMacroLeast(benchmark::State& state) {
    std::vector<RCShdPtr<Least::Command>> macro;
    for (std::int64_t index = 0; index < state.range(0); ++index)
        macro.push_back(LeastAddCommand::create());
    for (auto _ : state) {
        for (auto command = macro.rbegin(); command != macro.rend(); ++command)
            (*command)->unexecute();
        for (auto const& command : macro)
            command->execute();
    }
    perCommand(state, 2 * state.range(0));
}

void EmptyGuard(benchmark::State& state) {
    auto const stack = openGuardOn();
    for (auto _ : state)
        CmUndoGuard const guard(stack, "Step");
}

void SuppressedLogLine(benchmark::State& state) {
    LgMinorGroup const group(LgMajorGroup::getInstanceForName("Framework"), "Bench");
    auto const command = AddCommand::create();
    for (auto _ : state)
        if (group.isEnabled(6)) group.write(6, "Executed " + command->getDescription());
}

// Bytes of the heap for each logged command, beyond the command object.
void MemoryPerCommand(benchmark::State& state) {
    std::vector<RCShdPtr<CmCommand>> commands;
    for (std::int64_t index = 0; index < state.range(0); ++index)
        commands.push_back(AddCommand::create());
    for (auto _ : state) {
        auto const before = mallinfo2().uordblks + mallinfo2().hblkhd;
        Logged logged(0);
        for (auto const& command : commands)
            logged.stack->executeAndLog(command);
        auto const after = mallinfo2().uordblks + mallinfo2().hblkhd;
        state.counters["bytes"] = static_cast<double>(after - before) / static_cast<double>(commands.size());
    }
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(1000)->Arg(100000)->Arg(1000000);
}

BENCHMARK(ExecuteAndLog)->Apply(sizes);
BENCHMARK(ExecuteAndLogLeast)->Apply(sizes);
BENCHMARK(UndoRedo)->Apply(sizes);
BENCHMARK(UndoRedoLeast)->Apply(sizes);
BENCHMARK(LogAndClear);
BENCHMARK_CAPTURE(LogAndClearWith, None, Extended::None);
BENCHMARK_CAPTURE(LogAndClearWith, Model, Extended::Model);
BENCHMARK_CAPTURE(LogAndClearWith, Budget, Extended::Budget);
BENCHMARK_CAPTURE(LogAndClearWith, Merger, Extended::Merger);
BENCHMARK_CAPTURE(LogAndClearWith, All, Extended::All);
BENCHMARK(LogOnFullStack)->Apply(sizes);
BENCHMARK(RecordThroughGuard)->Arg(1000);
BENCHMARK(RecordThroughGuardLeast)->Arg(1000);
BENCHMARK(UndoRedoMacro)->Arg(1000);
BENCHMARK(UndoRedoMacroLeast)->Arg(1000);
BENCHMARK(EmptyGuard);
BENCHMARK(SuppressedLogLine);
BENCHMARK(MemoryPerCommand)->Arg(1000)->Arg(1000000);

} // namespace

int main(int argc, char** argv) {
    InInitScope const scope;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
