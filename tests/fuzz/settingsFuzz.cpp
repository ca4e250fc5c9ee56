// Input: a configuration file, the environment's value, and then an argument a field. The variable is "key", on the command
// line "dir:" and "d:".
#include "base/inInitMgr.h"
#include "base/inVariable.h"
#include "base/src/inConfiguration.h"
#include "tests/fuzz/fuzzing.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace {

using namespace Ko;
using namespace KoFuzz;

std::vector<std::string> const aliases{"dir:", "d:"};

class Package final : public InPackageInit {
public:
    Package() : InPackageInit("fuzz", typeid(Package)) {}
    void setInitialized(bool) override {}

    InVariable<char const*> variable{*this, "key", "A variable."};
    InContextAlias<InInitArg, 1> const longAlias{variable, aliases[0]};
    InContextAlias<InInitArg, 1> const shortAlias{variable, aliases[1]};
    InContextAlias<InInitEnv, 0> const environment{variable, "KO_FUZZ_VARIABLE"};
};

std::string trimmed(std::string text) {
    text.erase(text.find_last_not_of(" \t\r") + 1);
    text.erase(0, text.find_first_not_of(" \t\r"));
    return text;
}

/// What the sources say, in the simplest words; none is valid where `isReadable` is false.
struct Model {
    bool isReadable = true;
    std::map<std::string, std::string> keys;
    std::map<std::string, std::string> assigned; // by alias
    std::vector<std::string> kept;

    void readFile(std::string const& text) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            std::string const content = trimmed(line.substr(0, line.find('#')));
            std::size_t const separator = content.find('=');
            if (separator != std::string::npos)
                keys[trimmed(content.substr(0, separator))] = trimmed(content.substr(separator + 1));
            else if (!content.empty())
                isReadable = false;
        }
    }

    void readArguments(std::vector<std::string> const& arguments) {
        for (std::size_t index = 0; index < arguments.size(); ++index) {
            auto const alias = std::find_if(aliases.begin(), aliases.end(),
                [&](std::string const& name) { return arguments[index].starts_with(name); });
            if (alias == aliases.end()) {
                kept.push_back(arguments[index]);
                continue;
            }
            std::string value = arguments[index].substr(alias->size());
            if (value.empty() && ++index == arguments.size())
                isReadable = false;
            else
                assigned.emplace(*alias, value.empty() ? arguments[index] : value);
        }
    }

    std::optional<std::string> value(std::string const& environment) const {
        for (std::string const& alias : aliases)
            if (auto const found = assigned.find(alias); found != assigned.end()) return found->second;
        // An empty field stands for a variable that is not there.
        if (!environment.empty()) return environment;
        auto const found = keys.find("key");
        return found == keys.end() ? std::nullopt : std::optional(found->second);
    }
};

bool readSettings(std::vector<std::string>& arguments, std::vector<std::string>& kept) {
    std::vector<char*> argv{nullptr};
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    int argc = static_cast<int>(argv.size());
    argv.push_back(nullptr);
    try {
        InConfiguration::getInstance() = InConfiguration();
        InConfiguration::getInstance().read(argc, argv.data(), aliases);
    } catch (InInitEx const&) {
        return false;
    }
    expect(argv[static_cast<std::size_t>(argc)] == nullptr, "arguments end with a null pointer");
    kept.assign(argv.begin() + 1, argv.begin() + argc);
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static Folder const folder;
    static Package package;
    auto fields = fieldsOf(textOf(data, size), 2);
    ::setenv("KO_CONFIG_FILE", folder.write("settings.conf", fields[0]).c_str(), 1);
    std::string const environment = cText(fields[1]);
    environment.empty() ? ::unsetenv("KO_FUZZ_VARIABLE") : ::setenv("KO_FUZZ_VARIABLE", environment.c_str(), 1);
    std::vector<std::string> arguments(fields.begin() + 2, fields.end());
    std::transform(arguments.begin(), arguments.end(), arguments.begin(), &cText);

    Model model;
    model.readFile(fields[0]);
    model.readArguments(arguments);
    std::vector<std::string> kept;
    expect(readSettings(arguments, kept) == model.isReadable, "what cannot be understood is refused, and nothing else");
    if (!model.isReadable) return 0;
    expect(kept == model.kept, "arguments that assign nothing are kept in their order");
    package.variable.resolve();
    auto const expected = model.value(environment);
    expect(package.variable.isValid() == expected.has_value(), "a variable is valid where a source assigns it");
    expect(!expected || cText(*expected) == package.variable.get(), "command line over environment over file");
    return 0;
}
