#pragma once

/// Marks what the shared library `Solidra` exports; all else in it is hidden.
#if defined(_WIN32)
#if defined(SOLIDRA_BUILD)
#define SOLIDRA_API __declspec(dllexport)
#else
#define SOLIDRA_API __declspec(dllimport)
#endif
#else
#define SOLIDRA_API __attribute__((visibility("default")))
#endif
