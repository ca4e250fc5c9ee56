#include "framework/bgTask/bgManagerHints.h"

#include "resmgt/obChangeManager.imp.h"

namespace Ko {

template class ObObserver<BgManagerTag>;
template class ObChangeManager<BgManagerTag>;
template class LkSingleton<ObChangeManager<BgManagerTag>>;
template class ObObserver<BgListTag>;
template class ObChangeManager<BgListTag>;
template class LkSingleton<ObChangeManager<BgListTag>>;

BgManagerHintNew::BgManagerHintNew(RCShdPtr<BgJob> job) : _job(std::move(job)) {}
BgManagerHintNew::~BgManagerHintNew() = default;

BgManagerHintDelete::BgManagerHintDelete(RCShdPtr<BgJob> job) : _job(std::move(job)) {}
BgManagerHintDelete::~BgManagerHintDelete() = default;

BgManagerNotEnoughSpaceHint::BgManagerNotEnoughSpaceHint(RCShdPtr<BgJob> job) : _job(std::move(job)) {}
BgManagerNotEnoughSpaceHint::~BgManagerNotEnoughSpaceHint() = default;

BgManagerHintJobs::BgManagerHintJobs(Vector<BgJobChange> changes) : _changes(std::move(changes)) {}
BgManagerHintJobs::~BgManagerHintJobs() = default;

BgManagerUpdateHint::BgManagerUpdateHint() = default;
BgManagerUpdateHint::~BgManagerUpdateHint() = default;

} // namespace Ko
