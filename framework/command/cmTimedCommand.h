#pragma once

#include "framework/command/cmCommand.h"
#include "resmgt/timer.h"

namespace Ko {

/// A command that measures its last execution and its last unexecution; while one runs, the time so far.
class KO_FRAMEWORK_API CmTimedCommand : public CmCommand {
public:
    ~CmTimedCommand() override;
    [[nodiscard]] double getExecutionTime() const override;
    [[nodiscard]] double getUnexecutionTime() const override;

protected:
    CmTimedCommand() = default;

private:
    void execute() override;
    void unexecute() override;

    Timer<HwIntervalTimer> _executionTimer{"anonymous"};
    Timer<HwIntervalTimer> _unexecutionTimer{"anonymous"};
};

} // namespace Ko
