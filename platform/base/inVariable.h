#pragma once

#include "base/baseApi.h"
#include "base/inPackageInit.h"

#include <optional>
#include <string>
#include <vector>

namespace Ko {

/// The context of an alias: the command line.
struct InInitArg {};
/// The context of an alias: the environment.
struct InInitEnv {};

/// Base of the variables of all types: a key, and the aliases under which the command line and the environment assign it.
class KO_BASE_API InVariableBase {
public:
    InVariableBase(InVariableBase const&) = delete;
    InVariableBase& operator=(InVariableBase const&) = delete;

    /// The key in the configuration file.
    [[nodiscard]] std::string const& getKey() const noexcept { return _key; }
    /// What the variable is for, for a list of settings.
    [[nodiscard]] std::string const& getDescription() const noexcept { return _description; }
    /// Whether a source assigned a value.
    [[nodiscard]] bool isValid() const noexcept { return _value.has_value(); }

    /// Takes the value from the command line, else the environment, else the configuration file.
    void resolve();

    /// The aliases for the command line.
    [[nodiscard]] std::vector<std::string> const& getArgumentAliases() const noexcept { return _argumentAliases; }

protected:
    /// @param owner has the variable resolved right before its initialise hook.
    InVariableBase(InPackageInit& owner, std::string key, std::string description);
    ~InVariableBase() = default;

    /// @throws InInitEx when no source assigned a value.
    std::string const& value() const;

private:
    template <class Context, int Values>
    friend class InContextAlias;

    std::string _key;
    std::string _description;
    std::vector<std::string> _argumentAliases;
    std::vector<std::string> _environmentAliases;
    std::optional<std::string> _value;
};

/// A setting of a package, under a key such as "marlo::deployment::pluginsDir".
///
/// Read once, right before the initialise hook of the package that owns it: the command line wins over the environment,
/// and that over the configuration file. That file is the one that `KO_CONFIG_FILE` names, or `koframework.conf` in the
/// installation directory, if there is one. Each of its lines is `key = value`, or a comment after `#`. A value that
/// contains `#`, or blanks at its ends, stands in quotation marks; two quotation marks within it stand for one.
///
/// Of a setting that is given twice, the last one counts, in the file and on the command line. Assignments to variables of
/// a library that is opened later are kept for it; on the command line they also stay among the arguments.
template <class T>
class InVariable;

/// A setting whose value is a text.
template <>
class KO_BASE_API InVariable<char const*> : public InVariableBase {
public:
    /// @param owner reads the variable before its initialise hook; must live as long as the variable.
    InVariable(InPackageInit& owner, std::string key, std::string description)
        : InVariableBase(owner, std::move(key), std::move(description)) {}

    /// The value, which lives as long as the variable.
    /// @throws InInitEx when the variable is not valid.
    [[nodiscard]] char const* get() const { return value().c_str(); }
};

/// A name under which a context assigns a variable. On the command line, `Values` 1 means that a value follows the alias,
/// in the same argument or as the next one: "plugins:/usr/lib/x" or "plugins:" "/usr/lib/x".
template <class Context, int Values>
class InContextAlias;

/// An alias on the command line, which a value follows.
template <>
class KO_BASE_API InContextAlias<InInitArg, 1> {
public:
    /// @param variable is not resolved yet: the alias is a member beside it.
    InContextAlias(InVariableBase& variable, std::string alias) {
        variable._argumentAliases.push_back(std::move(alias));
    }
};

/// The name of an environment variable whose value is the variable's.
template <>
class KO_BASE_API InContextAlias<InInitEnv, 0> {
public:
    /// @param variable is not resolved yet: the alias is a member beside it. Of several such aliases the first that is set
    ///   counts.
    InContextAlias(InVariableBase& variable, std::string alias) {
        variable._environmentAliases.push_back(std::move(alias));
    }
};

} // namespace Ko
