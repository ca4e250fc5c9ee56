#pragma once

#include <cstdlib>
#include <exception>
#include <gtest/gtest.h>
#include <iostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace KoTest {

/// One step of a random sequence: the index of an operation of the machine, and a number that determines its parameters.
struct RandomStep {
    std::size_t operation;
    unsigned number;
};

/// Derives choices from a number, one after another; all further ones are 0 when the number is used up.
class Choices {
public:
    explicit Choices(unsigned number) : _rest(number) {}
    /// @returns less than `count`.
    unsigned take(unsigned count) {
        unsigned const choice = _rest % count;
        _rest /= count;
        return choice;
    }

private:
    unsigned _rest;
};

/// Runs the steps on a new machine. @returns the first difference that it reports; empty if there is none.
template <class Machine>
std::string runSteps(std::vector<RandomStep> const& steps) {
    try {
        Machine machine;
        for (RandomStep const& step : steps)
            if (std::string const difference = machine.perform(step.operation, step.number); !difference.empty())
                return difference;
        return machine.finish();
    } catch (std::exception const& error) {
        return std::string("an exception: ") + error.what();
    }
}

/// Removes the steps that the difference does not need, then clears the bits of their numbers that it does not need.
template <class Machine>
std::vector<RandomStep> shortestSteps(std::vector<RandomStep> steps) {
    auto const replaceIfDifferent = [&](std::vector<RandomStep> const& simpler) {
        bool const stillDiffers = !runSteps<Machine>(simpler).empty();
        if (stillDiffers) steps = simpler;
        return stillDiffers;
    };
    for (std::size_t length = steps.size(); length > 0; length /= 2)
        for (std::size_t index = 0; index + length <= steps.size();) {
            std::vector<RandomStep> fewer = steps;
            auto const first = fewer.begin() + static_cast<long>(index);
            fewer.erase(first, first + static_cast<long>(length));
            if (!replaceIfDifferent(fewer)) index += length;
        }
    for (std::size_t index = 0; index < steps.size(); ++index)
        for (unsigned bit = 1; bit != 0; bit <<= 1) {
            std::vector<RandomStep> simpler = steps;
            if (std::exchange(simpler[index].number, simpler[index].number & ~bit) & bit) replaceIfDifferent(simpler);
        }
    return steps;
}

/// Drives machines through random sequences of steps. A machine performs each on the tested object and on a model of it:
///
///     static constexpr std::array operations{"Add", "Remove"};       // their names
///     std::string perform(std::size_t operation, unsigned number);    // the first difference; empty if there is none
///     std::string finish();                                           // likewise, after the last step
///
/// KO_TEST_SEED in the environment repeats a run; KO_TEST_EFFORT multiplies its length.
template <class Machine>
void tryRandomSteps(int sequences, int length) {
    char const* const given = std::getenv("KO_TEST_SEED");
    char const* const effort = std::getenv("KO_TEST_EFFORT");
    unsigned const seed = given ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : std::random_device()();
    std::cout << "KO_TEST_SEED=" << seed << std::endl;
    std::mt19937 random(seed);
    for (int left = sequences * (effort ? std::atoi(effort) : 1); left > 0; --left) {
        std::vector<RandomStep> steps;
        for (int index = 0; index < length; ++index) {
            std::size_t const operation = random() % Machine::operations.size();
            steps.push_back({operation, static_cast<unsigned>(random())});
        }
        if (runSteps<Machine>(steps).empty()) continue;
        steps = shortestSteps<Machine>(steps);
        std::string shown;
        for (RandomStep const& step : steps)
            shown += std::string("\n    ") + Machine::operations[step.operation] + " " + std::to_string(step.number);
        FAIL() << "KO_TEST_SEED=" << seed << ": " << runSteps<Machine>(steps) << "; the shortest sequence:" << shown;
    }
}

} // namespace KoTest
