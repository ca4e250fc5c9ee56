#include "framework/bgTask/bgProcess.h"

#include "framework/bgTask/bgEx.h"
#include "tests/support/logRecorder.h"
#include "tests/support/program.h"
#include "tests/support/thrown.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <gmock/gmock.h>

namespace {

using namespace Ko;
using namespace KoTest;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Le;
using testing::Lt;
using testing::SizeIs;
using testing::UnorderedElementsAre;

TEST_F(BgProcessTest, PassesLinesAndTheExitCodeToItsHooks) {
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

TEST_F(BgProcessTest, HasANameAndACommandLine) {
    BgProcess const unnamed("program x", "render");
    EXPECT_EQ("unnamed process", unnamed.getJobName());
    EXPECT_EQ("program x", unnamed.getExecutionStr());
    BgProcess named("Sky", "", "render");
    EXPECT_EQ("Sky", named.getJobName());
    named.start();
    EXPECT_EQ(0.0f, named.progress()) << "an empty command line runs nothing";
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
    EXPECT_EQ("Complete", ProgramRun("").await()) << "no lock is still held";
}

TEST_F(BgProcessTest, PassesTheEnvironmentOfItsCreationAndItsOwnVariables) {
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

TEST_F(BgProcessTest, LosesAndMixesNothing) {
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
    // 2,000,000 lines of two bytes, one of one "x", a long one, one that is cut and ends in "last", and the unfinished error.
    EXPECT_EQ(2000000 + 1 + 1 + 1 + 1, program.lines);
    EXPECT_EQ(2000001 + 4999999 + 4000000 + 100, program.bytes);
    EXPECT_EQ(std::string(100, 'x'), program.lastLine);
    EXPECT_EQ(1000600, program.errorBytes);
}

/// Records the sizes of its batches, and all lines.
class Batches : public BgProcess {
public:
    explicit Batches(std::string const& steps) : BgProcess(childCommand(steps), "test") {}

    std::vector<std::size_t> output, errors;
    std::vector<std::string> lines;

protected:
    void processOutputStrings(Vector<std::string> const& batch) override { take(output, batch); }
    void processErrorStrings(Vector<std::string> const& batch) override { take(errors, batch); }

private:
    void take(std::vector<std::size_t>& sizes, Vector<std::string> const& batch) {
        sizes.push_back(batch.size());
        lines.insert(lines.end(), batch.begin(), batch.end());
    }
};

TEST_F(BgProcessTest, GathersLinesForAsLongAsItIsAsked) {
    Batches batches("out 'a\r\n\nb' err 'x\ny'");
    batches.gatherLines(std::chrono::milliseconds::max());
    batches.start();
    EXPECT_THAT(batches.lines, UnorderedElementsAre("a", "", "b", "x", "y"));
    EXPECT_THAT(batches.output, SizeIs(Le(3u))) << "what is read at once, the rest at the end, and what is unfinished";
    EXPECT_THAT(batches.errors, SizeIs(1));

    Batches many("floodErr 20000 2 flood 600000 2");
    many.gatherLines(std::chrono::hours(1));
    many.start();
    EXPECT_THAT(many.lines, SizeIs(310000));
    EXPECT_THAT(many.output, SizeIs(Le(300000 / 65536 + 2)));
    EXPECT_THAT(many.errors, SizeIs(Le(many.output.size() + 1)));
    EXPECT_THAT(many.output, Each(Lt(65536u + 1024))) << "a batch is bounded";

    // With the hooks for single lines, and an interval that passes while the program runs.
    NamedPipe ends;
    Program program("out 'a\n' err 'b\n' out 'c\n'" + ends.await(), [&](Program&, std::string const& record) {
        if (record == "out:c") ends.release();
    });
    program.gatherLines(std::chrono::milliseconds(20));
    program.start();
    EXPECT_THAT(program.records, UnorderedElementsAre("out:a", "err:b", "out:c", "exit:0"));
}

TEST_F(BgProcessTest, RunsInItsFolderAndTellsWhatItHasUsed) {
    Program program("folder burn 60");
    program.setWorkingFolder("/usr");
    EXPECT_FALSE(program.getResourceUse());
    program.start();
    EXPECT_THAT(program.records, ElementsAre("out:/usr", "exit:0"));
    auto const use = program.getResourceUse();
    ASSERT_TRUE(use);
    EXPECT_GE((use->userTime + use->systemTime).count(), 60000);
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

TEST_F(BgProcessTest, EndsWhileAnotherProcessHoldsItsPipe) {
    NamedPipe ends;
    ProgramRun run("err 'x\n' orphan leaveGroup await " + ends.path());
    EXPECT_EQ("Complete", run.await());
    EXPECT_THAT(run.program->records, ElementsAre("err:x", "exit:0"));
    ends.release();
}

} // namespace
