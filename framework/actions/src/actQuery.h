#pragma once

#include "framework/actions/actGroupedEntry.h"
#include "framework/actions/src/actRecords.h"

#include <optional>
#include <span>
#include <utility>

namespace Ko {

/// The matches of a sorted query: actions, and for each of them some of the targets, by number. Entries are made of them
/// once their order is known.
class ActFindings {
public:
    void add(std::uint32_t target) { _targets.push_back(target); }
    /// Ends the matches of an action. Only here its description is fetched.
    void endAction(ActAction const& action);

    /// Calls `visit(action, target)` for each match, sorted by description, without actions that were unregistered meanwhile.
    template <class Visit>
    void forEachSorted(ActRecords::Hold& hold, Visit visit) const {
        for (Action const* const found : sorted())
            for (std::size_t index = found->begin; index < found->end && hold.isRegistered(found->action); ++index)
                visit(found->action, _targets[index]);
    }
    /// Calls `visit(action, targets)` for each action, sorted by description or as they were found.
    template <class Visit>
    void forEachAction(ActRecords::Hold& hold, bool isSorted, Visit visit) const {
        auto const visitOne = [&](Action const& found) {
            std::span<std::uint32_t const> const all(_targets);
            if (hold.isRegistered(found.action)) visit(found.action, all.subspan(found.begin, found.end - found.begin));
        };
        if (isSorted)
            for (Action const* const found : sorted())
                visitOne(*found);
        else
            for (Action const& found : _actions)
                visitOne(found);
    }
    std::size_t getCount() const noexcept { return _targets.size(); }

private:
    struct Action {
        LiString description;
        ActAction const* action;
        std::size_t begin, end; // range of its targets in `_targets`
    };

    Vector<Action const*> sorted() const;

    Vector<std::uint32_t> _targets;
    Vector<Action> _actions;
    std::size_t _ended = 0;
};

/// A question to the registered actions: those that are listed under a composite name are asked, in the order of their
/// registration, whether they are valid for targets and an input. `Targets` is a range of items.
class ActQuery {
public:
    using Item = RCShdPtr<SnItem const>;
    using Entry = ActRegistry::Entry;

    /// @param groups only actions of these; all if it is empty. The arguments have to outlive the query.
    ActQuery(Item const& input, std::string const& compositeName, Set<std::string> const& groups = noGroups)
        : _input(input), _compositeName(compositeName), _groups(groups) {}

    template <class Targets>
    ConstIterator<Entry> getEntries(Targets const& targets, ActRegistry::Numerator order) const {
        return ConstIterator<Entry>(order == ActRegistry::FirstOnly ? getUnsorted(targets) : getSorted(targets));
    }
    /// Each action that is valid for some of the targets, with all of these.
    template <class Targets>
    Vector<ActGroupedEntry> getGrouped(Targets const& targets, ActRegistry::Numerator order) const;
    /// The first action that is valid, with the first target that it is valid for. Stops asking there.
    template <class Targets>
    std::optional<Entry> getFirst(Targets const& targets) const;

private:
    static inline Set<std::string> const noGroups;

    template <class Targets>
    Vector<Entry> getUnsorted(Targets const& targets) const;
    template <class Targets>
    Vector<Entry> getSorted(Targets const& targets) const;

    template <class Targets>
    static Vector<Item const*> number(Targets const& targets);
    ActFindings find(ActRecords::Walk& walk, std::span<Item const* const> numbered) const;
    template <class Targets>
    Item const* firstValid(ActAction const& action, Targets const& targets) const {
        for (Item const& target : targets)
            if (action.inputValid(target, _input)) return &target;
        return nullptr;
    }
    bool isListed(ActAction const& action) const {
        return action.getCompositeName() == _compositeName && (_groups.empty() || _groups.contains(action.getGroup()));
    }

    Item const& _input;
    std::string const& _compositeName;
    Set<std::string> const& _groups;
};

template <class Targets>
std::optional<ActQuery::Entry> ActQuery::getFirst(Targets const& targets) const {
    ActRecords::Walk walk(ActRecords::get());
    while (ActAction const* const action = walk.next()) {
        if (!isListed(*action)) continue;
        Item const* const target = firstValid(*action, targets);
        if (target && walk.isCurrentRegistered()) return Entry(action, *target, _input);
    }
    return std::nullopt;
}

template <class Targets>
Vector<ActQuery::Entry> ActQuery::getUnsorted(Targets const& targets) const {
    Vector<Entry> entries;
    ActRecords::Walk walk(ActRecords::get());
    while (ActAction const* const action = walk.next()) {
        if (!isListed(*action)) continue;
        if (Item const* const target = firstValid(*action, targets)) entries.emplace_back(action, *target, _input);
    }
    if (walk.hasLost())
        std::erase_if(entries, [&](Entry const& entry) { return !walk.isRegistered(entry.getAction()); });
    return entries;
}

template <class Targets>
Vector<ActQuery::Item const*> ActQuery::number(Targets const& targets) {
    Vector<Item const*> numbered;
    for (Item const& target : targets)
        numbered.push_back(&target);
    return numbered;
}

inline ActFindings ActQuery::find(ActRecords::Walk& walk, std::span<Item const* const> numbered) const {
    ActFindings findings;
    while (ActAction const* const action = walk.next()) {
        if (!isListed(*action)) continue;
        for (std::uint32_t number = 0; number < numbered.size(); ++number)
            if (action->inputValid(*numbered[number], _input)) findings.add(number);
        findings.endAction(*action);
    }
    return findings;
}

template <class Targets>
Vector<ActQuery::Entry> ActQuery::getSorted(Targets const& targets) const {
    Vector<Item const*> const numbered = number(targets);
    ActRecords::Walk walk(ActRecords::get());
    ActFindings const findings = find(walk, numbered);
    Vector<Entry> entries;
    entries.reserve(findings.getCount());
    findings.forEachSorted(walk, [&](ActAction const* action, std::uint32_t number) {
        entries.emplace_back(action, *numbered[number], _input);
    });
    return entries;
}

template <class Targets>
Vector<ActGroupedEntry> ActQuery::getGrouped(Targets const& targets, ActRegistry::Numerator order) const {
    Vector<Item const*> const numbered = number(targets);
    ActRecords::Walk walk(ActRecords::get());
    ActFindings const findings = find(walk, numbered);
    Vector<ActGroupedEntry> entries;
    findings.forEachAction(walk, order != ActRegistry::FirstOnly, [&](ActAction const* action, auto const& numbers) {
        Vector<Item> items;
        for (std::uint32_t const number : numbers)
            items.push_back(*numbered[number]);
        entries.emplace_back(action, std::move(items), _input);
    });
    return entries;
}

} // namespace Ko
