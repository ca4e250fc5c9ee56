#include "base/exBase.h"
#include "framework/command/cmMacroCommand.h"
#include "framework/command/cmUndoGuard.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "framework/command/cmUndoGuardNoRedo.h"
#include "tests/framework/command/undoModel.h"
#include "tests/support/logRecorder.h"
#include "tests/support/randomSteps.h"
#include "tests/support/recordingCommand.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace Ko;
using namespace KoTest;

class NumberedCommand : public CmCommand {
public:
    NumberedCommand(Circumstances& circumstances, int number) : _circumstances(circumstances), _number(number) {}
    LiString getDescription() const override { return std::to_string(_number); }

protected:
    void executeInternal() override { _circumstances.callCommand('+', _number); }
    void unexecuteInternal() override { _circumstances.callCommand('-', _number); }

private:
    Circumstances& _circumstances;
    int _number;
};

/// The stacks and guards of the library, with the operations of the model.
class UndoSystem : public UndoWorld<UndoSystem> {
public:
    UndoSystem() {
        for (int const stack : {0, 1}) {
            listeners.push_back(std::make_unique<FunctionHandler>([this, stack] { hearProcessed(stack); }));
            at(stack)->addCommandProcessedCallback(listeners.back().get());
            listeners.push_back(std::make_unique<FunctionHandler>([this, stack] { hearChange(stack); }));
            at(stack)->addChangeCallback(listeners.back().get());
        }
    }
    // A sequence that ends at a difference may leave guards open; the next one must find none.
    ~UndoSystem() {
        static_cast<Circumstances&>(*this) = {};
        LgFirstError ignored("The end of a sequence");
        while (!guards.empty())
            ignored.capture([this] { leave(); });
        for (int tries = 0; tries < 10 && CmUndoGuard::isLongTransition(); ++tries)
            ignored.capture([] { CmUndoGuard const guard(nullptr, "", PiExecParam::END_TRANSITION); });
    }

    void log(int stack, ModelCommand const& command) { at(stack)->log(make(command)); }
    void executeAndLog(int stack, ModelCommand const& command) { at(stack)->executeAndLog(make(command)); }
    void undo(int stack) { at(stack)->undo(); }
    void redo(int stack) { at(stack)->redo(); }
    void moveTo(int stack, std::size_t goal) { at(stack)->moveTo(at(stack)->getBegin() + static_cast<long>(goal)); }
    void limit(int stack, std::size_t height) { at(stack)->setMaxStackHeight(static_cast<int>(height)); }
    void removeLast(int stack) { at(stack)->removeLast(); }
    void clear(int stack) { at(stack)->clear(); }
    bool canUndo(int stack) const { return at(stack)->canUndo(); }
    std::string positionIn(int stack) const {
        return std::to_string(at(stack)->getNbUndoableCommands() + 1) + "/" +
               std::to_string(at(stack)->getStackHeight());
    }
    std::string flags() const {
        return flagsOf(CmUndoGuard::isLogging(), CmUndoGuard::isGuardActive(), CmUndoGuard::isLongTransition(),
            CmUndoGuard::isLongTransitionEnding());
    }

    void enter(GuardKind kind, int stack, Transition transition, bool isQuiet) {
        std::unique_ptr<PiUndoGuardProtocol> guard;
        if (kind == GuardKind::Plain) guard = std::make_unique<CmUndoGuard>(at(stack), "Guard", transition);
        if (kind == GuardKind::NoLog) guard = std::make_unique<CmUndoGuardNoLog>(isQuiet);
        if (kind == GuardKind::NoRedo) guard = std::make_unique<CmUndoGuardNoRedo>();
        guards.push_back(guard.release());
    }
    void leave() {
        if (guards.empty()) return; // a difference to the model, which is reported later
        PiUndoGuardProtocol* const guard = guards.back();
        guards.pop_back();
        delete guard;
    }
    void abort(std::size_t count) {
        struct Unwinding {
            UndoSystem& system;
            std::size_t count;
            ~Unwinding() {
                while (count-- > 0)
                    system.leave();
            }
        } const unwinding{*this, count};
        throw std::runtime_error("abort");
    }
    template <class Body>
    void inGuard(int stack, Body body) {
        CmUndoGuard guard(at(stack), "Guard");
        body();
    }

