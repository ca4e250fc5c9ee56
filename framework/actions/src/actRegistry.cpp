#include "framework/actions/actRegistry.h"

#include "base/inSingleton.imp.h"
#include "framework/actions/src/actNoItems.h"
#include "framework/actions/src/actQuery.h"
#include "internalAPI/cbDispatcher.imp.h"
#include "internalAPI/constIterator.imp.h"
#include "scriptingAPI/piPythonInterpreterTerminationGuard.h"

#include <array>
#include <memory>

namespace Ko {

template class InSingleton<ActRegistry>;
template class CbDispatcher<ActRegistryChange>;
template class ConstIterator<ActRegistry::Entry>;
template class ConstIterator<ActAction const*>;

namespace {

using OneTarget = std::array<RCShdPtr<SnItem const>, 1>;

Vector<ActAction const*> sortedByDescription(ActRecords::Hold& hold, Vector<ActAction const*> const& actions) {
    ActFindings findings;
    for (ActAction const* const action : actions) {
        if (!hold.isRegistered(action)) continue;
        ActPerforming const asked(action);
        findings.add(0);
        findings.endAction(*action);
    }
    Vector<ActAction const*> result;
    findings.forEachSorted(hold, [&](ActAction const* action, std::uint32_t) { result.push_back(action); });
    return result;
}

template <class Predicate>
ConstIterator<ActAction const*> findActions(ActRecords& records, ActRegistry::Numerator order, Predicate isWanted) {
    Vector<ActAction const*> actions;
    ActRecords::Walk walk(records);
    while (ActAction const* const action = walk.next())
        if (isWanted(*action)) actions.push_back(action);
    if (order != ActRegistry::FirstOnly) actions = sortedByDescription(walk, actions);
    if (walk.hasLost()) std::erase_if(actions, [&](ActAction const* action) { return !walk.isRegistered(action); });
    return ConstIterator<ActAction const*>(std::move(actions));
}

} // namespace

// ---- lifetime

ActRegistry::ActRegistry() : _records(std::make_unique<ActRecords>()) {}
ActRegistry::~ActRegistry() {
    _records->destroyAll();
}

void ActRegistry::initialize() {
    performInitialize();
}
void ActRegistry::finalize() {
    performFinalize();
}

// ---- registration

void ActRegistry::registerAction(OPtr<ActAction> action, DynamicState state) {
    if (!action) return;
    ActAction const* const registered = action.get();
    _records->append(std::move(action), state);
    notify(ActRegistryChange::Kind::Registered, registered);
}

OPtrRet<ActAction> ActRegistry::unregisterAction(ActAction const* action) {
    OPtrRet<ActAction> removed = _records->remove(action);
    if (removed) notify(ActRegistryChange::Kind::Unregistered, action);
    return removed;
}

void ActRegistry::unregisterActionsInGroup(std::string const& group) {
    unregisterActionsInGroup(Set<std::string>{group});
}

void ActRegistry::unregisterActionsInGroup(Set<std::string> const& groups) {
    Vector<std::size_t> places;
    ActRecords::Walk walk(*_records);
    while (ActAction const* const action = walk.next())
        if (groups.contains(action->getGroup())) places.push_back(walk.getPlace());
    Vector<ActAction const*> removed;
    removed.reserve(places.size());
    for (std::size_t const place : places) {
        removed.push_back(_records->getAt(place));
        _records->destroyAt(place);
    }
    std::erase(removed, nullptr); // unregistered by the destructor of another one
    if (!removed.empty()) notify({ActRegistryChange::Kind::Unregistered, std::move(removed)});
}

void ActRegistry::deleteAllDynamicActions() {
    Vector<ActAction const*> removed = _records->getDynamic();
    _records->releaseDynamic();
    if (!removed.empty()) notify({ActRegistryChange::Kind::Unregistered, std::move(removed)});
}

// ---- changes

CbSubscription ActRegistry::onChange(std::function<void(ActRegistryChange const&)> callable) {
    return _changes.subscribe(std::move(callable));
}

void ActRegistry::invalidate(ActAction const* action) {
    if (action)
        notify(ActRegistryChange::Kind::Invalidated, action);
    else
        notify({ActRegistryChange::Kind::Invalidated, {}});
}

// What a listener throws is logged: the operation has succeeded.
void ActRegistry::notify(ActRegistryChange const& change) noexcept {
    LgFirstError error("A listener of the action registry");
    error.capture([&] { _changes.call(change, error); });
    error.log();
}

void ActRegistry::notify(ActRegistryChange::Kind kind, ActAction const* action) noexcept {
    if (_changes.isEmpty()) return;
    LgFirstError error("A listener of the action registry");
    error.capture([&] { _changes.call({kind, {action}}, error); });
    error.log();
}

// ---- lookup

ActAction* ActRegistry::getAction(LiString const& description, std::string const& compositeName) const {
    if (description.empty()) return nullptr;
    ActRecords::Walk walk(*_records);
    while (ActAction* const action = walk.next())
        if (action->getCompositeName() == compositeName && action->getDescription() == description &&
            walk.isCurrentRegistered())
            return action;
    return nullptr;
}

ConstIterator<ActRegistry::Entry> ActRegistry::getActions(RCShdPtr<SnItem const> const& target,
    RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const {
    return ActQuery(input, compositeName).getEntries(OneTarget{target}, order);
}
ConstIterator<ActRegistry::Entry> ActRegistry::getActions(RCShdPtr<SnItem const> const& target,
    RCShdPtr<SnItem const> const& input, Set<std::string> const& groups, std::string const& compositeName,
    Numerator order) const {
    return ActQuery(input, compositeName, groups).getEntries(OneTarget{target}, order);
}

ConstIterator<ActRegistry::Entry> ActRegistry::getNoTargetNoInputActions(
    std::string const& group, std::string const& compositeName, Numerator order) const {
    return getNoTargetNoInputActions(Set<std::string>{group}, compositeName, order);
}
ConstIterator<ActRegistry::Entry> ActRegistry::getNoTargetNoInputActions(
    Set<std::string> const& groups, std::string const& compositeName, Numerator order) const {
    return getActions(ActNoItems::create(), ActNoItems::create(), groups, compositeName, order);
}

ConstIterator<ActAction const*> ActRegistry::getActionsInGroup(std::string const& group, Numerator order) const {
    return getActionsInGroup(Set<std::string>{group}, order);
}
ConstIterator<ActAction const*> ActRegistry::getActionsInGroup(Set<std::string> const& groups, Numerator order) const {
    return findActions(*_records, order, [&](ActAction const& action) { return groups.contains(action.getGroup()); });
}
ConstIterator<ActAction const*> ActRegistry::getAllActions(Numerator order) const {
    return findActions(*_records, order, [](ActAction const&) { return true; });
}

Set<std::string> ActRegistry::getGroups() const {
    Set<std::string> groups;
    ActRecords::Walk walk(*_records);
    while (ActAction const* const action = walk.next()) {
        std::string group = action->getGroup();
        if (!group.empty() && walk.isCurrentRegistered()) groups.insert(std::move(group));
    }
    return groups;
}

ConstIterator<ActRegistry::Entry> ActRegistry::getActions(RCShdPtr<SnSelection const> const& selection,
    RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const {
    PiPythonInterpreterTerminationGuard const guard;
    return ActQuery(input, compositeName).getEntries(selection->getItems(), order);
}
ConstIterator<ActRegistry::Entry> ActRegistry::getActions(List<RCShdPtr<SnItem const>> const& targets,
    RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const {
    PiPythonInterpreterTerminationGuard const guard;
    return ActQuery(input, compositeName).getEntries(targets, order);
}
ConstIterator<ActRegistry::Entry> ActRegistry::getActions(List<RCShdPtr<SnItem const>> const& targets,
    RCShdPtr<DrCarrier> const& carrier, std::string const& compositeName, Numerator order) const {
    return getActions(targets, RCShdPtr<SnItem const>(DrCarrierItem::create(carrier)), compositeName, order);
}

Vector<ActGroupedEntry> ActRegistry::getGroupedActions(List<RCShdPtr<SnItem const>> const& targets,
    RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const {
    PiPythonInterpreterTerminationGuard const guard;
    return ActQuery(input, compositeName).getGrouped(targets, order);
}
Vector<ActGroupedEntry> ActRegistry::getGroupedActions(RCShdPtr<SnSelection const> const& selection,
    RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const {
    PiPythonInterpreterTerminationGuard const guard;
    return ActQuery(input, compositeName).getGrouped(selection->getItems(), order);
}

// ---- entries

LiString ActRegistry::Entry::getDescription() const {
    return _action->getDescription();
}
std::string ActRegistry::Entry::getDisplayString() const {
    return _action->getDisplayString();
}
std::string ActRegistry::Entry::getGroup() const {
    return _action->getGroup();
}
std::string ActRegistry::Entry::getCompositeName() const {
    return _action->getCompositeName();
}
int ActRegistry::Entry::enumOptions(Vector<LiString>& options) const {
    return _action->enumOptions(_target, _input, options);
}

void ActRegistry::Entry::performAction(RCShdPtr<SnSelection> const& selection) const {
    performAction(_input, selection);
}

// The action may destroy the owner of this entry, such as a menu: only the copy is used.
void ActRegistry::Entry::performAction(
    RCShdPtr<SnItem const> const& input, RCShdPtr<SnSelection> const& selection) const {
    ActPerforming const performing(_action);
    Entry const kept(_action, _target, input);
    kept._action->performAction(kept._target, kept._input, selection);
}

} // namespace Ko
