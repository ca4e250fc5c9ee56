#pragma once

#include "framework/bgTask/bgJob.h"
#include "framework/bgTask/bgProcess.h"
#include "resmgt/osEnv.h"
#include "tests/support/childCommand.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace KoTest {

/// To be called before the first program is launched.
inline void setLaunchThrottle(int seconds) {
    Ko::OsEnv::putVariable("KO_BGEXEC_WAIT_TIME=" + std::to_string(seconds));
}

/// Records what a program writes and its exit code, and calls the test's hook with each record.
class Program : public Ko::BgProcess {
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
        job = Ko::BgJob::create(std::move(owned));
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
    Ko::RCShdPtr<Ko::BgJob> job;

private:
    std::thread _thread;
};

/// Programs are launched without delay.
class BgProcessTest : public testing::Test {
protected:
    BgProcessTest() { setLaunchThrottle(0); }
};

} // namespace KoTest
