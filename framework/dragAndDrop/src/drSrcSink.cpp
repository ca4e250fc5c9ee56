#include "framework/dragAndDrop/drSrcSink.h"

namespace Ko {

DrSrcSink::DrSrcSink() = default;
DrSrcSink::~DrSrcSink() = default;

bool DrSrcSink::willPopulateSelection() {
    return false;
}
void DrSrcSink::populateSelection(RCShdPtr<DrCarrier> const&) {}
bool DrSrcSink::willConsumeSelection(RCShdPtr<DrCarrier> const&) {
    return false;
}
void DrSrcSink::consumeSelection(RCShdPtr<DrCarrier> const&) {}
void DrSrcSink::dropCompleted(RCShdPtr<DrCarrier> const&) {}
void DrSrcSink::operationCancelled(RCShdPtr<DrCarrier> const&) {}
DrEffect DrSrcSink::accept(RCShdPtr<DrCarrier> const& carrier, DrEffect effect, DrPlace const&) {
    return willConsumeSelection(carrier) ? effect : DrEffect::None;
}

} // namespace Ko
