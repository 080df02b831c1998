#include "toolkit/path/Sweep.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace korvo {
namespace {

/// A step may exceed the largest by this (mm or degrees) and counts as one: rounding.
constexpr double kStepRounding = 1e-9;

/// From so many states on it pays to look for neighbours first.
constexpr std::size_t kMany = 64;

constexpr std::size_t kMostStates = 0xffff;

/// What a mm or a degree from zero costs at the first target of a path without a start: less than
/// what is said of costs, more than their rounding.
constexpr double kBeginNearZero = 1e-11;

std::vector<double> rowOf(const PathAxes& axes, const Values& values) {
  std::vector<double> row;
  for (const PathAxis& axis : axes.all()) row.push_back(values[axis.at()]);
  return row;
}

}  // namespace

StepCosts::StepCosts(const PathAxes& axes) {
  for (const PathAxis& axis : axes.all()) {
    weights_.push_back(axis.weight);
    largest_.push_back(axis.largestStep + kStepRounding);
    periods_.push_back(axis.isEndless ? kFullTurn : std::numeric_limits<double>::infinity());
  }
}

std::vector<double> StepCosts::straightSteps() const {
  std::vector<double> steps = largest_;
  for (std::size_t i = 0; i < size(); ++i) {
    if (std::isfinite(periods_[i])) steps[i] = std::numeric_limits<double>::infinity();
  }
  return steps;
}

void States::list(const PathAxes& axes, std::span<const Side> all) {
  sides.clear();
  Values turning;
  std::size_t next = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    turning = all[i].values;
    axes.forEachTurn(turning, [&](const Values& at) {
      if (sides.size() == kMostStates) return;
      if (values.size() < next + axes.size()) values.resize(2 * (next + axes.size()));
      for (const PathAxis& axis : axes.all()) values[next++] = at[axis.at()];
      sides.push_back(static_cast<std::uint32_t>(i));
    });
  }
  values.resize(next);
}

State stateOf(const PathAxes& axes, std::span<const Side> sides, std::size_t state) {
  for (const Side& side : sides) {
    const std::size_t count = axes.turnCount(side.values);
    if (state < count) {
      State found{&side, side.values};
      axes.setTurn(state, found.values);
      return found;
    }
    state -= count;
  }
  return {};
}

Sweep::Sweep(const PathAxes& axes, const ToolpathOptions& options) : axes_(axes), costs_(axes) {
  if (options.start) {
    // The turn of an endless axis does not matter, and its steps are taken within one.
    Values start = *options.start;
    for (const PathAxis& axis : axes.all()) {
      if (axis.isEndless) start[axis.at()] = axes.unwound(start)[axis.at()];
    }
    startRow_ = rowOf(axes, start);
  }
  hasMargins_ = std::any_of(axes.all().begin(), axes.all().end(),
                            [](const PathAxis& axis) { return axis.margin > 0; });
}

void Sweep::take(const SideBlock& block) {
  Links& links = links_.emplace_back();
  links.at.reserve(block.size());
  for (std::size_t i = 0; i < block.size(); ++i) step(block, i, links);
  links.lists.shrink_to_fit();
  count_ += block.size();
  bytes_ += sizeof links + 4 * links.at.capacity() + 2 * links.lists.capacity();
}

void Sweep::step(const SideBlock& block, std::size_t i, Links& links) {
  here_.list(axes_, block.of(i));
  if (here_.count() == 0) {
    links.at.push_back(kNone);
    isGap_ = true;
    return;
  }
  costHere_.assign(here_.count(), {});
  from_.assign(here_.count(), 0);
  isFirst_ ? start() : connect();
  if (hasMargins_) {
    for (std::size_t s = 0; s < here_.count(); ++s) {
      costHere_[s].way += axes_.marginCost(&here_.values[s * costs_.size()]);
    }
  }
  link(links);
  std::swap(before_, here_);
  std::swap(costBefore_, costHere_);
  isFirst_ = isGap_ = false;
}

