#pragma once

#include "framework/command/cmCommand.h"

#include <chrono>

namespace Ko {

/// Decides whether the step to be logged joins the last one, so that typing and nudging make one step each. Set on a stack with
/// `CmCommandStack::setMerger`.
class KO_FRAMEWORK_API CmMerger : public RCBase {
public:
    /// Called when `next` is about to be logged directly on top of `last`: `last` was logged by the previous change of the
    /// history and is not the clean state. Must not change the history.
    /// @returns the command that replaces `last` and stands for both, which may be `last` itself; null to keep both.
    virtual RCShdPtr<CmCommand> merge(RCShdPtr<CmCommand> const& last, RCShdPtr<CmCommand> const& next) = 0;

protected:
    CmMerger();
    ~CmMerger() override;
};

/// Optional interface of a command that can take up a later one of its kind: derive from it beside `CmCommand`, and set a
/// `CmMergerByTime` on the stack.
class KO_FRAMEWORK_API CmMergeable {
public:
    /// A time of the steady clock.
    using Time = std::chrono::steady_clock::time_point;

    /// Identifies what the command changes, such as a layer; commands with different targets are never merged. Only compared.
    virtual void const* getMergeTarget() const = 0;
    /// Changes this command so that it stands for both. Both have been executed.
    /// @param later has the same class and target.
    /// @returns false, with nothing changed, where the two do not fit.
    virtual bool absorb(CmCommand const& later) = 0;

    /// When the command was made, or the last one that it took up.
    Time getMergeTime() const noexcept { return _time; }

protected:
    /// @param time when the user acted.
    explicit CmMergeable(Time time = std::chrono::steady_clock::now()) noexcept : _time(time) {}
    CmMergeable(CmMergeable const&) = default;
    CmMergeable& operator=(CmMergeable const&) = default;
    virtual ~CmMergeable();

private:
    friend class CmMergerByTime;

    Time _time;
};

/// Merges steps that follow each other quickly. A step is merged when it is a `CmMergeable`, alone or as the only command of a guard,
/// and the last step is another one of the same class, target and description. A group of several commands is never merged.
class KO_FRAMEWORK_API CmMergerByTime : public CmMerger {
public:
    /// @param interval the longest time between two steps that become one.
    static RCShdPtr<CmMergerByTime> create(std::chrono::milliseconds interval = std::chrono::seconds(1));
    RCShdPtr<CmCommand> merge(RCShdPtr<CmCommand> const& last, RCShdPtr<CmCommand> const& next) override;

protected:
    /// @param interval as for `create()`.
    explicit CmMergerByTime(std::chrono::milliseconds interval) noexcept;
    ~CmMergerByTime() override;

private:
    friend class RCShdPtr<CmMergerByTime>;

    std::chrono::milliseconds _interval;
};

} // namespace Ko
