#pragma once

#include "resmgt/liString.h"
#include "resmgt/src/posix/descriptor.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace Ko {

/// The file without a name that a child's standard output goes to, read from its start while the child writes.
class ChildOutput {
public:
    /// @returns whether the file was created; `errno` says why not.
    bool create();
    Descriptor const& getFile() const noexcept { return _file; }

    /// The next bytes, at most so many; valid up to the next call.
    std::string_view read(std::size_t size);
    /// How many bytes were not read yet.
    std::uint64_t countUnread();

    static LiString getDirectory();

private:
    std::size_t readAt(std::int64_t position);
    void readAhead();

    Descriptor _file;
    std::unique_ptr<char[]> _buffer;
    // The bytes in the buffer that were not handed out yet; they end at the position.
    std::string_view _ready;
    std::int64_t _position = 0;
    // The last bytes before the position.
    LiString _lastBytes;
};

} // namespace Ko
