#include "resmgt/src/posix/detachedChildren.h"

#include "resmgt/lkEvent.h"
#include "resmgt/src/posix/childStart.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace Ko {

namespace {

bool hasEnded(Descriptor const& child) {
    siginfo_t info{};
    return ::waitid(P_PIDFD, static_cast<id_t>(child.get()), &info, WEXITED | WNOHANG) != 0 || info.si_pid != 0;
}

class Keeper {
public:
    void adopt(Descriptor child) {
        std::lock_guard const guard(_lock);
        _arrived.push_back(std::move(child));
        wake();
    }

    // Whether the caller has to start a thread, which counts as running from now on.
    bool needsThread() {
        std::lock_guard const guard(_lock);
        if (!_ended.isSet() || _arrived.empty()) return false;
        _isToEnd = false;
        _ended.reset();
        return true;
    }

    void work() {
        while (takeArrived())
            watch();
    }

    void threadIsMissing() { _ended.set(); }

    void endThread() {
        {
            std::lock_guard const guard(_lock);
            _isToEnd = true;
            wake();
        }
        _ended.wait();
    }

private:
    void wake() { ::eventfd_write(_wake.get(), 1); }

    // False when the thread has to end; the next adoption then starts another one.
    bool takeArrived() {
        std::lock_guard const guard(_lock);
        eventfd_t ignored;
        ::eventfd_read(_wake.get(), &ignored);
        std::move(_arrived.begin(), _arrived.end(), std::back_inserter(_children));
        _arrived.clear();
        if (!_children.empty() && !_isToEnd) return true;
        std::swap(_arrived, _children);
        _ended.set();
        return false;
    }

    void watch() {
        Vector<pollfd> watched{{_wake.get(), POLLIN, 0}};
        for (Descriptor const& child : _children)
            watched.push_back({child.get(), POLLIN, 0});
        ::poll(watched.data(), watched.size(), -1);
        std::erase_if(_children, hasEnded);
    }

    Descriptor _wake{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    std::mutex _lock;
    // Guarded by the lock.
    Vector<Descriptor> _arrived;
    bool _isToEnd = false;
    // For the thread only.
    Vector<Descriptor> _children;
    LkEvent _ended{"Detached children", true};
};

std::atomic<bool> keeperWasMade{false};

// Shared with the thread, which outlives the static objects when a host does not finalise.
std::shared_ptr<Keeper> const& keeper() {
    static auto const instance = std::make_shared<Keeper>();
    keeperWasMade = true;
    return instance;
}

// An open file of its own: the one of this process does not wait for bytes.
Descriptor openBlocking(Descriptor const& pipeEnd) {
    LiString const name = "/proc/self/fd/" + std::to_string(pipeEnd.get());
    // A plain open would wait while the pipe has no writer.
    Descriptor opened = Descriptor::aboveStandard(::open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    ::fcntl(opened.get(), F_SETFL, 0);
    return opened;
}

Vector<LiString> searchPath() {
    char const* const path = std::getenv("PATH");
    return path ? Vector<LiString>{LiString("PATH=") + path} : Vector<LiString>{};
}

} // namespace

void DetachedChildren::adopt(Descriptor process) {
    keeper()->adopt(std::move(process));
    if (!keeper()->needsThread()) return;
    try {
        std::thread([shared = keeper()] { shared->work(); }).detach();
    } catch (std::system_error const&) {
        keeper()->threadIsMissing(); // The next adoption tries again.
    }
}

void DetachedChildren::drain(Descriptor const& error) {
    Descriptor const input = openBlocking(error);
    Descriptor const nowhere = Descriptor::aboveStandard(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    Lifeline const none;
    StartedChild reader;
    if (startChild({{"cat"}, searchPath(), input, nowhere, nowhere, none, {}}, reader).error == 0)
        adopt(std::move(reader.process));
}

void DetachedChildren::finalize() {
    if (keeperWasMade) keeper()->endThread();
}

} // namespace Ko
