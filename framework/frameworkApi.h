#pragma once

/// Marks what libKOframework exports.
#if defined(_WIN32)
#if defined(KO_BUILDING_FRAMEWORK)
#define KO_FRAMEWORK_API __declspec(dllexport)
#else
#define KO_FRAMEWORK_API __declspec(dllimport)
#endif
#else
#define KO_FRAMEWORK_API __attribute__((visibility("default")))
#endif
