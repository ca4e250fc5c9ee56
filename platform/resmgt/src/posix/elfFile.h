#pragma once

#include "resmgt/liString.h"
#include "resmgt/osFilePath.h"

#include <cstddef>
#include <optional>

namespace Ko {

/// The headers of a shared library, read with bounds: nothing outside of the file is read, whatever its headers claim.
struct ElfFile {
    enum class State {
        /// The file does not exist or is not a library for this system: the loader reports that, or searches for another one.
        Foreign,
        /// The file ends before the contents that its headers list: the loader would map it, and the process would die of
        /// the first page that is missing.
        CutOff,
        /// Tables that the loader reads lie outside of the library's segments: the process would die of reading them.
        Damaged,
        Complete
    };

    State state = State::Foreign;
    /// The names of the libraries that it needs, as they stand in it.
    Vector<LiString> needed;
    /// The directories in which it searches for these, with ':' between them.
    LiString rpath, runpath;
};

/// Reads the headers of a library, not its contents.
[[nodiscard]] ElfFile readElfFile(OsFilePath const& path);

} // namespace Ko
