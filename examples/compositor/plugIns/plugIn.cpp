#include "plugIns/plugIn.h"

#include "host/edit.h"
#include "host/editor.h"
#include "plugIns/operators.h"

#include <map>

namespace compositor {

namespace {

constexpr int largestSide = 65535;

// Removes the name and the size, which come first.
Statement ownArguments(Statement input) {
    input.words.erase(input.words.begin() + 1, input.words.begin() + 4);
    return input;
}

struct KnownOperator {
    Verb verb;
    Operator apply;
};

// A plug-in stays in the process, so its operator does.
std::map<std::string, KnownOperator>& knownOperators() {
    static std::map<std::string, KnownOperator> operators;
    return operators;
}

} // namespace

Operator operatorOf(Statement const& input) {
    auto const found = knownOperators().find(input.word());
    if (found == knownOperators().end()) throw InputError("there is no operator " + quoted(input.word()));
    Verb const& verb = found->second.verb;
    if (input.arguments() < verb.fewest || input.arguments() > verb.most)
        throw InputError(quoted(input.word()) + " takes " + verb.arguments);
    return found->second.apply;
}

Operator findOperator(std::string const& description) {
    auto const found = knownOperators().find(description);
    return found == knownOperators().end() ? nullptr : found->second.apply;
}

Ko::OPtr<Ko::ActAction> makeAction(Verb const& verb, Operator apply) {
    knownOperators().insert_or_assign(verb.description, KnownOperator{verb, apply});
    auto const run = [apply](LayerRef const& ref, Statement const& input) {
        Layer const& layer = ref.editor->document().layer(ref.layer.id);
        ref.editor->setPicture(layer.id, apply(*layer.placed.picture, input), input.word() + " " + layer.name);
    };
    Ko::ActInputKind const kind = verb.most > 0 ? Ko::ActInputKind::Text : Ko::ActInputKind::None;
    return std::make_unique<Edit<LayerRef>>(
        Edit<LayerRef>::Place{"Operators", "", {.section = "Operators", .inputKind = kind}}, verb, whyNotEdited, run);
}

Ko::OPtr<Ko::ActAction> makeAction(Verb const& verb, Generator make) {
    auto const run = [make](Editor* const& editor, Statement const& input) {
        Size const size{input.integer(2, 1, largestSide), input.integer(3, 1, largestSide)};
        editor->addLayer(input.words[1], make(size, ownArguments(input)));
    };
    Verb const whole{verb.description, "a name, a width, a height" + (verb.most > 0 ? ", " + verb.arguments : ""),
        verb.fewest + 3, verb.most + 3};
    return std::make_unique<Edit<Editor*>>(
        Edit<Editor*>::Place{"Generators", "", {.section = "Generators"}}, whole, [](Editor*) { return ""; }, run);
}

} // namespace compositor
