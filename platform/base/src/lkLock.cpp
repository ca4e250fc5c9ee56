#include "base/lkLock.h"

#include <atomic>

namespace Ko {

// Most locks are held for less time than it takes to put a thread to sleep and to wake it again.
void LkLock::lockPatiently() {
    constexpr int patience = 30;
    constexpr int pause = 400; // between two looks, so that they do not slow down who holds the lock
    for (int tries = 0; tries < patience; ++tries) {
        for (int turns = 0; turns < pause; ++turns)
            std::atomic_signal_fence(std::memory_order_seq_cst);
        if (_mutex.try_lock()) return;
    }
    _mutex.lock();
}

} // namespace Ko
