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

/// The settings of the sources, by the simplest code; none is valid where `isReadable` is false.
struct Model {
    bool isReadable = true;
    std::map<std::string, std::string> keys;
    std::vector<std::string> assigned; // in the order of the command line
    std::vector<std::string> kept;

    void readFile(std::string const& text) {
        for (char const* const mark : {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"})
            isReadable = isReadable && !text.starts_with(mark);
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);)
            isReadable = readLine(line) && isReadable;
    }

    bool readLine(std::string const& line) {
        std::size_t const sign = line.find_first_of("=#");
        std::string const key = trimmed(line.substr(0, sign));
        if (sign == std::string::npos || line[sign] == '#') return key.empty();
        std::string const value = trimmed(line.substr(sign + 1));
        if (key.empty()) return false;
        if (value.starts_with('"')) return readQuoted(keys[key], value.substr(1));
        keys[key] = trimmed(value.substr(0, value.find('#')));
        return true;
    }

    // A line contains no line end, so a line end can stand for two quotation marks.
    static bool readQuoted(std::string& value, std::string text) {
        for (std::size_t at = 0; (at = text.find("\"\"")) != std::string::npos;)
            text.replace(at, 2, "\n");
        std::size_t const end = text.find('"');
        if (end == std::string::npos) return false;
        value = text.substr(0, end);
        std::replace(value.begin(), value.end(), '\n', '"');
        std::string const after = trimmed(text.substr(end + 1));
        return after.empty() || after[0] == '#';
    }

    void readArguments(std::vector<std::string> const& arguments) {
        for (std::size_t index = 0; index < arguments.size(); ++index) {
            auto const alias = std::find_if(aliases.begin(), aliases.end(),
                [&](std::string const& name) { return arguments[index].starts_with(name); });
            if (alias == aliases.end()) {
                kept.push_back(arguments[index]);
                continue;
            }
            std::string const value = arguments[index].substr(alias->size());
            if (value.empty() && ++index == arguments.size())
                isReadable = false;
            else
                assigned.push_back(value.empty() ? arguments[index] : value);
        }
    }

    std::optional<std::string> value(std::string const& environment) const {
        if (!assigned.empty()) return assigned.back();
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
