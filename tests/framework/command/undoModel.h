#pragma once

#include "framework/command/cmEx.h"
#include "pluginAPI/piExecParam.h"

#include <algorithm>
#include <array>
#include <deque>
#include <exception>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace KoTest {

/// What commands and listeners throw, a precondition that does not hold, and a transition that there is not.
struct CommandTrouble : std::runtime_error {
    CommandTrouble() : runtime_error("a command") {}
};
struct ListenerTrouble : std::runtime_error {
    ListenerTrouble() : runtime_error("a listener") {}
};
struct Refused : std::runtime_error {
    Refused() : runtime_error("refused") {}
};
struct Aborted : std::runtime_error {
    Aborted() : runtime_error("aborted") {}
};
struct Abort : std::runtime_error {
    Abort() : runtime_error("abort") {}
};

/// What the listeners of changes do while a step runs; the last two do it once.
enum class Reaction { None, Throw, Execute, Undo };

/// What a step meets, and what happens in it: "+n" and "-n" for a command that is executed and unexecuted, "!" where it
/// fails, "p" and "c" with the stack's number for listeners of processing and of changes, "e" for an end of guards.
struct Circumstances {
    int callsUntilFailure = 0; // 0: none fails
    bool failureIsExpected = false;
    Reaction reaction = Reaction::None;
    int nextNumber = 0; // of what a listener executes
    std::string journal;

    void callCommand(char sign, int number) {
        bool const fails = callsUntilFailure > 0 && --callsUntilFailure == 0;
        journal += sign + std::to_string(number) + (fails ? "! " : " ");
        if (fails && failureIsExpected) throw Ko::CmEx::ExCommandFailure("model", 1);
        if (fails) throw CommandTrouble();
    }
    void callListener(char kind, int stack) {
        journal += kind + std::to_string(stack) + " ";
        if (reaction == Reaction::Throw) throw ListenerTrouble();
    }
};

/// Runs steps one after the other, whatever they throw, and passes on what the first of them threw.
class FirstError {
public:
    template <class Step>
    void capture(Step step) {
        try {
            step();
        } catch (...) {
            if (!_first) _first = std::current_exception();
        }
    }
    void rethrow() const {
        if (_first) std::rethrow_exception(_first);
    }

private:
    std::exception_ptr _first;
};

/// A command: a number, or several that are one.
struct ModelCommand {
    int number = 0;
    std::vector<ModelCommand> parts{};
    bool isSkippedOnRedo = false;
};

/// What a guard does to the commands within it.
enum class GuardKind { Plain, NoLog, NoRedo };

/// Two histories and the guards over them, as simply as they can be: lists, positions, and one table.
class UndoModel : public Circumstances {
public:
    static constexpr int none = -1;
    using Transition = Ko::PiExecParam::Transition;

    struct History {
        std::vector<ModelCommand> steps{ModelCommand()};
        std::size_t current = 0;
        std::size_t maximum = 1000;
    };

    // ---- histories

    void log(int stack, ModelCommand const& command) {
        History& history = histories[index(stack)];
        history.steps.resize(history.current + 1);
        history.steps.push_back(command);
        if (history.steps.size() > history.maximum) history.steps.erase(history.steps.begin() + 1);
        history.current = history.steps.size() - 1;
        tellProcessed(stack);
    }

    void executeAndLog(int stack, ModelCommand const& command) {
        withoutLogging([&] {
            execute(command);
            log(stack, command);
        });
    }

    void undo(int stack) {
        withoutLogging([&] {
            History& history = histories[index(stack)];
            require(history.current > 0);
            ModelCommand const command = history.steps[history.current];
            replay(
                stack, [&] { unexecute(command); }, [&] { --history.current; },
                [&] {
                    history.steps.erase(history.steps.begin() + 1, at(history, history.current + 1));
                    history.current = 0;
                });
        });
    }

