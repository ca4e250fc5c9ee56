#include "resmgt/src/posix/descriptor.h"

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace Ko {

namespace {

std::string temporaryDirectory() {
    char const* const directory = std::getenv("TMPDIR");
    return directory && *directory ? directory : "/tmp";
}

// For file systems that know no files without a name.
int createAndUnlink(std::string const& directory) {
    std::string name = directory + "/OUTXXXXXX";
    int const number = ::mkostemp(name.data(), O_APPEND | O_CLOEXEC);
    if (number >= 0) ::unlink(name.c_str());
    return number;
}

} // namespace

void Descriptor::reset(int number) noexcept {
    if (_number >= 0) ::close(_number);
    _number = number;
}

Descriptor Descriptor::aboveStandard(int number) noexcept {
    if (number < 0 || number > STDERR_FILENO) return Descriptor(number);
    Descriptor const low(number);
    return Descriptor(::fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

Pipe Pipe::create() noexcept {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return {};
    return {Descriptor::aboveStandard(ends[0]), Descriptor::aboveStandard(ends[1])};
}

Descriptor createTemporaryFile() {
    std::string const directory = temporaryDirectory();
    int const number = ::open(directory.c_str(), O_TMPFILE | O_EXCL | O_RDWR | O_APPEND | O_CLOEXEC, 0600);
    return Descriptor::aboveStandard(number >= 0 ? number : createAndUnlink(directory));
}

// Open for reading too, whoever has it is a reader of the pipe himself.
Descriptor openSafeWriteEnd(Pipe& pipe) {
    std::string const name = "/proc/self/fd/" + std::to_string(pipe.writeEnd.get());
    int const number = ::open(name.c_str(), O_RDWR | O_CLOEXEC);
    return number >= 0 ? Descriptor::aboveStandard(number) : std::move(pipe.writeEnd);
}

} // namespace Ko
