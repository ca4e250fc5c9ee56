#include "framework/dragAndDrop/drGesture.h"

namespace Ko {

// Copies, here and below: a view may release the source or the sink of a drag while it is called.
RCShdPtr<DrCarrier> DrGesture::begin(RCShdPtr<DrSrcSink> const& source) {
    RCShdPtr<DrSrcSink> const from = source;
    if (!from->willPopulateSelection()) return nullptr;
    RCShdPtr<DrCarrier> carrier = DrCarrier::create(SnSelection::create());
    from->populateSelection(carrier);
    return carrier;
}

DrEffect DrGesture::hover(
    RCShdPtr<DrSrcSink> const& sink, RCShdPtr<DrCarrier> const& carrier, DrEffect wanted, DrPlace const& place) {
    RCShdPtr<DrSrcSink> const to = sink;
    RCShdPtr<DrCarrier> const carried = carrier;
    carried->setPlace(place);
    DrEffect const accepted = to->accept(carried, wanted, place);
    return carried->getOffered().contains(accepted) ? accepted : DrEffect::None;
}

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
    RCShdPtr<DrSrcSink> const from = source, to = sink;
    RCShdPtr<DrCarrier> const carried = carrier;
    carried->setEffect(DrEffect::None);
    if (!from.isNull()) from->operationCancelled(carried);
    if (!to.isNull()) to->operationCancelled(carried);
}

} // namespace Ko
