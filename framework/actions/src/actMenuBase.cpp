#include "framework/actions/actMenuBase.h"

#include "framework/actions/actCompositeAction.h"
#include "framework/actions/src/actNoItems.h"

namespace Ko {

ActMenuBase::ActMenuBase() = default;
ActMenuBase::~ActMenuBase() = default;

bool ActMenuBase::setActionsForSelection(
    Items const& items, GePoint2<int> const& position, RCShdPtr<SnSelection> const& selection) {
    Entries entries;
    return setActionsForSelection(items, position, selection, entries);
}

bool ActMenuBase::setActionsForSelection(
    Items const& items, GePoint2<int> const& position, RCShdPtr<SnSelection> const& selection, Entries& entries) {
    entries = ActRegistry::getInstance().getActions(items, ActNoItems::create(), "", ActRegistry::AllSorted);
    return showMenu(entries, position, selection);
}

ActMenuBase::Entries ActMenuBase::getMembers(ActRegistry::Entry const& composite) {
    if (!dynamic_cast<ActCompositeAction const*>(composite.getAction())) return {};
    LiString const name = composite.getDescription();
    if (name.empty()) return {}; // the composite name of the top level
    return ActRegistry::getInstance().getActions(
        composite.getTarget(), composite.getInput(), name, ActRegistry::AllSorted);
}

} // namespace Ko
