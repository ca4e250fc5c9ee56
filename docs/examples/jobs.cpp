#include "base/evEventManager.h"
#include "base/inInitMgr.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/bgManager.h"
#include "resmgt/lkEvent.h"
#include "resmgt/msgServer.h"

#include <iostream>

using namespace Ko;

/// Renders a picture tile by tile.
class Render : public BgJobProtocol {
public:
    Render(LiString const& picture, int tiles) : BgJobProtocol("Render " + picture, "render"), _tiles(tiles) {}

    void execute() override {
        if (_tiles <= 0) throw BgEx::ExBgTaskFailed("render", __LINE__, "There is nothing to render.");
        for (int tile = 0; tile < _tiles && continueExecution(); ++tile) {
            // ... the work ...
            reportProgress(tile + 1, _tiles);
        }
    }

private:
    int _tiles;
};

/// Waits for input from another thread. A stop has to end the wait.
class Listen : public BgJobProtocol {
public:
    Listen() : BgJobProtocol("Listen", "listen") {}

    void execute() override {
        hasBegun.set();
        while (continueExecution()) {
            _inputArrived.wait();
            _inputArrived.reset();
            // ... process the input ...
        }
    }
    void stop() override {
        BgJobProtocol::stop();
        _inputArrived.set();
    }

    LkEvent hasBegun{"Listening", false};

private:
    LkEvent _inputArrived{"Input arrived", false};
};

char const* nameOf(BgJobHintChangeState::JobState_t state) {
    switch (state) {
    case BgJobHintChangeState::Busy:
        return "busy";
    case BgJobHintChangeState::Stopping:
        return "stopping";
    case BgJobHintChangeState::Stopped:
        return "stopped";
    case BgJobHintChangeState::Complete:
        return "complete";
    case BgJobHintChangeState::Failed:
        return "failed";
    default:
        return "waiting";
    }
}

/// Shows the states and the progress of jobs on the application thread.
class Display : private ObObserver<BgJobTag> {
public:
    ~Display() override { disableUpdates(); }

    void follow(RCShdPtr<BgJob> const& job) {
        job->setNotifProgressSlice(0.5f);
        job->attachObserver(this);
    }

private:
    // Runs on the thread that changes the job: posts an event that holds all it needs.
    void update(ObObserver<BgJobTag> const*, ObHints const& hints) override {
        EvEventManager& events = EvEventManager::getInstance();
        if (auto const change = hints.pickHint<BgJobHintChangeState>())
            events.postRequest([change] { std::cout << "  " << nameOf(change->getJobState()) << '\n'; });
        if (auto const step = hints.pickHint<BgJobHintProgress>())
            events.postRequest([step] { std::cout << "  " << step->getProgress() * 100 << "%\n"; });
    }
};

LkEvent awake("Host", true);

/// Stands for the loop of the host.
void runToTheEnd(RCShdPtr<BgJob> const& job) {
    while (job->isRunning()) {
        awake.wait();
        awake.reset();
        EvEventManager::getInstance().processEvents();
    }
    // After this, the job sends no more notifications.
    BgManager::getInstance().stopAndDeleteJob(job);
    EvEventManager::getInstance().processEvents();
}

RCShdPtr<BgJob> submit(Display& display, OPtr<BgJobProtocol> protocol) {
    std::cout << protocol->getJobName() << ":\n";
    auto const job = BgJob::create(std::move(protocol));
    // Before a worker can take the job, so that no notification is missed.
    display.follow(job);
    BgManager::getInstance().addJob(job);
    return job;
}

int main(int argc, char** argv) {
    InInitScope const framework(argc, argv);
    EvEventManager::getInstance().setWakeUpHandler([] { awake.set(); });
    MsgProtocol::setHandler([](Msg const& message) { std::cout << message.getText() << '\n'; });
    Display display;

    runToTheEnd(submit(display, std::make_unique<Render>("sky.png", 100)));
    runToTheEnd(submit(display, std::make_unique<Render>("nothing.png", 0)));

    auto listen = std::make_unique<Listen>();
    LkEvent const& hasBegun = listen->hasBegun;
    auto const listening = submit(display, std::move(listen));
    hasBegun.wait();
    listening->stop();
    runToTheEnd(listening);
}
