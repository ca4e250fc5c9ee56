#include "framework/actions/actPresentation.h"

#include "framework/actions/src/actRecords.h"

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
    std::map<std::string, std::multimap<int, Item>> sections; // keeps items of the same order as they come
    ActRecords::Hold hold(ActRecords::get());
    for (ActRegistry::Entry const& entry : entries.elements()) {
        if (!hold.isRegistered(entry.getAction())) continue;
        ActPresentation presentation = ActPresented::of(*entry.getAction(), entry.getTarget(), entry.getInput());
        std::string const name = presentation.section;
        int const order = presentation.order;
        sections[name].emplace(order, Item{entry, std::move(presentation)});
    }
    Vector<ActSection> result;
    for (auto& [name, items] : sections) {
        ActSection& section = result.emplace_back(ActSection{name, {}});
        for (auto& [order, item] : items)
            section.items.push_back(std::move(item));
    }
    return result;
}

} // namespace Ko
