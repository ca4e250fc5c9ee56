#include "resmgt/envIntVar.h"

#include "resmgt/lgPackageGroup.h"
#include "resmgt/osEnv.h"

#include <charconv>

namespace Ko {

int EnvIntVar::get() {
    std::call_once(_wasRead, [this] { read(); });
    return _value;
}

void EnvIntVar::read() {
    LiString text;
    if (!OsEnv::getVariable(_name, text)) return;
    int value = 0;
    char const* const end = text.data() + text.size();
    auto const [rest, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc() && rest == end) {
        _value = value;
        return;
    }
    LgPackageGroup::write("Environment", 1,
        LiString("The environment variable ") + _name + " is \"" + text +
            "\", which is not a whole number from -2147483648 to 2147483647; " + std::to_string(_value) + " is used (" +
            _source + ").");
}

} // namespace Ko
