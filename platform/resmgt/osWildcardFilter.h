#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <string>
#include <string_view>

namespace Ko {

/// A pattern for whole file names: `*` stands for any characters, also none, `?` for any one; everything else for itself.
class KO_RESMGT_API OsWildcardFilter {
public:
    /// @param pattern in UTF-8, if it is not wide.
    explicit OsWildcardFilter(std::wstring const& pattern);
    explicit OsWildcardFilter(LiString const& pattern);

    /// @param name in UTF-8; a byte that is none counts as a character of its own.
    bool matches(std::string_view name) const noexcept;

private:
    // A character each; a byte that is not UTF-8 lies above all characters.
    std::u32string _pattern;
};

} // namespace Ko
