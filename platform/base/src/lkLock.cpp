#include "base/lkLock.h"

#include <atomic>

namespace Ko {

// Most locks are held for less time than it takes to put a thread to sleep and wake it again.
void LkLock::lockPatiently() {
    constexpr int patience = 30;
    constexpr int pause = 400; // turns between two attempts: attempts slow down the holder of the lock
    for (int tries = 0; tries < patience; ++tries) {
        for (int turns = 0; turns < pause; ++turns)
            std::atomic_signal_fence(std::memory_order_seq_cst);
        if (_mutex.try_lock()) return;
    }
    _mutex.lock();
}

} // namespace Ko
