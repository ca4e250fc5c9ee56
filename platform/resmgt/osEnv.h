#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <string>

namespace Ko {

/// The environment of this process. Must not be written while other threads may read it.
class KO_RESMGT_API OsEnv {
public:
    /// Reads a variable.
    /// @returns whether the variable is defined; if not, `value` does not change.
    static bool getVariable(LiString const& name, LiString& value);
    /// Defines a variable for this process and the ones that it starts.
    /// @param assignment "NAME=value".
    /// @throws ExAssertionFailed when it has no "=", nothing before the "=", or a zero byte.
    static void putVariable(LiString const& assignment);
    /// As the other `putVariable`, with a text that is converted to UTF-8.
    static void putVariable(std::wstring const& assignment);
    /// All variables, as "NAME=value".
    [[nodiscard]] static Vector<LiString> getEntries();
};

} // namespace Ko
