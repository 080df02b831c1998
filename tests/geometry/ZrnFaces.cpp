#include "tests/geometry/ZrnFaces.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace korvo::test {

using zgeo::UTri;
using zgeo::UVec3d;

namespace {

constexpr double kPi = std::numbers::pi;

std::string line(std::initializer_list<double> values) {
  std::string out;
  for (const double value : values) out += (out.empty() ? "" : " ") + textOf(value);
  return out + "\n";
}

std::string integers(long long a, long long b) {
  return std::to_string(a) + " " + std::to_string(b) + "\n";
}

std::string counted(const std::vector<double>& values) {
  std::string out = std::to_string(values.size()) + "\n";
  for (const double value : values) out += line({value});
  return out;
}

std::string header(long long a, long long b, int code) {
  return std::to_string(a) + " " + std::to_string(b) + " " + std::to_string(code) + "\n";
}

/// A rational quadratic in pieces: 0 0 0 1/n 1/n .. 1 1 1.
std::vector<double> quadraticKnots(int pieces) {
  std::vector<double> out(3, 0.0);
  for (int i = 1; i < pieces; ++i) out.insert(out.end(), 2, static_cast<double>(i) / pieces);
  out.insert(out.end(), 3, 1.0);
  return out;
}

/// Pole i of the unit circle in quarters: on the circle and at the corners of the square in turn.
Uv circlePole(int i) {
  const double reach = i % 2 == 0 ? 1 : std::sqrt(2.0);
  const double angle = i * kPi / 4;
  return {std::round(reach * std::cos(angle)), std::round(reach * std::sin(angle))};
}

double circleWeight(int i) { return i % 2 == 0 ? 1 : std::sqrt(0.5); }

/// Cox and de Boor: basis function i of a degree at t, on spans that are open at their end but for
/// the last one.
double basis(const std::vector<double>& knots, int i, int degree, double t) {
  if (degree == 0) {
    const bool isLast = t == knots.back() && knots[i + 1] == t && knots[i] < t;
    return (knots[i] <= t && t < knots[i + 1]) || isLast ? 1 : 0;
  }
  const double a = knots[i + degree] - knots[i];
  const double b = knots[i + degree + 1] - knots[i + 1];
  return (a > 0 ? (t - knots[i]) / a * basis(knots, i, degree - 1, t) : 0) +
         (b > 0 ? (knots[i + degree + 1] - t) / b * basis(knots, i + 1, degree - 1, t) : 0);
}

UVec3d between(const UTri& t, double a, double b) {
  return t.p[0] * (1 - a - b) + t.p[1] * a + t.p[2] * b;
}

double distanceToSegment(const UVec3d& a, const UVec3d& b, const UVec3d& p) {
  const double length2 = (b - a).norm2();
  const double t = length2 > 0 ? std::clamp(((p - a) * (b - a)) / length2, 0.0, 1.0) : 0;
  return (a + (b - a) * t).distanceTo(p);
}

}  // namespace

std::string ZrnSurface::text() const {
  std::string out = header(countU, countV, 9);
  for (std::size_t i = 0; i < poles.size(); ++i)
    out += line({poles[i].x, poles[i].y, poles[i].z, weights[i]});
  out += integers(degreeU, degreeV) + integers(isRationalU, isRationalV);
  out += line({intervalU.start, intervalU.end}) + line({intervalV.start, intervalV.end});
  return out + counted(knotsU) + counted(knotsV);
}

UVec3d ZrnSurface::point(double u, double v) const {
  UVec3d sum;
  double all = 0;
  for (int j = 0; j < countV; ++j) {
    const double rowShare = basis(knotsV, j, static_cast<int>(degreeV), v);
    if (rowShare == 0) continue;
    for (int i = 0; i < countU; ++i) {
      const std::size_t k = static_cast<std::size_t>(j) * countU + i;
      const double weight = isRationalU || isRationalV ? weights[k] : 1;
      const double share = weight * rowShare * basis(knotsU, i, static_cast<int>(degreeU), u);
      sum += poles[k] * share;
      all += share;
    }
  }
  return sum / all;
}

