#pragma once

#include "base/baseApi.h"

#include <string>

namespace Ko {

/// The full name, as written in source, of the type whose `typeid(T).name()` is given.
KO_BASE_API std::string typeNameOf(char const* mangled);

} // namespace Ko
