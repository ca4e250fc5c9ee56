#pragma once

#include "base/rcShdPtr.h"
#include "resmgt/resmgtApi.h"

#include <atomic>
#include <cstdint>
#include <list>
#include <mutex>

namespace Ko {

/// The work of a task.
class KO_RESMGT_API MtTaskImp : public RCBase {
public:
    ~MtTaskImp() override;
    /// Does the work. Called on a worker, which logs an exception and goes on.
    virtual void execute() = 0;

protected:
    MtTaskImp() = default;
};

/// Identifies the requests of one group.
class MtGroupTag {
public:
    /// An invalid tag.
    MtGroupTag() = default;
    /// Whether the tag belongs to a group.
    [[nodiscard]] bool isValid() const noexcept { return _requests != nullptr; }
    /// Whether both tags belong to the same group, or both are invalid.
    bool operator==(MtGroupTag const&) const noexcept = default;

private:
    friend class MtRequestMgr;

    // Producers write the first number, workers the second one: each stays in the cache of its processors.
    struct Requests {
        alignas(64) std::atomic<std::uint32_t> begun{0};
        alignas(64) std::atomic<std::uint32_t> ended{0};
        std::atomic<std::uint32_t> waiting{0};
    };

    explicit MtGroupTag(Requests* requests) noexcept : _requests(requests) {}

    Requests* _requests = nullptr;
};

/// Counts the open requests of each tag. Any thread.
class KO_RESMGT_API MtRequestMgr {
public:
    MtRequestMgr() = default;
    MtRequestMgr(MtRequestMgr const&) = delete;
    MtRequestMgr& operator=(MtRequestMgr const&) = delete;

    /// A new tag, with a count of zero.
    [[nodiscard]] MtGroupTag acquireTag();
    /// Frees a tag, which becomes invalid and of which no copy may be used any more. Ignores an invalid tag.
    void releaseTag(MtGroupTag& tag);

    /// Counts a new request of a valid tag.
    static void increment(MtGroupTag tag) noexcept {
        // Relaxed: passing the request on orders this before its end.
        tag._requests->begun.fetch_add(1, std::memory_order_relaxed);
    }
    /// Counts the end of a request of a valid tag.
    static void decrement(MtGroupTag tag) noexcept {
        // Also releases: a thread that sees zero sees all writes of the requests. In one order with `waitForZero`, which
        // announces itself before it looks: it sees this end, or is seen here.
        tag._requests->ended.fetch_add(1, std::memory_order_seq_cst);
        if (tag._requests->waiting.load(std::memory_order_seq_cst) != 0 && getCount(tag) == 0)
            tag._requests->ended.notify_all();
    }
    /// The number of open requests of a valid tag.
    [[nodiscard]] static std::uint32_t getCount(MtGroupTag tag) noexcept {
        // In this order: a zero was true when `ended` was read.
        std::uint32_t const ended = tag._requests->ended.load(std::memory_order_seq_cst);
        return tag._requests->begun.load(std::memory_order_relaxed) - ended;
    }
    /// Waits until a valid tag has no open requests.
    static void waitForZero(MtGroupTag tag) noexcept;

private:
    std::mutex _mutex;
    std::list<MtGroupTag::Requests> _requests;
};

/// A request to execute some work, with the tag of the group that it belongs to.
class MtTask {
public:
    /// A null task.
    MtTask() = default;
    /// @param tag the tag of the group that the task belongs to.
    MtTask(RCShdPtr<MtTaskImp> imp, MtGroupTag tag) noexcept : _imp(std::move(imp)), _tag(tag) {}

    /// Does the work on this thread. @throws what the work throws, and ExNullPtr for a null task.
    void execute() const { _imp->execute(); }
    /// The work; null for a null task.
    [[nodiscard]] MtTaskImp const* getImp() const noexcept { return _imp.get(); }
    /// The tag of the task's group.
    [[nodiscard]] MtGroupTag getTag() const noexcept { return _tag; }
    /// Whether the task has no work.
    [[nodiscard]] bool isNull() const noexcept { return _imp.isNull(); }

private:
    RCShdPtr<MtTaskImp> _imp;
    MtGroupTag _tag;
};

} // namespace Ko
