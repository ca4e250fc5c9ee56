#include "framework/bgTask/bgJobState.h"

#include "base/inSingleton.imp.h"
#include "framework/bgTask/bgJobProtocol.h"

namespace Ko {

template class InSingleton<BgJobIdle>;
template class InSingleton<BgJobWaiting>;
template class InSingleton<BgJobBusy>;
template class InSingleton<BgJobStopping>;
template class InSingleton<BgJobStopped>;
template class InSingleton<BgJobComplete>;
template class InSingleton<BgJobFailed>;

namespace {

template <class State>
BgJobState const* the() {
    return &State::getInstance();
}

} // namespace

BgJobState::~BgJobState() = default;
void BgJobState::start(BgJobBase*) const {}
void BgJobState::stop(BgJobBase*) const {}
LiString BgJobState::state() const {
    return "Undefined";
}

LiString BgJobIdle::state() const {
    return "Idle";
}
BgJobHintChangeState::JobState_t BgJobIdle::getHintValue() const noexcept {
    return BgJobHintChangeState::Idle;
}

void BgJobWaiting::start(BgJobBase* job) const {
    if (!job->changeState(this, the<BgJobBusy>())) return;
    job->getProtocol()->start();
    if (!job->getProtocol()->isElsewhere()) BgJobBusy::end(job);
}
void BgJobWaiting::stop(BgJobBase* job) const {
    // A worker may have started the job at this moment: it is Busy then.
    if (!job->changeState(this, the<BgJobStopped>())) job->getState()->stop(job);
}
LiString BgJobWaiting::state() const {
    return "Waiting";
}
BgJobHintChangeState::JobState_t BgJobWaiting::getHintValue() const noexcept {
    return BgJobHintChangeState::Waiting;
}

void BgJobBusy::end(BgJobBase* job) {
    if (!job->changeState(the<BgJobBusy>(), the<BgJobComplete>()))
        job->changeState(the<BgJobStopping>(), the<BgJobStopped>());
}
void BgJobBusy::stop(BgJobBase* job) const {
    if (job->changeState(this, the<BgJobStopping>())) job->getProtocol()->stop();
}
LiString BgJobBusy::state() const {
    return "Busy";
}
BgJobHintChangeState::JobState_t BgJobBusy::getHintValue() const noexcept {
    return BgJobHintChangeState::Busy;
}

LiString BgJobStopping::state() const {
    return "Stopping";
}
BgJobHintChangeState::JobState_t BgJobStopping::getHintValue() const noexcept {
    return BgJobHintChangeState::Stopping;
}

LiString BgJobStopped::state() const {
    return "Stopped";
}
BgJobHintChangeState::JobState_t BgJobStopped::getHintValue() const noexcept {
    return BgJobHintChangeState::Stopped;
}

LiString BgJobComplete::state() const {
    return "Complete";
}
BgJobHintChangeState::JobState_t BgJobComplete::getHintValue() const noexcept {
    return BgJobHintChangeState::Complete;
}

LiString BgJobFailed::state() const {
    return "Failed";
}
BgJobHintChangeState::JobState_t BgJobFailed::getHintValue() const noexcept {
    return BgJobHintChangeState::Failed;
}

} // namespace Ko
