#pragma once

#include "framework/command/cmCommand.h"
#include "resmgt/lgPackageGroup.h"

namespace Ko {

/// The log group "Commands" and its levels.
///
/// Writing never throws: a line that cannot be written, or a description that fails, must not keep a command from the
/// history.
class CmLog {
public:
    static constexpr int unexpectedFailure = 0;
    static constexpr int commandFailure = 2;
    static constexpr int commandFlow = 6;

    static inline constinit LgPackageGroup group{"Commands"};

    /// Writes `verb`, the command's description and `outcome`.
    static void write(int level, char const* verb, CmCommand const& command, char const* outcome = "") noexcept {
        if (group.isEnabled(level)) [[unlikely]]
            writeStep(level, verb, command, outcome);
    }
    /// Writes what `makeText()` returns.
    template <class MakeText>
    static void writeLine(int level, MakeText makeText) noexcept {
        try {
            group.log(level, makeText);
        } catch (...) {
            // Out of memory for a line of text: the command matters more.
        }
    }
    /// The command's description; a substitute if that throws.
    static LiString describe(CmCommand const& command);

private:
    static void writeStep(int level, char const* verb, CmCommand const& command, char const* outcome) noexcept;
};

} // namespace Ko
