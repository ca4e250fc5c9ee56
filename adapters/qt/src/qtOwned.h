#pragma once

#include <memory>
#include <utility>

namespace Ko {

/// Makes an object that Qt owns: its parent deletes it, or what it is handed to.
template <class T, class... Args>
T* qtOwned(Args&&... args) {
    return std::make_unique<T>(std::forward<Args>(args)...).release();
}

} // namespace Ko
