#pragma once

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string_view>

#include "platform/text/Number.h"
#include "platform/text/PlainDecimal.h"

/// Lines of a geometry file and the fields in them, exactly as `fgets` and `sscanf` of the C locale
/// have them. The host's locale has no say: under a decimal comma "1.5" would read as 1.
namespace zkin::zrn {

/// Takes a "%ld" or "%lf" field from the start of `text`; false, and both unchanged, when there is
/// none.
inline bool takeField(std::string_view& text, long long& value) {
  const korvo::text::Scan scan = korvo::text::scanLong(text, value);
  text.remove_prefix(scan.length);
  return bool(scan);
}
inline bool takeField(std::string_view& text, double& value) {
  const korvo::text::Scan scan = korvo::text::scanDouble(text, value);
  text.remove_prefix(scan.length);
  return bool(scan);
}

/// Takes the fields one behind the other from the start of the line; what follows them is ignored.
/// False when one is missing; those before it are set.
template <class... Fields>
bool scanFields(std::string_view line, Fields&... fields) {
  return (takeField(line, fields) && ...);
}

/// The line that was read last.
///
/// 256 bytes, so that every file falls into the same pieces everywhere: what is longer than 255
/// characters is several lines.
class Line {
 public:
  /// False at the end of the file and on a read error.
  bool read(std::FILE* stream);

  /// The line with its line feed, up to its first NUL; valid until the next read.
  std::string_view text() const { return text_; }

  /// The same as `scanFields(text(), fields...)`, quicker.
  template <class... Fields>
  bool scan(Fields&... fields) const {
    const char* at = text_;
    return (take(at, fields) && ...);
  }

 private:
  static constexpr int kSize = 256;

  bool take(const char*& at, long long& value) const;
  bool take(const char*& at, double& value) const;

  char text_[kSize + korvo::text::kReadAhead] =
      "";  ///< Plain numbers are looked at beyond the end.
};

struct Header {
  long long a = 0;
  long long b = 0;
  long long code = 0;
  double value = 0.0;
  std::string_view name;  ///< Part of the line; empty when there is none.
};

/// The header that a line is; nothing when it does not begin with three integers. Data lines that
/// begin so are headers too: the format cannot tell them apart.
std::optional<Header> headerOf(std::string_view line);

/// Whether a line begins with three integers.
bool isHeader(std::string_view line);

}  // namespace zkin::zrn
