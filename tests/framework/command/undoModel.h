#pragma once

#include "resmgt/lgFirstError.h"
#include "tests/framework/command/undoWorld.h"

#include <algorithm>
#include <array>
#include <deque>
#include <limits>

namespace KoTest {

/// A minimal model of two histories and the undo guards: lists, positions, and one table. A violated precondition is
/// "refused", an impossible transition is "aborted".
class UndoModel : public UndoWorld<UndoModel> {
public:
    // ---- histories

    void log(int stack, ModelCommand const& command) {
        History& history = at(stack);
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
        requireNoOpenStep(stack);
        withoutLogging([&] {
            require(canUndo(stack));
            History& history = at(stack);
            ModelCommand const command = history.steps[history.current];
            replay(
                stack, [&] { unexecute(command); }, [&] { --history.current; },
                [&] {
                    erase(history, history.current);
                    history.current = 0;
                });
        });
    }
    void redo(int stack) {
        requireNoOpenStep(stack);
        withoutLogging([&] {
            History& history = at(stack);
            require(history.current + 1 < history.steps.size());
            ModelCommand const command = history.steps[++history.current];
            replay(
                stack, [&] { execute(command); }, [] {}, [&] { history.steps.resize(history.current--); });
        });
    }
    void moveTo(int stack, std::size_t goal) {
        History const& history = at(stack);
        requireNoOpenStep(stack);
        require(goal < history.steps.size());
        int const destination = history.steps[goal].number;
        auto const isThere = [&] { return goal < history.steps.size() && history.steps[goal].number == destination; };
        while (history.current > goal && isThere())
            undo(stack);
        while (history.current < goal && isThere())
            redo(stack);
    }
    void limit(int stack, std::size_t height) {
        History& history = at(stack);
        requireNoOpenStep(stack);
        require(height >= 2);
        history.maximum = height;
        if (history.steps.size() <= height) return;
        std::size_t const excess = history.steps.size() - height;
        if (excess > history.current) return clear(stack);
        erase(history, excess);
        history.current -= excess;
        hearChange(stack);
    }
    void removeLast(int stack) {
        requireNoOpenStep(stack);
        History& history = at(stack);
        if (history.steps.size() == 1) return;
        history.steps.pop_back();
        history.current = std::min(history.current, history.steps.size() - 1);
        hearChange(stack);
    }
    void clear(int stack) {
        requireNoOpenStep(stack);
        at(stack).steps.resize(1);
        at(stack).current = 0;
        hearChange(stack);
    }
    bool canUndo(int stack) const { return at(stack).current > 0; }
    std::size_t height(int stack) const { return at(stack).steps.size(); }
    std::string positionIn(int stack) const {
        return std::to_string(at(stack).current + 1) + "/" + std::to_string(height(stack));
    }

    // ---- guards

    bool isLogging() const { return attached != none && !isWithin(GuardKind::NoLog); }
    bool isGuardActive() const { return state != Out; }
    std::string flags() const {
        return flagsOf(isLogging(), isGuardActive(), state >= Begin, state == End || state == BetweenEnds);
    }
    std::size_t openGuards() const { return guards.size(); }

