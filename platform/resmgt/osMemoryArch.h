#pragma once

#include "resmgt/resmgtApi.h"

#include <cstdint>

namespace Ko {

/// How much memory the machine has. Any thread.
///
/// What a program asks through `getInstance()` can be answered by another object, for a test or for a host that knows
/// better how much it may use.
class KO_RESMGT_API OsMemoryArch {
public:
    /// All in bytes.
    struct Memory {
        /// What new work can have without other memory being moved to the page file.
        std::uint64_t freePhysical = 0;
        /// What the machine has.
        std::uint64_t totalPhysical = 0;
        /// What may still be promised to processes, the free physical memory included.
        std::uint64_t freePageFile = 0;
    };

    OsMemoryArch() = default;
    virtual ~OsMemoryArch();
    OsMemoryArch(OsMemoryArch const&) = delete;
    OsMemoryArch& operator=(OsMemoryArch const&) = delete;

    /// The figures of this moment.
    virtual Memory getMemory() const = 0;

    /// The system's own figures unless others were set.
    static OsMemoryArch const& getInstance() noexcept;
    /// @param service is not owned; null for the system's own figures.
    static void setInstance(OsMemoryArch const* service) noexcept;
};

} // namespace Ko
