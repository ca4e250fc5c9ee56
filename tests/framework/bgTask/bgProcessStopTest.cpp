#include "framework/bgTask/bgManager.h"
#include "tests/support/logRecorder.h"
#include "tests/support/program.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <gmock/gmock.h>

namespace {

using namespace Ko;
using namespace KoTest;
using testing::ElementsAre;

/// A program that ignores one break and ends when the test lets it. Killed or asked twice, it does not write "done".
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

TEST_F(BgProcessTest, DelaysNoOtherProgramWhileAStopWaits) {
    Stubborn stubborn;
    std::jthread const stopper([&] { stubborn.run.job->stop(); });
    stubborn.awaitStopping();
    EXPECT_EQ("Complete", ProgramRun("").await()) << "another program is launched";
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

TEST_F(BgProcessTest, AreAllAskedBeforeTheManagerWaitsForOne) {
    NamedPipe firstTells, firstEnds, lastTells;
    std::vector<std::string> records;
    auto const add = [](std::string const& steps, Program::Hook hook) {
        BgManager::getInstance().addJob(OPtr<BgJobProtocol>(std::make_unique<Program>(steps, std::move(hook))));
    };
    add("ignoreOneBreak" + firstTells.tell() + firstEnds.await() + "out done",
        [&](Program&, std::string const& record) { records.push_back(record); });
    add(lastTells.tell() + "pause", [&](Program&, std::string const&) { firstEnds.release(); });
    firstTells.hear();
    lastTells.hear();
    BgManager::getInstance().stopAllJobs();
    EXPECT_THAT(records, ElementsAre("out:done", "exit:0"));
}

TEST_F(BgProcessTest, IsKilledAfterTheGraceThatWasSet) {
    using std::chrono::milliseconds;
    for (milliseconds const grace : {milliseconds::min(), milliseconds(0), milliseconds(100)}) {
        NamedPipe tells;
        ProgramRun run("ignoreBreak" + tells.tell() + "pause");
        tells.hear();
        run.program->setStopGrace(grace);
        run.job->stop();
        EXPECT_EQ("Stopped", run.await());
    }
    Stubborn stubborn;
    stubborn.run.program->setStopGrace(milliseconds::max());
    std::jthread const stopper([&] { stubborn.run.job->stop(); });
    stubborn.awaitStopping();
    stubborn.end();
}

TEST_F(BgProcessTest, KillsAGroupThatIgnoresTheBreak) {
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
            program.setStopGrace(std::chrono::milliseconds(500));
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
        EXPECT_LT(std::abs(written - passed - number), lineLength) << "only the cut line is missing";
    }
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
    EXPECT_EQ(number, tells.hear()) << "the program runs on";
}

} // namespace
