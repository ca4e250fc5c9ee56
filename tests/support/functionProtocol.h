#pragma once

#include "framework/bgTask/bgJob.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace KoTest {

/// A protocol that calls a function of the test, which may use the protected functions of protocols.
class FunctionProtocol : public Ko::BgJobProtocol {
public:
    using Function = std::function<void(FunctionProtocol&)>;

    explicit FunctionProtocol(Function function) : BgJobProtocol("test job", "test"), _function(std::move(function)) {}
    void execute() override { _function(*this); }

    using BgJobProtocol::continueExecution;
    using BgJobProtocol::leaveWorker;
    using BgJobProtocol::reportMessage;
    using BgJobProtocol::reportPhase;
    using BgJobProtocol::reportProgress;
    using BgJobProtocol::reportUnits;
    using BgJobProtocol::reportUnknownProgress;
    using BgJobProtocol::setResult;

    static std::unique_ptr<FunctionProtocol> create(Function function = [](FunctionProtocol&) {}) {
        return std::make_unique<FunctionProtocol>(std::move(function));
    }
    static Ko::RCShdPtr<Ko::BgJob> createJob(Function function = [](FunctionProtocol&) {}) {
        return Ko::BgJob::create(create(std::move(function)));
    }

private:
    Function _function;
};

/// Blocks threads until a test opens it.
class Gate {
public:
    void open() { _event.set(); }
    void wait() const { _event.wait(); }

private:
    Ko::LkEvent _event{"Gate", false};
};

/// A job that waits in its execution for `letGo()`, and then calls a function of the test.
class GatedJob {
public:
    explicit GatedJob(FunctionProtocol::Function work = [](FunctionProtocol&) {})
        : job(FunctionProtocol::createJob([this, work = std::move(work)](FunctionProtocol& self) {
              started.open();
              gate.wait();
              work(self);
          })) {}

    void letGo() {
        started.wait();
        gate.open();
    }

    Gate started;
    Gate gate;
    Ko::RCShdPtr<Ko::BgJob> const job;
};

/// Records the notifications of jobs: the values of the states, and the progress. Then calls a function of the test.
class JobRecorder : public Ko::ObObserver<Ko::BgJobTag> {
public:
    explicit JobRecorder(std::function<void(Ko::ObHints const&)> then = {}) : _then(std::move(then)) {}
    ~JobRecorder() override { disableUpdates(); }

    std::vector<int> states() const {
        std::lock_guard const guard(_mutex);
        return _states;
    }
    std::vector<float> progress() const {
        std::lock_guard const guard(_mutex);
        return _progress;
    }

private:
    void update(Ko::ObObserver<Ko::BgJobTag> const*, Ko::ObHints const& hints) override {
        {
            std::lock_guard const guard(_mutex);
            if (auto const change = hints.pickHint<Ko::BgJobHintChangeState>())
                _states.push_back(change->getJobState());
            if (auto const step = hints.pickHint<Ko::BgJobHintProgress>()) _progress.push_back(step->getProgress());
        }
        if (_then) _then(hints);
    }

    std::function<void(Ko::ObHints const&)> _then;
    mutable std::mutex _mutex;
    std::vector<int> _states;
    std::vector<float> _progress;
};

} // namespace KoTest
