// Tool frames, tool point, translation.

#include "adapter/NMachine.h"
#include "adapter/convert.h"
#include "adapter/memory.h"
#include "platform/ombra/MachineCompute.h"

using Ombra::Matrix43;
using Ombra::Vector3D;
using Ombra::Kin::HeadIndex;
using Ombra::Kin::MachineCompute;
using Ombra::Kin::MachinePosition;
using Ombra::Kin::TableIndex;
using zgeo::UMatrix;
using zgeo::UVec3d;

namespace zkin {

UMatrix NMachine::_fromMatrix43(const Matrix43& m) {
  const Vector3D &u = m.GetU(), &v = m.GetV(), &w = m.GetW(), &t = m.GetTrans();
  UMatrix r = UMatrix::_zero();
  r.set(u.x, v.x, w.x, t.x,  //
        u.y, v.y, w.y, t.y,  //
        u.z, v.z, w.z, t.z,  //
        0, 0, 0, 1);
  return r;
}

UMatrix NMachine::getMatrix(const MachinePosition& p, HeadIndex h, TableIndex t, double len) const {
  if (!machine_) return UMatrix::_zero();
  Matrix43 m43;
  hadMemory([&] { MachineCompute(machine_).ComputeMcsToToolTcs(p, h, t, {0, 0, len}, &m43); });
  return _fromMatrix43(m43);
}

UMatrix NMachine::getMatrix(const MachinePosition& p) const {
  return getMatrix(p, head_, table_, 0.0);
}

UMatrix NMachine::getMatrix_H2T(const MachinePosition& p) const {
  return getMatrix(p, head_, table_, 0.0);
}

UMatrix NMachine::getMatrix_TP2U(const MachinePosition& p) const {
  return getMatrix(p, head_, table_, theLength_);
}

bool NMachine::getTool(const MachinePosition& p, UVec3d& pos, UVec3d& dir) const {
  return getTool(p, pos, dir, head_, table_);
}

bool NMachine::getTool(const MachinePosition& p, UVec3d& pos, UVec3d& dir, HeadIndex,
                       TableIndex) const {
  const UMatrix m = getMatrix(p, head_, table_, 0.0);
  pos = m.getOrigin();
  dir.set(m(0, 2), m(1, 2), m(2, 2));
  return true;
}

MachinePosition NMachine::axisTranslation(const MachinePosition& p, const UVec3d& delta) const {
  MachinePosition increment = newMachinePosition();
  if (!machine_ || translations_.size() < 3) return increment;
  const UVec3d from = getMatrix(p, head_, table_, 0.0).getOrigin();
  MachineCompute compute(machine_);
  const auto solve = [&](const UVec3d& point, Vector3D& values) {
    return compute.ComputeToolTcsToMcsXyz(p, head_, table_, toOmbra(point), translations_[0],
                                          translations_[1], translations_[2], {0, 0, theLength_},
                                          &values);
  };
  Vector3D before, after;
  if (!solve(from, before) || !solve(from + delta, after)) return increment;
  const Vector3D way = after - before;
  increment[translations_[0]] = way.x;
  increment[translations_[1]] = way.y;
  increment[translations_[2]] = way.z;
  return increment;
}

}  // namespace zkin
