#pragma once

#include <memory>

namespace Ko {

/// Sole ownership, passed in.
template <class T>
using OPtr = std::unique_ptr<T>;

/// Sole ownership, returned.
template <class T>
using OPtrRet = std::unique_ptr<T>;

} // namespace Ko
