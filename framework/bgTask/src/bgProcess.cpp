#include "framework/bgTask/bgProcess.h"

#include "base/assertions.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/src/bgLaunchTurn.h"
#include "framework/bgTask/src/bgLines.h"
#include "framework/bgTask/src/bgLog.h"
#include "resmgt/envIntVar.h"
#include "resmgt/lkEvent.h"
#include "resmgt/osChildProcess.h"
#include "resmgt/osEnv.h"
#include "resmgt/osMemoryArch.h"
#include "resmgt/sleeper.h"
#include "resmgt/timer.h"

#include <algorithm>
#include <atomic>
#include <iostream>
#include <mutex>
#include <optional>
#include <thread>

namespace Ko {

namespace {

constexpr char const* sourceName = "framework\\bgTask\\src\\bgProcessWindows";
constexpr AssertionSource source{sourceName};
constexpr int launchFailed = 323;
constexpr int readingErrorsFailed = 549;
constexpr int lookForErrorsFailed = 597;
constexpr int exitWithError = 706;

constexpr std::size_t pieceSize = 1024;
// Before the other stream and the end of the program are looked after.
constexpr std::size_t piecesAtOnce = 64;
constexpr double shortestNap = 0.004;
constexpr double longestNap = 0.5;
constexpr double shortestWaitForMemory = 0.1;
constexpr double gracePeriod = 60 * 0.25;
constexpr double longestWaitForCertainEnd = 1.0;

constinit EnvIntVar minMemory("KO_BGEXEC_MIN_MEM", 512, sourceName);
constinit EnvIntVar minMemoryPercent("KO_BGEXEC_MIN_MEM_PERCENT", 20, sourceName);
constinit EnvIntVar minSwapFree("KO_BGEXEC_MIN_SWAP_FREE", 512, sourceName);
constinit EnvIntVar waitTime("KO_BGEXEC_WAIT_TIME", 15, sourceName);

template <class MakeText>
void log(int level, MakeText const& makeText) {
    if (BgLog::group.exists())
        BgLog::group.log(level, makeText);
    else
        std::cout << makeText() << '\n';
}

std::uint64_t toBytes(int megabytes) {
    return static_cast<std::uint64_t>(megabytes) << 20;
}

int percentOf(std::uint64_t part, std::uint64_t whole) {
    return whole == 0 ? 0 : static_cast<int>(static_cast<double>(part) / static_cast<double>(whole) * 100.0);
}

bool isEnoughMemoryFree() {
    auto const memory = OsMemoryArch::getInstance().getMemory();
    if (memory.freePageFile < memory.freePhysical)
        log(3, [] {
            return LiString("The available pagefile memory is smaller than the free physical memory; the process could "
                            "fail.");
        });
    // The difference wraps for the smaller page file: who has been warned may go on.
    return memory.freePhysical > toBytes(minMemory.get()) &&
           percentOf(memory.freePhysical, memory.totalPhysical) > minMemoryPercent.get() &&
           memory.freePageFile - memory.freePhysical > toBytes(minSwapFree.get());
}

// What all external processes share. A job keeps it until its own end, also when the package was finalised before.
struct Shared {
    BgLaunchTurn launchTurn{"Background process spawn lock"};
    LkLock startupLock{"Background process startup lock"};
    std::atomic<std::int32_t> running{0};
    // For the one that has the turn.
    Sleeper memoryGate{"Background process memory gate"};
};

std::shared_ptr<Shared> current;

std::shared_ptr<Shared> const& getCurrent() {
    source.require(current != nullptr, "_spawnLock != 0");
    return current;
}

class RunningCount {
public:
    explicit RunningCount(Shared& shared) : _shared(shared) { ++_shared.running; }
    ~RunningCount() {
        --_shared.running;
        _shared.memoryGate.wake();
    }
    RunningCount(RunningCount const&) = delete;
    RunningCount& operator=(RunningCount const&) = delete;

private:
    Shared& _shared;
};

std::map<std::string, std::string> readEnvironment() {
    std::map<std::string, std::string> variables;
    for (LiString const& entry : OsEnv::getEntries()) {
        auto const eqIdx = entry.find('=');
        source.require(eqIdx != std::string::npos, "eqIdx != std::string::npos");
        variables[entry.substr(0, eqIdx)] = entry.substr(eqIdx + 1);
    }
    return variables;
}

} // namespace

class BgProcess::Imp {
public:
    explicit Imp(BgProcess& process) : _process(process) {}

    void execute();
    void stop();
    void detach();

private:
    class ChildHolder;

    bool waitForMemory();
    void launch();
    std::optional<int> watch(BgLaunchTurn::Holder& turn);
    void nap(double seconds, BgLaunchTurn::Holder const& turn);
    void endWhenOverdue();

