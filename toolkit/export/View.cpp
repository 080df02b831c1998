#include "toolkit/export/View.h"

#include <algorithm>
#include <limits>

using zgeo::UTri;
using zgeo::UVec3d;

namespace korvo::exporting {
namespace {

constexpr double kRoom = 0.04;  // on each side, of the picture's width and height

struct Range {
  double min = std::numeric_limits<double>::infinity();
  double max = -std::numeric_limits<double>::infinity();

  void add(double x) { min = std::min(min, x), max = std::max(max, x); }
  double length() const { return max - min; }
  double middle() const { return min + length() / 2; }
};

// How many samples a mm may have for the range to fit.
double scaleOf(const Range& range, int samples) {
  const double room = (1 - 2 * kRoom) * samples;
  return range.length() > 0 ? room / range.length() : std::numeric_limits<double>::infinity();
}

}  // namespace

View::View(std::span<const Body> bodies, int width, int height) {
  Range x, y;
  for (const Body& body : bodies) {
    forEachPlaced(body, [&](const UTri& t) {
      for (const UVec3d& p : t.p) x.add(p * kRight), y.add(p * kUp);
    });
  }
  if (x.max < x.min) return;  // nothing to see
  const double scale = std::min(scaleOf(x, width), scaleOf(y, height));
  if (scale < std::numeric_limits<double>::infinity()) scale_ = scale;
  left_ = width / 2.0 - scale_ * x.middle();
  top_ = height / 2.0 + scale_ * y.middle();
}

}  // namespace korvo::exporting
