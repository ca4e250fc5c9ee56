#pragma once

#include "framework/actions/actRegistry.h"

#include <algorithm>

namespace Ko {

/// Whether an action is registered, and so exists.
inline bool qtIsRegistered(ActAction const* action) {
    auto const actions = ActRegistry::getInstance().getAllActions(ActRegistry::FirstOnly);
    return std::ranges::any_of(actions.elements(), [&](ActAction const* other) { return other == action; });
}

} // namespace Ko
