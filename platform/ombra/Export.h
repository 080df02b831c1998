#pragma once

/// Marks what the shared library `OmbraKinematics` exports; all else in it is hidden.
#if defined(_WIN32)
#if defined(OMBRA_BUILD)
#define OMBRA_API __declspec(dllexport)
#else
#define OMBRA_API __declspec(dllimport)
#endif
#else
#define OMBRA_API __attribute__((visibility("default")))
#endif
