#pragma once

#include "resmgt/liString.h"
#include "resmgt/resmgtApi.h"

#include <mutex>
#include <optional>

namespace Ko {

/// A whole number that the environment may set. It is read on first use and does not change after that. Any thread, also
/// before the constructors of static objects have run.
class KO_RESMGT_API EnvIntVar {
public:
    /// The texts are not copied and must live as long as the variable.
    /// @param source the name of the source that uses the variable, for messages.
    constexpr EnvIntVar(char const* name, int defaultValue, char const* source) noexcept
        : _name(name), _value(defaultValue), _source(source) {}

    /// The name of the environment variable.
    [[nodiscard]] char const* getName() const noexcept { return _name; }
    /// The value in the environment, else the default. A value that is not a whole number in the range of int is reported
    /// in the log, and the default is used.
    [[nodiscard]] int get();

private:
    std::optional<LiString> read();
    void report(LiString const& text) const;

    char const* _name;
    int _value;
    char const* _source;
    std::once_flag _wasRead;
};

} // namespace Ko
