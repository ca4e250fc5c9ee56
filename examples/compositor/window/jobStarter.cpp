#include "window/jobStarter.h"

#include "framework/bgTask/bgManager.h"

#include <utility>

namespace compositor::window {

namespace {

constexpr unsigned lowPriority = 0;

} // namespace

JobStarter::JobStarter(Ko::QtJobModel& shown, QObject* parent) : QObject(parent), _shown(shown) {}

Ko::RCShdPtr<Ko::BgJob> JobStarter::start(Make make, WhenEnded whenEnded) {
    auto const job = Ko::BgJob::create(make());
    follow(job, whenEnded, false);
    Ko::BgManager::getInstance().addJob(job);
    _shown.setRetry(
        job, [this, make = std::move(make), whenEnded = std::move(whenEnded)] { return start(make, whenEnded); });
    return job;
}

void JobStarter::startHidden(Ko::OPtr<Ko::BgJobProtocol> protocol, WhenEnded whenEnded) {
    auto const job = Ko::BgJob::create(std::move(protocol));
    follow(job, std::move(whenEnded), true);
    Ko::BgManager::getInstance().addUiJob(job, lowPriority);
}

void JobStarter::follow(Ko::RCShdPtr<Ko::BgJob> const& job, WhenEnded whenEnded, bool removes) {
    auto const ended = [this, removes, whenEnded = std::move(whenEnded)](Ko::BgJob& self) {
        Ko::RCShdPtr<Ko::BgJob> const kept(&self);
        auto const end = _ends.extract(&self);
        if (whenEnded) whenEnded(self);
        if (removes) Ko::BgManager::getInstance().stopAndDeleteJob(kept);
    };
    _ends.emplace(job.get(), job->onEnd(ended));
}

} // namespace compositor::window
