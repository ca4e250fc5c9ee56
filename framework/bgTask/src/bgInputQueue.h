#pragma once

#include "base/lkLock.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace Ko {

/// Bytes on their way to a program. Any thread adds them; the thread that watches the program passes them on.
class BgInputQueue {
public:
    /// @param limit how many bytes may wait.
    explicit BgInputQueue(std::size_t limit) noexcept : _limit(limit) {}

    struct Added {
        std::size_t count = 0;
        /// Whether the watching thread has to be woken for them.
        bool needsWaking = false;
    };
    /// Appends as many bytes as there is space for; none when the queue is closed.
    Added add(std::string_view bytes) {
        std::lock_guard const guard(_lock);
        if (!isOpen()) return {};
        std::size_t const count = std::min(bytes.size(), _limit - countWaiting());
        _added += bytes.substr(0, count);
        // The watching thread may have passed on the last bytes since they were counted.
        bool const wasEmpty = _waiting.fetch_add(count, std::memory_order_acq_rel) == 0;
        return {count, wasEmpty && count > 0};
    }
    /// The bytes that wait are still passed on.
    void close() {
        std::lock_guard const guard(_lock);
        _isClosed.store(true, std::memory_order_release);
    }
    bool isOpen() const noexcept { return !_isClosed.load(std::memory_order_acquire); }
    std::size_t countWaiting() const noexcept { return _waiting.load(std::memory_order_acquire); }
    bool isHalfEmpty() const noexcept { return countWaiting() < _limit / 2; }

    /// Passes bytes on until none waits or `write` takes less than it was given. Watching thread.
    /// @param write gets the next bytes. Returns how many it took; nothing when the program takes no more, which closes the
    ///   queue and drops all bytes.
    /// @returns whether any bytes were passed on.
    template <class Write>
    bool passOn(Write write) {
        bool hasPassed = false;
        while (countWaiting() > 0) {
            std::string_view const next = getNext();
            std::optional<std::size_t> const count = write(next);
            if (!count) {
                drop();
                break;
            }
            hasPassed |= *count > 0;
            _numPassed += *count;
            _waiting.fetch_sub(*count, std::memory_order_release);
            if (*count < next.size()) break;
        }
        return hasPassed;
    }
    class Use;

    /// Closes the queue and drops all bytes that wait. Watching thread.
    void drop() {
        std::lock_guard const guard(_lock);
        _isDropped = true;
        _isClosed = true;
        std::string().swap(_added);
        std::string().swap(_passing);
        _numPassed = 0;
        _waiting = 0;
    }

private:
    void reopen() {
        if (std::exchange(_isDropped, false)) _isClosed = false;
    }
    // The bytes are swapped, not copied, so that no writer waits for long.
    std::string_view getNext() {
        if (_numPassed == _passing.size()) {
            std::lock_guard const guard(_lock);
            _passing.clear();
            _numPassed = 0;
            _passing.swap(_added);
        }
        return std::string_view(_passing).substr(_numPassed);
    }

    std::size_t const _limit;
    LkLock _lock{"Background process input"};
    std::string _added;
    std::atomic<std::size_t> _waiting{0};
    std::atomic<bool> _isClosed{false};
    // For the watching thread: what it took from the above, and how much of it was passed on.
    std::string _passing;
    std::size_t _numPassed = 0;
    bool _isDropped = false;
};

/// The scope in which a program can get the bytes. They are dropped at its end; the next scope opens the queue again.
class [[nodiscard]] BgInputQueue::Use {
public:
    explicit Use(BgInputQueue& queue) : _queue(queue) { _queue.reopen(); }
    ~Use() { _queue.drop(); }
    Use(Use const&) = delete;
    Use& operator=(Use const&) = delete;

private:
    BgInputQueue& _queue;
};

} // namespace Ko
