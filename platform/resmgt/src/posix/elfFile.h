#pragma once

#include "resmgt/liString.h"
#include "resmgt/osFilePath.h"

namespace Ko {

/// What the headers of a shared library say, read with bounds: whatever a file contains, nothing is read outside of it.
struct ElfFile {
    enum class State {
        /// There is no such file, or it is none for this system: the loader says why, or searches for another one.
        Foreign,
        /// The file ends before the contents that its headers list: the loader would map it, and the process would die of
        /// the first page that is missing.
        CutOff,
        /// What the loader reads first lies outside of the library's segments: the process would die of it.
        Damaged,
        Complete
    };

    State state = State::Foreign;
    /// The names of the libraries that it needs, as they stand in it.
    Vector<LiString> needed;
    /// Where it says that these are; lists with ':' between the directories.
    LiString rpath, runpath;
};

/// Reads the headers of a library, not its contents.
[[nodiscard]] ElfFile readElfFile(OsFilePath const& path);

} // namespace Ko
