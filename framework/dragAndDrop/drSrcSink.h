#pragma once

#include "framework/dragAndDrop/drCarrier.h"

namespace Ko {

/// How a view takes part in a gesture that moves items: as the source that fills a carrier, as the sink that takes what it
/// carries, or as both. By default it takes part in nothing.
///
/// Who handles the gesture asks the source `willPopulateSelection` and has it fill a new carrier; asks the sinks under the
/// pointer `willConsumeSelection`; and on release has the sink consume and tells the source that the drop was completed,
/// or tells both that the gesture was abandoned. Application thread only.
class KO_FRAMEWORK_API DrSrcSink : public RCBase {
public:
    ~DrSrcSink() override;

    /// Whether this source can fill a carrier.
    virtual bool willPopulateSelection();
    /// Adds the items to move to the carrier's selection.
    virtual void populateSelection(RCShdPtr<DrCarrier> const& carrier);
    /// Whether this sink accepts the carrier.
    virtual bool willConsumeSelection(RCShdPtr<DrCarrier> const& carrier);
    /// Takes what is carried: the drop or the paste.
    virtual void consumeSelection(RCShdPtr<DrCarrier> const& carrier);
    /// Told to the source when the drop has succeeded.
    virtual void dropCompleted(RCShdPtr<DrCarrier> const& carrier);
    /// Told when the gesture was abandoned.
    virtual void operationCancelled(RCShdPtr<DrCarrier> const& carrier);

protected:
    DrSrcSink();
};

} // namespace Ko
