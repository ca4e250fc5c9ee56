#pragma once

#include "base/lkLock.h"
#include "framework/bgTask/bgCompletion.h"
#include "framework/bgTask/bgJobReport.h"
#include "framework/bgTask/bgProgressReport.h"
#include "framework/frameworkApi.h"
#include "resmgt/liString.h"
#include "resmgt/lkCondVar.h"

#include <atomic>
#include <memory>
#include <string_view>
#include <type_traits>
#include <typeinfo>

namespace Ko {

class BgJob;

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
    [[nodiscard]] LiString getJobName() const { return _names->name; }
    /// The kind of work, for display. Never changes. Any thread.
    [[nodiscard]] LiString getJobType() const { return _names->type; }

    /// Sets the receiver of progress reports. Not while the protocol executes.
    /// @param callback is not owned; null for none.
    void setProgressCallback(BgProgressReport* callback) noexcept { _progressCallback = callback; }

protected:
    /// Names the protocol "unnamed job".
    explicit BgJobProtocol(LiString const& type);
    /// Sets the name and the type for display.
    BgJobProtocol(LiString const& name, LiString const& type);

    /// Whether to go on. `execute()` checks it regularly, without holding a lock: while the job is paused, the call waits until
    /// the job is resumed or stopped, except on the application thread. Any thread.
    [[nodiscard]] bool continueExecution() const;
    /// The same without the wait, for code that holds a lock.
    [[nodiscard]] bool mayContinue() const;
    /// Lets the work go on without a worker: `execute()`, which calls this at most once, returns, and the job ends by the
    /// completion. An exception that `execute()` throws afterwards makes the job fail at once.
    /// @returns empty where no job executes the protocol: then `execute()` does the whole work.
    /// @throws ExAssertionFailed outside `execute()`.
    [[nodiscard]] BgCompletion leaveWorker();
    /// Reports progress. `execute()` calls it regularly, and with `done == total` at the end, which is what makes the job
    /// record the time of its end. (0, 0) means unknown: `progress()` is NaN then, and observers are not notified.
    void reportProgress(int done, int total) const;
    /// Reports progress in units of which there may be more than an `int` counts: 30 of 200 "pictures". The quotient counts as
    /// progress.
    /// @param total 0 while it is unknown: the progress is unknown then.
    void reportUnits(std::int64_t done, std::int64_t total, std::string_view unit) const;
    /// Reports that the progress is unknown, as (0, 0) does, and notifies the observers with a `BgJobHintUnits`.
    void reportUnknownProgress() const;
    /// Reports what the job does at present, for display: "Reading".
    void reportPhase(std::string_view phase) const;
    /// Reports a message for people, which does not end the job.
    void reportMessage(BgMessage::Severity severity, std::string_view text) const;
    /// Keeps a result for `BgJob::getResult`. A further one replaces it.
    template <class Result>
    void setResult(Result&& result) const {
        using Stored = std::decay_t<Result>;
        keepResult(std::make_shared<Stored>(std::forward<Result>(result)), typeid(Stored));
    }

private:
    friend class BgJob;
    friend class BgJobWaiting;

    // Whether `execute()` has left its worker.
    bool isElsewhere() const noexcept { return _flags.load(std::memory_order_relaxed) & Elsewhere; }
    // Prepares the next `start()`, which then keeps the effect of a later `stop()`.
    void prepareStart() noexcept;
    void keepResult(std::shared_ptr<void> result, std::type_info const& type) const;
    bool continueAfterPause() const;
    void hold();
    void letGo(bool continues) noexcept;
    void leaveJob() noexcept;

    BgProgressReport* _progressCallback = nullptr;
    // Written by the executing thread and read by any. Nothing else depends on it.
    mutable std::atomic<float> _progress{0.0f};
    struct Names {
        LiString name;
        LiString type;
    };
    Names _ownNames;
    // The job takes the names over when it deletes the protocol.
    Names const* _names = &_ownNames;
    // Continues: not stopped. Prepared: a Busy job can be stopped just before it calls `start()`, which must not undo the stop.
    // Held: `continueExecution()` waits. Elsewhere: the worker was left. Acquire and release: a protocol that stops sees what
    // preceded the stop.
    enum Flags : unsigned { Continues = 1, Prepared = 2, Held = 4, Elsewhere = 8 };
    std::atomic<unsigned> _flags{Continues};
    // Guards the wait, and the condition, which is made by the first pause.
    mutable LkLock _continueLock{"Continue lock"};
    std::unique_ptr<LkCondVar> _isLetGo;
    // The job that owns the protocol; null for none.
    BgJob* _job = nullptr;
};

} // namespace Ko
