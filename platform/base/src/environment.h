#pragma once

#include <optional>
#include <string>

namespace Ko {

/// The value of an environment variable, in UTF-8; nothing for one that is not defined.
[[nodiscard]] std::optional<std::string> readEnvironment(std::string const& name);

} // namespace Ko
