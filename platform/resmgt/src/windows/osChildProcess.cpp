#include "resmgt/osChildProcess.h"

#include "base/assertions.h"
#include "base/lkLock.h"
#include "resmgt/src/windows/childErrors.h"
#include "resmgt/src/windows/childInput.h"
#include "resmgt/src/windows/childOutput.h"
#include "resmgt/src/windows/childStart.h"
#include "resmgt/src/windows/systemError.h"
#include "resmgt/src/windows/utf16.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <optional>
#include <psapi.h>

namespace Ko {

namespace {

constexpr AssertionSource source{"resmgt\\src\\osChildProcess"};
constexpr char const* withoutProgram = "The command line names no program";
constexpr char const* withZeroByte = " contains a zero byte";
// The system calls a program that ended with this code, which it reserves, a running one.
constexpr int insteadOfStillActive = 1;

std::chrono::microseconds toMicroseconds(FILETIME const& time) {
    using Intervals = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
    Intervals const intervals{static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime};
    return std::chrono::duration_cast<std::chrono::microseconds>(intervals);
}

DWORD toMilliseconds(double seconds) {
    constexpr double longest = 1e9;
    return static_cast<DWORD>(std::clamp(seconds * 1000, 0.0, longest));
}

} // namespace

class OsChildProcess::Imp {
public:
    Launch launch(LiString const& commandLine, Vector<LiString> const& environment);
    Launch fail(Launch step, LiString const& reason);
    void noteUse();
    void noteMemory();
    void release();

    // For all members up to the handles that belong to the watching thread.
    mutable LkLock _lock{"OsChildProcess"};
    bool _isAttached = false;
    std::optional<OsResourceUse> _use;
    StartedChild _child;
    Handle _job;
    Handle _wake{::CreateEventW(nullptr, FALSE, FALSE, nullptr)};

