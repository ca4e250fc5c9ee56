#include "script/interpreter.h"

#include "host/actions.h"
#include "host/protocols.h"
#include "script/actionList.h"
#include "script/plugInList.h"

#include <algorithm>
#include <limits>
#include <map>
#include <ostream>

namespace compositor {

namespace {

using I = Interpreter;
using S = Statement const;

constexpr auto anywhere = Interpreter::Place::Anywhere;
constexpr auto outsideGroups = Interpreter::Place::OutsideGroups;
constexpr auto outsideSteps = Interpreter::Place::OutsideSteps;
constexpr std::size_t any = std::numeric_limits<std::size_t>::max();
constexpr int largest = std::numeric_limits<int>::max();
constexpr char const* blendFormulas =
    "    over      s + d (1 - a)\n"
    "    add       min(1, s + d)\n"
    "    multiply  s d + s (1 - b) + d (1 - a)\n"
    "    screen    s + d - s d\n"
    "    s: a channel of the layer, d: of what lies below it, both in linear light and multiplied by their alphas,\n"
    "    a and b; a is the layer's own alpha times its opacity. The resulting alpha: the same with a for s and b for "
    "d.\n";

std::vector<std::string> argumentsOf(Statement const& statement) {
    return {statement.words.begin() + 1, statement.words.end()};
}

} // namespace

std::vector<Interpreter::Word> const Interpreter::_words{
    // "editLayer" and "editDocument" are short for "do": the words perform the action of that description on the layer with the
    // name that comes first, or on the document.
    {"canvas", "canvas WIDTH HEIGHT", 2, 2, anywhere, [](I& self, S& line) { self.editDocument(line, "Set Canvas"); }},
    {"open", "open FILE.png [NAME] (adds a layer) or open FILE.koc (a document)", 1, 2, anywhere,
        [](I& self, S& line) { self.open(line); }},
    {"checker", "checker NAME WIDTH HEIGHT CELL COLOUR COLOUR", 6, 6, anywhere,
        [](I& self, S& line) { self.editDocument(line, "Add Checker"); }},
    {"gradient", "gradient NAME WIDTH HEIGHT COLOUR COLOUR [horizontal|vertical]", 5, 6, anywhere,
        [](I& self, S& line) { self.editDocument(line, "Add Gradient"); }},
    {"move", "move NAME X Y", 3, 3, anywhere, [](I& self, S& line) { self.editLayer(line, "Move"); }},
    {"nudge", "nudge NAME X Y (by so much; quick nudges are one step)", 3, 3, anywhere,
        [](I& self, S& line) { self.editLayer(line, "Nudge"); }},
    {"opacity", "opacity NAME 0..1", 2, 2, anywhere, [](I& self, S& line) { self.editLayer(line, "Opacity"); }},
    {"blend", "blend NAME over|add|multiply|screen", 2, 2, anywhere, [](I& self, S& line) { self.blend(line); },
        blendFormulas},
    {"rename", "rename NAME NEW", 2, 2, anywhere, [](I& self, S& line) { self.editLayer(line, "Rename"); }},
    {"remove", "remove NAME", 1, 1, anywhere, [](I& self, S& line) { self.editLayer(line, "Remove"); }},
    {"reorder", "reorder NAME POSITION (0 is the bottom)", 2, 2, anywhere,
        [](I& self, S& line) { self.editLayer(line, "Reorder"); }},
    {"drag", "drag NAME X Y [X Y ...] (along a path) or drag NAME [NAME ...] to NAME [copy|move|link] (a drop)", 3, any,
        anywhere, [](I& self, S& line) { self.drag(line); }},
    {"grab", "grab NAME ... pull X Y ... release (a drag, step by step)", 1, 1, outsideSteps,
        [](I& self, S& line) { self._gestures.grab(line.words[1]); }},
    {"pull", "pull X Y (the layer that is dragged)", 2, 2, outsideGroups, [](I& self, S& line) { self.pull(line); }},
    {"release", "release (ends the drag)", 0, 0, outsideGroups, [](I& self, S&) { self._gestures.release(); }},
    {"cancel", "cancel (takes the drag back)", 0, 0, outsideGroups, [](I& self, S&) { self.cancel(); }},
    {"select", "select [NAME ...] (none clears the selection)", 0, any, anywhere,
        [](I& self, S& line) { self._gestures.select(argumentsOf(line)); }},
    {"menu", "menu (the actions for the selected layers, or the document)", 0, 0, anywhere,
        [](I& self, S&) { listActions(self._gestures.targets(), self._output); }},
    {"why", "why ACTION (is not possible for the selected layers, or the document)", 1, 1, anywhere,
        [](I& self, S& line) { explainAction(line.words[1], self._gestures.targets(), self._output); }},
    {"find", "find LETTERS (the actions that contain them, as a palette)", 1, 1, anywhere,
        [](I& self, S& line) { findActions(line.words[1], self._gestures.targets(), self._output); }},
    {"do",
        "do ACTION [ARGUMENT ...] (with the selected layers, or the document; \"Blend > screen\" is one of a "
        "sub-menu)",
        1, any, anywhere, [](I& self, S& line) { self.perform(line); }},
    {"options", "options ACTION", 1, 1, anywhere, [](I& self, S& line) { self.options(line); }},
    {"copy", "copy", 0, 0, anywhere, [](I& self, S&) { self._gestures.copy(); }},
    {"cut", "cut", 0, 0, anywhere, [](I& self, S&) { self._gestures.cut(); }},
    {"paste", "paste", 0, 0, anywhere, [](I& self, S&) { self._gestures.paste(); }},
    {"plugins", "plugins (the directories, and the state of each plug-in)", 0, 0, anywhere,
        [](I& self, S&) { listPlugIns(self._output); }},
    {"group", "group NAME ... end (one undo step)", 1, 1, anywhere, [](I& self, S& line) { self.group(line); }},
    {"quietly", "quietly ... end (not in the history)", 0, 0, anywhere, [](I& self, S& line) { self.quietly(line); }},
    {"undo", "undo [STEPS]", 0, 1, outsideSteps, [](I& self, S& line) { self.undo(line); }},
    {"redo", "redo [STEPS]", 0, 1, outsideSteps, [](I& self, S& line) { self.redo(line); }},
    {"history", "history (with the saved state, and the memory of pictures that only the history holds)", 0, 0,
        anywhere, [](I& self, S&) { self.history(); }},
    {"goto", "goto POSITION (as history shows it)", 1, 1, outsideSteps, [](I& self, S& line) { self.goTo(line); }},
    // The initial state is an element of the history too.
    {"limit", "limit COMMANDS (that the history keeps)", 1, 1, outsideSteps,
        [](I& self, S& line) { self._editor.history()->setMaxStackHeight(line.integer(1, 1, largest - 1) + 1); }},
    {"memory", "memory MEBIBYTES (that the history keeps; 0 for no limit)", 1, 1, outsideSteps,
        [](I& self, S& line) { self.limitMemory(line); }},
    {"layers", "layers", 0, 0, anywhere, [](I& self, S&) { self.layers(); }},
    {"dump", "dump (the history as XML)", 0, 0, anywhere,
        [](I& self, S&) { self._editor.history().dump(self._output); }},
    {"render", "render FILE.png (a job)", 1, 1, anywhere,
        [](I& self, S& line) { self.submit(line, makeRenderProtocol(self._editor.document(), line.words[1])); }},
    {"flatten", "flatten NAME (a job; its picture becomes a layer)", 1, 1, anywhere,
        [](I& self, S& line) { self.flatten(line); }},
    {"save", "save FILE.koc (a job)", 1, 1, outsideSteps, [](I& self, S& line) { self.save(line); }},
    {"run", "run \"COMMAND LINE\" [NAME=VALUE ...] (a job; its lines are shown)", 1, any, anywhere,
        [](I& self, S& line) { self.runProgram(line); }},
    {"export", "export FILE \"COMMAND\" (a job; COMMAND reads a rendered picture, or %f in it is one; %o is FILE)", 2,
        2, anywhere, [](I& self, S& line) { self.exportPicture(line); },
        "    A command without %f gets the picture, a PNG file, through its standard input: export copy.png \"sh -c "
        "'cat > %o'\"\n"
        "    %f and %o need no quotation marks, whatever the path. Inside the quoted text of a shell they are "
        "words for\n"
        "    that shell: export copy.png \"sh -c 'cp %f %o'\"\n"},
    {"jobs", "jobs (jobs that have ended are listed once)", 0, 0, anywhere, [](I& self, S&) { self._jobs.list(); }},
    {"stop", "stop JOB", 1, 1, anywhere, [](I& self, S& line) { self._jobs.stop(line.integer(1, 1, largest)); }},
    {"pause", "pause JOB", 1, 1, anywhere, [](I& self, S& line) { self._jobs.pause(line.integer(1, 1, largest)); }},
    {"resume", "resume JOB", 1, 1, anywhere, [](I& self, S& line) { self._jobs.resume(line.integer(1, 1, largest)); }},
    {"after", "after JOB WORD [ARGUMENT ...] (a statement whose job waits for another one)", 2, any, anywhere,
        [](I& self, S& line) { self.after(line); }},
    {"frames", "frames IN OUT FIRST LAST OPERATOR [ARGUMENT ...] (a chain of jobs; %d is the number of the frame)", 5,
        any, anywhere, [](I& self, S& line) { self.frames(line); }, "    frames shot.%d.png soft.%d.png 1 24 Blur 3\n"},
    {"wait", "wait (until all jobs have ended; resumes those that are paused)", 0, 0, anywhere,
        [](I& self, S&) { self._jobs.wait(); }},
    {"echo", "echo TEXT", 0, any, anywhere, [](I& self, S& line) { self.echo(line); }},
    {"help", "help [WORD]", 0, 1, anywhere, [](I& self, S& line) { self.help(line); }},
    {"quit", "quit (stops all jobs)", 0, 0, anywhere, [](I& self, S&) { self.quit(); }},
};

std::vector<Interpreter::Word> const& Interpreter::words() {
    return _words;
}

Interpreter::Word const& Interpreter::wordOf(std::string const& name) {
    auto const found = std::ranges::find_if(words(), [&](Word const& word) { return name == word.name; });
    if (found == words().end()) throw InputError("unknown word " + quoted(name) + "; \"help\" lists the words");
    return *found;
}

void Interpreter::editLayer(Statement const& statement, char const* action) {
    EditActions::perform(_editor, action, {_editor.document().layer(statement.words[1])},
        {statement.words.begin() + 2, statement.words.end()});
}

void Interpreter::editDocument(Statement const& statement, char const* action) {
    EditActions::perform(_editor, action, argumentsOf(statement));
}

void Interpreter::open(Statement const& statement) {
    std::filesystem::path const path = statement.words[1];
    _editor.open(path, statement.arguments() == 2 ? statement.words[2] : path.stem().string());
}

void Interpreter::blend(Statement const& statement) {
    std::string const mode = toString(blendModeOf(statement.words[2]));
    EditActions::perform(_editor, "Blend > " + mode, {_editor.document().layer(statement.words[1])}, {});
}

void Interpreter::drag(Statement const& statement) {
    auto const& words = statement.words;
    auto const to = std::ranges::find(words, "to");
    if (to != words.end()) return drop({words.begin() + 1, to}, {to + 1, words.end()});
    if (statement.arguments() % 2 == 0) throw InputError("a path is made of pairs of X and Y");
    std::vector<Gestures::Point> path;
    for (std::size_t index = 2; index < words.size(); index += 2) {
        int const x = statement.integer(index, -largest, largest);
        path.push_back({x, statement.integer(index + 1, -largest, largest)});
    }
    _gestures.dragAlong(words[1], path);
}

void Interpreter::drop(std::vector<std::string> const& names, std::vector<std::string> const& place) {
    using Ko::DrEffect;
    std::map<std::string, DrEffect> const effects{
        {"copy", DrEffect::Copy}, {"move", DrEffect::Move}, {"link", DrEffect::Link}};
    auto const wanted = effects.find(place.size() == 2 ? place[1] : "move");
    if (place.empty() || place.size() > 2 || wanted == effects.end())
        throw InputError("a drop takes layers, \"to\", a layer, and \"copy\", \"move\" or \"link\"");
    DrEffect const effect = _gestures.drag(names, place[0], wanted->second);
    if (effect != wanted->second) _output << "copied: layers cannot be linked\n";
}

void Interpreter::pull(Statement const& statement) {
    int const x = statement.integer(1, -largest, largest);
    _gestures.pull({x, statement.integer(2, -largest, largest)});
}

void Interpreter::perform(Statement const& statement) {
    std::vector<Layer> const layers = _gestures.selected();
    std::vector<std::string> const arguments(statement.words.begin() + 2, statement.words.end());
    if (layers.empty())
        EditActions::perform(_editor, statement.words[1], arguments);
    else
        EditActions::perform(_editor, statement.words[1], layers, arguments);
}

void Interpreter::options(Statement const& statement) {
    std::vector<Layer> const layers = _gestures.selected();
    if (layers.empty()) throw InputError("no layer is selected");
    for (Ko::ActOption const& option : EditActions::options(_editor, statement.words[1], layers))
        _output << (option.isCurrent ? "* " : "  ") << option.text << "\n";
}

void Interpreter::layers() {
    Document const& document = _editor.document();
    _output << "canvas " << document.canvas().width << " x " << document.canvas().height << "\n";
    for (std::size_t index = document.layers().size(); index-- > 0;) {
        Layer const& layer = document.layers()[index];
        Size const size = layer.placed.picture->size();
        _output << "  " << index << " " << quoted(layer.name) << " " << size.width << " x " << size.height << " at ("
                << layer.placed.x << ", " << layer.placed.y << "), opacity " << layer.placed.opacity << ", "
                << toString(layer.placed.blend) << (layer.placed.isVisible ? "" : ", hidden") << "\n";
    }
}

void Interpreter::echo(Statement const& statement) {
    for (std::size_t index = 1; index < statement.words.size(); ++index)
        _output << (index > 1 ? " " : "") << statement.words[index];
    _output << "\n";
}

void Interpreter::help(Statement const& statement) {
    if (statement.arguments() == 0) {
        for (Word const& word : words())
            _output << "  " << word.usage << "\n";
    } else {
        Word const& word = wordOf(statement.words[1]);
        _output << "  " << word.usage << "\n" << word.details;
    }
}

} // namespace compositor
