#include "resmgt/src/posix/childInput.h"

#include "resmgt/src/posix/interruptedCall.h"

#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace Ko {

namespace {

/// Keeps this thread from getting the SIGPIPE of a write. The host's own handling of that signal is left alone.
class PipeSignalHeld {
public:
    PipeSignalHeld() noexcept {
        sigset_t pending;
        ::sigpending(&pending);
        _wasPending = sigismember(&pending, SIGPIPE) == 1;
        sigemptyset(&_signal);
        sigaddset(&_signal, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &_signal, &_before);
    }
    ~PipeSignalHeld() { pthread_sigmask(SIG_SETMASK, &_before, nullptr); }
    PipeSignalHeld(PipeSignalHeld const&) = delete;
    PipeSignalHeld& operator=(PipeSignalHeld const&) = delete;

    /// Removes the signal of a write that found no reader. One that was pending before belongs to the host.
    void drop() const noexcept {
        constexpr timespec noTime{};
        if (!_wasPending) untilDone([&] { return ::sigtimedwait(&_signal, nullptr, &noTime); });
    }

private:
    sigset_t _signal;
    sigset_t _before;
    bool _wasPending;
};

} // namespace

ChildInput::ChildInput(Descriptor writeEnd) noexcept : _pipe(std::move(writeEnd)) {
    ::fcntl(_pipe.get(), F_SETFL, O_NONBLOCK);
}

std::optional<std::size_t> ChildInput::write(std::string_view bytes) noexcept {
    if (!_pipe.isOpen()) return {};
    PipeSignalHeld const signal;
    ssize_t const count = untilDone([&] { return ::write(_pipe.get(), bytes.data(), bytes.size()); });
    if (count < 0 && errno == EPIPE) {
        signal.drop();
        close();
        return {};
    }
    std::size_t const written = count > 0 ? static_cast<std::size_t>(count) : 0;
    _isFull = written < bytes.size();
    return written;
}

} // namespace Ko
