#include "framework/bgTask/bgProcess.h"

#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/bgManager.h"
#include "framework/bgTask/src/bgLaunchTurn.h"
#include "framework/bgTask/src/bgMemoryGate.h"
#include "resmgt/osEnv.h"
#include "resmgt/osMemoryArch.h"
#include "tests/support/childCommand.h"
#include "tests/support/childProcess.h"
#include "tests/support/functionProtocol.h"
#include "tests/support/logRecorder.h"
#include "tests/support/thrown.h"

#include <atomic>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

void setLaunchThrottle(int seconds) {
    OsEnv::putVariable("KO_BGEXEC_WAIT_TIME=" + std::to_string(seconds));
}

/// Records what a program writes and its exit code, and calls the test's hook with each record.
class Program : public BgProcess {
public:
    using Hook = std::function<void(Program&, std::string const&)>;

    explicit Program(std::string const& steps, Hook hook = {})
        : BgProcess(childCommand(steps), "test"), _hook(std::move(hook)) {}

    std::vector<std::string> records;

protected:
    void processOutputString(std::string const& line) override { record("out:" + line); }
    void processErrorString(std::string const& line) override { record("err:" + line); }
    void handleExit(int exitCode) override {
        record("exit:" + std::to_string(exitCode));
        BgProcess::handleExit(exitCode);
    }

private:
    void record(std::string const& text) {
        records.push_back(text);
        if (_hook) _hook(*this, text);
    }

    Hook _hook;
};

/// Runs a program as a job, on a thread of its own.
class ProgramRun {
public:
    explicit ProgramRun(std::string const& steps, Program::Hook hook = {}) {
        auto owned = std::make_unique<Program>(steps, std::move(hook));
        program = owned.get();
        job = BgJob::create(std::move(owned));
        _thread = std::thread([this] { job->execute(); });
    }
    ~ProgramRun() {
        if (_thread.joinable()) await();
    }

    std::string await() {
        _thread.join();
        auto const error = job->cloneError();
        return job->getState()->state() + (error ? ": " + error->getReason() : "");
    }

    Program* program;
    RCShdPtr<BgJob> job;

private:
    std::thread _thread;
};

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

class BgProcessTest : public testing::Test {
protected:
    BgProcessTest() { setLaunchThrottle(0); }
};

TEST_F(BgProcessTest, TellsInLinesWhatItsProgramWritesAndHowItEnds) {
    std::string const failed = "Failed: A background job failed: External process terminated with return value ";
    struct Row {
        char const* steps;
        std::vector<std::string> records;
        std::string end = "Complete";
    };
    for (Row const& row : {Row{"", {"exit:0"}}, Row{R"(out 'a\r\nb')", {"out:a", "out:b", "exit:0"}},
             Row{R"(err 'x\ny')", {"err:x", "out:y", "exit:0"}},
             Row{R"(err y out 'b\r')", {"out:b\r", "out:y", "exit:0"}},
             Row{R"(out '\n\r\n\r\r\na\rb\n\n')", {"out:", "out:", "out:\r", "out:a\rb", "out:", "exit:0"}},
             Row{R"(out 'a\0b\n\0')", {std::string("out:a\0b", 7), std::string("out:\0", 5), "exit:0"}},
             Row{R"(out 'a\n' err 'x\n' exit 3)", {"out:a", "err:x", "exit:3"}, failed + "3"},
             Row{"signal 11", {"exit:139"}, failed + "139"}, Row{"signal 2", {"exit:-1073741510"}},
             Row{R"(closeErr out 'a\n')", {"out:a", "exit:0"}}}) {
        SCOPED_TRACE(row.steps);
        ProgramRun run(row.steps);
        EXPECT_EQ(row.end, run.await());
        EXPECT_EQ(row.records, run.program->records);
        EXPECT_EQ(row.end == "Complete", run.program->progress() == 1.0f);
    }
}

TEST_F(BgProcessTest, HasNamesAndACommandLine) {
    BgProcess const unnamed("program x", "render");
    EXPECT_EQ("unnamed process", unnamed.getJobName());
    EXPECT_EQ("program x", unnamed.getExecutionStr());
    BgProcess named("Sky", "", "render");
    EXPECT_EQ("Sky", named.getJobName());
    named.start();
    EXPECT_EQ(0.0f, named.progress()) << "nothing is run";
}

