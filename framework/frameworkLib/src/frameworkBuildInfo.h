#pragma once

#include "base/inBuildInfo.h"

namespace Ko {

/// The build of libKOframework.
class FrameworkBuildInfo final : public InBuildInfo {
public:
    std::string getProductDescription() const override { return "Marlo Library"; }
    std::string getLibraryName() const override { return "libKoframework"; }
    std::string getReleaseYear() const override { return "2013"; }
    std::string getVersion() const override { return "8.0"; }
    std::string getReleaseSuffix() const override { return getReleaseKind() == developmentRelease ? "dev" : ""; }
    int getMajorVersion() const override { return 8; }
    int getMinorVersion() const override { return 0; }
    int getReleaseKind() const override { return 42; }
    std::string getBuildNumber() const override { return "2600"; }
    std::string getBuildDate() const override { return "Jun 12 2012"; }
    std::string getBuildFlavour() const override { return "opt.x86_64.intel"; }
};

} // namespace Ko
