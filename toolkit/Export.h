#pragma once

/// Marks what the shared library `KorvoToolkit` exports; all else in it is hidden.
#if defined(_WIN32)
#if defined(KORVO_TOOLKIT_BUILD)
#define KORVO_TOOLKIT_API __declspec(dllexport)
#else
#define KORVO_TOOLKIT_API __declspec(dllimport)
#endif
#else
#define KORVO_TOOLKIT_API __attribute__((visibility("default")))
#endif
