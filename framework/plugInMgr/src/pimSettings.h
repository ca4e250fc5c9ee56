#pragma once

#include "base/inVariable.h"

namespace Ko {

/// One variable of the package, with its names on the command line and in the environment.
struct PimSetting {
    PimSetting(
        InPackageInit& package, char const* key, char const* argument, char const* environment, char const* description)
        : variable(package, key, description), argumentAlias(variable, argument),
          environmentAlias(variable, environment) {}

    InVariable<char const*> variable;
    InContextAlias<InInitArg, 1> argumentAlias;
    InContextAlias<InInitEnv, 0> environmentAlias;
};

/// The settings of the package.
struct PimSettings {
    explicit PimSettings(InPackageInit& package)
        : directories(package, "marlo::deployment::pluginsDir", "plugins:", "KO_PLUGINS_DIR", "Plugins directory."),
          inclusions(
              package, "marlo::plugins::include", "plugins_include:", "KO_PLUGINS_INCLUDE", "Plugins inclusion list."),
          exclusions(package, "marlo::plugins::exclude", "plugins_exclude:", "KO_PLUGINS_EXCLUDE",
              "Plugins exclusion list.") {}

    /// The settings of the package of this process.
    static PimSettings const& get();

    PimSetting directories;
    PimSetting inclusions;
    PimSetting exclusions;
};

} // namespace Ko
