#include "toolkit/solve/ArmFamily.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <utility>

#include "toolkit/solve/Between.h"

namespace korvo {
namespace {

using Angles = std::array<double, 6>;

constexpr double kTurn = 360.0;
constexpr double kWholeCircle = 2 * std::numbers::pi;
constexpr double kSlopeStep = 1e-5;  ///< rad between the places of which slopes are made.
constexpr double kShortest = 1e-10;  ///< rad: what changes within this is a jump.
constexpr double kMostTurned = 30;   ///< Degrees in one step.
constexpr int kFewestSteps = 16;
constexpr int kMostHalvings = 10000;  ///< Ways that rounding alone places jump everywhere.
constexpr double kStill = 1e-6;       ///< Degrees in one step that count as none.

/// A joint within this (degrees) of a limit stands on it: a root is no surer next to a fold. The
/// residual decides.
constexpr double kAtLimit = 1e-8;

constexpr double kSameValue = 1e-6;   ///< Degrees: of one place found twice.
constexpr double kSameMember = 1e-3;  ///< Degrees: two ways that meet are found so near each other.

double turnApart(double a, double b) { return a - b - kTurn * std::nearbyint((a - b) / kTurn); }

double distance(const Angles& a, const Angles& b) {
  double sum = 0.0;
  for (std::size_t j = 0; j < 6; ++j) sum += std::abs(turnApart(a[j], b[j]));
  return sum;
}

double distanceSq(const Angles& a, const Angles& b) {
  double sum = 0.0;
  for (std::size_t j = 0; j < 6; ++j) sum += turnApart(a[j], b[j]) * turnApart(a[j], b[j]);
  return sum;
}

/// The way of the same branch that is nearest; -1 without one.
int matchOf(const ArmWays& ways, const ArmWay& way) {
  int best = -1;
  double least = 0.0;
  for (int i = 0; i < ways.count; ++i) {
    const ArmWay& other = ways.list[at(i)];
    if (other.branch != way.branch) continue;
    const double here = distance(other.degrees, way.degrees);
    if (best < 0 || here < least) best = i, least = here;
  }
  return best;
}

/// The turns of `degrees` that are nearest to `near`.
Angles lifted(const Angles& degrees, const Angles& near) {
  Angles out = near;
  for (std::size_t j = 0; j < 6; ++j) out[j] += turnApart(degrees[j], near[j]);
  return out;
}

/// A place of the circle, with its ways next to it on both sides.
struct Node {
  double t = 0.0;
  ArmWays ways, before, after;
};

/// A part of a curve inside the limits, as far as it is followed.
struct Piece {
  std::size_t parent;
  ArmMember best;
};

/// Where a piece touches the place that is reached.
struct Touch {
  std::size_t piece;
  Angles degrees;
  Branch branch{};  ///< At a fold.
};

/// A way between two places, x from 0 to 1; towards a fold, where it meets another way, slower: the
/// joints have finite slopes there.
struct Run {
  double from = 0.0, to = 0.0;
  int fold = -1;  ///< 0 or 1 where there is one.
  ArmWay way;

  double at(double x) const {
    if (fold == 0) return from + (to - from) * x * x;
    if (fold == 1) return to - (to - from) * (1 - x) * (1 - x);
    return from + (to - from) * x;
  }
};

struct Stop {
  double x = 0.0;
  Angles degrees{};
  Angles slopes{};  ///< For each 1 of x.
  SingularDistance singular;
};

/// The last place where a way is, and the next one, where it is not.
struct End {
  double is, isNot;
};

/// Storage that a thread keeps.
struct Scratch {
  std::vector<Node> nodes;
  std::vector<double> found;
  std::vector<End> ends;
  std::vector<Piece> pieces;
  std::vector<Touch> first, open, next, now, later, folded;
  std::vector<Stop> stops;
};

class Follower {
 public:
  Follower(const ArmCircle& circle, Scratch& scratch, ArmMembers& out)
      : circle_(circle), free_(at(circle.free)), s_(scratch), out_(out) {}

