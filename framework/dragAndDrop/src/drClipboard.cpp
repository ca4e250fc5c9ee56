#include "framework/dragAndDrop/drClipboard.h"

#include "base/assertions.h"
#include "base/neverDestroyed.h"
#include "internalAPI/cbChanges.imp.h"
#include "pluginAPI/piAppThread.h"
#include "resmgt/lkSingleton.imp.h"

namespace Ko {

template class CbDispatcher<DrClipboardChange>;
template class CbChanges<DrClipboardChange>;
template class LkSingleton<DrClipboard>;

namespace {

constexpr AssertionSource source{"framework\\dragAndDrop\\src\\drClipboard"};

void requireAppThread(int line = __builtin_LINE()) {
    source.require(PiAppThread::isCurrent(), "PiAppThread::isCurrent()", line);
}

} // namespace

DrClipboard::DrClipboard() : _content(DrCarrier::create(SnSelection::create())) {}

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

CbSubscription DrClipboard::onChange(std::function<void(DrClipboardChange const&)> callable) {
    requireAppThread();
    if (!_changes) _changes = std::make_unique<CbChanges<DrClipboardChange>>("A listener of the clipboard");
    return _changes->subscribe(std::move(callable));
}

// The previous content is released last: its items' destructors may use the clipboard.
void DrClipboard::set(RCShdPtr<DrCarrier> const& content, SrcAction action) {
    DrClipboardChange const change{content, action, _content, _srcAction};
    CbChanges<DrClipboardChange>::Prepared one;
    if (_changes && !_changes->isEmpty()) one.push_back(change);
    _content = content;
    _srcAction = action;
    if (!one.empty()) _changes->notify(one);
}

} // namespace Ko
