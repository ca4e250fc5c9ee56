#include "framework/command/src/cmLog.h"

namespace Ko {

LiString CmLog::describe(CmCommand const& command) {
    try {
        return command.getDescription();
    } catch (...) {
        return "a command without a description";
    }
}

void CmLog::writeStep(int level, char const* verb, CmCommand const& command, char const* outcome) noexcept {
    writeLine(level, [&] { return verb + describe(command) + outcome; });
}

} // namespace Ko
