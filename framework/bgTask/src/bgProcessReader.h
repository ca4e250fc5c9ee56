#pragma once

#include "framework/bgTask/bgProcess.h"
#include "framework/bgTask/src/bgLineBatch.h"
#include "framework/bgTask/src/bgLines.h"
#include "resmgt/osChildProcess.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>

namespace Ko {

/// Reads what the child of a process writes and calls the process's hooks line by line. For the watching thread, unless
/// noted otherwise.
class BgProcess::Reader {
public:
    Reader(BgProcess& process, OsChildProcess& child) : _process(process), _child(child) {}

    /// Makes the hooks get batches, with so much time in between. Before `begin()`.
    void gatherLines(std::chrono::milliseconds interval) noexcept { _interval = interval; }
    /// Starts with a new child.
    void begin();
    /// From now on the hooks get at most 1 MiB of each stream; after the end of the child, reading takes one second at most.
    /// Any thread.
    void limit() noexcept { _isLimited.store(true, std::memory_order_relaxed); }
    /// Reads a bounded part of what both streams hold, so that neither stream nor the end of the child is neglected.
    /// @returns whether anything was read.
    bool readPieces();
    /// Whether bytes wait on standard error.
    bool hasErrors() const;
    /// When the lines that were gathered have to be passed on by `readPieces()`; the end of time when there are none.
    std::chrono::steady_clock::time_point getDue() const noexcept;
    /// Reads what the streams hold when the child has ended, and no more: its own children may go on writing. Passes on all
    /// lines. Logs how much was dropped.
    void readRest();

private:
    static constexpr std::uint64_t limitAfterStop = 1 << 20;

    struct Stream {
        BgLines lines;
        BgLineBatch batch;
        std::uint64_t allowed = limitAfterStop;
        std::uint64_t dropped = 0;

        bool hasUnfinished() const noexcept { return dropped == 0 && !lines.getUnfinished().empty(); }
    };
    using Clock = std::chrono::steady_clock;

    bool isLimited() const noexcept { return _isLimited.load(std::memory_order_relaxed); }
    std::size_t readOutput(std::uint64_t size);
    std::size_t readErrors(std::uint64_t size);
    std::size_t countErrors(int line) const;
    std::uint64_t readAll(std::uint64_t bytes, std::size_t (Reader::*read)(std::uint64_t), Clock::time_point deadline);
    void gather(Stream& stream, std::string_view piece);
    void passOutput();
    void passErrors();
    void passRest();
    void logDropped() const;

    BgProcess& _process;
    OsChildProcess& _child;
    std::atomic<bool> _isLimited{false};
    // Without one, each line is passed on at once and not stored.
    std::optional<std::chrono::milliseconds> _interval;
    Clock::time_point _nextPass;
    Stream _output;
    Stream _errors;
};

} // namespace Ko
