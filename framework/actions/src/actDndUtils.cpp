#include "framework/actions/actDndUtils.h"

#include "framework/actions/actRegistry.h"

#include <typeinfo>

namespace Ko {

int ActDndUtils::getSnItems(DrCarrier const& carrier, Items* items) {
    if (!items) RCExUtil::throwExNullPtr(typeid(Items).name());
    RCShdPtr<SnSelection> const selection = carrier.getSelection();
    if (selection.isNull() || selection->isEmpty()) return 0;
    SnSelection::Items const carried = selection->getItems();
    items->insert(items->end(), carried.begin(), carried.end());
    return static_cast<int>(selection->getCount());
}

bool ActDndUtils::performCarrierActions(
    Items const& targets, RCShdPtr<DrCarrier> const& carrier, RCShdPtr<SnSelection> const& selection, bool perform) {
    auto const entries = ActRegistry::getInstance().getActions(targets, carrier, "", ActRegistry::FirstOnly);
    if (entries.atEnd()) return false;
    if (perform) entries->performAction(selection);
    return true;
}

bool ActDndUtils::performCarrierActions(RCShdPtr<SnSelection const> const& targets, RCShdPtr<DrCarrier> const& carrier,
    RCShdPtr<SnSelection> const& selection, bool perform) {
    SnSelection::Items const items = targets->getItems();
    return performCarrierActions(Items(items.begin(), items.end()), carrier, selection, perform);
}

} // namespace Ko
