#pragma once

/// Marks what libKOscriptingAPI exports.
#if defined(_WIN32)
#if defined(KO_BUILDING_SCRIPTINGAPI)
#define KO_SCRIPTINGAPI_API __declspec(dllexport)
#else
#define KO_SCRIPTINGAPI_API __declspec(dllimport)
#endif
#else
#define KO_SCRIPTINGAPI_API __attribute__((visibility("default")))
#endif
