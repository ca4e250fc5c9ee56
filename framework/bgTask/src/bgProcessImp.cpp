#include "framework/bgTask/src/bgProcessImp.h"

#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/src/bgAskOnly.h"
#include "framework/bgTask/src/bgProcessLog.h"
#include "resmgt/envIntVar.h"
#include "resmgt/osMemoryArch.h"

#include <algorithm>
#include <mutex>

namespace Ko {

namespace {

constexpr int launchFailed = 323;
constexpr double shortestNap = 0.004;
constexpr double longestNap = 0.5;
constexpr double shortestWaitForMemory = 0.1;
constexpr std::chrono::milliseconds longestTime = std::chrono::hours(24 * 365);
constexpr auto untilFirstNote = std::chrono::milliseconds(100);
constexpr auto betweenNotes = std::chrono::milliseconds(500);
constexpr double longestWaitForCertainEnd = 1.0;

constinit EnvIntVar minMemory("KO_BGEXEC_MIN_MEM", 512, bgProcessSourceName);
constinit EnvIntVar minMemoryPercent("KO_BGEXEC_MIN_MEM_PERCENT", 20, bgProcessSourceName);
constinit EnvIntVar minSwapFree("KO_BGEXEC_MIN_SWAP_FREE", 512, bgProcessSourceName);
constinit EnvIntVar waitTime("KO_BGEXEC_WAIT_TIME", 15, bgProcessSourceName);

// Sums of times must not overflow.
std::chrono::milliseconds bounded(std::chrono::milliseconds time) noexcept {
    return std::clamp(time, std::chrono::milliseconds(0), longestTime);
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
        logProcess(3, [] {
            return LiString("The available pagefile memory is smaller than the free physical memory; the process could "
                            "fail.");
        });
    // The unsigned wrap-around of a smaller page file is intended: the check passes after the warning.
    return memory.freePhysical > toBytes(minMemory.get()) &&
           percentOf(memory.freePhysical, memory.totalPhysical) > minMemoryPercent.get() &&
           memory.freePageFile - memory.freePhysical > toBytes(minSwapFree.get());
}

} // namespace

std::shared_ptr<BgProcess::Imp::Shared> BgProcess::Imp::_currentShared;

void BgProcess::Imp::performInitialize() {
    _currentShared = std::make_shared<Shared>();
}

void BgProcess::Imp::performFinalize() {
    _currentShared.reset();
}

std::shared_ptr<BgProcess::Imp::Shared> const& BgProcess::Imp::getShared() {
    bgProcessSource.require(_currentShared != nullptr, "_spawnLock != 0");
    return _currentShared;
}

/// For the time between launch and end of a child: ends the child when a hook throws.
class BgProcess::Imp::ChildHolder {
public:
    explicit ChildHolder(Imp& imp) : _imp(imp) {}
    ~ChildHolder() {
        _imp._child.terminate(0);
        _imp._child.forget();
        _imp._noChild.set();
    }
    ChildHolder(ChildHolder const&) = delete;
    ChildHolder& operator=(ChildHolder const&) = delete;

private:
    Imp& _imp;
    // A hook that stops this job would wait for itself, and one that stops another job would hold up this one.
    BgAskOnly const _neverWaitInHooks;
};

/// Reports what the job waits for before its program starts. A job that does not wait reports nothing.
class BgProcess::Imp::WaitReport {
public:
    explicit WaitReport(BgProcess const& process) : _process(process) {}
    ~WaitReport() { end(); }
    WaitReport(WaitReport const&) = delete;
    WaitReport& operator=(WaitReport const&) = delete;