    void collect(ModelCommand const& command) { CmUndoGuard(nullptr, "").addUndoCommand(make(command)); }
    void execute(ModelCommand const& command) { CmUndoGuard(nullptr, "").execUndoCommand(make(command)); }
    void executeAndCollect(ModelCommand const& command) {
        CmUndoGuard(nullptr, "").execAndAddUndoCommand(make(command));
    }
    void addEndCallback(std::optional<ModelCommand> const& command) {
        callbacks.push_back(RCShdPtr<FunctionHandler>::create([this, command] { hearEnd(command); }));
        CmUndoGuard::addEndOfOutermostGuardCallback(RCShdPtr<CbHandler<CbEmptyType>>(callbacks.back()));
    }

private:
    RCShdPtr<CmCommandStack> at(int stack) const {
        return stack == none ? nullptr : stacks[static_cast<std::size_t>(stack)];
    }
    RCShdPtr<CmCommand> make(ModelCommand const& command) {
        if (command.parts.empty()) return RCShdPtr<NumberedCommand>::create(*this, command.number);
        auto const macro = CmMacroCommand::create();
        for (ModelCommand const& part : command.parts)
            macro->add(make(part));
        return macro;
    }

    std::array<RCShdPtr<CmCommandStack>, 2> const stacks{
        RCShdPtr<CmCommandStack>::create(), RCShdPtr<CmCommandStack>::create()};
    std::vector<PiUndoGuardProtocol*> guards;
    std::vector<RCShdPtr<FunctionHandler>> callbacks;
    std::vector<std::unique_ptr<FunctionHandler>> listeners;
};

class UndoMachine {
public:
    static constexpr std::array operations{"Perform", "AddPerformed", "ExecuteOnly", "EndCallback", "ExecuteAndLog",
        "Log", "Undo", "Redo", "MoveTo", "Limit", "RemoveLast", "Clear", "Open", "Transition", "Close", "Abort"};

    std::string perform(std::size_t operation, unsigned number) {
        Choices choices(number);
        int const failure = static_cast<int>(choices.take(16));
        bool const isExpected = choices.take(2) != 0;
        unsigned const reaction = choices.take(12);
        begin({failure > 3 ? 0 : failure, isExpected, reaction > 3 ? Reaction::None : static_cast<Reaction>(reaction),
            0, {}});
        int const stack = choices.take(4) == 0 ? 1 : 0;
        return run(operations[operation], stack, choices);
    }

    std::string finish() {
        begin({});
        std::string difference;
        while (difference.empty() && model.openGuards() > 0)
            difference = both([](auto& world) { world.leave(); });
        while (difference.empty() && model.isGuardActive())
            difference = both([](auto& world) {
                world.enter(GuardKind::Plain, UndoModel::none, PiExecParam::END_TRANSITION, false);
                world.leave();
            });
        for (int const stack : {0, 1})
            for (std::size_t const goal : {std::size_t{0}, model.height(stack) - 1, std::size_t{0}})
                if (difference.empty()) difference = both([&](auto& world) { world.moveTo(stack, goal); });
        return difference;
    }

private:
    void begin(Circumstances circumstances) {
        circumstances.nextNumber = lastNumber += 100;
        for (Circumstances* const one : {static_cast<Circumstances*>(&model), static_cast<Circumstances*>(&system)})
            *one = circumstances;
    }

