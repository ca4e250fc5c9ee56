#pragma once

#include "base/exBase.h"
#include "framework/frameworkApi.h"
#include "resmgt/liString.h"

namespace Ko {

/// Base of the exceptions of background jobs.
class KO_FRAMEWORK_API BgEx : public ExBase {
public:
    class ExBgManager;
    class ExBgTaskFailed;

    /// Reads the texts of the messages from the open catalogue. Called by the package.
    static void initialize();
    /// Counterpart of `initialize()`, without effect. Called by the package.
    static void finalize();

protected:
    BgEx(char const* file, int line);
};

/// An operation of the background manager failed.
class KO_FRAMEWORK_API BgEx::ExBgManager : public BgEx {
public:
    /// @param text becomes part of the reason.
    ExBgManager(char const* file, int line, LiString const& text);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// The work of a background job failed.
class KO_FRAMEWORK_API BgEx::ExBgTaskFailed : public BgEx {
public:
    /// @param text becomes part of the reason.
    ExBgTaskFailed(char const* file, int line, LiString const& text);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

} // namespace Ko
