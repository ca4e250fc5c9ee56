#include "framework/actions/actPresentation.h"

#include "framework/actions/src/actRecords.h"

#include <algorithm>
#include <map>
#include <utility>

namespace Ko {

ActPresented::ActPresented() = default;
ActPresented::~ActPresented() = default;

ActPresentation ActPresented::of(
    ActAction const& action, RCShdPtr<SnItem const> const& target, RCShdPtr<SnItem const> const& input) {
    auto const* const presented = dynamic_cast<ActPresented const*>(&action);
    if (!presented) return {};
    ActPerforming const asked(&action);
    return presented->getPresentation(target, input);
}

Vector<ActSection> ActSection::arrange(ConstIterator<ActRegistry::Entry> const& entries) {
    std::map<std::string, Vector<Item>> sections;
    ActRecords::Hold hold(ActRecords::get());
    for (ActRegistry::Entry const& entry : entries.elements()) {
        if (!hold.isRegistered(entry.getAction())) continue;
        ActPresentation presentation = ActPresented::of(*entry.getAction(), entry.getTarget(), entry.getInput());
        std::string const name = presentation.section;
        sections[name].push_back({entry, std::move(presentation)});
    }
    Vector<ActSection> result;
    for (auto& [name, items] : sections) {
        std::stable_sort(items.begin(), items.end(),
            [](Item const& one, Item const& other) { return one.presentation.order < other.presentation.order; });
        result.push_back({name, std::move(items)});
    }
    return result;
}

} // namespace Ko
