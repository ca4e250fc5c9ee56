#include "host/actions.h"

#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actGroupedEntry.h"
#include "framework/actions/actLambda.h"
#include "framework/actions/actRegistry.h"
#include "framework/command/cmUndoGuard.h"
#include "framework/dragAndDrop/drCarrier.h"
#include "host/edit.h"
#include "internalAPI/snItemType.imp.h"

#include <algorithm>
#include <limits>
#include <string_view>

KO_ITEM_TYPE(compositor::LayerRef)
KO_ITEM_TYPE(compositor::Editor*)

namespace compositor {

std::string whyNotEdited(LayerRef const& ref) {
    return ref.editor->document().contains(ref.layer.id) ? "" : "the layer was removed";
}

namespace {

using namespace Ko;
using Item = RCShdPtr<SnItem const>;
using Selection = RCShdPtr<SnSelection>;

constexpr char const* group = "Compositor";
constexpr char const* blendComposite = "Blend";
// Sections of menus.
constexpr char const* arrange = "Arrange";
constexpr char const* edit = "Edit";
constexpr char const* look = "Look";
constexpr char const* separator = " > ";
constexpr int largest = std::numeric_limits<int>::max();

class BlendModes final : public ActCompositeAction, public ActPresented {
public:
    LiString getDescription() const override { return blendComposite; }
    std::string getGroup() const override { return group; }
    ActPresentation getPresentation(Item const&, Item const&) const override { return {.section = look}; }
};

bool exists(LayerRef const& ref) {
    return whyNotEdited(ref).empty();
}
PlacedPicture const& placedNow(LayerRef const& ref) {
    return ref.editor->document().layer(ref.layer.id).placed;
}

std::size_t positionOf(LayerRef const& ref) {
    return ref.editor->document().indexOf(ref.layer.id);
}

std::vector<LayerRef> layersIn(RCShdPtr<DrCarrier> const& carrier) {
    std::vector<LayerRef> layers;
    for (Item const& item : carrier->getSelection()->getItems())
        if (SnItemConvert<LayerRef>::test(item)) layers.push_back(SnItemConvert<LayerRef>::get(item));
    return layers;
}

// Layers are moved within their document only, and not onto themselves; copies may go anywhere.
bool canDrop(LayerRef const& target, RCShdPtr<DrCarrier> const& carrier) {
    std::vector<LayerRef> const layers = layersIn(carrier);
    bool const isCopy = carrier->getEffect() == DrEffect::Copy;
    return exists(target) && !layers.empty() && std::ranges::all_of(layers, [&](LayerRef const& layer) {
        return isCopy || (layer.editor == target.editor && layer != target && exists(layer));
    });
}

// Puts dropped layers, or copies of them, directly above the layer that they are dropped on.
void dropAbove(LayerRef const& target, RCShdPtr<DrCarrier> const& carrier, Selection const& selection) {
    LayerRef below = target;
    for (LayerRef const& dropped : layersIn(carrier)) {
        bool const isCopy = carrier->getEffect() == DrEffect::Copy;
        LayerRef const layer = isCopy ? LayerRef{target.editor, target.editor->addCopy(dropped.layer)} : dropped;
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

using LayerEdit = Edit<LayerRef>;

void add(Verb verb, ActPresentation shown, LayerEdit::Run run, LayerEdit::WhyNot whyNot = whyNotEdited,
    LayerEdit::State state = {}, char const* composite = "") {
    ActRegistry::getInstance().registerAction(
        std::make_unique<LayerEdit>(LayerEdit::Place{group, composite, std::move(shown)}, std::move(verb),
            std::move(whyNot), std::move(run), std::move(state)),
        ActRegistry::Static);
}

void registerBlendModes() {
    ActRegistry::getInstance().registerAction(std::make_unique<BlendModes>(), ActRegistry::Static);
    for (char const* const mode : {"over", "add", "multiply", "screen"}) {
        LayerEdit::State state;
        state.isChecked = [mode](LayerRef const& ref) { return placedNow(ref).blend == blendModeOf(mode); };
        add(
            {mode, "nothing", 0, 0}, {},
            [](LayerRef const& ref, Statement const& input) {
                ref.editor->setBlend(ref.layer.id, blendModeOf(input.word()));
            },
            whyNotEdited, std::move(state), blendComposite);
    }
}

void registerLookEdits() {
    LayerEdit::State opacities;
    opacities.options = {"0", "0.25", "0.5", "0.75", "1"};
    opacities.isCurrent = [](LayerRef const& ref, std::string const& option) {
        return exists(ref) && placedNow(ref).opacity == std::stof(option);
    };
    add(
        {"Opacity", "a number from 0 to 1", 1, 1}, {.section = look, .inputKind = ActInputKind::Number},
        [](LayerRef const& ref, Statement const& input) {
            ref.editor->setOpacity(ref.layer.id, input.number(1, 0.0f, 1.0f));
        },
        whyNotEdited, std::move(opacities));
}

void registerVisibility() {
    LayerEdit::State state;
    state.isChecked = [](LayerRef const& ref) { return placedNow(ref).isVisible; };
    add(
        {"Visible", "nothing", 0, 0}, {.section = look, .shortcuts = ActShortcut::parseList("Ctrl+H")},
        [](LayerRef const& ref, Statement const&) { ref.editor->setVisible(ref.layer.id, !placedNow(ref).isVisible); },
        whyNotEdited, std::move(state));
}

void registerOrderEdits() {
    add({"Move", "X and Y", 2, 2}, {.section = arrange}, [](LayerRef const& ref, Statement const& input) {
        int const x = input.integer(1, -largest, largest);
        ref.editor->moveLayer(ref.layer.id, x, input.integer(2, -largest, largest));
    });
    add({"Nudge", "distances in X and Y", 2, 2}, {.section = arrange}, [](LayerRef const& ref, Statement const& input) {
        int const x = input.integer(1, -largest, largest);
        ref.editor->nudgeLayer(ref.layer.id, x, input.integer(2, -largest, largest));
    });
    add({"Reorder", "a position", 1, 1}, {.section = arrange}, [](LayerRef const& ref, Statement const& input) {
        ref.editor->reorderLayer(ref.layer.id, static_cast<std::size_t>(input.integer(1, 0, largest)));
    });
    add(
        {"Raise", "nothing", 0, 0}, {.section = arrange, .shortcuts = ActShortcut::parseList("Ctrl+PageUp")},
        [](LayerRef const& ref, Statement const&) { ref.editor->reorderLayer(ref.layer.id, positionOf(ref) + 1); },
        [](LayerRef const& ref) -> std::string {
            if (!exists(ref)) return whyNotEdited(ref);
            return positionOf(ref) + 1 < ref.editor->document().layers().size() ? "" : "it is the highest layer";
        });
    add(
        {"Lower", "nothing", 0, 0}, {.section = arrange, .shortcuts = ActShortcut::parseList("Ctrl+PageDown")},
        [](LayerRef const& ref, Statement const&) { ref.editor->reorderLayer(ref.layer.id, positionOf(ref) - 1); },
        [](LayerRef const& ref) -> std::string {
            if (!exists(ref)) return whyNotEdited(ref);
            return positionOf(ref) > 0 ? "" : "it is the lowest layer";
        });
}

void registerNameEdits() {
    add({"Rename", "the new name", 1, 1},
        {.section = edit, .shortcuts = ActShortcut::parseList("F2"), .inputKind = ActInputKind::Text},
        [](LayerRef const& ref, Statement const& input) { ref.editor->renameLayer(ref.layer.id, input.words[1]); });
    add({"Remove", "nothing", 0, 0}, {.section = edit, .shortcuts = ActShortcut::parseList("Delete")},
        [](LayerRef const& ref, Statement const&) { ref.editor->removeLayer(ref.layer.id); });
}

void registerDocumentEdits() {
    ActRegistry::getInstance().registerAction(
        std::make_unique<Edit<Editor*>>(
            Edit<Editor*>::Place{group}, Verb{"Set Canvas", "a width and a height", 2, 2}, [](Editor*) { return ""; },
            [](Editor* const& editor, Statement const& input) {
                int const width = input.integer(1, 1, 65535);
                editor->setCanvas({width, input.integer(2, 1, 65535)});
            }),
        ActRegistry::Static);
}

/// An action by its path, "Composite > Member" or "Action", and its input.
struct Path {
    explicit Path(std::string const& path) {
        std::size_t const split = path.find(separator);
        if (split != std::string::npos) composite = path.substr(0, split);
        description = split == std::string::npos ? path : path.substr(split + std::string_view(separator).size());
    }
    Item inputOf(std::vector<std::string> const& arguments) const {
        Statement input{0, {description}};
        input.words.insert(input.words.end(), arguments.begin(), arguments.end());
        return StatementItem::create(input);
    }

    std::string composite, description;
};

// The entry of an action that is valid for all of the targets.
ActGroupedEntry findValid(
    std::string const& path, List<Item> const& targets, std::vector<std::string> const& arguments) {
    Path const wanted(path);
    auto const entries = ActRegistry::getInstance().getGroupedActions(
        targets, wanted.inputOf(arguments), wanted.composite, ActRegistry::FirstOnly);
    for (ActGroupedEntry const& entry : entries)
        if (entry.getDescription() == wanted.description && entry.getTargets().size() == targets.size()) return entry;
    throw InputError("\"" + path + "\" is not possible here");
}

void performOnFirst(ActGroupedEntry const& entry) {
    ActRegistry::Entry(entry.getAction(), entry.getTargets().front(), entry.getInput())
        .performAction(SnSelection::create());
}

} // namespace

EditActions::EditActions() {
    registerLookEdits();
    registerBlendModes();
    registerVisibility();
    registerOrderEdits();
    registerNameEdits();
    registerDrops();
    registerDocumentEdits();
}

EditActions::~EditActions() {
    ActRegistry::getInstance().unregisterActionsInGroup(group);
}

void EditActions::perform(Editor& editor, std::string const& path, std::vector<Layer> const& layers,
    std::vector<std::string> const& arguments) {
    List<Item> targets;
    for (Layer const& layer : layers)
        targets.push_back(LayerItem::create({&editor, layer}));
    ActGroupedEntry const entry = findValid(path, targets, arguments);
    if (layers.size() == 1) {
        // A single edit is an undo step of its own, with a more precise description.
        performOnFirst(entry);
        return;
    }
    CmUndoGuard const guard(editor.history(), path);
    entry.performAction(editor.history(), SnSelection::create());
}

void EditActions::perform(Editor& editor, std::string const& description, std::vector<std::string> const& arguments) {
    ActGroupedEntry const entry = findValid(description, {SnItemBasic<Editor*>::create(&editor)}, arguments);
    performOnFirst(entry);
}

std::vector<ActOption> EditActions::options(Editor& editor, std::string const& path, std::vector<Layer> const& layers) {
    List<Item> targets;
    for (Layer const& layer : layers)
        targets.push_back(LayerItem::create({&editor, layer}));
    return findValid(path, targets, {}).getOptions();
}

ActAction const& EditActions::find(std::string const& path) {
    Path const wanted(path);
    if (auto const* const action = ActRegistry::getInstance().getAction(wanted.description, wanted.composite))
        return *action;
    throw InputError("there is no action " + quoted(path));
}

} // namespace compositor
