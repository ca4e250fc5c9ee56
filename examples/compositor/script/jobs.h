#pragma once

#include "framework/bgTask/bgManager.h"
#include "host/protocols.h"

#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace compositor {

class TerminalLoop;

/// The background jobs that the user has started, by number, and their display.
///
/// `update()` and `wait()` process the events of the framework. Each change of a job's state is displayed as a line. While `wait()` waits at a terminal, each running job also has a progress bar, which is redrawn in
/// place. To be used between the framework's initialisation and finalisation, on the application thread; one object at a time.
class Jobs {
public:
    enum class Bars { Shown, NotShown };

    /// Returns after the framework has received an event since the last call, at once if it has.
    using WaitForEvents = std::function<void()>;

    /// @param waitForEvents called by `wait`; empty for the loop of a terminal, which blocks the thread. A host with a loop of its own
    ///   also displays the messages of the framework.
    Jobs(std::ostream& output, std::ostream& errors, Bars bars, WaitForEvents waitForEvents = {});
    /// Stops all running jobs.
    ~Jobs();
    Jobs(Jobs const&) = delete;
    Jobs& operator=(Jobs const&) = delete;

    /// Called with whether the job is complete, once it has ended.
    using WhenEnded = std::function<void(bool isComplete)>;
    /// @param place for an error message of the job, such as "script:12".
    void submit(std::string place, Ko::OPtr<Ko::BgJobProtocol> protocol, WhenEnded whenEnded = {});
    /// Displays that the result of a job could not be used; counts as a failure of the job.
    void showFailure(std::string const& place, std::string const& text);
    /// Displays the output lines of the job that is submitted next, with its number.
    [[nodiscard]] LineSink nextJobsLines();
    /// Has the job that is submitted next wait for the end of another one. @throws InputError when there is no such job.
    void startNextAfter(int number);
    /// The number of the job that was submitted last.
    [[nodiscard]] int lastNumber() const { return _lastNumber; }
    /// Forgets `startNextAfter`. @returns whether no job has been submitted since.
    bool forgetOrder();
    /// Displays all changes since the last call.
    void update();
    /// Lists all jobs with their states, progress, units, phases, predecessors and times, then removes jobs that have ended.
    void list();
    /// @throws InputError when there is no such job.
    void stop(int number);
    /// Holds a job, or lets it go on. @throws InputError when there is no such job.
    void pause(int number);
    void resume(int number);
    /// Resumes all jobs, and waits until all have ended.
    void wait();
    void stopAll();
    /// Whether a job has failed since the last call.
    [[nodiscard]] bool takeFailure();

private:
    struct Entry {
        std::string place;
        Ko::RCShdPtr<Ko::BgJob> job;
        std::string title;
        WhenEnded whenEnded{};
        float progress = 0.0f;
        bool hasEnded = false;
        std::vector<Ko::ObSubscription> subscriptions{};
    };

    void follow(int number, Ko::BgJob& job);
    Ko::BgJob& jobOf(int number) const;
    std::string describe(Ko::BgJob& job) const;
    std::string describeOrder(Ko::RCShdPtr<Ko::BgJob> const& job) const;
    void stateChanged(int number, Ko::BgJobHintChangeState::JobState_t state);
    void showMessages(int number, Ko::BgJobHintMessage const& hint);
    void showLines(int number, Ko::Vector<std::string> const& lines);
    void showError(std::string const& text);
    bool isAnyRunning() const;
    void drawBars();
    void eraseBars();

    std::ostream& _output;
    std::ostream& _errors;
    Bars _bars;
    std::map<int, Entry> _entries;
    int _lastNumber = 0;
    // What the job that is submitted next waits for.
    Ko::BgAfter _order;
    // The places of failed jobs whose errors the framework has yet to display, by message.
    std::multimap<std::string, std::string> _placesOfErrors;
    bool _hasFailed = false;
    int _barsDrawn = 0;
    // Where the host has no loop of its own.
    std::unique_ptr<TerminalLoop> _terminalLoop;
    WaitForEvents _waitForEvents;
};

} // namespace compositor