    void enter(GuardKind kind, int stack, Transition transition, bool isQuiet) {
        bool const isOutermost = guards.empty();
        State const next = isOutermost ? stateWithin(transition) : state;
        if (!isOutermost) require(transition == Ko::PiExecParam::NOT_TRANSITION || isRepeated(transition));
        if (state == Out) require(kind != GuardKind::NoRedo);
        int const stackThen = attached == none ? stack : attached;
        if (stack != none && !isWithin(GuardKind::NoLog) && !isWithin(GuardKind::NoRedo)) require(stack == stackThen);
        if (isOutermost && transition == Ko::PiExecParam::BEGIN_TRANSITION) ++longLevel;
        state = next;
        attached = stackThen;
        guards.push_back({kind, isQuiet});
    }
    void leave() {
        Ko::LgFirstError error("The model");
        if (guards.size() == 1) closeOutermost(error);
        guards.pop_back();
        error.rethrow();
    }
    void abort(std::size_t count) {
        Ko::LgFirstError error("The model");
        error.capture([] { throw std::runtime_error("abort"); });
        while (count-- > 0)
            error.capture([this] { leave(); });
        error.rethrow();
    }
    template <class Body>
    void inGuard(int stack, Body body) {
        within(GuardKind::Plain, stack, body);
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

private:
    enum State { Out, Within, Begin, BetweenBegins, Transit, BetweenTransits, End, BetweenEnds, Never };

    struct History {
        std::vector<ModelCommand> steps{ModelCommand()};
        std::size_t current = 0;
        std::size_t maximum = 1000;
    };
    struct Guard {
        GuardKind kind;
        bool isQuiet;
    };

    History& at(int stack) { return histories[static_cast<std::size_t>(stack)]; }
    History const& at(int stack) const { return histories[static_cast<std::size_t>(stack)]; }
    static void erase(History& history, std::size_t oldest) {
        history.steps.erase(history.steps.begin() + 1, history.steps.begin() + 1 + static_cast<long>(oldest));
    }
    static void require(bool condition) {
        if (!condition) throw std::runtime_error("refused");
    }
    void requireNoOpenStep(int stack) const {
        if (attached == stack && !collected.empty()) throw std::runtime_error("a step is open");
    }
    bool isWithin(GuardKind kind) const {
        return std::any_of(guards.begin(), guards.end(), [kind](Guard const& guard) { return guard.kind == kind; });
    }

    State stateWithin(Transition transition) const {
        // By the state outside the guards and the transition: none, begin, transition, end.
        static constexpr State table[8][4] = {{Within, Begin, Never, Never}, {Never, Never, Never, Never},
            {Never, Never, Never, Never}, {Begin, Begin, Transit, End}, {Never, Never, Never, Never},
            {Transit, Never, Transit, End}, {Never, Never, Never, Never}, {End, Never, Never, End}};
        State const next = table[state][transition];
        if (next == Never) throw std::runtime_error("aborted");
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
    void within(GuardKind kind, int stack, Body body) {
        enter(kind, stack, Ko::PiExecParam::NOT_TRANSITION, false);
        Ko::LgFirstError error("The model");
        error.capture(body);
        error.capture([this] { leave(); });
        error.rethrow();
    }
    template <class Body>
    void withoutLogging(Body body) {
        within(GuardKind::NoLog, none, body);
    }

    template <class Step, class Success, class Failure>
    void replay(int stack, Step step, Success success, Failure failure) {
        Ko::LgFirstError error("The model");
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

    void closeOutermost(Ko::LgFirstError& error) {
        State after = state == Within ? Out : static_cast<State>(state + 1);
        int const longLevelAfter = longLevel - (state == End ? 1 : 0);
        if (state == End && longLevelAfter == 0) after = Out;
        while (!endCallbacks.empty()) {
            std::optional<ModelCommand> const command = endCallbacks.front();
            endCallbacks.pop_front();
            error.capture([&] { hearEnd(command); });
        }
        if (after == Out) flush(error);
        state = after;
        longLevel = longLevelAfter;
    }

    void flush(Ko::LgFirstError& error) {
        if (attached != none && !isLogging())
            error.capture([&] {
                require(collected.empty());
                if (!guards.front().isQuiet) tellProcessed(attached);
            });
        while (!collected.empty()) {
            ModelCommand macro{++lastMacro, std::exchange(collected, {})};
            error.capture([&] { log(attached, macro); });
        }
        attached = none;
    }

    void tellProcessed(int stack) {
        Ko::LgFirstError error("The model");
        error.capture([&] { hearProcessed(stack); });
        error.capture([&] { hearChange(stack); });
        error.rethrow();
    }

    std::array<History, 2> histories;
    State state = Out;
    int longLevel = 0;
    int attached = none;
    int lastMacro = std::numeric_limits<int>::max() / 2;
    std::vector<Guard> guards;
    std::vector<ModelCommand> collected;
    std::deque<std::optional<ModelCommand>> endCallbacks;
};

} // namespace KoTest
