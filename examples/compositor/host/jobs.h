#pragma once

#include "document/document.h"
#include "framework/bgTask/bgManager.h"

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace compositor {

/// Renders the document as it is now. A failure is told in words.
Ko::OPtr<Ko::BgJobProtocol> makeRenderProtocol(Document const& document, std::filesystem::path const& path);
/// Saves the document as it is now.
Ko::OPtr<Ko::BgJobProtocol> makeSaveProtocol(Document const& document, std::filesystem::path const& path);

/// A line that a program has written; called on the thread of its job.
using LineSink = std::function<void(std::string const& line)>;
/// Runs an external program.
/// @param environment "NAME=value", in place of or besides what this process has.
Ko::OPtr<Ko::BgJobProtocol> makeRunProtocol(
    std::string const& commandLine, std::vector<std::string> const& environment, LineSink sink);
/// Renders the document as it is now into a temporary picture beside `path`, and hands it to an external program.
/// @param commandLine in it, "%f" stands for the temporary picture and "%o" for the path; see `fillIn`.
Ko::OPtr<Ko::BgJobProtocol> makeExportProtocol(
    Document const& document, std::filesystem::path const& path, std::string const& commandLine, LineSink sink);

/// The background jobs that the user has started, by number, and what is told of them.
///
/// It is the application's loop as well: `update()` and `wait()` process the framework's events. Each change of a job's state
/// is a line; while somebody waits at a terminal, each running job also has a bar, which is drawn again in place. Between
/// `Ko::InInitMgr`'s initialise and finalise, on the application thread; one at a time.
class Jobs : private Ko::ObObserver<Ko::BgJobTag> {
public:
    enum class Bars { Shown, NotShown };

    Jobs(std::ostream& output, std::ostream& errors, Bars bars);
    /// Stops what still runs.
    ~Jobs() override;

    /// @param place stands before an error message of the job, as "script:12".
    void submit(std::string place, Ko::OPtr<Ko::BgJobProtocol> protocol);
    /// For the lines of the job that is submitted next: shows them after the job's number.
    LineSink nextJobsLines();
    /// Tells what has happened since.
    void update();
    /// Lists all jobs with their states, progress and times; those that have ended are forgotten then.
    void list();
    /// @throws ScriptError when there is no such job.
    void stop(int number);
    /// Returns when all jobs have ended.
    void wait();
    void stopAll();
    /// Whether a job has failed since this was asked the last time.
    bool takeFailure();

private:
    struct Entry {
        std::string place;
        Ko::RCShdPtr<Ko::BgJob> job;
        std::string title;
        float progress = 0.0f;
        bool hasEnded = false;
    };

    void update(Ko::ObObserver<Ko::BgJobTag> const* observer, Ko::ObHints const& hints) override;
    Entry* find(Ko::BgJob const& job);
    void stateChanged(Ko::BgJob const& job, Ko::BgJobHintChangeState::JobState_t state);
    void progressed(Ko::BgJob const& job, float progress);
    void showLine(int number, std::string const& line);
    void showError(std::string const& text);
    bool isAnyRunning() const;
    void drawBars();
    void eraseBars();

    std::ostream& _output;
    std::ostream& _errors;
    Bars _bars;
    std::map<int, Entry> _entries;
    int _lastNumber = 0;
    // Where the jobs came from whose errors the framework is about to display.
    std::multimap<std::string, std::string> _placesOfErrors;
    bool _hasFailed = false;
    int _barsDrawn = 0;
    Ko::LkEvent _awake{"Compositor loop", true};
};

} // namespace compositor
