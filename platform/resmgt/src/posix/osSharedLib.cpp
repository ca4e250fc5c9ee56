#include "resmgt/osSharedLib.h"

#include "resmgt/src/posix/descriptor.h"

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Ko {

namespace {

constexpr char const* source = "resmgt\\src\\osSharedLib";

std::uint64_t sizeOf(Descriptor const& file) noexcept {
    struct stat status {};
    return ::fstat(file.get(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

bool read(Descriptor const& file, std::uint64_t offset, void* target, std::size_t size) noexcept {
    return ::pread(file.get(), target, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

bool isOfThisSystem(ElfW(Ehdr) const& header) noexcept {
    constexpr unsigned char ownClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_ident[EI_CLASS] == ownClass &&
           header.e_phentsize == sizeof(ElfW(Phdr));
}

// Whether a library ends before what its own headers list. The system would map it nevertheless, and the process die of
// the first page that is missing. What is no library at all is left to the system to judge.
bool isCutOff(OsFilePath const& path) {
    Descriptor const file(::open(path.getPath().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    ElfW(Ehdr) header{};
    if (!read(file, 0, &header, sizeof header) || !isOfThisSystem(header)) return false;
    std::uint64_t const size = sizeOf(file);
    Vector<ElfW(Phdr)> segments(header.e_phnum);
    if (!read(file, header.e_phoff, segments.data(), segments.size() * sizeof(ElfW(Phdr)))) return true;
    // Written so that no offset of a damaged header overflows.
    auto const isBeyond = [size](std::uint64_t offset, std::uint64_t length) {
        return length > size || offset > size - length;
    };
    bool const endsInSections =
        header.e_shnum != 0 && isBeyond(header.e_shoff, std::uint64_t{header.e_shnum} * header.e_shentsize);
    return endsInSections || std::any_of(segments.begin(), segments.end(), [&](ElfW(Phdr) const& segment) {
        return segment.p_type == PT_LOAD && isBeyond(segment.p_offset, segment.p_filesz);
    });
}

// What the loader says names the library that fails, which may be one that the path's library needs.
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
    if (isCutOff(path)) throw OsSharedLibEx(source, __LINE__, path.getPath() + ": file is cut off");
    // Without a separator, the loader would search its own directories.
    bool const isBare = path.getDirectory().isEmpty();
    OsFilePath const file = isBare ? OsFilePath(".") + path : path;
    OsSharedLib library(path, nullptr); // before, because an opened library cannot be closed again
    library._handle = ::dlopen(file.getPath().c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library._handle) throw OsSharedLibEx(source, __LINE__, lastWords(path));
    return library;
}

void* OsSharedLib::getSymbol(LiString const& name) const {
    ::dlerror();
    void* const symbol = ::dlsym(_handle, name.c_str());
    if (!symbol) throw OsSharedLibEx(source, __LINE__, lastWords(_path));
    return symbol;
}

} // namespace Ko
