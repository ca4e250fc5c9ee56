#include "resmgt/osChildProcess.h"

#include "base/exBase.h"
#include "resmgt/osEnv.h"
#include "tests/support/childCommand.h"
#include "tests/support/childProcess.h"
#include "tests/support/launchedChild.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;
using Launch = OsChildProcess::Launch;

TEST(OsChildProcess, SplitsItsCommandLineLikeAShell) {
    for (auto const& [line, words] : std::vector<std::pair<std::string, std::string>>{
             {" a \t b\nc ", "[a]\n[b]\n[c]\n"}, {R"('a  b' '\"$x' '')", "[a  b]\n[\\\"$x]\n[]\n"},
             {R"("a  'b'" "\"\\\$\`\n" "")", "[a  'b']\n[\"\\$`\\n]\n[]\n"}, {R"(a\ b \'c\\)", "[a b]\n['c\\]\n"},
             {"a \\\n b\\\n \\\n", "[a]\n[b]\n"}, {R"(a'b c'"d e"\ f)", "[ab cd e f]\n"},
             {"$HOME * ~ a|b;c>d `e` #f", "[$HOME]\n[*]\n[~]\n[a|b;c>d]\n[`e`]\n[#f]\n"}})
        EXPECT_EQ(words, outputOf("arguments " + line));
}

TEST(OsChildProcess, StartsAgainWhenTheChildTruncatesItsOutput) {
    for (char const* const next : {"x", "FIRST\n", "longer than before"}) {
        NamedPipe pipe;
        Child child(childCommand("out 'first\\n'" + pipe.tell() + pipe.await() + "reopen out '" + next + "'"));
        pipe.hear();
        child.readAll();
        EXPECT_EQ("first\n", child.output);
        pipe.release();
        EXPECT_EQ(0, child.readToEnd());
        EXPECT_EQ(std::string("first\n") + next, child.output);
    }
}

TEST(OsChildProcess, ReportsTheExitCode) {
    for (auto const& [steps, exitCode] : std::vector<std::pair<char const*, int>>{
             {"", 0}, {"exit 255", 255}, {"signal 9", 137}, {"signal 2", static_cast<int>(0xC000013A)}}) {
        Child child(childCommand(steps));
        EXPECT_EQ(exitCode, child.readToEnd()) << steps;
    }
}

TEST(OsChildProcess, EndsByABreakUnlessItIgnoresIt) {
    Child obedient(childCommand("pause"));
    EXPECT_TRUE(obedient.sendBreak());
    EXPECT_EQ(OsChildProcess::endedByBreak, obedient.readToEnd());

    NamedPipe pipe;
    Child stubborn(childCommand("ignoreBreak" + pipe.tell() + pipe.await() + pipe.tell() + "pause"));
    pid_t const number = pipe.hear();
    EXPECT_TRUE(stubborn.sendBreak());
    pipe.release();
    EXPECT_EQ(number, pipe.hear());
    EXPECT_TRUE(stubborn.terminate(7));
    EXPECT_EQ(7, stubborn.readToEnd());

    Child halted(childCommand(pipe.tell() + "signal 19"));
    siginfo_t ignored;
    ::waitid(P_PID, static_cast<id_t>(pipe.hear()), &ignored, WSTOPPED | WNOWAIT);
    EXPECT_TRUE(halted.sendBreak());
    EXPECT_EQ(OsChildProcess::endedByBreak, halted.readToEnd());
}

TEST(OsChildProcess, ReachesNoProcessAfterItsEnd) {
    Child child(childCommand("out 12 exit 4"));
    EXPECT_EQ(4, child.readToEnd());
    EXPECT_TRUE(child.terminate(9));
    int exitCode = 0;
    EXPECT_TRUE(child.getExitCode(exitCode));
    EXPECT_EQ(4, exitCode) << "the child ended before";
    EXPECT_TRUE(child.forget());
    EXPECT_FALSE(child.sendBreak());
    EXPECT_FALSE(child.terminate(9));
    child.detach();
    EXPECT_EQ(Launch::Started, child.launch(childCommand("out 3 signal 9"), {}));
    EXPECT_THROW(static_cast<void>(child.launch(childCommand("exit 6"), {})), ExAssertionFailed);
    EXPECT_EQ(137, child.readToEnd()) << "a request to the previous child is forgotten";
    EXPECT_EQ("123", child.output);
}

