#include "pluginAPI/piAppThread.h"

#include "base/inInitMgr.h"

namespace Ko {

bool PiAppThread::isCurrent() noexcept {
    return InInitMgr::isApplicationThread();
}

} // namespace Ko