    void redo(int stack) {
        withoutLogging([&] {
            History& history = histories[index(stack)];
            require(history.current + 1 < history.steps.size());
            ModelCommand const command = history.steps[++history.current];
            replay(
                stack, [&] { execute(command); }, [] {}, [&] { history.steps.resize(history.current--); });
        });
    }

    void moveTo(int stack, std::size_t goal) {
        History const& history = histories[index(stack)];
        int const destination = history.steps[goal].number;
        auto const isThere = [&] { return goal < history.steps.size() && history.steps[goal].number == destination; };
        while (history.current > goal && isThere())
            undo(stack);
        while (history.current < goal && isThere())
            redo(stack);
    }

    void limit(int stack, std::size_t height) {
        History& history = histories[index(stack)];
        require(height >= 2);
        history.maximum = height;
        if (history.steps.size() <= height) return;
        std::size_t const excess = history.steps.size() - height;
        if (excess > history.current) return clear(stack);
        history.steps.erase(history.steps.begin() + 1, at(history, 1 + excess));
        history.current -= excess;
        callListenerOfChanges(stack);
    }

    void removeLast(int stack) {
        History& history = histories[index(stack)];
        if (history.steps.size() == 1) return;
        history.steps.pop_back();
        history.current = std::min(history.current, history.steps.size() - 1);
        callListenerOfChanges(stack);
    }

    void clear(int stack) {
        History& history = histories[index(stack)];
        history.steps.resize(1);
        history.current = 0;
        callListenerOfChanges(stack);
    }

    // ---- guards

    bool isLogging() const { return attached != none && !isWithin(GuardKind::NoLog); }
    bool isGuardActive() const { return state != Out; }
    bool isLong() const { return state >= Begin; }
    bool isEnding() const { return state == End || state == BetweenEnds; }
    bool isOpen() const { return !guards.empty(); }

    void enter(GuardKind kind, int stack, Transition transition) {
        bool const isOutermost = guards.empty();
        State const next = isOutermost ? stateWithin(transition) : state;
        if (!isOutermost) require(transition == Ko::PiExecParam::NOT_TRANSITION || isRepeated(transition));
        if (state == Out) require(kind != GuardKind::NoRedo);
        int const stackThen = attached == none ? stack : attached;
        if (stack != none && !isWithin(GuardKind::NoLog) && !isWithin(GuardKind::NoRedo)) require(stack == stackThen);
        if (isOutermost && transition == Ko::PiExecParam::BEGIN_TRANSITION) ++longLevel;
        state = next;
        attached = stackThen;
        guards.push_back(kind);
    }

    void leave(bool quiet) {
        FirstError error;
        if (guards.size() == 1) closeOutermost(quiet, error);
        guards.pop_back();
        error.rethrow();
    }

    /// Performs something inside a guard of its own.
    template <class Body>
    void within(GuardKind kind, int stack, Transition transition, Body body) {
        enter(kind, stack, transition);
        FirstError error;
        error.capture(body);
        error.capture([this] { leave(false); });
        error.rethrow();
    }

    void collect(ModelCommand command) {
        if (!isLogging()) return;
        command.isSkippedOnRedo = isWithin(GuardKind::NoRedo);
        collected.push_back(command);
    }
    void executeAndCollect(ModelCommand const& command) {
        execute(command);
        collect(command);
    }
    void execute(ModelCommand const& command) {
        if (command.isSkippedOnRedo) return;
        if (command.parts.empty()) return callCommand('+', command.number);
        for (ModelCommand const& part : command.parts)
            execute(part);
    }

    /// @param command what the callback executes when the outermost guard closes.
    void addEndCallback(std::optional<ModelCommand> const& command) { endCallbacks.push_back(command); }

    std::array<History, 2> histories;

private:
    enum State { Out, Within, Begin, BetweenBegins, Transit, BetweenTransits, End, BetweenEnds, Never };

    static std::size_t index(int stack) { return static_cast<std::size_t>(stack); }
    static std::vector<ModelCommand>::iterator at(History& history, std::size_t position) {
        return history.steps.begin() + static_cast<long>(position);
    }
    static void require(bool condition) {
        if (!condition) throw Refused();
    }
    bool isWithin(GuardKind kind) const { return std::find(guards.begin(), guards.end(), kind) != guards.end(); }

