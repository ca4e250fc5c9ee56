#include "resmgt/osFsUtils.h"

#include "resmgt/osFile.h"
#include "resmgt/src/files/pathRoot.h"
#include "resmgt/src/windows/systemError.h"
#include "resmgt/src/windows/utf16.h"

#include <algorithm>
#include <string_view>
#include <windows.h>

namespace Ko {

namespace {

/// The files and folders of a folder, one after the other.
class Search {
public:
    explicit Search(OsFilePath const& folder)
        : _handle(::FindFirstFileExW(
              toSystemPath(folder + "*").c_str(), FindExInfoBasic, &_entry, FindExSearchNameMatch, nullptr, 0)),
          _hasEntry(_handle != INVALID_HANDLE_VALUE), _error(_hasEntry ? ERROR_SUCCESS : ::GetLastError()) {}
    ~Search() {
        if (_handle != INVALID_HANDLE_VALUE) ::FindClose(_handle);
    }
    Search(Search const&) = delete;
    Search& operator=(Search const&) = delete;

    bool hasEntry() const noexcept { return _hasEntry; }
    LiString name() const { return fromUtf16(_entry.cFileName); }
    void next() noexcept {
        _hasEntry = ::FindNextFileW(_handle, &_entry) != 0;
        if (!_hasEntry) _error = ::GetLastError();
    }
    // After the last entry. A drive's root that holds nothing has no entry at all.
    bool isComplete() const noexcept { return _error == ERROR_NO_MORE_FILES || _error == ERROR_FILE_NOT_FOUND; }
    DWORD error() const noexcept { return _error; }

private:
    WIN32_FIND_DATAW _entry{};
    HANDLE _handle;
    bool _hasEntry;
    DWORD _error;
};

[[noreturn]] void throwUnreadable(OsFilePath const& directory, LiString const& problem, int line = __builtin_LINE()) {
    throw OsFileEx::ExInvalidPath("resmgt\\src\\osFsUtils", line, "OsFsUtils::getChildren", directory, problem);
}

bool isChild(std::string_view name) {
    return name != "." && name != "..";
}

LiString currentFolder() {
    std::wstring folder(::GetCurrentDirectoryW(0, nullptr), L'\0');
    folder.resize(::GetCurrentDirectoryW(static_cast<DWORD>(folder.size()), folder.data()));
    return fromUtf16(folder);
}

} // namespace

OsFilePath OsFsUtils::getAbsolute(OsFilePath const& path) {
    if (path.isAbsolute()) return path;
    // "C:x" starts at the current folder of that drive, which only the system knows.
    if (pathRootLength(path.getPath()) > 0) return fromUtf16(toFullPath(toUtf16(path.getPath())));
    OsFilePath absolute = currentFolder();
    if (absolute.isEmpty()) return path;
    std::string_view rest = path.getPath();
    while (!rest.empty()) {
        auto const length = std::min(rest.find_first_of("/\\"), rest.size());
        if (std::string_view const segment = rest.substr(0, length); !segment.empty() && segment != ".")
            absolute = absolute + OsFilePath(LiString(segment));
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    return absolute;
}

Vector<OsFilePath> OsFsUtils::getChildren(OsFilePath const& directory, OsWildcardFilter const& filter) {
    if (directory.hasZeroByte()) throwUnreadable(directory.getPath().c_str(), "It contains a zero byte");
    if (OsFile::getInfo(directory) && !isDirectory(directory)) throwUnreadable(directory, "Not a directory");
    Vector<OsFilePath> children;
    Search search(directory);
    for (; search.hasEntry(); search.next())
        if (LiString const name = search.name(); isChild(name) && filter.matches(name))
            children.push_back(directory + name);
    if (!search.isComplete()) throwUnreadable(directory, describeError(search.error()));
    std::sort(children.begin(), children.end());
    return children;
}

} // namespace Ko
