#include "resmgt/mtTask.h"

namespace Ko {

MtTaskImp::~MtTaskImp() = default;

MtGroupTag MtRequestMgr::acquireTag() {
    std::lock_guard const guard(_mutex);
    return MtGroupTag(&_requests.emplace_back(0));
}

void MtRequestMgr::releaseTag(MtGroupTag& tag) {
    std::lock_guard const guard(_mutex);
    _requests.remove_if([tag](auto const& requests) { return &requests == tag._requests; });
    tag = {};
}

} // namespace Ko
