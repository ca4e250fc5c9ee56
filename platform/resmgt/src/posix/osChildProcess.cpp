#include "resmgt/osChildProcess.h"

#include "base/assertions.h"
#include "base/lkLock.h"
#include "resmgt/src/posix/childInput.h"
#include "resmgt/src/posix/childMemory.h"
#include "resmgt/src/posix/childOutput.h"
#include "resmgt/src/posix/childStart.h"
#include "resmgt/src/posix/commandLine.h"
#include "resmgt/src/posix/detachedChildren.h"
#include "resmgt/src/posix/interruptedCall.h"

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
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Ko {

namespace {

constexpr AssertionSource source{"resmgt\\src\\osChildProcess"};
constexpr int firstSignalCode = 128;
constexpr char const* malformed = "The command line names no program, or has a quotation without an end";
constexpr char const* withZeroByte = " contains a zero byte";

std::size_t countOf(ssize_t result) {
    return result > 0 ? static_cast<std::size_t>(result) : 0;
}

std::chrono::microseconds toMicroseconds(timeval const& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
}

timespec toTime(double seconds) {
    auto const whole = static_cast<time_t>(seconds);
    return {whole, static_cast<long>((seconds - static_cast<double>(whole)) * 1e9)};
}

} // namespace

class OsChildProcess::Imp {
public:
    Launch launch(LiString const& commandLine, Vector<LiString> const& environment);
    Launch fail(Launch step, LiString const& reason);
    int getExitCodeOf(siginfo_t const& end) const;
    bool signalGroup(int signal) const { return _isAttached && ::kill(-_child.number, signal) == 0; }
    bool reap();
    void release();

    // For all members up to the descriptors, which belong to the watching thread.
    mutable LkLock _lock{"OsChildProcess"};
    // As long as it is true, the child is not reaped and the system gives its number to no other process.
    bool _isAttached = false;
    bool _isAskedToEnd = false;
    std::optional<int> _terminationCode;
    std::optional<OsResourceUse> _use;
    Lifeline _lifeline;

    StartedChild _child;
    ChildInput _input;
    ChildOutput _output;
    Descriptor _error;
    Descriptor _wake;
    bool _errorIsOpen = false;
    std::array<char, 1024> _errorBuffer;
    ChildMemory _memory;
    LiString _folder;
    LiString _launchError;

private:
    Launch prepare(Pipe& input, Pipe& error);
    LiString findZeroByte(LiString const& commandLine, Vector<LiString> const& environment) const;
    LiString describe(StartProblem problem) const;
};

OsChildProcess::Launch OsChildProcess::Imp::launch(LiString const& commandLine, Vector<LiString> const& environment) {
    if (LiString const holder = findZeroByte(commandLine, environment); !holder.empty())
        return fail(Launch::Failed, holder + withZeroByte);
    Vector<LiString> words;
    if (!splitCommandLine(commandLine, words) || words.empty()) return fail(Launch::Failed, malformed);

    Pipe input, error;
    if (Launch const result = prepare(input, error); result != Launch::Started) return result;
    StartProblem const problem =
        startChild({words, environment, input.readEnd, _output.getFile(), error.writeEnd, _lifeline, _folder}, _child);
    if (problem.error != 0) return fail(Launch::Failed, describe(problem));

    _memory.begin();
    _use.reset();
    _input = ChildInput(std::move(input.writeEnd));
    _error = std::move(error.readEnd);
    _errorIsOpen = true;
    _isAttached = true;
    return Launch::Started;
}

LiString OsChildProcess::Imp::describe(StartProblem problem) const {
    LiString const reason = std::strerror(problem.error);
    return problem.isOfFolder ? "The working folder \"" + _folder + "\" cannot be entered: " + reason : reason;
}

// A child would see only the bytes before it. Returns a name for the text that contains it; none when there is none.
LiString OsChildProcess::Imp::findZeroByte(LiString const& commandLine, Vector<LiString> const& environment) const {
    auto const hasZeroByte = [](LiString const& text) { return text.find('\0') != LiString::npos; };
    if (hasZeroByte(commandLine)) return "The command line";
    if (hasZeroByte(_folder)) return "The working folder";
    auto const entry = std::ranges::find_if(environment, hasZeroByte);
    if (entry == environment.end()) return {};
    return "The environment variable \"" + LiString(entry->c_str()).substr(0, entry->find('=')) + "\"";
}

OsChildProcess::Launch OsChildProcess::Imp::prepare(Pipe& input, Pipe& error) {
    input = Pipe::create();
    if (!input.isOpen()) return fail(Launch::NoInputPipe, std::strerror(errno));
    error = Pipe::create();
    if (!error.isOpen()) return fail(Launch::NoErrorPipe, std::strerror(errno));
    // The child's descendants may take bytes from the pipe between a peek and a read.
    ::fcntl(error.readEnd.get(), F_SETFL, O_NONBLOCK);
    if (!_output.create()) {
        char const* const reason = std::strerror(errno);
        return fail(Launch::Failed,
            "The file for the output cannot be created in \"" + ChildOutput::getDirectory() + "\": " + reason);
    }
    _wake = Descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!_wake.isOpen() || !_lifeline.open()) return fail(Launch::Failed, std::strerror(errno));
    return Launch::Started;
}

