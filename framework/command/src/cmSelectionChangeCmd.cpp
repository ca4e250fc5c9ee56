#include "framework/command/cmSelectionChangeCmd.h"

#include "base/assertions.h"

namespace Ko {

namespace {

constexpr AssertionSource source{"framework\\command\\src\\cmSelectionChangeCmd"};
constexpr char const* unknownType = "A command is to change a selection in an unknown way.";

} // namespace

// ---- several items

CmSelectionChangeWithItemsCmd::CmSelectionChangeWithItemsCmd(
    RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items, Type type)
    : _selection(selection), _before(selection->copy()), _items(items->copy()), _type(type) {}
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

void CmSelectionChangeWithItemsCmd::executeInternal() {
    switch (_type) {
    case Add:
        _selection->add(*_items);
        break;
    case Remove:
        _selection->remove(*_items);
        break;
    case Toggle:
        _selection->toggle(*_items);
        break;
    default:
        source.abort(unknownType);
    }
    _executed = true;
}

void CmSelectionChangeWithItemsCmd::unexecuteInternal() {
    _selection->replace(*_before);
}

// ---- all items

CmSelectionReplaceAllItemsCmd::CmSelectionReplaceAllItemsCmd(
    RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items)
    : _selection(selection), _before(selection->copy()), _items(items->copy()) {}
CmSelectionReplaceAllItemsCmd::~CmSelectionReplaceAllItemsCmd() = default;

RCShdPtr<CmSelectionReplaceAllItemsCmd> CmSelectionReplaceAllItemsCmd::create(
    RCShdPtr<SnSelection> const& selection, RCShdPtr<SnSelection const> const& items) {
    return RCShdPtr<CmSelectionReplaceAllItemsCmd>::create(selection, items);
}

LiString CmSelectionReplaceAllItemsCmd::getDescription() const {
    return "Replace Selection";
}
void CmSelectionReplaceAllItemsCmd::executeInternal() {
    _selection->replace(*_items);
    _executed = true;
}
void CmSelectionReplaceAllItemsCmd::unexecuteInternal() {
    _selection->replace(*_before);
}

// ---- one item

CmSelectionChangeCmd::CmSelectionChangeCmd(
    RCShdPtr<SnSelection> const& selection, RCShdPtr<SnItem const> const& item, Type type)
    : _selection(selection), _item(item), _type(type) {}
CmSelectionChangeCmd::~CmSelectionChangeCmd() = default;

RCShdPtr<CmSelectionChangeCmd> CmSelectionChangeCmd::create(
    RCShdPtr<SnSelection> const& selection, RCShdPtr<SnItem const> const& item, Type type) {
    return RCShdPtr<CmSelectionChangeCmd>::create(selection, item, type);
}

LiString CmSelectionChangeCmd::getDescription() const {
    return "Change Selection";
}
void CmSelectionChangeCmd::executeInternal() {
    change(_type == Add);
    _executed = true;
}
void CmSelectionChangeCmd::unexecuteInternal() {
    change(_type != Add);
}
void CmSelectionChangeCmd::change(bool add) {
    add ? _selection->add(_item) : _selection->remove(_item);
}

// ---- no item

CmSelectionClearCmd::CmSelectionClearCmd(RCShdPtr<SnSelection> const& selection)
    : _selection(selection), _before(selection->copy()) {}
CmSelectionClearCmd::~CmSelectionClearCmd() = default;

RCShdPtr<CmSelectionClearCmd> CmSelectionClearCmd::create(RCShdPtr<SnSelection> const& selection) {
    return RCShdPtr<CmSelectionClearCmd>::create(selection);
}

LiString CmSelectionClearCmd::getDescription() const {
    return "Clear Selection";
}
void CmSelectionClearCmd::executeInternal() {
    _selection->clear();
    _executed = true;
}
void CmSelectionClearCmd::unexecuteInternal() {
    _selection->replace(*_before);
}

} // namespace Ko