Profile lineProfile(double r0, double z0, double r1, double z1) {
  return {{{r0, z0, 1}, {r1, z1, 1}}, 1, {0, 0, 1, 1}};
}

Profile arcProfile(double radius, double height, double r, double from, double to, int pieces) {
  Profile out{{}, 2, quadraticKnots(pieces)};
  const double step = (to - from) / (2 * pieces) * kPi / 180;
  for (int i = 0; i <= 2 * pieces; ++i) {
    const double angle = from * kPi / 180 + i * step;
    const double weight = i % 2 == 0 ? 1 : std::cos(step);
    const double reach = r / weight;
    out.poles.push_back(
        {radius + reach * std::cos(angle), height + reach * std::sin(angle), weight});
  }
  return out;
}

ZrnSurface turned(const Profile& profile, int quarters) {
  ZrnSurface s;
  s.countU = 2 * quarters + 1;
  s.countV = static_cast<int>(profile.poles.size());
  s.degreeU = 2;
  s.degreeV = profile.degree;
  s.knotsU = quadraticKnots(quarters);
  s.knotsV = profile.knots;
  s.isRationalU = s.isRationalV = true;
  for (const Profile::Pole& p : profile.poles)
    for (int i = 0; i < s.countU; ++i) {
      s.poles.emplace_back(p.radius * circlePole(i).x, p.radius * circlePole(i).y, p.height);
      s.weights.push_back(p.weight * circleWeight(i));
    }
  return s;
}

ZrnSurface rectangle(double width, double height, const UVec3d& from) {
  ZrnSurface s;
  s.poles = {from, from + UVec3d(width, 0, 0), from + UVec3d(0, height, 0),
             from + UVec3d(width, height, 0)};
  s.weights = {1, 1, 1, 1};
  return s;
}

ZrnSurface cylinder(double radius, double height, int quarters) {
  return turned(lineProfile(radius, 0, radius, height), quarters);
}

ZrnSurface cone(double radius, double height, int quarters) {
  return turned(lineProfile(radius, 0, 0, height), quarters);
}

ZrnSurface sphere(double radius, double from, double to, int pieces, int quarters) {
  return turned(arcProfile(0, 0, radius, from, to, pieces), quarters);
}

ZrnSurface torus(double ring, double tube, double from, double to, int pieces, int quarters) {
  return turned(arcProfile(ring, 0, tube, from, to, pieces), quarters);
}

ZrnSurface hill(double size, double height) {
  ZrnSurface s;
  s.countU = s.countV = 7;
  s.degreeU = s.degreeV = 3;
  s.knotsU = s.knotsV = {0, 0, 0, 0, .25, .5, .75, 1, 1, 1, 1};
  s.weights.assign(49, 1.0);
  for (int j = 0; j < 7; ++j)
    for (int i = 0; i < 7; ++i)
      s.poles.emplace_back(size * i / 6, size * j / 6,
                           height * std::sin(kPi * i / 6) * std::sin(kPi * j / 6));
  return s;
}

std::string uvPolyline(const std::vector<Uv>& points) {
  std::string out = header(static_cast<long long>(points.size()), 1, 2);
  for (const Uv& p : points) out += line({p.x, p.y});
  return out;
}

std::string uvRectangle(double u0, double v0, double u1, double v1, bool clockwise) {
  std::vector<Uv> points = {{u0, v0}, {u1, v0}, {u1, v1}, {u0, v1}, {u0, v0}};
  if (clockwise) std::reverse(points.begin(), points.end());
  return uvPolyline(points);
}

