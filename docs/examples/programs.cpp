#include "base/evEventManager.h"
#include "base/inInitMgr.h"
#include "framework/bgTask/bgManager.h"
#include "framework/bgTask/bgProcess.h"
#include "resmgt/lkEvent.h"
#include "resmgt/msgServer.h"
#include "resmgt/osChildProcess.h"

#include <charconv>
#include <chrono>
#include <iostream>
#include <string_view>

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
        // ffmpeg completes its file when it is stopped, and exits with this code.
        constexpr int endedEarly = 255;
        bool const wasStopped = !mayContinue();
        bool const isGood = exitCode == withWarnings || (exitCode == endedEarly && wasStopped);
        BgProcess::handleExit(isGood ? 0 : exitCode);
    }

private:
    static bool takeNumber(std::string const& line, std::string const& before, int& number) {
        std::size_t const at = line.find(before);
        if (at == std::string::npos) return false;
        return std::from_chars(line.data() + at + before.size(), line.data() + line.size(), number).ec == std::errc();
    }
};

/// Collects a program's lines. However many come, the application thread gets one event per batch.
class Listing : public BgProcess {
public:
    Listing(std::string const& program, Vector<std::string>& list) : BgProcess(program, "list"), _list(list) {
        gatherLines(std::chrono::milliseconds(50));
    }

protected:
    void processOutputStrings(Vector<std::string> const& lines) override {
        EvEventManager::getInstance().postRequest(
            [lines, &list = _list] { list.insert(list.end(), lines.begin(), lines.end()); });
    }

private:
    Vector<std::string>& _list;
};

/// Sorts numbers with a program that reads them from its standard input.
class Sorting : public Listing {
public:
    Sorting(std::string numbers, Vector<std::string>& list)
        : Listing("sort -n", list), _numbers(std::move(numbers)), _rest(_numbers) {}

protected:
    // Called again when the program has taken some.
    void provideInput() override {
        _rest.remove_prefix(write(_rest));
        if (_rest.empty()) closeInput();
    }

private:
    std::string const _numbers;
    std::string_view _rest;
};

LkEvent awake("Host", true);

/// Processes events until the condition holds, like a host's loop.
template <class Condition>
void processEventsUntil(Condition condition) {
    while (!condition()) {
        awake.wait();
        awake.reset();
        EvEventManager::getInstance().processEvents();
    }
}

/// Waits for the end of the job and deletes it.
void runToTheEnd(RCShdPtr<BgJob> const& job) {
    processEventsUntil([&] { return !job->isRunning(); });
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

    auto const endless =
        encode("rain.mov", "sh -c 'trap \"exit 255\" INT; echo \"frame 1 of 9\"; while :; do sleep 1; done'");
    processEventsUntil([&] { return endless->getStatistics().progress() > 0.0f; });
    endless->stop();
    runToTheEnd(endless);

    std::string numbers;
    for (int number = 300000; number > 0; --number)
        numbers += std::to_string(number) + "\n";
    Vector<std::string> list;
    std::cout << "sort:\n";
    runToTheEnd(BgManager::getInstance().addJob(std::make_unique<Sorting>(numbers, list)));
    std::cout << "  " << list.size() << " lines, from " << list.front() << " to " << list.back() << '\n';
}
