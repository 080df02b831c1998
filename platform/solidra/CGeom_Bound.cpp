#include "platform/solidra/CGeom_Bound.h"

#include <algorithm>
#include <cmath>

CGeom_Bound CGeom_Bound::Empty() {
  return {{HUGE_VAL, HUGE_VAL, HUGE_VAL}, {-HUGE_VAL, -HUGE_VAL, -HUGE_VAL}};
}

bool CGeom_Bound::IsEmpty() const {
  return low_.x > high_.x || low_.y > high_.y || low_.z > high_.z;
}

void CGeom_Bound::Add(const CGeom_Bound& other) {
  if (other.IsEmpty()) return;
  Add(other.low_);
  Add(other.high_);
}

void CGeom_Bound::Add(const CGeom_XYZ& point) {
  low_ = {std::min(low_.x, point.x), std::min(low_.y, point.y), std::min(low_.z, point.z)};
  high_ = {std::max(high_.x, point.x), std::max(high_.y, point.y), std::max(high_.z, point.z)};
}

double CGeom_Bound::GetDiag() const {
  if (IsEmpty()) return 0;
  return std::hypot(high_.x - low_.x, high_.y - low_.y, high_.z - low_.z);
}
