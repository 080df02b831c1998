// All positions of the solver, against a search that knows of a machine only what
// `KMachine::getTool` answers. KORVO_REPORT=1 prints the table, KORVO_PROOF=full tries 10,000
// machines.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

#include "tests/solve/DenseSearch.h"
#include "tests/solve/Machines.h"
#include "tests/solve/Proof.h"
#include "tests/support/Dice.h"
#include "tests/support/MachineGenerator.h"
#include "toolkit/solve/Solver.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

// --- machines and targets

/// Limits or none for every axis, in some machines one rotary axis locked, and of axes parallel to
/// others all but three linear ones.
void vary(KMachine& machine, Dice& dice) {
  constexpr double kTurns[][2] = {{-180, 180}, {-360, 360}, {-120, 30}, {-100, 250},
                                  {0, 360},    {-30, 110},  {-720, 540}};
  constexpr double kWays[][2] = {{-600, 600}, {0, 1500}, {-2000, 100}, {-5000, 5000}};
  int linear = 0;
  bool isLocked = false;
  for (const KMachineElem* e : machine.getToolChain(false, 0)) {
    KMachineElem& own = *machine.getElemByIndex(e->getElemIndex());
    const bool isRotary = e->getElemType() == KMachineElem::KMET_TYPE_AROT;
    if (!isRotary && e->getElemType() != KMachineElem::KMET_TYPE_ALIN) continue;
    if (!isRotary && ++linear > 3) own.setLocked(true);
    if (isRotary && !isLocked && dice.oneIn(8)) own.setLocked(isLocked = true);
    const double* const pair = isRotary ? kTurns[dice.below(7)] : kWays[dice.below(4)];
    const int ends = dice.below(6);  // in half of the machines both
    own.setMin(pair[0], ends != 0 && ends != 1);
    own.setMax(pair[1], ends != 0 && ends != 2);
  }
}

struct Case {
  std::unique_ptr<KMachine> machine;
  Values start{};
  std::vector<Target> targets;
};

double valueInside(const KMachineElem& axis, bool isEven, Dice& dice) {
  const bool isRotary = axis.getElemType() == KMachineElem::KMET_TYPE_AROT;
  const double reach = isRotary ? 360 : 1000;
  const double low = std::max(-reach, axis.hasMin() ? axis.getMin() : -reach);
  const double high = std::min(reach, axis.hasMax() ? axis.getMax() : reach);
  if (!(low < high)) return low;
  const double value = dice.between(low, high);
  const double step = isRotary ? 45 : 100;
  return isEven ? std::clamp(step * std::round(value / step), low, high) : value;
}

Values anyPosition(const KMachine& machine, bool isEven, const Values& start, Dice& dice) {
  Values values = start;
  for (const KMachineElem* e : machine.getToolChain(false, 0)) {
    if (e->getValueIndex() < 0 || e->isLocked()) continue;
    values[static_cast<std::size_t>(e->getValueIndex())] = valueInside(*e, isEven, dice);
  }
  return values;
}

UVec3d anyDirection(Dice& dice) {
  while (true) {
    const UVec3d v(dice.between(-1, 1), dice.between(-1, 1), dice.between(-1, 1));
    if (v.norm() > 0.1 && v.norm() < 1) return v;  // of any length
  }
}

/// Targets that positions inside the limits reach, at random and of whole angles, and one that may
/// be beyond reach.
Case caseOf(Topology topology, unsigned seed) {
  Choices choices(seed);
  Case one{loadMachine(machineText(choices, topology)), {}, {}};
  KMachine& machine = *one.machine;
  Dice dice(seed);
  if (dice.oneIn(3)) machine.setCurrentTool(1 + dice.below(machine.getToolNumber()));
  machine.setTHELength(dice.oneIn(2) ? 0.0 : dice.between(10, 200), 0);
  vary(machine, dice);
  for (int i = 0; i < machine.getAxisNum(); ++i) {
    one.start[static_cast<std::size_t>(i)] = dice.oneIn(3) ? 0.0 : dice.between(-500, 500);
  }
  for (const bool isEven : {false, false, true}) {
    one.targets.push_back(tipAt(machine, anyPosition(machine, isEven, one.start, dice)));
  }
  one.targets.push_back({anyDirection(dice) * 800.0, anyDirection(dice)});
  return one;
}

