#pragma once

#include "base/rcShdPtr.h"
#include "resmgt/resmgtApi.h"

#include <atomic>
#include <cstdint>
#include <list>
#include <mutex>

namespace Ko {

/// What a task does.
class KO_RESMGT_API MtTaskImp : public RCBase {
public:
    ~MtTaskImp() override;
    /// Called on a worker. What it throws is logged; the worker goes on.
    virtual void execute() = 0;

protected:
    MtTaskImp() = default;
};

/// Tells the requests of one group from those of others.
class MtGroupTag {
public:
    MtGroupTag() = default;
    /// Whether it is a group's.
    bool isValid() const noexcept { return _requests != nullptr; }
    /// Whether both are the same group's.
    bool operator==(MtGroupTag const&) const noexcept = default;

private:
    friend class MtRequestMgr;
    using Requests = std::atomic<std::uint32_t>;

    explicit MtGroupTag(Requests* requests) noexcept : _requests(requests) {}

    Requests* _requests = nullptr;
};

/// Counts the requests that are under way, for each tag. Any thread.
class KO_RESMGT_API MtRequestMgr {
public:
    MtRequestMgr() = default;
    MtRequestMgr(MtRequestMgr const&) = delete;
    MtRequestMgr& operator=(MtRequestMgr const&) = delete;

    /// A tag under which no request is counted yet.
    MtGroupTag acquireTag();
    /// The tag must not be used any more, and becomes invalid. An invalid tag is ignored.
    void releaseTag(MtGroupTag& tag);

    /// For valid tags: one request more, one less, how many there are, and the wait until there are none:
    static void increment(MtGroupTag tag) noexcept {
        // Whoever hands the request on orders it before its end.
        tag._requests->fetch_add(1, std::memory_order_relaxed);
    }
    static void decrement(MtGroupTag tag) noexcept {
        // Release: whoever sees zero sees all that the requests did.
        if (tag._requests->fetch_sub(1, std::memory_order_release) == 1) tag._requests->notify_all();
    }
    static std::uint32_t getCount(MtGroupTag tag) noexcept { return tag._requests->load(std::memory_order_acquire); }
    static void waitForZero(MtGroupTag tag) noexcept {
        while (std::uint32_t const count = getCount(tag))
            tag._requests->wait(count, std::memory_order_acquire);
    }

private:
    std::mutex _mutex;
    std::list<MtGroupTag::Requests> _requests;
};

/// A request to execute something, tagged with the group that it belongs to.
class MtTask {
public:
    MtTask() = default;
    /// @param tag that of the group that the task belongs to.
    MtTask(RCShdPtr<MtTaskImp> imp, MtGroupTag tag) noexcept : _imp(std::move(imp)), _tag(tag) {}

    /// Throws what the task does. @throws ExNullPtr for a null task.
    void execute() const { _imp->execute(); }
    /// What the task was made of:
    MtGroupTag getTag() const noexcept { return _tag; }
    bool isNull() const noexcept { return _imp.isNull(); }

private:
    RCShdPtr<MtTaskImp> _imp;
    MtGroupTag _tag;
};

} // namespace Ko