    State stateWithin(Transition transition) const {
        // From the state outside of guards, by the transition: none, begin, transition, end.
        static constexpr State table[8][4] = {{Within, Begin, Never, Never}, {Never, Never, Never, Never},
            {Never, Never, Never, Never}, {Begin, Begin, Transit, End}, {Never, Never, Never, Never},
            {Transit, Never, Transit, End}, {Never, Never, Never, Never}, {End, Never, Never, End}};
        State const next = table[state][transition];
        if (next == Never) throw Aborted();
        return next;
    }
    bool isRepeated(Transition transition) const {
        return (state == Begin && transition == Ko::PiExecParam::BEGIN_TRANSITION) ||
               (state == Transit && transition == Ko::PiExecParam::TRANSITION) ||
               (state == End && transition == Ko::PiExecParam::END_TRANSITION);
    }

    void unexecute(ModelCommand const& command) {
        if (command.parts.empty()) return callCommand('-', command.number);
        for (auto part = command.parts.rbegin(); part != command.parts.rend(); ++part)
            unexecute(*part);
    }

    template <class Body>
    void withoutLogging(Body body) {
        within(GuardKind::NoLog, none, Ko::PiExecParam::NOT_TRANSITION, body);
    }

    template <class Step, class Success, class Failure>
    void replay(int stack, Step step, Success success, Failure failure) {
        FirstError error;
        try {
            step();
            success();
        } catch (Ko::CmEx::ExCommandFailure const&) {
            failure();
        } catch (...) {
            failure();
            error.capture([] { throw; });
        }
        error.capture([&] { tellProcessed(stack); });
        error.rethrow();
    }

    void closeOutermost(bool quiet, FirstError& error) {
        State after = state == Within ? Out : static_cast<State>(state + 1);
        int const longLevelAfter = longLevel - (state == End ? 1 : 0);
        if (state == End && longLevelAfter == 0) after = Out;
        callEndCallbacks(error);
        if (after == Out) flush(quiet, error);
        state = after;
        longLevel = longLevelAfter;
    }

    void callEndCallbacks(FirstError& error) {
        while (!endCallbacks.empty()) {
            std::optional<ModelCommand> const command = endCallbacks.front();
            endCallbacks.pop_front();
            journal += "e ";
            if (command)
                error.capture([&] {
                    within(
                        GuardKind::Plain, none, Ko::PiExecParam::NOT_TRANSITION, [&] { executeAndCollect(*command); });
                });
        }
    }

    void flush(bool quiet, FirstError& error) {
        if (attached != none && !isLogging())
            error.capture([&] {
                require(collected.empty());
                if (!quiet) tellProcessed(attached);
            });
        while (!collected.empty()) {
            ModelCommand macro{++lastMacro, std::exchange(collected, {})};
            error.capture([&] { log(attached, macro); });
        }
        attached = none;
    }

    void tellProcessed(int stack) {
        FirstError error;
        error.capture([&] { callListener('p', stack); });
        error.capture([&] { callListenerOfChanges(stack); });
        error.rethrow();
    }

    void callListenerOfChanges(int stack) {
        callListener('c', stack);
        Reaction const once = std::exchange(reaction, Reaction::None);
        if (once == Reaction::Execute)
            within(
                GuardKind::Plain, stack, Ko::PiExecParam::NOT_TRANSITION, [&] { executeAndCollect({++nextNumber}); });
        if (once == Reaction::Undo && histories[index(stack)].current > 0) undo(stack);
    }

    State state = Out;
    int longLevel = 0;
    int attached = none;
    int lastMacro = std::numeric_limits<int>::max() / 2;
    std::vector<GuardKind> guards;
    std::vector<ModelCommand> collected;
    std::deque<std::optional<ModelCommand>> endCallbacks;
};

} // namespace KoTest
