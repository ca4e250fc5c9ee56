#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Ko {

/// What the command line and the configuration file assign. Written by `read` alone.
class InConfiguration {
public:
    static InConfiguration& getInstance();

    /// Reads the configuration file and the command line, and takes the assignments to `aliases` out of `argv`.
    /// @throws InInitEx naming the file and line, or the argument, that cannot be understood.
    void read(int& argc, char** argv, std::vector<std::string> const& aliases);

    std::optional<std::string> findArgument(std::string const& alias) const;
    std::optional<std::string> findKey(std::string const& key) const;

private:
    struct Argument {
        std::string text;
        std::optional<std::string> next;
    };

    void readFile();
    void readArguments(int& argc, char** argv, std::vector<std::string> const& aliases);

    // Without those that are the value of the one before.
    std::vector<Argument> _arguments;
    std::map<std::string, std::string> _keys;
};

} // namespace Ko
