#include "base/inInitMgr.h"
#include "framework/actions/actBasicParam.h"
#include "framework/actions/actDndUtils.h"
#include "framework/actions/actFinder.h"
#include "framework/actions/actPresentation.h"
#include "framework/actions/actRegistry.h"
#include "framework/actions/actShortcutMap.h"
#include "framework/actions/actTypedAction.h"
#include "framework/actions/actTypedAction.imp.h"
#include "framework/command/cmSelectionChangeCmd.h"
#include "framework/command/cmUndoGuard.h"

#include <iostream>
#include <utility>

using namespace Ko;

RCShdPtr<CmCommandStack> history;

/// Changes what the user has selected.
void select(RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items) {
    CmUndoGuard step(history, "Select");
    step.execAndAddUndoCommand(CmSelectionReplaceAllItemsCmd::create(selection, items));
}

/// Selects a layer alone; without any input.
class SelectAction : public ActTypedAction<LiString, ActBasicParam>, public ActPresented {
public:
    explicit SelectAction(RCShdPtr<SnSelection> selected) : _selected(std::move(selected)) {}
    LiString getDescription() const override { return "Select Layer"; }
    bool inputValid(LiString const& layer, ActBasicParam const&) const override {
        return !_selected->contains(*SnItemBasic<LiString>::create(layer));
    }
    void performAction(
        LiString const& layer, ActBasicParam const&, RCShdPtr<SnSelection> const& touched) const override {
        touched->add(SnItemBasic<LiString>::create(layer));
        select(_selected, touched);
    }
    ActPresentation getPresentation(RCShdPtr<SnItem const> const&, RCShdPtr<SnItem const> const&) const override {
        ActPresentation presentation;
        presentation.toolTip = "Selects this layer and no other one";
        presentation.shortcuts = ActShortcut::parseList("Return, Ctrl+L");
        presentation.whyNot = "The layer is selected already.";
        return presentation;
    }

private:
    RCShdPtr<SnSelection> _selected;
};

/// Takes layers that are dropped on a group.
class GroupAction : public ActTypedAction<LiString, RCShdPtr<DrCarrier>> {
public:
    LiString getDescription() const override { return "Move into Group"; }
    bool inputValid(LiString const& group, RCShdPtr<DrCarrier> const&) const override {
        return group.starts_with("Group");
    }
    void performAction(
        LiString const& group, RCShdPtr<DrCarrier> const& carrier, RCShdPtr<SnSelection> const&) const override {
        for (auto const& layer : carrier->getSelection()->getItems())
            std::cout << SnItemConvert<LiString>::get(layer) << " moves into " << group << '\n';
    }
};

template class Ko::ActTypedAction<LiString, ActBasicParam>;
template class Ko::ActTypedAction<LiString, RCShdPtr<DrCarrier>>;

void showMenu(RCShdPtr<SnItem const> const& layer) {
    auto const nothing = SnItemBasic<ActBasicParam>::create(ActBasicParam());
    auto const entries = ActRegistry::getInstance().getActions(layer, nothing, "", ActRegistry::AllSorted);
    std::cout << "menu:";
    for (ActRegistry::Entry const& entry : entries.elements())
        std::cout << " [" << entry.getDescription() << ']';
    std::cout << '\n';
    if (!entries.atEnd()) entries->performAction(SnSelection::create());
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
    ActRegistry& registry = ActRegistry::getInstance();
    registry.registerAction(std::make_unique<SelectAction>(selected), ActRegistry::Static);
    registry.registerAction(std::make_unique<GroupAction>(), ActRegistry::Static);

    auto const sky = SnItemBasic<LiString>::create("Sky");
    showMenu(sky);
    showMenu(sky);
    history->undo();
    showMenu(sky);

    showPalette("sl", sky);
    for (LiString const& name : readShortcuts("shortcuts").find(ActShortcut::parse("ctrl+l")))
        std::cout << "Ctrl+L: " << name << '\n';

    List<RCShdPtr<SnItem const>> const underThePointer{sky, SnItemBasic<LiString>::create("Group 1")};
    ActDndUtils::performCarrierActions(underThePointer, DrCarrier::create(selected), SnSelection::create(), true);
    history.reset();
}