TEST_F(BgProcessTest, SaysWhereAndWhyItFailed) {
    LogRecorder const log(6);
    std::pair<std::string, char const*> const rows[] = {{"/nowhere/program", "could not be launched [@:323]"},
        {"'", "could not be launched [@:323]"}, {childCommand("exit 7"), "terminated with return value 7 [@:706]"}};
    for (auto const& row : rows) {
        std::string expected = std::string("A background job failed: External process ") + row.second;
        expected.replace(expected.find('@'), 1, "framework\\bgTask\\src\\bgProcessWindows");
        EXPECT_EQ(expected, thrownBy<BgEx::ExBgTaskFailed>([&] { BgProcess(row.first, "test").start(); }, true));
    }
    EXPECT_THAT(log.lines(), Contains("BgTask:6 Launching process \"/nowhere/program\""));
    EXPECT_THAT(log.lines(), Contains("BgTask:3 Process \"/nowhere/program\": No such file or directory."));
    EXPECT_EQ("Complete", ProgramRun("").await()) << "no lock is held any more";
}

TEST_F(BgProcessTest, GivesTheEnvironmentOfItsConstructionAndMore) {
    OsEnv::putVariable("KO_TEST_A=1=2");
    OsEnv::putVariable("KO_TEST_B=before");
    Program program("environment");
    OsEnv::putVariable("KO_TEST_A=later");
    program.addEnvironmentVariable("KO_TEST_B", "own");
    program.addEnvironmentVariable("KO_TEST_C", "");
    program.start();
    for (char const* const line : {"out:KO_TEST_A=1=2", "out:KO_TEST_B=own", "out:KO_TEST_C="})
        EXPECT_THAT(program.records, Contains(line));
}

TEST_F(BgProcessTest, RefusesVariablesThatTheSystemCannotPass) {
    std::string const zero("A\0", 2), inName = " contains \"=\" or a zero byte.";
    std::array<std::string, 3> const rows[] = {{"", "x", "The name of an environment variable is empty."},
        {"A=B", "x", "The name of the environment variable \"A=B\"" + inName},
        {zero, "x", "The name of the environment variable \"" + zero + "\"" + inName},
        {"A", zero, "The value of the environment variable \"A\" contains a zero byte."}};
    BgProcess process("", "test");
    for (auto const& [name, value, reason] : rows)
        EXPECT_EQ(reason, caught<ExInternalError>([&] { process.addEnvironmentVariable(name, value); }).getReason());
}

TEST_F(BgProcessTest, LosesNothingAndMixesNothingUp) {
    class Counting : public BgProcess {
    public:
        using BgProcess::BgProcess;
        std::ptrdiff_t lines = 0, bytes = 0, errorBytes = 0;
        std::string lastLine;

    protected:
        void processOutputString(std::string const& line) override {
            ++lines;
            bytes += std::count(line.begin(), line.end(), 'x');
            lastLine = line;
        }
        void processErrorString(std::string const& line) override { errorBytes += std::ssize(line) + 1; }
    } program(
        childCommand("flood 4000001 2 out '\n' floodErr 1000000 50 flood 9000000 5000000 floodErr 700 300 out last"),
        "test");
    program.start();
    // 2,000,000 of two bytes, one more "x", a long one, the rest of a long one with "last", and the rest of the errors.
    EXPECT_EQ(2000000 + 1 + 1 + 1 + 1, program.lines);
    EXPECT_EQ(2000001 + 4999999 + 4000000 + 100, program.bytes);
    EXPECT_EQ(std::string(100, 'x'), program.lastLine);
    EXPECT_EQ(1000600, program.errorBytes);
}

TEST_F(BgProcessTest, PassesOnlyABoundedRestAfterAStop) {
    NamedPipe pipe;
    constexpr std::ptrdiff_t written = 3000000, lineLength = 50;
    std::pair<std::string, char const*> const rows[] = {
        {"flood 3000000 50" + pipe.tell() + "readInput", "%d bytes of its output and 0 bytes of its errors"},
        {"ignoreBreak err '\n'" + pipe.tell() + "floodErr 3000000 50",
            "0 bytes of its output and %d bytes of its errors"}};
    for (auto const& [steps, dropped] : rows) {
        SCOPED_TRACE(steps);
        LogRecorder const log;
        ProgramRun run(steps, [&](Program& program, std::string const&) {
            if (program.records.size() > 1) return;
            pipe.hear();
            program.stop();
        });
        EXPECT_EQ("Complete", run.await());
        auto const passed = std::ranges::count_if(run.program->records, [](auto const& record) {
            return record.size() > 40;
        }) * lineLength;
        EXPECT_LT(passed, 1100000);
        ASSERT_EQ(1u, log.lines().size());
        std::string const& line = log.lines().front();
        auto const place = line.find(" was stopped: ");
        ASSERT_NE(std::string::npos, place);
        std::string const text = line.substr(place + 14);
        int number = 0;
        EXPECT_EQ(1, std::sscanf(text.c_str(), dropped, &number)) << line;
        EXPECT_LT(std::abs(written - passed - number), lineLength) << "less than the line that was cut";
    }
}

