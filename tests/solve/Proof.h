#pragma once

#include <cstdlib>
#include <string>

#include "tests/support/Draws.h"

namespace korvo::test {

/// Whether the proofs run in full, which takes minutes, or shortened as in every build.
inline bool isFullProof() {
  const char* const wanted = std::getenv("KORVO_PROOF");
  return wanted && std::string(wanted) == "full";
}

/// How many of something a proof tries.
inline int proofCount(int shortened, int full) { return isFullProof() ? full : drawsOf(shortened); }

/// Whether tables of what was tried are printed.
inline bool isReportWanted() { return std::getenv("KORVO_REPORT") != nullptr; }

}  // namespace korvo::test
