#pragma once

#include "scriptingAPI/scriptingAPIApi.h"

#include <functional>

namespace Ko {

/// Keeps the scripting interpreter from being ended while code runs that may execute a script.
///
/// Any thread; nests. The thread that made a guard has to destroy it. A host ends its interpreter with `endInterpreter`, which
/// waits until no guard is held.
class KO_SCRIPTINGAPI_API PiPythonInterpreterTerminationGuard {
public:
    /// Waits while the interpreter is being ended, unless this thread holds a guard already.
    [[nodiscard]] PiPythonInterpreterTerminationGuard();
    ~PiPythonInterpreterTerminationGuard();
    PiPythonInterpreterTerminationGuard(PiPythonInterpreterTerminationGuard const&) = delete;
    PiPythonInterpreterTerminationGuard& operator=(PiPythonInterpreterTerminationGuard const&) = delete;

    /// Whether any thread holds a guard. For diagnosis: the answer may be outdated at once.
    [[nodiscard]] static bool isHeld();
    /// Waits until no guard is held and calls `end`. Other threads wait for a guard until `end` has returned or thrown. Passes
    /// on the exceptions of `end`.
    /// @throws ExAssertionFailed when this thread holds a guard.
    static void endInterpreter(std::function<void()> const& end);
};

} // namespace Ko
