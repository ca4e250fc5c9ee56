#pragma once

#include "base/rcBase.h"
#include "framework/frameworkApi.h"

namespace Ko {

/// Is called when an outermost guard opens and closes. Registered with `CmUndoGuard::registerUndoGuardExtension`.
class KO_FRAMEWORK_API CmUndoGuardExtension : public RCBase {
public:
    CmUndoGuardExtension();

protected:
    ~CmUndoGuardExtension() override;

public:
    /// Called when the guard has been entered. If it throws, the guard is not entered.
    /// @param longTransition whether the guard belongs to a long transaction.
    virtual void beginOutermostGuard(bool longTransition) = 0;
    /// Called while the guard is still open, before its commands are logged.
    /// @param longTransition whether the guard belongs to a long transaction.
    virtual void endOutermostGuard(bool longTransition) = 0;
};

} // namespace Ko
