#pragma once

#include "base/lkLock.h"
#include "framework/bgTask/src/bgInputQueue.h"
#include "framework/bgTask/src/bgLaunchTurn.h"
#include "framework/bgTask/src/bgMemoryGate.h"
#include "framework/bgTask/src/bgProcessReader.h"
#include "resmgt/lkEvent.h"
#include "resmgt/timer.h"

#include <memory>
#include <optional>

namespace Ko {

/// The launch, the watch and the end of a process's child.
class BgProcess::Imp {
public:
    explicit Imp(BgProcess& process) : _process(process) {}

    void execute();
    void stop();
    void detach();

    void setWorkingFolder(std::string const& folder) { _child.setWorkingFolder(folder); }
    void gatherLines(std::chrono::milliseconds interval) noexcept;
    void setStopGrace(std::chrono::milliseconds grace) noexcept;
    std::size_t write(std::string_view bytes);
    void closeInput();
    BgInputQueue const& getInput() const noexcept { return _input; }
    std::optional<OsResourceUse> getResourceUse() const { return _child.getResourceUse(); }

    static void performInitialize();
    static void performFinalize();

private:
    class ChildHolder;
    class WaitReport;
    using Clock = std::chrono::steady_clock;

    // What all processes share. A job keeps it up to its own end, which can come after the package was finalised.
    struct Shared {
        BgLaunchTurn launchTurn{"Background process spawn lock"};
        // Keeps a stop from coming between the last check and the launch.
        LkLock startupLock{"Background process startup lock"};
        BgMemoryGate memoryGate;
    };

    static std::shared_ptr<Shared> const& getShared();

    void launch();
    std::optional<int> watch();
    void nap(double seconds);
    void keepTimes();
    bool passInput();
    std::optional<Clock::time_point> askToEnd();
    int getExitCode() const;
    void forget();

    static constexpr std::chrono::milliseconds usualGrace{15000};
    static constexpr Clock::time_point notAsked = Clock::time_point::max();
    static std::shared_ptr<Shared> _currentShared;

    BgProcess& _process;
    std::shared_ptr<Shared> const _shared = getShared();
    OsChildProcess _child;
    // Set while no child is attached.
    LkEvent _noChild{"No external process", true};
    // When a child that was asked to end is terminated. Written under the startup lock.
    std::atomic<Clock::time_point> _endsAt{notAsked};
    std::atomic<std::chrono::milliseconds> _grace{usualGrace};
    BgInputQueue _input{inputLimit};
    // Whether to ask the process for input. For the watching thread, like the next one.
    bool _wantsInput = true;
    Clock::time_point _notesMemoryAt;
    Reader _reader{_process, _child};
};

} // namespace Ko
