#include "framework/plugInMgr/pimUtils.h"

#include "framework/plugInMgr/pimPlugInMgr.h"
#include "framework/plugInMgr/src/pimLog.h"
#include "framework/plugInMgr/src/pimReport.h"
#include "framework/plugInMgr/src/pimSettings.h"
#include "resmgt/liStringParser.h"
#include "resmgt/osFile.h"
#include "resmgt/osFsUtils.h"
#include "resmgt/osSharedLib.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace Ko {

namespace {

constexpr char const* source = "framework\\plugInMgr\\src\\pimUtils";
constexpr int notADirectory = 380;

LiString const listSeparator = ",";
LiString const pairSeparator = "=";
LiString const everyName = "all";

// Fragments of names, by the type of the plug-ins to which they apply.
using Rules = std::unordered_map<LiString, Set<LiString>>;

class NullCallback final : public PimUtils::Callback {
public:
    void notifyLoading(OsFilePath const&) override {}
};

Vector<OsFilePath> filePaths;
Rules inclusions;
Rules exclusions;
NullCallback nullCallback;

Rules parseRules(InVariable<char const*> const& list) {
    Rules rules;
    if (!list.isValid()) return rules;
    LiString type, fragment;
    for (LiString const& rule : LiStringParser::splitList(list.get(), listSeparator)) {
        LiStringParser::splitString(rule, pairSeparator, type, fragment);
        if (!fragment.empty()) rules[type].insert(fragment);
    }
    return rules;
}

bool names(Set<LiString> const& fragments, LiString const& name) {
    return std::any_of(fragments.begin(), fragments.end(),
        [&](LiString const& fragment) { return fragment == everyName || name.find(fragment) != LiString::npos; });
}

// The parts of a text before and after its last dot. A text without a dot has only the first part.
struct Split {
    explicit Split(std::string_view text) : before(text.substr(0, text.rfind('.'))) {
        if (before.size() < text.size()) after = text.substr(before.size() + 1);
    }
    std::string_view before, after;
};

bool isFilteredOut(OsFilePath const& path) {
    static bool const hasSuffix = *OsSharedLib::getMinSuffix() != '\0';
    LiString const file = path.getFileName().getPath();
    // The type of ".op.so" is "op", although a path has no extension after a leading dot.
    Split const split(hasSuffix ? Split(file).before : file);
    LiString const name(split.before), type(split.after);
    if (auto const included = inclusions.find(type); included != inclusions.end() && !names(included->second, name))
        return true;
    auto const excluded = exclusions.find(type);
    return excluded != exclusions.end() && names(excluded->second, name);
}

bool skip(OsFilePath const& path, char const* why) {
    PimLog::write(PimLog::selection, [&] { return "Plugin '" + path.getPath() + "' " + why; });
    return false;
}

bool open(OsFilePath const& path, InInitMgr::InitType mode, PimUtils::Callback& callback) {
    try {
        callback.notifyLoading(path);
        PimPlugInMgr::getInstance().loadPlugIn(path, mode);
        return true;
    } catch (ExProgramAborted const&) {
        throw;
    } catch (OsSharedLibEx const& error) {
        PimReport::loadFailed(path, error);
    } catch (ExBase const& error) {
        PimReport::initFailed(path, error);
    }
    return false;
}

// Returns whether the plug-in is present.
bool loadFile(OsFilePath const& path, InInitMgr::InitType mode, PimUtils::Callback& callback) {
    if (PimPlugInMgr::getInstance().isLoaded(path)) return true;
    if (isFilteredOut(path)) return skip(path, "is filtered out.");
    auto const info = OsFile::getInfo(path);
    if (!info) return skip(path, "does not exist.");
    if (info->isDirectory || info->size == 0) return skip(path, "is a directory or empty.");
    return open(path, mode, callback);
}

LiString patternOf(std::string const& type) {
    return "*." + type + OsSharedLib::getMinSuffix();
}

} // namespace

PimUtils::Callback::~Callback() = default;

void PimUtils::initialize() {
    PimReport::initialize();
    PimSettings const& settings = PimSettings::get();
    inclusions = parseRules(settings.inclusions.variable);
    exclusions = parseRules(settings.exclusions.variable);
}

void PimUtils::addPiDirectoryPath(OsFilePath const& directory) {
    filePaths.push_back(directory);
}

void PimUtils::setFilePaths(Vector<OsFilePath> const& directories) {
    filePaths = directories;
}

Vector<OsFilePath> const& PimUtils::getFilePaths() {
    return filePaths;
}

PimUtils::Callback& PimUtils::getNullCb() {
    return nullCallback;
}

int PimUtils::loadType(
    OsFilePath const& directory, std::string const& type, InInitMgr::InitType mode, Callback& callback) {
    return loadWildcard(directory, patternOf(type), mode, callback);
}

int PimUtils::loadType(std::string const& type, InInitMgr::InitType mode, Callback& callback) {
    return loadWildcard(patternOf(type), mode, callback);
}

int PimUtils::loadWildcard(
    OsFilePath const& directory, std::string const& pattern, InInitMgr::InitType mode, Callback& callback) {
    if (!OsFsUtils::isDirectory(directory))
        throw OsFileEx::ExInvalidPath(source, notADirectory, "PimUtils::loadWildcard", directory);
    int loaded = 0;
    for (OsFilePath const& path : OsFsUtils::getChildren(directory, OsWildcardFilter(pattern)))
        if (loadFile(path, mode, callback)) ++loaded;
    return loaded;
}

int PimUtils::loadWildcard(std::string const& pattern, InInitMgr::InitType mode, Callback& callback) {
    int loaded = 0;
    // A copy, as a plug-in may add a directory while it is loaded.
    for (OsFilePath const& directory : Vector<OsFilePath>(filePaths))
        loaded += loadWildcard(directory, pattern, mode, callback);
    return loaded;
}

bool PimUtils::load(OsFilePath const& path, InInitMgr::InitType mode) {
    bool const isLibrary = path.getExtension() == OsSharedLib::getSuffix() + 1;
    OsFilePath const file = isLibrary ? path : OsFilePath(path.getPath() + OsSharedLib::getMinSuffix());
    if (file.getFileName() != file) return loadFile(file, mode, nullCallback);
    Vector<OsFilePath> const directories = filePaths;
    // An empty path names no directory. Joined with the file name, it would mean the current directory.
    return std::any_of(directories.begin(), directories.end(), [&](OsFilePath const& directory) {
        return !directory.isEmpty() && loadFile(directory + file, mode, nullCallback);
    });
}

} // namespace Ko
