#pragma once

#include "base/lkLock.h"
#include "framework/bgTask/bgProgressReport.h"
#include "framework/frameworkApi.h"
#include "resmgt/liString.h"

#include <atomic>

namespace Ko {

/// The work of a background job. A client derives from it and passes an object to `BgManager::addJob`, which runs it on a
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
/// `execute()` returns early when `continueExecution()` is false, and throws on failure: an exception makes the job fail, and
/// the reason of an `ExBase` is shown to the user. Only the job calls `start()` and `stop()`.
class KO_FRAMEWORK_API BgJobProtocol {
public:
    virtual ~BgJobProtocol();
    BgJobProtocol(BgJobProtocol const&) = delete;
    BgJobProtocol& operator=(BgJobProtocol const&) = delete;

    /// The work. Runs on a worker, at most once at a time.
    virtual void execute() = 0;
    /// Lets `continueExecution()` be true again, and calls `execute()`. A `stop()` that came before the job was Busy has no
    /// effect any more; a later one still holds.
    virtual void start();
    /// Makes `continueExecution()` false, without waiting. Any thread. An override that does more calls this one first.
    virtual void stop();
    /// The last reported value: done / total, not limited to [0, 1]; 0 before the first report, NaN where the progress is
    /// unknown. Any thread.
    [[nodiscard]] virtual float progress() const;

    /// The name for display. Never changes. Any thread.
    [[nodiscard]] LiString getJobName() const { return _name; }
    /// The kind of work, for display. Never changes. Any thread.
    [[nodiscard]] LiString getJobType() const { return _type; }

    /// Sets the receiver of progress reports. Not while the protocol executes.
    /// @param callback is not owned; null for none.
    void setProgressCallback(BgProgressReport* callback) noexcept { _progressCallback = callback; }

protected:
    /// Names the protocol "unnamed job".
    explicit BgJobProtocol(LiString const& type);
    /// Sets the name and the type for display.
    BgJobProtocol(LiString const& name, LiString const& type);

    /// Whether to go on. `execute()` checks it regularly. Any thread.
    [[nodiscard]] bool continueExecution() const;
    /// Reports progress. `execute()` calls it regularly, and with `done == total` at the end, which is what makes the job
    /// record the time of its end. (0, 0) means unknown: `progress()` is NaN then, and observers are not notified.
    void reportProgress(int done, int total) const;

private:
    friend class BgJob;

    // Prepares the next `start()`, which then keeps the effect of a later `stop()`.
    void prepareStart() noexcept;

    BgProgressReport* _progressCallback = nullptr;
    // Written by the executing thread and read by any. Nothing else depends on it.
    mutable std::atomic<float> _progress{0.0f};
    LiString _name;
    LiString _type;
    bool _continue = true;
    mutable LkLock _continueLock{"Continue lock"};
    // A Busy job can be stopped just before it calls `start()`, which must not undo the stop.
    bool _startIsPrepared = false;
};

} // namespace Ko
