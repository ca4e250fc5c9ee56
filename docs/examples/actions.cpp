#include "base/inInitMgr.h"
#include "framework/actions/actBasicParam.h"
#include "framework/actions/actDndUtils.h"
#include "framework/actions/actFinder.h"
#include "framework/actions/actGroupedEntry.h"
#include "framework/actions/actLambda.h"
#include "framework/actions/actPresentation.h"
#include "framework/actions/actRegistry.h"
#include "framework/actions/actShortcutMap.h"
#include "framework/actions/actTypedAction.imp.h"
#include "framework/command/cmSelectionChangeCmd.h"
#include "framework/command/cmUndoGuard.h"
#include "framework/dragAndDrop/drGesture.h"
#include "internalAPI/snItemType.imp.h"

#include <iostream>
#include <utility>

using namespace Ko;

RCShdPtr<CmCommandStack> history;

RCShdPtr<SnItem const> itemOf(LiString const& layer) {
    return SnItemBasic<LiString>::create(layer);
}

/// Changes what the user has selected.
void select(RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items) {
    CmUndoGuard step(history, "Select");
    step.execAndAddUndoCommand(CmSelectionReplaceAllItemsCmd::create(selection, items));
}

/// Selects a layer alone; without any input.
void addSelectAction(RCShdPtr<SnSelection> const& selected) {
    ActLambda<LiString>::add({
        .description = "Select Layer",
        .presentation = {.toolTip = "Selects this layer and no other one",
            .shortcuts = ActShortcut::parseList("Return, Ctrl+L")},
        .whyNot = [=](LiString const& layer) { return selected->contains(*itemOf(layer)) ? "It is selected." : ""; },
        .perform =
            [=](LiString const& layer, auto const&, RCShdPtr<SnSelection> const& touched) {
                touched->add(itemOf(layer));
                select(selected, touched);
            },
    });
}

/// Changes the opacity of a layer.
void addOpacityAction() {
    ActLambda<LiString, double>::add({
        .description = "Opacity",
        .isValid = [](LiString const&, double opacity) { return opacity >= 0 && opacity <= 1; },
        .perform = [](LiString const& layer, double opacity) { std::cout << layer << ": " << opacity << '\n'; },
    });
}

/// Layers that belong together; an item type.
struct Group {
    LiString name;
    friend bool operator==(Group const&, Group const&) = default;
    friend std::ostream& operator<<(std::ostream& stream, Group const& group) { return stream << group.name; }
};
template <>
struct std::hash<Group> {
    std::size_t operator()(Group const& group) const noexcept { return std::hash<LiString>()(group.name); }
};
KO_ITEM_TYPE(Group)

/// Takes layers that are dropped on a group.
class GroupAction : public ActTypedAction<Group, RCShdPtr<DrCarrier>> {
public:
    LiString getDescription() const override { return "Move into Group"; }
    bool inputValid(Group const&, RCShdPtr<DrCarrier> const& carrier) const override {
        return !carrier->getSelection()->isEmpty();
    }
    void performAction(
        Group const& group, RCShdPtr<DrCarrier> const& carrier, RCShdPtr<SnSelection> const&) const override {
        for (auto const& layer : carrier->getSelection()->getItems())
            std::cout << SnItemConvert<LiString>::get(layer) << " goes into " << group << '\n';
    }
};

/// A list of layers and groups, as the sink of drags: a group takes copies or moves, never links.
class LayerList : public DrSrcSink {
public:
    DrEffect accept(RCShdPtr<DrCarrier> const& carrier, DrEffect effect, DrPlace const& place) override {
        bool const isPossible = ActDndUtils::performCarrierActions({place.target}, carrier, nullptr, false);
        return !isPossible ? DrEffect::None : effect == DrEffect::Link ? DrEffect::Copy : effect;
    }
    void consumeSelection(RCShdPtr<DrCarrier> const& carrier) override {
        ActDndUtils::performCarrierActions({carrier->getPlace().target}, carrier, SnSelection::create(), true);
    }
};

/// Drags the selected layers to a place. The system's clipboard and other programs may ask for their names.
DrEffect drag(RCShdPtr<SnSelection> const& selected, RCShdPtr<SnItem const> const& target, DrEffect wanted) {
    auto const carrier = DrCarrier::create(selected);
    DrFormats formats;
    formats.add("text/plain", [layers = selected->copy()] {
        std::string names;
        for (auto const& layer : layers->getItems())
            names += SnItemConvert<LiString>::get(layer) + '\n';
        return names;
    });
    carrier->setFormats(formats);
    return DrGesture::drop(nullptr, RCShdPtr<LayerList>::create(), carrier, wanted, {target});
}

