#include "framework/command/cmCommandStack.h"
#include "framework/command/cmSelectionChangeCmd.h"
#include "tests/support/items.h"
#include "tests/support/randomSteps.h"

#include <algorithm>
#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <optional>

namespace {

using namespace Ko;
using namespace KoTest;

/// A selection as a list of names, in the order in which they were added.
class Names {
public:
    void add(std::string const& name) {
        if (!contains(name)) list.push_back(name);
    }
    void remove(std::string const& name) { std::erase(list, name); }
    void toggle(std::string const& name) { contains(name) ? remove(name) : add(name); }

    void addAll(Names const& names) { forEach(names, &Names::add); }
    void removeAll(Names const& names) { forEach(names, &Names::remove); }
    void toggleAll(Names const& names) { forEach(names, &Names::toggle); }

    std::string text() const {
        std::string result;
        for (std::string const& name : list)
            result += (result.empty() ? "" : " ") + name;
        return result;
    }
    bool contains(std::string const& name) const { return std::find(list.begin(), list.end(), name) != list.end(); }

    std::vector<std::string> list;

private:
    void forEach(Names const& names, void (Names::*change)(std::string const&)) {
        for (std::string const& name : std::vector(names.list))
            (this->*change)(name);
    }
};

/// Two selections that change by themselves, by one another and by commands, which are undone and redone.
class SelectionMachine {
public:
    static constexpr std::array operations{"Add", "Remove", "Toggle", "AddAll", "RemoveAll", "ToggleAll", "Replace",
        "Clear", "Copy", "Walk", "Command", "Command", "Command", "Command", "ExecutePending", "Undo", "Undo", "Redo"};

    std::string perform(std::size_t operation, unsigned number) {
        Choices choices(number);
        std::string const name = operations[operation];
        std::size_t const which = choices.take(3) == 0 ? 1 : 0;
        if (name == "Command") return makeCommand(which, choices);
        if (name == "ExecutePending") return executePending();
        if (name == "Undo") return undo();
        if (name == "Redo") return redo();
        return change(name, which, choices);
    }

    std::string finish() {
        std::string difference;
        while (difference.empty() && stack->canUndo())
            difference = undo();
        while (difference.empty() && stack->canRedo())
            difference = redo();
        return difference;
    }

private:
    struct Step {
        std::function<void()> execute;
        std::function<void()> unexecute;
    };
    struct Pending {
        RCShdPtr<CmCommand> command;
        Step step;
    };

    std::string change(std::string const& name, std::size_t which, Choices& choices) {
        Names& names = models[which];
        auto const& selection = selections[which];
        std::size_t const other = choices.take(4) == 0 ? which : 1 - which;
        std::string const word = std::to_string(choices.take(40));
        auto const item = text(word.c_str());
        bool const isIn = names.contains(word);
        bool returned = true;
        if (name == "Add") {
            returned = selection->add(item) == !isIn;
            names.add(word);
        } else if (name == "Remove") {
            returned = selection->remove(item) == isIn;
            names.remove(word);
        } else if (name == "Toggle") {
            selection->toggle(item);
            names.toggle(word);
        } else if (name == "AddAll") {
            selection->add(*selections[other]);
            names.addAll(models[other]);
        } else if (name == "RemoveAll") {
            selection->remove(*selections[other]);
            names.removeAll(models[other]);
        } else if (name == "ToggleAll") {
            selection->toggle(*selections[other]);
            names.toggleAll(models[other]);
        } else if (name == "Replace") {
            selection->replace(*selections[other]);
            names = Names(models[other]);
        } else if (name == "Clear") {
            selection->clear();
            names = {};
        } else if (name == "Copy") {
            selections[1 - which] = selection->copy();
            models[1 - which] = names;
        } else {
            walk(which);
        }
        return returned ? compare() : name + " returned the wrong value";
    }

