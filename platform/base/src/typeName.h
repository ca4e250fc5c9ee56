#pragma once

#include <string>

namespace Ko {

/// The full name, as written in source, of the type whose `typeid(T).name()` is given.
std::string typeNameOf(char const* mangled);

} // namespace Ko