  void follow() {
    out_.list.clear();
    out_.singular.clear();
    placeNodes();
    addWindows();
    addGaps();
    addFolds();
    addSingular();
    s_.pieces.clear();
    s_.first.clear();
    s_.open.clear();
    for (std::size_t i = 0; i + 1 < s_.nodes.size(); ++i) {
      walk(s_.nodes[i], s_.nodes[i + 1], i == 0);
      std::swap(s_.open, s_.next);
    }
    for (const Touch& t : s_.open) join(t.piece, pieceAt(s_.first, t.degrees).value_or(t.piece));
    collect();
  }

 private:
  // --- places of the circle

  ArmWays waysAt(double t, const Branch* side = nullptr) const { return circle_.waysAt(t, side); }

  Node nodeAt(double t) const {
    Node node;
    node.t = t;
    node.ways = waysAt(t);
    if (node.ways.count > 0) node.before = waysAt(t - kSlopeStep);
    if (node.ways.count > 0) node.after = waysAt(t + kSlopeStep);
    return node;
  }

  void placeNodes() {
    s_.nodes.clear();
    s_.ends.clear();
    const int count = std::max(circle_.steps, kFewestSteps) / 2;
    for (int i = 0; i < count; ++i) s_.nodes.push_back(nodeAt(kWholeCircle * i / count));
    s_.nodes.push_back(s_.nodes.front());
    s_.nodes.back().t = kWholeCircle;
  }

  void addFound() {
    for (const double t : s_.found) s_.nodes.push_back(nodeAt(t));
    std::sort(s_.nodes.begin(), s_.nodes.end(),
              [](const Node& a, const Node& b) { return a.t < b.t; });
    s_.found.clear();
  }

  /// Calls `visit` with the ends about every node whose value is no larger than its neighbours'.
  template <typename Value, typename Visit>
  void forEachLow(Value value, Visit visit) const {
    const std::size_t last = s_.nodes.size() - 1;
    for (std::size_t i = 0; i < last; ++i) {
      const Node& before = s_.nodes[i == 0 ? last - 1 : i - 1];
      const Node& after = s_.nodes[i + 1];
      const double here = value(s_.nodes[i].ways);
      const double lower = value(before.ways), upper = value(after.ways);
      if (!(here > 0 && here <= lower && here <= upper && std::isfinite(here))) continue;
      // Not every low can go down to nothing: its square is nearly a parabola.
      const double steepest = std::max(std::abs(upper - here), std::abs(lower - here));
      if (here > steepest) continue;
      visit(i == 0 ? before.t - kWholeCircle : before.t, after.t);
    }
  }

  double onCircle(double t) const { return t < 0 ? t + kWholeCircle : t; }

  /// Ways that exist between two nodes alone.
  void addWindows() {
    s_.found.clear();
    for (std::size_t k = 0; k < 5; ++k) {
      const auto missing = [k](const ArmWays& ways) { return ways.missing[k]; };
      forEachLow(missing, [&](double a, double b) {
        const double t = lowestBetween(a, b, [&](double x) { return missing(waysAt(x)); });
        if (waysAt(t).count > 0) s_.found.push_back(onCircle(t));
      });
    }
    addFound();
  }

  /// Ways that meet, are not, and part again between two nodes.
  void addGaps() {
    for (std::size_t i = 0; i + 1 < s_.nodes.size(); ++i) {
      const Node &a = s_.nodes[i], &b = s_.nodes[i + 1];
      for (int p = 0; p < a.ways.count; ++p) {
        for (int q = 0; q < p; ++q) addGap(a, b, a.ways.list[at(p)], a.ways.list[at(q)]);
      }
    }
    addFound();
  }

  static double betweenSq(const ArmWays& ways, const ArmWay& p, const ArmWay& q) {
    const int i = matchOf(ways, p), j = matchOf(ways, q);
    if (i < 0 || j < 0 || i == j) return 0.0;
    return distanceSq(ways.list[at(i)].degrees, ways.list[at(j)].degrees);
  }