    // Half of the items are taken out while all are walked over.
    void walk(std::size_t which) {
        bool isRemoved = true;
        for (auto const& item : selections[which]->getItems())
            if ((isRemoved = !isRemoved)) selections[which]->remove(item);
        isRemoved = true;
        for (std::string const& name : std::vector(models[which].list))
            if ((isRemoved = !isRemoved)) models[which].remove(name);
    }

    // The model's step keeps what the command has to keep.
    std::string makeCommand(std::size_t which, Choices& choices) {
        auto const& selection = selections[which];
        std::size_t const other = choices.take(4) == 0 ? which : 1 - which;
        auto const& items = selections[other];
        Names const before = models[which];
        Names const given = models[other];
        std::string const word = std::to_string(choices.take(40));
        // A selection that a copy has taken the place of is out of sight.
        auto const onModel = [this, selection](auto step) {
            return [this, selection, step] {
                for (std::size_t index = 0; index < selections.size(); ++index)
                    if (selections[index] == selection) step(models[index]);
            };
        };
        Step step{{}, onModel([before](Names& names) { names = before; })};
        RCShdPtr<CmCommand> command;
        unsigned const kind = choices.take(7);
        if (kind < 3) {
            using Command = CmSelectionChangeWithItemsCmd;
            static constexpr std::array changes{&Names::addAll, &Names::removeAll, &Names::toggleAll};
            command = Command::create(selection, items, static_cast<Command::Type>(kind));
            step.execute = onModel([given, all = changes[kind]](Names& names) { (names.*all)(given); });
        } else if (kind == 3) {
            command = CmSelectionReplaceAllItemsCmd::create(selection, items);
            step.execute = onModel([given](Names& names) { names = given; });
        } else if (kind == 4) {
            command = CmSelectionClearCmd::create(selection);
            step.execute = onModel([](Names& names) { names = {}; });
        } else {
            auto const add = onModel([word](Names& names) { names.add(word); });
            auto const remove = onModel([word](Names& names) { names.remove(word); });
            bool const adds = kind == 5;
            command = CmSelectionChangeCmd::create(
                selection, text(word.c_str()), adds ? CmSelectionChangeCmd::Add : CmSelectionChangeCmd::Remove);
            step = adds ? Step{add, remove} : Step{remove, add};
        }
        pending = Pending{command, step};
        return choices.take(3) == 0 ? "" : executePending(); // some are executed later, when all has changed
    }

    std::string executePending() {
        if (!pending) return "";
        Pending const now = *std::exchange(pending, std::nullopt);
        stack->executeAndLog(now.command);
        now.step.execute();
        history.resize(current);
        history.push_back(now.step);
        ++current;
        return compare();
    }
    std::string undo() {
        if (stack->canUndo() != (current > 0)) return "canUndo";
        if (current == 0) return "";
        stack->undo();
        history[--current].unexecute();
        return compare();
    }
    std::string redo() {
        if (stack->canRedo() != (current < history.size())) return "canRedo";
        if (current == history.size()) return "";
        stack->redo();
        history[current++].execute();
        return compare();
    }

    std::string compare() const {
        for (std::size_t index = 0; index < selections.size(); ++index) {
            SnSelection const& selection = *selections[index];
            std::string const expected = models[index].text();
            if (content(selection) != expected) return "\"" + content(selection) + "\" instead of \"" + expected + "\"";
            if (selection.getCount() != models[index].list.size()) return "count";
            for (std::string const& name : models[index].list)
                if (!selection.contains(*text(name.c_str()))) return name + " is not found";
        }
        return "";
    }

    std::array<RCShdPtr<SnSelection>, 2> selections{SnSelection::create(), SnSelection::create()};
    std::array<Names, 2> models;
    RCShdPtr<CmCommandStack> const stack = RCShdPtr<CmCommandStack>::create();
    std::vector<Step> history;
    std::size_t current = 0;
    std::optional<Pending> pending;
};

TEST(CmSelectionModel, AgreesWithListsOfNames) {
    tryRandomSteps<SelectionMachine>(40, 300);
}

} // namespace
