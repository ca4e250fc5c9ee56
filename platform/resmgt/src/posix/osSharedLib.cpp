#include "resmgt/osSharedLib.h"

#include "resmgt/src/posix/elfFile.h"
#include "resmgt/src/posix/libraryCheck.h"

#include <dlfcn.h>

namespace Ko {

namespace {

constexpr char const* source = "resmgt\\src\\osSharedLib";

// The loader's message, with the path before it: the library that it names may be one that the library needs.
LiString lastWords(OsFilePath const& path) {
    char const* const error = ::dlerror();
    LiString const words = error ? error : "unknown error";
    return words.starts_with(path.getPath()) ? words : path.getPath() + ": " + words;
}

} // namespace

char const* OsSharedLib::getSuffix() noexcept {
    return ".so";
}

char const* OsSharedLib::getMinSuffix() noexcept {
    return ".so";
}

OsSharedLib OsSharedLib::open(OsFilePath const& path) {
    if (path.hasZeroByte())
        throw OsSharedLibEx(source, __LINE__, LiString(path.getPath().c_str()) + ": the path contains a zero byte");
    // Without a separator, the loader would search its own directories.
    bool const isBare = path.getDirectory().isEmpty();
    OsFilePath const file = isBare ? OsFilePath(".") + path : path;
    if (auto const problem = findBrokenLibrary(file))
        throw OsSharedLibEx(source, __LINE__, path.getPath() + ": " + *problem);
    OsSharedLib library(path, nullptr); // allocates before the opening, which cannot be undone
    library._handle = ::dlopen(file.getPath().c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library._handle) throw OsSharedLibEx(source, __LINE__, lastWords(path));
    return library;
}

void* OsSharedLib::getSymbol(LiString const& name) const {
    if (name.find('\0') != LiString::npos)
        throw OsSharedLibEx(source, __LINE__, _path.getPath() + ": the symbol's name contains a zero byte");
    ::dlerror();
    void* const symbol = ::dlsym(_handle, name.c_str());
    if (!symbol) throw OsSharedLibEx(source, __LINE__, lastWords(_path));
    return symbol;
}

} // namespace Ko
