#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace compositor {

struct Placeholder {
    std::string_view name;
    std::string value;
};

/// Replaces the placeholders in a command line by their values, each as one word. Inside the quoted text of another command,
/// as in "sh -c 'cp %f copy'", the value is one word for the shell that reads this text.
[[nodiscard]] std::string fillIn(std::string_view commandLine, std::vector<Placeholder> const& placeholders);

} // namespace compositor
