#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <atomic>
#include <memory>

namespace Ko {

/// The levels of the log are small integers from 0 to 9; the smaller, the more severe.
class KO_RESMGT_API LgLevels {
public:
    /// The highest level of a group that is logged unless something else is set.
    static constexpr int standard = 3;

    /// Sets the levels of groups that exist now or later: "Framework.Commands:6,Framework:4,*:2", the most specific rule
    /// for a group wins, among equal ones the last. The environment variable `KO_LOG` sets the first ones. A malformed
    /// rule is reported on standard error and skipped. Any thread.
    static void set(LiString const& rules);
};

/// One line for the log.
struct LgRecord {
    /// The name of the major group: "Framework".
    LiString const& major;
    /// The name of the minor group: "Commands".
    LiString const& minor;
    /// The severity; 0 is the most severe.
    int level;
    /// The text, without groups and level.
    LiString const& text;
};

/// Receives the lines of the log. Called by one thread at a time, from any thread. Lines that it logs itself are dropped,
/// and its exceptions are ignored.
class KO_RESMGT_API LgSink {
public:
    virtual ~LgSink();
    /// Called for each line. The record is valid during the call.
    virtual void write(LgRecord const& record) = 0;
};

/// The sinks of the log. At first there is one, which writes "[Major.Minor:level] text" to standard error. Any thread.
class KO_RESMGT_API LgSinks {
public:
    /// Sinks in the order in which they are called.
    using Sinks = Vector<std::shared_ptr<LgSink>>;

    /// Adds a sink after the others.
    static void add(std::shared_ptr<LgSink> sink);
    /// Removes a sink. On return, no call to the sink is running, unless the caller is inside it, and none will come.
    static void remove(std::shared_ptr<LgSink> const& sink);
    /// Replaces all sinks, with the guarantee of `remove`.
    /// @returns the sinks before.
    static Sinks replace(Sinks sinks);
};

/// A family of groups, such as those of one library. There is one for a name; it lives until the process ends.
class KO_RESMGT_API LgMajorGroup {
public:
    /// Called by `getInstanceForName`.
    explicit LgMajorGroup(LiString name) : _name(std::move(name)) {}

    /// The group of that name, which is created on first use. Any thread.
    [[nodiscard]] static LgMajorGroup& getInstanceForName(LiString const& name);
    /// The first part of a group's name: "Framework".
    [[nodiscard]] LiString const& getName() const noexcept { return _name; }

private:
    LiString _name;
};

/// The log lines of one module. Any thread may write while the group exists.
class KO_RESMGT_API LgMinorGroup {
public:
    /// @param major must live as long as the group.
    /// @param name the second part of the group's name: "Commands".
    LgMinorGroup(LgMajorGroup& major, LiString name);
    ~LgMinorGroup();
    LgMinorGroup(LgMinorGroup const&) = delete;
    LgMinorGroup& operator=(LgMinorGroup const&) = delete;

    /// The second part of the group's name.
    [[nodiscard]] LiString const& getName() const noexcept { return _name; }
    /// The group with the first part of the name.
    [[nodiscard]] LgMajorGroup const& getMajor() const noexcept { return _major; }

    /// Whether a level is logged; to be asked before a text is computed that only the log needs. Gives no memory order.
    [[nodiscard]] bool isEnabled(int level) const noexcept { return level <= _level.load(std::memory_order_relaxed); }
    /// Writes the text to all sinks if the level is on.
    void write(int level, LiString const& text) const;
    /// Writes the text that `makeText()` returns; it is called only if the level is on.
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
