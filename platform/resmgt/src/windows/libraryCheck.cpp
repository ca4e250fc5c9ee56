#include "resmgt/src/windows/libraryCheck.h"

#include "resmgt/osFsUtils.h"
#include "resmgt/src/windows/peFile.h"
#include "resmgt/src/windows/utf16.h"

#include <algorithm>
#include <windows.h>

namespace Ko {

namespace {

bool isLoaded(LiString const& name) {
    return ::GetModuleHandleW(toUtf16(name).c_str()) != nullptr;
}

// Opened as a file of data: none of its code runs, and the names of the system's sets of functions are resolved.
bool isFoundBySystem(LiString const& name) {
    constexpr DWORD flags = LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS;
    HMODULE const library = ::LoadLibraryExW(toUtf16(name).c_str(), nullptr, flags);
    if (library) ::FreeLibrary(library);
    return library != nullptr;
}

/// A library and those that it needs, as far as they lie beside the first one.
class Neighbours {
public:
    explicit Neighbours(OsFilePath const& path) : _folder(path.getDirectory()) {
        take(path);
        for (std::size_t index = 0; index < _paths.size() && cutOff.isEmpty(); ++index)
            for (LiString const& name : Vector<LiString>(_needed[index]))
                takeNeeded(name);
    }

    OsFilePath cutOff;
    LiString missing;

private:
    void take(OsFilePath const& path) {
        if (std::find(_paths.begin(), _paths.end(), path) != _paths.end()) return;
        PeFile file = readPeFile(path);
        if (file.state == PeFile::State::CutOff) cutOff = path;
        _paths.push_back(path);
        _needed.push_back(std::move(file.needed));
    }
    void takeNeeded(LiString const& name) {
        if (!cutOff.isEmpty() || isLoaded(name)) return;
        if (OsFilePath const beside = _folder + OsFilePath(name); OsFsUtils::fileExists(beside))
            take(beside);
        else if (missing.empty() && !isFoundBySystem(name))
            missing = name;
    }

    OsFilePath _folder;
    Vector<OsFilePath> _paths;
    Vector<Vector<LiString>> _needed;
};

} // namespace

std::optional<LiString> findCutOffLibrary(OsFilePath const& path) {
    OsFilePath const cutOff = Neighbours(path).cutOff;
    if (cutOff.isEmpty()) return std::nullopt;
    return (cutOff == path ? LiString() : "needs " + cutOff.getPath() + ": ") + "file is cut off";
}

LiString findMissingLibrary(OsFilePath const& path) {
    return Neighbours(path).missing;
}

} // namespace Ko
