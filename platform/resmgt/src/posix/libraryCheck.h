#pragma once

#include "resmgt/osFilePath.h"

#include <optional>

namespace Ko {

/// Looks for a cut-off or damaged file among a library and the libraries that would be loaded with it: the loader would map
/// it, and the process would die of it. Libraries that the process has loaded already are not checked.
///
/// The others are searched for as the loader does, except in directories that only its cache names.
/// @param path has a directory.
/// @returns the problem, with the path of the needed library if that has it: "file is cut off".
[[nodiscard]] std::optional<LiString> findBrokenLibrary(OsFilePath const& path);

} // namespace Ko
