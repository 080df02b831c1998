#include "toolkit/path/Sides.h"

#include <algorithm>
#include <cmath>

#include "toolkit/solve/Core.h"

namespace korvo {
namespace {

constexpr double kSame = 1e-9;  // mm or degrees
constexpr std::size_t kMostCarried = 32;
constexpr std::size_t kMostSides = 4096;

Side sideOf(const Solution& solution) {
  Side side;
  side.values = solution.values;
  side.branch = solution.branch;
  const SingularDistance& s = solution.singular;
  side.singular = {static_cast<float>(s.directionRad), static_cast<float>(s.elbowRad),
                   static_cast<float>(s.shoulderMm)};
  for (std::size_t i = 0; i < 2; ++i) {
    side.freePlaces[i] = static_cast<std::int8_t>(solution.freePlaces[i]);
  }
  return side;
}

/// Whether the linear joints can move and leave the tool where it is, the rotary ones standing like
/// almost anywhere.
bool areRedundant(const SolverCore& core) {
  if (core.slides.size() > 3) return true;
  Values values{};
  for (const int i : core.turns) values[at(core.joint(i).place)] = 23.7 + 31.3 * i;
  std::vector<zgeo::UVec3d> ways;
  zgeo::UMatrix placed;
  for (int i = 0; i < static_cast<int>(core.chain.joints.size()); ++i) {
    const Joint& joint = core.joint(i);
    if (std::find(core.slides.begin(), core.slides.end(), i) != core.slides.end()) {
      ways.push_back(joint.direction.normalised());
      placed.applyDir(ways.back());
    }
    moveBy(joint, valueOf(joint, values), placed);
  }
  constexpr double kFlat = 1e-9;
  if (ways.size() == 2) return (ways[0] ^ ways[1]).norm() < kFlat;
  return ways.size() == 3 && std::abs(ways[0] * (ways[1] ^ ways[2])) < kFlat;
}

std::vector<int> freePlaces(const Solver& solver) {
  const SolverCore core(solver.chain(), {});
  std::vector<int> places;
  const auto take = [&](const std::vector<int>& joints) {
    for (const int i : joints) places.push_back(core.joint(i).place);
  };
  if (core.kind != SolverKind::arm && areRedundant(core)) take(core.slides);
  if (core.kind == SolverKind::moreRotary) take(core.turns);
  return places;
}

/// Of an arm the last joint: what the tool does about its own direction has its own samples.
int settledPlace(const Solver& solver, const PathAxes& axes) {
  const std::vector<Joint>& joints = solver.chain().joints;
  const auto last = std::find_if(joints.rbegin(), joints.rend(), [](const Joint& joint) {
    return joint.motion == Joint::Motion::turn && joint.place >= 0;
  });
  return solver.kind() == SolverKind::arm ? last->place : axes.idlePlace();
}

}  // namespace

Sides::Sides(const Machine& machine, const ToolpathOptions& options)
    : axes_(JointChain::of(*machine), options),
      solver_(axes_.unwound(machine), options.solver),
      wide_(machine, options.solver),
      free_(freePlaces(solver_)),
      settled_(settledPlace(solver_, axes_)),
      samples_(options.familySamples) {}

bool Sides::isFamily(const Side& side) const {
  return std::any_of(side.freePlaces.begin(), side.freePlaces.end(),
                     [this](int place) { return place >= 0 && place != settled_; });
}

bool Sides::hasFamily(std::span<const Side> sides) const {
  return std::any_of(sides.begin(), sides.end(),
                     [this](const Side& side) { return isFamily(side); });
}

/// Whether one is there already, which then is a sample only if both are.
bool Sides::meet(std::span<Side> sides, const Side& side) const {
  const auto met = std::find_if(sides.begin(), sides.end(), [&](const Side& other) {
    return std::all_of(axes_.all().begin(), axes_.all().end(), [&](const PathAxis& axis) {
      return std::abs(other.values[axis.at()] - side.values[axis.at()]) <= kSame;
    });
  });
  if (met == sides.end()) return false;
  met->isSample &= side.isSample;
  return true;
}

double Sides::wayBetween(const Values& a, const Values& b) const {
  double way = 0.0;
  for (const PathAxis& axis : axes_.all()) {
    const double by = std::abs(a[axis.at()] - b[axis.at()]);
    way += axis.isEndless ? std::min(by, std::abs(kFullTurn - by)) : by;
  }
  return way;
}

/// What the solver has from `from`; of those from `first` on none twice where a start has been
/// tried before, or where a wound axis is at an end of its turn.
void Sides::addFrom(const Solver& solver, const Target& target, const Values& from, Taken taken,
                    std::size_t first, SideScratch& scratch, std::vector<Side>& out) const {
  solver.solve(target, from, scratch.found);
  const bool isFirst = out.size() == first;
  for (const Solution& solution : scratch.found) {
    Side side = sideOf(solution);
    if (taken != Taken::all && !isFamily(side)) continue;
    side.isSample = taken == Taken::samples;
    side.values = axes_.unwound(side.values);
    const bool canBeMet = !isFirst || side.values != solution.values;
    if (canBeMet && meet(std::span(out).subspan(first), side)) continue;
    if (out.size() - first < kMostSides) out.push_back(side);
  }
}

void Sides::add(const Target& target, SideScratch& scratch, std::vector<Side>& out) const {
  const std::size_t first = out.size();
  addFrom(solver_, target, axes_.reference(), Taken::all, first, scratch, out);
}

void Sides::sample(const Target& target, std::size_t first, SideScratch& scratch,
                   std::vector<Side>& out) const {
  std::vector<std::int8_t> tried;
  const std::size_t own = out.size();
  for (std::size_t i = first; i < own; ++i) {
    const std::array<std::int8_t, 2> places = out[i].freePlaces;  // the list may move
    for (const std::int8_t place : places) {
      if (place < 0 || place == settled_) continue;
      if (std::find(tried.begin(), tried.end(), place) != tried.end()) continue;
      tried.push_back(place);
      samplePlace(target, place, first, scratch, out);
    }
  }
}

void Sides::samplePlace(const Target& target, int place, std::size_t first, SideScratch& scratch,
                        std::vector<Side>& out) const {
  const auto axis = std::find_if(axes_.all().begin(), axes_.all().end(),
                                 [place](const PathAxis& a) { return a.place == place; });
  Values from = axes_.reference();
  const double start = from[at(place)];
  for (int k = 1; k < samples_; ++k) {
    double value = start + kFullTurn * k / samples_;
    if (value > axis->max) value -= kFullTurn;
    if (value < axis->min) continue;
    from[at(place)] = value;
    addFrom(solver_, target, axes_.unwound(from), Taken::samples, first, scratch, out);
  }
}

/// Whether no place of an axis is left free, or limits make it leave the one of the start.
bool Sides::isPinned(std::span<const Side> sides) const {
  return std::any_of(sides.begin(), sides.end(), [this](const Side& side) {
    return !isFamily(side) ||
           std::any_of(side.freePlaces.begin(), side.freePlaces.end(), [&](int place) {
             return place >= 0 &&
                    std::abs(side.values[at(place)] - axes_.reference()[at(place)]) > kSame;
           });
  });
}

bool Sides::areCarried(std::span<const Side> sides) const {
  return isHistoric() || hasFamily(sides);
}

/// Whether one of `tried` has all axes that may be free where `side` has them.
bool Sides::isFollowed(std::span<const Side> tried, const Side& side) const {
  const auto isSame = [&](const Side& other, int place) {
    return std::abs(other.values[at(place)] - side.values[at(place)]) <= kSame;
  };
  return std::any_of(tried.begin(), tried.end(), [&](const Side& other) {
    if (!free_.empty()) {
      return std::all_of(free_.begin(), free_.end(), [&](int i) { return isSame(other, i); });
    }
    return isFamily(other) && std::all_of(other.freePlaces.begin(), other.freePlaces.end(),
                                          [&](int i) { return i < 0 || isSame(other, i); });
  });
}

/// Nearest-first takes of what its own start gives alone, with the turns that it has. Of that all
/// is added where axes stay at the start; of an arm whose tool is tried in every turn from there
/// the one that it takes.
void Sides::follow(const Target& target, Values& nearest, std::size_t first, SideScratch& scratch,
                   std::vector<Side>& out) const {
  wide_.solve(target, nearest, scratch.found);
  const auto way = [&](const Solution& s) { return wayBetween(s.values, nearest); };
  const auto taken =
      std::min_element(scratch.found.begin(), scratch.found.end(),
                       [&](const Solution& a, const Solution& b) { return way(a) < way(b); });
  if (taken == scratch.found.end()) return;
  for (const Solution& solution : scratch.found) {
    if (free_.empty() && &solution != &*taken) continue;
    Side side = sideOf(solution);
    side.values = axes_.unwound(side.values);
    if (!meet(std::span(out).subspan(first), side)) out.push_back(side);
  }
  nearest = taken->values;
}

void Sides::carry(const Target& target, std::span<const Side> before, std::size_t first,
                  Values& nearest, SideScratch& scratch, std::vector<Side>& out) const {
  if (isHistoric()) follow(target, nearest, first, scratch, out);
  const bool isAll = !free_.empty();
  if (!isAll && !hasFamily(std::span(out).subspan(first))) return;
  const bool isSampled = std::any_of(out.begin() + static_cast<std::ptrdiff_t>(first), out.end(),
                                     [](const Side& side) { return side.isSample; });
  std::size_t tried = 0;
  for (std::size_t i = 0; i < before.size() && tried < kMostCarried; ++i) {
    if (before[i].isSample && !isSampled) continue;
    if (isAll && isFollowed(before.first(i), before[i])) continue;
    const Taken taken = isAll ? Taken::all : Taken::families;
    // What stands where a side of the target's own does, a sample or not, is that one.
    if (!isAll && isKnown(std::span(out).subspan(first), before[i])) continue;
    ++tried;
    addFrom(solver_, target, before[i].values, taken, first, scratch, out);
    if (!isAll && !isKnown(std::span(out).subspan(first), before[i])) {
      carryAcross(target, before[i], first, scratch, out);
    }
  }
}

/// Where limits make a free axis move, the nearest place inside may lie across the end of the one
/// turn that it is given.
void Sides::carryAcross(const Target& target, const Side& side, std::size_t first,
                        SideScratch& scratch, std::vector<Side>& out) const {
  for (const PathAxis& axis : axes_.all()) {
    const bool isFree = std::find(side.freePlaces.begin(), side.freePlaces.end(), axis.place) !=
                        side.freePlaces.end();
    if (!axis.isWound || (!isFree && side.freePlaces[0] >= 0)) continue;
    for (const double turns : {-kFullTurn, 0.0, kFullTurn}) {
      Values from = side.values;
      from[axis.at()] += turns;
      if (from[axis.at()] < axis.min || from[axis.at()] > axis.max) continue;
      addFrom(wide_, target, from, Taken::families, first, scratch, out);
    }
  }
}

/// Whether a family has its free axes where `side` has them; then it is no sample alone any more.
bool Sides::isKnown(std::span<Side> sides, const Side& side) const {
  bool isKnown = false;
  for (Side& other : sides) {
    if (!isFamily(other) || !isFollowed({&other, 1}, side)) continue;
    other.isSample &= side.isSample;
    isKnown = true;
  }
  return isKnown;
}

}  // namespace korvo
