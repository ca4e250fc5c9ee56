#pragma once

#include "base/oPtr.h"
#include "resmgt/lgGroups.h"

namespace Ko {

/// The log group of a package, below the major group "Framework". It exists from the package's `initialize()` to its
/// `finalize()`; before and after, nothing is written:
///
///     static inline constinit LgPackageGroup group{"Commands"};
///     group.log(6, [&] { return "Executed " + command.getDescription(); });
///
/// Any thread may write; creating and destroying belong to the package's hooks.
class KO_RESMGT_API LgPackageGroup {
public:
    /// @param name is not copied.
    constexpr explicit LgPackageGroup(char const* name) noexcept : _name(name) {}
    ~LgPackageGroup();
    LgPackageGroup(LgPackageGroup const&) = delete;
    LgPackageGroup& operator=(LgPackageGroup const&) = delete;

    /// For the package's `initialize()`.
    void create();
    /// For the package's `finalize()`. Without effect on a group that does not exist.
    void destroy() noexcept;
    /// Whether the package is initialised.
    [[nodiscard]] bool exists() const noexcept { return _group != nullptr; }

    /// Whether a level is logged; to be asked before a text is computed that only the log needs. False while the group does
    /// not exist.
    [[nodiscard]] bool isEnabled(int level) const noexcept { return _group && _group->isEnabled(level); }
    /// Writes the text that `makeText()` returns; it is called only if the level is on.
    template <class MakeText>
    void log(int level, MakeText&& makeText) const {
        if (isEnabled(level)) [[unlikely]]
            _group->write(level, makeText());
    }

    /// Writes one line to the group of this name, which need not exist: for the rare lines of code that has no package.
    static void write(char const* name, int level, LiString const& text);

private:
    char const* _name;
    OPtr<LgMinorGroup> _group;
};

} // namespace Ko
