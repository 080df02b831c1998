#include "tests/awkward/Exact.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace korvo::test {

Exact operator+(const Exact& a, const Exact& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
Exact operator-(const Exact& a, const Exact& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Exact operator*(const Exact& a, long double k) { return {a[0] * k, a[1] * k, a[2] * k}; }
long double dot(const Exact& a, const Exact& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Exact cross(const Exact& a, const Exact& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
long double length(const Exact& v) { return std::sqrt(dot(v, v)); }
Exact unit(const Exact& v) { return v * (1 / length(v)); }

Exact turned(const Exact& v, const Exact& axis, long double degrees) {
  // Taken off first, for pi has no exact value: what a remainder leaves is exact.
  const long double angle =
      std::remainder(degrees, 360.0L) * (std::numbers::pi_v<long double> / 180);
  const long double s = std::sin(angle), half = std::sin(angle / 2);
  return v + cross(axis, v) * s + cross(axis, cross(axis, v)) * (2 * half * half);
}

long double angleBetween(const Exact& a, const Exact& b) {
  const Exact u = unit(a), v = unit(b);
  return 2 * std::atan2(length(u - v), length(u + v));
}

namespace {

/// A point of a body or a direction fixed to it, carried by one axis.
Exact moved(const AxisLine& axis, double value, const Exact& v, bool isPoint) {
  const Exact direction = unit(exact(axis.direction));
  if (!axis.isRotary) return isPoint ? v + direction * value : v;
  if (!isPoint) return turned(v, direction, value);
  const Exact at = exact(axis.point);
  return at + turned(v - at, direction, value);
}

/// The value of an axis stands where its number comes among all numbers.
std::size_t placeOf(const MachineLines& lines, int number) {
  const auto count = [number](const std::vector<AxisLine>& axes) {
    return std::count_if(axes.begin(), axes.end(),
                         [number](const AxisLine& a) { return a.number < number; });
  };
  return static_cast<std::size_t>(count(lines.part) + count(lines.head));
}

}  // namespace

std::vector<PlacedAxis> chainOf(const MachineLines& lines) {
  std::vector<AxisLine> axes(lines.part.rbegin(), lines.part.rend());
  axes.insert(axes.end(), lines.head.begin(), lines.head.end());
  std::vector<PlacedAxis> chain;
  for (const AxisLine& axis : axes) chain.push_back({axis, placeOf(lines, axis.number)});
  return chain;
}

ExactPose poseAt(const MachineLines& lines, const std::vector<double>& values, int tool,
                 double extension) {
  const auto i = static_cast<std::size_t>(tool);
  const ToolLine first{false, lines.toolDirection, lines.toolPoint};
  const ToolLine& line = i == 1 ? first : lines.moreTools[i - 2];
  const Exact direction = unit(exact(line.direction));
  ExactPose pose{exact(line.point) + direction * (line.isGun ? extension : 0.0),
                 direction,
                 {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}};
  std::vector<PlacedAxis> chain = chainOf(lines);
  std::reverse(chain.begin(), chain.end());
  for (const PlacedAxis& axis : chain) {
    const double value = values[axis.place];
    pose.point = moved(axis.line, value, pose.point, true);
    pose.direction = moved(axis.line, value, pose.direction, false);
    for (Exact& v : pose.axes) v = moved(axis.line, value, v, false);
  }
  return pose;
}

}  // namespace korvo::test