// --- comparison

struct Row {
  std::string name;
  int machines = 0, targets = 0;
  int continua = 0;   ///< Targets on or next to singular directions: see Solver_singular_test.cpp.
  int dependent = 0;  ///< Angles at which the linear axes do not carry everywhere.
  int atEdge = 0;     ///< Solutions on a limit to rounding: they may be in the list or not.
  int found = 0, missing = 0, wrong = 0, twice = 0;
  double pointMm = 0.0;  ///< Largest, for each metre of the machine's size.
  double directionRad = 0.0;
  std::string first;  ///< What was wrong first.
};

/// By the rotary values alone: with them the linear ones are determined, and verified by the
/// point.
bool isSame(const Found& f, const Solution& s, const KMachine& machine) {
  for (const KMachineElem* e : machine.getToolChain(false, 0)) {
    if (e->getValueIndex() < 0 || e->getElemType() != KMachineElem::KMET_TYPE_AROT) continue;
    const auto i = static_cast<std::size_t>(e->getValueIndex());
    if (std::abs(f.values[i] - s.values[i]) > f.tolerance) return false;
  }
  return true;
}

bool isInside(const Solution& s, const KMachine& machine, const Values& start) {
  for (const KMachineElem* e : machine.getToolChain(false, 0)) {
    if (e->getValueIndex() < 0) continue;
    const auto i = static_cast<std::size_t>(e->getValueIndex());
    if (e->isLocked() && s.values[i] != start[i]) return false;
    if (e->hasMin() && s.values[i] < e->getMin()) return false;
    if (e->hasMax() && s.values[i] > e->getMax()) return false;
  }
  return true;
}

class Comparing {
 public:
  Comparing(const Case& one, const Solver& solver, Row& row)
      : one_(one), machine_(*one.machine), solver_(solver), row_(row) {}

  void compare(const DenseSearch& search, const Target& target, const std::string& name) {
    name_ = name;
    ++row_.targets;
    solver_.solve(target, one_.start, solutions_);
    const DenseSearch::Result searched = search.search(target);
    row_.found += static_cast<int>(solutions_.size());
    for (const Solution& s : solutions_) verify(s, target, search.areIndependent(s.values));
    if (searched.isContinuum) {
      ++row_.continua;
      return;
    }
    for (const Found& f : searched.found) expectListed(f);
    for (const Solution& s : solutions_) expectFound(s, searched.found);
  }

 private:
  void fault(int& count, const std::string& what) {
    ++count;
    if (row_.first.empty()) row_.first = name_ + ": " + what;
  }

  /// Where the linear axes are dependent the rotary values alone decide a part of the point: next
  /// to singular directions they are not sure enough for more than what counts as reached.
  void verify(const Solution& s, const Target& target, bool isCarried) {
    const Target reached = tipAt(machine_, s.values);
    const double size = sizeOf(machine_, s.values, target) / 1000;
    const double pointMm = reached.tip.distanceTo(target.tip);
    const double rad = radiansBetween(reached.direction, target.direction);
    if (isCarried) row_.pointMm = std::max(row_.pointMm, pointMm / size);
    row_.directionRad = std::max(row_.directionRad, rad);
    if (pointMm > (isCarried ? 1e-9 * size : kReachedMm)) fault(row_.wrong, "point missed");
    if (rad > 1e-10) fault(row_.wrong, "direction missed");
    if (!isInside(s, machine_, one_.start)) fault(row_.wrong, "outside");
    if (s.residual.pointMm != pointMm) fault(row_.wrong, "residual");
  }

