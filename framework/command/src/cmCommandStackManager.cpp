#include "framework/command/cmCommandStackManager.h"

#include "base/inSingleton.imp.h"

namespace Ko {

template class InSingleton<CmCommandStackManager>;

void CmCommandStackManager::set(RCShdPtr<CmCommandStack> const& stack) {
    if (stack == _active) return;

    RCShdPtr<CmCommandStack> previous = stack;
    previous.swap(_active);
    previous.reset();
    _changeCallbacks.call({});
}

} // namespace Ko
