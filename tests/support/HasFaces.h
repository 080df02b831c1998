#pragma once

namespace korvo::test {

/// Whether the faces of geometry files get triangles: built with KORVO_SOLIDRA=none they never have
/// any, and nothing else is different.
#if defined(KORVO_SOLIDRA_none)
inline constexpr bool kHasFaces = false;
#elif defined(KORVO_SOLIDRA_occt)
inline constexpr bool kHasFaces = true;
#endif

}  // namespace korvo::test
