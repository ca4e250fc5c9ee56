#include "framework/command/src/cmLog.h"

namespace Ko {

namespace {

LiString describe(CmCommand const& command) {
    try {
        return command.getDescription();
    } catch (...) {
        return "a command without a description";
    }
}

} // namespace

void CmLog::writeLine(int level, char const* verb, CmCommand const& command, char const* outcome) noexcept {
    try {
        group.log(level, [&] { return verb + describe(command) + outcome; });
    } catch (...) {
        // Out of memory for a line of text: the command matters more.
    }
}

} // namespace Ko
