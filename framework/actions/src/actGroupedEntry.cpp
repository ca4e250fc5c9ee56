#include "framework/actions/actGroupedEntry.h"

#include "framework/actions/actCompositeAction.h"
#include "framework/actions/src/actPerforming.h"
#include "framework/actions/src/actSections.h"
#include "framework/command/cmUndoGuard.h"

#include <algorithm>
#include <utility>

namespace Ko {

namespace {

using Item = ActGroupedEntry::Item;

bool isOff(ActAction const& action, Item const& target, Item const& input) {
    ActPresentation const shown = ActPresented::of(action, target, input);
    return shown.isCheckable && !shown.isChecked;
}

// Both have the same text and input.
ActOption const* findEqual(Vector<ActOption> const& options, ActOption const& wanted) {
    auto const found = std::ranges::find_if(options,
        [&](ActOption const& option) { return option.text == wanted.text && option.input->isEqual(*wanted.input); });
    return found == options.end() ? nullptr : &*found;
}

} // namespace

/// Performs an entry. The action may destroy the owner of the entry, such as a menu: only the copy is used.
class ActGroupedEntry::Step {
public:
    explicit Step(ActGroupedEntry const& entry) : _performing(entry._action), _entry(entry) {}

    template <class IsWanted>
    std::size_t perform(RCShdPtr<CmCommandStack> const& history, Item const& input,
        RCShdPtr<SnSelection> const& selection, IsWanted isWanted) const {
        CmUndoGuard guard(history, _entry.getText());
        LgFirstError error("Taking back an action");
        std::size_t performed = 0;
        bool isDone = false;
        error.capture([&] {
            for (Item const& target : _entry._targets)
                if (isWanted(target)) {
                    _entry._action->performAction(target, input, selection);
                    ++performed;
                }
            isDone = true;
        });
        if (!isDone) error.capture([&] { guard.rollBack(); });
        error.rethrow();
        return performed;
    }

private:
    ActPerforming const _performing;
    ActGroupedEntry const _entry;
};

ActGroupedEntry::ActGroupedEntry(ActAction const* action, Vector<Item> targets, Item input)
    : _action(action), _targets(std::move(targets)), _input(std::move(input)) {}

LiString ActGroupedEntry::getDescription() const {
    return _action->getDescription();
}
LiString ActGroupedEntry::getText() const {
    LiString text = _action->getDisplayString();
    return text.empty() ? getDescription() : text;
}

ActPresentation ActGroupedEntry::getPresentation() const {
    ActPerforming const asked(_action);
    ActPresentation shown = ActPresented::of(*_action, _targets.front(), _input);
    if (!shown.isCheckable) return shown;
    auto const numOff =
        std::ranges::count_if(_targets, [this](Item const& target) { return isOff(*_action, target, _input); });
    shown.isChecked = numOff == 0;
    shown.isMixed = numOff > 0 && static_cast<std::size_t>(numOff) < _targets.size();
    return shown;
}

Vector<ActOption> ActGroupedEntry::getOptions() const {
    ActPerforming const asked(_action);
    Vector<ActOption> common = ActOptioned::of(*_action, _targets.front(), _input);
    for (std::size_t index = 1; index < _targets.size() && !common.empty(); ++index) {
        Vector<ActOption> const others = ActOptioned::of(*_action, _targets[index], _input);
        std::erase_if(common, [&](ActOption& option) {
            ActOption const* const other = findEqual(others, option);
            option.isCurrent = option.isCurrent && other && other->isCurrent;
            return !other;
        });
    }
    return common;
}

Vector<ActGroupedEntry> ActGroupedEntry::getMembers(ActRegistry::Numerator order) const {
    if (!dynamic_cast<ActCompositeAction const*>(_action)) return {};
    LiString const name = getDescription();
    if (name.empty()) return {}; // the composite name of the top level
    return ActRegistry::getInstance().getGroupedActions({_targets.begin(), _targets.end()}, _input, name, order);
}

std::size_t ActGroupedEntry::performAction(
    RCShdPtr<CmCommandStack> const& history, RCShdPtr<SnSelection> const& selection) const {
    Step const step(*this);
    Item const input = _input;
    ActAction const& action = *_action;
    bool const isSwitchedOn =
        std::ranges::any_of(_targets, [&](Item const& target) { return isOff(action, target, input); });
    bool isFirst = true;
    return step.perform(history, input, selection, [&](Item const& target) {
        bool const isValid = std::exchange(isFirst, false) || action.inputValid(target, input);
        return isValid && (!isSwitchedOn || isOff(action, target, input));
    });
}

std::size_t ActGroupedEntry::performAction(
    RCShdPtr<CmCommandStack> const& history, Item const& input, RCShdPtr<SnSelection> const& selection) const {
    Step const step(*this);
    ActAction const& action = *_action;
    // The action may release the original.
    Item const given = input; // NOLINT(performance-unnecessary-copy-initialization)
    return step.perform(
        history, given, selection, [&](Item const& target) { return action.inputValid(target, given); });
}

Vector<ActGroupedSection> ActGroupedSection::arrange(Vector<ActGroupedEntry> const& entries) {
    return arrangeSections<ActGroupedSection>(
        entries, [](ActGroupedEntry const& entry) { return entry.getPresentation(); });
}

} // namespace Ko
