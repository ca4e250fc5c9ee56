#include "framework/dragAndDrop/drCarrier.h"

#include "base/assertions.h"
#include "internalAPI/snItemBasic.imp.h"
#include "internalAPI/snItemConvert.imp.h"
#include "pluginAPI/piAppThread.h"

#include <ostream>
#include <utility>

namespace Ko {

template class SnItemBasic<RCShdPtr<DrCarrier>>;
template class SnIsItem<RCShdPtr<DrCarrier>>;
template class SnItemConvert<RCShdPtr<DrCarrier>>;

namespace {

constexpr AssertionSource source{"framework\\dragAndDrop\\src\\drCarrier"};

void requireAppThread(int line = __builtin_LINE()) {
    source.require(PiAppThread::isCurrent(), "PiAppThread::isCurrent()", line);
}

} // namespace

DrCarrier::DrCarrier(RCShdPtr<SnSelection> const& selection) {
    requireAppThread();
    _selection = selection;
}

// An exception could not leave a destructor; this one is logged before it ends the process.
DrCarrier::~DrCarrier() {
    if (!PiAppThread::isCurrent()) source.abort("PiAppThread::isCurrent()");
}

RCShdPtr<DrCarrier> DrCarrier::create(RCShdPtr<SnSelection> const& selection) {
    requireAppThread();
    return RCShdPtr<DrCarrier>::create(selection);
}

RCShdPtr<SnSelection> DrCarrier::getSelection() const {
    requireAppThread();
    return _selection;
}

GePoint2<float> const& DrCarrier::getLocation() const {
    requireAppThread();
    return _location;
}
GePoint2<float> const& DrCarrier::getLaunchLocation() const {
    requireAppThread();
    return _launchLocation;
}

void DrCarrier::setLocation(GePoint2<float> const& point) {
    requireAppThread();
    _location = point;
    _launchLocation = point;
}
void DrCarrier::setLaunchLocation(GePoint2<float> const& point) {
    requireAppThread();
    _launchLocation = point;
}

DrEffects DrCarrier::getOffered() const {
    requireAppThread();
    return _offered;
}
void DrCarrier::setOffered(DrEffects effects) {
    requireAppThread();
    _offered = effects;
}
DrEffect DrCarrier::getEffect() const {
    requireAppThread();
    return _effect;
}
void DrCarrier::setEffect(DrEffect effect) {
    requireAppThread();
    _effect = effect;
}
DrPlace const& DrCarrier::getPlace() const {
    requireAppThread();
    return _place;
}
// The replaced values are released last: destructors may use the carrier.
void DrCarrier::setPlace(DrPlace const& place) {
    requireAppThread();
    DrPlace const before = std::exchange(_place, DrPlace(place));
}
DrFormats const& DrCarrier::getFormats() const {
    requireAppThread();
    return _formats;
}
void DrCarrier::setFormats(DrFormats formats) {
    requireAppThread();
    std::swap(_formats, formats);
}

void dumpObject(std::ostream& stream, DrCarrier const& carrier) {
    stream << "Location " << carrier.getLocation() << ", launched at " << carrier.getLaunchLocation() << '\n';
    carrier.getSelection().dump(stream);
}

} // namespace Ko
