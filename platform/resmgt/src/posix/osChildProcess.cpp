#include "resmgt/osChildProcess.h"

#include "base/assertions.h"
#include "base/lkLock.h"
#include "resmgt/src/posix/childStart.h"
#include "resmgt/src/posix/commandLine.h"
#include "resmgt/src/posix/detachedChildren.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Ko {

namespace {

constexpr AssertionSource source{"resmgt\\src\\osChildProcess"};
constexpr int firstSignalCode = 128;
constexpr std::size_t bufferSize = 64 * 1024;
constexpr int largestPipe = 1024 * 1024;
constexpr char const* malformed = "The command line names no program, or has a quotation without an end";

// A call of the system that a signal of the host may interrupt.
template <class Call>
auto untilDone(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

std::size_t countOf(ssize_t result) {
    return result > 0 ? static_cast<std::size_t>(result) : 0;
}

timespec toTime(double seconds) {
    auto const whole = static_cast<time_t>(seconds);
    return {whole, static_cast<long>((seconds - static_cast<double>(whole)) * 1e9)};
}

} // namespace

class OsChildProcess::Imp {
public:
    Launch launch(LiString const& commandLine, Vector<LiString> const& environment);
    Launch fail(Launch step, char const* reason);
    int getExitCodeOf(siginfo_t const& end) const;
    bool signalGroup(int signal) const { return _isAttached && ::kill(-_child.number, signal) == 0; }
    void readAhead();
    bool reap() const;
    void release();

    // For all that follows up to the descriptors, which belong to the thread that watches.
    mutable LkLock _lock{"OsChildProcess"};
    // While it is, the system keeps the child's number, also after its end: it is still to be waited for.
    bool _isAttached = false;
    bool _isAskedToEnd = false;
    std::optional<int> _terminationCode;
    Lifeline _lifeline;

    StartedChild _child;
    Descriptor _input;
    Descriptor _output;
    Descriptor _error;
    Descriptor _wake;
    bool _errorIsOpen = false;
    // Where the next bytes of the output are, behind those that are ready in the buffer.
    std::int64_t _position = 0;
    std::string_view _ready;
    std::unique_ptr<char[]> _buffer;
    std::array<char, 1024> _errorBuffer;
    LiString _launchError;
};

OsChildProcess::Launch OsChildProcess::Imp::launch(LiString const& commandLine, Vector<LiString> const& environment) {
    Pipe input = Pipe::create();
    if (!input.isOpen()) return fail(Launch::NoInputPipe, std::strerror(errno));
    Pipe error = Pipe::create();
    if (!error.isOpen()) return fail(Launch::NoErrorPipe, std::strerror(errno));
    _output = createTemporaryFile();
    if (!_output.isOpen()) return fail(Launch::Failed, std::strerror(errno));
    _wake = Descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!_wake.isOpen() || !_lifeline.open()) return fail(Launch::Failed, std::strerror(errno));

    _buffer = std::make_unique_for_overwrite<char[]>(bufferSize);
    Vector<LiString> words;
    if (!splitCommandLine(commandLine, words) || words.empty()) return fail(Launch::Failed, malformed);
    Descriptor const childError = openSafeWriteEnd(error);
    int const problem = startChild({words, environment, input.readEnd, _output, childError, _lifeline}, _child);
    if (problem != 0) return fail(Launch::Failed, std::strerror(problem));

    _input = std::move(input.writeEnd);
    _error = std::move(error.readEnd);
    _errorIsOpen = true;
    _position = 0;
    _isAttached = true;
    return Launch::Started;
}

OsChildProcess::Launch OsChildProcess::Imp::fail(Launch step, char const* reason) {
    _launchError = reason;
    release();
    return step;
}

int OsChildProcess::Imp::getExitCodeOf(siginfo_t const& end) const {
    if (end.si_code == CLD_EXITED) return end.si_status;
    if (end.si_status == SIGINT) return endedByBreak;
    if (end.si_status == SIGKILL && _terminationCode) return *_terminationCode;
    return firstSignalCode + end.si_status;
}

// At a place of its own: the child and this process share one open file, whose own place is where the child writes.
void OsChildProcess::Imp::readAhead() {
    std::size_t const count =
        countOf(untilDone([&] { return ::pread(_output.get(), _buffer.get(), bufferSize, _position); }));
    _position += static_cast<std::int64_t>(count);
    _ready = {_buffer.get(), count};
}

bool OsChildProcess::Imp::reap() const {
    auto const process = static_cast<id_t>(_child.process.get());
    siginfo_t ignored;
    return untilDone([&] { return ::waitid(P_PIDFD, process, &ignored, WEXITED); }) == 0;
}

void OsChildProcess::Imp::release() {
    _isAttached = false;
    _isAskedToEnd = false;
    _terminationCode.reset();
    _lifeline.cut();
    _child = {};
    _ready = {};
    _buffer.reset();
    for (Descriptor* const descriptor : {&_input, &_output, &_error, &_wake})
        descriptor->reset();
}

OsChildProcess::OsChildProcess() : _imp(std::make_unique<Imp>()) {}