  void addGap(const Node& a, const Node& b, const ArmWay& p, const ArmWay& q) {
    constexpr double kFarSq = 90.0 * 90.0, kNear = 0.3;
    const double atA = distanceSq(p.degrees, q.degrees);
    const double atB = betweenSq(b.ways, p, q);
    if (std::min(atA, atB) > kFarSq || !(atB > 0)) return;
    const double width = b.t - a.t;
    const double slopeA = (betweenSq(a.after, p, q) - atA) / kSlopeStep * width;
    const double slopeB = (atB - betweenSq(b.before, p, q)) / kSlopeStep * width;
    if (!(slopeA < 0 && slopeB > 0)) return;
    const double least = atA - slopeA * slopeA / (2 * (slopeB - slopeA));
    if (least > kNear * std::min(atA, atB)) return;
    const auto between = [&](double t) {
      return std::sqrt(betweenSq(waysAt(t), p, q)) * kDegToRad;
    };
    const double t = lowestBetween(a.t, b.t, between);
    if (between(t) == 0.0) s_.found.push_back(t);
  }

  /// Ways between two nodes that end where another one does, or where one changes its branch.
  void addFolds() {
    for (std::size_t i = 0; i + 1 < s_.nodes.size(); ++i) {
      const Node &a = s_.nodes[i], &b = s_.nodes[i + 1];
      for (int k = 0; k < a.ways.count; ++k) addFold(a, b, a.ways.list[at(k)]);
      for (int k = 0; k < b.ways.count; ++k) addFold(b, a, b.ways.list[at(k)]);
    }
    addFound();
  }

  void addFold(const Node& from, const Node& to, const ArmWay& way) {
    if (matchOf(to.ways, way) >= 0) return;
    const End end = endOf(way, from.t, to.t);
    for (const double t : {end.is + 1e-3 * (from.t - end.is), end.isNot}) {
      const ArmWays ways = waysAt(t);
      const bool isNew =
          std::any_of(ways.list.begin(), ways.list.begin() + ways.count, [&](const ArmWay& other) {
            const int before = countOf(from.ways, other.branch);
            const int after = countOf(to.ways, other.branch);
            return other.branch.wrist != 0 && countOf(ways, other.branch) > std::max(before, after);
          });
      if (isNew) s_.found.push_back(t);
    }
  }

  static int countOf(const ArmWays& ways, const Branch& branch) {
    return static_cast<int>(std::count_if(ways.list.begin(), ways.list.begin() + ways.count,
                                          [&](const ArmWay& way) { return way.branch == branch; }));
  }

  /// Places between nodes where the wrist is straight or its centre over the first joint.
  void addSingular() {
    for (std::size_t i = 0; i + 1 < s_.nodes.size(); ++i) {
      if (s_.nodes[i].ways.isSingular) out_.singular.push_back(s_.nodes[i].t);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      const auto clear = [k](const ArmWays& ways) { return ways.clear[k]; };
      forEachLow(clear, [&](double a, double b) {
        const double t = lowestBetween(a, b, [&](double x) {
          const double here = clear(waysAt(x));
          return std::isfinite(here) ? here : 0.0;
        });
        if (waysAt(t).isSingular) addSingular(onCircle(t));
      });
    }
  }

  void addSingular(double t) {
    const auto isSame = [t](double other) { return std::abs(t - other) < kSameValue; };
    if (std::none_of(out_.singular.begin(), out_.singular.end(), isSame)) {
      out_.singular.push_back(t);
    }
  }

  // --- from one node to the next

  void walk(const Node& a, const Node& b, bool isFirst) {
    s_.next.clear();
    s_.folded.clear();
    std::array<bool, 8> isReached{};
    for (int i = 0; i < a.ways.count; ++i) {
      const ArmWay& way = a.ways.list[at(i)];
      const int j = matchOf(b.ways, way);
      s_.now = s_.open;
      if (j >= 0 && matchOf(a.ways, b.ways.list[at(j)]) == i) {
        isReached[at(j)] = true;
        walkThrough(a, b, way, b.ways.list[at(j)], isFirst);
        s_.next.insert(s_.next.end(), s_.now.begin(), s_.now.end());
      } else {
        walkToFold({a.t, endOf(way, a.t, b.t, leastOf(way, a.ways, b.ways)).is, 1, way}, isFirst);
      }
    }
    s_.folded.clear();
    for (int j = 0; j < b.ways.count; ++j) {
      if (isReached[at(j)]) continue;
      const ArmWay& way = b.ways.list[at(j)];
      s_.now.clear();
      walkToFold({endOf(way, b.t, a.t, leastOf(way, b.ways, a.ways)).is, b.t, 0, way}, false);
      s_.next.insert(s_.next.end(), s_.now.begin(), s_.now.end());
    }
  }

