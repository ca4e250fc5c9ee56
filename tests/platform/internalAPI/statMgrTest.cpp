#include "internalAPI/statMgr.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace Ko;

StatCounter const pixels("pixels");
StatCounter const morePixels("pixels");
StatCounter const files("files");

TEST(StatMgr, AddsUpTheFlushedCountsOfThreads) {
    pixels.add(5);
    EXPECT_EQ(0u, pixels.getTotal()) << "collected, not flushed";
    std::jthread([] {
        pixels.add(10);
        StatMgr::flushStatistics();
        files.add(1); // flushed by the end of the thread
    }).join();
    EXPECT_EQ(10u, pixels.getTotal());
    EXPECT_EQ(1u, files.getTotal());
    StatMgr::flushStatistics();
    EXPECT_EQ(15u, pixels.getTotal());
    morePixels.add(100);
    StatMgr::flushStatistics();
    EXPECT_EQ(115u, StatMgr::getTotals().at("pixels"));
}

} // namespace
