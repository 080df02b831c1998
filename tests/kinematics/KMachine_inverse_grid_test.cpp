// The list of angles against a search of all angles: the search finds what the machine can do, the
// rules of the starts and of the choice say which of it is listed.
#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>

#include "tests/kinematics/KMachine_inverse.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

constexpr int kTargets = 25;
constexpr int kStep = 4;        // degrees, of the coarse grid
constexpr double kNear = 0.1;   // radians: every place of the grid this near is refined
constexpr double kSame = 1e-6;  // degrees, between a searched and a listed angle

using Angles = std::array<double, 2>;  ///< Of the two rotary axes, in chain order (degrees).

/// An example machine with two rotary axes, and what the list and the search say of it.
class FiveAxis {
 public:
  FiveAxis(const std::string& file, int version) {
    std::ifstream in(std::filesystem::path(KORVO_MACHINES) / (file + ".def"));
    machine_ = loadMachine({std::istreambuf_iterator<char>(in), {}}, version);
    for (const KMachineElem* e : machine_->getToolChain(true, 1)) {
      if (e->getElemType() == KMachineElem::KMET_TYPE_AROT) axes_.push_back(e);
    }
    v_ = positionOf(*machine_);
  }

  KMachine& machine() { return *machine_; }

  void takeLimits() {
    for (const KMachineElem* e : axes_) {
      machine_->getElemByIndex(e->getElemIndex())->setMin(0, false);
      machine_->getElemByIndex(e->getElemIndex())->setMax(0, false);
    }
  }

  UVec3d direction(const Angles& a) const {
    for (std::size_t i = 0; i < 2; ++i) (*v_)[axes_[i]->getValueIndex()] = a[i];
    UVec3d point, dir;
    EXPECT_TRUE(machine_->getTool(*v_, point, dir, 1));
    return dir;
  }

  std::vector<Angles> listed(const UVec3d& dir) const {
    Entries entries;
    EXPECT_EQ(machine_->getPossibleAngles(dir, entries.list, 1), 0);
    std::vector<Angles> out;
    for (const Numbers& v : entries.numbers()) {
      out.push_back({v[static_cast<std::size_t>(axes_[0]->getValueIndex())],
                     v[static_cast<std::size_t>(axes_[1]->getValueIndex())]});
    }
    return out;
  }

  /// All pairs of angles in [0, 360) that turn the tool onto `dir`: minima of a coarse grid,
  /// refined.
  std::vector<Angles> searched(const UVec3d& dir) const;

  bool isInside(const Angles& a) const {
    for (std::size_t i = 0; i < 2; ++i) {
      if (axes_[i]->hasMin() && a[i] < axes_[i]->getMin()) return false;
      if (axes_[i]->hasMax() && a[i] > axes_[i]->getMax()) return false;
    }
    return true;
  }

  /// The searched pairs with all full turns within 360 degrees either way and inside the limits.
  std::vector<Angles> everyTurn(const std::vector<Angles>& searched) const;

  /// What the rules make of the searched pairs: each start takes the one of least cost.
  std::vector<Angles> chosen(const std::vector<Angles>& searched) const;

 private:
  std::optional<Angles> refined(Angles a, const UVec3d& dir) const;
  Angles turnsOf(const Angles& start, const std::vector<Angles>& searched) const;

  std::unique_ptr<KMachine> machine_;
  std::vector<const KMachineElem*> axes_;
  Position v_;
};

bool isSame(const Angles& a, const Angles& b) {
  return std::abs(a[0] - b[0]) < kSame && std::abs(a[1] - b[1]) < kSame;
}

bool isIn(const std::vector<Angles>& all, const Angles& a) {
  return std::any_of(all.begin(), all.end(), [&](const Angles& b) { return isSame(a, b); });
}