std::string NurbsTrim::text() const {
  std::string out = header(static_cast<long long>(poles.size()), 1, 9);
  for (std::size_t i = 0; i < poles.size(); ++i)
    out += isPlanarForm ? line({poles[i].y, poles[i].x, weights[i]})
                        : line({poles[i].y, poles[i].x, 0, weights[i]});
  return out + integers(degree, 0) + integers(0, 0) + "0 1\n0 1\n" + counted(knots) + "0\n";
}

NurbsTrim ellipse(double u, double v, double ru, double rv, bool clockwise) {
  NurbsTrim out;
  for (int i = 0; i <= 8; ++i) {
    const Uv pole = circlePole(clockwise ? 8 - i : i);
    out.poles.push_back({u + ru * pole.x, v + rv * pole.y});
    out.weights.push_back(circleWeight(i));
  }
  out.knots = quadraticKnots(4);
  return out;
}

std::string uvEllipse(double u, double v, double ru, double rv, bool clockwise) {
  return ellipse(u, v, ru, rv, clockwise).text();
}

NurbsTrim linear(const std::vector<Uv>& points) {
  NurbsTrim out;
  out.degree = 1;
  out.poles = points;
  out.weights.assign(points.size(), 1.0);
  out.knots.push_back(0);
  for (std::size_t i = 0; i < points.size(); ++i) out.knots.push_back(static_cast<double>(i));
  out.knots.push_back(static_cast<double>(points.size() - 1));
  return out;
}

Triangles trianglesOf(const std::string& bytes, double tolerance, int* count) {
  const MemoryFile file(bytes);
  Triangles triangles(1);
  const int result = zkin::ZRN_FileToTriangles(file.path().c_str(), tolerance, triangles);
  if (count) *count = result;
  return triangles;
}

double areaOf(const UTri& t) { return ((t.p[1] - t.p[0]) ^ (t.p[2] - t.p[0])).norm() / 2; }

double areaOf(const Triangles& triangles) {
  double sum = 0;
  for (const UTri& t : triangles) sum += areaOf(t);
  return sum;
}

double volumeOf(const Triangles& triangles) {
  double sum = 0;
  for (const UTri& t : triangles) sum += t.p[0] * (t.p[1] ^ t.p[2]) / 6;
  return sum;
}

double longestEdgeOf(const Triangles& triangles) {
  double longest = 0;
  for (const UTri& t : triangles)
    for (int i = 0; i < 3; ++i) longest = std::max(longest, t.p[i].distanceTo(t.p[(i + 1) % 3]));
  return longest;
}

double largestAtCorners(const Triangles& triangles, const Distance& distance) {
  double out = 0;
  for (const UTri& t : triangles)
    for (const UVec3d& p : t.p) out = std::max(out, std::abs(distance(p)));
  return out;
}

double largest(const Triangles& triangles, const Distance& distance) {
  constexpr int kSteps = 6;
  double out = 0;
  for (const UTri& t : triangles)
    for (int i = 0; i <= kSteps; ++i)
      for (int j = 0; i + j <= kSteps; ++j)
        out = std::max(out, std::abs(distance(between(t, i / 6.0, j / 6.0))));
  return out;
}

double distanceTo(const UTri& t, const UVec3d& p) {
  const UVec3d normal = (t.p[1] - t.p[0]) ^ (t.p[2] - t.p[0]);
  bool isAbove = normal.norm2() > 0;
  for (int i = 0; i < 3; ++i) {
    const UVec3d edge = t.p[(i + 1) % 3] - t.p[i];
    isAbove = isAbove && (edge ^ (p - t.p[i])) * normal >= 0;
  }
  if (isAbove) return std::abs((p - t.p[0]) * normal.normalised());
  return std::min({distanceToSegment(t.p[0], t.p[1], p), distanceToSegment(t.p[1], t.p[2], p),
                   distanceToSegment(t.p[2], t.p[0], p)});
}

double distanceTo(const Triangles& triangles, const UVec3d& p) {
  double nearest = HUGE_VAL;
  for (const UTri& t : triangles) nearest = std::min(nearest, distanceTo(t, p));
  return nearest;
}

}  // namespace korvo::test
