#pragma once

#include <string>
#include <utility>
#include <vector>

namespace KoTest {

/// The parameters of `main` for these arguments, after the name of the program.
class CommandLine {
public:
    explicit CommandLine(std::vector<std::string> arguments) : _arguments(std::move(arguments)) {
        _arguments.insert(_arguments.begin(), "program");
        for (std::string& argument : _arguments)
            _argv.push_back(argument.data());
        _argv.push_back(nullptr);
    }
    CommandLine(CommandLine const&) = delete;
    CommandLine& operator=(CommandLine const&) = delete;

    int argc() const { return static_cast<int>(_arguments.size()); }
    char** argv() { return _argv.data(); }

private:
    std::vector<std::string> _arguments;
    std::vector<char*> _argv;
};

} // namespace KoTest
