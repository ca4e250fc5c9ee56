#pragma once

#include "framework/actions/actPresentation.h"
#include "framework/actions/src/actRecords.h"

#include <map>
#include <string>
#include <utility>

namespace Ko {

/// Arranges entries by section and order. Actions that are unregistered meanwhile are left out.
template <class Section, class Entries, class Present>
Vector<Section> arrangeSections(Entries const& entries, Present present) {
    std::map<std::string, std::multimap<int, typename Section::Item>> sections; // same order: as they come
    ActRecords::Hold hold(ActRecords::get());
    for (auto const& entry : entries) {
        if (!hold.isRegistered(entry.getAction())) continue;
        ActPresentation presentation = present(entry);
        std::string const name = presentation.section;
        int const order = presentation.order;
        sections[name].emplace(order, typename Section::Item{entry, std::move(presentation)});
    }
    Vector<Section> result;
    for (auto& [name, items] : sections) {
        Section& section = result.emplace_back(Section{name, {}});
        for (auto& [order, item] : items)
            section.items.push_back(std::move(item));
    }
    return result;
}

} // namespace Ko
