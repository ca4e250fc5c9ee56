#pragma once

#include "resmgt/liString.h"
#include "resmgt/osFilePath.h"

#include <cstddef>

namespace Ko {

/// A section of a library's file.
struct LibrarySection {
    enum class State {
        /// There is no section of that name, or no library for this system, or the file is cut off before its table of sections.
        Missing,
        /// It lies outside of the file.
        Outside,
        /// It is larger than the limit.
        TooLarge,
        Complete
    };

    State state = State::Missing;
    LiString bytes;
};

/// Reads a section with bounds: nothing outside of the file is read, whatever its headers claim. Allocates no more than the size of
/// the file.
[[nodiscard]] LibrarySection readLibrarySection(OsFilePath const& path, LiString const& name, std::size_t limit);

} // namespace Ko
