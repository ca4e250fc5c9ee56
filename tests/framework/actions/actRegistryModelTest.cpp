#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actGroupedEntry.h"
#include "tests/support/randomSteps.h"
#include "tests/support/recordingAction.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <map>
#include <set>

namespace {

using namespace Ko;
using namespace KoTest;

/// The properties of an action.
struct Traits {
    int number;
    std::string description, group, compositeName;
    unsigned validTargets; // a bit for each; an empty item is always valid
    bool isComposite;

    bool isValidFor(std::string const& target) const {
        return target == "?" || (validTargets >> std::stoi(target) & 1) != 0;
    }
};

using Alive = std::set<int>;

template <class Base>
class TraitsAction : public Base {
public:
    TraitsAction(Traits const& traits, Alive& alive)
        : Base(traits.description, traits.compositeName, traits.group), _traits(traits), _alive(alive) {
        _alive.insert(_traits.number);
    }
    ~TraitsAction() override { _alive.erase(_traits.number); }

protected:
    Traits const _traits;

private:
    Alive& _alive;
};

class PlainAction final : public TraitsAction<ValidAction> {
public:
    using TraitsAction::TraitsAction;
    bool inputValid(RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const&) const override {
        return _traits.isValidFor(valueOf(target));
    }
};

/// The registry beside a list of the registered actions. Composites stand for others, and for one another.
class RegistryMachine {
public:
    static constexpr std::array operations{"Register", "Register", "Register", "RegisterAgain", "Unregister",
        "UnregisterGroup", "UnregisterGroups", "DeleteDynamic", "GetAction", "Query", "Query", "QueryList",
        "QuerySelection", "QueryNoItems", "QueryGrouped", "ListGroups"};

    ~RegistryMachine() { finish(); }

    std::string perform(std::size_t operation, unsigned number) {
        Choices choices(number);
        std::string const name = operations[operation];
        if (name == "Register") registerNew(choices);
        if (name == "RegisterAgain") registerAgain(choices);
        if (name == "Unregister") return unregisterOne(choices);
        if (name == "UnregisterGroup") return unregisterGroups({groupOf(choices)}, true);
        if (name == "UnregisterGroups") return unregisterGroups({groupOf(choices), groupOf(choices)}, false);
        if (name == "DeleteDynamic") return deleteDynamic(choices);
        if (name == "GetAction") return getAction(choices);
        if (name == "ListGroups") return listGroups(choices);
        if (name.starts_with("Query")) return query(name, choices);
        return compareAlive();
    }

    std::string finish() {
        while (!records.empty())
            unregister(records.front().action);
        return alive.empty() ? compareAlive() : "actions are left";
    }

private:
    struct Record {
        ActAction* action;
        Traits traits;
        bool isDynamic;
    };
    using Listed = std::vector<std::string>;
    using Groups = Set<std::string>;

    // ---- choices: few names, so that many are equal

    static std::string descriptionOf(Choices& choices) {
        static constexpr std::array names{"copy", "paste", "tools", "more", "Copy", ""};
        return names[choices.take(names.size())];
    }
    static std::string groupOf(Choices& choices) { return std::array{"", "x", "y"}[choices.take(3)]; }
    static std::string compositeNameOf(Choices& choices) {
        return std::array{"", "", "tools", "more"}[choices.take(4)];
    }
    static ActRegistry::Numerator orderOf(Choices& choices) {
        return static_cast<ActRegistry::Numerator>(choices.take(3));
    }

    void registerNew(Choices& choices) {
        if (records.size() > 30) return;
        Traits traits{
            ++lastNumber, descriptionOf(choices), groupOf(choices), compositeNameOf(choices), choices.take(16), false};
        // A composite without a description would stand for the top level.
        traits.isComposite = traits.description.size() > 0 && choices.take(3) == 0;
        if (traits.isComposite)
            add(std::make_unique<TraitsAction<NamedAction<ActCompositeAction>>>(traits, alive), traits, choices);
        else
            add(std::make_unique<PlainAction>(traits, alive), traits, choices);
    }
    void registerAgain(Choices& choices) {
        if (records.empty()) return;
        Record const& record = chosen(choices);
        Traits const traits = record.traits;
        add(OPtr<ActAction>(record.action), traits, choices);
    }
    void add(OPtr<ActAction> action, Traits const& traits, Choices& choices) {
        auto const state = static_cast<ActRegistry::DynamicState>(choices.take(3));
        records.push_back({action.get(), traits, state == ActRegistry::Dynamic});
        registry.registerAction(std::move(action), state);
    }
    Record const& chosen(Choices& choices) const {
        return records[choices.take(static_cast<unsigned>(records.size()))];
    }

