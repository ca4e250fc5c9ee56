#pragma once

/// Marks what libKObase exports.
#if defined(_WIN32)
#if defined(KO_BUILDING_BASE)
#define KO_BASE_API __declspec(dllexport)
#else
#define KO_BASE_API __declspec(dllimport)
#endif
#else
#define KO_BASE_API __attribute__((visibility("default")))
#endif
