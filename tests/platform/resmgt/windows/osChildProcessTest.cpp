#include "resmgt/osChildProcess.h"

#include "base/exBase.h"
#include "resmgt/src/windows/systemError.h"
#include "tests/support/childCommand.h"
#include "tests/support/launchedChild.h"
#include "tests/support/temporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <windows.h>

namespace {

using namespace Ko;
using namespace KoTest;
using Launch = OsChildProcess::Launch;

DWORD countHandles() {
    DWORD count = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &count);
    return count;
}

TEST(OsChildProcess, ReportsTheExitCode) {
    for (auto const& [steps, exitCode] : std::vector<std::pair<char const*, int>>{
             {"", 0}, {"exit 255", 255}, {"exit 3221225786", OsChildProcess::endedByBreak}, {"exit 259", 1}}) {
        Child child(childCommand(steps));
        EXPECT_EQ(exitCode, child.readToEnd()) << steps;
    }
}

// Where this process has no console, a break cannot be sent, and the caller terminates the child.
TEST(OsChildProcess, EndsByABreakOrByTermination) {
    NamedPipe tells;
    Child child(childCommand(tells.tell() + "pause"));
    tells.hear();
    bool const wasSent = child.sendBreak();
    EXPECT_TRUE(wasSent || child.terminate(7));
    EXPECT_EQ(wasSent ? OsChildProcess::endedByBreak : 7, child.readToEnd());
}

TEST(OsChildProcess, ReachesNoProcessAfterItsEnd) {
    Child child(childCommand("out 12 exit 4"));
    EXPECT_EQ(4, child.readToEnd());
    child.terminate(9);
    int exitCode = 0;
    EXPECT_TRUE(child.getExitCode(exitCode));
    EXPECT_EQ(4, exitCode) << "the child ended before";
    EXPECT_TRUE(child.forget());
    EXPECT_FALSE(child.sendBreak());
    EXPECT_FALSE(child.terminate(9));
    child.detach();
    EXPECT_EQ(Launch::Started, child.launch(childCommand("out 3 exit 5"), {}));
    EXPECT_THROW(static_cast<void>(child.launch(childCommand("exit 6"), {})), ExAssertionFailed);
    EXPECT_EQ(5, child.readToEnd());
    EXPECT_EQ("123", child.output);
}

TEST(OsChildProcess, EndsWithAllThatItHasStarted) {
    for (char const* const how : {"member", "orphan"}) {
        NamedPipe tells;
        Child child(childCommand(how + tells.tell() + "pause"));
        Process const other(tells.hear());
        EXPECT_TRUE(std::string(how) == "orphan" || child.terminate(0));
        EXPECT_EQ(0, child.readToEnd());
        EXPECT_TRUE(child.forget());
        other.awaitEnd();
    }
}

TEST(OsChildProcess, EndsWithThisProcessUnlessDetached) {
    NamedPipe attachedTells, detachedTells, hostTells, releases;
    std::string const attached = childCommand(attachedTells.tell() + "pause");
    std::string const detached = childCommand(detachedTells.tell() + releases.await() + detachedTells.tell());
    Child host("\"" KO_TEST_CHILD_HOST "\" '" + attached + "' '" + detached + "' " + hostTells.path());
    Process const leader(attachedTells.hear());
    pid_t const number = detachedTells.hear();
    pid_t const hostNumber = hostTells.hear();
    Process const process(number);
    // Alone: the job object of the host, which this process holds, would end the detached child as well.
    host.detach();
    HANDLE const killed = ::OpenProcess(PROCESS_TERMINATE, FALSE, static_cast<DWORD>(hostNumber));
    EXPECT_NE(0, ::TerminateProcess(killed, 0));
    ::CloseHandle(killed);
    leader.awaitEnd();
    EXPECT_TRUE(process.exists());
    releases.release();
    EXPECT_EQ(number, detachedTells.hear());
}

