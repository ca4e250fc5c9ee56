#include "tests/support/program.h"

#include <array>
#include <cstdlib>

namespace {

using namespace Ko;
using namespace KoTest;

using Operation = void (*)(ProgramRun& run);

constexpr std::array<Operation, 6> operations{[](ProgramRun& run) { run.job->stop(); },
    [](ProgramRun& run) { run.program->detach(); },
    [](ProgramRun& run) { static_cast<void>(run.program->write("line\n")); },
    [](ProgramRun& run) { run.program->closeInput(); },
    [](ProgramRun& run) { run.program->setStopGrace(std::chrono::milliseconds(1)); },
    [](ProgramRun& run) {
        EXPECT_LE(run.program->countWaitingInput(), BgProcess::inputLimit);
        EXPECT_FALSE(run.program->getResourceUse() && run.program->isInputOpen());
    }};

void check(ProgramRun& run, bool isStopped, bool isDetached) {
    std::string const state = run.await();
    bool const hasExited = !run.program->records.empty() && run.program->records.back().starts_with("exit:");
    EXPECT_TRUE(state == "Complete" || (state == "Stopped" && isStopped)) << state;
    EXPECT_TRUE(hasExited || isDetached || state == "Stopped");
    EXPECT_TRUE(run.program->countWaitingInput() == 0 || (state == "Stopped" && !hasExited))
        << "a job that never started";
    EXPECT_TRUE(run.job->releaseProtocol());
}

// Each operation against each other one, at many moments of programs of several kinds.
TEST_F(BgProcessTest, EndsInOrderWhateverMeets) {
    constexpr std::array steps{"copyInput", "ignoreBreak readInput", "closeInput out 'a\n'"};
    constexpr int combinations = steps.size() * operations.size() * operations.size();
    char const* const effort = std::getenv("KO_TEST_EFFORT");
    for (int round = 0; round < combinations * (effort ? std::atoi(effort) : 1) && !HasFailure(); ++round) {
        auto const number = static_cast<std::size_t>(round);
        std::size_t const first = number % operations.size(), second = number / operations.size() % operations.size();
        ProgramRun run(steps[number / (operations.size() * operations.size()) % steps.size()]);
        run.program->setStopGrace(std::chrono::milliseconds(2));
        auto const perform = [&run](Operation operation, std::size_t delay) {
            for (; delay > 0; --delay)
                std::this_thread::yield();
            operation(run);
        };
        {
            std::jthread const one(perform, operations[first], number * 7 % 300);
            std::jthread const other(perform, operations[second], number * 11 % 300);
        }
        run.program->closeInput();
        SCOPED_TRACE(round);
        check(run, first == 0 || second == 0, first == 1 || second == 1);
    }
}

} // namespace
