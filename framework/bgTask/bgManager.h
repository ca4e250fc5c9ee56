#pragma once

#include "framework/bgTask/bgManagerHints.h"

namespace Ko {

/// Runs background jobs on workers, and keeps the list of them until they are deleted.
///
/// There are three groups of workers, each with a first-come-first-served queue: the general one with six, and one of low
/// and one of high priority for what the user interface wants done, with two each. Jobs that were submitted with `addJob`
/// are followed: when one fails with an `ExBase`, its reason is shown to the user through `MsgProtocol`, and the manager's
/// observers are told of every change. A user-interface job is followed by whoever submitted it.
///
/// Exists while the package "bgTask" is initialised. Application thread only. Observers are told on that thread, from
/// `EvEventManager::processEvents()` where the cause lies on a worker. Every operation throws `ExNullPtr` for a null pointer.
class KO_FRAMEWORK_API BgManager : public ObSubject<BgManagerTag> {
public:
    virtual ~BgManager();

    /// Lists the job, hands it to the general group, and tells the observers by a `BgManagerHintNew`.
    virtual void addJob(RCShdPtr<BgJob> job) = 0;
    virtual RCShdPtr<BgJob> addJob(OPtr<BgJobProtocol> protocol) = 0;
    /// Lists the job and hands it to a user-interface group: the one of high priority for 1, of low priority for all else.
    virtual void addUiJob(RCShdPtr<BgJob> job, unsigned priority) = 0;
    virtual RCShdPtr<BgJob> addUiJob(OPtr<BgJobProtocol> protocol, unsigned priority) = 0;
    /// Stops the job, waits for its end, deletes its protocol, takes it off the list, and tells the observers by a
    /// `BgManagerHintDelete`. Takes constant time beside the waiting.
    /// @throws BgEx::ExBgManager when the job does not end within 5 seconds; it stays in the list then.
    virtual void stopAndDeleteJob(RCShdPtr<BgJob> job) = 0;
    /// A copy of the list, in the order of submission.
    virtual List<RCShdPtr<BgJob>> getJobs() = 0;
    /// Stops all jobs together and takes them off the list; for the end of the process. Nobody is told.
    virtual void stopAllJobs() = 0;

    /// @throws InSingletonEx::ExNotInitialized outside the manager's lifetime.
    static BgManager& getInstance();
    /// Whether there is a manager now.
    static bool isInitialized() noexcept;
    /// For the package's hooks; they throw as those of `InSingleton`, but that to finalise without a manager does nothing:
    static void performInitialize();
    static void performFinalize();

protected:
    BgManager();
};

} // namespace Ko
