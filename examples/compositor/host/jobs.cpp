#include "host/jobs.h"

#include "base/evEventManager.h"
#include "resmgt/msgServer.h"
#include "script/script.h"

#include <algorithm>
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

void Jobs::submit(std::string place, Ko::OPtr<Ko::BgJobProtocol> protocol, WhenEnded whenEnded) {
    int const number = ++_lastNumber;
    std::string title = "job " + std::to_string(number) + " (" + protocol->getJobName() + ")";
    auto const job = Ko::BgJob::create(std::move(protocol));
    _entries[number] = {std::move(place), job, std::move(title), std::move(whenEnded)};
    // Observe the job before the manager does: the place of a failure must be known before its message is displayed.
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
    // The message of a failed job is posted before its protocol can be released, so no message is missing afterwards.
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

// Called on the thread that changes the job.
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
    if (entry->hasEnded && entry->whenEnded) entry->whenEnded(state == State::Complete);
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
        _output << bar(entry.progress) << " " << entry.title << "\n";
        ++_barsDrawn;
    }
    _output << std::flush;
}

// Leaves the cursor at the first bar.
void Jobs::eraseBars() {
    if (_barsDrawn > 0) _output << "\x1b[" << std::exchange(_barsDrawn, 0) << "A\x1b[J" << std::flush;
}

} // namespace compositor
