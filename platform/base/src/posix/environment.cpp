#include "base/src/environment.h"

#include <cstdlib>

namespace Ko {

std::optional<std::string> readEnvironment(std::string const& name) {
    char const* const value = std::getenv(name.c_str());
    return value ? std::optional<std::string>(value) : std::nullopt;
}

} // namespace Ko
