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

/// What variables of every type share: a key, and the aliases under which the command line and the environment assign it.
class KO_BASE_API InVariableBase {
public:
    InVariableBase(InVariableBase const&) = delete;
    InVariableBase& operator=(InVariableBase const&) = delete;

    /// As they were given; the key is that of the configuration file:
    std::string const& getKey() const noexcept { return _key; }
    std::string const& getDescription() const noexcept { return _description; }
    /// Whether any source assigned a value.
    bool isValid() const noexcept { return _value.has_value(); }

    /// Takes the value from the command line, else the environment, else the configuration file.
    void resolve();

    /// The names that the command line knows the variable by.
    std::vector<std::string> const& getArgumentAliases() const noexcept { return _argumentAliases; }

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
/// and that over the configuration file, which is the file that `KO_CONFIG_FILE` names or `koframework.conf` in the
/// installation directory, with one `key = value` a line and comments after `#`.
template <class T>
class InVariable;

/// A setting that is a text.
template <>
class KO_BASE_API InVariable<char const*> : public InVariableBase {
public:
    /// @param owner must live as long as the variable.
    InVariable(InPackageInit& owner, std::string key, std::string description)
        : InVariableBase(owner, std::move(key), std::move(description)) {}

    /// @returns a text that lives as long as the variable.
    /// @throws InInitEx when the variable is not valid.
    char const* get() const { return value().c_str(); }
};

/// Another name under which a context assigns a variable. On the command line, `Values` 1 means that a value follows the
/// alias, in the same argument or as the next one: "plugins:/usr/lib/x" or "plugins:" "/usr/lib/x".
template <class Context, int Values>
class InContextAlias;

/// The command line, where a value follows.
template <>
class KO_BASE_API InContextAlias<InInitArg, 1> {
public:
    /// Before the variable is resolved: a member beside it.
    InContextAlias(InVariableBase& variable, std::string alias) {
        variable._argumentAliases.push_back(std::move(alias));
    }
};

/// The environment, which assigns a variable of that name.
template <>
class KO_BASE_API InContextAlias<InInitEnv, 0> {
public:
    /// Before the variable is resolved: a member beside it.
    InContextAlias(InVariableBase& variable, std::string alias) {
        variable._environmentAliases.push_back(std::move(alias));
    }
};

} // namespace Ko