    std::string unregisterOne(Choices& choices) {
        registry.registerAction(nullptr, ActRegistry::Static);
        int unknown = 0;
        if (registry.unregisterAction(reinterpret_cast<ActAction const*>(&unknown))) return "an unknown action";
        return records.empty() ? "" : unregister(chosen(choices).action);
    }
    // The last registration destroys it.
    std::string unregister(ActAction* action) {
        auto const isIt = [action](Record const& record) { return record.action == action; };
        records.erase(std::find_if(records.begin(), records.end(), isIt));
        OPtr<ActAction> unregistered = registry.unregisterAction(action);
        if (unregistered.get() != action) return "another action was unregistered";
        if (std::any_of(records.begin(), records.end(), isIt)) static_cast<void>(unregistered.release());
        unregistered.reset();
        return compareAlive();
    }
    std::string unregisterGroups(Groups const& groups, bool asOne) {
        std::erase_if(records, [&](Record const& record) { return groups.contains(record.traits.group); });
        asOne ? registry.unregisterActionsInGroup(*groups.begin()) : registry.unregisterActionsInGroup(groups);
        return compareAlive();
    }
    std::string deleteDynamic(Choices& choices) {
        if (choices.take(3) != 0) return "";
        std::map<ActAction*, int> left;
        for (Record const& record : records)
            left[record.action] += record.isDynamic ? 0 : 1;
        std::erase_if(records, [](Record const& record) { return record.isDynamic; });
        registry.deleteAllDynamicActions();
        for (auto const& [action, registrations] : left)
            if (registrations == 0) OPtr<ActAction>(action).reset(); // as the maker of a dynamic action does
        return compareAlive();
    }
    std::string compareAlive() const {
        Alive expected;
        for (Record const& record : records)
            expected.insert(record.traits.number);
        if (alive != expected) return "other actions are alive than those that are registered";
        Groups const all{"", "x", "y"};
        return compareListed(registry.getActionsInGroup(all, ActRegistry::FirstOnly), all, ActRegistry::FirstOnly);
    }

    std::string getAction(Choices& choices) const {
        std::string const description = descriptionOf(choices);
        std::string const compositeName = compositeNameOf(choices);
        auto const found = std::find_if(records.begin(), records.end(), [&](Record const& record) {
            return record.traits.description == description && record.traits.compositeName == compositeName;
        });
        ActAction const* const expected = description.empty() || found == records.end() ? nullptr : found->action;
        return registry.getAction(description, compositeName) == expected ? "" : "another action is found";
    }

    std::string listGroups(Choices& choices) const {
        std::string const group = groupOf(choices);
        Groups const groups{group, groupOf(choices)};
        auto const order = orderOf(choices);
        auto const found =
            groups.size() == 1 ? registry.getActionsInGroup(group, order) : registry.getActionsInGroup(groups, order);
        return compareListed(found, groups, order);
    }
    std::string compareListed(
        ConstIterator<ActAction const*> found, Groups const& groups, ActRegistry::Numerator order) const {
        Listed actual, expected;
        for (ActAction const* const action : found.elements())
            actual.push_back(nameOf(action));
        for (Record const& record : records)
            if (groups.contains(record.traits.group)) expected.push_back(nameOf(record.action));
        return compare("group", order, actual, expected);
    }

