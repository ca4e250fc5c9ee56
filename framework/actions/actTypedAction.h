#pragma once

#include "framework/actions/actAction.h"
#include "internalAPI/snItemConvert.h"

namespace Ko {

/// Complete where `actTypedAction.imp.h` is included, with which every typed action can be instantiated.
template <class TargetType>
struct ActTypedActionBodies;

/// Whether this source can use `ActTypedAction<TargetType, InputType>`: it includes `actTypedAction.imp.h`, or a header
/// declares the instantiation in another source, and specialises this as true.
template <class TargetType, class InputType>
inline constexpr bool isActTypedActionInstantiated = requires {
    sizeof(ActTypedActionBodies<TargetType>);
};

/// An action that is written in terms of values rather than items. It is valid only for items that convert to its types
/// (`SnItemConvert`); the caller must not perform it on others.
///
/// Action authors derive from it and implement the typed operations. The library has `<LiString, LiString>`. For other
/// types, which both need a conversion that some package initialises, one source of the program or plug-in instantiates it:
///
///     #include "framework/actions/actTypedAction.imp.h"
///     template class Ko::ActTypedAction<Frame, Ko::RCShdPtr<Ko::DrCarrier>>;
///
/// If several sources use it, a header declares that, with an export mark where plug-ins use it:
///
///     template <>
///     inline constexpr bool Ko::isActTypedActionInstantiated<Frame, Ko::RCShdPtr<Ko::DrCarrier>> = true;
///     extern template class Ko::ActTypedAction<Frame, Ko::RCShdPtr<Ko::DrCarrier>>;
template <class TargetType, class InputType>
class ActTypedAction : public ActAction {
    static_assert(isActTypedActionInstantiated<TargetType, InputType>,
        "This ActTypedAction is not instantiated: include framework/actions/actTypedAction.imp.h before, and say "
        "`template class Ko::ActTypedAction<Target, Input>;` in one source. Where another source does so, declare "
        "that.");

public:
    using ActAction::inputValid;
    using ActAction::performAction;

    ActTypedAction();
    ~ActTypedAction() override;

    /// Whether both items convert, and the typed operation holds for their values.
    /// @throws ExAssertionFailed when a conversion was not initialised.
    [[nodiscard]] bool inputValid(
        RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) const override;
    /// Performs the typed operation on the values of the items.
    /// @throws ExAssertionFailed when an item does not convert.
    void performAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        RCShdPtr<SnSelection> const& selection) const override;
    /// The choices for the values of the items; none where one does not convert.
    int enumOptions(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        Vector<LiString>& options) const override;

    /// Whether the action can be performed on these values. Changes nothing.
    [[nodiscard]] virtual bool inputValid(TargetType const& target, InputType const& input) const = 0;
    /// Performs the action on these values.
    /// @param selection the action may add items to it, such as those that it has made.
    virtual void performAction(
        TargetType const& target, InputType const& input, RCShdPtr<SnSelection> const& selection) const = 0;
    /// Appends the choices that the action offers for these values; none by default.
    /// @returns the number of choices.
    virtual int enumOptions(TargetType const& target, InputType const& input, Vector<LiString>& options) const;
};

/// The library itself instantiates actions on two texts.
template <>
inline constexpr bool isActTypedActionInstantiated<LiString, LiString> = true;
extern template class KO_FRAMEWORK_API ActTypedAction<LiString, LiString>;

} // namespace Ko
