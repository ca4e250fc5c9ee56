#pragma once

#include "resmgt/osMemoryArch.h"

namespace Ko {

/// The system's own figures.
[[nodiscard]] OsMemoryArch::Memory readSystemMemory();

} // namespace Ko
