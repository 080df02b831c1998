#include "platform/solidra/CGeom_Surf.h"

#include <exception>

#include "platform/solidra/CGeom_CNurbs.h"
#include "platform/solidra/Nurbs.h"

constinit thread_local bool CGeom_CNurbs::m_useFitting = true;

CGeom_Surf::~CGeom_Surf() = default;

bool CGeom_Surf::Get3DBound(CGeom_Bound& bound) const {
  if (!IsValid()) return false;
  try {
    bound = solidra::tightBound(*Data());
    return true;
  } catch (const std::exception&) {  // memory is short
    return false;
  }
}