// The leader ends by the break or the termination. The other member ignores the break and has no parent left.
TEST(OsChildProcess, EndsWithItsGroupWhenAskedTo) {
    for (bool const terminates : {false, true}) {
        NamedPipe otherTells, lastTells;
        Child child("sh -c '" KO_TEST_CHILD " ignoreBreak" + otherTells.tell() + "pause & " KO_TEST_CHILD +
                    lastTells.tell() + "pause'");
        Process const other(otherTells.hear());
        lastTells.hear();
        EXPECT_TRUE(terminates ? child.terminate(0) : child.sendBreak());
        child.readToEnd();
        EXPECT_TRUE(child.forget());
        other.awaitEnd();
    }
}

TEST(OsChildProcess, EndsAloneWhenItEndsByItself) {
    NamedPipe hears, releases;
    Child child(childCommand(
        "orphan" + hears.tell() + releases.await() + hears.tell() + releases.await() + "floodErr 3000000 50 pause"));
    EXPECT_EQ(0, child.readToEnd());
    pid_t const number = hears.hear();
    Process const orphan(number);
    EXPECT_TRUE(child.forget());
    releases.release();
    EXPECT_EQ(number, hears.hear()) << "the rest of the group runs on";
    releases.release();
    // Its errors have no reader any more: it gets SIGPIPE and does not block on a full pipe.
    orphan.awaitEnd();
}

TEST(OsChildProcess, InheritsOnlyTheDirectory) {
    inChildProcess([] {
        std::signal(SIGINT, SIG_IGN);
        std::signal(SIGPIPE, SIG_IGN);
        sigset_t blocked;
        sigfillset(&blocked);
        pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
        int const inheritable = ::open("/dev/null", O_RDONLY);
        EXPECT_EQ("0 1 2 \n", outputOf("descriptors"));
        EXPECT_EQ("leads its group, priority 19, usual signals, names of output 0, mode of output 384\n",
            outputOf("attributes"));
        Child child(childCommand("environment"), {"B=2", "A=1=2"});
        child.readToEnd();
        EXPECT_EQ("B=2\nA=1=2\n", child.output);
        sigset_t now;
        pthread_sigmask(SIG_BLOCK, nullptr, &now);
        EXPECT_TRUE(sigismember(&now, SIGTERM)) << "this thread's signal mask is unchanged";
        for (int const descriptor : {inheritable, 0, 1})
            ::close(descriptor);
        EXPECT_EQ("0 1 2 \n", outputOf("descriptors")) << "also when this process has no standard streams";
    });
}

TEST(OsChildProcess, RunsInItsWorkingFolder) {
    inChildProcess([] {
        TemporaryFolder const folder;
        std::filesystem::create_directories(folder / "a/b");
        std::filesystem::create_symlink(KO_TEST_CHILD, folder / "a/played");
        std::filesystem::current_path(folder / "a");
        for (auto const& [workingFolder, commandLine, expected] :
            std::vector<std::array<std::string, 3>>{{"", "./played folder", "a"}, {"b", "../played folder", "a/b"},
                {folder / "a", "played folder", "a"}, {"..", "a/played folder", "."}}) {
            Child child(commandLine, {"PATH=."}, workingFolder);
            child.readToEnd();
            EXPECT_EQ(std::filesystem::canonical(folder / expected), child.output);
        }
    });
}

TEST(OsChildProcess, IsSearchedForInThePathOfItsEnvironment) {
    TemporaryFolder const folder;
    std::filesystem::create_symlink(KO_TEST_CHILD, folder / "played");
    folder.write("hidden/played", "not executable");
    std::filesystem::create_directories(folder / "unusable/played");
    Child child("played out found", {"X=PATH", "PATH=/nowhere:" + (folder / "hidden").string() + ":" +
                                                   (folder / "unusable").string() + ":" + (folder / ".").string()});
    EXPECT_EQ(0, child.readToEnd());
    EXPECT_EQ("found", child.output);
}

