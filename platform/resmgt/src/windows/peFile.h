#pragma once

#include "resmgt/liString.h"
#include "resmgt/osFilePath.h"

namespace Ko {

/// The headers of a shared library, read with bounds: nothing outside of the file is read, whatever its headers claim.
struct PeFile {
    enum class State {
        /// The file does not exist or is not a library for this machine: the loader reports that.
        Foreign,
        /// The file ends before the contents that its headers list.
        CutOff,
        Complete
    };

    State state = State::Foreign;
    /// The names of the libraries that it needs, as they stand in it.
    Vector<LiString> needed;
};

/// Reads the headers of a library, not its contents.
[[nodiscard]] PeFile readPeFile(OsFilePath const& path);

} // namespace Ko
