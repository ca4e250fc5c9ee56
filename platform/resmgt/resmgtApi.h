#pragma once

/// Marks what libKOresmgt exports.
#if defined(_WIN32)
#if defined(KO_BUILDING_RESMGT)
#define KO_RESMGT_API __declspec(dllexport)
#else
#define KO_RESMGT_API __declspec(dllimport)
#endif
#else
#define KO_RESMGT_API __attribute__((visibility("default")))
#endif
