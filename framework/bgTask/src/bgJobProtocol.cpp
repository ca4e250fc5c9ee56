#include "framework/bgTask/bgJobProtocol.h"

#include <mutex>
#include <utility>

namespace Ko {

BgJobProtocol::BgJobProtocol(LiString const& type) : BgJobProtocol("unnamed job", type) {}
BgJobProtocol::BgJobProtocol(LiString const& name, LiString const& type) : _name(name), _type(type) {}
BgJobProtocol::~BgJobProtocol() = default;

void BgJobProtocol::start() {
    {
        std::lock_guard const guard(_continueLock);
        if (!std::exchange(_startIsPrepared, false)) _continue = true;
    }
    execute();
}

void BgJobProtocol::stop() {
    std::lock_guard const guard(_continueLock);
    _continue = false;
}

float BgJobProtocol::progress() const {
    return _progress.load(std::memory_order_relaxed);
}

bool BgJobProtocol::continueExecution() const {
    std::lock_guard const guard(_continueLock);
    return _continue;
}

// A total of 0 gives an infinity or NaN. The job limits the values that its observers receive.
void BgJobProtocol::reportProgress(int done, int total) const {
    _progress.store(static_cast<float>(done) / static_cast<float>(total), std::memory_order_relaxed);
    if (_progressCallback) _progressCallback->reportProgress(done, total);
}

void BgJobProtocol::prepareStart() noexcept {
    std::lock_guard const guard(_continueLock);
    _continue = true;
    _startIsPrepared = true;
}

} // namespace Ko
