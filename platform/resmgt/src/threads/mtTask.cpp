#include "resmgt/mtTask.h"

namespace Ko {

MtTaskImp::~MtTaskImp() = default;

MtGroupTag MtRequestMgr::acquireTag() {
    std::lock_guard const guard(_mutex);
    return MtGroupTag(&_requests.emplace_back());
}

void MtRequestMgr::releaseTag(MtGroupTag& tag) {
    std::lock_guard const guard(_mutex);
    _requests.remove_if([tag](auto const& requests) { return &requests == tag._requests; });
    tag = {};
}

void MtRequestMgr::waitForZero(MtGroupTag tag) noexcept {
    MtGroupTag::Requests& requests = *tag._requests;
    requests.waiting.fetch_add(1, std::memory_order_seq_cst);
    for (;;) {
        std::uint32_t const ended = requests.ended.load(std::memory_order_seq_cst);
        if (requests.begun.load(std::memory_order_relaxed) == ended) break;
        requests.ended.wait(ended, std::memory_order_seq_cst);
    }
    requests.waiting.fetch_sub(1, std::memory_order_relaxed);
}

} // namespace Ko
