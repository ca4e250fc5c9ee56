#include "framework/command/cmSelectionChangeCmd.h"

#include "base/assertions.h"

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\command\\src\\cmSelectionChangeCmd"};
constexpr char const* unknownType = "A command is to change a selection in an unknown way.";

} // namespace

// ---- what they have in common

CmSelectionCmd::CmSelectionCmd(RCShdPtr<SnSelection> const& selection) : _selection(selection) {}
CmSelectionCmd::~CmSelectionCmd() = default;

void CmSelectionCmd::executeInternal() {
    change(*_selection);
    _executed = true;
}

CmSelectionRestoringCmd::CmSelectionRestoringCmd(RCShdPtr<SnSelection> const& selection)
    : CmSelectionCmd(selection), _before(selection->copy()) {}
CmSelectionRestoringCmd::~CmSelectionRestoringCmd() = default;

void CmSelectionRestoringCmd::unexecuteInternal() {
    getSelection().replace(*_before);
}

// ---- several items

CmSelectionChangeWithItemsCmd::CmSelectionChangeWithItemsCmd(
    RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items, Type type)
    : CmSelectionRestoringCmd(selection), _items(items->copy()), _type(type) {}
CmSelectionChangeWithItemsCmd::~CmSelectionChangeWithItemsCmd() = default;

RCShdPtr<CmSelectionChangeWithItemsCmd> CmSelectionChangeWithItemsCmd::create(
    RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items, Type type) {
    return RCShdPtr<CmSelectionChangeWithItemsCmd>::create(selection, items, type);
}

LiString CmSelectionChangeWithItemsCmd::getDescription() const {
    switch (_type) {
    case Add:
        return "Add to Selection";
    case Remove:
        return "Remove from Selection";
    case Toggle:
        return "Toggle Selection";
    }
    source.abort(unknownType);
}

void CmSelectionChangeWithItemsCmd::change(SnSelection& selection) {
    switch (_type) {
    case Add:
        return selection.add(*_items);
    case Remove:
        return selection.remove(*_items);
    case Toggle:
        return selection.toggle(*_items);
    }
    source.abort(unknownType);
}

// ---- all items

CmSelectionReplaceAllItemsCmd::CmSelectionReplaceAllItemsCmd(
    RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items)
    : CmSelectionRestoringCmd(selection), _items(items->copy()) {}
CmSelectionReplaceAllItemsCmd::~CmSelectionReplaceAllItemsCmd() = default;

RCShdPtr<CmSelectionReplaceAllItemsCmd> CmSelectionReplaceAllItemsCmd::create(
    RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items) {
    return RCShdPtr<CmSelectionReplaceAllItemsCmd>::create(selection, items);
}

LiString CmSelectionReplaceAllItemsCmd::getDescription() const {
    return "Replace Selection";
}
void CmSelectionReplaceAllItemsCmd::change(SnSelection& selection) {
    selection.replace(*_items);
}

// ---- one item

CmSelectionChangeCmd::CmSelectionChangeCmd(
    RCShdPtr<SnSelection> const& selection, RCShdPtr<SnItem const> const& item, Type type)
    : CmSelectionCmd(selection), _item(item), _type(type) {}
CmSelectionChangeCmd::~CmSelectionChangeCmd() = default;

RCShdPtr<CmSelectionChangeCmd> CmSelectionChangeCmd::create(
    RCShdPtr<SnSelection> const& selection, RCShdPtr<SnItem const> const& item, Type type) {
    return RCShdPtr<CmSelectionChangeCmd>::create(selection, item, type);
}

LiString CmSelectionChangeCmd::getDescription() const {
    return "Change Selection";
}
void CmSelectionChangeCmd::change(SnSelection& selection) {
    _type == Add ? selection.add(_item) : selection.remove(_item);
}
void CmSelectionChangeCmd::unexecuteInternal() {
    _type == Add ? getSelection().remove(_item) : getSelection().add(_item);
}

// ---- no item

CmSelectionClearCmd::CmSelectionClearCmd(RCShdPtr<SnSelection> const& selection) : CmSelectionRestoringCmd(selection) {}
CmSelectionClearCmd::~CmSelectionClearCmd() = default;

RCShdPtr<CmSelectionClearCmd> CmSelectionClearCmd::create(RCShdPtr<SnSelection> const& selection) {
    return RCShdPtr<CmSelectionClearCmd>::create(selection);
}

LiString CmSelectionClearCmd::getDescription() const {
    return "Clear Selection";
}
void CmSelectionClearCmd::change(SnSelection& selection) {
    selection.clear();
}

} // namespace Ko