TEST(OsChildProcess, RunsOnDetached) {
    NamedPipe hears, releases;
    pid_t number = 0;
    {
        Child child(childCommand(hears.tell() + releases.await() + "err x" + hears.tell()));
        number = hears.hear();
        child.detach();
        EXPECT_FALSE(child.sendBreak());
        EXPECT_FALSE(child.terminate(0));
        EXPECT_TRUE(child.forget());
        EXPECT_EQ(std::nullopt, child.getResourceUse());
    }
    Process const process(number);
    EXPECT_TRUE(process.exists());
    releases.release();
    process.awaitEnd();
}

TEST(OsChildProcess, InheritsItsStreamsAndNothingElse) {
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE const own = ::CreateEventW(&inheritable, TRUE, FALSE, nullptr);
    EXPECT_EQ("not inherited", outputOf("inherited " + std::to_string(reinterpret_cast<std::uintptr_t>(own))));
    ::CloseHandle(own);
    Child child(childCommand("environment"), {"B=2", "A=1=2"});
    child.readToEnd();
    // Wine adds variables of its own.
    EXPECT_TRUE(child.output.starts_with("B=2\nA=1=2\n")) << child.output;
}

TEST(OsChildProcess, RunsInItsWorkingFolder) {
    TemporaryFolder const folder;
    std::filesystem::create_directories(folder / "a");
    Child child(childCommand("folder"), OsEnv::getEntries(), (folder / "a").string());
    EXPECT_EQ(0, child.readToEnd());
    EXPECT_TRUE(std::filesystem::equivalent(folder / "a", child.output)) << child.output;
}

TEST(OsChildProcess, SaysWhyALaunchFailed) {
    TemporaryFolder const folder;
    std::string const missing = (folder / "missing").string(), zero("\0x", 2);
    struct Row {
        std::string commandLine;
        std::string error;
        Vector<LiString> environment = {};
        std::string folder = {};
    };
    for (Row const& row :
        {Row{"no-such-program x", describeError(ERROR_FILE_NOT_FOUND)}, Row{"  ", "The command line names no program"},
            Row{KO_TEST_CHILD + zero, "The command line contains a zero byte"},
            Row{childCommand(""), "The environment variable \"A\" contains a zero byte", {"B=1", "A=1" + zero}},
            Row{childCommand(""), "The working folder contains a zero byte", {}, zero}}) {
        SCOPED_TRACE(row.commandLine);
        OsChildProcess child;
        child.setWorkingFolder(row.folder);
        EXPECT_EQ(Launch::Failed, child.launch(row.commandLine, row.environment));
        EXPECT_EQ(row.error, child.getLaunchError());
        child.setWorkingFolder("");
        EXPECT_EQ(Launch::Started, child.launch(childCommand(""), {})) << "the next launch works";
    }
    OsChildProcess child;
    child.setWorkingFolder(missing);
    EXPECT_EQ(Launch::Failed, child.launch(childCommand(""), {}));
}

TEST(OsChildProcess, LeavesNothingBehind) {
    outputOf("");
    TemporaryFolder const folder;
    std::ptrdiff_t const files = countEntries(std::filesystem::temp_directory_path().string().c_str());
    DWORD const handles = countHandles();
    for (int times = 0; times < 20; ++times)
        outputOf("out x err y");
    { Child const forgotten(childCommand("pause")); }
    EXPECT_EQ(handles, countHandles());
    EXPECT_EQ(files, countEntries(std::filesystem::temp_directory_path().string().c_str()));
}

TEST(OsChildProcess, TellsWhatItHasUsed) {
    Child child(childCommand("burn 60 allocate 50000000"));
    EXPECT_EQ(std::nullopt, child.getResourceUse());
    child.readToEnd();
    EXPECT_TRUE(child.forget());
    auto const use = child.getResourceUse();
    ASSERT_TRUE(use);
    EXPECT_GE((use->userTime + use->systemTime).count(), 60000);
}

} // namespace
