#pragma once

#include "scriptingAPI/scriptingAPIApi.h"

#include <functional>

namespace Ko {

/// Keeps the scripting interpreter from being ended while something that may run a script is going on.
///
/// Any thread; nests. It holds on the thread that made it, which also has to destroy it. A host ends its interpreter with
/// `endInterpreter`, so that this never happens while a guard is held.
class KO_SCRIPTINGAPI_API PiPythonInterpreterTerminationGuard {
public:
    /// Waits while the interpreter is being ended, unless the thread holds a guard already.
    PiPythonInterpreterTerminationGuard();
    ~PiPythonInterpreterTerminationGuard();
    PiPythonInterpreterTerminationGuard(PiPythonInterpreterTerminationGuard const&) = delete;
    PiPythonInterpreterTerminationGuard& operator=(PiPythonInterpreterTerminationGuard const&) = delete;

    /// Whether some thread holds a guard. For diagnosis: it may be different at once.
    static bool isHeld();
    /// Waits until no guard is held and calls `end`. Other threads that want a guard wait until it has returned or thrown.
    /// @throws ExAssertionFailed when this thread holds a guard, and what `end` throws.
    static void endInterpreter(std::function<void()> const& end);
};

} // namespace Ko
