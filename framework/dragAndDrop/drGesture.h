#pragma once

#include "framework/dragAndDrop/drSrcSink.h"

namespace Ko {

/// Calls the source and the sink of a drag in the order that both rely on. For the handler of the mouse and of the system's drags.
/// Application thread only.
class KO_FRAMEWORK_API DrGesture {
public:
    /// A new carrier that the source has filled.
    /// @returns null where the source has nothing to carry.
    [[nodiscard]] static RCShdPtr<DrCarrier> begin(RCShdPtr<DrSrcSink> const& source);
    /// What a drop would do now, for the shape of the pointer. Sets the place of the carrier.
    /// @param wanted what the user asks for, by keys.
    /// @returns `None` where the sink refuses, or changes the effect into one that the source does not offer.
    [[nodiscard]] static DrEffect hover(
        RCShdPtr<DrSrcSink> const& sink, RCShdPtr<DrCarrier> const& carrier, DrEffect wanted, DrPlace const& place);
    /// Drops: asks the sink as `hover` does, then sets the effect of the carrier, has the sink consume it and notifies the source. Where
    /// the sink refuses or throws, the operation is cancelled for both.
    /// @param source null for a drag from another program.
    /// @returns the effect of the completed drop, which the carrier has too; `None` where it was refused.
    static DrEffect drop(RCShdPtr<DrSrcSink> const& source, RCShdPtr<DrSrcSink> const& sink,
        RCShdPtr<DrCarrier> const& carrier, DrEffect wanted, DrPlace const& place);
    /// Abandons the drag: cancels the operation for both, which may be null.
    static void cancel(
        RCShdPtr<DrSrcSink> const& source, RCShdPtr<DrSrcSink> const& sink, RCShdPtr<DrCarrier> const& carrier);
};

} // namespace Ko
