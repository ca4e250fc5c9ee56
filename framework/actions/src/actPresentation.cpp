#include "framework/actions/actPresentation.h"

#include "framework/actions/src/actSections.h"

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
    return arrangeSections<ActSection>(entries.elements(), [](ActRegistry::Entry const& entry) {
        return ActPresented::of(*entry.getAction(), entry.getTarget(), entry.getInput());
    });
}

} // namespace Ko
