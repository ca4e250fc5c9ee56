#include "base/exBase.h"
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
    bool add(std::string const& name) {
        if (contains(name)) return false;
        list.push_back(name);
        return true;
    }
    bool remove(std::string const& name) { return std::erase(list, name) > 0; }
    void toggle(std::string const& name) { contains(name) ? remove(name) : add(name); }
    void clear() { list.clear(); }

    void add(Names const& names) {
        for (std::string const& name : std::vector(names.list))
            add(name);
    }
    void remove(Names const& names) {
        for (std::string const& name : std::vector(names.list))
            remove(name);
    }
    void toggle(Names const& names) {
        for (std::string const& name : std::vector(names.list))
            toggle(name);
    }
    void replace(Names const& names) { list = std::vector(names.list); }

    std::string text() const {
        std::string result;
        for (std::string const& name : list)
            result += (result.empty() ? "" : " ") + name;
        return result;
    }
    bool contains(std::string const& name) const { return std::find(list.begin(), list.end(), name) != list.end(); }

    std::vector<std::string> list;
};

/// Applies an operation to a selection and to a list of names. @returns the result of the operation, if it has one.
template <class Selection, class Item>
bool change(std::string const& name, Selection& selection, Item const& item, Selection const& others) {
    if (name == "Add") return selection.add(item);
    if (name == "Remove") return selection.remove(item);
    if (name == "Toggle") selection.toggle(item);
    if (name == "AddAll") selection.add(others);
    if (name == "RemoveAll") selection.remove(others);
    if (name == "ToggleAll") selection.toggle(others);
    if (name == "Replace") selection.replace(others);
    if (name == "Clear") selection.clear();
    return true;
}

/// Two selections that are changed directly, from one another, and by commands that are undone and redone.
class SelectionMachine {
public:
    static constexpr std::array operations{"Add", "Remove", "Toggle", "AddAll", "RemoveAll", "ToggleAll", "Replace",
        "Clear", "Copy", "Walk", "Command", "Command", "Command", "Command", "ExecutePending", "Undo", "Undo", "Redo"};

    std::string perform(std::size_t operation, unsigned number) {
        Choices choices(number);
        std::string const name = operations[operation];
        std::size_t const which = choices.take(3) == 0 ? 1 : 0;
        std::size_t const other = choices.take(4) == 0 ? which : 1 - which;
        std::string const word = std::to_string(choices.take(40));
        if (name == "Command") return makeCommand(which, other, word, choices);
        if (name == "ExecutePending") return executePending();
        if (name == "Undo") return undo();
        if (name == "Redo") return redo();
        if (name == "Copy") {
            selections[1 - which] = selections[which]->copy();
            models[1 - which] = models[which];
        }
        if (name == "Walk") walk(which);
        bool const returned = change(name, *selections[which], text(word.c_str()), *selections[other]);
        return change(name, models[which], word, models[other]) == returned ? compare() : name + " returned otherwise";
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
    struct Pending {
        RCShdPtr<CmCommand> command;
        std::function<void()> execute, unexecute;
    };

    // Removes half of the items during an iteration over all of them.
    void walk(std::size_t which) {
        bool isRemoved = true;
        for (auto const& item : selections[which]->getItems())
            if ((isRemoved = !isRemoved)) selections[which]->remove(item);
        isRemoved = true;
        for (std::string const& name : std::vector(models[which].list))
            if ((isRemoved = !isRemoved)) models[which].remove(name);
    }

    // The model stores the content that the command has to restore.
    std::string makeCommand(std::size_t which, std::size_t other, std::string const& word, Choices& choices) {
        static constexpr std::array kinds{"AddAll", "RemoveAll", "ToggleAll", "Replace", "Clear", "Add", "Remove"};
        static constexpr std::array descriptions{"Add to Selection", "Remove from Selection", "Toggle Selection",
            "Replace Selection", "Clear Selection", "Change Selection", "Change Selection"};
        auto const& selection = selections[which];
        auto const& items = selections[other];
        // A selection that was replaced by a copy is not reachable any more.
        auto const onModel = [this, selection](auto step) {
            return [this, selection, step] {
                for (std::size_t index = 0; index < selections.size(); ++index)
                    if (selections[index] == selection) step(models[index]);
            };
        };
        auto const changing = [&](char const* name) {
            return onModel([name, word, given = models[other]](Names& names) { change(name, names, word, given); });
        };
        unsigned const kind = choices.take(kinds.size());
        std::function<void()> unexecute = onModel([before = models[which]](Names& names) { names = before; });
        RCShdPtr<CmCommand> command;
        if (kind < 3) {
            using Command = CmSelectionChangeWithItemsCmd;
            command = Command::create(selection, items, static_cast<Command::Type>(kind));
        } else if (kind == 3) {
            command = CmSelectionReplaceAllItemsCmd::create(selection, items);
        } else if (kind == 4) {
            command = CmSelectionClearCmd::create(selection);
        } else {
            command = CmSelectionChangeCmd::create(
                selection, text(word.c_str()), kind == 5 ? CmSelectionChangeCmd::Add : CmSelectionChangeCmd::Remove);
            unexecute = changing(kinds[11 - kind]);
        }
        if (command->getDescription() != descriptions[kind]) return command->getDescription();
        pending = Pending{command, changing(kinds[kind]), unexecute};
        return choices.take(3) == 0 ? "" : executePending(); // others are executed later, on a different selection
    }

    std::string executePending() {
        if (!pending) return "";
        history.resize(current);
        history.push_back(*std::exchange(pending, std::nullopt));
        stack->executeAndLog(history.back().command);
        history[current++].execute();
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
    std::vector<Pending> history;
    std::size_t current = 0;
    std::optional<Pending> pending;
};

TEST(CmSelectionModel, AgreesWithListsOfNames) {
    tryRandomSteps<SelectionMachine>(40, 300);
}

TEST(CmSelectionChangeCmd, AbortsForAnUnknownTypeOnceItIsUsed) {
    auto const selection = selectionOf({"a", "b"});
    RCShdPtr<CmCommand> const command = CmSelectionChangeWithItemsCmd::create(
        selection, selectionOf({"b", "x"}), static_cast<CmSelectionChangeWithItemsCmd::Type>(3));
    EXPECT_THROW(static_cast<void>(command->getDescription()), ExProgramAborted);
    EXPECT_THROW(CmCommandStack::executeStatic(command), ExProgramAborted);
    EXPECT_EQ("a b", content(*selection));
    CmCommandStack::executeStatic(
        CmSelectionChangeCmd::create(selection, text("b"), static_cast<CmSelectionChangeCmd::Type>(-7)));
    EXPECT_EQ("a", content(*selection)) << "of one item, any other type removes it";
}

} // namespace
