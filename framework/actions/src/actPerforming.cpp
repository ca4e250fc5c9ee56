#include "framework/actions/src/actPerforming.h"

namespace Ko {

ActPerforming* ActPerforming::_innermost = nullptr;

bool ActPerforming::keep(ActAction* action) noexcept {
    ActPerforming* outermost = nullptr;
    for (ActPerforming* performing = _innermost; performing; performing = performing->_outer)
        if (performing->_action == action) outermost = performing;
    if (outermost) outermost->_kept.reset(action);
    return outermost != nullptr;
}

} // namespace Ko
