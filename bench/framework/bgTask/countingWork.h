#pragma once

#include "bench/support/countdown.h"
#include "framework/bgTask/bgJobProtocol.h"
#include "resmgt/mtTask.h"

namespace KoBench {

/// The least that a job can do.
class CountingProtocol final : public Ko::BgJobProtocol {
public:
    explicit CountingProtocol(Countdown& countdown) : Ko::BgJobProtocol("job", "count"), _countdown(countdown) {}
    void execute() override { _countdown.done(); }

private:
    Countdown& _countdown;
};

/// The least that a task can do.
class CountingTask final : public Ko::MtTaskImp {
public:
    explicit CountingTask(Countdown& countdown) : _countdown(countdown) {}
    void execute() override { _countdown.done(); }

private:
    Countdown& _countdown;
};

} // namespace KoBench
