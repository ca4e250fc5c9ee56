#include "resmgt/osSharedLib.h"

#include "resmgt/src/windows/libraryCheck.h"
#include "resmgt/src/windows/systemError.h"
#include "resmgt/src/windows/utf16.h"

#include <windows.h>

namespace Ko {

namespace {

constexpr char const* source = "resmgt\\src\\osSharedLib";

/// Keeps the system from showing a message box about the library.
class ErrorsReported {
public:
    ErrorsReported() noexcept { ::SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &_before); }
    ~ErrorsReported() { ::SetThreadErrorMode(_before, nullptr); }
    ErrorsReported(ErrorsReported const&) = delete;
    ErrorsReported& operator=(ErrorsReported const&) = delete;

private:
    DWORD _before = 0;
};

LiString describe(DWORD error, OsFilePath const& path, OsFilePath const& file) {
    LiString words = path.getPath() + ": " + describeError(error, path.getPath());
    if (error == ERROR_MOD_NOT_FOUND)
        if (LiString const missing = findMissingLibrary(file); !missing.empty()) words += ": it needs " + missing;
    return words;
}

} // namespace

char const* OsSharedLib::getSuffix() noexcept {
    return ".dll";
}

char const* OsSharedLib::getMinSuffix() noexcept {
    return ".dll";
}

OsSharedLib OsSharedLib::open(OsFilePath const& path) {
    if (path.hasZeroByte())
        throw OsSharedLibEx(source, __LINE__, LiString(path.getPath().c_str()) + ": the path contains a zero byte");
    std::wstring const full = toFullPath(toUtf16(path.getPath()));
    OsFilePath const file = fromUtf16(full);
    if (auto const problem = findCutOffLibrary(file))
        throw OsSharedLibEx(source, __LINE__, path.getPath() + ": " + *problem);
    OsSharedLib library(path, nullptr); // allocates before the opening, which cannot be undone
    ErrorsReported const errors;
    // What it needs is searched for beside it, beside the program, and in the system's folders; not in the current one.
    constexpr DWORD flags = LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS;
    library._handle = ::LoadLibraryExW(full.c_str(), nullptr, flags);
    if (!library._handle) throw OsSharedLibEx(source, __LINE__, describe(::GetLastError(), path, file));
    return library;
}

void* OsSharedLib::getSymbol(LiString const& name) const {
    if (name.find('\0') != LiString::npos)
        throw OsSharedLibEx(source, __LINE__, _path.getPath() + ": the symbol's name contains a zero byte");
    FARPROC const symbol = ::GetProcAddress(static_cast<HMODULE>(_handle), name.c_str());
    if (!symbol) throw OsSharedLibEx(source, __LINE__, _path.getPath() + ": " + name + ": " + describeLastError());
    return reinterpret_cast<void*>(symbol);
}

} // namespace Ko