/// Highlights what is selected, without looking at the rest.
CbSubscription highlight(SnSelection& selection) {
    return selection.onChange([](SnSelectionChange const& change) {
        for (auto const& layer : change.removed)
            std::cout << "- " << SnItemConvert<LiString>::get(layer) << '\n';
        for (auto const& layer : change.added)
            std::cout << "+ " << SnItemConvert<LiString>::get(layer) << '\n';
    });
}

void showMenu(RCShdPtr<SnItem const> const& layer) {
    auto const nothing = SnItemBasic<ActBasicParam>::create(ActBasicParam());
    auto const entries = ActRegistry::getInstance().getActions(layer, nothing, "", ActRegistry::AllSorted);
    std::cout << "menu:";
    for (ActRegistry::Entry const& entry : entries.elements())
        std::cout << " [" << entry.getDescription() << ']';
    std::cout << '\n';
    if (!entries.atEnd()) entries->performAction(SnSelection::create());
}

/// Shows or hides a layer; a menu shows it with a check mark.
void addVisibleAction(Set<LiString>& hidden) {
    ActLambda<LiString, bool>::add({
        .description = "Visible",
        .isChecked = [&](LiString const& layer) { return !hidden.contains(layer); },
        .perform = [&](LiString const& layer, bool isOn) { isOn ? hidden.erase(layer) : hidden.insert(layer).second; },
    });
}

/// Performs each action that has a check mark, for all layers at once.
void switchAll(RCShdPtr<SnSelection const> const& layers) {
    auto const nothing = SnItemBasic<ActBasicParam>::create(ActBasicParam());
    ActRegistry const& registry = ActRegistry::getInstance();
    for (auto const& entry : registry.getGroupedActions(layers, nothing, "", ActRegistry::AllSorted)) {
        ActPresentation const shown = entry.getPresentation();
        if (!shown.isCheckable) continue;
        std::cout << entry.getText() << (shown.isMixed ? ": some" : shown.isChecked ? ": all" : ": none") << '\n';
        entry.performAction(history, SnSelection::create());
    }
}

/// Lists the actions that match some letters, as a palette does.
void showPalette(LiString const& letters, RCShdPtr<SnItem const> const& layer) {
    auto const nothing = SnItemBasic<ActBasicParam>::create(ActBasicParam());
    ActFinder finder;
    finder.collect();
    for (ActFinder::Match const& match : finder.find(letters, layer, nothing, 10))
        std::cout << "palette: " << match.text << (match.isValid ? "" : ": " + match.whyNot) << '\n';
}

/// Reads the default shortcuts, then the user's.
ActShortcutMap readShortcuts(OsFilePath const& file) {
    auto const nothing = SnItemBasic<ActBasicParam>::create(ActBasicParam());
    ActShortcutMap shortcuts;
    for (ActAction const* const action : ActRegistry::getInstance().getAllActions(ActRegistry::FirstOnly).elements()) {
        ActPresentation const shown = ActPresented::of(*action, nothing, nothing);
        shortcuts.setDefaults(ActShortcutMap::getName(*action), shown.shortcuts, shown.shortcutContext);
    }
    for (LiString const& problem : shortcuts.load(file))
        std::cerr << problem << '\n';
    return shortcuts;
}

int main(int argc, char** argv) {
    InInitScope const framework(argc, argv);
    history = RCShdPtr<CmCommandStack>::create();
    auto const selected = SnSelection::create();
    CbSubscription const highlights = highlight(*selected);
    addSelectAction(selected);
    addOpacityAction();
    ActRegistry& registry = ActRegistry::getInstance();
    registry.registerAction(std::make_unique<GroupAction>(), ActRegistry::Static);

    auto const sky = itemOf("Sky");
    showMenu(sky);
    showMenu(sky);
    history->undo();
    showMenu(sky);

    auto const half = SnItemBasic<double>::create(0.5);
    registry.getActions(sky, half, "", ActRegistry::FirstOnly)->performAction(SnSelection::create());
    showPalette("sl", sky);
    for (LiString const& name : readShortcuts("shortcuts").find(ActShortcut::parse("ctrl+l")))
        std::cout << "Ctrl+L: " << name << '\n';

    auto const group = SnItemBasic<Group>::create({"Group 1"});
    if (drag(selected, group, DrEffect::Link) == DrEffect::Copy) std::cout << "They were copied.\n";

    Set<LiString> hidden{"Tree"};
    addVisibleAction(hidden);
    selected->add(itemOf("Tree"));
    switchAll(RCShdPtr<SnSelection const>(selected));
    switchAll(RCShdPtr<SnSelection const>(selected));
    history.reset();
}
