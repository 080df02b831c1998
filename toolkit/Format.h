#pragma once

#include <string>

namespace korvo {

/// Which format version a definition file is read as. The file itself does not say.
enum class Format {
  automatic = 0,  ///< Told from the axis lines.
  version1 = 1,   ///< Free axis names, the axis number is the second operand.
  version2 = 2,   ///< Axes are named X, Y, Z, A, B, C.
};

/// The format version taken, and why.
struct FormatChoice {
  int version = 0;     ///< 1 or 2; 0 when no file was read.
  std::string reason;  ///< In words: "as asked", "3 of 3 axis lines ...".
};

}  // namespace korvo
