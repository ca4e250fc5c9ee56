#pragma once

#include "framework/dragAndDrop/drEffect.h"
#include "framework/dragAndDrop/drFormats.h"
#include "framework/frameworkApi.h"
#include "internalAPI/snItemConvert.h"
#include "internalAPI/snSelection.h"
#include "primitives/gePoint2.h"

namespace Ko {

/// The object that travels in a drag, or between a copy and a paste: a selection of items, and the points where the gesture
/// began and where it is now.
///
/// Application thread only: every operation asserts it, and a carrier that is destroyed on another thread ends the
/// process. Only the reference count may be changed from anywhere.
class KO_FRAMEWORK_API DrCarrier : public RCBase {
public:
    /// The carrier shares the selection with the caller. Both points are the origin.
    [[nodiscard]] static RCShdPtr<DrCarrier> create(RCShdPtr<SnSelection> const& selection);

    /// The carried items, shared; null if the carrier was made without a selection.
    [[nodiscard]] RCShdPtr<SnSelection> getSelection() const;

    /// The current point, in the coordinates of the view under the pointer.
    [[nodiscard]] GePoint2<float> const& getLocation() const;
    /// The point where the gesture began, in the coordinates of the view where it began.
    [[nodiscard]] GePoint2<float> const& getLaunchLocation() const;
    /// Sets both the current point and the launch location.
    void setLocation(GePoint2<float> const& point);
    /// Sets only the launch location.
    void setLaunchLocation(GePoint2<float> const& point);

    /// The effects that the source offers; all by default.
    [[nodiscard]] DrEffects getOffered() const;
    /// Sets the effects that the source offers. To be called by the source.
    void setOffered(DrEffects effects);
    /// The effect of the drop, for the sink that consumes the carrier and for the source in `dropCompleted`; `Move` before a drop, and
    /// `None` after one that was cancelled.
    [[nodiscard]] DrEffect getEffect() const;
    /// Sets the effect of the drop. To be called by the handler of the gesture.
    void setEffect(DrEffect effect);
    /// The place of the drop, for the sink that consumes the carrier.
    [[nodiscard]] DrPlace const& getPlace() const;
    /// Sets the place of the drop. To be called by the handler of the gesture.
    void setPlace(DrPlace const& place);
    /// The carried data in forms that other programs understand; none by default.
    [[nodiscard]] DrFormats const& getFormats() const;
    /// Replaces the forms for other programs.
    void setFormats(DrFormats formats);

protected:
    /// As `create`.
    explicit DrCarrier(RCShdPtr<SnSelection> const& selection);
    ~DrCarrier() override;

private:
    friend class RCShdPtr<DrCarrier>;

    RCShdPtr<SnSelection> _selection;
    GePoint2<float> _location;
    GePoint2<float> _launchLocation;
    DrEffects _offered = DrEffects::all();
    DrEffect _effect = DrEffect::Move;
    DrPlace _place;
    DrFormats _formats;
};

/// Writes both locations and the items, for `RCShdPtr<DrCarrier>::dump`.
KO_FRAMEWORK_API void dumpObject(std::ostream& stream, DrCarrier const& carrier);

/// A carrier as an item: the input of an action that takes a drop. An `ActTypedAction<X, RCShdPtr<DrCarrier>>` receives the
/// carrier. The conversion works while the package "dragAndDrop" is initialised.
using DrCarrierItem = SnItemBasic<RCShdPtr<DrCarrier>>;

} // namespace Ko

KO_DECLARE_ITEM_TYPE(KO_FRAMEWORK_API, Ko::RCShdPtr<Ko::DrCarrier>)
