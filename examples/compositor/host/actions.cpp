#include "host/actions.h"

#include "framework/actions/actBasicParam.h"
#include "framework/actions/actCompositeAction.h"
#include "framework/actions/actRegistry.h"
#include "framework/actions/actTypedAction.imp.h"
#include "framework/command/cmUndoGuard.h"
#include "framework/dragAndDrop/drCarrier.h"
#include "host/layerItem.h"
#include "image/generators.h"
#include "internalAPI/snItemBasic.imp.h"
#include "internalAPI/snItemConvert.imp.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

template class Ko::SnItemBasic<compositor::LayerRef>;
template class Ko::SnIsItem<compositor::LayerRef>;
template class Ko::SnItemConvert<compositor::LayerRef>;
template class Ko::SnItemBasic<compositor::Editor*>;
template class Ko::SnIsItem<compositor::Editor*>;
template class Ko::SnItemConvert<compositor::Editor*>;
template class Ko::ActTypedAction<compositor::LayerRef, Ko::ActBasicParam>;
template class Ko::ActTypedAction<compositor::LayerRef, Ko::RCShdPtr<Ko::DrCarrier>>;
template class Ko::ActTypedAction<compositor::Editor*, Ko::ActBasicParam>;
template class Ko::ActTypedAction<compositor::Editor*, Ko::RCShdPtr<Ko::DrCarrier>>;

namespace compositor {

namespace {

using namespace Ko;
using Item = RCShdPtr<SnItem const>;
using Selection = RCShdPtr<SnSelection>;

constexpr char const* group = "Compositor";
constexpr char const* blendComposite = "Blend";
constexpr char const* separator = " > ";
constexpr int largest = std::numeric_limits<int>::max();

// "rrggbb" or "rrggbbaa".
Colour colourOf(std::string const& text) {
    std::uint32_t value = 0;
    char const* const end = text.data() + text.size();
    bool const isHexadecimal =
        (text.size() == 6 || text.size() == 8) && std::from_chars(text.data(), end, value, 16).ptr == end;
    if (!isHexadecimal) throw ScriptError("\"" + text + "\" is not a colour; write rrggbb or rrggbbaa");
    if (text.size() == 6) value = value << 8 | 0xFF;
    auto const byte = [value](int shift) { return static_cast<std::uint8_t>(value >> shift & 0xFF); };
    return {byte(24), byte(16), byte(8), byte(0)};
}

Size sizeOf(Statement const& input, std::size_t index) {
    int const width = input.integer(index, 1, 65535);
    return {width, input.integer(index + 1, 1, 65535)};
}

/// What all the edits are made of.
struct Verb {
    char const* description;
    char const* composite;
    char const* arguments; // as a message tells them
    std::size_t fewest;
    std::size_t most;
};

// The arguments of an action, from the text that is its input.
Statement parse(Verb const& verb, ActBasicParam const& input) {
    Statement statement{0, splitWords(input.getValue())};
    statement.words.insert(statement.words.begin(), verb.description);
    if (statement.arguments() < verb.fewest || statement.arguments() > verb.most)
        throw ScriptError(std::string("\"") + verb.description + "\" takes " + verb.arguments);
    return statement;
}

std::string joined(std::vector<std::string> const& words) {
    std::string text;
    for (std::string const& word : words) {
        text += text.empty() ? "\"" : " \"";
        for (char const character : word) {
            if (character == '"' || character == '\\') text += '\\';
            text += character;
        }
        text += '"';
    }
    return text;
}

/// An edit of what its target names.
template <class Target>
class Edit final : public ActTypedAction<Target, ActBasicParam> {
public:
    using Run = void (*)(Target const& target, Statement const& input);
    using IsPossible = bool (*)(Target const& target);

    Edit(Verb const& verb, IsPossible isPossible, Run run, std::vector<LiString> options = {})
        : _verb(verb), _isPossible(isPossible), _run(run), _options(std::move(options)) {}

