#include "resmgt/src/posix/lifeline.h"

#include <fcntl.h>
#include <signal.h>

namespace Ko {

bool Lifeline::open() noexcept {
    _pipe = Pipe::create();
    if (!_pipe.isOpen()) return false;
    // Both ends, because the system may close either one first.
    for (int const end : {_pipe.readEnd.get(), _pipe.writeEnd.get()}) {
        ::fcntl(end, F_SETSIG, SIGKILL);
        ::fcntl(end, F_SETFL, ::fcntl(end, F_GETFL) | O_ASYNC);
    }
    return true;
}

void Lifeline::tieTo(pid_t leader) const noexcept {
    ::fcntl(_pipe.readEnd.get(), F_SETOWN, -leader);
    ::fcntl(_pipe.writeEnd.get(), F_SETOWN, -leader);
}

void Lifeline::cut() noexcept {
    if (!_pipe.isOpen()) return;
    for (int const end : {_pipe.readEnd.get(), _pipe.writeEnd.get()})
        ::fcntl(end, F_SETFL, ::fcntl(end, F_GETFL) & ~O_ASYNC);
    _pipe = {};
}

} // namespace Ko
