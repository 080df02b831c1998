#include "platform/solidra/CTopo_Wire.h"

#include <algorithm>
#include <cmath>
#include <exception>

CTopo_CoEdge::CTopo_CoEdge(CTopo_Edge*, CGeom2d_Curve* curve) : curve_(curve) {}

CTopo_CoEdge::~CTopo_CoEdge() = default;

CTopo_Wire::CTopo_Wire() = default;

CTopo_Wire::~CTopo_Wire() = default;

bool CTopo_Wire::AddCoEdge(CTopo_CoEdge* coEdge, int, int, CTopo_Edge*& edge, double gap) {
  std::unique_ptr<CTopo_CoEdge> owned(coEdge);
  edge = nullptr;
  if (!owned) return false;
  try {
    coEdges_.push_back(std::move(owned));
  } catch (const std::exception&) {  // memory is short
    return false;
  }
  if (std::isfinite(gap)) gap_ = std::max(gap_, gap);
  return true;
}

int CTopo_Wire::MakeEdgeFromCoEdge(int, double) {
  return static_cast<int>(std::count_if(coEdges_.begin(), coEdges_.end(), [](const auto& c) {
    return c->GetCurve() && c->GetCurve()->IsValid();
  }));
}
