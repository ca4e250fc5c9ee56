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

OPtr<LgMinorGroup> CmLog::_group;

void CmLog::initialize() {
    _group = std::make_unique<LgMinorGroup>(LgMajorGroup::getInstanceForName("Framework"), "Commands");
}

void CmLog::finalize() {
    _group.reset();
}

void CmLog::writeLine(int level, char const* verb, CmCommand const& command, char const* outcome) noexcept {
    try {
        _group->write(level, verb + describe(command) + outcome);
    } catch (...) {
        // Out of memory for a line of text: the command matters more.
    }
}

} // namespace Ko
