#include "framework/command/cmUndoGuard.h"
#include "framework/command/cmUndoGuardNoLog.h"
#include "tests/support/recordingCommand.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <memory>
#include <random>

namespace {

using namespace Ko;
using namespace KoTest;

// The document is a number; a command adds its amount to it. The model keeps, for every undo step, the document's value
// after it, and an index: the simplest thing that a history can be.
class AddCommand : public CmCommand {
public:
    AddCommand(long& document, long amount) : _document(document), _amount(amount) {}
    LiString getDescription() const override { return "Add"; }

protected:
    void executeInternal() override { _document += _amount; }
    void unexecuteInternal() override { _document -= _amount; }

private:
    long& _document;
    long _amount;
};

class Model {
public:
    void log(long value, std::size_t maximum) {
        states.resize(current + 1);
        states.push_back(value);
        current = states.size() - 1;
        if (states.size() > maximum) dropOldest(1);
    }

    // The bottom then stands for what the dropped commands had made.
    void dropOldest(std::size_t count) {
        states.erase(states.begin(), states.begin() + static_cast<long>(count));
        current -= count;
    }

    // What is not logged moves every state that undo or redo can reach along with it.
    void shift(long amount) {
        for (long& state : states)
            state += amount;
    }

    std::vector<long> states{0};
    std::size_t current = 0;
};

enum class Operation { Execute, Log, Undo, Redo, Open, OpenQuiet, Close, Begin, Step, End, Limit, Clear };
constexpr int operations = 12;

// Performs operations on stack, guards and model alike, and tells the first difference. Undo and redo happen outside of
// guards and long transactions, as a user's do.
class Machine {
public:
    std::string perform(Operation operation, int amount) {
        switch (operation) {
        case Operation::Execute:
            return execute(amount);
        case Operation::Log:
            if (isIdle()) {
                stack->executeAndLog(RCShdPtr<AddCommand>::create(document, amount));
                model.log(document, maximum);
            }
            break;
        case Operation::Undo:
            if (isIdle() && stack->canUndo()) {
                stack->undo();
                --model.current;
            }
            break;
        case Operation::Redo:
            if (isIdle() && stack->canRedo()) {
                stack->redo();
                ++model.current;
            }
            break;
        case Operation::Open:
            if (guards.size() < 5) open<CmUndoGuard>(stack, "Group", PiExecParam());
            break;
        case Operation::OpenQuiet:
            if (!guards.empty() && guards.size() < 5) open<CmUndoGuardNoLog>(true);
            break;
        case Operation::Close:
            close();
            break;
        case Operation::Begin:
            transition(isIdle(), PiExecParam::BEGIN_TRANSITION, amount);
            break;
        case Operation::Step:
            transition(guards.empty() && inTransaction, PiExecParam::TRANSITION, amount);
            break;
        case Operation::End:
            transition(guards.empty() && inTransaction, PiExecParam::END_TRANSITION, amount);
            break;
        case Operation::Limit:
            limit(static_cast<std::size_t>(2 + amount % 20));
            break;
        case Operation::Clear:
            if (isIdle()) {
                stack->clear();
                model.states = {document};
                model.current = 0;
            }
            break;
        }
        return compare();
    }

    std::string finish() {
        while (!guards.empty())
            close();
        if (inTransaction) transition(true, PiExecParam::END_TRANSITION, 0);
        while (stack->canUndo()) {
            stack->undo();
            --model.current;
            if (std::string const difference = compare(); !difference.empty()) return difference;
        }
        return "";
    }

private:
    using Guard = std::unique_ptr<PiUndoGuardProtocol>;

    bool isIdle() const { return guards.empty() && !inTransaction; }

    template <class GuardType, class... Args>
    void open(Args&&... args) {
        guards.push_back(std::make_unique<GuardType>(args...));
        quiet.push_back(std::is_same_v<GuardType, CmUndoGuardNoLog>);
    }

    void close() {
        if (guards.empty()) return;
        guards.pop_back();
        quiet.pop_back();
        if (isIdle()) logCollected();
    }

