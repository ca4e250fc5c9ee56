#include "text/statement.h"

#include "text/number.h"

#include <sstream>

namespace compositor {

namespace {

template <class Number>
Number parse(std::string const& text, Number minimum, Number maximum, char const* kind) {
    auto const value = toNumber<Number>(text);
    if (value && *value >= minimum && *value <= maximum) return *value;
    std::ostringstream message;
    message << '"' << text << "\" is not a " << kind << " from " << minimum << " to " << maximum;
    throw InputError(message.str());
}

} // namespace

int Statement::integer(std::size_t index, int minimum, int maximum) const {
    return parse(words[index], minimum, maximum, "whole number");
}

float Statement::number(std::size_t index, float minimum, float maximum) const {
    return parse(words[index], minimum, maximum, "number");
}

std::string quoted(std::string const& text) {
    return "\"" + text + "\"";
}

} // namespace compositor
