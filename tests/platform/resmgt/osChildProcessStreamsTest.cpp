#include "resmgt/osChildProcess.h"

#include "tests/support/childCommand.h"
#include "tests/support/launchedChild.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace Ko;
using namespace KoTest;

TEST(OsChildProcess, ReadsEveryByteThatTheChildWrote) {
    Child child(childCommand(R"(flood 3000000 50 floodErr 300000 2 out 'a\0b\r\nlast' err 'x\0' exit 3)"));
    EXPECT_EQ(3, child.readToEnd());
    EXPECT_EQ(3000000u + 9, child.output.size());
    EXPECT_EQ(std::string("a\0b\r\nlast", 9), child.output.substr(3000000));
    EXPECT_EQ(60000, std::count(child.output.begin(), child.output.begin() + 3000000, '\n'));
    EXPECT_EQ(300000u + 2, child.error.size());
    EXPECT_EQ(std::string("x\0", 2), child.error.substr(300000));
    EXPECT_EQ(0u, child.countUnreadOutput());
}

TEST(OsChildProcess, CountsUnreadOutput) {
    Child child(childCommand("out 12345"));
    for (int exitCode = OsChildProcess::stillActive; exitCode == OsChildProcess::stillActive; child.nap(forever))
        ASSERT_TRUE(child.getExitCode(exitCode));
    EXPECT_EQ(5u, child.countUnreadOutput());
    EXPECT_EQ("1234", child.readOutput(4));
    EXPECT_EQ(1u, child.countUnreadOutput());
}

TEST(OsChildProcess, ReadsWhatIsWrittenToIt) {
    std::string bytes(3000000, '\0');
    for (std::size_t index = 0; index < bytes.size(); ++index)
        bytes[index] = static_cast<char>(index * index / 7);
    Child copies(childCommand("copyInput"));
    EXPECT_EQ(bytes.size(), copies.feed(bytes));
    copies.closeInput();
    EXPECT_EQ(0, copies.readToEnd());
    EXPECT_TRUE(copies.output == bytes);
    EXPECT_EQ(std::nullopt, copies.writeInput("x"));

    NamedPipe pipe;
    Child slow(childCommand(pipe.await() + "readInput"));
    std::size_t taken = 0;
    while (std::size_t const count = slow.writeInput(bytes).value_or(0))
        taken += count;
    EXPECT_LT(taken, bytes.size()) << "a full pipe is not waited for";
    slow.nap(0.1);
    EXPECT_EQ(0u, slow.writeInput("x"));
    pipe.release();
    EXPECT_EQ(bytes.size(), slow.feed(bytes));
    EXPECT_TRUE(slow.forget()) << "which ends the input";
}

TEST(OsChildProcess, EndsANapByAnErrorItsEndOrItsDetachment) {
    NamedPipe writes, ends;
    Child child(childCommand(writes.await() + "err x closeErr" + ends.await()));
    int exitCode = 0;
    writes.release();
    child.nap(forever);
    child.readAll();
    // Closing standard error may end one nap, but not every further one.
    child.nap(0.2);
    std::jthread const lets([&] { ends.release(); });
    child.nap(forever);
    EXPECT_TRUE(child.getExitCode(exitCode));
    EXPECT_EQ(0, exitCode);
    Child other(childCommand("readInput"));
    other.wake();
    other.nap(forever);
    other.detach();
    other.nap(forever);
}

} // namespace
