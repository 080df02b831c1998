#include "geometry/ZrnSubdivide.h"

#include <cmath>

using zgeo::UTri;
using zgeo::UVec3d;

namespace zkin::zrn {
namespace {

bool isFinite(const UTri& t) {
  bool finite = true;
  for (const UVec3d& p : t.p)
    finite &= std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
  return finite;
}

/// Halves first: the sum of two large numbers may be no number.
UVec3d middle(const UVec3d& a, const UVec3d& b) { return a * 0.5 + b * 0.5; }

/// The same triangle, `by` corners on.
UTri turned(const UTri& t, int by) { return {t.p[by % 3], t.p[(by + 1) % 3], t.p[(by + 2) % 3]}; }

class Subdivision {
 public:
  Subdivision(double longest, std::vector<UTri>& pieces)
      : longest2_(longest * longest), pieces_(pieces) {}

  void cut(const UTri& t, int cutsLeft) {
    const bool isLong[] = {isLongEdge(t, 0), isLongEdge(t, 1), isLongEdge(t, 2)};
    const int count = isLong[0] + isLong[1] + isLong[2];
    if (count == 0 || cutsLeft == 0) return pieces_.push_back(t);
    if (count == 1) return cutOne(turned(t, first(isLong, true)), cutsLeft - 1);
    if (count == 2) return cutTwo(turned(t, first(isLong, false) + 1), cutsLeft - 1);
    cutThree(t, cutsLeft - 1);
  }

 private:
  /// Edge i runs from corner i to the next.
  bool isLongEdge(const UTri& t, int i) const {
    return t.p[i].distance2To(t.p[(i + 1) % 3]) > longest2_;
  }

  static int first(const bool (&flags)[3], bool wanted) {
    int i = 0;
    while (flags[i] != wanted) ++i;
    return i;
  }

  /// The edge p0p1 is long.
  void cutOne(const UTri& t, int cutsLeft) {
    const auto& [p0, p1, p2] = t.p;
    const UVec3d m01 = middle(p0, p1);
    cut({p0, m01, p2}, cutsLeft);
    cut({p2, m01, p1}, cutsLeft);
  }

  /// The edge p2p0 is the short one.
  void cutTwo(const UTri& t, int cutsLeft) {
    const auto& [p0, p1, p2] = t.p;
    const UVec3d m01 = middle(p0, p1);
    const UVec3d m12 = middle(p1, p2);
    cut({m01, p1, m12}, cutsLeft);
    if (p0.distance2To(m12) < p2.distance2To(m01)) {
      cut({p0, m01, m12}, cutsLeft);
      cut({p0, m12, p2}, cutsLeft);
    } else {
      cut({p0, m01, p2}, cutsLeft);
      cut({p2, m01, m12}, cutsLeft);
    }
  }

  /// Deliberate: the middle piece, the first, turns the other way, and this order of pieces. Test:
  /// ZrnSubdivide.ThreeLongEdgesGiveFourPiecesWithTheMiddleOneReversed.
  void cutThree(const UTri& t, int cutsLeft) {
    const auto& [p0, p1, p2] = t.p;
    const UVec3d m01 = middle(p0, p1);
    const UVec3d m02 = middle(p0, p2);
    const UVec3d m12 = middle(p1, p2);
    cut({m12, m01, m02}, cutsLeft);
    cut({m01, m02, p0}, cutsLeft);
    cut({m12, m01, p1}, cutsLeft);
    cut({m02, m12, p2}, cutsLeft);
  }

  double longest2_;
  std::vector<UTri>& pieces_;
};

}  // namespace

void subdivide(const UTri& triangle, double longest, std::vector<UTri>& pieces) {
  const bool isCut = longest > 0 && std::isfinite(longest) && isFinite(triangle);
  Subdivision(longest, pieces).cut(triangle, isCut ? kMostCuts : 0);
}

}  // namespace zkin::zrn
