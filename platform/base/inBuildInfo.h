#pragma once

#include "base/baseApi.h"
#include "base/oPtr.h"

#include <string>
#include <vector>

namespace Ko {

/// The description of one library's build.
class KO_BASE_API InBuildInfo {
public:
    virtual ~InBuildInfo();
    /// The product that the library is a part of, for display.
    [[nodiscard]] virtual std::string getProductDescription() const = 0;
    /// The name of the library, for display.
    [[nodiscard]] virtual std::string getLibraryName() const = 0;
    /// The year of the release, for display.
    [[nodiscard]] virtual std::string getReleaseYear() const = 0;
    /// The version, for display: "8.0".
    [[nodiscard]] virtual std::string getVersion() const = 0;
    /// "dev" for a development release, else empty.
    [[nodiscard]] virtual std::string getReleaseSuffix() const = 0;
    /// The first number of the version.
    [[nodiscard]] virtual int getMajorVersion() const = 0;
    /// The second number of the version.
    [[nodiscard]] virtual int getMinorVersion() const = 0;
    /// The kind of release; `developmentRelease` marks one that is not for customers.
    [[nodiscard]] virtual int getReleaseKind() const = 0;
    /// Distinguishes this build from others of the same version.
    [[nodiscard]] virtual std::string getBuildNumber() const = 0;
    /// The day of the build, for display.
    [[nodiscard]] virtual std::string getBuildDate() const = 0;
    /// Optimisation, processor and compiler.
    [[nodiscard]] virtual std::string getBuildFlavour() const = 0;

    /// The kind of a development release, for `getReleaseKind`.
    static constexpr int developmentRelease = 3;
};

/// The records of the libraries that are initialised, in the order of their registration. Application thread only.
class KO_BASE_API InBuildInfoUtil {
public:
    /// Adds a record; called by the initialise hook of a library's package.
    static void registerInfo(OPtr<InBuildInfo> info);
    /// The records, which live until the process ends.
    [[nodiscard]] static std::vector<InBuildInfo const*> getInfos();
};

} // namespace Ko