/// Least squares by Newton's method with slopes from differences; nothing when it does not reach.
std::optional<Angles> FiveAxis::refined(Angles a, const UVec3d& dir) const {
  constexpr double h = 1e-5;
  for (int i = 0; i < 30; ++i) {
    const UVec3d off = dir - direction(a);
    const UVec3d p = (direction({a[0] + h, a[1]}) - direction({a[0] - h, a[1]})) / (2 * h);
    const UVec3d q = (direction({a[0], a[1] + h}) - direction({a[0], a[1] - h})) / (2 * h);
    const double pp = p * p, pq = p * q, qq = q * q, det = pp * qq - pq * pq;
    if (!(det > 0)) return {};
    a[0] += ((p * off) * qq - (q * off) * pq) / det;
    a[1] += ((q * off) * pp - (p * off) * pq) / det;
  }
  if ((dir - direction(a)).norm() > 1e-11) return {};
  for (double& angle : a) angle -= 360 * std::floor(angle / 360);
  return a;
}

std::vector<Angles> FiveAxis::searched(const UVec3d& dir) const {
  constexpr int n = 360 / kStep;
  std::vector<double> off;
  for (int i = 0; i < n * n; ++i) {
    off.push_back((dir - direction({1.0 * kStep * (i / n), 1.0 * kStep * (i % n)})).norm());
  }
  const auto at = [&](int i, int j) {
    return off[static_cast<std::size_t>((i + n) % n * n + (j + n) % n)];
  };
  std::vector<Angles> out;
  for (int i = 0; i < n * n; ++i) {
    const int p = i / n, q = i % n;
    double least = at(p, q);
    for (int d = 0; d < 9; ++d) least = std::min(least, at(p + d / 3 - 1, q + d % 3 - 1));
    if (at(p, q) > least && at(p, q) > kNear) continue;
    const auto found = refined({1.0 * kStep * p, 1.0 * kStep * q}, dir);
    if (found && !isIn(out, *found)) out.push_back(*found);
  }
  return out;
}

std::vector<Angles> FiveAxis::everyTurn(const std::vector<Angles>& searched) const {
  std::vector<Angles> out;
  for (const Angles& a : searched) {
    for (int i = 0; i < 9; ++i) {
      const Angles turned = {a[0] + 360 * (i / 3 - 2), a[1] + 360 * (i % 3 - 2)};
      const bool isNear = std::abs(turned[0]) <= 360 && std::abs(turned[1]) <= 360;
      if (isNear && isInside(turned)) out.push_back(turned);
    }
  }
  // 0 to 360 shifted by -2 to 0 turns covers -360 to 360, but for pairs at 0 itself.
  return out;
}

Numbers startsOf(const KMachineElem& axis) {
  const double low = axis.hasMin() ? std::max(axis.getMin(), -360.0) : -360;
  const double high = axis.hasMax() ? std::min(axis.getMax(), 360.0) : 360;
  Numbers out;
  for (const double x : {(low + high) / 2, low, high, -180.0, 180.0, -90.0, 90.0, -270.0, 270.0}) {
    if (low <= x && x <= high && std::find(out.begin(), out.end(), x) == out.end()) {
      out.push_back(x);
    }
  }
  return out;
}

double halfTurn(double degrees) { return degrees - 360 * std::round(degrees / 360); }

/// The turns that a start takes: pairs in the order of the smaller sum (then a second turn from 0
/// up), and of them the first of least cost.
Angles FiveAxis::turnsOf(const Angles& start, const std::vector<Angles>& searched) const {
  constexpr double tie = 1e-7;
  std::vector<Angles> turns;
  for (const Angles& a : searched) {
    turns.push_back({halfTurn(a[0] - start[0]), halfTurn(a[1] - start[1])});
  }
  const auto sum = [](const Angles& a) { return std::abs(a[0]) + std::abs(a[1]); };
  std::sort(turns.begin(), turns.end(), [&](const Angles& a, const Angles& b) {
    if (std::abs(sum(a) - sum(b)) > tie) return sum(a) < sum(b);
    return (a[1] >= 0) > (b[1] >= 0);
  });
  const auto cost = [&](const Angles& a) {
    if (machine_->getStrategy() == 1) return std::abs(a[0]);
    if (machine_->getStrategy() == 2) return std::abs(a[1]);
    return std::min(std::abs(a[0]), std::abs(a[1]));
  };
  Angles best = turns[0];
  for (const Angles& a : turns) {
    if (cost(a) < cost(best) - tie) best = a;
  }
  return best;
}