    void begin(char const* phase) {
        _process.reportPhase(phase);
        _isWaiting = true;
    }
    void end() {
        if (std::exchange(_isWaiting, false)) _process.reportPhase("");
    }

private:
    BgProcess const& _process;
    bool _isWaiting = false;
};

void BgProcess::Imp::execute() {
    BgInputQueue::Use const input(_input);
    // Held here when the job is paused, not below: there it would hold up the launches of others.
    if (!_process.continueExecution()) return;
    auto const mayGoOn = [this] { return _process.mayContinue(); };
    WaitReport wait(_process);
    BgLaunchTurn::Holder turn(
        _shared->launchTurn, mayGoOn, [&wait] { wait.begin("Waiting for another program to start"); });
    double const interval = std::max<double>(waitTime.get(), shortestWaitForMemory);
    auto const reportMemory = [&wait] { wait.begin("Waiting for free memory"); };
    if (!turn.wasTaken() || !_shared->memoryGate.pass(mayGoOn, isEnoughMemoryFree, interval, reportMemory)) return;
    std::unique_lock startup(_shared->startupLock);
    if (!mayGoOn()) return;
    BgMemoryGate::Running const running(_shared->memoryGate);
    launch();
    ChildHolder const holder(*this);
    startup.unlock();
    turn.releaseAt(Clock::now() + std::chrono::seconds(waitTime.get()));
    wait.end();

    std::optional<int> const exitCode = watch();
    _reader.readRest();
    forget();
    if (exitCode)
        _process.handleExit(*exitCode);
    else
        _process.reportProgress(1, 1);
}

void BgProcess::Imp::launch() {
    logProcess(6, [this] { return "Launching process \"" + _process._execStr + "\""; });
    Vector<LiString> environment;
    for (auto const& [name, value] : _process._environment)
        environment.push_back(name + "=" + value);
    _endsAt = notAsked;
    _reader.begin();
    _wantsInput = true;
    _notesMemoryAt = Clock::now() + untilFirstNote;
    switch (_child.launch(_process._execStr, environment)) {
    case OsChildProcess::Launch::Started:
        _noChild.reset();
        return;
    case OsChildProcess::Launch::NoInputPipe:
        bgProcessSource.fail("CreatePipe( &stdReadIn, &_stdWriteIn, &sa, 0 ) != 0");
    case OsChildProcess::Launch::NoErrorPipe:
        bgProcessSource.fail("CreatePipe( &_stdReadErr, &stdWriteErr, &sa, 0 ) != 0");
    case OsChildProcess::Launch::Failed:
        break;
    }
    logProcess(3, [this] { return "Process \"" + _process._execStr + "\": " + _child.getLaunchError() + "."; });
    throw BgEx::ExBgTaskFailed(bgProcessSourceName, launchFailed, "External process could not be launched");
}

// Returns the exit code; nothing when the child was detached.
std::optional<int> BgProcess::Imp::watch() {
    // The system does not announce that a file has grown, so the loop polls it. Naps get longer while nothing is written.
    for (double seconds = shortestNap;; seconds = std::min(2 * seconds, longestNap)) {
        keepTimes();
        bool const hasPassed = passInput();
        bool const hasRead = _reader.readPieces();
        if (!_child.isAttached()) return {};
        if (int const exitCode = getExitCode(); exitCode != OsChildProcess::stillActive) return exitCode;
        if (hasRead || hasPassed)
            seconds = shortestNap / 2;
        else if (!_reader.hasErrors())
            nap(seconds);
    }
}

void BgProcess::Imp::nap(double seconds) {
    auto const now = Clock::now();
    auto const endsAt = _endsAt.load();
    std::chrono::duration<double> const untilDue = std::min(endsAt > now ? endsAt : notAsked, _reader.getDue()) - now;
    _child.nap(std::clamp(untilDue.count(), 0.0, seconds));
}

// Terminates the child after a stop that did not wait, and reads its memory from time to time.
void BgProcess::Imp::keepTimes() {
    auto const now = Clock::now();
    if (now >= _endsAt.load()) _child.terminate(0);
    if (now < _notesMemoryAt) return;
    _child.noteMemory();
    _notesMemoryAt = now + betweenNotes;
}

// Asks the process for more when the program has taken some, so that a process without input costs nothing.
bool BgProcess::Imp::passInput() {
    bool const hasPassed = _input.passOn([this](std::string_view bytes) { return _child.writeInput(bytes); });
    if ((hasPassed || std::exchange(_wantsInput, false)) && _input.isOpen() && _input.isHalfEmpty() &&
        _endsAt.load() == notAsked)
        _process.provideInput();
    if (!_input.isOpen() && _input.countWaiting() == 0) _child.closeInput();
    return hasPassed;
}

int BgProcess::Imp::getExitCode() const {
    int exitCode = 0;
    bgProcessSource.require(
        _child.getExitCode(exitCode), "GetExitCodeProcess( _imp->_procInfo.hProcess, &exitCode ) != 0");
    return exitCode;
}

void BgProcess::Imp::forget() {
    _input.drop();
    bool const wasKnown = _child.forget();
    _noChild.set();
    bgProcessSource.require(wasKnown, "CloseHandle( _imp->_procInfo.hProcess ) != 0");
}

void BgProcess::Imp::stop() {
    std::optional<Clock::time_point> const endsAt = askToEnd();
    if (!endsAt || BgAskOnly::isActive() || _noChild.waitUntil(*endsAt)) return;
    if (_child.terminate(0)) _noChild.wait(longestWaitForCertainEnd);
}

// The lock is not held during any wait, so that a stop delays neither a launch nor another stop. Sends the break once:
// many programs take a second one as an order to end without cleaning up. Returns when the child is overdue.
std::optional<BgProcess::Imp::Clock::time_point> BgProcess::Imp::askToEnd() {
    std::lock_guard const startup(_shared->startupLock);
    _process.BgJobProtocol::stop();
    _shared->launchTurn.wakeAll();
    _shared->memoryGate.wake();
    if (!_child.isAttached()) return {};
    if (_endsAt.load() == notAsked) {
        _reader.limit();
        bool const isAsked = _child.sendBreak();
        _endsAt = isAsked ? Clock::now() + _grace.load() : Clock::now();
    }
    _endsAt = std::min(_endsAt.load(), BgAskOnly::getLimit());
    _child.wake();
    return _endsAt.load();
}

void BgProcess::Imp::gatherLines(std::chrono::milliseconds interval) noexcept {
    _reader.gatherLines(bounded(interval));
}

void BgProcess::Imp::setStopGrace(std::chrono::milliseconds grace) noexcept {
    _grace = bounded(grace);
}

std::size_t BgProcess::Imp::write(std::string_view bytes) {
    BgInputQueue::Added const added = _input.add(bytes);
    if (added.needsWaking) _child.wake();
    return added.count;
}

void BgProcess::Imp::closeInput() {
    _input.close();
    _child.wake();
}

void BgProcess::Imp::detach() {
    if (!_child.isAttached()) return;
    _child.detach();
    _noChild.set();
}

} // namespace Ko
