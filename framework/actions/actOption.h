#pragma once

#include "framework/actions/actAction.h"

namespace Ko {

/// A choice that an action offers. To choose it, perform the action with its input.
struct ActOption {
    /// What a menu shows.
    LiString text = {};
    /// The input of the action that stands for the choice.
    RCShdPtr<SnItem const> input = {};
    /// Whether it is what the target has now.
    bool isCurrent = false;
};

/// An optional interface of actions: derive an action from it too, to offer choices as inputs instead of texts that have to be read
/// again. Application thread only.
class KO_FRAMEWORK_API ActOptioned {
public:
    /// The choices for a target, in the order of a menu. Called for items of any kind.
    virtual Vector<ActOption> getOptions(RCShdPtr<SnItem const> const& target) const = 0;

    /// The choices of any action. Where it has no `ActOptioned`, those that `enumOptions` lists, as items with the text: `LiString`, or else
    /// `ActBasicParam`, whichever the action is valid for.
    [[nodiscard]] static Vector<ActOption> of(
        ActAction const& action, RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input);

protected:
    ActOptioned();
    ActOptioned(ActOptioned const&) = default;
    ActOptioned& operator=(ActOptioned const&) = default;
    virtual ~ActOptioned();
};

} // namespace Ko