std::vector<Angles> FiveAxis::chosen(const std::vector<Angles>& searched) const {
  std::vector<Angles> out;
  if (searched.empty()) return out;
  for (const double second : startsOf(*axes_[1])) {
    for (const double first : startsOf(*axes_[0])) {
      const Angles turns = turnsOf({first, second}, searched);
      const Angles a = {first + turns[0], second + turns[1]};
      if (isInside(a) && !isIn(out, a)) out.push_back(a);
    }
  }
  return out;
}

struct GridRow {
  const char* name;
  const char* file;
  int version;
  bool isEndless = false;  ///< Rotary limits taken away.
};

std::ostream& operator<<(std::ostream& out, const GridRow& row) { return out << row.name; }

/// Half way between starts: where the choice between two ways is left to the order of the pairs.
const UVec3d kRound[] = {{1, 1, 1}, {1, -1, 1}, {-1, 1, 2}, {-1, -1, 3}};

class SearchOfAllAngles : public testing::TestWithParam<GridRow> {};

// Deliberate: each start gives one position, so one that no start prefers would not be listed:
// those are counted here (none on these machines). Nothing else is missed, nothing else is listed.
TEST_P(SearchOfAllAngles, FindsWhatIsListedAndWhatNoStartPrefers) {
  FiveAxis five(GetParam().file, GetParam().version);
  if (GetParam().isEndless) five.takeLimits();
  int inside = 0, found = 0, beyond = 0;
  Choices random(1u);
  for (int i = 0; i < kTargets; ++i) {
    const UVec3d dir =
        i < 4 ? kRound[i].normalised()
              : five.direction({random.below(250) * 1.44 + 0.3, random.below(250) * 1.44 + 0.7});
    const auto searched = five.searched(dir);
    const auto all = five.everyTurn(searched);
    for (const int strategy : {0, 1, 2}) {
      five.machine().setStrategy(strategy);
      const auto listed = five.listed(dir), chosen = five.chosen(searched);
      ASSERT_EQ(listed.size(), chosen.size()) << "strategy " << strategy << ", target " << i;
      for (std::size_t k = 0; k < listed.size(); ++k) EXPECT_TRUE(isSame(listed[k], chosen[k]));
      inside += static_cast<int>(all.size());
      for (const Angles& a : all) found += isIn(listed, a);
      for (const Angles& a : listed) beyond += !isIn(all, a);
    }
  }
  EXPECT_GT(found, 0);
  const std::string text =
      std::to_string(inside) + " positions inside the limits and 360 degrees, " +
      std::to_string(found) + " listed, " + std::to_string(inside - found) +
      " preferred by no start; " + std::to_string(beyond) + " listed beyond 360 degrees";
  RecordProperty("listed", text);
  std::cout << GetParam().name << ": " << text << "\n";
}

INSTANTIATE_TEST_SUITE_P(
    Examples, SearchOfAllAngles,
    testing::Values(GridRow{"TableAC", "table-ac", 2}, GridRow{"TableBC", "table-bc", 2},
                    GridRow{"HeadCB", "head-cb-fork", 1}, GridRow{"HeadTable", "head-table", 2},
                    GridRow{"HeadNutating", "head-nutating", 1}, GridRow{"GantryW", "gantry-w", 1},
                    GridRow{"TableACEndless", "table-ac", 2, true},
                    GridRow{"HeadCBEndless", "head-cb-fork", 1, true},
                    GridRow{"HeadNutatingEndless", "head-nutating", 1, true}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace korvo::test
