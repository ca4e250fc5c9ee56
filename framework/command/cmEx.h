#pragma once

#include "base/exBase.h"
#include "framework/frameworkApi.h"

namespace Ko {

/// What commands raise.
class KO_FRAMEWORK_API CmEx : public ExBase {
public:
    class ExCommandFailure;

protected:
    CmEx(char const* file, int line);
};

/// A command could not make or take back its change, and left everything as it was. A stack that undoes or redoes expects
/// it: it drops the history that can no longer be trusted and goes on.
class KO_FRAMEWORK_API CmEx::ExCommandFailure : public CmEx {
public:
    ExCommandFailure(char const* file, int line);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

} // namespace Ko