    bool readPieces();
    std::size_t readOutput(std::size_t size);
    std::size_t readErrors(std::size_t size);
    std::size_t countErrors(int line) const;
    void readAll(std::uint64_t bytes, std::size_t (Imp::*read)(std::size_t));
    void readRest();
    int getExitCode() const;
    void forget();

    BgProcess& _process;
    std::shared_ptr<Shared> const _shared = getCurrent();
    OsChildProcess _child;
    // Set while no child is attached.
    LkEvent _noChild{"No external process", true};
    std::atomic<std::thread::id> _watcher;

    // The watching thread's alone.
    BgLines _output;
    BgLines _errors;
    Timer<HwIntervalTimer> _timer{"BgProcessWindows"};
    std::optional<double> _endsAt;
};

/// Ends the child, if that has not happened, when a hook throws.
class BgProcess::Imp::ChildHolder {
public:
    explicit ChildHolder(Imp& imp) : _imp(imp) { imp._watcher = std::this_thread::get_id(); }
    ~ChildHolder() {
        _imp._child.terminate(0);
        _imp._child.forget();
        _imp._watcher = std::thread::id();
        _imp._noChild.set();
    }
    ChildHolder(ChildHolder const&) = delete;
    ChildHolder& operator=(ChildHolder const&) = delete;

private:
    Imp& _imp;
};

void BgProcess::Imp::execute() {
    BgLaunchTurn::Holder turn(_shared->launchTurn, [this] { return _process.continueExecution(); });
    if (!turn.isHeld() || !waitForMemory()) return;
    std::unique_lock startup(_shared->startupLock);
    if (!_process.continueExecution()) return;
    RunningCount const count(*_shared);
    launch();
    ChildHolder const holder(*this);
    startup.unlock();

    std::optional<int> const exitCode = watch(turn);
    readRest();
    forget();
    if (exitCode)
        _process.handleExit(*exitCode);
    else
        _process.reportProgress(1, 1);
}

bool BgProcess::Imp::waitForMemory() {
    while (_process.continueExecution()) {
        if (_shared->running == 0 || isEnoughMemoryFree()) return true;
        _shared->memoryGate.sleep(std::max<double>(waitTime.get(), shortestWaitForMemory));
    }
    return false;
}

void BgProcess::Imp::launch() {
    log(6, [this] { return "Launching process \"" + _process._execStr + "\""; });
    Vector<LiString> environment;
    for (auto const& [name, value] : _process._environment)
        environment.push_back(name + "=" + value);
    switch (_child.launch(_process._execStr, environment)) {
    case OsChildProcess::Launch::Started:
        _noChild.reset();
        return;
    case OsChildProcess::Launch::NoInputPipe:
        source.fail("CreatePipe( &stdReadIn, &_stdWriteIn, &sa, 0 ) != 0");
    case OsChildProcess::Launch::NoErrorPipe:
        source.fail("CreatePipe( &_stdReadErr, &stdWriteErr, &sa, 0 ) != 0");
    case OsChildProcess::Launch::Failed:
        break;
    }
    log(3, [this] { return "Process \"" + _process._execStr + "\": " + _child.getLaunchError() + "."; });
    throw BgEx::ExBgTaskFailed(sourceName, launchFailed, "External process could not be launched");
}

// The exit code; nothing when the child was detached.
std::optional<int> BgProcess::Imp::watch(BgLaunchTurn::Holder& turn) {
    _output = {};
    _errors = {};
    _endsAt.reset();
    _timer.reset();
    _timer.start();
    // The file cannot tell that it has grown, so that naps grow only while nothing comes.
    for (double seconds = shortestNap;; seconds = std::min(2 * seconds, longestNap)) {
        if (turn.isHeld() && _timer.getSeconds() >= waitTime.get()) turn.release();
        endWhenOverdue();
        bool const hasRead = readPieces();
        if (!_child.isAttached()) return {};
        if (int const exitCode = getExitCode(); exitCode != OsChildProcess::stillActive) return exitCode;
        if (hasRead)
            seconds = shortestNap / 2;
        else if (countErrors(lookForErrorsFailed) == 0)
            nap(seconds, turn);
    }
}

void BgProcess::Imp::nap(double seconds, BgLaunchTurn::Holder const& turn) {
    double const now = _timer.getSeconds();
    if (turn.isHeld()) seconds = std::min(seconds, waitTime.get() - now);
    if (_endsAt) seconds = std::min(seconds, *_endsAt - now);
    _child.nap(std::max(seconds, 0.0));
}

// For a hook that has called `stop()`: it cannot wait for the end itself.
void BgProcess::Imp::endWhenOverdue() {
    if (!_endsAt || _timer.getSeconds() < *_endsAt) return;
    _child.terminate(0);
    _endsAt.reset();
}

// Whether there was anything.
bool BgProcess::Imp::readPieces() {
    std::size_t pieces = 0;
    while (pieces < piecesAtOnce && readOutput(pieceSize) > 0)
        ++pieces;
    bool const hasOutput = pieces > 0;
    auto const errors = std::min(countErrors(readingErrorsFailed), piecesAtOnce * pieceSize);
    bool const hasErrors = errors > 0;
    readAll(errors, &Imp::readErrors);
    return hasOutput || hasErrors;
}

void BgProcess::Imp::readAll(std::uint64_t bytes, std::size_t (Imp::*read)(std::size_t)) {
    while (bytes > 0) {
        std::size_t const count = (this->*read)(static_cast<std::size_t>(std::min<std::uint64_t>(bytes, pieceSize)));
        if (count == 0) return;
        bytes -= count;
    }
}

std::size_t BgProcess::Imp::readOutput(std::size_t size) {
    std::string_view const piece = _child.readOutput(std::min(size, pieceSize));
    _output.add(piece, [this](std::string const& line) { _process.processOutputString(line); });
    return piece.size();
}

std::size_t BgProcess::Imp::readErrors(std::size_t size) {
    std::string_view const piece = _child.readError(std::min(size, pieceSize));
    _errors.add(piece, [this](std::string const& line) { _process.processErrorString(line); });
    return piece.size();
}

std::size_t BgProcess::Imp::countErrors(int line) const {
    std::size_t waiting = 0;
    if (!_child.peekError(waiting)) source.abort("PeekNamedPipe failed", line);
    return waiting;
}

// What was there at the child's end, and no more: its own children may go on writing.
void BgProcess::Imp::readRest() {
    auto const output = _child.countUnreadOutput();
    auto const errors = countErrors(readingErrorsFailed);
    readAll(output, &Imp::readOutput);
    readAll(errors, &Imp::readErrors);
    for (BgLines const* const lines : {&_output, &_errors})
        if (!lines->getUnfinished().empty()) _process.processOutputString(lines->getUnfinished());
}

int BgProcess::Imp::getExitCode() const {
    int exitCode = 0;
    source.require(_child.getExitCode(exitCode), "GetExitCodeProcess( _imp->_procInfo.hProcess, &exitCode ) != 0");
    return exitCode;
}

void BgProcess::Imp::forget() {
    bool const wasKnown = _child.forget();
    _noChild.set();
    source.require(wasKnown, "CloseHandle( _imp->_procInfo.hProcess ) != 0");
}

void BgProcess::Imp::stop() {
    // A launch that has begun is completed before.
    std::lock_guard const startup(_shared->startupLock);
    _process.BgJobProtocol::stop();
    _shared->launchTurn.wakeAll();
    _shared->memoryGate.wake();
    bool const isAsked = _child.sendBreak();
    if (_watcher == std::this_thread::get_id()) {
        _endsAt = _timer.getSeconds() + (isAsked ? gracePeriod : 0.0);
        return;
    }
    if (isAsked && _noChild.wait(gracePeriod)) return;
    if (_child.terminate(0)) _noChild.wait(longestWaitForCertainEnd);
}

void BgProcess::Imp::detach() {
    if (!_child.isAttached()) return;
    _child.detach();
    _noChild.set();
}

BgProcess::BgProcess(std::string const& execStr, std::string const& description)
    : BgProcess("unnamed process", execStr, description) {}
BgProcess::BgProcess(std::string const& name, std::string const& execStr, std::string const& description)
    : BgJobProtocol(name, description), _execStr(execStr), _environment(readEnvironment()),
      _imp(std::make_unique<Imp>(*this)) {}
BgProcess::~BgProcess() = default;

void BgProcess::execute() {
    if (!_execStr.empty()) _imp->execute();
}

void BgProcess::stop() {
    _imp->stop();
}

void BgProcess::detach() {
    _imp->detach();
}

void BgProcess::addEnvironmentVariable(std::string const& name, std::string const& value) {
    _environment[name] = value;
}

void BgProcess::performInitialize() {
    current = std::make_shared<Shared>();
}

void BgProcess::performFinalize() {
    current.reset();
}

void BgProcess::processOutputString(std::string const&) {}
void BgProcess::processErrorString(std::string const&) {}

void BgProcess::handleExit(int exitCode) {
    if (exitCode != 0 && exitCode != OsChildProcess::endedByBreak)
        throw BgEx::ExBgTaskFailed(
            sourceName, exitWithError, "External process terminated with return value " + std::to_string(exitCode));
    reportProgress(1, 1);
}

} // namespace Ko
