#pragma once

#include "framework/actions/actAction.h"
#include "internalAPI/snItemConvert.h"

namespace Ko {

/// An action that is written in terms of values rather than items. It is valid only for items that convert to its types
/// (`SnItemConvert`); to perform it on others is an error of the caller's.
///
/// Action authors derive from it and implement the typed operations. The library has `<LiString, LiString>`. For other
/// types, which both need a conversion that some package initialises, one source of the program or plug-in instantiates it:
///
///     #include "framework/actions/actTypedAction.imp.h"
///     template class Ko::ActTypedAction<Frame, Ko::RCShdPtr<Ko::DrCarrier>>;
template <class TargetType, class InputType>
class ActTypedAction : public ActAction {
public:
    using ActAction::inputValid;
    using ActAction::performAction;

    ActTypedAction();
    ~ActTypedAction() override;

    /// @throws ExAssertionFailed when a conversion was not initialised.
    bool inputValid(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) const override;
    /// @throws ExAssertionFailed when an item does not convert.
    void performAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        RCShdPtr<SnSelection> const& selection) const override;
    int enumOptions(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        Vector<LiString>& options) const override;

    /// The same in terms of values; the items were converted before:
    virtual bool inputValid(TargetType const& target, InputType const& input) const = 0;
    virtual void performAction(
        TargetType const& target, InputType const& input, RCShdPtr<SnSelection> const& selection) const = 0;
    virtual int enumOptions(TargetType const& target, InputType const& input, Vector<LiString>& options) const;
};

extern template class KO_FRAMEWORK_API ActTypedAction<LiString, LiString>;

} // namespace Ko
