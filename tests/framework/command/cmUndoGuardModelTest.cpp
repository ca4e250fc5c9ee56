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

/// The stacks and guards of the library, to be told the same as the model.
class UndoSystem : public Circumstances {
public:
    UndoSystem() {
        for (int stack : {0, 1}) {
            listeners.push_back(std::make_unique<FunctionHandler>([this, stack] { callListener('p', stack); }));
            at(stack)->addCommandProcessedCallback(listeners.back().get());
            listeners.push_back(std::make_unique<FunctionHandler>([this, stack] { callListenerOfChanges(stack); }));
            at(stack)->addChangeCallback(listeners.back().get());
        }
    }

    // Where the model was not followed to the end, the next sequence finds no guard open all the same.
    ~UndoSystem() {
        static_cast<Circumstances&>(*this) = {};
        FirstError ignored;
        while (!guards.empty())
            ignored.capture([this] { leave(); });
        for (int tries = 0; tries < 10 && CmUndoGuard::isLongTransition(); ++tries)
            ignored.capture([] { CmUndoGuard(nullptr, "", PiExecParam::END_TRANSITION); });
    }

    RCShdPtr<CmCommandStack> at(int stack) const {
        return stack == UndoModel::none ? nullptr : stacks[static_cast<std::size_t>(stack)];
    }

    RCShdPtr<CmCommand> make(ModelCommand const& command) {
        if (command.parts.empty()) return RCShdPtr<NumberedCommand>::create(*this, command.number);
        auto const macro = CmMacroCommand::create();
        for (ModelCommand const& part : command.parts)
            macro->add(make(part));
        return macro;
    }

    void enter(GuardKind kind, int stack, PiExecParam::Transition transition, bool quiet) {
        std::unique_ptr<PiUndoGuardProtocol> guard;
        if (kind == GuardKind::Plain) guard = std::make_unique<CmUndoGuard>(at(stack), "Guard", transition);
        if (kind == GuardKind::NoLog) guard = std::make_unique<CmUndoGuardNoLog>(quiet);
        if (kind == GuardKind::NoRedo) guard = std::make_unique<CmUndoGuardNoRedo>();
        guards.push_back(guard.release());
    }
    void leave() {
        if (guards.empty()) return; // which the model's differ from
        PiUndoGuardProtocol* const guard = guards.back();
        guards.pop_back();
        delete guard;
    }

    void addEndCallback(std::optional<ModelCommand> const& command) {
        auto const callback = RCShdPtr<FunctionHandler>::create([this, command] {
            journal += "e ";
            if (!command) return;
            CmUndoGuard guard(nullptr, "Callback", {});
            guard.execAndAddUndoCommand(make(*command));
        });
        callbacks.push_back(callback);
        CmUndoGuard::addEndOfOutermostGuardCallback(RCShdPtr<CbHandler<CbEmptyType>>(callback));
    }

    std::array<RCShdPtr<CmCommandStack>, 2> stacks{
        RCShdPtr<CmCommandStack>::create(), RCShdPtr<CmCommandStack>::create()};

private:
    void callListenerOfChanges(int stack) {
        callListener('c', stack);
        Reaction const once = std::exchange(reaction, Reaction::None);
        if (once == Reaction::Execute) {
            CmUndoGuard guard(at(stack), "Listener", {});
            guard.execAndAddUndoCommand(make({++nextNumber}));
        }
        if (once == Reaction::Undo && at(stack)->canUndo()) at(stack)->undo();
    }

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
        calm();
        int const failure = static_cast<int>(choices.take(16));
        bool const isExpected = choices.take(2) != 0;
        unsigned const reaction = choices.take(12);
        for (Circumstances* const one : {static_cast<Circumstances*>(&model), static_cast<Circumstances*>(&system)}) {
            one->callsUntilFailure = failure > 3 ? 0 : failure;
            one->failureIsExpected = isExpected;
            one->reaction = reaction > 3 ? Reaction::None : static_cast<Reaction>(reaction);
        }
        int const stack = choices.take(4) == 0 ? 1 : 0;
        return run(operations[operation], stack, choices);
    }

    std::string finish() {
        calm();
        if (std::string const difference = finishGuards(); !difference.empty()) return difference;
        for (int const stack : {0, 1})
            for (std::size_t const goal :
                {std::size_t{0}, model.histories[stackIndex(stack)].steps.size() - 1, std::size_t{0}})
                if (std::string const difference = moveTo(stack, goal); !difference.empty()) return difference;
        return "";
    }

