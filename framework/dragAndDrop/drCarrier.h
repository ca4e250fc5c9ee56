#pragma once

#include "framework/frameworkApi.h"
#include "internalAPI/snItemConvert.h"
#include "internalAPI/snSelection.h"
#include "primitives/gePoint2.h"

namespace Ko {

/// What travels in a drag, or between a copy and a paste: a selection of items, and where the gesture began and is now.
///
/// Application thread only: every operation asserts it, and a carrier that is destroyed on another thread ends the
/// process. Only the reference count may be changed from anywhere.
class KO_FRAMEWORK_API DrCarrier : public RCBase {
public:
    /// The carrier shares the selection with the caller. Both points are the origin.
    static RCShdPtr<DrCarrier> create(RCShdPtr<SnSelection> const& selection);

    /// What is carried, shared; null if the carrier was made without.
    RCShdPtr<SnSelection> getSelection() const;

    /// In the coordinates of the view that the gesture goes on in:
    GePoint2<float> const& getLocation() const;
    GePoint2<float> const& getLaunchLocation() const;
    /// Begins the gesture at a point: sets the launch location too.
    void setLocation(GePoint2<float> const& point);
    /// Leaves the location where it is.
    void setLaunchLocation(GePoint2<float> const& point);

protected:
    /// As `create`.
    explicit DrCarrier(RCShdPtr<SnSelection> const& selection);
    ~DrCarrier() override;

private:
    friend class RCShdPtr<DrCarrier>;

    RCShdPtr<SnSelection> _selection;
    GePoint2<float> _location;
    GePoint2<float> _launchLocation;
};

/// Writes both locations and the items, for `RCShdPtr<DrCarrier>::dump`.
KO_FRAMEWORK_API void dumpObject(std::ostream& stream, DrCarrier const& carrier);

/// A carrier is an item too: the input of an action that takes a drop. So `ActTypedAction<X, RCShdPtr<DrCarrier>>` is
/// handed the carrier. It can be converted while the package "dragAndDrop" is initialised.
using DrCarrierItem = SnItemBasic<RCShdPtr<DrCarrier>>;

extern template class KO_FRAMEWORK_API SnItemBasic<RCShdPtr<DrCarrier>>;
extern template class KO_FRAMEWORK_API SnIsItem<RCShdPtr<DrCarrier>>;
extern template class KO_FRAMEWORK_API SnItemConvert<RCShdPtr<DrCarrier>>;

} // namespace Ko