  void walkThrough(const Node& a, const Node& b, const ArmWay& way, const ArmWay& end,
                   bool isFirst) {
    const Run run{a.t, b.t, -1, way};
    Stop from{0.0, way.degrees, {}, way.singular};
    Stop to{1.0, lifted(end.degrees, way.degrees), {}, end.singular};
    const bool isWide = b.t - a.t > 100 * kSlopeStep;
    const double step = kSlopeStep / (b.t - a.t);
    if (!isWide || !slopeBy(a.after, way, step, from)) setSlopes(run, from, 1.0);
    if (!isWide || !slopeBy(b.before, end, -step, to)) setSlopes(run, to, 1.0);
    begin(run, from, isFirst);
    walkRun(run, from, to);
  }

  void walkToFold(const Run& run, bool isFirst) {
    Stop from, to;
    const Angles& known = run.way.degrees;
    if (!stopAt(run, run.fold == 1 ? 0.0 : 1.0, known, run.fold == 1 ? from : to)) return;
    const double x = run.fold == 1 ? 1.0 : 0.0;
    if (!stopAt(run, x, known, run.fold == 1 ? to : from)) return s_.now.clear();
    setSlopes(run, from, 1.0);
    setSlopes(run, to, 1.0);
    begin(run, from, isFirst);
    if (run.fold == 0) joinAtFold(run.way.branch);
    walkRun(run, from, to);
    if (run.fold == 1) joinAtFold(run.way.branch);
  }

  /// Pieces of two ways of one branch that meet at a fold are one.
  void joinAtFold(const Branch& branch) {
    for (const Touch& here : s_.now) {
      for (const Touch& other : s_.folded) {
        if (other.branch != branch) continue;
        if (areWithin(here.degrees, other.degrees, kSameMember)) join(other.piece, here.piece);
      }
    }
    for (const Touch& here : s_.now) s_.folded.push_back({here.piece, here.degrees, branch});
  }

  void begin(const Run& run, const Stop& from, bool isFirst) {
    touch(run, from);
    if (isFirst && run.fold != 0) s_.first.insert(s_.first.end(), s_.now.begin(), s_.now.end());
  }

  /// As long as a way goes on there are so many of its branch: of two, one may become another
  /// branch while the other one goes on.
  static int leastOf(const ArmWay& way, const ArmWays& from, const ArmWays& to) {
    return countOf(to, way.branch) > 0 ? countOf(from, way.branch) : 1;
  }

  /// Where a way ends towards `to`, which has fewer than `least` of its branch. Two that meet have
  /// one end.
  End endOf(const ArmWay& way, double from, double to, int least = 1) {
    const auto isAt = [&](double t) {
      return countOf(waysAt(t, &way.branch), way.branch) >= least;
    };
    const auto isWithin = [&](double t) { return (t - from) * (to - t) >= 0; };
    const auto known = std::find_if(s_.ends.begin(), s_.ends.end(), [&](const End& end) {
      return isWithin(end.is) && isWithin(end.isNot) && isAt(end.is) && !isAt(end.isNot);
    });
    if (known != s_.ends.end()) return *known;
    End end{from, to};
    while (std::abs(end.isNot - end.is) > 1e-15) {
      const double middle = std::midpoint(end.is, end.isNot);
      if (middle == end.is || middle == end.isNot) break;
      (isAt(middle) ? end.is : end.isNot) = middle;
    }
    s_.ends.push_back(end);
    return end;
  }

  // --- along one way

  bool stopAt(const Run& run, double x, const Angles& near, Stop& out) const {
    const ArmWays ways = waysAt(run.at(x), &run.way.branch);
    ArmWay here = run.way;
    here.degrees = near;
    const int i = matchOf(ways, here);
    if (i < 0) return false;
    out.x = x;
    out.degrees = lifted(ways.list[at(i)].degrees, near);
    out.singular = ways.list[at(i)].singular;
    return true;
  }

