#pragma once

#include "base/exBase.h"
#include "framework/frameworkApi.h"

namespace Ko {

/// The exceptions of commands.
class KO_FRAMEWORK_API CmEx : public ExBase {
public:
    class ExCommandFailure;

protected:
    CmEx(char const* file, int line);
};

/// A command could not make or revert its change, and left everything as it was. During undo and redo the stack handles
/// this exception: it drops the part of the history that is no longer reliable, and returns normally.
class KO_FRAMEWORK_API CmEx::ExCommandFailure : public CmEx {
public:
    ExCommandFailure(char const* file, int line);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

} // namespace Ko
