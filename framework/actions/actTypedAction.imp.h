#pragma once

#include "framework/actions/actTypedAction.h"

#include "base/assertions.h"

namespace Ko {

namespace ActTypedActionSource {
// The source and the lines that are reported for unsuitable items, independent of the source that instantiates the action.
constexpr AssertionSource source{"framework/actions/src/actTypedAction.imp"};
constexpr int unsuitableTarget = 83;
constexpr int unsuitableInput = 84;
} // namespace ActTypedActionSource

template <class TargetType>
struct ActTypedActionBodies {};

template <class TargetType, class InputType>
ActTypedAction<TargetType, InputType>::ActTypedAction() = default;
template <class TargetType, class InputType>
ActTypedAction<TargetType, InputType>::~ActTypedAction() = default;

template <class TargetType, class InputType>
bool ActTypedAction<TargetType, InputType>::inputValid(
    RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) const {
    if (!SnItemConvert<TargetType>::test(target)) return false;
    TargetType const targetValue = SnItemConvert<TargetType>::get(target);
    if (!SnItemConvert<InputType>::test(input)) return false;
    InputType const inputValue = SnItemConvert<InputType>::get(input);
    return inputValid(targetValue, inputValue);
}

template <class TargetType, class InputType>
void ActTypedAction<TargetType, InputType>::performAction(RCShdPtr<SnItem const> const& target,
    RCShdPtr<SnItem const> const& input, RCShdPtr<SnSelection> const& selection) const {
    using namespace ActTypedActionSource;
    source.require(
        SnItemConvert<TargetType>::test(target), "SnItemConvert< TargetType >::test( target )", unsuitableTarget);
    source.require(SnItemConvert<InputType>::test(input), "SnItemConvert< InputType >::test( input )", unsuitableInput);
    TargetType const targetValue = SnItemConvert<TargetType>::get(target);
    InputType const inputValue = SnItemConvert<InputType>::get(input);
    performAction(targetValue, inputValue, selection);
}

template <class TargetType, class InputType>
int ActTypedAction<TargetType, InputType>::enumOptions(
    RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input, Vector<LiString>& options) const {
    if (!SnItemConvert<TargetType>::test(target)) return 0;
    TargetType const targetValue = SnItemConvert<TargetType>::get(target);
    if (!SnItemConvert<InputType>::test(input)) return 0;
    InputType const inputValue = SnItemConvert<InputType>::get(input);
    return enumOptions(targetValue, inputValue, options);
}

template <class TargetType, class InputType>
int ActTypedAction<TargetType, InputType>::enumOptions(TargetType const&, InputType const&, Vector<LiString>&) const {
    return 0;
}

} // namespace Ko
