#pragma once

#include "resmgt/osFilePath.h"

#include <optional>

namespace Ko {

/// Looks for a cut-off or damaged file among a library and the libraries that would be loaded with it: the loader would map
/// it, and the process would die of it. Libraries that the process has loaded already are not looked at.
///
/// The others are searched for where the loader searches, but for the directories that only its cache names.
/// @param path has a directory.
/// @returns what is wrong, with the name of the needed library if it is one: "file is cut off".
[[nodiscard]] std::optional<LiString> findBrokenLibrary(OsFilePath const& path);

} // namespace Ko
