#pragma once

#include "framework/bgTask/bgJob.h"

#include <mutex>
#include <utility>

namespace Ko {

/// One use of the protocol by a thread. Keeps the protocol and the job alive: the protocol or an observer may release the
/// last other reference to the job.
class BgJob::Use {
public:
    enum class Purpose { Question, Execution };

    explicit Use(BgJob& job, Purpose purpose = Purpose::Question)
        : _job(&job), _purpose(purpose), _outer(std::exchange(innermost, this)) {
        std::lock_guard const guard(job._lock);
        _hasProtocol = !job._isReleased;
        if (!_hasProtocol) return;
        if (purpose == Purpose::Question) {
            ++job._uses;
            return;
        }
        if (job._executions++ == 0) job._endOfJob.reset();
        // Checked together with the pause, so that either this thread starts the job or the end of the pause queues it.
        _isParked = job._isPaused && job.getState() == &BgJobWaiting::getInstance();
        if (_isParked) job._isParked = true;
    }
    ~Use() {
        if (_hasProtocol && leave()) _job->deleteUnusedProtocol();
        innermost = _outer;
    }
    Use(Use const&) = delete;
    Use& operator=(Use const&) = delete;

    /// False if the protocol was released before.
    bool hasProtocol() const noexcept { return _hasProtocol; }
    /// False if the job was released before, or is paused before its start.
    bool mayExecute() const noexcept { return _hasProtocol && !_isParked; }

    /// Whether this thread is inside the protocol of the job, for one of the purposes or for any.
    static bool isInside(BgJob const& job) noexcept {
        return any([&job](Use const& use) { return use._job.get() == &job; });
    }
    static bool isExecuting(BgJob const& job) noexcept {
        return any([&job](Use const& use) { return use._job.get() == &job && use._purpose == Purpose::Execution; });
    }

private:
    // Whether this was the last use of a released protocol.
    bool leave() noexcept {
        BgJob& job = *_job;
        std::lock_guard const guard(job._lock);
        if (_purpose == Purpose::Question) return --job._uses == 0 && job._isReleased;
        if (--job._executions == 0) job._endOfJob.set();
        return false;
    }
    template <class Predicate>
    static bool any(Predicate predicate) noexcept {
        for (Use const* use = innermost; use; use = use->_outer)
            if (predicate(*use)) return true;
        return false;
    }

    static thread_local Use const* innermost;

    RCShdPtr<BgJob> const _job;
    Purpose const _purpose;
    Use const* const _outer;
    bool _hasProtocol = false;
    bool _isParked = false;
};

} // namespace Ko
