#include "framework/actions/actDndUtils.h"

#include "framework/actions/src/actQuery.h"
#include "scriptingAPI/piPythonInterpreterTerminationGuard.h"

#include <typeinfo>

namespace Ko {

namespace {

template <class Targets>
bool performFirst(
    Targets const& targets, RCShdPtr<DrCarrier> const& carrier, RCShdPtr<SnSelection> const& selection, bool perform) {
    auto const first = [&] {
        PiPythonInterpreterTerminationGuard const guard;
        return ActQuery(DrCarrierItem::create(carrier), "").getFirst(targets);
    }();
    if (first && perform) first->performAction(selection);
    return first.has_value();
}

} // namespace

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
    return performFirst(targets, carrier, selection, perform);
}

bool ActDndUtils::performCarrierActions(RCShdPtr<SnSelection const> const& targets, RCShdPtr<DrCarrier> const& carrier,
    RCShdPtr<SnSelection> const& selection, bool perform) {
    return performFirst(targets->getItems(), carrier, selection, perform);
}

} // namespace Ko