TEST_F(BgProcessTest, LeavesNothingBehind) {
    auto const count = [](char const* folder) {
        return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
    };
    Program("").start();
    auto const descriptors = count("/proc/self/fd");
    auto const threads = count("/proc/self/task");
    for (int times = 0; times < 100; ++times)
        Program(times % 2 == 0 ? "out x" : "err y").start();
    EXPECT_THROW(Program("exit 1").start(), BgEx::ExBgTaskFailed);
    EXPECT_THROW(BgProcess("/nowhere/program", "test").start(), BgEx::ExBgTaskFailed);
    EXPECT_EQ(descriptors, count("/proc/self/fd"));
    EXPECT_EQ(threads, count("/proc/self/task"));
}

TEST_F(BgProcessTest, EndsAlthoughAnotherOneHoldsItsPipe) {
    NamedPipe ends;
    ProgramRun run("err 'x\n' orphan leaveGroup await " + ends.path());
    EXPECT_EQ("Complete", run.await());
    EXPECT_THAT(run.program->records, ElementsAre("err:x", "exit:0"));
    ends.release();
}

/// A program that ignores one break and ends when the test says so. Killed, or asked twice, it would not write "done".
class Stubborn {
public:
    Stubborn() : run("ignoreOneBreak" + _tells.tell() + _ends.await() + "out done") { _tells.hear(); }

    void awaitStopping() const {
        while (run.job->getState()->state() != "Stopping")
            std::this_thread::yield();
    }
    void end() {
        _ends.release();
        EXPECT_EQ("Stopped", run.await());
        EXPECT_THAT(run.program->records, ElementsAre("out:done", "exit:0"));
    }

private:
    NamedPipe _tells, _ends;

public:
    ProgramRun run;
};

TEST_F(BgProcessTest, HoldsUpNoOtherOneWhileAStopWaits) {
    Stubborn stubborn;
    std::jthread const stopper([&] { stubborn.run.job->stop(); });
    stubborn.awaitStopping();
    EXPECT_EQ("Complete", ProgramRun("").await()) << "another one is launched";
    ProgramRun other("out 'a\n' readInput", [&](Program& program, std::string const& record) {
        if (record != "out:a") return;
        stubborn.run.program->stop();
        stubborn.run.job->stop();
        program.stop();
    });
    EXPECT_EQ("Complete", other.await()) << "a hook never waits";
    EXPECT_THAT(other.program->records, ElementsAre("out:a", "exit:-1073741510"));
    stubborn.end();
}

TEST_F(BgProcessTest, EndsAllThatIgnoreTheBreakAfterAWhile) {
    NamedPipe leaderTells, memberTells;
    ProgramRun run("ignoreBreak tell " + leaderTells.path() + " member tell " + memberTells.path() + " pause");
    leaderTells.hear();
    pid_t const member = memberTells.hear();
    run.job->stop();
    EXPECT_EQ("Stopped", run.await());
    EXPECT_THAT(run.program->records, ElementsAre("exit:0"));
    while (::kill(member, 0) == 0)
        std::this_thread::yield();
}

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
    EXPECT_EQ("Complete", ProgramRun("").await()) << "nobody counts as running, and no lock is held";
    EXPECT_EQ(0, memory.asked());
}

TEST_F(BgProcessTest, CompletesWhenItsProgramIsDetached) {
    NamedPipe tells, releases;
    ProgramRun run("out a tell " + tells.path() + " await " + releases.path() + " tell " + tells.path());
    pid_t const number = tells.hear();
    run.program->detach();
    EXPECT_EQ("Complete", run.await());
    EXPECT_THAT(run.program->records, ElementsAre("out:a"));
    EXPECT_EQ(1.0f, run.program->progress());
    run.program->detach();
    EXPECT_TRUE(run.job->releaseProtocol());
    releases.release();
    EXPECT_EQ(number, tells.hear()) << "it lives on";
}

/// A program that runs while the scope lasts.
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

TEST_F(BgProcessTest, StartsAnotherOneWhileThereIsEnoughMemory) {
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
            EXPECT_EQ(0, memory.asked()) << "the first one never waits";
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

TEST_F(BgProcessTest, WaitsForItsTurnUntilTheOneBeforeHasEndedOrItIsStopped) {
    inChildProcess([] {
        setLaunchThrottle(3600); // one after the other
        Memory const memory(noMemory);
        Running first;
        auto const awaitStart = [](ProgramRun const& run) {
            while (run.job->getState()->state() == "Waiting")
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
        EXPECT_EQ(0, memory.asked());
    });
}

TEST_F(BgProcessTest, WaitsForMemoryUntilItIsAloneOrStopped) {
    inChildProcess([] {
        setLaunchThrottle(1);
        Memory const memory(noMemory);
        Running first;
        ProgramRun second("");
        memory.awaitAsked(1);
        second.job->stop();
        EXPECT_EQ("Stopped", second.await());
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
        EXPECT_FALSE(stopped.wasTaken()) << "only its present holder releases it";
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
