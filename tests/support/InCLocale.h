#pragma once

#include <clocale>

#if defined(__APPLE__)
#include <xlocale.h>
#endif

namespace korvo::test {

/// The C locale for this thread as long as the object lives: where a test asks the C library for
/// numbers that a file has, or makes their text, whatever locale the program is in.
class InCLocale {
 public:
  InCLocale() : former_(uselocale(cLocale())) {}
  ~InCLocale() { uselocale(former_); }
  InCLocale(const InCLocale&) = delete;
  InCLocale& operator=(const InCLocale&) = delete;

 private:
  static locale_t cLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t{});
    return locale;
  }

  locale_t former_;
};

}  // namespace korvo::test
