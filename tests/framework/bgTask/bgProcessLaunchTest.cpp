#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/src/bgLaunchTurn.h"
#include "framework/bgTask/src/bgMemoryGate.h"
#include "resmgt/osMemoryArch.h"
#include "tests/support/childProcess.h"
#include "tests/support/logRecorder.h"
#include "tests/support/program.h"

#include <atomic>
#include <csignal>
#include <optional>
#include <utility>

namespace {

using namespace Ko;
using namespace KoTest;

constexpr std::uint64_t megabyte = 1 << 20;
constexpr OsMemoryArch::Memory noMemory{0, 1000 * megabyte, 0};
constexpr OsMemoryArch::Memory plenty{900 * megabyte, 1000 * megabyte, 9000 * megabyte};

/// Reports as much memory as the test says, and plenty after `relieve()`. Counts the calls.
class Memory : public OsMemoryArch {
public:
    explicit Memory(OsMemoryArch::Memory memory) : _memory(memory) { setInstance(this); }
    ~Memory() override { setInstance(nullptr); }

    OsMemoryArch::Memory getMemory() const override {
        ++_asked;
        _asked.notify_all();
        return _isRelieved ? plenty : _memory;
    }
    void relieve() { _isRelieved = true; }
    int asked() const { return _asked; }
    void awaitAsked(int times) const {
        for (int now = _asked; now < times; now = _asked)
            _asked.wait(now);
    }

private:
    OsMemoryArch::Memory const _memory;
    std::atomic<bool> _isRelieved = false;
    mutable std::atomic<int> _asked = 0;
};

TEST_F(BgProcessTest, FailsByAHookThatThrowsAndEndsTheProgram) {
    for (char const* const steps : {"out 'a\n' pause", "err 'a\n' pause", "exit 0"}) {
        NamedPipe tells;
        ProgramRun run("tell " + tells.path() + " " + steps,
            [](Program&, std::string const&) { throw BgEx::ExBgTaskFailed("here", 1, "not this"); });
        pid_t const number = tells.hear();
        EXPECT_EQ("Failed: A background job failed: not this", run.await());
        EXPECT_EQ(1u, run.program->records.size());
        EXPECT_EQ(-1, ::kill(number, 0));
    }
    Memory const memory(noMemory);
    EXPECT_EQ("Complete", ProgramRun("").await()) << "no program counts as running, and no lock is held";
    EXPECT_EQ(0, memory.asked());
}

/// A program that runs during a scope.
class Running {
public:
    Running() : _run("tell " + _tells.path() + " await " + _ends.path()) { _tells.hear(); }
    ~Running() { end(); }

