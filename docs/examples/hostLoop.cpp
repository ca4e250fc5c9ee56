#include "base/evEventManager.h"
#include "base/inInitMgr.h"
#include "framework/bgTask/bgManager.h"

#include <cerrno>
#include <fcntl.h>
#include <iostream>
#include <memory>
#include <poll.h>
#include <system_error>
#include <unistd.h>

using namespace Ko;

/// Wakes a thread that polls.
class WakePipe {
public:
    WakePipe() {
        if (pipe2(_ends, O_CLOEXEC | O_NONBLOCK) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
    }
    ~WakePipe() {
        close(_ends[0]);
        close(_ends[1]);
    }
    WakePipe(WakePipe const&) = delete;
    WakePipe& operator=(WakePipe const&) = delete;

    int descriptor() const { return _ends[0]; }
    // A full pipe wakes as well.
    void wake() const { static_cast<void>(!write(_ends[1], "", 1)); }
    void drain() const {
        for (char bytes[64]; read(_ends[0], bytes, sizeof bytes) > 0;) {
        }
    }

private:
    int _ends[2];
};

/// A host's loop, which waits for events of the framework and of other sources.
class Loop {
public:
    Loop() : _pipe(std::make_shared<WakePipe const>()) {
        // The handler owns the pipe too: it may still be running on another thread when the loop is destroyed.
        EvEventManager::getInstance().setWakeUpHandler([pipe = _pipe] { pipe->wake(); });
    }
    ~Loop() { EvEventManager::getInstance().setWakeUpHandler({}); }
    Loop(Loop const&) = delete;
    Loop& operator=(Loop const&) = delete;

    void run() {
        while (!_isLeft) {
            pollfd sources[] = {{_pipe->descriptor(), POLLIN, 0}}; // and the host's own: windows, sockets, the terminal
            if (poll(sources, std::size(sources), -1) < 0 && errno != EINTR)
                throw std::system_error(errno, std::generic_category(), "poll");
            if (sources[0].revents & POLLIN) processEvents();
        }
    }
    void leave() { _isLeft = true; }

private:
    void processEvents() {
        // Before the events: a byte that arrives while they are processed is for the next turn.
        _pipe->drain();
        try {
            EvEventManager::getInstance().processEvents();
        } catch (std::exception const& error) {
            // That event is done, and the handler was called for the events after it.
            std::cout << "an event failed: " << error.what() << '\n';
        }
    }

    std::shared_ptr<WakePipe const> _pipe;
    bool _isLeft = false;
};

/// Posts three events from its worker.
class Work : public BgJobProtocol {
public:
    explicit Work(Loop& loop) : BgJobProtocol("work"), _loop(loop) {}

    void execute() override {
        EvEventManager& events = EvEventManager::getInstance();
        events.postRequest([] { std::cout << "half done\n"; });
        events.postRequest([] { throw std::runtime_error("the disk is full"); });
        events.postRequest([&loop = _loop] {
            std::cout << "all done\n";
            loop.leave();
        });
    }

private:
    Loop& _loop;
};

int main(int argc, char** argv) {
    InInitScope const framework(argc, argv);
    Loop loop;
    BgManager::getInstance().addJob(std::make_unique<Work>(loop));
    loop.run();
    // Before the loop is destroyed, which the job and its events use.
    BgManager::getInstance().stopAllJobs();
}
