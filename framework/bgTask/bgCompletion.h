#pragma once

#include "base/rcShdPtr.h"
#include "framework/frameworkApi.h"

#include <exception>
#include <utility>

namespace Ko {

class BgJob;

/// Ends a job whose work goes on without a worker: on another machine, in a device, on a thread of a library.
///
///     void execute() override {
///         _farm.submit(_request, [this, completion = std::make_shared<BgCompletion>(leaveWorker())](Reply const& reply) {
///             setResult(reply.picture);
///             completion->complete();
///         });
///     }
///     void stop() override {
///         BgJobProtocol::stop();
///         _farm.cancel(_request); // replies soon
///     }
///
/// The job stays Busy when `execute()` returns, and its worker takes the next job. Until its end the protocol may report from any
/// thread, one at a time. Like a job that executes, it is neither released nor deleted before, so whoever stops it sees to its
/// end. Any thread; one thread at a time uses an object.
class KO_FRAMEWORK_API BgCompletion {
public:
    /// Ends nothing.
    BgCompletion() noexcept;
    BgCompletion(BgCompletion&& other) noexcept;
    BgCompletion& operator=(BgCompletion&& other) noexcept;
    /// A job that has not been ended fails: what ran it has given it up.
    ~BgCompletion();

    /// Whether there is a job to end.
    explicit operator bool() const noexcept { return !_job.isNull(); }

    /// Ends the job: Complete, or Stopped after a stop. The protocol may be deleted before this returns. Without effect when
    /// there is no job any more, like `fail`.
    void complete() noexcept;
    /// Makes the job fail, as if `execute()` had thrown the exception.
    /// @param error not null.
    void fail(std::exception_ptr const& error) noexcept;

private:
    friend class BgJob;

    explicit BgCompletion(RCShdPtr<BgJob> job) noexcept;

    RCShdPtr<BgJob> _job;
};

} // namespace Ko
