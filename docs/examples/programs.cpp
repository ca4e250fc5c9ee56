#include "base/evEventManager.h"
#include "base/inInitMgr.h"
#include "framework/bgTask/bgManager.h"
#include "framework/bgTask/bgProcess.h"
#include "resmgt/lkEvent.h"
#include "resmgt/msgServer.h"
#include "resmgt/osChildProcess.h"

#include <charconv>
#include <iostream>

using namespace Ko;

/// Shows a line on the application thread.
void show(std::string const& line) {
    EvEventManager::getInstance().postRequest([line] { std::cout << line << '\n'; });
}

/// Encodes a film with a program that writes lines such as "frame 3 of 8".
class Encode : public BgProcess {
public:
    Encode(std::string const& film, std::string const& program) : BgProcess("Encode " + film, program, "encode") {
        addEnvironmentVariable("FILM", film);
    }

protected:
    // The worker calls these hooks, one at a time.
    void processOutputString(std::string const& line) override {
        int done = 0, total = 0;
        if (takeNumber(line, "frame ", done) && takeNumber(line, " of ", total)) reportProgress(done, total);
        show("  " + line);
    }
    void processErrorString(std::string const& line) override { show("  error: " + line); }
    void handleExit(int exitCode) override {
        if (exitCode != OsChildProcess::endedByBreak) show("  exit code " + std::to_string(exitCode));
        constexpr int withWarnings = 3;
        BgProcess::handleExit(exitCode == withWarnings ? 0 : exitCode);
    }

private:
    static bool takeNumber(std::string const& line, std::string const& before, int& number) {
        std::size_t const at = line.find(before);
        if (at == std::string::npos) return false;
        return std::from_chars(line.data() + at + before.size(), line.data() + line.size(), number).ec == std::errc();
    }
};

LkEvent awake("Host", true);

/// Processes events until the job has ended, like a host's loop, and deletes the job.
void runToTheEnd(RCShdPtr<BgJob> const& job) {
    while (job->isRunning()) {
        awake.wait();
        awake.reset();
        EvEventManager::getInstance().processEvents();
    }
    LiString const state = job->getState()->state();
    // The last events of the job are posted when this returns.
    BgManager::getInstance().stopAndDeleteJob(job);
    EvEventManager::getInstance().processEvents();
    std::cout << "  " << state << '\n';
}

RCShdPtr<BgJob> encode(std::string const& film, std::string const& program) {
    std::cout << film << ":\n";
    return BgManager::getInstance().addJob(std::make_unique<Encode>(film, program));
}

int main(int argc, char** argv) {
    InInitScope const framework(argc, argv);
    EvEventManager::getInstance().setWakeUpHandler([] { awake.set(); });
    MsgProtocol::setHandler([](Msg const& message) { std::cout << message.getText() << '\n'; });

    runToTheEnd(encode("sky.mov", R"(sh -c 'echo "frame 1 of 2 of $FILM"; echo "frame 2 of 2 of $FILM"')"));
    runToTheEnd(encode("tree.mov", "sh -c 'echo \"too dark\" >&2; exit 3'"));
    runToTheEnd(encode("sea.mov", "sh -c 'exit 1'"));
    runToTheEnd(encode("fog.mov", "no-such-program"));

    auto const endless = encode("rain.mov", "sleep 1000");
    endless->stop();
    runToTheEnd(endless);
}
