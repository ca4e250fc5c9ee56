#include "resmgt/src/environment/systemMemory.h"

#include <windows.h>

namespace Ko {

OsMemoryArch::Memory readSystemMemory() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    if (::GlobalMemoryStatusEx(&status) == 0) return {};
    return {status.ullAvailPhys, status.ullTotalPhys, status.ullAvailPageFile};
}

} // namespace Ko