    std::string run(std::string const& operation, int stack, Choices& choices) {
        if (operation == "Perform") return performInGuard(stack, choices);
        if (operation == "EndCallback") return addEndCallback(choices);
        if (operation == "Open") return open(stack, choices);
        if (operation == "AddPerformed" || operation == "ExecuteOnly") return inOpenGuard(operation, choices);
        if (operation == "ExecuteAndLog")
            return both([&, command = newCommand(choices)](auto& world) { world.executeAndLog(stack, command); });
        if (operation == "Log")
            return both([&, command = newCommand(choices)](auto& world) { world.log(stack, command); });
        if (operation == "Undo") return both([&](auto& world) { world.undo(stack); });
        if (operation == "Redo") return both([&](auto& world) { world.redo(stack); });
        if (operation == "MoveTo")
            return both([&, goal = choices.take(static_cast<unsigned>(model.height(stack) + 1))](
                            auto& world) { world.moveTo(stack, goal); });
        if (operation == "Limit")
            return both([&, height = 1 + choices.take(24)](auto& world) { world.limit(stack, height); });
        if (operation == "RemoveLast") return both([&](auto& world) { world.removeLast(stack); });
        if (operation == "Clear") return choices.take(4) != 0 ? "" : both([&](auto& world) { world.clear(stack); });
        if (operation == "Transition")
            return enter(GuardKind::Plain, stack, static_cast<PiExecParam::Transition>(choices.take(4)), false);
        if (operation == "Close") return model.openGuards() == 0 ? "" : both([](auto& world) { world.leave(); });
        // Some of the innermost guards close while an exception passes.
        std::size_t const count = std::min<std::size_t>(choices.take(4), model.openGuards());
        return count == 0 ? "" : both([&](auto& world) { world.abort(count); });
    }

    ModelCommand newCommand(Choices& choices) {
        ModelCommand command{++lastNumber, {}};
        if (choices.take(3) != 2) return command;
        for (int part = 0; part < 2; ++part)
            command.parts.push_back(newCommand(choices));
        return command;
    }

    // A guard around some commands. The first error leaves it.
    std::string performInGuard(int stack, Choices& choices) {
        std::vector<ModelCommand> commands(1 + choices.take(2));
        for (ModelCommand& command : commands)
            command = newCommand(choices);
        int const given = choices.take(3) == 0 ? UndoModel::none : stack;
        return both([&](auto& world) { world.performInGuard(given, commands); });
    }

    std::string inOpenGuard(std::string const& operation, Choices& choices) {
        if (model.openGuards() == 0) return "";
        ModelCommand const command = newCommand(choices);
        return both(
            [&](auto& world) { operation == "AddPerformed" ? world.collect(command) : world.execute(command); });
    }

    std::string addEndCallback(Choices& choices) {
        std::optional<ModelCommand> command;
        if (choices.take(2) == 0) command = newCommand(choices);
        return both([&](auto& world) { world.addEndCallback(command); });
    }

    std::string open(int stack, Choices& choices) {
        auto const kind = static_cast<GuardKind>(choices.take(3));
        bool const hasStack = kind == GuardKind::Plain && choices.take(3) != 0;
        bool const isQuiet = kind == GuardKind::NoLog && choices.take(2) != 0;
        return enter(kind, hasStack ? stack : UndoModel::none, PiExecParam::NOT_TRANSITION, isQuiet);
    }

    std::string enter(GuardKind kind, int stack, PiExecParam::Transition transition, bool isQuiet) {
        if (model.openGuards() > 4) return "";
        return both([&](auto& world) { world.enter(kind, stack, transition, isQuiet); });
    }

    template <class Step>
    std::string both(Step step) {
        std::string const expected = outcomeOf([&] { step(model); }) + ", " + model.tell();
        std::string const actual = outcomeOf([&] { step(system); }) + ", " + system.tell();
        return actual == expected ? "" : "\"" + actual + "\" instead of \"" + expected + "\"";
    }
    template <class Step>
    static std::string outcomeOf(Step step) {
        try {
            step();
            return "done";
        } catch (ExAssertionFailed const&) {
            return "refused";
        } catch (ExProgramAborted const&) {
            return "aborted";
        } catch (ExInternalError const&) {
            return "a step is open";
        } catch (std::exception const& error) {
            return error.what();
        }
    }

    LogRecorder const log; // takes errors that are only logged
    UndoModel model;
    UndoSystem system;
    int lastNumber = 0;
};

TEST(CmUndoGuardModel, AgreesWithListsAndPositions) {
    tryRandomSteps<UndoMachine>(60, 400);
}

} // namespace
