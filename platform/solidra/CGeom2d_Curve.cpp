#include "platform/solidra/CGeom2d_Curve.h"

#include <cmath>
#include <exception>
#include <numbers>
#include <utility>
#include <vector>

#include "platform/solidra/CGeom2d_CNurbs.h"
#include "platform/solidra/CGeom2d_Polygon.h"
#include "platform/solidra/Nurbs.h"

namespace {

using solidra::Curve;
using solidra::CurveShape;

bool isFinite(const CGeom2d_XY& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

bool areFinite(const CGeom2d_XY* points, int count) {
  for (int i = 0; i < count; ++i)
    if (!isFinite(points[i])) return false;
  return true;
}

// The knots inside the curve at which its second derivative may jump.
std::vector<double> cutsOf(const Curve& c) {
  std::vector<double> cuts{c.start};
  const std::vector<double>& knots = c.shape->knots.values;
  for (std::size_t i = 0, j = 0; i < knots.size(); i = j) {
    while (j < knots.size() && knots[j] == knots[i]) ++j;
    const bool below = c.shape->knots.degree - static_cast<int>(j - i) < 2;
    if (below && knots[i] > c.start && knots[i] < c.end) cuts.push_back(knots[i]);
  }
  cuts.push_back(c.end);
  return cuts;
}

// Turn at corner b in degrees; 0 where a side has no length.
double turn(const CGeom2d_XY& a, const CGeom2d_XY& b, const CGeom2d_XY& c) {
  const CGeom2d_XY in{b.x - a.x, b.y - a.y};
  const CGeom2d_XY out{c.x - b.x, c.y - b.y};
  const double sine = in.x * out.y - in.y * out.x;
  return std::abs(std::atan2(sine, in.x * out.x + in.y * out.y)) * 180 / std::numbers::pi;
}

std::vector<double> cornersOf(const Curve& c, double angle) {
  std::vector<double> cuts{c.start};
  const std::vector<CGeom2d_XY>& points = c.shape->poles;
  for (auto i = static_cast<std::size_t>(c.start) + 1; i < static_cast<std::size_t>(c.end); ++i)
    if (turn(points[i - 1], points[i], points[i + 1]) > angle)
      cuts.push_back(static_cast<double>(i));
  cuts.push_back(c.end);
  return cuts;
}

std::shared_ptr<const Curve> part(const Curve& c, double start, double end) {
  return std::make_shared<const Curve>(Curve{c.shape, start, end});
}

// Puts `make` of each part between neighbouring cuts behind `pieces`: all or, on an exception,
// none.
template <class Make>
int extract(const Curve& c, const std::vector<double>& cuts, CStd_Array1<CGeom2d_Curve*>& pieces,
            Make make) {
  std::vector<std::unique_ptr<CGeom2d_Curve>> made;
  for (std::size_t i = 1; i < cuts.size(); ++i)
    made.push_back(std::unique_ptr<CGeom2d_Curve>(make(part(c, cuts[i - 1], cuts[i]))));
  const int before = pieces.GetCount();
  pieces.SetCount(before + static_cast<int>(made.size()));
  for (std::size_t i = 0; i < made.size(); ++i)
    pieces[before + static_cast<int>(i)] = made[i].release();
  return static_cast<int>(made.size());
}

}  // namespace

CGeom2d_Curve::~CGeom2d_Curve() = default;

CGeom2d_CNurbs::CGeom2d_CNurbs(std::shared_ptr<const Curve> data) { data_ = std::move(data); }

CGeom2d_CNurbs::CGeom2d_CNurbs(int count, int order, bool periodic, bool closed,
                               const CStd_Array1<CGeom2d_XY>& poles,
                               const CStd_Array1<double>& knots,
                               const CStd_Array1<double>& weights) {
  if (periodic || closed) return;
  try {
    auto shape = std::make_shared<CurveShape>();
    if (!solidra::makeKnots(knots, count, order, shape->knots) || poles.GetCount() < count ||
        !areFinite(poles.begin(), count) || !solidra::areWeights(weights, count))
      return;
    shape->poles.assign(poles.begin(), poles.begin() + count);
    if (weights.GetCount() != 0) shape->weights.assign(weights.begin(), weights.begin() + count);
    const double start = shape->knots.start();
    const double end = shape->knots.end();
    data_ = std::make_shared<const Curve>(Curve{std::move(shape), start, end});
  } catch (const std::exception&) {  // memory is short
    data_.reset();
  }
}

CGeom2d_CNurbs::~CGeom2d_CNurbs() = default;

int CGeom2d_CNurbs::ExtractC2Curves(CStd_Array1<CGeom2d_Curve*>& pieces, double) const {
  if (!IsValid()) return 0;
  try {
    return extract(*Data(), cutsOf(*Data()), pieces,
                   [](auto data) { return new CGeom2d_CNurbs(std::move(data)); });
  } catch (const std::exception&) {  // memory is short
    return 0;
  }
}

CGeom2d_Polygon::CGeom2d_Polygon(std::shared_ptr<const Curve> data) { data_ = std::move(data); }

CGeom2d_Polygon::CGeom2d_Polygon(int count, const CGeom2d_XY* points, int size) {
  if (!points || count < 2 || count > size || !areFinite(points, count)) return;
  try {
    auto shape = std::make_shared<CurveShape>();
    shape->poles.assign(points, points + count);
    data_ = std::make_shared<const Curve>(Curve{std::move(shape), 0, count - 1.0});
  } catch (const std::exception&) {  // memory is short
    data_.reset();
  }
}

CGeom2d_Polygon::~CGeom2d_Polygon() = default;

int CGeom2d_Polygon::ExtractC2Curves(CStd_Array1<CGeom2d_Curve*>& pieces, double angle) const {
  if (!IsValid()) return 0;
  try {
    return extract(*Data(), cornersOf(*Data(), angle), pieces,
                   [](auto data) { return new CGeom2d_Polygon(std::move(data)); });
  } catch (const std::exception&) {  // memory is short
    return 0;
  }
}