OsChildProcess::Launch OsChildProcess::Imp::fail(Launch step, LiString const& reason) {
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

// By the system call itself, which also returns the resource use of the child.
bool OsChildProcess::Imp::reap() {
    siginfo_t ignored;
    rusage use{};
    bool const isKnown =
        untilDone([&] { return ::syscall(SYS_waitid, P_PIDFD, _child.process.get(), &ignored, WEXITED, &use); }) == 0;
    if (isKnown) _use = {toMicroseconds(use.ru_utime), toMicroseconds(use.ru_stime), _memory.finish(use)};
    return isKnown;
}

void OsChildProcess::Imp::release() {
    _isAttached = false;
    _isAskedToEnd = false;
    _terminationCode.reset();
    _lifeline.cut();
    _child = {};
    _output = {};
    _input.close();
    for (Descriptor* const descriptor : {&_error, &_wake})
        descriptor->reset();
}

OsChildProcess::OsChildProcess() : _imp(std::make_unique<Imp>()) {}

OsChildProcess::~OsChildProcess() {
    terminate(0);
    forget();
}

void OsChildProcess::setWorkingFolder(LiString const& folder) {
    _imp->_folder = folder;
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
    return _imp->_output.read(size);
}

std::uint64_t OsChildProcess::countUnreadOutput() const {
    return _imp->_output.countUnread();
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

std::optional<std::size_t> OsChildProcess::writeInput(std::string_view bytes) {
    return _imp->_input.write(bytes);
}

void OsChildProcess::closeInput() {
    _imp->_input.close();
}

bool OsChildProcess::getExitCode(int& exitCode) const {
    auto const process = static_cast<id_t>(_imp->_child.process.get());
    siginfo_t end{};
    // Without reaping the child: the system must not give its number to another process before `forget()`.
    if (::waitid(P_PIDFD, process, &end, WEXITED | WNOHANG | WNOWAIT) != 0) return false;
    std::lock_guard const guard(_imp->_lock);
    exitCode = end.si_pid == 0 ? stillActive : _imp->getExitCodeOf(end);
    return true;
}

void OsChildProcess::nap(double seconds) {
    pollfd watched[] = {{_imp->_child.process.get(), POLLIN, 0},
        {_imp->_errorIsOpen ? _imp->_error.get() : -1, POLLIN, 0}, {_imp->_wake.get(), POLLIN, 0},
        {_imp->_input.getFull(), POLLOUT, 0}};
    timespec const time = toTime(seconds);
    if (::ppoll(watched, std::size(watched), &time, nullptr) <= 0) return;
    // A pipe whose write ends are all closed is always ready: polling it again would end every nap.
    if ((watched[1].revents & (POLLIN | POLLHUP)) == POLLHUP) _imp->_errorIsOpen = false;
    eventfd_t ignored;
    if (watched[2].revents) ::eventfd_read(_imp->_wake.get(), &ignored);
}

void OsChildProcess::wake() {
    std::lock_guard const guard(_imp->_lock);
    if (_imp->_isAttached) ::eventfd_write(_imp->_wake.get(), 1);
}

void OsChildProcess::noteMemory() {
    if (isAttached()) _imp->_memory.note(_imp->_child.number);
}

bool OsChildProcess::isAttached() const {
    std::lock_guard const guard(_imp->_lock);
    return _imp->_isAttached;
}

bool OsChildProcess::sendBreak() {
    std::lock_guard const guard(_imp->_lock);
    _imp->_isAskedToEnd = _imp->_isAttached;
    bool const wasSent = _imp->signalGroup(SIGINT);
    // A stopped process handles signals only after SIGCONT.
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
    DetachedChildren::drain(_imp->_error);
    _imp->_lifeline.cut();
    ::eventfd_write(_imp->_wake.get(), 1);
}

bool OsChildProcess::forget() {
    waitForEnd();
    std::lock_guard const guard(_imp->_lock);
    if (!_imp->_child.process.isOpen()) return true;
    bool isKnown = true;
    if (!_imp->_isAttached) {
        DetachedChildren::adopt(std::move(_imp->_child.process));
    } else {
        if (_imp->_isAskedToEnd) _imp->signalGroup(SIGKILL);
        isKnown = _imp->reap();
    }
    _imp->release();
    return isKnown;
}

std::optional<OsResourceUse> OsChildProcess::getResourceUse() const {
    std::lock_guard const guard(_imp->_lock);
    return _imp->_use;
}

// Without the lock, so that other threads can still ask the child to end.
void OsChildProcess::waitForEnd() {
    constexpr double longTime = 3600.0;
    _imp->_errorIsOpen = false;
    _imp->_input.close();
    for (int exitCode = 0; isAttached() && getExitCode(exitCode) && exitCode == stillActive;)
        nap(longTime);
}

void OsChildProcess::finalize() {
    DetachedChildren::finalize();
}

} // namespace Ko
