#include "host/gestures.h"

#include "framework/actions/actDndUtils.h"
#include "framework/actions/actRegistry.h"
#include "framework/command/cmSelectionChangeCmd.h"
#include "framework/command/cmUndoGuard.h"
#include "framework/dragAndDrop/drClipboard.h"
#include "framework/dragAndDrop/drGesture.h"
#include "host/actions.h"
#include "host/layerFormats.h"
#include "host/layerItem.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace compositor {

namespace {

using namespace Ko;
using Selection = RCShdPtr<SnSelection>;

Selection makeSelection(Editor& editor, std::vector<Layer> const& layers) {
    Selection selection = SnSelection::create();
    for (Layer const& layer : layers)
        selection->add(LayerItem::create({&editor, layer}));
    return selection;
}

std::vector<Layer> layersNamed(Editor const& editor, std::vector<std::string> const& names) {
    std::vector<Layer> layers;
    std::ranges::transform(
        names, std::back_inserter(layers), [&](std::string const& name) { return editor.document().layer(name); });
    return layers;
}

// By the distance between two other places; at most to the limits of places.
int movedBy(int place, int from, int to) {
    using Limits = std::numeric_limits<int>;
    std::int64_t const moved = std::int64_t{place} + to - from;
    return static_cast<int>(std::clamp<std::int64_t>(moved, Limits::min(), Limits::max()));
}

/// The list of layers in a user interface: source and sink of drags.
class LayerList final : public DrSrcSink {
public:
    LayerList(Editor& editor, std::vector<Layer> const& grabbed, Layer const& under)
        : _grabbed(makeSelection(editor, grabbed)), _under(makeSelection(editor, {under})) {}

    bool willPopulateSelection() override { return !_grabbed->isEmpty(); }
    void populateSelection(RCShdPtr<DrCarrier> const& carrier) override { carrier->getSelection()->add(*_grabbed); }
    DrEffect accept(RCShdPtr<DrCarrier> const& carrier, DrEffect wanted, DrPlace const&) override {
        // The action depends on the effect.
        carrier->setEffect(wanted == DrEffect::Link ? DrEffect::Copy : wanted);
        return drop(carrier, false) ? carrier->getEffect() : DrEffect::None;
    }
    void consumeSelection(RCShdPtr<DrCarrier> const& carrier) override { drop(carrier, true); }

private:
    bool drop(RCShdPtr<DrCarrier> const& carrier, bool perform) {
        return ActDndUtils::performCarrierActions(
            RCShdPtr<SnSelection const>(_under), carrier, SnSelection::create(), perform);
    }

    Selection _grabbed;
    Selection _under;
};

} // namespace

void Gestures::select(std::vector<std::string> const& names) {
    Selection const selected = makeSelection(_editor, layersNamed(_editor, names));
    if (selected->isEmpty())
        _editor.execute(CmSelectionClearCmd::create(_editor.selection()));
    else
        _editor.execute(CmSelectionReplaceAllItemsCmd::create(_editor.selection(), selected));
}

std::vector<Layer> Gestures::selected() const {
    std::vector<Layer> layers;
    for (auto const& item : _editor.selection()->getItems()) {
        LayerId const id = SnItemConvert<LayerRef>::get(item).layer.id;
        if (_editor.document().contains(id)) layers.push_back(_editor.document().layer(id));
    }
    return layers;
}

Targets Gestures::targets() const {
    Targets targets;
    for (Layer const& layer : selected())
        targets.push_back(LayerItem::create({&_editor, layer}));
    if (targets.empty()) targets.push_back(SnItemBasic<Editor*>::create(&_editor));
    return targets;
}

void Gestures::carrySelection(int action) {
    std::vector<Layer> const layers = selected();
    if (layers.empty()) throw InputError("no layer is selected");
    RCShdPtr<DrCarrier> const carrier = DrCarrier::create(makeSelection(_editor, layers));
    carrier->setFormats(formatsOf(layers));
    DrClipboard::getInstance().setContent(carrier, static_cast<DrClipboard::SrcAction>(action));
}

void Gestures::copy() {
    carrySelection(DrClipboard::Copy);
}

void Gestures::cut() {
    carrySelection(DrClipboard::Cut);
    CmUndoGuard const guard(_editor.history(), "Cut");
    EditActions::perform(_editor, "Remove", selected(), {});
}

void Gestures::paste() {
    add(DrClipboard::getInstance().getContent(), "Paste");
}

void Gestures::add(RCShdPtr<DrCarrier> const& carrier, std::string const& description) {
    auto const carried = DrCarrierItem::create(carrier);
    auto const entries = ActRegistry::getInstance().getActions(
        SnItemBasic<Editor*>::create(&_editor), carried, "", ActRegistry::FirstOnly);
    if (entries.atEnd()) throw InputError("nothing was copied or cut");
    CmUndoGuard const guard(_editor.history(), description);
    Selection const pasted = SnSelection::create();
    entries->performAction(pasted);
    _editor.execute(CmSelectionReplaceAllItemsCmd::create(_editor.selection(), pasted));
}

void Gestures::grab(std::string const& name) {
    grab(std::vector{name});
}

void Gestures::grab(std::vector<std::string> const& names) {
    std::vector<Layer> layers = layersNamed(_editor, names);
    if (layers.empty()) throw InputError("no layer is dragged");
    std::string const what = layers.size() == 1 ? names.front() : std::to_string(layers.size()) + " layers";
    _dragged = std::make_unique<Dragged>(_editor, std::move(layers), "Drag " + what);
}

void Gestures::pull(Point to) {
    Dragged const& drag = dragged();
    PlacedPicture const& first = drag.layers.front().placed;
    drag.step.edit([&] {
        for (Layer const& layer : drag.layers)
            _editor.moveLayer(layer.id, movedBy(layer.placed.x, first.x, to.x), movedBy(layer.placed.y, first.y, to.y));
    });
}

void Gestures::release() {
    static_cast<void>(dragged());
    std::exchange(_dragged, nullptr)->step.end();
}

CmReplay Gestures::cancel() {
    static_cast<void>(dragged());
    return std::exchange(_dragged, nullptr)->step.cancel();
}

Gestures::Dragged& Gestures::dragged() {
    if (!_dragged) throw InputError("no layer is dragged");
    return *_dragged;
}

void Gestures::dragAlong(std::string const& name, std::vector<Point> const& path) {
    if (CmUndoGuard::isGuardActive()) {
        LayerId const id = _editor.document().layer(name).id;
        for (Point const point : path)
            _editor.moveLayer(id, point.x, point.y);
        return;
    }
    grab(name);
    try {
        for (Point const point : path)
            pull(point);
    } catch (...) {
        cancel();
        throw;
    }
    release();
}

DrEffect Gestures::drag(std::vector<std::string> const& names, std::string const& target, DrEffect wanted) {
    Layer const& under = _editor.document().layer(target);
    auto const list = RCShdPtr<LayerList>::create(_editor, layersNamed(_editor, names), under);
    RCShdPtr<DrCarrier> const carrier = DrGesture::begin(list);
    if (carrier.isNull()) throw InputError("no layer is dragged");
    CmUndoGuard const guard(_editor.history(), "Drop on " + target);
    DrEffect const effect =
        DrGesture::drop(list, list, carrier, wanted, {.target = LayerItem::create({&_editor, under})});
    if (effect == DrEffect::None) throw InputError("these layers cannot be dropped on \"" + target + "\"");
    return effect;
}

} // namespace compositor
