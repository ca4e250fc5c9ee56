#include "framework/bgTask/bgCompletion.h"

#include "framework/bgTask/bgJob.h"

#include <stdexcept>

namespace Ko {

BgCompletion::BgCompletion() noexcept = default;
BgCompletion::BgCompletion(RCShdPtr<BgJob> job) noexcept : _job(std::move(job)) {}
BgCompletion::BgCompletion(BgCompletion&& other) noexcept = default;

BgCompletion& BgCompletion::operator=(BgCompletion&& other) noexcept {
    BgCompletion(std::move(other))._job.swap(_job);
    return *this;
}

BgCompletion::~BgCompletion() {
    if (_job) fail(std::make_exception_ptr(std::runtime_error("The work was given up before its end.")));
}

void BgCompletion::complete() noexcept {
    if (RCShdPtr<BgJob> const job = std::move(_job)) job->endElsewhere(nullptr);
}

void BgCompletion::fail(std::exception_ptr const& error) noexcept {
    if (RCShdPtr<BgJob> const job = std::move(_job)) job->endElsewhere(error);
}

} // namespace Ko
