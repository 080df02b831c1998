#pragma once

#include <cmath>
#include <initializer_list>
#include <numbers>
#include <ostream>
#include <string>

#include <gmock/gmock.h>

#include "platform/ombra/Kinematic.h"
#include "platform/ombra/Machine.h"
#include "platform/ombra/MachinePosition.h"
#include "platform/ombra/Matrix43.h"

namespace Ombra {

inline std::ostream& operator<<(std::ostream& out, const Vector3D& v) {
  return out << "(" << v.x << ", " << v.y << ", " << v.z << ")";
}

}  // namespace Ombra

/// Machines of the external library that tests compute by hand.
namespace korvo::test {

using Ombra::Matrix43;
using Ombra::Vector3D;
using Ombra::Kin::AxisDefinition;
using Ombra::Kin::EntityId;
using Ombra::Kin::HeadIndex;
using Ombra::Kin::Machine;
using Ombra::Kin::MachinePosition;
using Ombra::Kin::Register;
using Ombra::Kin::TableIndex;

inline double radians(double degrees) { return degrees * (std::numbers::pi / 180.0); }

MATCHER_P2(NearPoint, expected, tolerance, "is within a tolerance of the expected point") {
  const Vector3D d = arg - Vector3D(expected);
  *result_listener << "which differs by " << std::sqrt(d * d);
  return std::sqrt(d * d) <= tolerance;
}

inline AxisDefinition linear(const wchar_t* name, int reg, const Vector3D& direction) {
  return {name, Ombra::Kin::Linear, direction, {}, Register(reg)};
}

inline AxisDefinition rotary(const wchar_t* name, int reg, const Vector3D& direction,
                             const Vector3D& pivot = {}) {
  return {name, Ombra::Kin::Rotary, direction, pivot, Register(reg)};
}

inline MachinePosition position(std::initializer_list<double> values) {
  MachinePosition p;
  p.Alloc(static_cast<int>(values.size()));
  int i = 0;
  for (const double value : values) p[Register(i++)] = value;
  return p;
}

/// X, Y, Z (registers 0, 1, 2), then C about z and A about x (3, 4), all through the origin, carry
/// the head; the table is fixed on the base. Entities: X 1, Y 2, Z 3, C 4, A 5, head 6, table 7.
/// The tool points up: its direction at C, A is (sin A sin C, -sin A cos C, cos A).
inline Machine headHead() {
  Machine machine(L"fork");
  Ombra::Kin::Kinematic& k = machine.EditKinematic();
  EntityId last = k.AddAxis(linear(L"X", 0, {1, 0, 0}));
  last = k.AddAxis(linear(L"Y", 1, {0, 1, 0}), last);
  last = k.AddAxis(linear(L"Z", 2, {0, 0, 1}), last);
  last = k.AddAxis(rotary(L"C", 3, {0, 0, 1}), last);
  last = k.AddAxis(rotary(L"A", 4, {1, 0, 0}), last);
  k.AddHead(L"HEAD", Matrix43(), last);
  k.AddTable(L"TABLE");
  return machine;
}

/// The direction that `headHead` points to at C and A (degrees).
inline Vector3D forkDirection(double c, double a) {
  return {std::sin(radians(a)) * std::sin(radians(c)), -std::sin(radians(a)) * std::cos(radians(c)),
          std::cos(radians(a))};
}

/// X, Y, Z carry the head. A about x carries C about z, which carries the table: the two turn what
/// lies on the table. Registers X 0, Y 1, Z 2, A 3, C 4.
inline Machine tableTable() {
  Machine machine(L"trunnion");
  Ombra::Kin::Kinematic& k = machine.EditKinematic();
  EntityId last = k.AddAxis(linear(L"X", 0, {1, 0, 0}));
  last = k.AddAxis(linear(L"Y", 1, {0, 1, 0}), last);
  last = k.AddAxis(linear(L"Z", 2, {0, 0, 1}), last);
  k.AddHead(L"HEAD", Matrix43(), last);
  last = k.AddAxis(rotary(L"A", 3, {1, 0, 0}));
  last = k.AddAxis(rotary(L"C", 4, {0, 0, 1}), last);
  k.AddTable(L"TABLE", last);
  return machine;
}

}  // namespace korvo::test
