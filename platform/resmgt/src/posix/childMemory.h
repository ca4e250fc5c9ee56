#pragma once

#include <cstdint>
#include <optional>
#include <sys/resource.h>
#include <sys/types.h>

namespace Ko {

/// The peak of a child's memory, from the figures that the system gives.
///
/// A child shares this process's memory until its program starts, so the system's figure at its end is never smaller than
/// the peak of this process at the launch. Only a larger figure belongs to the child.
class ChildMemory {
public:
    /// To be called after the launch, before anything else.
    void begin() noexcept;
    /// Reads the peak of the program that runs at present. @param number of a child that was not reaped.
    void note(pid_t number) noexcept;
    /// Takes the figure of the end. @returns bytes; nothing when only the peak of this process is known.
    std::optional<std::uint64_t> finish(rusage const& atEnd) noexcept;

private:
    std::uint64_t _ofThisProcess = 0;
    std::uint64_t _noted = 0;
};

} // namespace Ko
