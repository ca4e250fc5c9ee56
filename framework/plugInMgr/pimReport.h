#pragma once

#include "framework/plugInMgr/pimDeclaration.h"

#include <cstdint>

namespace Ko {

/// The progress of a plug-in from its file to its packages.
enum class PimStage : std::uint8_t {
    /// It was found and passed over: by the inclusion and exclusion rules, because it is no file with content, or because
    /// another library of that file name was loaded before. Also a plug-in that is being loaded right now.
    Found,
    /// It was refused by its declaration, or by those of the plug-ins that it requires. None of its code has run.
    Refused,
    /// It was loaded.
    Loaded,
    /// Its library could not be opened (OsSharedLibEx), or its packages could not be initialised (any other exception).
    Failed
};

/// The state of one file.
struct PimFinding {
    /// The file, with its directory.
    OsFilePath path;
    /// Its stage.
    PimStage stage;
    /// Why it was not loaded; empty for a plug-in that was.
    LiString reason;
    /// What the plug-in declares. Nothing where it declares nothing, or its file was not read.
    std::optional<PimDeclaration> declaration;
};

/// The directories in which this process has searched for plug-ins, and the state of each file.
struct PimReport {
    /// The directories that were searched, in the order of their first search.
    Vector<OsFilePath> directories;
    /// The files whose names were asked for, in the order in which they were found, each once with its present stage.
    Vector<PimFinding> plugIns;
};

} // namespace Ko
