#include "framework/dragAndDrop/drClipboard.h"

#include "base/neverDestroyed.h"
#include "pluginAPI/piAppThread.h"
#include "resmgt/lkSingleton.imp.h"

namespace Ko {

template class LkSingleton<DrClipboard>;

DrClipboard::DrClipboard() {
    reset();
}

// The process ends. If it does so on another thread than the application's, where no carrier may be destroyed, the
// carrier is left to the operating system.
DrClipboard::~DrClipboard() {
    if (PiAppThread::isCurrent()) return;
    static NeverDestroyed<RCShdPtr<DrCarrier>> left(_content);
}

DrClipboard& DrClipboard::getInstance() {
    return LkSingleton<DrClipboard>::getInstance();
}
bool DrClipboard::isInitialized() noexcept {
    return LkSingleton<DrClipboard>::getState() == LkSingleton<DrClipboard>::INITIALIZED;
}

void DrClipboard::setContent(RCShdPtr<DrCarrier> const& carrier, SrcAction action) {
    if (carrier->getSelection()->isEmpty()) return;
    _content = carrier;
    _srcAction = action;
}
RCShdPtr<DrCarrier> DrClipboard::getContent() const {
    return _content;
}
void DrClipboard::clear() {
    reset();
}

void DrClipboard::reset() {
    _content = DrCarrier::create(SnSelection::create());
    _srcAction = None;
}

} // namespace Ko