TEST(OsChildProcess, SaysWhyALaunchFailed) {
    TemporaryFolder const folder;
    std::string const text = folder.write("text", "no program").string();
    constexpr char const* malformed = "The command line names no program, or has a quotation without an end";
    std::string const zero("\0x", 2);
    struct Row {
        std::string commandLine;
        std::string error;
        Vector<LiString> environment = {};
        std::string folder = {};
    };
    auto const descriptors = countEntries("/proc/self/fd");
    for (Row const& row :
        {Row{"no-such-program x", "No such file or directory"}, Row{"''", "No such file or directory"},
            Row{text, "Permission denied"}, Row{"  ", malformed}, Row{"'a", malformed},
            Row{KO_TEST_CHILD + zero, "The command line contains a zero byte"},
            Row{childCommand(""), "The environment variable \"A\" contains a zero byte", {"B=1", "A=1" + zero}},
            Row{childCommand(""), "The environment variable \"A\" contains a zero byte", {"A" + zero + "=1"}},
            Row{childCommand(""), "The working folder contains a zero byte", {}, zero},
            Row{childCommand(""), "The working folder \"/no\" cannot be entered: No such file or directory", {}, "/no"},
            Row{childCommand(""), "The working folder \"" + text + "\" cannot be entered: Not a directory", {},
                text}}) {
        SCOPED_TRACE(row.commandLine);
        OsChildProcess child;
        child.setWorkingFolder(row.folder);
        EXPECT_EQ(Launch::Failed, child.launch(row.commandLine, row.environment));
        EXPECT_EQ(row.error, child.getLaunchError());
        child.setWorkingFolder("");
        EXPECT_EQ(Launch::Started, child.launch(childCommand(""), {})) << "the next launch works";
    }
    EXPECT_EQ(descriptors, countEntries("/proc/self/fd"));
}

TEST(OsChildProcess, NeedsAFolderForItsOutput) {
    inChildProcess([] {
        TemporaryFolder const folder;
        OsChildProcess child;
        ::setenv("TMPDIR", "/nowhere", 1);
        EXPECT_EQ(Launch::Failed, child.launch(childCommand(""), {}));
        EXPECT_EQ("The file for the output cannot be created in \"/nowhere\": No such file or directory",
            child.getLaunchError());
        ::setenv("TMPDIR", "/proc", 1);
        EXPECT_EQ(Launch::Failed, child.launch(childCommand(""), {}));
        ::setenv("TMPDIR", (folder / ".").c_str(), 1);
        EXPECT_EQ(Launch::Started, child.launch(childCommand("pause"), {}));
        EXPECT_EQ(0, folder.entries());
    });
}

TEST(OsChildProcess, MayCloseItsInputWithoutASignalHere) {
    inChildProcess([] {
        NamedPipe closes, ends;
        std::string const much(200000, 'x');
        Child child(childCommand(closes.await() + "closeInput" + ends.await()));
        std::jthread const lets([&] { closes.release(); });
        EXPECT_LT(child.feed(much), much.size()) << "a wait for the pipe ends";
        EXPECT_EQ(std::nullopt, child.writeInput("x"));
        ends.release();
        sigset_t pipeSignal, now;
        sigemptyset(&pipeSignal);
        sigaddset(&pipeSignal, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipeSignal, nullptr);
        std::raise(SIGPIPE);
        Child other(childCommand(""));
        other.readToEnd();
        EXPECT_EQ(std::nullopt, other.writeInput("x"));
        ::sigpending(&now);
        EXPECT_TRUE(sigismember(&now, SIGPIPE)) << "one of the host's own stays";
    });
}

TEST(OsChildProcess, TellsWhatItHasUsed) {
    constexpr std::uint64_t much = 600'000'000;
    Child child(childCommand("burn 60 allocate " + std::to_string(much)));
    EXPECT_EQ(std::nullopt, child.getResourceUse());
    child.readToEnd();
    EXPECT_TRUE(child.forget());
    auto const use = child.getResourceUse();
    ASSERT_TRUE(use && use->peakMemory);
    EXPECT_GE((use->userTime + use->systemTime).count(), 60000);
    EXPECT_GE(*use->peakMemory, much);

    // The system's figure for a smaller child is that of this process.
    std::vector<char> const held(much, 'x');
    NamedPipe tells;
    for (bool const isNoted : {false, true}) {
        Child small(childCommand(tells.tell() + "readInput"));
        tells.hear();
        if (isNoted) small.noteMemory();
        EXPECT_TRUE(small.forget());
        ASSERT_TRUE(small.getResourceUse());
        auto const peak = small.getResourceUse()->peakMemory;
        EXPECT_EQ(isNoted, peak.has_value());
        EXPECT_LT(peak.value_or(0), much / 10);
        EXPECT_EQ(0u, peak.value_or(0) % 1024);
    }
    Child detached(childCommand("readInput"));
    detached.detach();
    EXPECT_TRUE(detached.forget());
    EXPECT_EQ(std::nullopt, detached.getResourceUse());
}

} // namespace
