#pragma once

#include "resmgt/src/windows/handle.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Ko {

/// The temporary file that a child's standard output goes to, read from its start while the child writes. It is gone when the child
/// and this object have closed it.
class ChildOutput {
public:
    /// Creates the file.
    /// @returns the child's end, inheritable; one that is not open when the system fails: the last error says why.
    Handle create();
    void close() noexcept;

    /// The next bytes, at most so many; valid up to the next call.
    std::string_view read(std::size_t size);
    /// How many bytes were not read yet.
    std::uint64_t countUnread() const noexcept;

    static std::wstring getDirectory();

private:
    Handle _file;
    std::unique_ptr<char[]> _buffer;
    // The bytes in the buffer that were not handed out yet; they end at the position.
    std::string_view _ready;
    std::uint64_t _position = 0;
};

} // namespace Ko
