#pragma once

#include "base/baseApi.h"

#include <string>

namespace Ko {

/// Raises failed assertions and impossible states. Assertions are checked in every build.
class KO_BASE_API Assertions {
public:
    /// Raises a failed assertion.
    /// @throws ExAssertionFailed with `expression` as its reason.
    [[noreturn]] static void throwAssertionFailed(char const* file, int line, char const* expression);
    /// Writes the reason to the log (standard error before logging is set up) as a fatal error.
    /// @throws ExProgramAborted
    [[noreturn]] static void throwProgramAborted(char const* file, int line, std::string const& reason);

    /// Called with the text of a fatal error before the error is raised.
    using FatalErrorHandler = void (*)(std::string const& text) noexcept;
    /// Replaces the handler of fatal errors. Any thread.
    static void setFatalErrorHandler(FatalErrorHandler handler) noexcept;
};

/// The name of one source file in its assertions. The line is the caller's own unless one is given.
///
///     constexpr AssertionSource source{"framework\\command\\src\\cmCommandStack"};
///     source.require(height >= 2, "height >= 2");
class AssertionSource {
public:
    /// @param file is not copied and must live as long as the program.
    constexpr explicit AssertionSource(char const* file) : _file(file) {}

    /// The name of the source.
    [[nodiscard]] constexpr char const* file() const noexcept { return _file; }

    /// Checks a condition.
    /// @throws ExAssertionFailed if it is false.
    void require(bool condition, char const* expression, int line = __builtin_LINE()) const {
        if (!condition) [[unlikely]]
            Assertions::throwAssertionFailed(_file, line, expression);
    }
    /// Raises a failed assertion.
    /// @throws ExAssertionFailed
    [[noreturn]] void fail(char const* expression, int line = __builtin_LINE()) const {
        Assertions::throwAssertionFailed(_file, line, expression);
    }
    /// Raises an impossible state, as `Assertions::throwProgramAborted`.
    /// @throws ExProgramAborted
    [[noreturn]] void abort(std::string const& reason, int line = __builtin_LINE()) const {
        Assertions::throwProgramAborted(_file, line, reason);
    }

private:
    char const* _file;
};

} // namespace Ko
