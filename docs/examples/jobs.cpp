#include "base/evEventManager.h"
#include "base/inInitMgr.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/bgManager.h"
#include "resmgt/lkEvent.h"
#include "resmgt/msgServer.h"

#include <iostream>
#include <thread>
#include <vector>

using namespace Ko;

/// Renders a picture tile by tile.
class Render : public BgJobProtocol {
public:
    Render() : BgJobProtocol("Render sky.png", "render") {}
    void execute() override {
        for (int tile = 0; tile < 4 && continueExecution(); ++tile) // ... the work ...
            reportProgress(tile + 1, 4);
    }
};

LkEvent awake("Host", true);

/// Stands for the loop of the host.
void runToTheEnd(BgJob& job) {
    bool hasEnded = false;
    auto const end = job.onEnd([&hasEnded](BgJob&) { hasEnded = true; });
    while (!hasEnded) {
        awake.wait();
        awake.reset();
        EvEventManager::getInstance().processEvents(std::chrono::milliseconds(10));
    }
}

void render() {
    auto const job = BgJob::create(std::make_unique<Render>());
    auto const steps =
        job->on<BgJobHintProgress>([](auto const& step) { std::cout << "  " << step.getProgress() * 100 << "%\n"; });
    auto const end = job->onEnd([](BgJob& ended) { std::cout << "  " << ended.getState()->state() << '\n'; });
    BgManager::getInstance().addJob(job);
    runToTheEnd(*job);
}

/// Reads pictures, and says what it does.
class Import : public BgJobProtocol {
public:
    explicit Import(int files) : BgJobProtocol("Import", "import"), _files(files) {}

    void execute() override {
        std::vector<int> pictures;
        reportPhase("Searching");
        reportUnknownProgress();
        // ... search ...
        reportPhase("Reading");
        for (int file = 0; file < _files && continueExecution(); ++file) {
            if (file == 2) reportMessage(BgMessage::Severity::Warning, "File 2 has no colour profile.");
            pictures.push_back(file);
            reportUnits(file + 1, _files, "files");
        }
        setResult(std::move(pictures));
    }

private:
    int _files;
};

void importFiles() {
    auto const job = BgJob::create(std::make_unique<Import>(5));
    auto const messages = job->on<BgJobHintMessage>([](BgJobHintMessage const& hint) {
        for (BgMessage const& message : hint.getMessages())
            std::cout << "  " << message.text << '\n';
    });
    auto const end = job->onEnd([](BgJob& ended) {
        BgUnits const units = ended.getUnits();
        std::cout << "  " << ended.getPhase() << ": " << units.done << " of " << units.total << ' ' << units.unit
                  << '\n';
        if (auto const pictures = ended.getResult<std::vector<int>>())
            std::cout << "  " << pictures->size() << " pictures\n";
    });
    BgManager::getInstance().addJob(job);
    runToTheEnd(*job);
}

/// Waits for input from another thread. A stop has to end the wait.
class Listen : public BgJobProtocol {
public:
    Listen() : BgJobProtocol("Listen", "listen") {}

    void execute() override {
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

private:
    LkEvent _inputArrived{"Input arrived", false};
};

/// Fails.
class Upload : public BgJobProtocol {
public:
    Upload() : BgJobProtocol("Upload", "upload") {}
    void execute() override { throw BgEx::ExBgTaskFailed("upload", __LINE__, "The server does not answer."); }
};

void publish() {
    BgManager& manager = BgManager::getInstance();
    auto const first = manager.addJob(std::make_unique<Import>(3));
    auto const second = manager.addJob(std::make_unique<Upload>());
    auto const third = BgJob::create(std::make_unique<Render>());
    auto const end = third->onEnd([](BgJob& ended) { std::cout << "  " << ended.getReason() << '\n'; });
    manager.addJob(third, {{first, second}});
    runToTheEnd(*third);
}

/// Has a picture rendered on another machine, for which a thread stands here.
class RenderRemotely : public BgJobProtocol {
public:
    explicit RenderRemotely(std::jthread& machine) : BgJobProtocol("Render remotely", "render"), _machine(machine) {}
    void execute() override {
        _machine = std::jthread([completion = leaveWorker()]() mutable {
            // ... the work ...
            completion.complete();
        });
    }

private:
    std::jthread& _machine;
};

void renderRemotely() {
    std::jthread machine;
    auto const job = BgManager::getInstance().addJob(std::make_unique<RenderRemotely>(machine));
    runToTheEnd(*job);
    std::cout << "  " << job->getState()->state() << '\n';
}

void close() {
    BgManager& manager = BgManager::getInstance();
    auto const listen = manager.addJob(std::make_unique<Listen>());
    bool isClosed = false;
    manager.stopAllJobs(std::chrono::seconds(20), [&](Vector<RCShdPtr<BgJob>> const& unended) {
        for (auto const& job : unended)
            std::cout << "  " << job->getName() << " does not end.\n";
        isClosed = true;
    });
    while (!isClosed) {
        awake.wait();
        awake.reset();
        EvEventManager::getInstance().processEvents();
    }
    std::cout << "  " << listen->getName() << ": " << listen->getState()->state() << '\n';
}

int main(int argc, char** argv) {
    InInitScope const framework(argc, argv);
    EvEventManager::getInstance().setWakeUpHandler([] { awake.set(); });
    MsgProtocol::setHandler([](Msg const& message) { std::cout << "  " << message.getText() << '\n'; });
    std::cout << "Render:\n";
    render();
    std::cout << "Import:\n";
    importFiles();
    std::cout << "Publish:\n";
    publish();
    std::cout << "Render remotely:\n";
    renderRemotely();
    std::cout << "Close:\n";
    close();
}
