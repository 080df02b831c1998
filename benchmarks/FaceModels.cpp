#include "benchmarks/FaceModels.h"

#include <cmath>
#include <numbers>

namespace korvo::bench {

Trim polyline(const std::vector<CGeom2d_XY>& points) { return {1, points, {}}; }

std::vector<double> Trim::flatKnots() const {
  const std::size_t inner = poles.size() - static_cast<std::size_t>(degree) - 1;
  std::vector<double> out(static_cast<std::size_t>(degree) + 1, 0.0);
  for (std::size_t i = 1; i <= inner; ++i) out.push_back(static_cast<double>(i));
  out.insert(out.end(), static_cast<std::size_t>(degree) + 1, static_cast<double>(inner + 1));
  return out;
}

namespace {

// A quarter of an ellipse, ends moved apart by `gap`.
Trim quarter(CGeom2d_XY centre, double radius, int index, bool clockwise, double gap) {
  const auto corner = [&](int eighth) {
    const double angle = eighth * std::numbers::pi / 4;
    const double reach = eighth % 2 == 0 ? radius : radius * std::numbers::sqrt2;
    return CGeom2d_XY{centre.x + reach * std::cos(angle) + gap * index,
                      centre.y + reach * std::sin(angle)};
  };
  Trim out{2, {}, {1, std::sqrt(0.5), 1}};
  for (int i = 0; i <= 2; ++i) out.poles.push_back(corner(2 * index + (clockwise ? 2 - i : i)));
  return out;
}

Loop circle(CGeom2d_XY centre, double radius, bool clockwise, double gap = 0) {
  Loop out;
  for (int i = 0; i < 4; ++i)
    out.push_back(quarter(centre, radius, clockwise ? 3 - i : i, clockwise, gap));
  return out;
}

Loop star(double size) {
  std::vector<CGeom2d_XY> points;
  for (int i = 0; i <= 24; ++i) {
    const double angle = 2 * std::numbers::pi * i / 24;
    const double reach = i % 2 == 0 ? size : 0.8 * size;
    points.push_back({.5 + reach * std::cos(angle), .5 + reach * std::sin(angle)});
  }
  points.back() = points.front();
  return {polyline(points)};
}

}  // namespace

std::vector<FaceModel> faceModels(int sizes) {
  std::vector<FaceModel> out;
  for (int i = 0; i < sizes; ++i) {
    const double size = 60 + 20 * i;
    const test::Patch hill = test::hill(size, size / 5);
    out.push_back({"bicubic", hill, {}});
    out.push_back(
        {"cylinder and polyline", test::cylinder(size / 2, size, 1), {star(.3 + .03 * i)}});
    out.push_back({"four curves and a hole",
                   hill,
                   {circle({.5, .5}, .42, false), circle({.45, .5}, .1 + .03 * i, true)}});
    out.push_back({"four curves with gaps", hill, {circle({.5, .5}, .3 + .04 * i, false, 2e-5)}});
    out.push_back({"full cylinder", test::cylinder(size / 2, size, 4), {}});
  }
  return out;
}

}  // namespace korvo::bench
