#include "text/number.h"

#include <limits>
#include <locale>
#include <sstream>

namespace compositor {

// Not every standard library has std::from_chars for floating-point numbers.
template <>
std::optional<float> toNumber<float>(std::string_view text) {
    bool const startsLikeNumber = !text.empty() && text.find_first_of("-.0123456789") == 0;
    if (!startsLikeNumber || text.find_first_not_of("-+.eE0123456789") != text.npos) return std::nullopt;
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    // As double: some libraries refuse the smallest numbers of float.
    double value = 0.0;
    constexpr double largest = std::numeric_limits<float>::max();
    if (!(stream >> value) || !stream.eof() || value > largest || value < -largest) return std::nullopt;
    return static_cast<float>(value);
}

} // namespace compositor
