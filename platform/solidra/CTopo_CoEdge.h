#pragma once

#include <memory>

#include "platform/solidra/CGeom2d_Curve.h"
#include "platform/solidra/Export.h"

/// An edge that neighbouring faces share. Faces stand alone here: none is ever made, and every
/// pointer to one is null.
class CTopo_Edge;

/// One piece of a wire: a curve in the parameter plane of the wire's face.
class SOLIDRA_API CTopo_CoEdge {
 public:
  /// Owns `curve` from now on. `edge` is not used. A null or refused curve bounds nothing.
  CTopo_CoEdge(CTopo_Edge* edge, CGeom2d_Curve* curve);
  ~CTopo_CoEdge();
  CTopo_CoEdge(const CTopo_CoEdge&) = delete;
  CTopo_CoEdge& operator=(const CTopo_CoEdge&) = delete;

  const CGeom2d_Curve* GetCurve() const { return curve_.get(); }

 private:
  std::unique_ptr<CGeom2d_Curve> curve_;
};
