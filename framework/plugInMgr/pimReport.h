#pragma once

#include "framework/plugInMgr/pimDeclaration.h"

#include <cstdint>

namespace Ko {

/// How far a plug-in has come.
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

/// What has become of one file.
struct PimFinding {
    /// The file, with its directory.
    OsFilePath path;
    /// How far it has come.
    PimStage stage;
    /// Why it came no further; empty for a plug-in that is loaded.
    LiString reason;
    /// What the plug-in declares. Nothing where it declares nothing, or its file was not read.
    std::optional<PimDeclaration> declaration;
};

/// Where plug-ins were looked for in this process, and what has become of each file.
struct PimReport {
    /// The directories that were searched, in the order of their first search.
    Vector<OsFilePath> directories;
    /// The files whose names were asked for, in the order in which they were found, each once with its present stage.
    Vector<PimFinding> plugIns;
};

} // namespace Ko
