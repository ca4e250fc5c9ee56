#include "host/jobs.h"

#include "base/evEventManager.h"
#include "document/documentFile.h"
#include "framework/bgTask/bgEx.h"
#include "framework/bgTask/bgProcess.h"
#include "image/atomicFile.h"
#include "resmgt/msgServer.h"
#include "script/script.h"
#include "text/commandLine.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <ostream>

namespace compositor {

namespace {

using Ko::RCShdPtr;
using State = Ko::BgJobHintChangeState;

/// Work that writes a file.
class FileProtocol final : public Ko::BgJobProtocol {
public:
    using Work = std::function<void(Progress const& progress)>;

    FileProtocol(std::string const& type, std::filesystem::path const& path, Work work)
        : BgJobProtocol(type + " " + path.filename().string(), type), _work(std::move(work)) {}

    void execute() override {
        try {
            _work([this](int done, int total) {
                reportProgress(done, total);
                return continueExecution();
            });
        } catch (std::exception const& error) {
            throw Ko::BgEx::ExBgTaskFailed("compositor/host/jobs.cpp", __LINE__, error.what());
        }
    }

private:
    Work _work;
};

/// An external program, with something to be done before and after it.
class ProgramProtocol : public Ko::BgProcess {
public:
    ProgramProtocol(std::string const& type, std::string const& name, std::string const& commandLine,
        std::vector<std::string> const& environment, LineSink sink)
        : BgProcess(type + " " + name, commandLine, type), _sink(std::move(sink)) {
        for (std::string const& entry : environment) {
            std::size_t const separator = entry.find('=');
            if (separator == std::string::npos || separator == 0)
                throw ScriptError("\"" + entry + "\" does not define a variable; write NAME=VALUE");
            addEnvironmentVariable(entry.substr(0, separator), entry.substr(separator + 1));
        }
    }

protected:
    void processOutputString(std::string const& line) override { _sink(line); }
    void processErrorString(std::string const& line) override { _sink(line); }

private:
    LineSink _sink;
};

class ExportProtocol final : public ProgramProtocol {
public:
    ExportProtocol(Renderer renderer, std::filesystem::path const& path, std::filesystem::path picture,
        std::string const& commandLine, LineSink sink)
        : ProgramProtocol("export", path.filename().string(), commandLine, {}, std::move(sink)),
          _renderer(std::move(renderer)), _picture(std::move(picture)) {}

    void execute() override {
        struct Removal {
            std::filesystem::path const& path;
            ~Removal() {
                std::error_code ignored;
                std::filesystem::remove(path, ignored);
            }
        } const removal{_picture};
        if (render()) ProgramProtocol::execute();
    }

private:
    // Half of the work, as far as anybody can tell.
    bool render() try {
        return _renderer.renderToFile(_picture, [this](int done, int total) {
            reportProgress(done, 2 * total);
            return continueExecution();
        });
    } catch (std::exception const& error) {
        throw Ko::BgEx::ExBgTaskFailed("compositor/host/jobs.cpp", __LINE__, error.what());
    }

