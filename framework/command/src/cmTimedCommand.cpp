#include "framework/command/cmTimedCommand.h"

namespace Ko {

CmTimedCommand::~CmTimedCommand() = default;

double CmTimedCommand::getExecutionTime() const {
    return _executionTimer.getSeconds();
}
double CmTimedCommand::getUnexecutionTime() const {
    return _unexecutionTimer.getSeconds();
}

// A command that throws leaves its timer running: it never ended.
void CmTimedCommand::execute() {
    _executionTimer.reset();
    _executionTimer.start();
    CmCommand::execute();
    _executionTimer.stop();
}

void CmTimedCommand::unexecute() {
    _unexecutionTimer.reset();
    _unexecutionTimer.start();
    CmCommand::unexecute();
    _unexecutionTimer.stop();
}

} // namespace Ko
