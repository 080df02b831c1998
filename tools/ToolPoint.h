#pragma once

#include "kinematics/KMachine.h"

namespace korvo::tools {

/// Where a tool stands, in the part-zero frame.
struct ToolPoint {
  zgeo::UVec3d nose;       ///< The tool point without the tool length, mm.
  zgeo::UVec3d tip;        ///< The tool length further, against the direction, mm.
  zgeo::UVec3d direction;  ///< Unit, from tip to spindle.
};

/// Where tool number `tool` stands at position `v`; the tool must exist.
inline ToolPoint toolPoint(const zkin::KMachine& machine, const zkin::KMachineValueBase& v,
                           int tool, double length) {
  ToolPoint at;
  machine.getTool(v, at.nose, at.direction, tool);
  machine.getMAC2UNI().apply(at.nose);
  machine.getMAC2UNI().applyDir(at.direction);
  at.tip = at.nose - at.direction * length;
  return at;
}

inline ToolPoint toolPoint(const zkin::KMachine& machine, const zkin::KMachineValueBase& v,
                           int tool) {
  return toolPoint(machine, v, tool, machine.getTHELength(tool));
}

}  // namespace korvo::tools
