#pragma once

#include "framework/command/cmCommand.h"
#include "resmgt/lgPackageGroup.h"

namespace Ko {

/// The log group "Commands" and its levels.
class CmLog {
public:
    static constexpr int unexpectedFailure = 0;
    static constexpr int commandFailure = 2;
    static constexpr int commandFlow = 6;

    static inline constinit LgPackageGroup group{"Commands"};

    /// Writes `verb`, the command's description and `outcome`. Never throws: a line that cannot be written, or a
    /// description that fails, must not keep a command from the history.
    static void write(int level, char const* verb, CmCommand const& command, char const* outcome = "") noexcept {
        if (group.isEnabled(level)) [[unlikely]]
            writeLine(level, verb, command, outcome);
    }

private:
    static void writeLine(int level, char const* verb, CmCommand const& command, char const* outcome) noexcept;
};

} // namespace Ko
