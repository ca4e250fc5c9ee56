#pragma once

/// Marks what libKOprimitives exports.
#if defined(_WIN32)
#if defined(KO_BUILDING_PRIMITIVES)
#define KO_PRIMITIVES_API __declspec(dllexport)
#else
#define KO_PRIMITIVES_API __declspec(dllimport)
#endif
#else
#define KO_PRIMITIVES_API __attribute__((visibility("default")))
#endif
