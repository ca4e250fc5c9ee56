#include "resmgt/src/posix/descriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace Ko {

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

} // namespace Ko
