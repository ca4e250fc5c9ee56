#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace Ko {

/// The path that a text in UTF-8 names. A conversion by `std::filesystem::path` itself would take the text for one in the
/// language of the machine on systems whose paths are UTF-16.
/// @throws std::filesystem::filesystem_error on these systems, when the text is not UTF-8.
[[nodiscard]] inline std::filesystem::path toPath(std::string_view text) {
    return std::u8string(text.begin(), text.end());
}

/// A path as text in UTF-8, with the separators that it has.
/// @throws std::filesystem::filesystem_error where paths are UTF-16, when the path is not.
[[nodiscard]] inline std::string toUtf8(std::filesystem::path const& path) {
    std::u8string const text = path.u8string();
    return {text.begin(), text.end()};
}

} // namespace Ko
