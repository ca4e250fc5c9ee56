#pragma once

#include "base/oPtr.h"
#include "framework/command/cmCommand.h"
#include "resmgt/lgGroups.h"

namespace Ko {

/// The log group "Commands", which exists while the package is initialised.
class CmLog {
public:
    static constexpr int unexpectedFailure = 0;
    static constexpr int commandFailure = 2;
    static constexpr int commandFlow = 6;

    static void initialize();
    static void finalize();

    /// Writes `verb`, the command's description and `outcome`. Never throws: a line that cannot be written, or a
    /// description that fails, must not keep a command from the history.
    static void write(int level, char const* verb, CmCommand const& command, char const* outcome = "") noexcept {
        if (_group && _group->isEnabled(level)) [[unlikely]]
            writeLine(level, verb, command, outcome);
    }

private:
    static void writeLine(int level, char const* verb, CmCommand const& command, char const* outcome) noexcept;

    static OPtr<LgMinorGroup> _group;
};

} // namespace Ko
