#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Ko {

/// The assignments of the command line and of the configuration file. Only `read` changes it.
class InConfiguration {
public:
    /// The configuration of the process, which is never destroyed.
    static InConfiguration& getInstance();

    /// Reads the configuration file and the command line, and removes the assignments to `aliases` from `argv`.
    /// @throws InInitEx naming the file and line, or the argument, that cannot be understood.
    void read(int& argc, char** argv, std::vector<std::string> const& aliases);

    /// The value of the last argument that assigns one of the aliases.
    std::optional<std::string> findArgument(std::vector<std::string> const& aliases) const;
    /// The value that the configuration file has for a key.
    std::optional<std::string> findKey(std::string const& key) const;

private:
    struct Argument {
        std::string text;
        std::optional<std::string> next;
    };

    void readArguments(int& argc, char** argv, std::vector<std::string> const& aliases);

    // All arguments but those that are the value of the one before. A library that is opened later may have further aliases.
    std::vector<Argument> _arguments;
    std::map<std::string, std::string> _keys;
};

} // namespace Ko
