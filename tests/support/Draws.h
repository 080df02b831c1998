#pragma once

#include <cstdlib>

namespace korvo::test {

/// Whether this program runs once more, in the locale of another host. What a locale can change is
/// how text is read and written, and that changes for one draw as for a thousand.
inline bool isOtherHost() { return std::getenv("KORVO_TEST_LOCALE") != nullptr; }

/// How many of something a test tries of as many as usual: a tenth in another host, and where a
/// sanitizer makes every step take many times as long.
inline int drawsOf(int usual) {
#ifdef KORVO_SANITIZED
  const bool isTenth = true;
#else
  const bool isTenth = isOtherHost();
#endif
  return isTenth ? (usual + 9) / 10 : usual;
}

}  // namespace korvo::test
