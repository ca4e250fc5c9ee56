#pragma once

#include "base/baseApi.h"

#include <string>

namespace Ko {

/// Where failed assertions and impossible states are raised. Assertions are checked in every build.
class KO_BASE_API Assertions {
public:
    /// @throws ExAssertionFailed whose reason is `expression`.
    [[noreturn]] static void throwAssertionFailed(char const* file, int line, char const* expression);
    /// Writes the reason to the log (standard error before logging is set up) as a fatal error.
    /// @throws ExProgramAborted
    [[noreturn]] static void throwProgramAborted(char const* file, int line, std::string const& reason);

    /// Called with the line of text of every fatal error before it is raised; the one that is set replaces the one before:
    using FatalErrorHandler = void (*)(std::string const& text) noexcept;
    static void setFatalErrorHandler(FatalErrorHandler handler) noexcept;
};

/// The name under which one source file raises its assertions. The line is the caller's own unless one is given.
///
///     constexpr AssertionSource source{"framework\\command\\src\\cmCommandStack"};
///     source.require(height >= 2, "height >= 2");
class AssertionSource {
public:
    /// @param file is not copied and must live as long as the program.
    constexpr explicit AssertionSource(char const* file) : _file(file) {}

    /// As it was given.
    constexpr char const* file() const noexcept { return _file; }

    /// @throws ExAssertionFailed unless the condition holds.
    void require(bool condition, char const* expression, int line = __builtin_LINE()) const {
        if (!condition) [[unlikely]]
            Assertions::throwAssertionFailed(_file, line, expression);
    }
    /// @throws ExAssertionFailed always.
    [[noreturn]] void fail(char const* expression, int line = __builtin_LINE()) const {
        Assertions::throwAssertionFailed(_file, line, expression);
    }
    /// As `Assertions::throwProgramAborted`.
    [[noreturn]] void abort(std::string const& reason, int line = __builtin_LINE()) const {
        Assertions::throwProgramAborted(_file, line, reason);
    }

private:
    char const* _file;
};

} // namespace Ko
