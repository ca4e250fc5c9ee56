#pragma once

#include "base/baseApi.h"

#include <string>

namespace Ko {

/// The full name, as written in source, of the type whose `typeid(T).name()` is given.
[[nodiscard]] KO_BASE_API std::string typeNameOf(char const* mangled);

/// The full name of the type of the exception that is being handled.
[[nodiscard]] KO_BASE_API std::string currentExceptionTypeName();

} // namespace Ko
