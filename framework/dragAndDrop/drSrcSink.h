#pragma once

#include "framework/dragAndDrop/drCarrier.h"

namespace Ko {

/// The part of a view in a gesture that moves items: the source that fills a carrier, the sink that takes the carried items,
/// or both. By default it is neither.
///
/// The handler of the gesture calls the source's `willPopulateSelection` and lets it fill a new carrier; it calls `accept` of the
/// sinks under the pointer. On release it sets the accepted effect and calls `consumeSelection` of the sink and `dropCompleted` of the
/// source; when the gesture is abandoned, `operationCancelled` of both. `DrGesture` does this. Application thread only.
class KO_FRAMEWORK_API DrSrcSink : public RCBase {
public:
    ~DrSrcSink() override;

    /// Whether this source can fill a carrier.
    [[nodiscard]] virtual bool willPopulateSelection();
    /// Adds the items to move to the carrier's selection.
    virtual void populateSelection(RCShdPtr<DrCarrier> const& carrier);
    /// Whether this sink accepts the carrier.
    [[nodiscard]] virtual bool willConsumeSelection(RCShdPtr<DrCarrier> const& carrier);
    /// Takes the carried items: the drop or the paste.
    virtual void consumeSelection(RCShdPtr<DrCarrier> const& carrier);
    /// Called for the source when the drop has succeeded, with its effect in the carrier. After a `Move` to another document, the source
    /// removes the items.
    virtual void dropCompleted(RCShdPtr<DrCarrier> const& carrier);
    /// Called for source and sink when the gesture is abandoned.
    virtual void operationCancelled(RCShdPtr<DrCarrier> const& carrier);
    /// What a drop at a place of this sink would do. The sink accepts the effect, changes it or refuses it, as the place demands. By
    /// default it is accepted where `willConsumeSelection` holds.
    /// @param effect what the user asks for.
    /// @returns an effect that the carrier offers, or `None`.
    [[nodiscard]] virtual DrEffect accept(RCShdPtr<DrCarrier> const& carrier, DrEffect effect, DrPlace const& place);

protected:
    DrSrcSink();
};

} // namespace Ko
