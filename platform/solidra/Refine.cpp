#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <utility>

#include "platform/solidra/FaceMesh.h"

namespace solidra {

namespace {

// Each round halves the edges that are too long: 2^-kMaxRounds of a face is nothing.
constexpr int kMaxRounds = 24;

// Rounds in which only the sides that are too far off are cut, which keeps the triangles few. After
// them whatever is still bad is cut on all sides: near a pole a bad side may cut off ever smaller
// pieces of a triangle and leave the bad rest.
constexpr int kThriftyRounds = 4;

// Below this square of the sine of an angle rounding may put a foot anywhere in the triangle.
constexpr double kThin = 1e-10;

using Triangle = std::array<int, 3>;

CGeom_XYZ minus(const CGeom_XYZ& a, const CGeom_XYZ& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

CGeom_XYZ plus(const CGeom_XYZ& a, const CGeom_XYZ& b, double times) {
  return {a.x + times * b.x, a.y + times * b.y, a.z + times * b.z};
}

double dot(const CGeom_XYZ& a, const CGeom_XYZ& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

double squared(const CGeom_XYZ& a) { return dot(a, a); }

// Square of the distance from p to the segment from the origin along d.
double toSegment(const CGeom_XYZ& p, const CGeom_XYZ& d) {
  const double length2 = squared(d);
  const double t = length2 > 0 ? std::clamp(dot(p, d) / length2, 0.0, 1.0) : 0;
  return squared(plus(p, d, -t));
}

// Square of the distance from p to the triangle (0, b, c): to its plane where p lies over its
// inside, to its nearest side elsewhere.
double toTriangle(const CGeom_XYZ& p, const CGeom_XYZ& b, const CGeom_XYZ& c) {
  const double bb = squared(b);
  const double bc = dot(b, c);
  const double cc = squared(c);
  const double pb = dot(p, b);
  const double pc = dot(p, c);
  const double area2 = bb * cc - bc * bc;
  const double s = pb * cc - pc * bc;
  const double t = pc * bb - pb * bc;
  const bool isInside = area2 > 0 && s >= 0 && t >= 0 && s + t <= area2;
  const double toPlane = isInside ? squared(plus(plus(p, b, -s / area2), c, -t / area2)) : HUGE_VAL;
  if (isInside && area2 > kThin * bb * cc) return toPlane;
  return std::min({toPlane, toSegment(p, b), toSegment(p, c), toSegment(minus(p, b), minus(c, b))});
}

/// Where a triangle is looked at, as shares of its corners: the middles of the sides first.
constexpr std::array<std::array<double, 3>, 7> kSamples = {{{.5, .5, 0},
                                                            {0, .5, .5},
                                                            {.5, 0, .5},
                                                            {1 / 3., 1 / 3., 1 / 3.},
                                                            {2 / 3., 1 / 6., 1 / 6.},
                                                            {1 / 6., 2 / 3., 1 / 6.},
                                                            {1 / 6., 1 / 6., 2 / 3.}}};

/// Largest distance from the surface, and which sides are to be cut for it (bit i: from corner i).
struct Finding {
  double distance = 0;
  int sides = 0;
};

/// One face's refinement.
class Refiner {
 public:
  Refiner(const Surface& surface, double tolerance, FaceMesh& mesh)
      : surface_(surface), tolerance_(tolerance), mesh_(mesh) {
    open_.resize(mesh.triangles.size());
    for (std::size_t i = 0; i < open_.size(); ++i) open_[i] = i;
  }

  // What the next look costs.
  long long steps() const {
    return static_cast<long long>(open_.size() * kSamples.size()) * surface_.steps();
  }

  // Looks at the triangles not yet found good; whether all are good now.
  bool look(double& worst) {
    worst = reached_;
    ++lookedAt_;
    bool isGood = true;
    for (const std::size_t i : open_) {
      const Finding found = find(mesh_.triangles[i]);
      worst = std::max(worst, found.distance);
      if (found.sides == 0) {
        reached_ = std::max(reached_, found.distance);
        continue;
      }
      isGood = false;
      for (int k = 0; k < 3; ++k)
        if (lookedAt_ > kThriftyRounds || (found.sides >> k & 1) != 0) mark(mesh_.triangles[i], k);
    }
    open_.clear();
    return isGood;
  }

  // Cuts all triangles with a marked side, also those that were good: a side belongs to two.
  void cut() {
    std::vector<Triangle> next;
    next.reserve(mesh_.triangles.size() + 3 * middles_.size());
    for (const Triangle& t : mesh_.triangles) {
      const std::size_t before = next.size();
      cutTriangle(t, next);
      if (next.size() > before + 1)
        for (std::size_t i = before; i < next.size(); ++i) open_.push_back(i);
    }
    mesh_.triangles = std::move(next);
    middles_.clear();
  }

 private:
  static std::uint64_t key(int a, int b) {
    return static_cast<std::uint64_t>(std::min(a, b)) << 32 | static_cast<unsigned>(std::max(a, b));
  }

  Finding find(const Triangle& t) const {
    const CGeom_XYZ& origin = mesh_.points[t[0]];
    const CGeom_XYZ b = minus(mesh_.points[t[1]], origin);
    const CGeom_XYZ c = minus(mesh_.points[t[2]], origin);
    Finding found;
    bool inside = false;
    for (std::size_t i = 0; i < kSamples.size(); ++i) {
      const double away = std::sqrt(toTriangle(minus(sample(t, kSamples[i]), origin), b, c));
      found.distance = std::max(found.distance, away);
      if (!(away > tolerance_)) continue;
      if (i < 3)
        found.sides |= 1 << i;
      else
        inside = true;
    }
    if (inside && found.sides == 0) found.sides = 1 << longest(b, c);
    return found;
  }

  CGeom_XYZ sample(const Triangle& t, const std::array<double, 3>& share) const {
    CGeom2d_XY at;
    for (int k = 0; k < 3; ++k) {
      at.x += share[k] * mesh_.unit[t[k]].x;
      at.y += share[k] * mesh_.unit[t[k]].y;
    }
    return surface_.unitPoint(at);
  }

  static int longest(const CGeom_XYZ& b, const CGeom_XYZ& c) {
    const std::array<double, 3> lengths = {squared(b), squared(minus(c, b)), squared(c)};
    return static_cast<int>(std::max_element(lengths.begin(), lengths.end()) - lengths.begin());
  }

  void mark(const Triangle& t, int side) {
    const int a = t[side];
    const int b = t[(side + 1) % 3];
    const auto [at, isNew] = middles_.try_emplace(key(a, b), static_cast<int>(mesh_.unit.size()));
    if (!isNew) return;
    const CGeom2d_XY& p = mesh_.unit[a];
    const CGeom2d_XY& q = mesh_.unit[b];
    mesh_.unit.push_back({(p.x + q.x) / 2, (p.y + q.y) / 2});
    mesh_.points.push_back(rounded(surface_.unitPoint(mesh_.unit.back())));
  }

  int middle(int a, int b) const {
    const auto at = middles_.find(key(a, b));
    return at == middles_.end() ? -1 : at->second;
  }

  double length(int a, int b) const { return squared(minus(mesh_.points[a], mesh_.points[b])); }

  // Turned so that the sides that are cut come first, each of the three patterns stands once.
  void cutTriangle(const Triangle& t, std::vector<Triangle>& out) const {
    std::array<int, 3> m = {middle(t[0], t[1]), middle(t[1], t[2]), middle(t[2], t[0])};
    const auto cuts = std::count_if(m.begin(), m.end(), [](int i) { return i >= 0; });
    int turn = 0;
    while (cuts == 1 && m[turn] < 0) ++turn;             // only side 0 is cut
    while (cuts == 2 && m[(turn + 2) % 3] >= 0) ++turn;  // all but side 2
    const int a = t[turn];
    const int b = t[(turn + 1) % 3];
    const int c = t[(turn + 2) % 3];
    std::rotate(m.begin(), m.begin() + turn, m.end());
    if (cuts == 0) {
      out.push_back(t);
    } else if (cuts == 1) {
      out.insert(out.end(), {{a, m[0], c}, {m[0], b, c}});
    } else if (cuts == 2) {
      out.push_back({m[0], b, m[1]});
      if (length(a, m[1]) < length(m[0], c))
        out.insert(out.end(), {{a, m[0], m[1]}, {a, m[1], c}});
      else
        out.insert(out.end(), {{a, m[0], c}, {m[0], m[1], c}});
    } else {
      out.insert(out.end(),
                 {{a, m[0], m[2]}, {m[0], b, m[1]}, {m[2], m[1], c}, {m[0], m[1], m[2]}});
    }
  }

  const Surface& surface_;
  double tolerance_;
  FaceMesh& mesh_;
  int lookedAt_ = 0;               // rounds
  double reached_ = 0;             // of the triangles found good
  std::vector<std::size_t> open_;  // triangles to look at
  std::unordered_map<std::uint64_t, int> middles_;
};

}  // namespace

bool refine(const Surface& surface, double tolerance, Work& work, FaceMesh& mesh) {
  Refiner refiner(surface, tolerance, mesh);
  for (int round = 0; round <= kMaxRounds; ++round) {
    if (!work.spend(refiner.steps())) return false;
    const bool isGood = refiner.look(mesh.stats.reached);
    if (round == 0) mesh.stats.first = mesh.stats.reached;
    mesh.stats.rounds = round;
    if (isGood) return std::isfinite(mesh.stats.reached);
    refiner.cut();
    if (mesh.triangles.size() > kMaxTriangles) return false;
  }
  return false;
}

}  // namespace solidra
