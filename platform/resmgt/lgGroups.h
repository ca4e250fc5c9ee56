#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <atomic>
#include <memory>

namespace Ko {

/// The levels of the log are small integers from 0 to 9; the smaller, the more severe.
class KO_RESMGT_API LgLevels {
public:
    /// Up to which level a group is logged unless something else is set.
    static constexpr int standard = 3;

    /// Sets the levels of groups that exist now or later: "Framework.Commands:6,Framework:4,*:2", the most specific rule
    /// for a group wins, among equal ones the last. The environment variable `KO_LOG` sets the first ones. A malformed
    /// rule is reported on standard error and skipped. Any thread.
    static void set(LiString const& rules);
};

/// One line for the log.
struct LgRecord {
    /// The names of the groups, the level, and the text without any of them:
    LiString const& major;
    LiString const& minor;
    int level;
    LiString const& text;
};

/// Takes what is logged. Called by one thread at a time, from any thread; what it logs itself is dropped, and what it
/// throws is ignored.
class KO_RESMGT_API LgSink {
public:
    virtual ~LgSink();
    /// The record is valid during the call.
    virtual void write(LgRecord const& record) = 0;
};

/// Where the log goes: at first to one sink that writes "[Major.Minor:level] text" to standard error. Any thread.
class KO_RESMGT_API LgSinks {
public:
    /// In the order in which they are called.
    using Sinks = Vector<std::shared_ptr<LgSink>>;

    /// Puts a sink behind the others.
    static void add(std::shared_ptr<LgSink> sink);
    /// On return, no call to the sink is running, unless the caller is inside it, and none will come.
    static void remove(std::shared_ptr<LgSink> const& sink);
    /// Puts other sinks in place of all that there are, under the same guarantee.
    /// @returns those that were there.
    static Sinks replace(Sinks sinks);
};

/// A family of groups, such as all of one library. There is one for a name; it lives until the process ends.
class KO_RESMGT_API LgMajorGroup {
public:
    /// For `getInstanceForName`.
    explicit LgMajorGroup(LiString name) : _name(std::move(name)) {}

    /// Any thread.
    static LgMajorGroup& getInstanceForName(LiString const& name);
    /// The first part of a group's name: "Framework".
    LiString const& getName() const noexcept { return _name; }

private:
    LiString _name;
};

/// What one module logs. Any thread may write while the group exists.
class KO_RESMGT_API LgMinorGroup {
public:
    /// @param major has to live as long as the group. @param name the second part of the group's name: "Commands".
    LgMinorGroup(LgMajorGroup& major, LiString name);
    ~LgMinorGroup();
    LgMinorGroup(LgMinorGroup const&) = delete;
    LgMinorGroup& operator=(LgMinorGroup const&) = delete;

    /// The two parts of the group's name:
    LiString const& getName() const noexcept { return _name; }
    LgMajorGroup const& getMajor() const noexcept { return _major; }

    /// Ask before computing what only the log needs. No order with other memory is promised, nor needed.
    bool isEnabled(int level) const noexcept { return level <= _level.load(std::memory_order_relaxed); }
    /// Writes the text to all sinks if the level is on.
    void write(int level, LiString const& text) const;
    /// The same with a text that `makeText()` returns, which is called only if the level is on.
    template <class MakeText>
    void log(int level, MakeText&& makeText) const {
        if (isEnabled(level)) [[unlikely]]
            write(level, makeText());
    }

private:
    friend class LgLevels;

    LgMajorGroup& _major;
    LiString _name;
    std::atomic<int> _level;
};

} // namespace Ko
