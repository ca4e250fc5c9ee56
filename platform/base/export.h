#pragma once

// Every public header includes this one, by its library's own `...Api.h`.
#if (defined(_MSVC_LANG) ? _MSVC_LANG : __cplusplus) < 202002L
#error "libKOframework needs C++20: compile with -std=c++20 or newer."
#endif

/// How a shared library exports a name, and how its users import it: the one place where a public header depends on the
/// system. Each library's own `...Api.h` picks between the two.
#if defined(_WIN32)
#define KO_EXPORT __declspec(dllexport)
#define KO_IMPORT __declspec(dllimport)
#else
#define KO_EXPORT __attribute__((visibility("default")))
#define KO_IMPORT __attribute__((visibility("default")))
#endif
