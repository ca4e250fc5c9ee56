#include "host/actions.h"

#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actLambda.h"
#include "framework/actions/actRegistry.h"
#include "framework/command/cmUndoGuard.h"
#include "framework/dragAndDrop/drCarrier.h"
#include "host/edit.h"
#include "internalAPI/snItemType.imp.h"

#include <algorithm>
#include <limits>
#include <optional>

KO_ITEM_TYPE(compositor::LayerRef)
KO_ITEM_TYPE(compositor::Editor*)

namespace compositor {

bool exists(LayerRef const& ref) {
    return ref.editor->document().contains(ref.layer.id);
}

namespace {

using namespace Ko;
using Item = RCShdPtr<SnItem const>;
using Selection = RCShdPtr<SnSelection>;

constexpr char const* group = "Compositor";
constexpr char const* blendComposite = "Blend";
constexpr char const* separator = " > ";
constexpr int largest = std::numeric_limits<int>::max();

class BlendModes final : public ActCompositeAction {
public:
    LiString getDescription() const override { return blendComposite; }
    std::string getGroup() const override { return group; }
};

std::size_t positionOf(LayerRef const& ref) {
    return ref.editor->document().indexOf(ref.layer.id);
}

std::vector<LayerRef> layersIn(RCShdPtr<DrCarrier> const& carrier) {
    std::vector<LayerRef> layers;
    for (Item const& item : carrier->getSelection()->getItems())
        if (SnItemConvert<LayerRef>::test(item)) layers.push_back(SnItemConvert<LayerRef>::get(item));
    return layers;
}

bool canDrop(LayerRef const& target, RCShdPtr<DrCarrier> const& carrier) {
    std::vector<LayerRef> const layers = layersIn(carrier);
    return exists(target) && !layers.empty() && std::ranges::all_of(layers, [&](LayerRef const& layer) {
        return layer.editor == target.editor && layer != target && exists(layer);
    });
}

// Moves dropped layers directly above the layer that they are dropped on.
void dropAbove(LayerRef const& target, RCShdPtr<DrCarrier> const& carrier, Selection const& selection) {
    LayerRef below = target;
    for (LayerRef const& layer : layersIn(carrier)) {
        std::size_t const above = positionOf(below) + (positionOf(layer) > positionOf(below) ? 1 : 0);
        target.editor->reorderLayer(layer.layer.id, above);
        selection->add(LayerItem::create(layer));
        below = layer;
    }
}

void registerDrops() {
    ActLambda<LayerRef, RCShdPtr<DrCarrier>>::add(
        {.description = "Drop Above", .group = group, .isValid = canDrop, .perform = dropAbove});
    ActLambda<Editor*, RCShdPtr<DrCarrier>>::add({
        .description = "Paste",
        .group = group,
        .isValid = [](Editor*, auto const& carrier) { return !layersIn(carrier).empty(); },
        .perform =
            [](Editor* editor, auto const& carrier, Selection const& selection) {
                for (LayerRef const& copied : layersIn(carrier))
                    selection->add(LayerItem::create({editor, editor->addCopy(copied.layer)}));
            },
    });
}

void add(Verb verb, Edit<LayerRef>::IsPossible isPossible, Edit<LayerRef>::Run run, std::vector<LiString> options = {},
    char const* composite = "") {
    ActRegistry::getInstance().registerAction(std::make_unique<Edit<LayerRef>>(Edit<LayerRef>::Place{group, composite},
                                                  std::move(verb), isPossible, std::move(run), std::move(options)),
        ActRegistry::Static);
}

void registerPropertyEdits() {
    add({"Move", "X and Y", 2, 2}, exists, [](LayerRef const& ref, Statement const& input) {
        int const x = input.integer(1, -largest, largest);
        ref.editor->moveLayer(ref.layer.id, x, input.integer(2, -largest, largest));
    });
    add({"Nudge", "distances in X and Y", 2, 2}, exists, [](LayerRef const& ref, Statement const& input) {
        int const x = input.integer(1, -largest, largest);
        ref.editor->nudgeLayer(ref.layer.id, x, input.integer(2, -largest, largest));
    });
    add({"Opacity", "a number from 0 to 1", 1, 1}, exists,
        [](LayerRef const& ref, Statement const& input) {
            ref.editor->setOpacity(ref.layer.id, input.number(1, 0.0f, 1.0f));
        },
        {"0", "0.25", "0.5", "0.75", "1"});
    add({"Rename", "the new name", 1, 1}, exists,
        [](LayerRef const& ref, Statement const& input) { ref.editor->renameLayer(ref.layer.id, input.words[1]); });
    for (char const* const mode : {"over", "add", "multiply", "screen"})
        add(
            {mode, "nothing", 0, 0}, exists,
            [](LayerRef const& ref, Statement const& input) {
                ref.editor->setBlend(ref.layer.id, blendModeOf(input.word()));
            },
            {}, blendComposite);
}

void registerOrderEdits() {
    add({"Remove", "nothing", 0, 0}, exists,
        [](LayerRef const& ref, Statement const&) { ref.editor->removeLayer(ref.layer.id); });
    add({"Reorder", "a position", 1, 1}, exists, [](LayerRef const& ref, Statement const& input) {
        ref.editor->reorderLayer(ref.layer.id, static_cast<std::size_t>(input.integer(1, 0, largest)));
    });
    add(
        {"Raise", "nothing", 0, 0},
        [](LayerRef const& ref) { return exists(ref) && positionOf(ref) + 1 < ref.editor->document().layers().size(); },
        [](LayerRef const& ref, Statement const&) { ref.editor->reorderLayer(ref.layer.id, positionOf(ref) + 1); });
    add(
        {"Lower", "nothing", 0, 0}, [](LayerRef const& ref) { return exists(ref) && positionOf(ref) > 0; },
        [](LayerRef const& ref, Statement const&) { ref.editor->reorderLayer(ref.layer.id, positionOf(ref) - 1); });
}

void registerDocumentEdits() {
    ActRegistry::getInstance().registerAction(
        std::make_unique<Edit<Editor*>>(
            Edit<Editor*>::Place{group}, Verb{"Set Canvas", "a width and a height", 2, 2},
            [](Editor* const&) { return true; },
            [](Editor* const& editor, Statement const& input) {
                int const width = input.integer(1, 1, 65535);
                editor->setCanvas({width, input.integer(2, 1, 65535)});
            }),
        ActRegistry::Static);
}

// The entry of an action for a target. @param arguments without the description.
ActRegistry::Entry find(std::string const& path, Item const& target, std::vector<std::string> const& arguments) {
    std::size_t const split = path.find(separator);
    bool const isMember = split != std::string::npos;
    std::string const composite = isMember ? path.substr(0, split) : "";
    std::string const description = isMember ? path.substr(split + std::string_view(separator).size()) : path;
    Statement input{0, {description}};
    input.words.insert(input.words.end(), arguments.begin(), arguments.end());
    auto const entries =
        ActRegistry::getInstance().getActions(target, StatementItem::create(input), composite, ActRegistry::FirstOnly);
    for (ActRegistry::Entry const& entry : entries.elements())
        if (entry.getDescription() == description) return entry;
    throw ScriptError("\"" + path + "\" is not possible here; \"menu\" lists what is");
}

} // namespace

EditActions::EditActions() {
    registerPropertyEdits();
    registerOrderEdits();
    ActRegistry::getInstance().registerAction(std::make_unique<BlendModes>(), ActRegistry::Static);
    registerDrops();
    registerDocumentEdits();
}

EditActions::~EditActions() {
    ActRegistry::getInstance().unregisterActionsInGroup(group);
}

void EditActions::perform(Editor& editor, std::string const& path, std::vector<Layer> const& layers,
    std::vector<std::string> const& arguments) {
    // A single edit is an undo step of its own, with a more precise description.
    std::optional<CmUndoGuard> guard;
    if (layers.size() > 1) guard.emplace(editor.history(), path);
    for (Layer const& layer : layers)
        find(path, LayerItem::create({&editor, layer}), arguments).performAction(SnSelection::create());
}

void EditActions::perform(Editor& editor, std::string const& description, std::vector<std::string> const& arguments) {
    find(description, SnItemBasic<Editor*>::create(&editor), arguments).performAction(SnSelection::create());
}

std::vector<std::string> EditActions::options(Editor& editor, std::string const& path, Layer const& layer) {
    Vector<LiString> options;
    find(path, LayerItem::create({&editor, layer}), {}).enumOptions(options);
    return options;
}

} // namespace compositor
