#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace compositor {

/// Reads a number, independently of the locale. @returns nothing unless the whole text is a number that fits.
template <class Number>
[[nodiscard]] std::optional<Number> toNumber(std::string_view text) {
    Number value{};
    auto const [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || rest != text.data() + text.size()) return std::nullopt;
    return value;
}

/// Decimal, with or without an exponent; not infinity or NaN.
template <>
std::optional<float> toNumber<float>(std::string_view text);

/// The shortest text that `toNumber` reads as the same number.
template <class Number>
[[nodiscard]] std::string toText(Number number) {
    char buffer[64];
    return {buffer, std::to_chars(buffer, buffer + sizeof buffer, number).ptr};
}

} // namespace compositor
