#include "resmgt/osMemoryArch.h"

#include "resmgt/src/environment/systemMemory.h"

#include <atomic>

namespace Ko {

namespace {

class SystemMemory final : public OsMemoryArch {
public:
    Memory getMemory() const override { return readSystemMemory(); }
};

std::atomic<OsMemoryArch const*> replacement{nullptr};

} // namespace

OsMemoryArch::~OsMemoryArch() = default;

OsMemoryArch const& OsMemoryArch::getInstance() noexcept {
    static SystemMemory const system;
    OsMemoryArch const* const service = replacement.load(std::memory_order_acquire);
    return service ? *service : system;
}

void OsMemoryArch::setInstance(OsMemoryArch const* service) noexcept {
    replacement.store(service, std::memory_order_release);
}

} // namespace Ko
