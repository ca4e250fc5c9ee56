#include "base/src/libraryPath.h"

#include <dlfcn.h>
#include <filesystem>

namespace Ko {

std::string baseLibraryPath() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void const*>(&baseLibraryPath), &info) == 0 || !info.dli_fname) return {};
    return std::filesystem::absolute(info.dli_fname).lexically_normal().string();
}

void const* libraryOf(void const* object) noexcept {
    Dl_info info{};
    return dladdr(object, &info) == 0 ? nullptr : info.dli_fbase;
}

} // namespace Ko
