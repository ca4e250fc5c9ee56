#include "resmgt/osMemoryArch.h"

#include <gtest/gtest.h>

namespace {

using namespace Ko;

TEST(OsMemoryArch, KnowsTheMachineUnlessAnotherAnswers) {
    OsMemoryArch const& system = OsMemoryArch::getInstance();
    auto const memory = system.getMemory();
    constexpr std::uint64_t megabyte = 1024 * 1024;
    EXPECT_GT(memory.totalPhysical, 100 * megabyte);
    EXPECT_GT(memory.freePhysical, megabyte);
    EXPECT_LT(memory.freePhysical, memory.totalPhysical);
    class : public OsMemoryArch {
    public:
        Memory getMemory() const override { return {1, 2, 3}; }
    } const other;
    OsMemoryArch::setInstance(&other);
    EXPECT_EQ(3u, OsMemoryArch::getInstance().getMemory().freePageFile);
    OsMemoryArch::setInstance(nullptr);
    EXPECT_EQ(&system, &OsMemoryArch::getInstance());
}

} // namespace
