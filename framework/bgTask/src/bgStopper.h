#pragma once

#include "framework/bgTask/src/bgWorkers.h"

#include <functional>
#include <memory>
#include <mutex>

namespace Ko {

/// The threads that stop protocols and wait for the end of jobs, so that no other thread has to. Started by the first use.
class BgStopper {
public:
    ~BgStopper() {
        if (_workers) _workers->waitForRequests();
    }

    /// Runs a function on one of the threads. Any thread.
    void run(std::function<void()> work) {
        std::call_once(_started, [this] { _workers = std::make_unique<BgWorkers>("BgStop", numThreads); });
        _workers->add(RCShdPtr<Work>::create(std::move(work)));
    }

private:
    // Several, as a protocol may stay in its `stop()`.
    static constexpr int numThreads = 4;

    struct Work final : MtTaskImp {
        explicit Work(std::function<void()> itsWork) : work(std::move(itsWork)) {}
        void execute() override { work(); }
        std::function<void()> const work;
    };

    std::once_flag _started;
    std::unique_ptr<BgWorkers> _workers;
};

} // namespace Ko
