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

std::span<const Side> since(const std::vector<Side>& sides, std::size_t first) {
  return std::span<const Side>(sides).subspan(first);
}

std::vector<int> freePlaces(const Solver& solver) {
  const SolverCore core(solver.chain(), {});
  std::vector<int> places;
  const auto take = [&](const std::vector<int>& joints) {
    for (const int i : joints) places.push_back(core.joint(i).place);
  };
  if (core.kind != SolverKind::arm && core.slides.size() > 3) take(core.slides);
  if (core.kind == SolverKind::moreRotary) take(core.turns);
  return places;
}

}  // namespace

Sides::Sides(const Machine& machine, const ToolpathOptions& options)
    : axes_(JointChain::of(*machine), options),
      solver_(axes_.unwound(machine), options.solver),
      free_(freePlaces(solver_)),
      samples_(options.familySamples) {}

bool Sides::isFamily(const Side& side) const {
  return std::any_of(side.freePlaces.begin(), side.freePlaces.end(),
                     [this](int place) { return place >= 0 && place != axes_.idlePlace(); });
}

bool Sides::hasFamily(std::span<const Side> sides) const {
  return std::any_of(sides.begin(), sides.end(),
                     [this](const Side& side) { return isFamily(side); });
}

bool Sides::isMet(std::span<const Side> sides, const Side& side) const {
  return std::any_of(sides.begin(), sides.end(), [&](const Side& other) {
    return std::all_of(axes_.all().begin(), axes_.all().end(), [&](const PathAxis& axis) {
      return std::abs(other.values[axis.at()] - side.values[axis.at()]) <= kSame;
    });
  });
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
void Sides::addFrom(const Target& target, const Values& from, bool onlyFamilies, std::size_t first,
                    SideScratch& scratch, std::vector<Side>& out) const {
  solver_.solve(target, from, scratch.found);
  const bool isFirst = out.size() == first;
  for (const Solution& solution : scratch.found) {
    Side side = sideOf(solution);
    if (onlyFamilies && !isFamily(side)) continue;
    side.values = axes_.unwound(side.values);
    const bool canBeMet = !isFirst || side.values != solution.values;
    if (canBeMet && isMet(since(out, first), side)) continue;
    if (out.size() - first < kMostSides) out.push_back(side);
  }
}

void Sides::add(const Target& target, SideScratch& scratch, std::vector<Side>& out) const {
  const std::size_t first = out.size();
  addFrom(target, axes_.reference(), false, first, scratch, out);
  if (hasFamily(since(out, first))) sample(target, first, scratch, out);
}

void Sides::sample(const Target& target, std::size_t first, SideScratch& scratch,
                   std::vector<Side>& out) const {
  std::vector<int> tried;
  const std::size_t own = out.size();
  for (std::size_t i = first; i < own; ++i) {
    const std::array<std::int8_t, 2> places = out[i].freePlaces;  // the list may move
    for (const int place : places) {
      if (place < 0 || place == axes_.idlePlace()) continue;
      if (std::find(tried.begin(), tried.end(), place) != tried.end()) continue;
      tried.push_back(place);
      Values from = axes_.reference();
      for (int k = 1; k < samples_; ++k) {
        from[at(place)] = axes_.reference()[at(place)] + kFullTurn * k / samples_;
        addFrom(target, axes_.unwound(from), true, first, scratch, out);
      }
    }
  }
}

bool Sides::areCarried(std::span<const Side> sides) const {
  return !free_.empty() || hasFamily(sides);
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

/// Nearest-first takes of what its own start gives alone.
void Sides::follow(const Target& target, Values& nearest, std::size_t first, SideScratch& scratch,
                   std::vector<Side>& out) const {
  std::vector<Side> step;
  addFrom(target, axes_.unwound(nearest), false, 0, scratch, step);
  for (const Side& side : step) {
    if (!isMet(since(out, first), side)) out.push_back(side);
  }
  double least = std::numeric_limits<double>::infinity();
  Values taken = nearest;
  for (Side& side : step) {
    axes_.forEachTurn(side.values, [&](const Values& values) {
      const double way = wayBetween(values, nearest);
      if (!(way < least)) return;
      least = way;
      taken = values;
    });
  }
  nearest = taken;
}

void Sides::carry(const Target& target, std::span<const Side> before, std::size_t first,
                  Values& nearest, SideScratch& scratch, std::vector<Side>& out) const {
  if (!free_.empty()) follow(target, nearest, first, scratch, out);
  std::size_t tried = 0;
  for (std::size_t i = 0; i < before.size() && tried < kMostCarried; ++i) {
    if (isFollowed(free_.empty() ? since(out, first) : before.first(i), before[i])) continue;
    ++tried;
    addFrom(target, before[i].values, free_.empty(), first, scratch, out);
  }
}

}  // namespace korvo