    Renderer _renderer;
    std::filesystem::path _picture;
};

std::string percent(float progress) {
    return std::isfinite(progress) ? std::to_string(std::lround(progress * 100.0f)) + "%" : "?";
}

std::string bar(float progress) {
    constexpr int width = 30;
    float const shown = std::isnan(progress) ? 0.0f : std::clamp(progress, 0.0f, 1.0f);
    auto const filled = static_cast<std::size_t>(std::lround(shown * width));
    std::string text(width, '-');
    std::fill_n(text.begin(), filled, '#');
    return "[" + text + "] " + percent(progress);
}

std::string nameOf(State::JobState_t state) {
    switch (state) {
    case State::Idle:
    case State::Waiting:
        return "waiting";
    case State::Busy:
        return "busy";
    case State::Stopping:
        return "stopping";
    case State::Stopped:
        return "stopped";
    case State::Complete:
        return "complete";
    case State::Failed:
        return "failed";
    }
    return "";
}

} // namespace

Ko::OPtr<Ko::BgJobProtocol> makeRenderProtocol(Document const& document, std::filesystem::path const& path) {
    return std::make_unique<FileProtocol>("render", path,
        [renderer = document.renderer(), path](Progress const& progress) { renderer.renderToFile(path, progress); });
}

Ko::OPtr<Ko::BgJobProtocol> makeSaveProtocol(Document const& document, std::filesystem::path const& path) {
    return std::make_unique<FileProtocol>(
        "save", path, [document, path](Progress const& progress) { saveDocument(document, path, progress); });
}

Ko::OPtr<Ko::BgJobProtocol> makeRunProtocol(
    std::string const& commandLine, std::vector<std::string> const& environment, LineSink sink) {
    return std::make_unique<ProgramProtocol>(
        "run", commandLine.substr(0, commandLine.find(' ')), commandLine, environment, std::move(sink));
}

Ko::OPtr<Ko::BgJobProtocol> makeExportProtocol(
    Document const& document, std::filesystem::path const& path, std::string const& commandLine, LineSink sink) {
    std::filesystem::path const picture = temporaryPathBeside(path, ".png");
    std::string const command = fillIn(commandLine, {{"%o", path.string()}, {"%f", picture.string()}});
    return std::make_unique<ExportProtocol>(document.renderer(), path, picture, command, std::move(sink));
}

Jobs::Jobs(std::ostream& output, std::ostream& errors, Bars bars) : _output(output), _errors(errors), _bars(bars) {
    Ko::EvEventManager::getInstance().setWakeUpHandler([this] { _awake.set(); });
    Ko::MsgProtocol::setHandler([this](Ko::Msg const& message) { showError(message.getText()); });
}

Jobs::~Jobs() {
    stopAll();
    disableUpdates();
    Ko::MsgProtocol::setHandler({});
    Ko::EvEventManager::getInstance().setWakeUpHandler({});
}

void Jobs::submit(std::string place, Ko::OPtr<Ko::BgJobProtocol> protocol) {
    int const number = ++_lastNumber;
    std::string title = "job " + std::to_string(number) + " (" + protocol->getJobName() + ")";
    auto const job = Ko::BgJob::create(std::move(protocol));
    _entries[number] = {std::move(place), job, std::move(title)};
    // Before the manager: what this knows of a failure comes before its message.
    job->attachObserver(this);
    Ko::BgManager::getInstance().addJob(job);
}

LineSink Jobs::nextJobsLines() {
    return [this, number = _lastNumber + 1](std::string const& line) {
        Ko::EvEventManager::getInstance().postRequest([this, number, line] { showLine(number, line); });
    };
}

void Jobs::update() {
    Ko::EvEventManager::getInstance().processEvents();
}

void Jobs::list() {
    update();
    eraseBars();
    for (auto entry = _entries.begin(); entry != _entries.end();) {
        RCShdPtr<Ko::BgJob> const job = entry->second.job;
        Ko::BgJobStatistics const times = job->getStatistics();
        auto const at = [](char const* what, std::string const& time) {
            return time.empty() ? "" : std::string(", ") + what + " " + time;
        };
        _output << "  " << entry->second.title << ": " << nameOf(job->getState()->getHintValue()) << ", "
                << percent(times.progress()) << at("submitted", times.submitted()) << at("started", times.started())
                << at("ended", times.ended()) << "\n";
        if (entry->second.hasEnded) {
            Ko::BgManager::getInstance().stopAndDeleteJob(job);
            entry = _entries.erase(entry);
        } else {
            ++entry;
        }
    }
}

void Jobs::stop(int number) {
    auto const found = _entries.find(number);
    if (found == _entries.end()) throw ScriptError("there is no job " + std::to_string(number));
    found->second.job->stop();
}

void Jobs::wait() {
    for (;;) {
        _awake.reset();
        update();
        drawBars();
        if (!isAnyRunning()) break;
        _awake.wait();
    }
    // A worker may still be about to post the message of a job that has failed; it has when the protocol is free.
    for (auto const& [number, entry] : _entries)
        entry.job->releaseProtocol();
    update();
    eraseBars();
}

void Jobs::stopAll() {
    for (auto const& [number, entry] : _entries)
        entry.job->stop();
    wait();
    for (auto const& [number, entry] : _entries)
        Ko::BgManager::getInstance().stopAndDeleteJob(entry.job);
    _entries.clear();
    update();
}

bool Jobs::takeFailure() {
    return std::exchange(_hasFailed, false);
}

// On the thread that changes the job.
void Jobs::update(Ko::ObObserver<Ko::BgJobTag> const*, Ko::ObHints const& hints) {
    Ko::EvEventManager& events = Ko::EvEventManager::getInstance();
    if (auto const change = hints.pickHint<State>())
        events.postRequest([this, change] { stateChanged(*change->getJob(), change->getJobState()); });
    if (auto const step = hints.pickHint<Ko::BgJobHintProgress>())
        events.postRequest([this, step] { progressed(*step->getJob(), step->getProgress()); });
}

Jobs::Entry* Jobs::find(Ko::BgJob const& job) {
    auto const found =
        std::ranges::find_if(_entries, [&](auto const& entry) { return entry.second.job.get() == &job; });
    return found == _entries.end() ? nullptr : &found->second;
}

void Jobs::stateChanged(Ko::BgJob const& job, State::JobState_t state) {
    Entry* const entry = find(job);
    if (!entry) return;
    eraseBars();
    _output << entry->title << ": " << nameOf(state) << std::endl;
    entry->hasEnded = state == State::Stopped || state == State::Complete || state == State::Failed;
    if (state != State::Failed) return;
    _hasFailed = true;
    if (auto const error = job.cloneError()) _placesOfErrors.emplace(error->getReason(), entry->place);
}

void Jobs::progressed(Ko::BgJob const& job, float progress) {
    if (Entry* const entry = find(job)) entry->progress = progress;
}

void Jobs::showLine(int number, std::string const& line) {
    eraseBars();
    _output << "  [" << number << "] " << line << std::endl;
}

void Jobs::showError(std::string const& text) {
    eraseBars();
    auto const found = _placesOfErrors.find(text);
    if (found == _placesOfErrors.end()) {
        _errors << text << std::endl;
        return;
    }
    _errors << found->second << ": " << text << std::endl;
    _placesOfErrors.erase(found);
}

bool Jobs::isAnyRunning() const {
    return std::ranges::any_of(_entries, [](auto const& entry) { return !entry.second.hasEnded; });
}

void Jobs::drawBars() {
    if (_bars == Bars::NotShown) return;
    eraseBars();
    for (auto const& [number, entry] : _entries) {
        if (entry.hasEnded) continue;
        _output << bar(entry.progress) << " " << entry.title << "\n";
        ++_barsDrawn;
    }
    _output << std::flush;
}

// Leaves the cursor where the first bar was.
void Jobs::eraseBars() {
    if (_barsDrawn > 0) _output << "\x1b[" << std::exchange(_barsDrawn, 0) << "A\x1b[J" << std::flush;
}

} // namespace compositor