  static bool slopeBy(const ArmWays& beside, const ArmWay& way, double step, Stop& stop) {
    const int i = matchOf(beside, way);
    if (i < 0) return false;
    for (std::size_t j = 0; j < 6; ++j) {
      stop.slopes[j] = turnApart(beside.list[at(i)].degrees[j], way.degrees[j]) / step;
    }
    return true;
  }

  void setSlopes(const Run& run, Stop& stop, double width) const {
    const double step = (stop.x < 0.5 ? 1e-4 : -1e-4) * width;
    for (const double by : {step, -step}) {
      Stop beside;
      if (stop.x + by < 0 || stop.x + by > 1) continue;
      if (!stopAt(run, stop.x + by, stop.degrees, beside)) continue;
      for (std::size_t j = 0; j < 6; ++j) {
        stop.slopes[j] = (beside.degrees[j] - stop.degrees[j]) / by;
      }
      return;
    }
  }

  void walkRun(const Run& run, const Stop& a, const Stop& b) {
    if (isTame(a, b)) return cutAndWalk(run, a, b);
    Angles middle;
    for (std::size_t j = 0; j < 6; ++j) middle[j] = std::midpoint(a.degrees[j], b.degrees[j]);
    Stop m;
    if (std::abs(run.at(b.x) - run.at(a.x)) < kShortest || ++halvings_ > kMostHalvings ||
        !stopAt(run, std::midpoint(a.x, b.x), middle, m)) {
      s_.now.clear();
      return touch(run, b);
    }
    setSlopes(run, m, b.x - a.x);
    walkRun(run, a, m);
    Stop end = b;
    end.degrees = lifted(b.degrees, m.degrees);
    walkRun(run, m, end);
  }

  /// Whether every joint only rises or only falls between two stops, or turns back once.
  static bool isTame(const Stop& a, const Stop& b) {
    const double width = b.x - a.x;
    for (std::size_t j = 0; j < 6; ++j) {
      const double by = b.degrees[j] - a.degrees[j];
      const double first = a.slopes[j] * width, last = b.slopes[j] * width;
      const double steepest = std::max(std::abs(first), std::abs(last));
      if (std::abs(by) > kMostTurned || steepest > 3 * kMostTurned) return false;
      if (steepest < kStill && std::abs(by) < kStill) continue;
      // Between these slopes a cubic that fits them is monotonous (Fritsch and Carlson, 1980).
      if (first * last > 0 && !(first * by > 0 && steepest <= 3 * std::abs(by))) return false;
    }
    return true;
  }

  void cutAndWalk(const Run& run, const Stop& a, const Stop& b) {
    s_.stops.clear();
    s_.stops.push_back(a);
    addTurningPoints(run, a, b);
    s_.stops.push_back(b);
    sortStops();
    const std::size_t count = s_.stops.size();
    for (std::size_t i = 0; i + 1 < count; ++i) addCrossings(run, i);
    sortStops();
    for (std::size_t i = 1; i < s_.stops.size(); ++i) {
      pass(s_.stops[i - 1].degrees, s_.stops[i].degrees);
      touch(run, s_.stops[i]);
    }
  }

  void sortStops() {
    std::sort(s_.stops.begin(), s_.stops.end(),
              [](const Stop& a, const Stop& b) { return a.x < b.x; });
  }

  /// Calls `visit` with every value at which a joint enters or leaves, at the turn nearest to
  /// `near`.
  template <typename Visit>
  void forEachValue(std::size_t j, double near, Visit visit) const {
    const ArmRange& range = circle_.ranges[j];
    const auto visitTurn = [&](double value) {
      if (std::isfinite(value)) visit(value + kTurn * std::round((near - value) / kTurn));
    };
    const bool isOne = range.max == range.min;
    if (!range.isEndless) visitTurn(range.min);
    if (!range.isEndless && !isOne) visitTurn(range.max);
    if (j == free_ && !isOne) visitTurn(range.start);
  }

