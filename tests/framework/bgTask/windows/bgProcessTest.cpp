#include "framework/bgTask/bgProcess.h"
#include "framework/bgTask/bgEx.h"
#include "otherProcess.h"
#include "tests/support/logRecorder.h"
#include "tests/support/program.h"
#include "tests/support/thrown.h"

#include <gmock/gmock.h>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;
using testing::Contains;
using testing::ElementsAre;

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
             Row{R"(out 'a\n' err 'x\n' exit 3)", {"out:a", "err:x", "exit:3"}, failed + "3"},
             Row{"exit 3221225786", {"exit:-1073741510"}}, Row{R"(closeErr out 'a\n')", {"out:a", "exit:0"}}}) {
        SCOPED_TRACE(row.steps);
        ProgramRun run(row.steps);
        EXPECT_EQ(row.end, run.await());
        EXPECT_EQ(row.records, run.program->records);
    }
}

TEST_F(BgProcessTest, SaysWhereAndWhyItFailed) {
    LogRecorder const log(6);
    std::pair<std::string, char const*> const rows[] = {{"no-such-program", "could not be launched [@:323]"},
        {childCommand("exit 7"), "terminated with return value 7 [@:706]"}};
    for (auto const& row : rows) {
        std::string expected = std::string("A background job failed: External process ") + row.second;
        expected.replace(expected.find('@'), 1, "framework\\bgTask\\src\\bgProcessWindows");
        EXPECT_EQ(expected, thrownBy<BgEx::ExBgTaskFailed>([&] { BgProcess(row.first, "test").start(); }, true));
    }
    EXPECT_THAT(log.lines(), Contains("BgTask:6 Launching process \"no-such-program\""));
    EXPECT_EQ("Complete", ProgramRun("").await()) << "no lock is still held";
}

TEST_F(BgProcessTest, PassesTheEnvironmentOfItsCreationAndItsOwnVariables) {
    OsEnv::putVariable("KO_TEST_A=1=2");
    Program program("environment");
    OsEnv::putVariable("KO_TEST_A=later");
    program.addEnvironmentVariable("KO_TEST_B", "own");
    program.start();
    for (char const* const line : {"out:KO_TEST_A=1=2", "out:KO_TEST_B=own"})
        EXPECT_THAT(program.records, Contains(line));
}

// By a break, or where none can be sent, by a termination.
TEST_F(BgProcessTest, IsStoppedWithAllThatItHasStarted) {
    NamedPipe tells;
    ProgramRun run("member" + tells.tell() + "pause");
    Process const member(tells.hear());
    run.program->setStopGrace(std::chrono::milliseconds(10));
    run.job->stop();
    EXPECT_EQ("Stopped", run.await());
    member.awaitEnd();
}

TEST_F(BgProcessTest, CompletesWhenItsProgramIsDetached) {
    NamedPipe tells, releases;
    ProgramRun run("out a" + tells.tell() + releases.await() + tells.tell());
    pid_t const number = tells.hear();
    run.program->detach();
    EXPECT_EQ("Complete", run.await());
    EXPECT_THAT(run.program->records, ElementsAre("out:a"));
    EXPECT_TRUE(run.job->releaseProtocol());
    releases.release();
    EXPECT_EQ(number, tells.hear()) << "the program runs on";
}

} // namespace
