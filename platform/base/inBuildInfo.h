#pragma once

#include "base/baseApi.h"
#include "base/oPtr.h"

#include <string>
#include <vector>

namespace Ko {

/// What one library says of its own build.
class KO_BASE_API InBuildInfo {
public:
    virtual ~InBuildInfo();
    /// For display:
    virtual std::string getProductDescription() const = 0;
    virtual std::string getLibraryName() const = 0;
    virtual std::string getReleaseYear() const = 0;
    virtual std::string getVersion() const = 0;
    /// "dev" for a development release, else empty.
    virtual std::string getReleaseSuffix() const = 0;
    /// The first and the second number of the version:
    virtual int getMajorVersion() const = 0;
    virtual int getMinorVersion() const = 0;
    /// The kind of release; `developmentRelease` marks one that is not for customers.
    virtual int getReleaseKind() const = 0;
    /// What tells this build from others of the same version:
    virtual std::string getBuildNumber() const = 0;
    virtual std::string getBuildDate() const = 0;
    /// Optimisation, processor and compiler.
    virtual std::string getBuildFlavour() const = 0;

    /// For `getReleaseKind`.
    static constexpr int developmentRelease = 3;
};

/// The records of all libraries that are initialised, in the order in which they registered. Application thread only.
class KO_BASE_API InBuildInfoUtil {
public:
    /// For the hook of a library's package.
    static void registerInfo(OPtr<InBuildInfo> info);
    /// They live until the process ends.
    static std::vector<InBuildInfo const*> getInfos();
};

} // namespace Ko
