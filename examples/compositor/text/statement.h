#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace compositor {

/// A fault in what a user has entered. The message is for users and does not say where it was entered.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A word and its arguments: the input of an action, which are its description and the values that it takes.
struct Statement {
    int line = 0;
    std::vector<std::string> words;

    bool operator==(Statement const&) const = default;

    [[nodiscard]] std::string const& word() const { return words.front(); }
    [[nodiscard]] std::size_t arguments() const { return words.size() - 1; }
    /// An argument, counted from 1, as a whole number.
    /// @throws InputError when it is none, or outside the range; `number` likewise.
    [[nodiscard]] int integer(std::size_t index, int minimum, int maximum) const;
    [[nodiscard]] float number(std::size_t index, float minimum, float maximum) const;
};

/// The text in quotation marks, for messages.
[[nodiscard]] std::string quoted(std::string const& text);

} // namespace compositor
