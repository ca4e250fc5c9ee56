#include "resmgt/src/posix/detachedChildren.h"

#include "resmgt/liString.h"
#include "resmgt/lkEvent.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace Ko {

namespace {

struct DetachedChild {
    Descriptor process;
    Descriptor error;
};

bool hasEnded(DetachedChild const& child) {
    siginfo_t info{};
    auto const process = static_cast<id_t>(child.process.get());
    return ::waitid(P_PIDFD, process, &info, WEXITED | WNOHANG) != 0 || info.si_pid != 0;
}

// What a child writes after its job has gone interests nobody.
void readAndDrop(DetachedChild& child, short events) {
    if (events == 0) return;
    std::array<char, 4096> dropped;
    bool const isAtEnd = (events & POLLIN) == 0 || ::read(child.error.get(), dropped.data(), dropped.size()) <= 0;
    if (isAtEnd) child.error.reset();
}

class Keeper {
public:
    void adopt(DetachedChild child) {
        std::lock_guard const guard(_lock);
        _arrived.push_back(std::move(child));
        wake();
    }

    // Whether a thread has to be started; it is counted as running from now on.
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

    // False when there is nothing more to do; whoever adopts a child then starts another thread.
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
        for (DetachedChild const& child : _children) {
            watched.push_back({child.process.get(), POLLIN, 0});
            watched.push_back({child.error.get(), POLLIN, 0});
        }
        ::poll(watched.data(), watched.size(), -1);
        for (std::size_t index = 0; index < _children.size(); ++index)
            readAndDrop(_children[index], watched[2 * index + 2].revents);
        std::erase_if(_children, hasEnded);
    }

    Descriptor _wake{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    std::mutex _lock;
    // Guarded by the lock, as the order to end.
    Vector<DetachedChild> _arrived;
    bool _isToEnd = false;
    // The thread's alone.
    Vector<DetachedChild> _children;
    LkEvent _ended{"Detached children", true};
};

std::atomic<bool> keeperWasMade{false};

// Shared with the thread, which may outlive the static objects of a host that does not finalise.
std::shared_ptr<Keeper> const& keeper() {
    static auto const instance = std::make_shared<Keeper>();
    keeperWasMade = true;
    return instance;
}

} // namespace

void DetachedChildren::adopt(Descriptor process, Descriptor error) {
    keeper()->adopt({std::move(process), std::move(error)});
    if (!keeper()->needsThread()) return;
    try {
        std::thread([shared = keeper()] { shared->work(); }).detach();
    } catch (std::system_error const&) {
        keeper()->threadIsMissing(); // The next one that is adopted tries again.
    }
}

void DetachedChildren::finalize() {
    if (keeperWasMade) keeper()->endThread();
}

} // namespace Ko
