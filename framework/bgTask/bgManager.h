#pragma once

#include "framework/bgTask/bgAfter.h"
#include "framework/bgTask/bgManagerHints.h"

#include <chrono>
#include <functional>

namespace Ko {

/// Runs background jobs on workers, and lists the jobs until they are deleted.
///
/// There are three groups of workers, each with a first-in-first-out queue: the general group with six workers, and a low and
/// a high priority group for the user interface, with two workers each. The manager observes the jobs that were submitted
/// with `addJob`: when one fails with an `ExBase`, its reason is shown to the user through `MsgProtocol`, and every change
/// is passed on to the manager's observers. User-interface jobs are observed by the code that submits them.
///
/// Exists while the package "bgTask" is initialised. Application thread only, but for `stopAndDeleteJob`. Observers are
/// notified on that thread; of changes on a worker, by `EvEventManager::processEvents()`. Every function throws `ExNullPtr`
/// for a null pointer.
class KO_FRAMEWORK_API BgManager : public ObSubject<BgManagerTag> {
public:
    virtual ~BgManager();

    /// Lists the job, queues it in the general group, and notifies the observers with a `BgManagerHintNew`.
    virtual void addJob(RCShdPtr<BgJob> job) = 0;
    /// Makes a job that runs the protocol, and adds it to the general group.
    virtual RCShdPtr<BgJob> addJob(OPtr<BgJobProtocol> protocol) = 0;
    /// Lists the job and queues it in a user-interface group. Observers are not notified.
    /// @param priority 1 for the high priority group; any other value for the low priority group.
    virtual void addUiJob(RCShdPtr<BgJob> job, unsigned priority) = 0;
    /// Makes a job that runs the protocol, and adds it to a user-interface group.
    virtual RCShdPtr<BgJob> addUiJob(OPtr<BgJobProtocol> protocol, unsigned priority) = 0;
    /// Stops the job, waits for its end, deletes its protocol, removes the job from the list, and notifies the observers with
    /// a `BgManagerHintDelete`. Takes constant time besides the wait. Any thread, several at once for different jobs; the
    /// observers are notified on that thread.
    /// @throws BgEx::ExBgManager if the job does not end within 5 seconds; it stays in the list then.
    virtual void stopAndDeleteJob(RCShdPtr<BgJob> job) = 0;
    /// A copy of the list, in the order of submission.
    [[nodiscard]] virtual List<RCShdPtr<BgJob>> getJobs() = 0;
    /// Stops all jobs and removes them from the list. For the end of the process: observers are not notified. All jobs are
    /// asked to end first, then waited for together, at most 5 seconds beyond what their protocols wait in `stop()`. Each job
    /// that has not ended by then is logged with its name; it keeps its worker. Never throws.
    virtual void stopAllJobs() = 0;

    /// Lists the job, and queues it in the general group when others have ended. It is listed as Waiting meanwhile, and can be
    /// stopped. @throws BgEx::ExBgManager if the job would wait for itself or waits for others already; it is not added
    ///   then.
    void addJob(RCShdPtr<BgJob> job, BgAfter const& after);
    /// Makes a job that runs the protocol, and adds it to the general group when others have ended.
    RCShdPtr<BgJob> addJob(OPtr<BgJobProtocol> protocol, BgAfter const& after);
    /// Lists a user-interface job, and queues it when others have ended.
    void addUiJob(RCShdPtr<BgJob> job, unsigned priority, BgAfter const& after);
    /// Makes a job that runs the protocol, and adds it to a user-interface group when others have ended.
    RCShdPtr<BgJob> addUiJob(OPtr<BgJobProtocol> protocol, unsigned priority, BgAfter const& after);
    /// The jobs that a listed job still waits for.
    [[nodiscard]] Vector<RCShdPtr<BgJob>> getPredecessors(RCShdPtr<BgJob> const& job);
    /// Whether a job was submitted last as a user-interface job. Any thread.
    [[nodiscard]] bool isUiJob(BgJob const& job) const noexcept;
    /// Moves a job that waits for a worker to the front of the queue of its group. Takes time in proportion to the queue.
    /// @returns whether the job waits for a worker.
    bool moveToFront(RCShdPtr<BgJob> const& job);
    /// Asks all listed jobs to end, and returns at once. When all have ended, or at the end of the grace period, an event
    /// calls `whenEnded`; those that have ended are released and removed from the list then, and observers are not notified.
    /// Programs are killed in time. A job that has not ended stays in the list and is logged with its name.
    /// @param whenEnded called with the jobs that have not ended; may be empty.
    void stopAllJobs(
        std::chrono::milliseconds grace, std::function<void(Vector<RCShdPtr<BgJob>> const& unended)> whenEnded);
    /// Calls a callable with the changes of the list and of its jobs, until the subscription ends: one event per round of
    /// `processEvents()` at most. Who subscribes calls `getJobs()` first.
    /// @throws ExNullPtr for an empty callable.
    [[nodiscard]] ObSubscription onJobs(
        std::function<void(BgManagerHintJobs const& hint)> callable, BgFollow follow = BgFollow::Jobs);

    /// The manager. @throws InSingletonEx::ExNotInitialized outside its lifetime.
    static BgManager& getInstance();
    /// Whether the manager exists.
    [[nodiscard]] static bool isInitialized() noexcept;
    /// Creates the manager. Called by the package. @throws what the function of this name in `InSingleton` throws.
    static void performInitialize();
    /// Waits for the workers and destroys the manager. Jobs that it waits for are logged with their names. Called by the
    /// package; without effect if there is no manager.
    /// @throws ExAssertionFailed if a job is listed, and what the function of this name in `InSingleton` throws.
    static void performFinalize();

protected:
    BgManager();
};

} // namespace Ko
