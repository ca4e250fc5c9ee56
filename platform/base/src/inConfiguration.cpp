#include "base/src/inConfiguration.h"

#include "base/inInitMgr.h"
#include "base/inPaths.h"
#include "base/neverDestroyed.h"
#include "base/src/environment.h"
#include "base/src/inConfigurationFile.h"

#include <algorithm>

namespace Ko {

namespace {

constexpr char const* source = "base\\src\\inConfiguration";

std::optional<std::string> nextOf(int argc, char** argv, int index) {
    return index + 1 < argc ? std::optional<std::string>(argv[index + 1]) : std::nullopt;
}

// The alias that an argument begins with; null where there is none.
std::string const* aliasOf(std::string const& argument, std::vector<std::string> const& aliases) {
    auto const alias = std::find_if(
        aliases.begin(), aliases.end(), [&](std::string const& candidate) { return argument.starts_with(candidate); });
    return alias == aliases.end() ? nullptr : &*alias;
}

std::map<std::string, std::string> readKeys() {
    auto const named = readEnvironment("KO_CONFIG_FILE");
    return readConfigurationFile(named ? *named : InPaths::getInstallDir() + "/koframework.conf", named.has_value());
}

} // namespace

InConfiguration& InConfiguration::getInstance() {
    static NeverDestroyed<InConfiguration> configuration;
    return *configuration;
}

void InConfiguration::read(int& argc, char** argv, std::vector<std::string> const& aliases) {
    _keys = readKeys();
    readArguments(argc, argv, aliases);
}

void InConfiguration::readArguments(int& argc, char** argv, std::vector<std::string> const& aliases) {
    if (argc < 1) return;
    _arguments.clear();
    int kept = 1;
    for (int index = 1; index < argc; ++index) {
        Argument const& argument = _arguments.emplace_back(Argument{argv[index], nextOf(argc, argv, index)});
        std::string const* const alias = aliasOf(argument.text, aliases);
        if (!alias)
            argv[kept++] = argv[index];
        else if (argument.text.size() == alias->size() && ++index == argc)
            throw InInitEx(source, __LINE__, "The argument \"" + argument.text + "\" needs a value after it.");
    }
    argc = kept;
    argv[argc] = nullptr;
}

std::optional<std::string> InConfiguration::findArgument(std::vector<std::string> const& aliases) const {
    for (auto argument = _arguments.rbegin(); argument != _arguments.rend(); ++argument) {
        std::string const* const alias = aliasOf(argument->text, aliases);
        if (!alias) continue;
        if (argument->text.size() > alias->size()) return argument->text.substr(alias->size());
        if (argument->next) return argument->next;
    }
    return std::nullopt;
}

std::optional<std::string> InConfiguration::findKey(std::string const& key) const {
    auto const found = _keys.find(key);
    return found == _keys.end() ? std::nullopt : std::optional(found->second);
}

} // namespace Ko
