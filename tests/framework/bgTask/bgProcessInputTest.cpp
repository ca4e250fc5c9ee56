#include "framework/bgTask/src/bgInputQueue.h"
#include "tests/support/program.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <gmock/gmock.h>

namespace {

using namespace Ko;
using namespace KoTest;
using testing::ElementsAre;

/// Provides so many lines as input and counts those that come back.
class Copy : public BgProcess {
public:
    explicit Copy(int lines) : BgProcess(childCommand("copyInput"), "test"), _left(lines) {}

    int wrong = 0, calls = 0, copied = 0;
    std::size_t mostWaiting = 0;

protected:
    void provideInput() override {
        ++calls;
        while (_left > 0) {
            _line = _line.empty() ? std::to_string(_left) + "\n" : _line;
            _line.erase(0, write(_line));
            mostWaiting = std::max(mostWaiting, countWaitingInput());
            if (!_line.empty()) return;
            --_left;
        }
        closeInput();
    }
    void processOutputString(std::string const& line) override {
        wrong += line != std::to_string(_expected--);
        ++copied;
    }

private:
    int _left;
    int _expected = _left;
    std::string _line;
};

TEST_F(BgProcessTest, ProvidesALargeInputInOrder) {
    Copy copy(1000000);
    copy.start();
    EXPECT_EQ(1000000, copy.copied);
    EXPECT_EQ(0, copy.wrong);
    EXPECT_GT(copy.mostWaiting, BgProcess::inputLimit / 2);
    EXPECT_LE(copy.mostWaiting, BgProcess::inputLimit);
    EXPECT_GT(copy.calls, 4);
    EXPECT_FALSE(copy.isInputOpen());

    class Silent : public BgProcess {
    public:
        using BgProcess::BgProcess;
        int calls = 0;

    protected:
        void provideInput() override { ++calls; }
    } silent(childCommand("flood 1000000 2"), "test");
    silent.start();
    EXPECT_EQ(1, silent.calls) << "asked again only after the program has taken bytes";
}

TEST_F(BgProcessTest, TakesInputAtAnyTime) {
    Program before("copyInput");
    EXPECT_EQ(2u, before.write("a\n"));
    EXPECT_EQ(2u, before.countWaitingInput());
    before.closeInput();
    EXPECT_EQ(0u, before.write("b\n"));
    before.start();
    EXPECT_THAT(before.records, ElementsAre("out:a", "exit:0"));

    ProgramRun answers("err 'ready\n' copyInput", [](Program& program, std::string const& record) {
        if (record == "out:2") return program.closeInput();
        std::string const reply = record == "err:ready" ? "1\n" : record == "out:1" ? "2\n" : "";
        EXPECT_EQ(reply.size(), program.write(reply));
    });
    EXPECT_EQ("Complete", answers.await());
    EXPECT_THAT(answers.program->records, ElementsAre("err:ready", "out:1", "out:2", "exit:0"));

    NamedPipe tells;
    ProgramRun later(tells.tell() + "copyInput");
    tells.hear();
    EXPECT_EQ(1u, later.program->write("x"));
    later.program->closeInput();
    EXPECT_EQ("Complete", later.await());
    EXPECT_THAT(later.program->records, ElementsAre("out:x", "exit:0"));

    ProgramRun ended("", [](Program& program, std::string const&) { EXPECT_FALSE(program.isInputOpen()); });
    EXPECT_EQ("Complete", ended.await()) << "its input is over in handleExit already";
}

TEST_F(BgProcessTest, HasABoundedInputThatItsProgramMayRefuse) {
    std::string const much(BgProcess::inputLimit + 10, 'x');
    for (bool const isLaunched : {true, false}) {
        BgProcess process(isLaunched ? childCommand("closeInput") : "/nowhere/program", "test");
        EXPECT_EQ(BgProcess::inputLimit, process.write(much));
        EXPECT_EQ(0u, process.write("x"));
        EXPECT_EQ(BgProcess::inputLimit, process.countWaitingInput());
        if (isLaunched) {
            EXPECT_NO_THROW(process.start()) << "a refusal is no failure";
        } else {
            EXPECT_ANY_THROW(process.start());
        }
        EXPECT_FALSE(process.isInputOpen());
        EXPECT_EQ(0u, process.countWaitingInput());
        EXPECT_EQ(0u, process.write("x"));
    }
    NamedPipe ends;
    ProgramRun run("closeInput" + ends.await());
    EXPECT_LT(run.program->write(much), much.size());
    while (run.program->isInputOpen())
        std::this_thread::yield();
    ends.release();
    EXPECT_EQ("Complete", run.await());
}

TEST(BgInputQueue, LosesAndMixesNothingWhateverMeets) {
    char const* const effort = std::getenv("KO_TEST_EFFORT");
    BgInputQueue queue(64);
    for (int round = 0; round < 500 * (effort ? std::atoi(effort) : 1); ++round) {
        BgInputQueue::Use const use(queue);
        std::string passed, added;
        std::atomic<bool> isAwake = true, hasEnded = false;
        std::thread adds([&] {
            for (int number = 0; number < 40 && queue.isOpen(); ++number) {
                std::string const bytes(static_cast<std::size_t>(number % 9), static_cast<char>(number));
                BgInputQueue::Added const result = queue.add(bytes);
                added.append(bytes, 0, result.count);
                if (result.needsWaking) isAwake = true;
            }
            hasEnded = true;
        });
        std::jthread const closes([&] {
            for (int spins = round % 50; spins > 0; --spins)
                std::this_thread::yield();
            if (round % 3 == 0) queue.close();
        });
        int writes = 0;
        auto const write = [&](std::string_view bytes) -> std::optional<std::size_t> {
            if (round % 7 == 0 && ++writes > 5) return {};
            std::size_t const count = ++writes % 4 == 0 ? bytes.size() / 2 : bytes.size();
            passed += bytes.substr(0, count);
            if (count < bytes.size()) isAwake = true;
            return count;
        };
        while (!hasEnded || isAwake)
            if (isAwake.exchange(false)) queue.passOn(write);
        adds.join();
        EXPECT_TRUE(round % 7 == 0 ? added.starts_with(passed) : added == passed) << "round " << round;
        EXPECT_EQ(0u, queue.countWaiting());
        if (HasFailure()) return;
    }
}

} // namespace