private:
    static std::size_t stackIndex(int stack) { return static_cast<std::size_t>(stack); }

    std::string run(std::string const& operation, int stack, Choices& choices) {
        auto const& history = model.histories[stackIndex(stack)];
        auto const target = system.at(stack);
        if (operation == "Perform") return performInGuard(stack, choices);
        if (operation == "AddPerformed" || operation == "ExecuteOnly") return inOpenGuard(operation, choices);
        if (operation == "EndCallback") return addEndCallback(choices);
        if (operation == "ExecuteAndLog") {
            ModelCommand const command = newCommand(choices);
            return both(
                [&] { model.executeAndLog(stack, command); }, [&] { target->executeAndLog(system.make(command)); });
        }
        if (operation == "Log") {
            ModelCommand const command = newCommand(choices);
            return both([&] { model.log(stack, command); }, [&] { target->log(system.make(command)); });
        }
        if (operation == "Undo") return both([&] { model.undo(stack); }, [&] { target->undo(); });
        if (operation == "Redo") return both([&] { model.redo(stack); }, [&] { target->redo(); });
        if (operation == "MoveTo") return moveTo(stack, choices.take(static_cast<unsigned>(history.steps.size())));
        if (operation == "Limit") {
            unsigned const height = 1 + choices.take(24);
            return both(
                [&] { model.limit(stack, height); }, [&] { target->setMaxStackHeight(static_cast<int>(height)); });
        }
        if (operation == "RemoveLast") return both([&] { model.removeLast(stack); }, [&] { target->removeLast(); });
        if (operation == "Clear")
            return choices.take(4) != 0 ? "" : both([&] { model.clear(stack); }, [&] { target->clear(); });
        if (operation == "Open") return open(stack, choices);
        if (operation == "Transition")
            return enter(GuardKind::Plain, stack, static_cast<PiExecParam::Transition>(choices.take(4)), false);
        if (operation == "Close") return quiet.empty() ? "" : close();
        return abort(choices.take(4));
    }

    ModelCommand newCommand(Choices& choices) {
        ModelCommand command{++lastNumber, {}};
        if (choices.take(3) != 2) return command;
        for (int part = 0; part < 2; ++part)
            command.parts.push_back(newCommand(choices));
        return command;
    }

    // A guard around some commands, the first of which to fail goes through it.
    std::string performInGuard(int stack, Choices& choices) {
        std::vector<ModelCommand> commands(1 + choices.take(2));
        for (ModelCommand& command : commands)
            command = newCommand(choices);
        int const given = choices.take(3) == 0 ? UndoModel::none : stack;
        return both(
            [&] {
                model.within(GuardKind::Plain, given, PiExecParam::NOT_TRANSITION, [&] {
                    for (ModelCommand const& command : commands)
                        model.executeAndCollect(command);
                });
            },
            [&] {
                CmUndoGuard guard(system.at(given), "Perform", {});
                for (ModelCommand const& command : commands)
                    guard.execAndAddUndoCommand(system.make(command));
            });
    }

    std::string inOpenGuard(std::string const& operation, Choices& choices) {
        if (!model.isOpen()) return "";
        ModelCommand const command = newCommand(choices);
        bool const isPerformed = operation == "AddPerformed";
        return both(
            [&] {
                model.within(GuardKind::Plain, UndoModel::none, PiExecParam::NOT_TRANSITION,
                    [&] { isPerformed ? model.collect(command) : model.execute(command); });
            },
            [&] {
                CmUndoGuard guard(nullptr, "", {});
                isPerformed ? guard.addUndoCommand(system.make(command)) : guard.execUndoCommand(system.make(command));
            });
    }

    std::string addEndCallback(Choices& choices) {
        std::optional<ModelCommand> command;
        if (choices.take(2) == 0) command = newCommand(choices);
        return both([&] { model.addEndCallback(command); }, [&] { system.addEndCallback(command); });
    }

    std::string moveTo(int stack, std::size_t goal) {
        auto const target = system.at(stack);
        return both(
            [&] { model.moveTo(stack, goal); }, [&] { target->moveTo(target->getBegin() + static_cast<long>(goal)); });
    }

    std::string open(int stack, Choices& choices) {
        auto const kind = static_cast<GuardKind>(choices.take(3));
        bool const hasStack = kind == GuardKind::Plain && choices.take(3) != 0;
        bool const isQuiet = kind == GuardKind::NoLog && choices.take(2) != 0;
        return enter(kind, hasStack ? stack : UndoModel::none, PiExecParam::NOT_TRANSITION, isQuiet);
    }

    std::string enter(GuardKind kind, int stack, PiExecParam::Transition transition, bool isQuiet) {
        if (quiet.size() > 4) return "";
        return both(
            [&] {
                model.enter(kind, stack, transition);
                quiet.push_back(isQuiet);
            },
            [&] { system.enter(kind, stack, transition, isQuiet); });
    }

    std::string close() {
        bool const isQuiet = quiet.back();
        quiet.pop_back();
        return both([&] { model.leave(isQuiet); }, [&] { system.leave(); });
    }

    // Some of the innermost guards close while an exception passes.
    std::string abort(std::size_t count) {
        count = std::min(count, quiet.size());
        if (count == 0) return "";
        std::vector<bool> const closed(quiet.rbegin(), quiet.rbegin() + static_cast<long>(count));
        quiet.resize(quiet.size() - count);
        return both(
            [&] {
                FirstError error;
                error.capture([] { throw Abort(); });
                for (bool const isQuiet : closed)
                    error.capture([&] { model.leave(isQuiet); });
                error.rethrow();
            },
            [&] {
                struct Unwinding {
                    UndoSystem& system;
                    std::size_t count;
                    ~Unwinding() {
                        while (count-- > 0)
                            system.leave();
                    }
                } const unwinding{system, count};
                throw Abort();
            });
    }

    std::string finishGuards() {
        while (!quiet.empty())
            if (std::string const difference = close(); !difference.empty()) return difference;
        while (model.isGuardActive()) {
            std::string difference = enter(GuardKind::Plain, UndoModel::none, PiExecParam::END_TRANSITION, false);
            if (difference.empty()) difference = close();
            if (!difference.empty()) return difference;
        }
        return "";
    }

    void calm() {
        static_cast<Circumstances&>(model) = {};
        static_cast<Circumstances&>(system) = {};
        model.nextNumber = system.nextNumber = lastNumber += 100;
    }

    template <class Step>
    static std::string outcomeOf(Step step) {
        try {
            step();
            return "done";
        } catch (ExAssertionFailed const&) {
            return Refused().what();
        } catch (ExProgramAborted const&) {
            return Aborted().what();
        } catch (std::exception const& error) {
            return error.what();
        }
    }

    template <class ForModel, class ForSystem>
    std::string both(ForModel forModel, ForSystem forSystem) {
        std::string expected = outcomeOf(forModel);
        expected += ", " + model.journal + stateOfModel();
        std::string actual = outcomeOf(forSystem);
        actual += ", " + system.journal + stateOfSystem();
        return actual == expected ? "" : "\"" + actual + "\" instead of \"" + expected + "\"";
    }

    static std::string flags(bool logging, bool active, bool isLong, bool ending) {
        return std::string(logging ? "logging " : "") + (active ? "active " : "") + (isLong ? "long " : "") +
               (ending ? "ending " : "");
    }
    std::string stateOfModel() const {
        std::string state = flags(model.isLogging(), model.isGuardActive(), model.isLong(), model.isEnding());
        for (UndoModel::History const& history : model.histories)
            state += std::to_string(history.current + 1) + "/" + std::to_string(history.steps.size()) + " ";
        return state;
    }
    std::string stateOfSystem() const {
        std::string state = flags(CmUndoGuard::isLogging(), CmUndoGuard::isGuardActive(),
            CmUndoGuard::isLongTransition(), CmUndoGuard::isLongTransitionEnding());
        for (auto const& stack : system.stacks)
            state += std::to_string(stack->getNbUndoableCommands() + 1) + "/" +
                     std::to_string(stack->getStackHeight()) + " " +
                     (stack->getState() == PiCommandStack::Idle ? "" : "busy ");
        return state;
    }

    LogRecorder const log; // of the errors that only a log sees
    UndoModel model;
    UndoSystem system;
    std::vector<bool> quiet; // of the guards that are open
    int lastNumber = 0;
};

TEST(CmUndoGuardModel, AgreesWithListsAndPositions) {
    tryRandomSteps<UndoMachine>(60, 400);
}

} // namespace
