#pragma once

#include "platform/solidra/Export.h"

/// Curves in space. Only their switch is here: faces make none that a caller could see.
class SOLIDRA_API CGeom_CNurbs {
 public:
  /// Whether edges made from trimming curves may be fitted. Has no effect, as edges are never
  /// fitted; callers save, clear and restore it. One for each thread, so that two threads may do so
  /// at once.
  static constinit thread_local bool m_useFitting;
};
