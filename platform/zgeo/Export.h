#pragma once

/// Marks what the shared library `Korvo_CollisionUtils` exports; all else in it is hidden.
#if defined(_WIN32)
#if defined(KORVO_COLLISIONUTILS_BUILD)
#define KORVO_COLLISIONUTILS_API __declspec(dllexport)
#else
#define KORVO_COLLISIONUTILS_API __declspec(dllimport)
#endif
#else
#define KORVO_COLLISIONUTILS_API __attribute__((visibility("default")))
#endif
