#include "platform/solidra/CGeom_SNurbs.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <tuple>
#include <utility>

#include "platform/solidra/Nurbs.h"

namespace {

using solidra::Knots;
using solidra::Surface;

bool isPole(const CGeom_XYZ& p) {  // false for NaN
  return std::abs(p.x) <= solidra::kMaxCoordinate && std::abs(p.y) <= solidra::kMaxCoordinate &&
         std::abs(p.z) <= solidra::kMaxCoordinate;
}

// The part from a to b of the knots' range, the whole range where that is nothing.
std::pair<double, double> interval(const Knots& knots, double a, double b) {
  const std::pair<double, double> whole{knots.start(), knots.end()};
  if (!std::isfinite(a) || !std::isfinite(b)) return whole;
  const double from = std::max(std::min(a, b), whole.first);
  const double to = std::min(std::max(a, b), whole.second);
  const bool isPart =
      to - from > solidra::kSameKnot *
                      std::max(whole.second - whole.first, std::max(std::abs(from), std::abs(to)));
  return isPart ? std::pair{from, to} : whole;
}

bool arePoles(const CStd_Array1<CGeom_XYZ>& poles, long long count) {
  return poles.GetCount() == count && std::all_of(poles.begin(), poles.end(), isPole);
}

}  // namespace

CGeom_SNurbs::CGeom_SNurbs(int countU, int orderU, bool periodicU, bool closedU,
                           CStd_Array1<double>& knotsU, int countV, int orderV, bool periodicV,
                           bool closedV, CStd_Array1<double>& knotsV, CStd_Array1<CGeom_XYZ>& poles,
                           CStd_Array1<double>& weights, double startU, double endU, double startV,
                           double endV) {
  if (periodicU || closedU || periodicV || closedV) return;
  try {
    auto data = std::make_unique<Surface>();
    const long long count = static_cast<long long>(countU) * countV;
    if (knotsU.GetCount() != static_cast<long long>(countU) + orderU ||
        knotsV.GetCount() != static_cast<long long>(countV) + orderV ||
        (weights.GetCount() != 0 && weights.GetCount() != count) ||
        !solidra::makeKnots(knotsU, countU, orderU, data->u) ||
        !solidra::makeKnots(knotsV, countV, orderV, data->v) || !arePoles(poles, count) ||
        !solidra::areWeights(weights, count))
      return;
    data->poles.assign(poles.begin(), poles.end());
    data->weights.assign(weights.begin(), weights.end());
    std::tie(data->start.x, data->end.x) = interval(data->u, startU, endU);
    std::tie(data->start.y, data->end.y) = interval(data->v, startV, endV);
    data_ = std::move(data);
  } catch (const std::exception&) {  // memory is short
    data_.reset();
  }
}

CGeom_SNurbs::~CGeom_SNurbs() = default;

const Surface* CGeom_SNurbs::Data() const noexcept { return data_.get(); }
