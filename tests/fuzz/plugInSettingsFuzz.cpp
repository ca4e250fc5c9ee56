// Input: the values of plugins_include and plugins_exclude, the list of directories, and then the file name of a plug-in a
// field. The current directory, which is the installation directory too, holds the directories "a", "b/c" and "plugins", and
// a file "file".

// The package as it is, to be set up again for each input.
#include "framework/plugInMgr/src/plugInMgrInit.cpp"

#include "base/inInitMgr.h"
#include "resmgt/lgGroups.h"
#include "resmgt/liStringParser.h"
#include "tests/fuzz/fuzzing.h"

#include <algorithm>

namespace {

using namespace Ko;
using namespace KoFuzz;

/// Keeps the last line of the log, about the file that was asked for last.
class LastLine final : public LgSink {
public:
    void write(LgRecord const& record) override { text = record.text; }
    std::string text;
};

// Whether the list has rules for plug-ins of the type, and whether one of these names the plug-in.
struct Verdict {
    bool isForType = false, isNamed = false;
};

Verdict modelVerdict(std::string const& list, std::string const& name, std::string const& type) {
    Verdict verdict;
    for (std::string const& rule : LiStringParser::splitList(list, ",")) {
        std::size_t const sign = rule.find('=');
        if (sign == std::string::npos || sign + 1 == rule.size() || rule.substr(0, sign) != type) continue;
        std::string const fragment = rule.substr(sign + 1);
        verdict.isForType = true;
        verdict.isNamed = verdict.isNamed || fragment == "all" || name.find(fragment) != std::string::npos;
    }
    return verdict;
}

bool modelIsFilteredOut(std::string const& includes, std::string const& excludes, std::string const& file) {
    std::string const base = file.substr(0, file.rfind('.'));
    auto const dot = base.rfind('.');
    std::string const name = base.substr(0, dot), type = dot == std::string::npos ? "" : base.substr(dot + 1);
    Verdict const included = modelVerdict(includes, name, type);
    return (included.isForType && !included.isNamed) || modelVerdict(excludes, name, type).isNamed;
}

std::vector<std::filesystem::path> modelDirectories(
    std::filesystem::path const& installation, std::string const& list) {
    std::vector<std::filesystem::path> directories;
    if (list.empty()) return {installation / "plugins"};
    for (std::string const& name : LiStringParser::splitList(list, ":"))
        if (std::error_code error; std::filesystem::is_directory(installation / name, error))
            directories.push_back(installation / name);
    return directories;
}

void set(char const* name, std::string const& value) {
    value.empty() ? ::unsetenv(name) : ::setenv(name, value.c_str(), 1);
}

void startWith(std::vector<std::string> const& fields) {
    set("KO_PLUGINS_INCLUDE", fields[0]);
    set("KO_PLUGINS_EXCLUDE", fields[1]);
    set("KO_PLUGINS_DIR", fields[2]);
    for (InVariableBase* const variable : package.getVariables())
        variable->resolve();
    PimUtils::setFilePaths({});
    package.finalize();
    package.initialize();
}

bool isSame(OsFilePath const& directory, std::filesystem::path const& path) {
    return std::filesystem::equivalent(directory.getPath(), path);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static Folder const folder;
    static auto const lastLine = std::make_shared<LastLine>();
    static bool const isPrepared = [] {
        for (char const* const directory : {"a", "b/c", "plugins"})
            std::filesystem::create_directories(folder / directory);
        folder.write("file", "");
        ::setenv("KO_INSTALL_DIR", (folder / "").c_str(), 1);
        std::filesystem::current_path(folder / "");
        InInitMgr::initialize();
        MsgProtocol::setHandler([](Msg const&) {});
        LgSinks::replace({lastLine});
        LgLevels::set("*:9");
        return true;
    }();
    auto fields = fieldsOf(textOf(data, size), 3);
    std::transform(fields.begin(), fields.end(), fields.begin(), &cText);
    expect(isPrepared, "the package starts");
    startWith(fields);
    expect(std::ranges::equal(PimUtils::getFilePaths(), modelDirectories(folder / "", fields[2]), &isSame),
        "those names of the list are searched that stand for directories");
    for (auto name = fields.begin() + 3; name != fields.end(); ++name) {
        // A file name has no slash, and the name ".so" has no suffix, as it begins with its only dot.
        if (name->empty() || name->find('/') != std::string::npos) continue;
        std::string const file = *name + ".so";
        PimUtils::load((folder / "no folder").string() + "/" + file, InInitMgr::Reinitialization);
        expect(lastLine->text.ends_with("is filtered out.") == modelIsFilteredOut(fields[0], fields[1], file),
            "a plug-in is left out as the rules say");
    }
    return 0;
}