    void end() {
        if (std::exchange(_hasEnded, true)) return;
        _ends.release();
        EXPECT_EQ("Complete", _run.await());
    }

private:
    bool _hasEnded = false;
    NamedPipe _tells, _ends;
    ProgramRun _run;
};

TEST_F(BgProcessTest, StartsAnotherProgramWhenMemorySuffices) {
    struct Row {
        char const* name;
        OsMemoryArch::Memory memory;
        bool isEnough = false;
        bool isWarning = false;
    };
    for (Row const& row : {Row{"enough", {513 * megabyte, 1000 * megabyte, 1026 * megabyte}, true},
             Row{"too little", {512 * megabyte, 1000 * megabyte, 2000 * megabyte}},
             Row{"a large enough share", {1050 * megabyte, 5000 * megabyte, 3000 * megabyte}, true},
             Row{"too small a share", {1049 * megabyte, 5000 * megabyte, 3000 * megabyte}},
             Row{"too small a page file", {600 * megabyte, 1000 * megabyte, 1112 * megabyte}},
             Row{"a page file smaller than memory", {600 * megabyte, 1000 * megabyte, 599 * megabyte}, true, true},
             Row{"no figures", {0, 0, 0}}}) {
        SCOPED_TRACE(row.name);
        Memory memory(row.memory);
        LogRecorder const log;
        {
            Running const first;
            EXPECT_EQ(0, memory.asked()) << "the first program never waits";
            ProgramRun second("");
            if (!row.isEnough) {
                memory.awaitAsked(3);
                EXPECT_TRUE(second.program->records.empty());
                memory.relieve();
            }
            EXPECT_EQ("Complete", second.await());
        }
        EXPECT_EQ(row.isEnough, memory.asked() == 1);
        EXPECT_EQ(row.isWarning ? std::vector<std::string>{"BgTask:3 The available pagefile memory is smaller than the "
                                                           "free physical memory; the process could fail."}
                                : std::vector<std::string>{},
            log.lines());
    }
}

TEST_F(BgProcessTest, WaitsUntilThePreviousProgramEndsOrItIsStopped) {
    inChildProcess([] {
        setLaunchThrottle(3600); // one after the other
        Memory const memory(noMemory);
        Running first;
        auto const awaitStart = [](ProgramRun const& run) {
            while (run.job->getPhase() != "Waiting for another program to start")
                std::this_thread::yield();
        };
        {
            ProgramRun second("");
            awaitStart(second);
            second.job->stop();
            EXPECT_EQ("Stopped", second.await());
        }
        std::atomic<bool> firstMayEnd = false;
        ProgramRun third("", [&](Program&, std::string const&) { EXPECT_TRUE(firstMayEnd); });
        awaitStart(third);
        firstMayEnd = true;
        first.end();
        EXPECT_EQ("Complete", third.await());
        EXPECT_EQ("", third.job->getPhase());
        EXPECT_EQ(0, memory.asked());
    });
}

TEST_F(BgProcessTest, WaitsForMemoryUntilNoOtherProgramRunsOrItIsStopped) {
    inChildProcess([] {
        setLaunchThrottle(1);
        Memory const memory(noMemory);
        Running first;
        ProgramRun second("");
        memory.awaitAsked(1);
        while (second.job->getPhase() != "Waiting for free memory")
            std::this_thread::yield();
        second.job->stop();
        EXPECT_EQ("Stopped", second.await());
        EXPECT_EQ("", second.job->getPhase());
        EXPECT_TRUE(second.program->records.empty());
        ProgramRun third("");
        memory.awaitAsked(2);
        first.end();
        EXPECT_EQ("Complete", third.await());
    });
}

TEST(BgLaunchTurn, IsFreedByItsDeadlineWhileItsHolderIsBusy) {
    BgLaunchTurn turn("test");
    auto const always = [] { return true; };
    BgLaunchTurn::Holder busy(turn, always);
    std::atomic<bool> isChecked = false;
    std::jthread const next([&] {
        auto const check = [&] {
            isChecked = true;
            return true;
        };
        BgLaunchTurn::Holder holder(turn, check);
        EXPECT_TRUE(holder.wasTaken());
        busy.release();
        BgLaunchTurn::Holder const stopped(turn, [] { return false; });
        EXPECT_FALSE(stopped.wasTaken()) << "only the present holder can release the turn";
    });
    while (!isChecked)
        std::this_thread::yield();
    busy.releaseAt(BgLaunchTurn::Clock::now());
}

TEST(BgMemoryGate, ChecksAgainWhenAProgramEnds) {
    BgMemoryGate gate;
    auto const always = [] { return true; };
    auto first = std::make_optional<BgMemoryGate::Running>(gate);
    auto second = std::make_optional<BgMemoryGate::Running>(gate);
    std::atomic<int> checks = 0;
    auto const awaitCheck = [&](int number) {
        while (checks < number)
            std::this_thread::yield();
    };
    auto const isEnough = [&] { return ++checks > 10; };
    std::jthread const waiting([&] { EXPECT_TRUE(gate.pass(always, isEnough, 1e6)); });
    awaitCheck(1);
    second.reset();
    awaitCheck(2);
    first.reset();
}

} // namespace
