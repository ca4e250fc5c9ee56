#include "framework/actions/actRegistry.h"

#include "base/inSingleton.imp.h"
#include "framework/actions/src/actNoItems.h"
#include "framework/actions/src/actPerforming.h"
#include "internalAPI/constIterator.imp.h"
#include "scriptingAPI/piPythonInterpreterTerminationGuard.h"

#include <algorithm>
#include <array>
#include <unordered_set>
#include <utility>

namespace Ko {

template class InSingleton<ActRegistry>;
template class ConstIterator<ActRegistry::Entry>;
template class ConstIterator<ActAction const*>;

namespace {

/// What a query finds, action by action.
template <class Found>
class Findings {
public:
    explicit Findings(ActRegistry::Numerator order) noexcept : _isSorted(order != ActRegistry::FirstOnly) {}

    bool isSorted() const noexcept { return _isSorted; }
    void add(Found found) { _found.push_back(std::move(found)); }
    /// Called when all is added that was found for an action. Its description is fetched here, and only here.
    void endAction(ActAction const& action) {
        if (_isSorted && _found.size() > _ended) _actions.push_back({action.getDescription(), _ended, _found.size()});
        _ended = _found.size();
    }
    ConstIterator<Found> finish() { return ConstIterator<Found>(_isSorted ? sorted() : std::move(_found)); }

private:
    struct Action {
        LiString description;
        std::size_t begin, end; // of what was found for it
    };

    Vector<Found> sorted() {
        std::sort(_actions.begin(), _actions.end(), [](Action const& a, Action const& b) {
            int const order = a.description.compare(b.description);
            return order < 0 || (order == 0 && a.begin < b.begin);
        });
        Vector<Found> result;
        result.reserve(_found.size());
        for (Action const& action : _actions)
            for (std::size_t index = action.begin; index < action.end; ++index)
                result.push_back(std::move(_found[index]));
        return result;
    }

    bool _isSorted;
    Vector<Found> _found;
    Vector<Action> _actions;
    std::size_t _ended = 0;
};

using OneTarget = std::array<RCShdPtr<SnItem const>, 1>;

} // namespace

// ---- lifetime

ActRegistry::ActRegistry() = default;
ActRegistry::~ActRegistry() {
    destroyAll();
}

void ActRegistry::initialize() {
    performInitialize();
}
void ActRegistry::finalize() {
    performFinalize();
}

// The destructor of an action may still use the registry.
void ActRegistry::destroyAll() {
    while (!_records.empty()) {
        std::unordered_set<ActAction const*> destroyed;
        for (Record const& record : std::exchange(_records, {}))
            if (destroyed.insert(record.action).second) OPtr<ActAction>(record.action).reset();
    }
}

// ---- registration

void ActRegistry::registerAction(OPtr<ActAction> action, DynamicState state) {
    if (!action) return;
    _records.push_back({action.get(), state});
    static_cast<void>(action.release());
}

OPtrRet<ActAction> ActRegistry::unregisterAction(ActAction const* action) {
    auto const found =
        std::find_if(_records.begin(), _records.end(), [&](Record const& record) { return record.action == action; });
    if (found == _records.end()) return nullptr;
    OPtrRet<ActAction> unregistered(found->action);
    _records.erase(found);
    return unregistered;
}

void ActRegistry::unregisterActionsInGroup(std::string const& group) {
    unregisterActionsInGroup(Set<std::string>{group});
}

void ActRegistry::unregisterActionsInGroup(Set<std::string> const& groups) {
    Vector<ActAction const*> found;
    for (Record const& record : _records)
        if (groups.contains(record.action->getGroup())) found.push_back(record.action);
    for (ActAction const* const action : found) {
        OPtr<ActAction> unregistered = unregisterAction(action);
        if (isRegistered(unregistered.get())) static_cast<void>(unregistered.release());
    }
}

void ActRegistry::deleteAllDynamicActions() {
    std::erase_if(_records, [](Record const& record) { return record.state == Dynamic; });
}

bool ActRegistry::isRegistered(ActAction const* action) const noexcept {
    return action &&
           std::any_of(_records.begin(), _records.end(), [&](Record const& record) { return record.action == action; });
}

// ---- lookup

ActAction* ActRegistry::getAction(LiString const& description, std::string const& compositeName) const {
    if (description.empty()) return nullptr;
    for (Record const& record : _records)
        if (record.action->getCompositeName() == compositeName && record.action->getDescription() == description)
            return record.action;
    return nullptr;
}

// The records are walked by number, because an action that is asked may register others.
template <class Targets>
ConstIterator<ActRegistry::Entry> ActRegistry::query(Targets const& targets, RCShdPtr<SnItem const> const& input,
    Set<std::string> const& groups, std::string const& compositeName, Numerator order) const {
    Findings<Entry> findings(order);
    for (std::size_t index = 0; index < _records.size(); ++index) {
        ActAction const& action = *_records[index].action;
        if (action.getCompositeName() != compositeName) continue;
        if (!groups.empty() && !groups.contains(action.getGroup())) continue;
        for (RCShdPtr<SnItem const> const& target : targets) {
            if (!action.inputValid(target, input)) continue;
            findings.add(Entry(&action, target, input));
            if (!findings.isSorted()) break;
        }
        findings.endAction(action);
    }
    return findings.finish();
}

ConstIterator<ActRegistry::Entry> ActRegistry::getActions(RCShdPtr<SnItem const> const& target,
    RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const {
    return query(OneTarget{target}, input, {}, compositeName, order);
}
ConstIterator<ActRegistry::Entry> ActRegistry::getActions(RCShdPtr<SnItem const> const& target,
    RCShdPtr<SnItem const> const& input, Set<std::string> const& groups, std::string const& compositeName,
    Numerator order) const {
    return query(OneTarget{target}, input, groups, compositeName, order);
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
    Findings<ActAction const*> findings(order);
    for (Record const& record : _records) {
        if (!groups.contains(record.action->getGroup())) continue;
        findings.add(record.action);
        findings.endAction(*record.action);
    }
    return findings.finish();
}

ConstIterator<ActRegistry::Entry> ActRegistry::getActions(RCShdPtr<SnSelection const> const& selection,
    RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const {
    PiPythonInterpreterTerminationGuard const guard;
    return query(selection->getItems(), input, {}, compositeName, order);
}
ConstIterator<ActRegistry::Entry> ActRegistry::getActions(List<RCShdPtr<SnItem const>> const& targets,
    RCShdPtr<SnItem const> const& input, std::string const& compositeName, Numerator order) const {
    PiPythonInterpreterTerminationGuard const guard;
    return query(targets, input, {}, compositeName, order);
}
ConstIterator<ActRegistry::Entry> ActRegistry::getActions(List<RCShdPtr<SnItem const>> const& targets,
    RCShdPtr<DrCarrier> const& carrier, std::string const& compositeName, Numerator order) const {
    return getActions(targets, RCShdPtr<SnItem const>(DrCarrierItem::create(carrier)), compositeName, order);
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

// Whatever holds this entry, such as a menu, may let go of it meanwhile.
void ActRegistry::Entry::performAction(
    RCShdPtr<SnItem const> const& input, RCShdPtr<SnSelection> const& selection) const {
    ActPerforming const performing(*_action);
    Entry const kept(_action, _target, input);
    kept._action->performAction(kept._target, kept._input, selection);
}

} // namespace Ko
