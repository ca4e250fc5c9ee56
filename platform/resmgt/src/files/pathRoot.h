#pragma once

#include <cstddef>
#include <string_view>

namespace Ko {

/// The length of the part of a path that names a root or a drive, in bytes: it is never cut, as it would mean another folder then.
[[nodiscard]] std::size_t pathRootLength(std::string_view path) noexcept;

} // namespace Ko
