#include "tests/support/allocationFaults.h"

#include <atomic>
#include <cstdlib>
#include <malloc.h>

namespace KoTest {

namespace {

using Kind = AllocationFaults::Kind;

struct Plan {
    std::atomic<Kind> kind{Kind::None};
    std::atomic<long> left{0};
    std::atomic<bool> hadFault{false};

    bool isDue() noexcept {
        Kind const now = kind.load(std::memory_order_relaxed);
        if (now == Kind::None) return false;
        long const number = left.fetch_sub(1, std::memory_order_relaxed);
        if (now == Kind::Single ? number != 1 : number > 1) return false;
        hadFault = true;
        return true;
    }
};

// The plan for all threads, and one for each thread. Plain data, usable before and after the lifetime of all other objects.
constinit Plan shared;
constinit thread_local Plan own;
constinit thread_local int pauses = 0;
constinit std::atomic<long> live{0}, liveSize{0};

} // namespace

void AllocationFaults::arm(Kind kind, long number, bool everyThread) noexcept {
    Plan& plan = everyThread ? shared : own;
    plan.left = number;
    plan.hadFault = false;
    plan.kind = kind;
}

bool AllocationFaults::disarm() noexcept {
    shared.kind = Kind::None;
    own.kind = Kind::None;
    bool const ofShared = shared.hadFault.exchange(false);
    return own.hadFault.exchange(false) || ofShared;
}

long AllocationFaults::liveBlocks() noexcept {
    return live;
}
long AllocationFaults::liveBytes() noexcept {
    return liveSize;
}

AllocationFaults::Pause::Pause() noexcept {
    ++pauses;
}
AllocationFaults::Pause::~Pause() {
    --pauses;
}

static void* allocate(std::size_t size) {
    if (pauses == 0 && (own.isDue() || shared.isDue())) throw std::bad_alloc();
    void* const block = std::malloc(size > 0 ? size : 1);
    if (!block) throw std::bad_alloc();
    ++live;
    liveSize += static_cast<long>(malloc_usable_size(block));
    return block;
}

static void release(void* block) noexcept {
    if (!block) return;
    --live;
    liveSize -= static_cast<long>(malloc_usable_size(block));
    std::free(block);
}

} // namespace KoTest

// NOLINTBEGIN: replacements of the language's functions
void* operator new(std::size_t size) {
    return KoTest::allocate(size);
}
void* operator new[](std::size_t size) {
    return KoTest::allocate(size);
}
void operator delete(void* block) noexcept {
    KoTest::release(block);
}
void operator delete[](void* block) noexcept {
    KoTest::release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    KoTest::release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    KoTest::release(block);
}
// NOLINTEND
