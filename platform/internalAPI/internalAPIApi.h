#pragma once

/// Marks what libKOinternalAPI exports.
#if defined(_WIN32)
#if defined(KO_BUILDING_INTERNALAPI)
#define KO_INTERNALAPI_API __declspec(dllexport)
#else
#define KO_INTERNALAPI_API __declspec(dllimport)
#endif
#else
#define KO_INTERNALAPI_API __attribute__((visibility("default")))
#endif