    void logCollected() {
        if (std::exchange(hasCollected, false)) model.log(document, maximum);
    }

    std::string execute(int amount) {
        if (guards.empty()) return "";
        CmUndoGuard guard(nullptr, "", {});
        guard.execAndAddUndoCommand(RCShdPtr<AddCommand>::create(document, amount));
        if (std::find(quiet.begin(), quiet.end(), true) == quiet.end())
            hasCollected = true;
        else
            model.shift(amount);
        return compare();
    }

    void transition(bool possible, PiExecParam::Transition parameter, int amount) {
        if (!possible) return;
        {
            CmUndoGuard guard(stack, "Drag", parameter);
            guard.execAndAddUndoCommand(RCShdPtr<AddCommand>::create(document, amount));
            hasCollected = true;
        }
        inTransaction = parameter != PiExecParam::END_TRANSITION;
        if (!inTransaction) logCollected();
    }

    void limit(std::size_t height) {
        if (!isIdle()) return;
        stack->setMaxStackHeight(static_cast<int>(height));
        maximum = height;
        if (model.states.size() <= height) return;
        std::size_t const excess = model.states.size() - height;
        if (excess > model.current) {
            model.states = {document};
            model.current = 0;
            return;
        }
        model.dropOldest(excess);
    }

    std::string compare() {
        if (!isIdle())
            return stack->getNbUndoableCommands() == static_cast<int>(model.current) ? "" : "logged too early";
        if (stack->getStackHeight() != static_cast<int>(model.states.size()))
            return "height " + std::to_string(stack->getStackHeight()) + ", not " + std::to_string(model.states.size());
        if (stack->getNbUndoableCommands() != static_cast<int>(model.current)) return "cursor";
        return document == model.states[model.current] ? "" : "document";
    }

    long document = 0;
    RCShdPtr<CmCommandStack> stack = RCShdPtr<CmCommandStack>::create();
    std::size_t maximum = 1000;
    Model model;
    std::vector<Guard> guards;
    std::vector<bool> quiet;
    bool inTransaction = false;
    bool hasCollected = false;
};

struct Step {
    Operation operation;
    int amount;
};

std::string run(std::vector<Step> const& steps) {
    Machine machine;
    for (Step const& step : steps)
        if (std::string const difference = machine.perform(step.operation, step.amount); !difference.empty())
            return difference;
    return machine.finish();
}

// Takes away what is not needed for the failure.
std::vector<Step> shortest(std::vector<Step> steps) {
    for (std::size_t length = steps.size() / 2; length > 0; length /= 2)
        for (std::size_t index = 0; index + length <= steps.size();) {
            std::vector<Step> fewer = steps;
            fewer.erase(fewer.begin() + static_cast<long>(index), fewer.begin() + static_cast<long>(index + length));
            if (run(fewer).empty())
                index += length;
            else
                steps = fewer;
        }
    return steps;
}

TEST(CmUndoGuardModel, AgreesWithAListAndAnIndex) {
    char const* const given = std::getenv("KO_TEST_SEED");
    unsigned const seed = given ? static_cast<unsigned>(std::atol(given)) : std::random_device()();
    SCOPED_TRACE("KO_TEST_SEED=" + std::to_string(seed));
    std::cout << "seed " << seed << "\n";
    std::mt19937 random(seed);
    constexpr int rounds = 20;
    for (int round = 0; round < rounds; ++round) {
        std::vector<Step> steps;
        for (int index = 0; index < 10000 / rounds; ++index)
            steps.push_back({static_cast<Operation>(random() % operations), static_cast<int>(random() % 100)});
        std::string const difference = run(steps);
        if (difference.empty()) continue;
        std::string shown;
        for (Step const& step : shortest(steps))
            shown += " " + std::to_string(static_cast<int>(step.operation)) + "(" + std::to_string(step.amount) + ")";
        FAIL() << difference << "; shortest sequence:" << shown;
    }
}

} // namespace
