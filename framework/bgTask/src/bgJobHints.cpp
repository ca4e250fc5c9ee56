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

} // namespace Ko
