#include "resmgt/envIntVar.h"

#include "resmgt/lgPackageGroup.h"
#include "resmgt/osEnv.h"

#include <charconv>

namespace Ko {

int EnvIntVar::get() {
    std::optional<LiString> malformed;
    std::call_once(_wasRead, [&] { malformed = read(); });
    // After the call_once: a sink of the log may ask for the value, and would wait for itself.
    if (malformed) report(*malformed);
    return _value;
}

// The text that is no whole number, if it is none.
std::optional<LiString> EnvIntVar::read() {
    LiString text;
    if (!OsEnv::getVariable(_name, text)) return std::nullopt;
    int value = 0;
    char const* const end = text.data() + text.size();
    auto const [rest, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || rest != end) return text;
    _value = value;
    return std::nullopt;
}

void EnvIntVar::report(LiString const& text) const {
    LgPackageGroup::write("Environment", 1,
        LiString("The environment variable ") + _name + " is \"" + text +
            "\", which is not a whole number from -2147483648 to 2147483647; " + std::to_string(_value) + " is used (" +
            _source + ").");
}

} // namespace Ko
