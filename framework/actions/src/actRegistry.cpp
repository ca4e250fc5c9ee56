#include "framework/actions/actRegistry.h"

#include "base/inSingleton.imp.h"
#include "framework/actions/src/actNoItems.h"
#include "framework/actions/src/actPerforming.h"
#include "internalAPI/constIterator.imp.h"
#include "scriptingAPI/piPythonInterpreterTerminationGuard.h"

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

namespace Ko {

template class InSingleton<ActRegistry>;
template class ConstIterator<ActRegistry::Entry>;
template class ConstIterator<ActAction const*>;

namespace {

/// What a query finds that sorts: actions, and for each of them some of the targets, by number. The answer is made of
/// them once their order is known.
class Findings {
public:
    void add(std::uint32_t target) { _targets.push_back(target); }
    /// Called when all is added that was found for an action. Its description is fetched here, and only here.
    void endAction(ActAction const& action) {
        if (_targets.size() == _ended) return;
        _actions.push_back({action.getDescription(), &action, _ended, _targets.size()});
        _ended = _targets.size();
    }

    /// Calls `visit(action, target)` with what was found, sorted by description.
    template <class Visit>
    void forEachSorted(Visit visit) const {
        for (Action const* const found : sorted())
            for (std::size_t index = found->begin; index < found->end; ++index)
                visit(found->action, _targets[index]);
    }
    std::size_t getCount() const noexcept { return _targets.size(); }

private:
    struct Action {
        LiString description;
        ActAction const* action;
        std::size_t begin, end; // of the targets that were found for it
    };

    Vector<Action const*> sorted() const {
        Vector<Action const*> result;
        result.reserve(_actions.size());
        for (Action const& found : _actions)
            result.push_back(&found);
        std::sort(result.begin(), result.end(), [](Action const* a, Action const* b) {
            int const order = a->description.compare(b->description);
            return order < 0 || (order == 0 && a < b);
        });
        return result;
    }

    Vector<std::uint32_t> _targets;
    Vector<Action> _actions;
    std::size_t _ended = 0;
};

Vector<ActAction const*> sortedByDescription(Vector<ActAction const*> const& actions) {
    Findings findings;
    for (ActAction const* const action : actions) {
        findings.add(0);
        findings.endAction(*action);
    }
    Vector<ActAction const*> result;
    findings.forEachSorted([&](ActAction const* action, std::uint32_t) { result.push_back(action); });
    return result;
}

template <class Targets>
RCShdPtr<SnItem const> const* firstValid(
    ActAction const& action, Targets const& targets, RCShdPtr<SnItem const> const& input) {
    for (RCShdPtr<SnItem const> const& target : targets)
        if (action.inputValid(target, input)) return &target;
    return nullptr;
}

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
void ActRegistry::destroyAll() noexcept {
    while (!_records.empty()) {
        Vector<Record> records = std::exchange(_records, {});
        keepFirstRegistrations(records);
        for (Record const& record : records)
            OPtr<ActAction>(record.action).reset();
    }
}

// Takes no memory, for there may be none at the end.
void ActRegistry::keepFirstRegistrations(Vector<Record>& records) noexcept {
    std::uint32_t place = 0;
    for (Record& record : records)
        record.place = place++;
    std::sort(records.begin(), records.end(), [](Record const& a, Record const& b) {
        return std::less<>()(a.action, b.action) || (a.action == b.action && a.place < b.place);
    });
    auto const isSame = [](Record const& a, Record const& b) { return a.action == b.action; };
    records.erase(std::unique(records.begin(), records.end(), isSame), records.end());
    std::sort(records.begin(), records.end(), [](Record const& a, Record const& b) { return a.place < b.place; });
}

// ---- registration

void ActRegistry::registerAction(OPtr<ActAction> action, DynamicState state) {
    if (!action) return;
    _records.push_back({action.get(), state, 0});
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

// Calls `visit` with each action that is listed. The records are walked by number, because an action that is asked may
// register others.
template <class Visit>
void ActRegistry::forEachListed(Set<std::string> const& groups, std::string const& compositeName, Visit visit) const {
    for (std::size_t index = 0; index < _records.size(); ++index) {
        ActAction const& action = *_records[index].action;
        if (action.getCompositeName() != compositeName) continue;
        if (groups.empty() || groups.contains(action.getGroup())) visit(action);
    }
}

template <class Targets>
ConstIterator<ActRegistry::Entry> ActRegistry::query(Targets const& targets, RCShdPtr<SnItem const> const& input,
    Set<std::string> const& groups, std::string const& compositeName, Numerator order) const {
    return ConstIterator<Entry>(order == FirstOnly ? queryFirst(targets, input, groups, compositeName)
                                                   : querySorted(targets, input, groups, compositeName));
}

template <class Targets>
Vector<ActRegistry::Entry> ActRegistry::queryFirst(Targets const& targets, RCShdPtr<SnItem const> const& input,
    Set<std::string> const& groups, std::string const& compositeName) const {
    Vector<Entry> entries;
    forEachListed(groups, compositeName, [&](ActAction const& action) {
        if (RCShdPtr<SnItem const> const* const target = firstValid(action, targets, input))
            entries.emplace_back(&action, *target, input);
    });
    return entries;
}

template <class Targets>
Vector<ActRegistry::Entry> ActRegistry::querySorted(Targets const& targets, RCShdPtr<SnItem const> const& input,
    Set<std::string> const& groups, std::string const& compositeName) const {
    Vector<RCShdPtr<SnItem const> const*> numbered;
    for (RCShdPtr<SnItem const> const& target : targets)
        numbered.push_back(&target);

    Findings findings;
    forEachListed(groups, compositeName, [&](ActAction const& action) {
        for (std::uint32_t number = 0; number < numbered.size(); ++number)
            if (action.inputValid(*numbered[number], input)) findings.add(number);
        findings.endAction(action);
    });
    Vector<Entry> entries;
    entries.reserve(findings.getCount());
    findings.forEachSorted(
        [&](ActAction const* action, std::uint32_t number) { entries.emplace_back(action, *numbered[number], input); });
    return entries;
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
    Vector<ActAction const*> actions;
    for (Record const& record : _records)
        if (groups.contains(record.action->getGroup())) actions.push_back(record.action);
    if (order != FirstOnly) actions = sortedByDescription(actions);
    return ConstIterator<ActAction const*>(std::move(actions));
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
