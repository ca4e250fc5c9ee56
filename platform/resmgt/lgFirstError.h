#pragma once

#include "resmgt/resmgtApi.h"

#include <exception>

namespace Ko {

/// Keeps the first exception of several steps, all of which have to run:
///
///     LgFirstError error("A listener");
///     for (Listener* listener : listeners)
///         error.capture([&] { listener->changed(); });
///     error.rethrow();
///
/// Every further exception is written to the log at level 0, after the context: "A listener failed: ...".
class KO_RESMGT_API LgFirstError {
public:
    /// @param context is not copied.
    explicit LgFirstError(char const* context) noexcept : _context(context) {}
    LgFirstError(LgFirstError const&) = delete;
    LgFirstError& operator=(LgFirstError const&) = delete;

    /// Runs a step, and keeps or logs its exception.
    template <class Step>
    void capture(Step step) noexcept {
        try {
            step();
        } catch (...) {
            keep();
        }
    }

    /// Throws the exception that was kept, if any.
    void rethrow() {
        if (_first) [[unlikely]]
            std::rethrow_exception(_first);
    }
    /// Writes the exception that was kept, if any, to the log.
    void log() noexcept {
        if (_first) [[unlikely]]
            write(_first);
    }
    /// For destructors: throws the exception that was kept, or logs it while another one is passing through the scope.
    /// @param exceptionsAtEntry `std::uncaught_exceptions()` at the begin of the scope.
    void finish(int exceptionsAtEntry) {
        if (!_first) [[likely]]
            return;
        if (std::uncaught_exceptions() > exceptionsAtEntry)
            log();
        else
            rethrow();
    }

private:
    void keep() noexcept;
    void write(std::exception_ptr const& error) const noexcept;

    char const* _context;
    std::exception_ptr _first;
};

} // namespace Ko