/// Without a start all turns cost the same: nobody wants to begin at the end of an axis' travel.
void Sweep::start() {
  const bool hasStart = !startRow_.empty();
  const std::vector<double> from = hasStart ? startRow_ : rowOf(axes_, axes_.reference());
  const double share = hasStart ? 1.0 : kBeginNearZero;
  for (std::size_t s = 0; s < here_.count(); ++s) {
    costHere_[s].way = share * costs_.way(from.data(), &here_.values[s * costs_.size()]);
  }
}

double Sweep::startCost(const double* row) const {
  return startRow_.empty() ? 0.0 : costs_.way(startRow_.data(), row);
}

void Sweep::connect() {
  const bool hasNeighbours = before_.count() >= kMany && !isGap_;
  sort();
  fewest_ = costBefore_[order_[0]].breaks;
  if (hasNeighbours) neighbours_.sort(before_.values, costs_.straightSteps());
  for (std::size_t s = 0; s < here_.count(); ++s) costHere_[s] = leastTo(s, hasNeighbours);
}

void Sweep::sort() {
  order_.resize(before_.count());
  std::iota(order_.begin(), order_.end(), 0U);
  std::sort(order_.begin(), order_.end(), [this](std::uint32_t a, std::uint32_t b) {
    if (costBefore_[a] < costBefore_[b]) return true;
    return !(costBefore_[b] < costBefore_[a]) && a < b;
  });
}

/// Whoever is dearer already than what was found cannot be better: costs only grow. Mostly the best
/// is the one at the same place in the list, so it is tried first. Where one without a further
/// break has the fewest of all, only those from where there is no further break can be better.
PathCost Sweep::leastTo(std::size_t state, bool hasNeighbours) {
  PathCost least{~std::uint64_t{0}, 0.0};
  const double* const to = &here_.values[state * costs_.size()];
  const auto improve = [&](std::size_t b) {
    if (!(costBefore_[b] < least)) return false;
    const double* const from = &before_.values[b * costs_.size()];
    if (costs_.improve(costBefore_[b], from, to, isGap_, least)) {
      from_[state] = static_cast<std::uint16_t>(b);
    }
    return true;
  };
  if (state < before_.count()) improve(state);
  if (hasNeighbours) {
    neighbours_.forEachNear(to, improve);
    if (least.breaks <= fewest_) return least;
  }
  for (const std::uint32_t b : order_) {
    if (!improve(b)) break;
  }
  return least;
}

void Sweep::link(Links& links) {
  const auto count = static_cast<std::ptrdiff_t>(from_.size());
  if (static_cast<std::ptrdiff_t>(links.lists.size()) < count ||
      !std::equal(from_.begin(), from_.end(), links.lists.end() - count)) {
    links.lists.insert(links.lists.end(), from_.begin(), from_.end());
  }
  links.at.push_back(static_cast<std::uint32_t>(links.lists.size() - from_.size()));
}

std::size_t Sweep::bestState() const {
  return static_cast<std::size_t>(std::min_element(costBefore_.begin(), costBefore_.end()) -
                                  costBefore_.begin());
}

std::vector<std::vector<std::uint32_t>> Sweep::chosen() {
  std::vector<std::vector<std::uint32_t>> all(links_.size());
  std::size_t state = costBefore_.empty() ? 0 : bestState();
  for (std::size_t b = links_.size(); b-- > 0;) {
    for (std::size_t i = links_[b].at.size(); i-- > 0;) {
      std::uint32_t& at = links_[b].at[i];
      if (at == kNone) continue;
      const std::size_t from = links_[b].lists[at + state];
      at = static_cast<std::uint32_t>(state);
      state = from;
    }
    all[b] = std::move(links_[b].at);
    links_[b].lists = {};
  }
  return all;
}

}  // namespace korvo
