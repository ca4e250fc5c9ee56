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

TEST(OsChildProcess, LeavesNothingBehind) {
    inChildProcess([] {
        outputOf("");
        auto const descriptors = countEntries("/proc/self/fd");
        auto const threads = countEntries("/proc/self/task");
        for (int times = 0; times < 100; ++times)
            outputOf("out x err y");
        { Child const forgotten(childCommand("pause")); }
        EXPECT_EQ(descriptors, countEntries("/proc/self/fd"));
        EXPECT_EQ(threads, countEntries("/proc/self/task"));
        EXPECT_EQ(-1, ::waitpid(-1, nullptr, WNOHANG)) << "no child is left";
    });
}

TEST(OsChildProcess, RunsOnDetachedAndBecomesNoZombie) {
    NamedPipe hears, releases;
    {
        Child child(
            childCommand(hears.tell() + releases.await() + "floodErr 3000000 50" + hears.tell() + releases.await()));
        pid_t const number = hears.hear();
        child.detach();
        EXPECT_FALSE(child.sendBreak());
        EXPECT_FALSE(child.terminate(0));
        EXPECT_TRUE(child.forget());
        Process const process(number);
        releases.release();
        EXPECT_EQ(number, hears.hear());
        releases.release();
        while (process.exists())
            std::this_thread::yield();
    }
    // A child that is detached when this process finalises.
    Child other(childCommand(releases.await()));
    other.detach();
    EXPECT_TRUE(other.forget());
    OsChildProcess::finalize();
    releases.release();
    EXPECT_EQ(1, ::waitpid(-1, nullptr, 0) > 0);
}

TEST(OsChildProcess, EndsWithThisProcessUnlessDetached) {
    NamedPipe attachedTells, memberTells, detachedTells, hostTells, releases;
    std::string const attached =
        childCommand("ignoreBreak" + attachedTells.tell() + "member" + memberTells.tell() + "pause");
    std::string const detached =
        childCommand(detachedTells.tell() + releases.await() + "floodErr 3000000 50" + detachedTells.tell());
    Child host("'" KO_TEST_CHILD_HOST "' \"" + attached + "\" \"" + detached + "\" " + hostTells.path());
    Process const leader(attachedTells.hear());
    Process const member(memberTells.hear());
    pid_t const number = detachedTells.hear();
    hostTells.hear();
    EXPECT_TRUE(host.terminate(0));
    EXPECT_EQ(0, host.readToEnd());
    leader.awaitEnd();
    member.awaitEnd();
    releases.release();
    EXPECT_EQ(number, detachedTells.hear());
}

} // namespace
