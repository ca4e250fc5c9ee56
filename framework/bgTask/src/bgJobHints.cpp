#include "framework/bgTask/bgJobHints.h"

#include "framework/bgTask/bgJob.h"
#include "resmgt/obChangeManager.imp.h"

namespace Ko {

template class ObObserver<BgJobTag>;
template class ObChangeManager<BgJobTag>;
template class LkSingleton<ObChangeManager<BgJobTag>>;

BgJobHintChangeState::BgJobHintChangeState() = default;
BgJobHintChangeState::BgJobHintChangeState(RCShdPtr<BgJob> job, JobState_t state)
    : _job(std::move(job)), _state(state) {}
BgJobHintChangeState::~BgJobHintChangeState() = default;

BgJobHintProgress::BgJobHintProgress() = default;
BgJobHintProgress::BgJobHintProgress(RCShdPtr<BgJob> job, float progress) : _job(std::move(job)), _progress(progress) {}
BgJobHintProgress::~BgJobHintProgress() = default;

BgJobHintReport::BgJobHintReport(RCShdPtr<BgJob> job) : _job(std::move(job)) {}
BgJobHintReport::~BgJobHintReport() = default;

BgJobHintMessage::BgJobHintMessage(RCShdPtr<BgJob> job, Vector<BgMessage> messages, std::size_t numOmitted)
    : BgJobHintReport(std::move(job)), _messages(std::move(messages)), _numOmitted(numOmitted) {}
BgJobHintMessage::~BgJobHintMessage() = default;

BgJobHintPhase::BgJobHintPhase(RCShdPtr<BgJob> job, LiString phase)
    : BgJobHintReport(std::move(job)), _phase(std::move(phase)) {}
BgJobHintPhase::~BgJobHintPhase() = default;

BgJobHintUnits::BgJobHintUnits(RCShdPtr<BgJob> job, BgUnits units)
    : BgJobHintReport(std::move(job)), _units(std::move(units)) {}
BgJobHintUnits::~BgJobHintUnits() = default;

BgJobHintPause::BgJobHintPause(RCShdPtr<BgJob> job, bool isPaused)
    : BgJobHintReport(std::move(job)), _isPaused(isPaused) {}
BgJobHintPause::~BgJobHintPause() = default;

} // namespace Ko
