#include "scriptingAPI/piPythonInterpreterTerminationGuard.h"

#include "base/assertions.h"
#include "base/neverDestroyed.h"

#include <condition_variable>
#include <mutex>

namespace Ko {

namespace {

constexpr AssertionSource source{"scriptingAPI\\src\\piPythonInterpreterTerminationGuard"};

struct Holders {
    std::mutex mutex;
    std::condition_variable changed;
    int threads = 0;
    bool isEnding = false;
};

// Never destroyed: threads may hold guards until the process has ended.
Holders& holders() {
    static NeverDestroyed<Holders> instance;
    return *instance;
}

thread_local int guardsOfThisThread = 0;

/// While it exists, other threads wait for a guard.
class Ending {
public:
    explicit Ending(std::unique_lock<std::mutex>& lock) : _lock(lock) {
        holders().changed.wait(lock, [] { return !holders().isEnding; });
        holders().isEnding = true;
        holders().changed.wait(lock, [] { return holders().threads == 0; });
        lock.unlock();
        ++guardsOfThisThread;
    }
    ~Ending() {
        --guardsOfThisThread;
        _lock.lock();
        holders().isEnding = false;
        holders().changed.notify_all();
    }
    Ending(Ending const&) = delete;
    Ending& operator=(Ending const&) = delete;

private:
    std::unique_lock<std::mutex>& _lock;
};

} // namespace

PiPythonInterpreterTerminationGuard::PiPythonInterpreterTerminationGuard() {
    if (guardsOfThisThread == 0) {
        std::unique_lock lock(holders().mutex);
        holders().changed.wait(lock, [] { return !holders().isEnding; });
        ++holders().threads;
    }
    ++guardsOfThisThread;
}

PiPythonInterpreterTerminationGuard::~PiPythonInterpreterTerminationGuard() {
    if (--guardsOfThisThread > 0) return;
    std::lock_guard const guard(holders().mutex);
    if (--holders().threads == 0) holders().changed.notify_all();
}

bool PiPythonInterpreterTerminationGuard::isHeld() {
    std::lock_guard const guard(holders().mutex);
    return holders().threads > 0;
}

void PiPythonInterpreterTerminationGuard::endInterpreter(std::function<void()> const& end) {
    source.require(guardsOfThisThread == 0, "guardsOfThisThread == 0");
    std::unique_lock lock(holders().mutex);
    Ending const ending(lock);
    end();
}

} // namespace Ko