    ChildInput _input;
    ChildOutput _output;
    ChildErrors _error;
    // False when only the end of the child is waited for.
    bool _watchesErrors = false;
    std::optional<std::uint64_t> _peakMemory;
    LiString _folder;
    LiString _launchError;

private:
    LiString findZeroByte(LiString const& commandLine, Vector<LiString> const& environment) const;
    LiString describe(DWORD error) const;
};

OsChildProcess::Launch OsChildProcess::Imp::launch(LiString const& commandLine, Vector<LiString> const& environment) {
    if (LiString const holder = findZeroByte(commandLine, environment); !holder.empty())
        return fail(Launch::Failed, holder + withZeroByte);
    if (commandLine.find_first_not_of(" \t") == LiString::npos) return fail(Launch::Failed, withoutProgram);

    Pipe input = Pipe::create(Pipe::Direction::ToChild);
    if (!input.isOpen()) return fail(Launch::NoInputPipe, describeLastError());
    Pipe error = Pipe::create(Pipe::Direction::FromChild);
    if (!error.isOpen()) return fail(Launch::NoErrorPipe, describeLastError());
    Handle const output = _output.create();
    if (!output.isOpen())
        return fail(Launch::Failed, "The file for the output cannot be created in \"" +
                                        fromUtf16(ChildOutput::getDirectory()) + "\": " + describeLastError());
    _job = createJob();
    if (!_job.isOpen() || !_wake.isOpen()) return fail(Launch::Failed, describeLastError());
    DWORD const problem =
        startChild({commandLine, environment, input.ofChild, output, error.ofChild, _job, _folder}, _child);
    if (problem != ERROR_SUCCESS) return fail(Launch::Failed, describe(problem));

    _use.reset();
    _peakMemory.reset();
    ::ResetEvent(_wake.get());
    _input.open(std::move(input.own));
    _error.open(std::move(error.own));
    _watchesErrors = true;
    _isAttached = true;
    return Launch::Started;
}

LiString OsChildProcess::Imp::describe(DWORD error) const {
    LiString const reason = describeError(error);
    bool const isOfFolder = error == ERROR_DIRECTORY && !_folder.empty();
    return isOfFolder ? "The working folder \"" + _folder + "\" cannot be entered: " + reason : reason;
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

OsChildProcess::Launch OsChildProcess::Imp::fail(Launch step, LiString const& reason) {
    _launchError = reason;
    release();
    return step;
}

void OsChildProcess::Imp::noteMemory() {
    PROCESS_MEMORY_COUNTERS memory{};
    memory.cb = sizeof memory;
    if (::GetProcessMemoryInfo(_child.process.get(), &memory, sizeof memory) == 0 || memory.PeakWorkingSetSize == 0)
        return;
    _peakMemory = std::max<std::uint64_t>(_peakMemory.value_or(0), memory.PeakWorkingSetSize);
}

void OsChildProcess::Imp::noteUse() {
    FILETIME begin{}, end{}, inSystem{}, inProgram{};
    if (::GetProcessTimes(_child.process.get(), &begin, &end, &inSystem, &inProgram) == 0) return;
    noteMemory();
    _use = {toMicroseconds(inProgram), toMicroseconds(inSystem), _peakMemory};
}

void OsChildProcess::Imp::release() {
    _isAttached = false;
    _child = {};
    // Ends what the child has left behind.
    _job.reset();
    _input.drop();
    _output.close();
    _error.close();
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
    return _imp->_error.peek(waiting);
}

std::string_view OsChildProcess::readError(std::size_t size) {
    return _imp->_error.read(size);
}

std::optional<std::size_t> OsChildProcess::writeInput(std::string_view bytes) {
    return _imp->_input.write(bytes);
}

void OsChildProcess::closeInput() {
    _imp->_input.close();
}

bool OsChildProcess::getExitCode(int& exitCode) const {
    HANDLE const process = _imp->_child.process.get();
    DWORD const state = ::WaitForSingleObject(process, 0);
    if (state == WAIT_FAILED) return false;
    exitCode = stillActive;
    DWORD code = 0;
    if (state == WAIT_TIMEOUT) return true;
    if (::GetExitCodeProcess(process, &code) == 0) return false;
    exitCode = code == DWORD{stillActive} ? insteadOfStillActive : static_cast<int>(code);
    return true;
}

void OsChildProcess::nap(double seconds) {
    HANDLE const errors = _imp->_watchesErrors ? _imp->_error.announce() : nullptr;
    std::array<HANDLE, 4> watched{_imp->_child.process.get(), _imp->_wake.get()};
    DWORD count = 2;
    for (HANDLE const event : {errors, _imp->_input.getFull()})
        if (event) watched[count++] = event;
    // Bytes that have been read ahead end the nap at once.
    std::size_t waiting = 0;
    bool const hasErrors = _imp->_watchesErrors && !errors && peekError(waiting) && waiting > 0;
    ::WaitForMultipleObjects(count, watched.data(), FALSE, hasErrors ? 0 : toMilliseconds(seconds));
    _imp->_input.update();
}

void OsChildProcess::wake() {
    std::lock_guard const guard(_imp->_lock);
    if (_imp->_isAttached) ::SetEvent(_imp->_wake.get());
}

void OsChildProcess::noteMemory() {
    if (isAttached()) _imp->noteMemory();
}

bool OsChildProcess::isAttached() const {
    std::lock_guard const guard(_imp->_lock);
    return _imp->_isAttached;
}

bool OsChildProcess::sendBreak() {
    std::lock_guard const guard(_imp->_lock);
    return _imp->_isAttached && ::GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, _imp->_child.number) != 0;
}

bool OsChildProcess::terminate(int exitCode) {
    std::lock_guard const guard(_imp->_lock);
    return _imp->_isAttached && ::TerminateJobObject(_imp->_job.get(), static_cast<UINT>(exitCode)) != 0;
}

void OsChildProcess::detach() {
    std::lock_guard const guard(_imp->_lock);
    if (!_imp->_isAttached) return;
    _imp->_isAttached = false;
    releaseJob(_imp->_job);
    ::SetEvent(_imp->_wake.get());
}

bool OsChildProcess::forget() {
    waitForEnd();
    std::lock_guard const guard(_imp->_lock);
    if (!_imp->_child.process.isOpen()) return true;
    if (_imp->_isAttached) _imp->noteUse();
    _imp->release();
    return true;
}

std::optional<OsResourceUse> OsChildProcess::getResourceUse() const {
    std::lock_guard const guard(_imp->_lock);
    return _imp->_use;
}

// Without the lock, so that other threads can still ask the child to end.
void OsChildProcess::waitForEnd() {
    constexpr double longTime = 3600.0;
    _imp->_watchesErrors = false;
    _imp->_input.close();
    for (int exitCode = 0; isAttached() && getExitCode(exitCode) && exitCode == stillActive;)
        nap(longTime);
}

// Detached children need no one who looks after them.
void OsChildProcess::finalize() {}

} // namespace Ko
