#include "framework/dragAndDrop/drClipboard.h"

#include "base/assertions.h"
#include "base/neverDestroyed.h"
#include "pluginAPI/piAppThread.h"
#include "resmgt/lkSingleton.imp.h"

namespace Ko {

template class LkSingleton<DrClipboard>;

namespace {

constexpr AssertionSource source{"framework\\dragAndDrop\\src\\drClipboard"};

void requireAppThread(int line = __builtin_LINE()) {
    source.require(PiAppThread::isCurrent(), "PiAppThread::isCurrent()", line);
}

} // namespace

DrClipboard::DrClipboard() {
    clear();
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
    requireAppThread();
    if (!carrier->getSelection()->isEmpty()) set(carrier, action);
}
RCShdPtr<DrCarrier> DrClipboard::getContent() const {
    requireAppThread();
    return _content;
}
DrClipboard::SrcAction DrClipboard::getSrcAction() const {
    requireAppThread();
    return _srcAction;
}
void DrClipboard::clear() {
    set(DrCarrier::create(SnSelection::create()), None);
}

// The previous content is released last: its items' destructors may use the clipboard.
void DrClipboard::set(RCShdPtr<DrCarrier> content, SrcAction action) noexcept {
    _srcAction = action;
    _content.swap(content);
}

} // namespace Ko
