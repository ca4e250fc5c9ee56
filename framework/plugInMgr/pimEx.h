#pragma once

#include "base/exBase.h"
#include "framework/frameworkApi.h"
#include "resmgt/osFilePath.h"

namespace Ko {

/// Base of the exceptions of the plug-in manager.
class KO_FRAMEWORK_API PimEx : public ExBase {
public:
    class ExLibMultipleLoad;
    class ExRefused;

protected:
    PimEx(char const* file, int line);
};

/// A library of that file name was loaded before.
class KO_FRAMEWORK_API PimEx::ExLibMultipleLoad : public PimEx {
public:
    /// @param path of the library that was refused.
    ExLibMultipleLoad(char const* file, int line, OsFilePath const& path);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

/// A plug-in is not opened: its declaration is damaged or does not fit the application, or the user's rules leave it out.
class KO_FRAMEWORK_API PimEx::ExRefused : public PimEx {
public:
    /// @param reason follows the name of the plug-in in messages.
    ExRefused(char const* file, int line, LiString reason);
    ExBase* clone() const override;
    [[noreturn]] void raise() const override;
};

} // namespace Ko