  void addTurningPoints(const Run& run, const Stop& a, const Stop& b) {
    const double width = b.x - a.x;
    for (std::size_t j = 0; j < 6; ++j) {
      const double first = a.slopes[j] * width, last = b.slopes[j] * width;
      const double over = std::max(std::abs(first), std::abs(last));
      if (!(first * last < 0) || over < kStill) continue;
      const auto [low, high] = std::minmax(a.degrees[j], b.degrees[j]);
      bool isNeeded = j == free_;
      forEachValue(j, low, [&, l = low](double v) { isNeeded |= v <= l && v >= l - over; });
      forEachValue(j, high, [&, h = high](double v) { isNeeded |= v >= h && v <= h + over; });
      if (isNeeded) addTurningPoint(run, a, b, j);
    }
  }

  void addTurningPoint(const Run& run, const Stop& a, const Stop& b, std::size_t j) {
    const double width = b.x - a.x, step = 1e-4 * width;
    Stop here = a;
    const auto slopeAt = [&](double x) {
      Stop before, after;
      const double low = std::max(x - step, 0.0), high = std::min(x + step, 1.0);
      if (!stopAt(run, low, here.degrees, before) || !stopAt(run, high, here.degrees, after)) {
        return 0.0;
      }
      here = before;
      return (after.degrees[j] - before.degrees[j]) / (high - low);
    };
    const double small = 1e-6 * std::max(std::abs(a.slopes[j]), std::abs(b.slopes[j]));
    const double x = zeroBetween(a.x, b.x, a.slopes[j], b.slopes[j], small, slopeAt);
    Stop turn;
    if (stopAt(run, x, here.degrees, turn)) s_.stops.push_back(turn);
  }

  void addCrossings(const Run& run, std::size_t i) {
    for (std::size_t j = 0; j < 6; ++j) {
      const Stop a = s_.stops[i], b = s_.stops[i + 1];
      forEachValue(j, std::midpoint(a.degrees[j], b.degrees[j]), [&](double value) {
        const double atA = a.degrees[j] - value, atB = b.degrees[j] - value;
        if (atA * atB < 0) addCrossing(run, a, b, j, value);
      });
    }
  }

  void addCrossing(const Run& run, const Stop& a, const Stop& b, std::size_t j, double value) {
    constexpr double kSmall = 1e-12;
    Stop here;
    here.degrees = a.degrees;
    const auto missing = [&](double x) {
      return stopAt(run, x, here.degrees, here) ? here.degrees[j] - value : 0.0;
    };
    const double x =
        zeroBetween(a.x, b.x, a.degrees[j] - value, b.degrees[j] - value, kSmall, missing);
    if (here.x == x) s_.stops.push_back(here);
  }

  // --- inside the limits

  /// Calls `visit` with the full turns (degrees) that bring all joints inside their limits at both
  /// of two places.
  template <typename Visit>
  void forEachTurn(const Angles& a, const Angles& b, Visit visit) const {
    Angles first{};
    std::array<int, 6> counts{1, 1, 1, 1, 1, 1};
    for (std::size_t j = 0; j < 6; ++j) {
      if (circle_.ranges[j].isEndless) continue;
      const auto [low, high] = std::minmax(a[j], b[j]);
      first[j] = kTurn * std::ceil((circle_.ranges[j].min - kAtLimit - low) / kTurn);
      const double last = kTurn * std::floor((circle_.ranges[j].max + kAtLimit - high) / kTurn);
      counts[j] = turnCount(first[j], last);
      if (counts[j] == 0) return;
    }
    std::array<int, 6> k{};
    Angles turns = first;
    for (std::size_t j = 0; j < 6;) {
      visit(turns);
      for (j = 0; j < 6; ++j) {
        k[j] = k[j] + 1 < counts[j] ? k[j] + 1 : 0;
        turns[j] = first[j] + kTurn * k[j];
        if (k[j] > 0) break;
      }
    }
  }

  static Angles sum(const Angles& a, const Angles& b) {
    Angles out;
    for (std::size_t j = 0; j < 6; ++j) out[j] = a[j] + b[j];
    return out;
  }