    LiString getDescription() const override { return _verb.description; }
    std::string getGroup() const override { return group; }
    std::string getCompositeName() const override { return _verb.composite; }
    bool inputValid(Target const& target, ActBasicParam const&) const override { return _isPossible(target); }
    void performAction(Target const& target, ActBasicParam const& input, Selection const&) const override {
        _run(target, parse(_verb, input));
    }
    int enumOptions(Target const&, ActBasicParam const&, Vector<LiString>& options) const override {
        options.insert(options.end(), _options.begin(), _options.end());
        return static_cast<int>(_options.size());
    }

private:
    Verb _verb;
    IsPossible _isPossible;
    Run _run;
    std::vector<LiString> _options;
};

class BlendModes final : public ActCompositeAction {
public:
    LiString getDescription() const override { return blendComposite; }
    std::string getGroup() const override { return group; }
};

bool exists(LayerRef const& ref) {
    auto const& layers = ref.editor->document().layers();
    return std::ranges::any_of(layers, [&](Layer const& layer) { return layer.id == ref.layer.id; });
}

std::string const& nameOf(LayerRef const& ref) {
    return ref.editor->document().layer(ref.layer.id).name;
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

/// Puts dropped layers right above the one that they are dropped on.
class DropAbove final : public ActTypedAction<LayerRef, RCShdPtr<DrCarrier>> {
public:
    LiString getDescription() const override { return "Drop Above"; }
    std::string getGroup() const override { return group; }
    bool inputValid(LayerRef const& target, RCShdPtr<DrCarrier> const& carrier) const override {
        std::vector<LayerRef> const layers = layersIn(carrier);
        return exists(target) && !layers.empty() && std::ranges::all_of(layers, [&](LayerRef const& layer) {
            return layer.editor == target.editor && layer != target && exists(layer);
        });
    }
    void performAction(
        LayerRef const& target, RCShdPtr<DrCarrier> const& carrier, Selection const& selection) const override {
        LayerRef below = target;
        for (LayerRef const& layer : layersIn(carrier)) {
            std::size_t const above = positionOf(below) + (positionOf(layer) > positionOf(below) ? 1 : 0);
            target.editor->reorderLayer(nameOf(layer), above);
            selection->add(LayerItem::create(layer));
            below = layer;
        }
    }
};

/// Adds copies of the layers that were copied or cut.
class Paste final : public ActTypedAction<Editor*, RCShdPtr<DrCarrier>> {
public:
    LiString getDescription() const override { return "Paste"; }
    std::string getGroup() const override { return group; }
    bool inputValid(Editor* const&, RCShdPtr<DrCarrier> const& carrier) const override {
        return !layersIn(carrier).empty();
    }
    void performAction(
        Editor* const& editor, RCShdPtr<DrCarrier> const& carrier, Selection const& selection) const override {
        for (LayerRef const& copied : layersIn(carrier))
            selection->add(LayerItem::create({editor, editor->addCopy(copied.layer)}));
    }
};

void registerLayerEdits() {
    auto const add = [](Verb const& verb, Edit<LayerRef>::IsPossible isPossible, Edit<LayerRef>::Run run,
                         std::vector<LiString> options = {}) {
        ActRegistry::getInstance().registerAction(
            std::make_unique<Edit<LayerRef>>(verb, isPossible, run, std::move(options)), ActRegistry::Static);
    };
    add({"Move", "", "X and Y", 2, 2}, exists, [](LayerRef const& ref, Statement const& input) {
        int const x = input.integer(1, -largest, largest);
        ref.editor->moveLayer(nameOf(ref), x, input.integer(2, -largest, largest));
    });
    add({"Opacity", "", "a number from 0 to 1", 1, 1}, exists,
        [](LayerRef const& ref, Statement const& input) {
            ref.editor->setOpacity(nameOf(ref), input.number(1, 0.0f, 1.0f));
        },
        {"0", "0.25", "0.5", "0.75", "1"});
    add({"Rename", "", "the new name", 1, 1}, exists,
        [](LayerRef const& ref, Statement const& input) { ref.editor->renameLayer(nameOf(ref), input.words[1]); });
    add({"Remove", "", "nothing", 0, 0}, exists,
        [](LayerRef const& ref, Statement const&) { ref.editor->removeLayer(nameOf(ref)); });
    add({"Reorder", "", "a position", 1, 1}, exists, [](LayerRef const& ref, Statement const& input) {
        ref.editor->reorderLayer(nameOf(ref), static_cast<std::size_t>(input.integer(1, 0, largest)));
    });
    add(
        {"Raise", "", "nothing", 0, 0},
        [](LayerRef const& ref) { return exists(ref) && positionOf(ref) + 1 < ref.editor->document().layers().size(); },
        [](LayerRef const& ref, Statement const&) { ref.editor->reorderLayer(nameOf(ref), positionOf(ref) + 1); });
    add(
        {"Lower", "", "nothing", 0, 0}, [](LayerRef const& ref) { return exists(ref) && positionOf(ref) > 0; },
        [](LayerRef const& ref, Statement const&) { ref.editor->reorderLayer(nameOf(ref), positionOf(ref) - 1); });
    for (char const* const mode : {"over", "add", "multiply", "screen"})
        add({mode, blendComposite, "nothing", 0, 0}, exists, [](LayerRef const& ref, Statement const& input) {
            ref.editor->setBlend(nameOf(ref), blendModeOf(input.word()));
        });
}

void registerDocumentEdits() {
    auto const add = [](Verb const& verb, Edit<Editor*>::Run run) {
        ActRegistry::getInstance().registerAction(std::make_unique<Edit<Editor*>>(
                                                      verb, [](Editor* const&) { return true; }, run),
            ActRegistry::Static);
    };
    add({"Set Canvas", "", "a width and a height", 2, 2},
        [](Editor* const& editor, Statement const& input) { editor->setCanvas(sizeOf(input, 1)); });
    add({"Add Checker", "", "a name, a width, a height, a cell and two colours", 6, 6},
        [](Editor* const& editor, Statement const& input) {
            auto const& words = input.words;
            editor->addLayer(words[1],
                makeChecker(sizeOf(input, 2), input.integer(4, 1, 65535), colourOf(words[5]), colourOf(words[6])));
        });
    add({"Add Gradient", "", "a name, a width, a height, two colours and a direction", 5, 6},
        [](Editor* const& editor, Statement const& input) {
            auto const& words = input.words;
            bool const isVertical = input.arguments() == 6 && words[6] == "vertical";
            if (input.arguments() == 6 && !isVertical && words[6] != "horizontal")
                throw ScriptError("\"" + words[6] + "\" is not a direction; write horizontal or vertical");
            editor->addLayer(words[1], makeGradient(sizeOf(input, 2), colourOf(words[4]), colourOf(words[5]),
                                           isVertical ? Direction::Vertical : Direction::Horizontal));
        });
}

// The action of that path for a target, with its input.
ActRegistry::Entry find(std::string const& path, Item const& target, std::string const& input) {
    std::size_t const split = path.find(separator);
    bool const isMember = split != std::string::npos;
    std::string const composite = isMember ? path.substr(0, split) : "";
    std::string const description = isMember ? path.substr(split + std::string_view(separator).size()) : path;
    auto entry = ActRegistry::getInstance().getActions(
        target, SnItemBasic<ActBasicParam>::create(ActBasicParam(input)), composite, ActRegistry::FirstOnly);
    for (; !entry.atEnd(); ++entry)
        if (entry->getDescription() == description) return *entry;
    throw ScriptError("\"" + path + "\" is not possible here; \"menu\" lists what is");
}

} // namespace

EditActions::EditActions() {
    SnItemConvert<LayerRef>::initialize();
    SnItemConvert<Editor*>::initialize();
    registerLayerEdits();
    ActRegistry& registry = ActRegistry::getInstance();
    registry.registerAction(std::make_unique<BlendModes>(), ActRegistry::Static);
    registry.registerAction(std::make_unique<DropAbove>(), ActRegistry::Static);
    registry.registerAction(std::make_unique<Paste>(), ActRegistry::Static);
    registerDocumentEdits();
}

EditActions::~EditActions() {
    ActRegistry::getInstance().unregisterActionsInGroup(group);
    SnItemConvert<Editor*>::finalize();
    SnItemConvert<LayerRef>::finalize();
}

void EditActions::perform(Editor& editor, std::string const& path, std::vector<Layer> const& layers,
    std::vector<std::string> const& arguments) {
    // A single edit is a step under its own, more telling name.
    std::optional<CmUndoGuard> guard;
    if (layers.size() > 1) guard.emplace(editor.history(), path, PiExecParam());
    for (Layer const& layer : layers)
        find(path, LayerItem::create({&editor, layer}), joined(arguments)).performAction(SnSelection::create());
}

void EditActions::perform(Editor& editor, std::string const& description, std::vector<std::string> const& arguments) {
    find(description, SnItemBasic<Editor*>::create(&editor), joined(arguments)).performAction(SnSelection::create());
}

std::vector<std::string> EditActions::options(Editor& editor, std::string const& path, Layer const& layer) {
    Vector<LiString> options;
    find(path, LayerItem::create({&editor, layer}), "").enumOptions(options);
    return options;
}

} // namespace compositor
