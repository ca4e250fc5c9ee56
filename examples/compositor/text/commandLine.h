#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace compositor {

struct Placeholder {
    std::string_view name;
    std::string value;
};

/// Replaces placeholders in a command line by their values. A value becomes one word, quoted if necessary. Inside quoted text,
/// as in "sh -c 'cp %f copy'", it becomes one word for the shell that will parse this text.
[[nodiscard]] std::string fillIn(std::string_view commandLine, std::vector<Placeholder> const& placeholders);

} // namespace compositor
