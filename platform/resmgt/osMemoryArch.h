#pragma once

#include "resmgt/resmgtApi.h"

#include <cstdint>

namespace Ko {

/// The memory figures of the machine. Any thread.
///
/// A test, or a host whose memory is limited, can replace the system's figures by `setInstance()`.
class KO_RESMGT_API OsMemoryArch {
public:
    /// Figures in bytes.
    struct Memory {
        /// Memory that new work can get without moving other memory to the page file.
        std::uint64_t freePhysical = 0;
        /// Memory of the machine.
        std::uint64_t totalPhysical = 0;
        /// Memory that may still be promised to processes, including the free physical memory.
        std::uint64_t freePageFile = 0;
    };

    OsMemoryArch() = default;
    virtual ~OsMemoryArch();
    OsMemoryArch(OsMemoryArch const&) = delete;
    OsMemoryArch& operator=(OsMemoryArch const&) = delete;

    /// The present figures.
    [[nodiscard]] virtual Memory getMemory() const = 0;

    /// The object that was set; initially one that asks the system.
    [[nodiscard]] static OsMemoryArch const& getInstance() noexcept;
    /// Replaces the object.
    /// @param service not owned; null for the system's own figures.
    static void setInstance(OsMemoryArch const* service) noexcept;
};

} // namespace Ko
