#pragma once

#include <cstddef>
#include <string_view>

/// The one number scanner of this system: definition files, geometry text, STL text, CSV and the
/// checker all read numbers through it.
///
/// It answers exactly as glibc's scanf does for "%d" and "%lf" in the C locale, whatever locale the
/// host has set: leading white space is skipped, the longest prefix that can be a number is taken.
/// So "12abc" gives 12, "1e" and "1e+" give 1, "0x" does not scan, "0x1p" gives 1, "nan(1)" gives
/// NaN and leaves "(1)", "inf" and "infinity" (any case) scan, and "%d" of a number too large for
/// 64 bits saturates there and keeps its low 32 bits (99999999999 gives 1215752191).
namespace korvo::text {

/// How many characters a scan used; 0 means that nothing was converted and the value is untouched.
struct Scan {
  std::size_t length = 0;
  explicit operator bool() const { return length != 0; }
};

/// Reads a "%lf" prefix of `text`. A NUL ends the text as it ends a C string.
/// Wide characters above 127 belong to no number. Correctly rounded; overflow gives an infinity,
/// underflow the nearest denormal or zero. Never allocates for plain decimals, never throws.
Scan scanDouble(std::string_view text, double& value);
Scan scanDouble(std::wstring_view text, double& value);

/// Reads a "%d" prefix of `text`.
Scan scanInt(std::string_view text, int& value);
Scan scanInt(std::wstring_view text, int& value);

/// Reads a "%ld" prefix of `text` as a 64-bit integer; too large values saturate.
Scan scanLong(std::string_view text, long long& value);

}  // namespace korvo::text
