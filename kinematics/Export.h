#pragma once

/// Marks what the shared library `Korvo_Kinematics` exports; all else in it is hidden.
#if defined(_WIN32)
#if defined(KORVO_KINEMATICS_BUILD)
#define KORVO_KINEMATICS_API __declspec(dllexport)
#else
#define KORVO_KINEMATICS_API __declspec(dllimport)
#endif
#else
#define KORVO_KINEMATICS_API __attribute__((visibility("default")))
#endif
