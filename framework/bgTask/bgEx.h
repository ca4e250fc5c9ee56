#pragma once

#include "base/exBase.h"
#include "framework/frameworkApi.h"
#include "resmgt/liString.h"

namespace Ko {

/// What background jobs raise.
class KO_FRAMEWORK_API BgEx : public ExBase {
public:
    class ExBgManager;
    class ExBgTaskFailed;

    /// For the package's hooks; the first takes the texts from the catalogue that is open:
    static void initialize();
    static void finalize();

protected:
    BgEx(char const* file, int line);
};

/// The background manager could not do what it was asked to.
class KO_FRAMEWORK_API BgEx::ExBgManager : public BgEx {
public:
    /// @param text becomes part of the reason.
    ExBgManager(char const* file, int line, LiString const& text);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// A background job could not do its work.
class KO_FRAMEWORK_API BgEx::ExBgTaskFailed : public BgEx {
public:
    /// @param text becomes part of the reason.
    ExBgTaskFailed(char const* file, int line, LiString const& text);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

} // namespace Ko