  void expectListed(const Found& f) {
    row_.dependent += !f.isCarried;
    row_.atEdge += f.isCarried && f.isAtEdge;
    if (!f.isCarried || f.isAtEdge) return;
    const auto count = std::count_if(solutions_.begin(), solutions_.end(),
                                     [&](const Solution& s) { return isSame(f, s, machine_); });
    if (count == 0) fault(row_.missing, "missing");
    if (count > 1 && f.tolerance <= 1e-6) fault(row_.twice, "twice");
  }

  void expectFound(const Solution& s, const std::vector<Found>& found) {
    if (s.isFamily()) fault(row_.wrong, "no family");
    if (std::none_of(found.begin(), found.end(),
                     [&](const Found& f) { return isSame(f, s, machine_); })) {
      fault(row_.wrong, "not found by the search");
    }
  }

  const Case& one_;
  const KMachine& machine_;
  const Solver& solver_;
  Row& row_;
  std::string name_;
  std::vector<Solution> solutions_;
};

constexpr SolverKind kKinds[] = {SolverKind::linear, SolverKind::oneRotary, SolverKind::twoRotary};

const char* const kTableHead =
    "| machine kind | machines | targets | solutions found | missing | wrong | twice | at a limit |"
    " dependent axes | singular | largest miss, mm per m | largest miss, rad |\n"
    "|---|---|---|---|---|---|---|---|---|---|---|---|\n";

std::string toText(const Row& r) {
  char text[300];
  std::snprintf(text, sizeof text,
                "| %s | %d | %d | %d | %d | %d | %d | %d | %d | %d | %.1e | %.1e |\n",
                r.name.c_str(), r.machines, r.targets, r.found, r.missing, r.wrong, r.twice,
                r.atEdge, r.dependent, r.continua, r.pointMm, r.directionRad);
  return text;
}

class SolverProof : public testing::TestWithParam<Topology> {
 protected:
  static void TearDownTestSuite() {
    if (isReportWanted()) std::cout << kTableHead << table_;
  }

  static inline std::string table_;
};

TEST_P(SolverProof, EveryPositionThatADenseSearchFindsIsListedAndNoOther) {
  Row rows[3];
  const int machines = proofCount(105, 10003) / 7;
  for (int i = 0; i < machines; ++i) {
    const Case one = caseOf(GetParam(), static_cast<unsigned>(i));
    const Solver solver{Machine(*one.machine)};
    const DenseSearch search(*one.machine, one.start);
    const auto rotary = static_cast<std::size_t>(search.rotaryCount());
    ASSERT_EQ(solver.kind(), kKinds[rotary]) << i;
    Row& row = rows[rotary];
    ++row.machines;
    Comparing comparing(one, solver, row);
    for (std::size_t k = 0; k < one.targets.size(); ++k) {
      comparing.compare(search, one.targets[k],
                        "machine " + std::to_string(i) + ", target " + std::to_string(k));
    }
  }
  for (std::size_t k = 0; k < 3; ++k) {
    if (rows[k].machines == 0) continue;
    rows[k].name = std::string(nameOf(GetParam())) + ", " + toString(kKinds[k]);
    table_ += toText(rows[k]);
    EXPECT_EQ(rows[k].missing + rows[k].wrong + rows[k].twice, 0)
        << toText(rows[k]) << rows[k].first;
    EXPECT_GT(rows[k].found, rows[k].machines);
  }
}

INSTANTIATE_TEST_SUITE_P(Cartesian, SolverProof,
                         testing::Values(Topology::mill, Topology::fourAxis, Topology::tableTable,
                                         Topology::headTable, Topology::headHead, Topology::gantry,
                                         Topology::guns),
                         [](const auto& kind) { return std::string(nameOf(kind.param)); });

}  // namespace
}  // namespace korvo::test
