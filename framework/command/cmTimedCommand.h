#pragma once

#include "framework/command/cmCommand.h"
#include "resmgt/timer.h"

namespace Ko {

/// A command that measures how long its last execution and unexecution took; while one runs, how long it has run so far.
class KO_FRAMEWORK_API CmTimedCommand : public CmCommand {
public:
    ~CmTimedCommand() override;
    double getExecutionTime() const override;
    double getUnexecutionTime() const override;

protected:
    CmTimedCommand() = default;

private:
    void execute() override;
    void unexecute() override;

    Timer<HwIntervalTimer> _executionTimer{"anonymous"};
    Timer<HwIntervalTimer> _unexecutionTimer{"anonymous"};
};

} // namespace Ko
