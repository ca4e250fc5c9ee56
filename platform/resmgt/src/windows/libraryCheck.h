#pragma once

#include "resmgt/osFilePath.h"

#include <optional>

namespace Ko {

/// Looks for a cut-off file among a library and the libraries beside it that would be loaded with it.
/// @param path with its drive and folders.
/// @returns the problem, with the path of the needed library if that has it: "file is cut off".
[[nodiscard]] std::optional<LiString> findCutOffLibrary(OsFilePath const& path);

/// The name of a library that is needed but neither loaded, nor lies beside those that need it, nor in the system's folders. The
/// system only says that one is missing.
/// @returns an empty text where none is found to be missing.
[[nodiscard]] LiString findMissingLibrary(OsFilePath const& path);

} // namespace Ko
