#pragma once

#include "base/lkLock.h"
#include "framework/bgTask/bgProgressReport.h"
#include "framework/frameworkApi.h"
#include "resmgt/liString.h"

#include <atomic>

namespace Ko {

/// The work of a background job. A client derives from it, and hands an object to `BgManager::addJob`, which runs it on a
/// worker:
///
///     class RenderProtocol : public BgJobProtocol {
///     public:
///         RenderProtocol() : BgJobProtocol("Render sky.png", "render") {}
///         void execute() override {
///             for (int tile = 0; tile < tiles && continueExecution(); ++tile) {
///                 render(tile);
///                 reportProgress(tile + 1, tiles);
///             }
///         }
///     };
///
/// Whoever implements `execute()` returns early when `continueExecution()` is false, and throws on failure: what is thrown
/// makes the job fail, and an `ExBase` is shown to the user. `start()` and `stop()` are called by the job alone.
class KO_FRAMEWORK_API BgJobProtocol {
public:
    virtual ~BgJobProtocol();
    BgJobProtocol(BgJobProtocol const&) = delete;
    BgJobProtocol& operator=(BgJobProtocol const&) = delete;

    /// The work. On a worker, at most once at a time.
    virtual void execute() = 0;
    /// Lets the execution continue, and calls `execute()`.
    virtual void start();
    /// Asks `execute()` to return, without waiting for it. Any thread. An override that does more calls this one too.
    virtual void stop();
    /// What was reported last: done / total, not limited to [0, 1]; 0 before that. Any thread.
    virtual float progress() const;

    /// For display; they stay the same, and may be asked for by any thread:
    LiString getJobName() const { return _name; }
    LiString getJobType() const { return _type; }

    /// @param callback is not owned; null for none. Not while the protocol executes.
    void setProgressCallback(BgProgressReport* callback) noexcept { _progressCallback = callback; }

protected:
    /// The name is "unnamed job".
    explicit BgJobProtocol(LiString const& type);
    BgJobProtocol(LiString const& name, LiString const& type);

    /// Whether to go on; asked from time to time by `execute()`. Any thread.
    bool continueExecution() const;
    /// Told from time to time by `execute()`, and at the end with `done == total`: a job notes its end time by that.
    void reportProgress(int done, int total) const;

private:
    friend class BgJob;

    // From now on a `stop()` also holds for the execution that has not begun yet.
    void prepareStart();

    BgProgressReport* _progressCallback = nullptr;
    // Written by the executing thread, read by any; nothing else depends on it.
    mutable std::atomic<float> _progress{0.0f};
    LiString _name;
    LiString _type;
    bool _continue = true;
    mutable LkLock _continueLock{"Continue lock"};
    // A job is busy, and may be stopped, a moment before it calls `start()`, which must not undo that.
    bool _startIsPrepared = false;
};

} // namespace Ko
