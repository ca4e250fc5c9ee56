#pragma once

#include "framework/actions/actAction.h"

namespace Ko {

/// Stands for other actions, as an entry of a menu stands for its sub-menu. Its members are the registered actions whose
/// composite name is its description; they may come and go, before and after it. It may itself be a member of another.
///
/// It is valid while one of its members is. It is not performed itself: a menu asks the registry for its members and
/// performs one of these. A composite that is a member of itself, directly or through others, adds nothing to itself. While
/// the outermost of nested composites is asked, each of the others is asked once for a target and an input.
class KO_FRAMEWORK_API ActCompositeAction : public ActAction {
public:
    using ActAction::inputValid;
    using ActAction::performAction;

    ActCompositeAction();
    ~ActCompositeAction() override;

    [[nodiscard]] bool inputValid(
        RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) const override;
    /// Does nothing.
    void performAction(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input,
        RCShdPtr<SnSelection> const& selection) const override;
};

} // namespace Ko
