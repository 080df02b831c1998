#pragma once

#include <cstdlib>
#include <string>

namespace korvo::test {

/// Whether the proofs run in full, which takes minutes, or shortened as in every build.
inline bool isFullProof() {
  const char* const wanted = std::getenv("KORVO_PROOF");
  return wanted && std::string(wanted) == "full";
}

/// How many of something a proof tries. Where every step is checked it takes many times as long.
inline int proofCount(int shortened, int full) {
  if (isFullProof()) return full;
#ifdef KORVO_SANITIZED
  return (shortened + 9) / 10;
#else
  return shortened;
#endif
}

/// Whether tables of what was tried are printed.
inline bool isReportWanted() { return std::getenv("KORVO_REPORT") != nullptr; }

}  // namespace korvo::test
