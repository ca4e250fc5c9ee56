#include "script/jobs.h"

#include "base/evEventManager.h"
#include "resmgt/msgServer.h"
#include "text/statement.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ostream>

namespace compositor {

namespace {

using Ko::RCShdPtr;
using State = Ko::BgJobHintChangeState;

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

/// Waits for the events of the framework, in a program without a loop of its own.
class TerminalLoop {
public:
    TerminalLoop() {
        Ko::EvEventManager::getInstance().setWakeUpHandler([this] { _awake.set(); });
    }
    ~TerminalLoop() { Ko::EvEventManager::getInstance().setWakeUpHandler({}); }
    TerminalLoop(TerminalLoop const&) = delete;
    TerminalLoop& operator=(TerminalLoop const&) = delete;

    void wait() {
        _awake.wait();
        _awake.reset();
    }

private:
    Ko::LkEvent _awake{"Compositor loop", true};
};

Jobs::Jobs(std::ostream& output, std::ostream& errors, Bars bars, WaitForEvents waitForEvents)
    : _output(output), _errors(errors), _bars(bars), _waitForEvents(std::move(waitForEvents)) {
    if (!_waitForEvents) {
        _terminalLoop = std::make_unique<TerminalLoop>();
        _waitForEvents = [this] { _terminalLoop->wait(); };
        Ko::MsgProtocol::setHandler([this](Ko::Msg const& message) { showError(message.getText()); });
    }
}

Jobs::~Jobs() {
    stopAll();
    if (_terminalLoop) Ko::MsgProtocol::setHandler({});
}

void Jobs::submit(std::string place, Ko::OPtr<Ko::BgJobProtocol> protocol, WhenEnded whenEnded) {
    int const number = ++_lastNumber;
    auto const job = Ko::BgJob::create(std::move(protocol));
    std::string title = "job " + std::to_string(number) + " (" + job->getName() + ")";
    _entries[number] = {std::move(place), job, std::move(title), std::move(whenEnded)};
    // Before the manager observes it: the place of a failure must be known before its message is displayed.
    follow(number, *job);
    Ko::BgManager::getInstance().addJob(job, std::exchange(_order, {}));
}

void Jobs::follow(int number, Ko::BgJob& job) {
    Entry& entry = _entries[number];
    entry.subscriptions.push_back(
        job.on<State>([this, number](State const& change) { stateChanged(number, change.getJobState()); }));
    entry.subscriptions.push_back(job.on<Ko::BgJobHintProgress>(
        [&entry](Ko::BgJobHintProgress const& step) { entry.progress = step.getProgress(); }));
    entry.subscriptions.push_back(
        job.on<Ko::BgJobHintMessage>([this, number](Ko::BgJobHintMessage const& hint) { showMessages(number, hint); }));
}

void Jobs::startNextAfter(int number) {
    _order.predecessors = {Ko::RCShdPtr<Ko::BgJob>(&jobOf(number))};
}

bool Jobs::forgetOrder() {
    return !std::exchange(_order, {}).predecessors.empty();
}

LineSink Jobs::nextJobsLines() {
    return [this, number = _lastNumber + 1](Ko::Vector<std::string> const& lines) {
        Ko::EvEventManager::getInstance().postRequest([this, number, lines] { showLines(number, lines); });
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
        _output << "  " << entry->second.title << ": " << describe(*job) << "\n";
        if (entry->second.hasEnded) {
            Ko::BgManager::getInstance().stopAndDeleteJob(job);
            entry = _entries.erase(entry);
        } else {
            ++entry;
        }
    }
}

std::string Jobs::describe(Ko::BgJob& job) const {
    Ko::BgJobStatistics const times = job.getStatistics();
    Ko::BgUnits const units = job.getUnits();
    auto const with = [](std::string const& what, std::string const& value) {
        return value.empty() ? value : ", " + what + value;
    };
    std::string text = nameOf(job.getState()->getHintValue()) + (job.isPaused() ? ", paused" : "");
    text += with("", job.isRunning() ? job.getPhase() : "") + ", " + percent(times.progress());
    if (!units.unit.empty())
        text += ", " + std::to_string(units.done) + " of " + std::to_string(units.total) + " " + units.unit;
    if (auto const left = job.getRemaining())
        text += ", " + std::to_string(std::chrono::ceil<std::chrono::seconds>(*left).count()) + " s left";
    text += describeOrder(Ko::RCShdPtr<Ko::BgJob>(&job)) + with("submitted ", times.submitted());
    return text + with("started ", times.started()) + with("ended ", times.ended());
}

std::string Jobs::describeOrder(RCShdPtr<Ko::BgJob> const& job) const {
    std::string text;
    for (auto const& predecessor : Ko::BgManager::getInstance().getPredecessors(job))
        for (auto const& [number, entry] : _entries)
            if (entry.job == predecessor) text += ", after job " + std::to_string(number);
    return text;
}

Ko::BgJob& Jobs::jobOf(int number) const {
    auto const found = _entries.find(number);
    if (found == _entries.end()) throw InputError("there is no job " + std::to_string(number));
    return *found->second.job;
}

void Jobs::stop(int number) {
    jobOf(number).requestStop();
}

void Jobs::pause(int number) {
    jobOf(number).pause();
}

void Jobs::resume(int number) {
    jobOf(number).resume();
}

void Jobs::wait() {
    for (auto const& [number, entry] : _entries)
        entry.job->resume();
    for (;;) {
        update();
        drawBars();
        if (!isAnyRunning()) break;
        _waitForEvents();
    }
    // The message of a failed job is posted before its protocol can be released, so no message is missing afterwards.
    for (auto const& [number, entry] : _entries)
        entry.job->releaseProtocol();
    update();
    eraseBars();
}

void Jobs::stopAll() {
    for (auto const& [number, entry] : _entries)
        entry.job->requestStop();
    wait();
    for (auto const& [number, entry] : _entries)
        Ko::BgManager::getInstance().stopAndDeleteJob(entry.job);
    _entries.clear();
    update();
}

bool Jobs::takeFailure() {
    return std::exchange(_hasFailed, false);
}

void Jobs::stateChanged(int number, State::JobState_t state) {
    auto const found = _entries.find(number);
    if (found == _entries.end()) return;
    Entry& entry = found->second;
    auto const error = entry.job->cloneError();
    std::string const reason = error ? "" : entry.job->getReason();
    eraseBars();
    _output << entry.title << ": " << nameOf(state) << (reason.empty() ? "" : " (" + reason + ")") << std::endl;
    entry.hasEnded = state == State::Stopped || state == State::Complete || state == State::Failed;
    if (entry.hasEnded && entry.whenEnded) entry.whenEnded(state == State::Complete);
    if (state != State::Failed) return;
    _hasFailed = true;
    if (error) _placesOfErrors.emplace(error->getReason(), entry.place);
}

void Jobs::showMessages(int number, Ko::BgJobHintMessage const& hint) {
    Ko::Vector<std::string> lines;
    for (Ko::BgMessage const& message : hint.getMessages())
        lines.push_back((message.severity == Ko::BgMessage::Severity::Warning ? "warning: " : "") + message.text);
    if (hint.getNumOmitted() > 0) lines.push_back(std::to_string(hint.getNumOmitted()) + " more messages");
    showLines(number, lines);
}

void Jobs::showLines(int number, Ko::Vector<std::string> const& lines) {
    eraseBars();
    for (std::string const& line : lines)
        _output << "  [" << number << "] " << line << '\n';
    _output << std::flush;
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

void Jobs::showFailure(std::string const& place, std::string const& text) {
    eraseBars();
    _errors << place << ": " << text << std::endl;
    _hasFailed = true;
}

bool Jobs::isAnyRunning() const {
    return std::ranges::any_of(_entries, [](auto const& entry) { return !entry.second.hasEnded; });
}

void Jobs::drawBars() {
    if (_bars == Bars::NotShown) return;
    eraseBars();
    for (auto const& [number, entry] : _entries) {
        if (entry.hasEnded) continue;
        std::string const phase = entry.job->isPaused() ? "paused" : entry.job->getPhase();
        _output << bar(entry.progress) << " " << entry.title << (phase.empty() ? "" : ": " + phase) << "\n";
        ++_barsDrawn;
    }
    _output << std::flush;
}

// Leaves the cursor at the first bar.
void Jobs::eraseBars() {
    if (_barsDrawn > 0) _output << "\x1b[" << std::exchange(_barsDrawn, 0) << "A\x1b[J" << std::flush;
}

} // namespace compositor
