#pragma once

/// Marks what libKOpluginAPI exports.
#if defined(_WIN32)
#if defined(KO_BUILDING_PLUGINAPI)
#define KO_PLUGINAPI_API __declspec(dllexport)
#else
#define KO_PLUGINAPI_API __declspec(dllimport)
#endif
#else
#define KO_PLUGINAPI_API __attribute__((visibility("default")))
#endif
