#pragma once

#include "resmgt/lgGroups.h"

#include <memory>
#include <string>
#include <vector>

namespace KoTest {

/// Replaces the sinks of the log during its lifetime and records the lines: "Minor:level text".
class LogRecorder {
public:
    /// @param level the highest level that is logged.
    explicit LogRecorder(int level = Ko::LgLevels::standard) : _before(Ko::LgSinks::replace({_sink})) {
        Ko::LgLevels::set("*:" + std::to_string(level));
    }
    ~LogRecorder() {
        Ko::LgLevels::set("*:" + std::to_string(Ko::LgLevels::standard));
        Ko::LgSinks::replace(_before);
    }
    LogRecorder(LogRecorder const&) = delete;
    LogRecorder& operator=(LogRecorder const&) = delete;

    /// To be read while nothing logs.
    std::vector<std::string> const& lines() const { return _sink->lines; }

private:
    class Sink : public Ko::LgSink {
    public:
        void write(Ko::LgRecord const& record) override {
            lines.push_back(record.minor + ":" + std::to_string(record.level) + " " + record.text);
        }
        std::vector<std::string> lines;
    };

    std::shared_ptr<Sink> _sink = std::make_shared<Sink>();
    Ko::LgSinks::Sinks _before;
};

} // namespace KoTest