    std::string query(std::string const& name, Choices& choices) const {
        auto const order = orderOf(choices);
        std::string const compositeName = compositeNameOf(choices);
        Groups groups;
        List<RCShdPtr<SnItem const>> targets;
        std::string const first = std::to_string(choices.take(4));
        ConstIterator<ActRegistry::Entry> found;
        if (name == "Query") {
            while (choices.take(2) == 1)
                groups.insert(groupOf(choices));
            targets.push_back(text(first.c_str()));
            found = registry.getActions(targets.front(), input, groups, compositeName, order);
        } else if (name == "QueryNoItems") {
            groups.insert(groupOf(choices));
            targets.push_back(nullptr);
            found = registry.getNoTargetNoInputActions(*groups.begin(), compositeName, order);
        } else {
            auto const selection = selectionOf({first.c_str()});
            for (unsigned target = 0; target < 4; ++target)
                if (choices.take(2) == 1) selection->add(text(std::to_string(target).c_str()));
            for (auto const& target : selection->getItems())
                targets.push_back(target);
            if (name == "QueryGrouped") return queryGrouped(targets, selection, compositeName, order);
            found = name == "QueryList"
                        ? registry.getActions(targets, input, compositeName, order)
                        : registry.getActions(RCShdPtr<SnSelection const>(selection), input, compositeName, order);
        }
        Listed actual;
        for (ActRegistry::Entry const& entry : found.elements())
            actual.push_back(nameOf(entry.getAction()) + ":" + valueOf(entry.getTarget()));
        return compare(name, order, actual, expectedOf(targets, groups, compositeName, order));
    }

    // The same as one entry for each pair, in the order of the actions.
    std::string queryGrouped(List<RCShdPtr<SnItem const>> const& targets, RCShdPtr<SnSelection const> const& selection,
        std::string const& compositeName, ActRegistry::Numerator order) const {
        Listed ofList, ofSelection;
        for (ActGroupedEntry const& entry : registry.getGroupedActions(targets, input, compositeName, order))
            for (auto const& target : entry.getTargets())
                ofList.push_back(nameOf(entry.getAction()) + ":" + valueOf(target));
        for (ActGroupedEntry const& entry : registry.getGroupedActions(selection, input, compositeName, order))
            for (auto const& target : entry.getTargets())
                ofSelection.push_back(nameOf(entry.getAction()) + ":" + valueOf(target));
        if (ofList != ofSelection) return "lists and selections differ";
        return compare("grouped", order, ofList, expectedOf(targets, {}, compositeName, ActRegistry::AllSorted));
    }

    Listed expectedOf(List<RCShdPtr<SnItem const>> const& targets, Groups const& groups,
        std::string const& compositeName, ActRegistry::Numerator order) const {
        Listed expected;
        for (Record const& record : records) {
            if (record.traits.compositeName != compositeName) continue;
            if (!groups.empty() && !groups.contains(record.traits.group)) continue;
            for (auto const& target : targets) {
                std::string const value = target ? valueOf(target) : "?";
                if (!isValid(record, value, {})) continue;
                expected.push_back(nameOf(record.action) + ":" + value);
                if (order == ActRegistry::FirstOnly) break;
            }
        }
        return expected;
    }

    // A composite is valid if one of its members is, not counting itself.
    bool isValid(Record const& record, std::string const& target, std::set<ActAction*> within) const {
        if (!record.traits.isComposite) return record.traits.isValidFor(target);
        if (!within.insert(record.action).second) return false;
        return std::any_of(records.begin(), records.end(), [&](Record const& member) {
            return member.traits.compositeName == record.traits.description && isValid(member, target, within);
        });
    }

    // Sorted by description; actions of equal descriptions may be in any order.
    std::string compare(std::string const& what, ActRegistry::Numerator order, Listed actual, Listed expected) const {
        if (order != ActRegistry::FirstOnly) {
            auto const described = [](std::string const& name) { return name.substr(0, name.find('#')); };
            auto const isBefore = [&](auto const& a, auto const& b) { return described(a) < described(b); };
            if (!std::is_sorted(actual.begin(), actual.end(), isBefore)) return what + " is not sorted";
            std::sort(actual.begin(), actual.end());
            std::sort(expected.begin(), expected.end());
        }
        return actual == expected
                   ? ""
                   : what + ": " + testing::PrintToString(actual) + " instead of " + testing::PrintToString(expected);
    }

    std::string nameOf(ActAction const* action) const {
        auto const record = std::find_if(
            records.begin(), records.end(), [action](Record const& candidate) { return candidate.action == action; });
        if (record == records.end()) return "one that is not registered";
        return record->traits.description + "#" + std::to_string(record->traits.number);
    }

    ActRegistry& registry = ActRegistry::getInstance();
    RCShdPtr<SnItem const> const input = text("input");
    Alive alive;
    std::vector<Record> records;
    int lastNumber = 0;
};

TEST(ActRegistryModel, AgreesWithAList) {
    tryRandomSteps<RegistryMachine>(40, 300);
}

} // namespace
