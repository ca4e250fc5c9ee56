#pragma once

#include "framework/bgTask/bgAfter.h"

#include <deque>
#include <unordered_map>

namespace Ko {

/// The jobs that wait for others. Queues them when the last one has ended, or ends them.
///
/// Observes the jobs that are waited for, and those that wait, which may be stopped. Any thread.
class BgOrder final : private ObObserver<BgJobTag> {
public:
    BgOrder() = default;
    ~BgOrder() override { disableUpdates(); }

    /// Queues the job in its group when its predecessors have ended.
    /// @throws BgEx::ExBgManager if the job waits already or would wait for itself, ExNullPtr for a null predecessor. Nothing has changed then.
    void add(RCShdPtr<BgJob> const& job, BgAfter const& after);
    /// The jobs that a job still waits for.
    [[nodiscard]] Vector<RCShdPtr<BgJob>> getPredecessors(BgJob const& job) const;

private:
    struct Wait {
        RCShdPtr<BgJob> job;
        Vector<RCShdPtr<BgJob>> predecessors;
        std::size_t numRemaining = 0;
        BgAfter::OnFailure onFailure = BgAfter::OnFailure::End;
        // Distinguishes it from an earlier wait of the same job.
        std::uint64_t number = 0;
    };
    struct Successor {
        BgJob const* job;
        std::uint64_t number;
    };
    using Waits = std::unordered_map<BgJob const*, Wait>;

    void update(ObObserver<BgJobTag> const* observer, ObHints const& hints) override;
    std::uint64_t enter(RCShdPtr<BgJob> const& job, BgAfter const& after);
    void link(Wait& wait, RCShdPtr<BgJob> const& predecessor);
    void leave(BgJob const& job, std::uint64_t number) noexcept;
    bool waitsFor(BgJob const& waiting, BgJob const& other) const;
    void observe(RCShdPtr<BgJob> const& job);
    void noteEnd(RCShdPtr<BgJob> const& job) noexcept;
    void settle(RCShdPtr<BgJob> const& ended) noexcept;
    static void queue(RCShdPtr<BgJob> const& job) noexcept;
    template <class MakeReason>
    static void end(BgJob& job, BgJobState const* state, MakeReason makeReason) noexcept;
    Waits::node_type take(BgJob const& job) noexcept;
    Waits::node_type takeSuccessor(BgJob const& ended, bool hasCompleted) noexcept;

    mutable LkLock _lock{"BgOrder"};
    Waits _waits;
    std::unordered_map<BgJob const*, std::deque<Successor>> _successors;
    std::uint64_t _lastNumber = 0;
    // The ended jobs whose successors wait for their turn: a long row of jobs must not nest their notifications.
    std::deque<RCShdPtr<BgJob>> _ended;
    bool _isSettling = false;
};

} // namespace Ko