  /// The members at a place: those of pieces that come here, and where new ones begin.
  void touch(const Run& run, const Stop& stop) {
    s_.later.clear();
    forEachTurn(stop.degrees, stop.degrees, [&](const Angles& turns) {
      const Angles here = sum(stop.degrees, turns);
      std::optional<std::size_t> piece = pieceAt(s_.now, here);
      if (!piece) {
        piece = s_.pieces.size();
        s_.pieces.push_back({*piece, {}});
      }
      offer(*piece, {here, run.way.branch, stop.singular});
      s_.later.push_back({*piece, here});
    });
    std::swap(s_.now, s_.later);
  }

  /// The pieces that lead from one place to the next.
  void pass(const Angles& from, const Angles& to) {
    s_.later.clear();
    forEachTurn(from, to, [&](const Angles& turns) {
      if (const auto piece = pieceAt(s_.now, sum(from, turns))) {
        s_.later.push_back({*piece, sum(to, turns)});
      }
    });
    std::swap(s_.now, s_.later);
  }

  double apart(std::size_t j, double a, double b) const {
    return circle_.ranges[j].isEndless ? turnApart(a, b) : a - b;
  }

  bool areWithin(const Angles& a, const Angles& b, double degrees) const {
    for (std::size_t j = 0; j < 6; ++j) {
      if (!(std::abs(apart(j, a[j], b[j])) <= degrees)) return false;
    }
    return true;
  }

  std::optional<std::size_t> pieceAt(const std::vector<Touch>& touches, const Angles& here) const {
    const auto found = std::find_if(touches.begin(), touches.end(), [&](const Touch& t) {
      return areWithin(t.degrees, here, kSameValue);
    });
    if (found == touches.end()) return {};
    return root(found->piece);
  }

  std::size_t root(std::size_t piece) const {
    while (s_.pieces[piece].parent != piece) piece = s_.pieces[piece].parent;
    return piece;
  }

  void join(std::size_t a, std::size_t b) {
    a = root(a), b = root(b);
    if (a == b) return;
    s_.pieces[b].parent = a;
    takeNearer(s_.pieces[b].best, s_.pieces[a].best);
  }

  static void takeNearer(const ArmMember& member, ArmMember& best) {
    constexpr double kSameAway = 1e-9;
    const double nearer = best.away - member.away;
    const bool isAsNear = std::abs(nearer) <= kSameAway && member.othersAway < best.othersAway;
    if (nearer > kSameAway || isAsNear) best = member;
  }

  void offer(std::size_t piece, const ArmWay& way) {
    ArmMember member{way, 0.0, 0.0};
    for (std::size_t j = 0; j < 6; ++j) {
      const ArmRange& range = circle_.ranges[j];
      double value = range.start + apart(j, way.degrees[j], range.start);
      if (!range.isEndless) value = std::clamp(value, range.min, range.max);
      if (j == free_ && std::abs(value - range.start) <= kOnLimit) value = range.start;
      member.way.degrees[j] = value;
      (j == free_ ? member.away : member.othersAway) += std::abs(value - range.start);
    }
    takeNearer(member, s_.pieces[root(piece)].best);
  }

  static bool isBefore(const ArmMember& a, const ArmMember& b) {
    const auto key = [](const Branch& branch) {
      return std::array<int, 3>{-branch.shoulder, -branch.elbow, -branch.wrist};
    };
    const auto first = key(a.way.branch), second = key(b.way.branch);
    return first != second ? first < second : a.way.degrees < b.way.degrees;
  }

  void collect() {
    for (std::size_t i = 0; i < s_.pieces.size(); ++i) {
      const ArmMember& member = s_.pieces[i].best;
      const bool isKnown = s_.pieces[i].parent != i ||
                           std::any_of(out_.list.begin(), out_.list.end(), [&](const ArmMember& m) {
                             return areWithin(m.way.degrees, member.way.degrees, kSameMember);
                           });
      if (!isKnown) out_.list.push_back(member);
    }
    std::sort(out_.list.begin(), out_.list.end(), isBefore);
  }

  const ArmCircle& circle_;
  std::size_t free_;
  Scratch& s_;
  ArmMembers& out_;
  int halvings_ = 0;
};

}  // namespace

void followCircle(const ArmCircle& circle, ArmMembers& out) {
  thread_local Scratch scratch;
  Follower(circle, scratch, out).follow();
}

}  // namespace korvo
