#pragma once

#include "image/picture.h"

#include <cstdio>
#include <exception>
#include <png.h>
#include <utility>

namespace compositor {

/// Calls into libpng, which reports errors by `longjmp`. `run` makes the calls; its frames have no objects with destructors.
/// Callbacks use `keep`, since no exception may pass through libpng.
class PngCalls {
public:
    /// @throws ImageError with the message of libpng, or the exception of a callback.
    template <class Call>
    void run(png_structp png, Call const call) {
        if (succeeds(png, call)) return;
        if (_thrown) std::rethrow_exception(std::exchange(_thrown, nullptr));
        throw ImageError(_message);
    }

    /// Runs the work of a callback. When it throws, keeps the exception and leaves libpng. The error pointer of `png` must be
    /// a `PngCalls`.
    template <class Work>
    static void keep(png_structp png, Work const& work) {
        auto* const calls = static_cast<PngCalls*>(png_get_error_ptr(png));
        if (!calls->keepThrown(work)) png_error(png, "a callback has failed");
    }

    static void onError(png_structp png, png_const_charp message) {
        auto* const calls = static_cast<PngCalls*>(png_get_error_ptr(png));
        std::snprintf(calls->_message, sizeof calls->_message, "%s", message);
        png_longjmp(png, 1);
    }
    static void onWarning(png_structp, png_const_charp) {}

private:
    template <class Call>
    static bool succeeds(png_structp png, Call const& call) {
        if (setjmp(png_jmpbuf(png)) != 0) return false;
        call();
        return true;
    }
    template <class Work>
    bool keepThrown(Work const& work) noexcept {
        try {
            work();
            return true;
        } catch (...) {
            _thrown = std::current_exception();
            return false;
        }
    }

    std::exception_ptr _thrown;
    char _message[128] = "";
};

} // namespace compositor
