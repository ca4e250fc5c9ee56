#include "base/src/inConfiguration.h"

#include "base/inInitMgr.h"
#include "base/inPaths.h"
#include "base/neverDestroyed.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace Ko {

namespace {

constexpr char const* source = "base\\src\\inConfiguration";

std::string trimmed(std::string const& text) {
    constexpr char const* blanks = " \t\r";
    auto const first = text.find_first_not_of(blanks);
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<std::string> nextOf(int argc, char** argv, int index) {
    return index + 1 < argc ? std::optional<std::string>(argv[index + 1]) : std::nullopt;
}

} // namespace

InConfiguration& InConfiguration::getInstance() {
    static NeverDestroyed<InConfiguration> configuration;
    return *configuration;
}

void InConfiguration::read(int& argc, char** argv, std::vector<std::string> const& aliases) {
    readFile();
    readArguments(argc, argv, aliases);
}

void InConfiguration::readFile() {
    char const* const named = std::getenv("KO_CONFIG_FILE");
    std::string const path = named ? named : InPaths::getInstallDir() + "/koframework.conf";
    std::ifstream file(path);
    if (!file && named) throw InInitEx(source, __LINE__, "The configuration file \"" + path + "\" cannot be read.");
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        line = trimmed(line.substr(0, line.find('#')));
        if (line.empty()) continue;
        auto const separator = line.find('=');
        if (separator == std::string::npos)
            throw InInitEx(source, __LINE__, path + ":" + std::to_string(number) + ": expected \"key = value\".");
        _keys[trimmed(line.substr(0, separator))] = trimmed(line.substr(separator + 1));
    }
}

void InConfiguration::readArguments(int& argc, char** argv, std::vector<std::string> const& aliases) {
    if (argc < 1) return;
    _arguments.clear();
    int kept = 1;
    for (int index = 1; index < argc; ++index) {
        Argument const& argument = _arguments.emplace_back(Argument{argv[index], nextOf(argc, argv, index)});
        auto const alias = std::find_if(aliases.begin(), aliases.end(),
            [&](std::string const& candidate) { return argument.text.starts_with(candidate); });
        if (alias == aliases.end())
            argv[kept++] = argv[index];
        else if (argument.text.size() == alias->size() && ++index == argc)
            throw InInitEx(source, __LINE__, "The argument \"" + argument.text + "\" needs a value after it.");
    }
    argc = kept;
    argv[argc] = nullptr;
}

std::optional<std::string> InConfiguration::findArgument(std::string const& alias) const {
    for (Argument const& argument : _arguments) {
        if (!argument.text.starts_with(alias)) continue;
        if (argument.text.size() > alias.size()) return argument.text.substr(alias.size());
        if (argument.next) return argument.next;
    }
    return std::nullopt;
}

std::optional<std::string> InConfiguration::findKey(std::string const& key) const {
    auto const found = _keys.find(key);
    return found == _keys.end() ? std::nullopt : std::optional(found->second);
}

} // namespace Ko
