#include "base/src/libraryPath.h"

#include "base/src/windows/utf16.h"

#include <windows.h>

namespace Ko {

namespace {

HMODULE moduleOf(void const* address) noexcept {
    constexpr DWORD byAddress = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE module = nullptr;
    ::GetModuleHandleExW(byAddress, static_cast<wchar_t const*>(address), &module);
    return module;
}

} // namespace

std::string baseLibraryPath() {
    HMODULE const module = moduleOf(reinterpret_cast<void const*>(&baseLibraryPath));
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        DWORD const length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        bool const isComplete = length < path.size();
        path.resize(isComplete ? length : 2 * path.size());
        if (isComplete) return fromUtf16(path);
    }
}

void const* libraryOf(void const* object) noexcept {
    return moduleOf(object);
}

} // namespace Ko
