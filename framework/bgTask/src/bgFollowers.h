#pragma once

#include "framework/bgTask/bgManagerHints.h"

#include <unordered_map>

namespace Ko {

/// Gathers the changes of listed jobs for the subscribers of the manager's list, and notifies them by one event of all that
/// has changed before it. Costs nothing while there are no subscribers. Any thread, unless noted otherwise.
class BgFollowers final : private ObObserver<BgJobTag> {
public:
    BgFollowers() = default;
    ~BgFollowers() override { disableUpdates(); }

    /// Implements `BgManager::onJobs`.
    [[nodiscard]] ObSubscription add(std::function<void(BgManagerHintJobs const&)> callable, BgFollow follow);
    /// Observes a user-interface job if a subscriber follows these. @returns whether it is observed from now on.
    bool observe(BgJob& job) {
        if (!_all.hasObservers()) return false;
        _observesJobs = true;
        return job.attachObserver(this);
    }
    /// Ends `observe`.
    void forget(BgJob& job) {
        if (_observesJobs) job.detachObserver(this);
    }

    /// Notes that the list has changed.
    void note(RCShdPtr<BgJob> const& job, BgJobChange::Kind kind, bool isUiJob) noexcept {
        if (isFollowed()) gather(job, kind, isUiJob);
    }
    /// Notes that a job has notified of these hints.
    void note(ObHints const& hints, bool isUiJob) noexcept {
        if (isFollowed()) gatherChange(hints, isUiJob);
    }
    /// Notifies of all that was noted. Application thread only.
    void notify();

private:
    struct Subject : ObSubject<BgListTag> {
        using ObSubject::connect;
    };

    void update(ObObserver<BgJobTag> const*, ObHints const& hints) override { note(hints, true); }
    bool isFollowed() const noexcept { return _jobs.hasObservers() || _all.hasObservers(); }
    void gather(RCShdPtr<BgJob> const& job, BgJobChange::Kind kind, bool isUiJob) noexcept;
    void gatherChange(ObHints const& hints, bool isUiJob) noexcept;
    bool merge(RCShdPtr<BgJob> const& job, BgJobChange::Kind kind, bool isUiJob);
    void post();
    static void notify(Subject& subject, Vector<BgJobChange> changes);

    Subject _jobs;
    Subject _all;
    std::atomic<bool> _observesJobs{false};
    LkLock _lock{"BgFollowers"};
    // What subscribers have not been notified of, and the index of each job in it. A job that came and went has none.
    Vector<BgJobChange> _changes;
    std::unordered_map<BgJob const*, std::size_t> _indices;
    bool _isPosted = false;
};

} // namespace Ko
