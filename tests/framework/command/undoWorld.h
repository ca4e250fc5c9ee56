#pragma once

#include "framework/command/cmEx.h"
#include "pluginAPI/piExecParam.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace KoTest {

/// How listeners of changes react during an operation; the last two react once.
enum class Reaction { None, Throw, Execute, Undo };

/// The kinds of guards.
enum class GuardKind { Plain, NoLog, NoRedo };

/// A command with a number, or a macro of several commands.
struct ModelCommand {
    int number = 0;
    std::vector<ModelCommand> parts{};
    bool isSkippedOnRedo = false;
};

/// The circumstances of one operation, and the journal of its events: "+n" and "-n" for the execution and unexecution of a
/// command, "!" if it fails, "p" and "c" with the stack's number and its history for listeners of processing and of changes,
/// "e" for callbacks at the end of guards.
struct Circumstances {
    int callsUntilFailure = 0; // 0: none fails
    bool failureIsExpected = false;
    Reaction reaction = Reaction::None;
    int nextNumber = 0; // of commands that a listener executes
    std::string journal;

    void callCommand(char sign, int number) {
        bool const fails = callsUntilFailure > 0 && --callsUntilFailure == 0;
        journal += sign + std::to_string(number) + (fails ? "! " : " ");
        if (fails && failureIsExpected) throw Ko::CmEx::ExCommandFailure("model", 1);
        if (fails) throw std::runtime_error("a command");
    }
};

/// The listeners, which are the same for the model and for the library's stacks and guards.
template <class World>
class UndoWorld : public Circumstances {
public:
    static constexpr int none = -1;
    using Transition = Ko::PiExecParam::Transition;

    void performInGuard(int stack, std::vector<ModelCommand> const& commands) {
        world().inGuard(stack, [&] {
            for (ModelCommand const& command : commands)
                world().executeAndCollect(command);
        });
    }

    std::string tell() const { return journal + world().flags() + world().positionIn(0) + " " + world().positionIn(1); }

protected:
    static std::string flagsOf(bool logging, bool active, bool isLong, bool ending) {
        return std::string(logging ? "logging " : "") + (active ? "active " : "") + (isLong ? "long " : "") +
               (ending ? "ending " : "");
    }
    void hearProcessed(int stack) { hear('p', stack); }
    void hearChange(int stack) {
        hear('c', stack);
        Reaction const once = std::exchange(reaction, Reaction::None);
        if (once == Reaction::Execute) performInGuard(stack, {{++nextNumber}});
        if (once == Reaction::Undo && world().canUndo(stack)) world().undo(stack);
    }
    void hearEnd(std::optional<ModelCommand> const& command) {
        journal += "e ";
        if (command) performInGuard(none, {*command});
    }

private:
    World& world() { return static_cast<World&>(*this); }
    World const& world() const { return static_cast<World const&>(*this); }
    void hear(char kind, int stack) {
        journal += kind + std::to_string(stack) + ":" + world().positionIn(stack) + " ";
        if (reaction == Reaction::Throw) throw std::runtime_error("a listener");
    }
};

} // namespace KoTest
