#include "bench/framework/actions/leastQueries.h"

#include <algorithm>
#include <iterator>

namespace KoBench::Least {

using namespace Ko;

namespace {

// Calls `found` with every entry, and continues with the next action when it returns false.
template <class Found>
void query(
    Actions const& actions, Targets const& targets, Item const& input, std::string const& compositeName, Found found) {
    for (ActAction const* const action : actions) {
        if (action->getCompositeName() != compositeName) continue;
        for (Item const& target : targets)
            if (action->inputValid(target, input) && !found(Entry{action, target, input})) break;
    }
}

} // namespace

std::vector<Entry> unsorted(Actions const& actions, Targets const& targets, Item const& input) {
    std::vector<Entry> result;
    query(actions, targets, input, "", [&](Entry entry) { return result.push_back(std::move(entry)), false; });
    return result;
}

std::vector<std::pair<LiString, Entry>> sorted(Actions const& actions, Targets const& targets, Item const& input) {
    std::vector<std::pair<LiString, Entry>> result;
    query(actions, targets, input, "", [&](Entry entry) {
        LiString description = entry.action->getDescription();
        return result.emplace_back(std::move(description), std::move(entry)), false;
    });
    std::sort(result.begin(), result.end(), [](auto const& a, auto const& b) { return a.first < b.first; });
    return result;
}

std::vector<Entry> sortedByAction(Actions const& actions, Targets const& targets, Item const& input) {
    std::vector<std::pair<LiString, std::vector<Entry>>> byAction;
    ActAction const* last = nullptr;
    std::size_t count = 0;
    query(actions, targets, input, "", [&](Entry entry) {
        if (std::exchange(last, entry.action) != entry.action)
            byAction.emplace_back(entry.action->getDescription(), std::vector<Entry>()).second.reserve(targets.size());
        return byAction.back().second.push_back(std::move(entry)), ++count, true;
    });
    std::sort(byAction.begin(), byAction.end(), [](auto const& a, auto const& b) { return a.first < b.first; });
    std::vector<Entry> result;
    result.reserve(count);
    for (auto& [description, entries] : byAction)
        result.insert(result.end(), std::move_iterator(entries.begin()), std::move_iterator(entries.end()));
    return result;
}

ActAction const* find(Actions const& actions, LiString const& description, std::string const& compositeName) {
    for (ActAction const* const action : actions)
        if (action->getCompositeName() == compositeName && action->getDescription() == description) return action;
    return nullptr;
}

} // namespace KoBench::Least
