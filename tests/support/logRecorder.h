#pragma once

#include "resmgt/lgGroups.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace KoTest {

/// Records what is logged while it exists, in place of the sinks that were there: "Minor:level text".
class LogRecorder {
public:
    /// @param level up to which the group "Framework" is logged meanwhile.
    explicit LogRecorder(int level = Ko::LgLevels::standard);
    ~LogRecorder();
    LogRecorder(LogRecorder const&) = delete;
    LogRecorder& operator=(LogRecorder const&) = delete;

    std::vector<std::string> lines() const;

private:
    class Sink;
    std::shared_ptr<Sink> _sink;
};

} // namespace KoTest
