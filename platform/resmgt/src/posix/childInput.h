#pragma once

#include "resmgt/src/posix/descriptor.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace Ko {

/// The write end of the pipe that is a child's standard input.
class ChildInput {
public:
    ChildInput() noexcept = default;
    explicit ChildInput(Descriptor writeEnd) noexcept;

    /// @returns how many bytes the pipe took; nothing when it has no reader any more, or was closed.
    std::optional<std::size_t> write(std::string_view bytes) noexcept;
    void close() noexcept { *this = {}; }

    /// The descriptor to poll for the next write; -1 while the pipe has space.
    int getFull() const noexcept { return _isFull ? _pipe.get() : -1; }

private:
    Descriptor _pipe;
    bool _isFull = false;
};

} // namespace Ko
