#include "framework/command/src/cmLog.h"

namespace Ko {

LiString CmLog::describe(CmCommand const& command) {
    try {
        return command.getDescription();
    } catch (...) {
        return "a command without a description";
    }
}

} // namespace Ko