OsChildProcess::~OsChildProcess() {
    terminate(0);
    forget();
}

OsChildProcess::Launch OsChildProcess::launch(LiString const& commandLine, Vector<LiString> const& environment) {
    std::lock_guard const guard(_imp->_lock);
    source.require(!_imp->_child.process.isOpen(), "_imp->_child == 0");
    return _imp->launch(commandLine, environment);
}

LiString const& OsChildProcess::getLaunchError() const noexcept {
    return _imp->_launchError;
}

std::string_view OsChildProcess::readOutput(std::size_t size) {
    if (_imp->_ready.empty()) _imp->readAhead();
    std::string_view const result = _imp->_ready.substr(0, size);
    _imp->_ready.remove_prefix(result.size());
    return result;
}

std::uint64_t OsChildProcess::countUnreadOutput() const {
    struct stat status {};
    bool const hasMore = ::fstat(_imp->_output.get(), &status) == 0 && status.st_size > _imp->_position;
    return _imp->_ready.size() + (hasMore ? static_cast<std::uint64_t>(status.st_size - _imp->_position) : 0);
}

bool OsChildProcess::peekError(std::size_t& waiting) const {
    int count = 0;
    if (::ioctl(_imp->_error.get(), FIONREAD, &count) != 0) return false;
    waiting = static_cast<std::size_t>(count);
    return true;
}

std::string_view OsChildProcess::readError(std::size_t size) {
    auto& buffer = _imp->_errorBuffer;
    size = std::min(size, buffer.size());
    return {buffer.data(), countOf(untilDone([&] { return ::read(_imp->_error.get(), buffer.data(), size); }))};
}

bool OsChildProcess::getExitCode(int& exitCode) const {
    auto const process = static_cast<id_t>(_imp->_child.process.get());
    siginfo_t end{};
    // The child stays known to the system, so that nobody else gets its number before it is forgotten.
    if (::waitid(P_PIDFD, process, &end, WEXITED | WNOHANG | WNOWAIT) != 0) return false;
    std::lock_guard const guard(_imp->_lock);
    exitCode = end.si_pid == 0 ? stillActive : _imp->getExitCodeOf(end);
    return true;
}

void OsChildProcess::nap(double seconds) {
    pollfd watched[] = {{_imp->_child.process.get(), POLLIN, 0},
        {_imp->_errorIsOpen ? _imp->_error.get() : -1, POLLIN, 0}, {_imp->_wake.get(), POLLIN, 0}};
    timespec const time = toTime(seconds);
    if (::ppoll(watched, std::size(watched), &time, nullptr) <= 0) return;
    // When the child has closed its end, the pipe is ready all the time.
    if ((watched[1].revents & (POLLIN | POLLHUP)) == POLLHUP) _imp->_errorIsOpen = false;
    eventfd_t ignored;
    if (watched[2].revents) ::eventfd_read(_imp->_wake.get(), &ignored);
}

bool OsChildProcess::isAttached() const {
    std::lock_guard const guard(_imp->_lock);
    return _imp->_isAttached;
}

bool OsChildProcess::sendBreak() {
    std::lock_guard const guard(_imp->_lock);
    _imp->_isAskedToEnd = _imp->_isAttached;
    bool const wasSent = _imp->signalGroup(SIGINT);
    // Who was halted hears it only when it goes on.
    _imp->signalGroup(SIGCONT);
    return wasSent;
}

bool OsChildProcess::terminate(int exitCode) {
    std::lock_guard const guard(_imp->_lock);
    _imp->_isAskedToEnd = _imp->_isAttached;
    if (_imp->_isAttached) _imp->_terminationCode = exitCode;
    return _imp->signalGroup(SIGKILL);
}

void OsChildProcess::detach() {
    std::lock_guard const guard(_imp->_lock);
    if (!_imp->_isAttached) return;
    _imp->_isAttached = false;
    // For the time after the end of this process, when nobody reads any more.
    ::fcntl(_imp->_error.get(), F_SETPIPE_SZ, largestPipe);
    _imp->_lifeline.cut();
    ::eventfd_write(_imp->_wake.get(), 1);
}

bool OsChildProcess::forget() {
    waitForEnd();
    std::lock_guard const guard(_imp->_lock);
    if (!_imp->_child.process.isOpen()) return true;
    bool isKnown = true;
    if (!_imp->_isAttached) {
        DetachedChildren::adopt(std::move(_imp->_child.process), std::move(_imp->_error));
    } else {
        if (_imp->_isAskedToEnd) _imp->signalGroup(SIGKILL);
        isKnown = _imp->reap();
    }
    _imp->release();
    return isKnown;
}

// Without the lock, so that others can still ask the child to end.
void OsChildProcess::waitForEnd() {
    constexpr double longTime = 3600.0;
    _imp->_errorIsOpen = false;
    for (int exitCode = 0; isAttached() && getExitCode(exitCode) && exitCode == stillActive;)
        nap(longTime);
}

void OsChildProcess::finalize() {
    DetachedChildren::finalize();
}

} // namespace Ko
