#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <string>
#include <string_view>

namespace Ko {

/// A pattern for whole file names: `*` matches any number of characters, `?` any one; everything else matches itself.
class KO_RESMGT_API OsWildcardFilter {
public:
    /// @param pattern in wide characters.
    explicit OsWildcardFilter(std::wstring const& pattern);
    /// @param pattern in UTF-8.
    explicit OsWildcardFilter(LiString const& pattern);

    /// Whether the pattern matches the whole name.
    /// @param name in UTF-8; a byte that is not UTF-8 counts as a character of its own.
    [[nodiscard]] bool matches(std::string_view name) const noexcept;

private:
    // One element for each character; bytes that are not UTF-8 have numbers above all characters.
    std::u32string _pattern;
};

} // namespace Ko
