#include "framework/actions/actAction.h"

#include "framework/actions/src/actNoItems.h"
#include "framework/actions/src/actPerforming.h"

namespace Ko {

ActAction::ActAction() = default;
ActAction::~ActAction() = default;

int ActAction::enumOptions(RCShdPtr<SnItem const> const&, RCShdPtr<SnItem const> const&, Vector<LiString>&) const {
    return 0;
}
std::string ActAction::getDisplayString() const {
    return _displayString;
}
std::string ActAction::getGroup() const {
    return {};
}
std::string ActAction::getCompositeName() const {
    return {};
}

void ActAction::setDisplayString(std::string const& text) {
    _displayString = text;
}

void ActAction::performAction() const {
    ActPerforming const performing(this);
    performAction(ActNoItems::target(), ActNoItems::input(), SnSelection::create());
}
bool ActAction::inputValid() const {
    return inputValid(ActNoItems::target(), ActNoItems::input());
}

LiString ActAction::toggleOnString() {
    static LiString const text("ToggleOn ");
    return text;
}
LiString ActAction::toggleOffString() {
    return "ToggleOff ";
}

void ActAction::destroy(ActAction* action) noexcept {
    if (!ActPerforming::keep(action)) delete action;
}

} // namespace Ko
