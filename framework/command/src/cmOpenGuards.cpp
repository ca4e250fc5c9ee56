#include "framework/command/src/cmOpenGuards.h"

namespace Ko {

OpenGuards* OpenGuards::_instance = nullptr;

void OpenGuards::refuse() {
    guardSource.require(PiAppThread::isCurrent(), "PiAppThread::isCurrent()");
    guardSource.fail("undoGuardStack != 0");
}

void OpenGuards::leaveWithWork(bool quiet) {
    LgFirstError error("The closing of an undo guard");
    int exceptionsAtEntry = 0;
    error.capture([&] {
        OpenGuards& guards = getInstance();
        exceptionsAtEntry = guards._exceptionsAtEntry;
        guards.endOutermost(quiet, error);
    });
    error.finish(exceptionsAtEntry);
}

} // namespace Ko
