#include "resmgt/src/posix/childOutput.h"

#include "resmgt/src/posix/interruptedCall.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Ko {

namespace {

constexpr std::size_t bufferSize = std::size_t{64} * 1024;
constexpr std::size_t numLastBytes = 64;

// For file systems that do not support files without a name.
int createAndUnlink(LiString const& directory) {
    LiString name = directory + "/OUTXXXXXX";
    int const number = ::mkostemp(name.data(), O_APPEND | O_CLOEXEC);
    if (number >= 0) ::unlink(name.c_str());
    return number;
}

} // namespace

LiString ChildOutput::getDirectory() {
    char const* const directory = std::getenv("TMPDIR");
    return directory && *directory ? directory : "/tmp";
}

bool ChildOutput::create() {
    LiString const directory = getDirectory();
    int const number = ::open(directory.c_str(), O_TMPFILE | O_EXCL | O_RDWR | O_APPEND | O_CLOEXEC, 0600);
    _file = Descriptor::aboveStandard(number >= 0 ? number : createAndUnlink(directory));
    if (!_file.isOpen()) return false;
    _buffer = std::make_unique_for_overwrite<char[]>(bufferSize + numLastBytes);
    return true;
}

std::string_view ChildOutput::read(std::size_t size) {
    if (_ready.empty()) readAhead();
    std::string_view const result = _ready.substr(0, size);
    _ready.remove_prefix(result.size());
    return result;
}

std::uint64_t ChildOutput::countUnread() {
    if (_ready.empty()) readAhead();
    struct stat status {};
    if (::fstat(_file.get(), &status) != 0) return _ready.size();
    bool const wasTruncated = status.st_size < _position;
    return _ready.size() + static_cast<std::uint64_t>(status.st_size - (wasTruncated ? 0 : _position));
}

// With an explicit position: child and reader share one open file, whose own position is where the child writes.
std::size_t ChildOutput::readAt(std::int64_t position) {
    ssize_t const count =
        untilDone([&] { return ::pread(_file.get(), _buffer.get(), bufferSize + numLastBytes, position); });
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

// A program that reopens its output by name (`>/dev/stdout` in a shell) truncates the file and writes from its start. The
// file can then be longer than before, so the last bytes that were read are read again and compared.
void ChildOutput::readAhead() {
    std::string_view found(_buffer.get(), readAt(_position - static_cast<std::int64_t>(_lastBytes.size())));
    if (!found.starts_with(_lastBytes)) {
        _position = 0;
        _lastBytes.clear();
        found = {_buffer.get(), readAt(0)};
    }
    _ready = found.substr(_lastBytes.size());
    _position += static_cast<std::int64_t>(_ready.size());
    _lastBytes = found.substr(found.size() - std::min(found.size(), numLastBytes));
}

} // namespace Ko
