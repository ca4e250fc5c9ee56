#pragma once

#include "base/inPackageInit.h"

#include <exception>

namespace Ko {

/// Throws the current exception again with the package's name before its reason. An exception of the framework keeps its
/// type; any other becomes an `InInitEx` with its text, or with the name of its type where it has no text.
/// @param attempt the attempt that failed: "initialised".
[[noreturn]] void rethrowWithPackage(InPackageInit const& package, char const* attempt);

/// Runs a hook of a package, as `hook(package)`.
/// @throws as `rethrowWithPackage`.
template <class Hook>
void callHook(InPackageInit& package, char const* attempt, Hook hook) {
    try {
        hook(package);
    } catch (...) {
        rethrowWithPackage(package, attempt);
    }
}

/// Keeps the first of several exceptions, to pass it on. The others are written to standard error.
class InFirstError {
public:
    /// Starts with the current exception, if there is one.
    InFirstError() noexcept : _first(std::current_exception()) {}

    /// Adds the current exception; called from its handler.
    void add();
    /// Throws the first exception, if there is one.
    void rethrow() const;

private:
    std::exception_ptr _first;
};

} // namespace Ko
