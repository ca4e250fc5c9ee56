#include "framework/dragAndDrop/drGesture.h"

namespace Ko {

RCShdPtr<DrCarrier> DrGesture::begin(RCShdPtr<DrSrcSink> const& source) {
    if (!source->willPopulateSelection()) return nullptr;
    RCShdPtr<DrCarrier> carrier = DrCarrier::create(SnSelection::create());
    source->populateSelection(carrier);
    return carrier;
}

DrEffect DrGesture::hover(
    RCShdPtr<DrSrcSink> const& sink, RCShdPtr<DrCarrier> const& carrier, DrEffect wanted, DrPlace const& place) {
    carrier->setPlace(place);
    DrEffect const accepted = sink->accept(carrier, wanted, place);
    return carrier->getOffered().contains(accepted) ? accepted : DrEffect::None;
}

// Copies: a view may release the source or the sink of a drag while it is called.
DrEffect DrGesture::drop(RCShdPtr<DrSrcSink> const& source, RCShdPtr<DrSrcSink> const& sink,
    RCShdPtr<DrCarrier> const& carrier, DrEffect wanted, DrPlace const& place) {
    RCShdPtr<DrSrcSink> const from = source, to = sink;
    RCShdPtr<DrCarrier> const carried = carrier;
    DrEffect effect = DrEffect::None;
    try {
        effect = hover(to, carried, wanted, place);
        if (effect != DrEffect::None) {
            carried->setEffect(effect);
            to->consumeSelection(carried);
        }
    } catch (...) {
        cancel(from, to, carried);
        throw;
    }
    if (effect == DrEffect::None)
        cancel(from, to, carried);
    else if (!from.isNull())
        from->dropCompleted(carried);
    return effect;
}

void DrGesture::cancel(
    RCShdPtr<DrSrcSink> const& source, RCShdPtr<DrSrcSink> const& sink, RCShdPtr<DrCarrier> const& carrier) {
    RCShdPtr<DrSrcSink> const to = sink;
    RCShdPtr<DrCarrier> const carried = carrier;
    carried->setEffect(DrEffect::None);
    if (!source.isNull()) source->operationCancelled(carried);
    if (!to.isNull()) to->operationCancelled(carried);
}

} // namespace Ko
