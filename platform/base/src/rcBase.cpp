#include "base/rcBase.h"

#include "base/exBase.h"
#include "base/neverDestroyed.h"
#include "base/rcWeakPtr.h"
#include "base/typeName.h"

#include <array>
#include <typeinfo>
#include <unordered_map>

namespace Ko {

namespace {

// Maps objects to the common state of their weak references. Never destroyed: objects may die at process end.
struct WeakStates {
    std::mutex mutex;
    std::unordered_map<RCBase const*, std::shared_ptr<RCWeakState>> states;
};

WeakStates& weakStates(RCBase const* object) {
    using Shards = std::array<WeakStates, 16>;
    static NeverDestroyed<Shards> instance;
    Shards& shards = *instance;
    return shards[(reinterpret_cast<std::uintptr_t>(object) >> 6) % shards.size()];
}

} // namespace

RCBase::~RCBase() = default;

void RCBase::destroy(std::uint32_t before) const noexcept {
    if (before & weakFlag) RCWeakState::expire(this);
    delete this;
}

std::shared_ptr<RCWeakState> RCWeakState::of(RCBase const* object) {
    if (!object) return nullptr;
    WeakStates& shard = weakStates(object);
    std::lock_guard const guard(shard.mutex);
    if (auto const found = shard.states.find(object); found != shard.states.end()) return found->second;
    auto state = std::make_shared<RCWeakState>();
    state->_object = object;
    shard.states.emplace(object, state);
    object->_references.fetch_or(RCBase::weakFlag, std::memory_order_relaxed);
    return state;
}

bool RCWeakState::retain() noexcept {
    std::lock_guard const guard(_mutex);
    if (!_object) return false;
    // Without an owner, the object is about to be deleted on another thread, which has not expired it yet.
    std::uint32_t references = _object->_references.load(std::memory_order_relaxed);
    while ((references & RCBase::countMask) != 0)
        if (_object->_references.compare_exchange_weak(references, references + 1, std::memory_order_relaxed))
            return true;
    return false;
}

void RCWeakState::expire(RCBase const* object) noexcept {
    WeakStates& shard = weakStates(object);
    std::shared_ptr<RCWeakState> state;
    {
        std::lock_guard const guard(shard.mutex);
        auto const found = shard.states.find(object);
        state = std::move(found->second);
        shard.states.erase(found);
    }
    std::lock_guard const guard(state->_mutex);
    state->_object = nullptr;
}

void RCExUtil::throwExNullPtr(char const* type) {
    throw ExNullPtr("base\\src\\rcBase", __LINE__, "A null pointer to " + typeNameOf(type) + " was used.");
}

} // namespace Ko
