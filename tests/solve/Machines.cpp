#include "tests/solve/Machines.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "tests/support/MachineGenerator.h"

namespace korvo::test {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

namespace {

/// The shortest text that reads back as the same double.
std::string number(double value) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

std::string numbers(const UVec3d& v) { return number(v.x) + "," + number(v.y) + "," + number(v.z); }

std::string lineOf(const AxisLine& axis) {
  std::string text = (axis.isRotary ? "rotation=" : "axis=") + axis.name + "," +
                     std::to_string(axis.number) + "," + numbers(axis.direction);
  if (axis.isRotary) text += ",0,0," + numbers(axis.point);
  text += "\n";
  if (axis.min > -kNoLimit) text += "courseminimum=" + axis.name + "," + number(axis.min) + "\n";
  if (axis.max < kNoLimit) text += "coursemaximum=" + axis.name + "," + number(axis.max) + "\n";
  return text;
}

}  // namespace

AxisLine linear(const std::string& name, int number, const UVec3d& direction, double min,
                double max) {
  return {name, number, false, direction, {}, min, max};
}

AxisLine rotary(const std::string& name, int number, const UVec3d& direction, const UVec3d& point,
                double min, double max) {
  return {name, number, true, direction, point, min, max};
}

std::string MachineLines::text() const {
  std::string text = "frame\n";
  for (const AxisLine& axis : part) text += lineOf(axis);
  text += "part=x,y,0,0,0\nlien=BATI\n";
  for (const AxisLine& axis : head) text += lineOf(axis);
  text += "tool=" + numbers(toolDirection) + "," + numbers(toolPoint) + "\n";
  for (const ToolLine& tool : moreTools) {
    text += "lien=" + (head.empty() ? "BATI" : head.back().name) + "\n" +
            (tool.isGun ? "gun=" : "tool=") + numbers(tool.direction) + "," + numbers(tool.point) +
            "\n";
  }
  return text;
}

std::unique_ptr<KMachine> MachineLines::load() const { return loadMachine(text(), 1); }

std::vector<AxisLine> linearXyz() {
  return {linear("X", 1, {1, 0, 0}), linear("Y", 2, {0, 1, 0}), linear("Z", 3, {0, 0, 1})};
}

std::vector<AxisLine> operator+(std::vector<AxisLine> a, const std::vector<AxisLine>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

double radiansBetween(const UVec3d& a, const UVec3d& b) {
  return std::atan2((a ^ b).norm(), a * b);
}

double sizeOf(const KMachine& machine, const Values& values, const Target& target) {
  const Position v = positionOf(machine, {values.begin(), values.end()});
  std::vector<UVec3d> points{target.tip};
  double size = 1000.0;
  UVec3d point, direction;
  if (machine.getTool(*v, point, direction, 0)) points.push_back(point);
  for (const KMachineElem* e : machine.getToolChain(false, 0)) {
    if (e->getElemType() == KMachineElem::KMET_TYPE_ALIN && e->getValueIndex() >= 0) {
      size = std::max(size, std::abs(values[static_cast<std::size_t>(e->getValueIndex())]));
    }
    if (e->getElemType() != KMachineElem::KMET_TYPE_AROT) continue;
    machine.getElemAxis(*v, e->getElemIndex(), direction, point);
    points.push_back(point);
  }
  for (const UVec3d& a : points) {
    for (const UVec3d& b : points) size = std::max(size, a.distanceTo(b));
  }
  return size;
}

std::vector<Solution> solutionsOf(const Solver& solver, const Target& target, const Values& from,
                                  Limits limits) {
  std::vector<Solution> out;
  solver.solve(target, from, out, limits);
  return out;
}

}  // namespace korvo::test
