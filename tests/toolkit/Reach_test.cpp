// Positions by the toolkit's own solver: the nearest, all of them, one after the other.
#include "toolkit/answer/Reach.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "tests/toolkit/Answers.h"
#include "toolkit/answer/Served.h"

using korvo::Answer;
using korvo::Answers;
using korvo::Language;
using korvo::LibrarySolver;
using korvo::Machine;
using korvo::Position;
using korvo::Reach;
using korvo::Reason;
using korvo::Redundancy;
using korvo::SolverKind;
using korvo::SolverOptions;
using korvo::Status;
using korvo::Target;
using zgeo::UVec3d;
using namespace korvo::test;

namespace {

// The trunnion at X 10, Y 20, Z 30, A -45: see the tests of the library's answer.
const Target kTilted{{10, 110.5 * kHalf - 0.5, 69.5 * kHalf + 60}, {0, kHalf, kHalf}};

SolverOptions with(int place, const Redundancy& rule) {
  SolverOptions options;
  options.redundancy[static_cast<std::size_t>(place)] = rule;
  return options;
}

TEST(Reach, PutsTheTrunnionOnAPointAndDirection) {
  const Machine machine = example("table-ac");
  const Answer answer = Reach(machine).nearest(kTilted, machine.position());
  expectReached(answer);
  expectValues(answer.position, {10, 20, 30, -45, 0});
  EXPECT_EQ(answer.solver, SolverKind::twoRotary);
  EXPECT_NEAR(answer.singular.directionRad, 45 * kDegToRad, 1e-12);
  EXPECT_NEAR(answer.singularity->angleRad, 45 * kDegToRad, 1e-12);
  EXPECT_NEAR(*answer.margins[0].toMin, 310, 1e-9);
  EXPECT_TRUE(answer.freeAxes.empty());
  EXPECT_FALSE(answer.isLinearOnly);
}

// Both branches of a fork head, B to either side; C = 0 lies nearer than C = 180.
TEST(Reach, NamesTheBranches) {
  const Machine machine = example("head-cb-fork");
  const Target target{{1000, 1000, -100}, fromZ(30, 0)};
  const Position from = machine.position({{"X", 1000.0}, {"Y", 1000.0}, {"C", 10.0}});
  const Answers all = Reach(machine).all(target, from, 20);
  ASSERT_EQ(all.total, 5u);  // C = 0 and a turn either way, 180 and -180
  EXPECT_NEAR(all.positions[0].position["B"], 30, 1e-9);
  EXPECT_NEAR(all.positions[0].position["C"], 0, 1e-9);
  EXPECT_NEAR(all.positions[1].position["C"], 180, 1e-9);
  EXPECT_NEAR(all.positions[1].position["B"], -30, 1e-9);
  EXPECT_NE(all.positions[0].branch, all.positions[1].branch);
  for (const Answer& answer : all.positions) {
    EXPECT_TRUE(answer.branch == "+" || answer.branch == "-") << answer.branch;
  }
  EXPECT_TRUE(std::is_sorted(all.distances.begin(), all.distances.end()));
}

// Along the first axis C is free: the member with C where it starts.
TEST(Reach, NamesTheFreeAxisOfAFamily) {
  const Machine machine = example("table-ac");
  const Answer answer =
      Reach(machine).nearest({{10, 20, 200}, kUp}, machine.position({{"C", 33.0}}));
  expectReached(answer);
  EXPECT_EQ(answer.freeAxes, std::vector<int>{4});
  EXPECT_EQ(answer.position["C"], 33.0);
  EXPECT_EQ(answer.singular.directionRad, 0);
}

TEST(Reach, AnswersAMillByItsLinearAxes) {
  Machine machine = example("mill-3axis");
  machine->setTHELength(50.0, 1);
  const Answer answer = Reach(machine).nearest({{10, 20, 300}, {0, 0, 3}}, machine.position());
  expectReached(answer);
  EXPECT_TRUE(answer.isLinearOnly);
  EXPECT_EQ(answer.solver, SolverKind::linear);
  expectValues(answer.position, {10, 20, 300 + 50 - 110});
}

// Equally far to both sides: the solver's first, whatever rounding says.
TEST(Reach, OfEquallyNearPositionsTakesTheFirst) {
  const Machine machine = example("head-cb-fork");
  Reach reach(machine);
  std::vector<korvo::Solution> found;
  for (double heading = 5; heading < 180; heading += 10) {
    const Target target{{1000, 1000, -100}, fromZ(30, heading)};
    const Position from =
        machine.position({{"X", 1000.0}, {"Y", 1000.0}, {"C", heading - 90}, {"B", 0.0}});
    const Answers all = reach.all(target, from, 20);
    ASSERT_FALSE(all.positions.empty());
    const Answer nearest = reach.nearest(target, from);
    EXPECT_EQ(korvo::distance(nearest.position, all.positions[0].position), 0.0);
  }
}

TEST(Reach, ShortensTheListAndSaysTheTotal) {
  const Machine machine = example("head-cb-fork");
  const Answers all = Reach(machine).all({{1000, 1000, -100}, fromZ(30, 20)},
                                         machine.position({{"X", 1000.0}, {"Y", 1000.0}}), 1);
  EXPECT_EQ(all.positions.size(), 1u);
  EXPECT_EQ(all.total, 4u);
}

TEST(Reach, FollowsATableOfTargets) {
  const Machine machine = example("table-ac");
  Reach reach(machine);
  Position at = machine.position({{"A", -15.0}, {"C", -90.0}});
  for (int heading = 0; heading < 1080; heading += 30) {
    korvo::Residual residual;
    ASSERT_FALSE(reach.follow({{0, 0, 200}, fromZ(15, heading)}, at, residual));
    EXPECT_TRUE(residual.isReached());
    EXPECT_NEAR(at["C"], heading - 90, 1e-8);
  }
}

// The list holds the nearest that the library's single answer gives, or a nearer one.
TEST(Reach, IsAsNearAsTheLibrarysAnswer) {
  std::mt19937_64 random(7);
  const auto any = [&](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  for (const char* name : {"mill-3axis", "mill-4axis", "table-ac", "table-bc", "head-table",
                           "head-cb-fork", "head-nutating", "gantry-w", "drill-head"}) {
    const Machine machine = example(name);
    Reach reach(machine);
    LibrarySolver library(machine);
    for (int i = 0; i < 60; ++i) {
      Position at = machine.position(), from = machine.position();
      for (int place = 0; place < at.size(); ++place) {
        at[place] = any(-100, 100);
        from[place] = any(-30, 30);
      }
      UVec3d nose, direction;
      machine->getTool(at, nose, direction, -1);
      const Answer ours = reach.nearest({nose, direction}, from);
      const Answer theirs = library.nearest({nose, direction}, from);
      if (theirs.status != Status::reached) continue;
      ASSERT_EQ(ours.status, Status::reached) << name << ": " << ours.text;
      EXPECT_LE(korvo::distance(ours.position, from), korvo::distance(theirs.position, from) + 1e-6)
          << name << ' ' << i;
    }
  }
}

// --- axes that a target leaves free

TEST(Reach, HoldsARedundantAxisWhereItIsTold) {
  const Machine machine = example("gantry-w");
  const int beam = machine.axisNames().find("W");
  const Target target{{100, 50, -300}, kUp};
  const SolverOptions held = with(beam, {Redundancy::Rule::value, -120.0, 2});
  const Answer answer = Reach(machine, held).nearest(target, machine.position());
  expectReached(answer);
  EXPECT_EQ(answer.position["W"], -120.0);
  EXPECT_NEAR(answer.position["Z"], -180, 1e-9);

  const SolverOptions sampled = with(beam, {Redundancy::Rule::sampled, 0.0, 4});
  const Answers all = Reach(machine, sampled).all(target, machine.position(), 20);
  ASSERT_EQ(all.total, 1u);  // -1500, -1000, -500, 0: Z has no travel above 0
  EXPECT_EQ(all.positions[0].position["W"], 0.0);
}

TEST(Reach, SaysHowFarAHeldAxisIsOutside) {
  const Machine machine = example("gantry-w");
  const SolverOptions held =
      with(machine.axisNames().find("W"), {Redundancy::Rule::value, 10.0, 2});
  const Answer answer = Reach(machine, held).nearest({{100, 50, -300}, kUp}, machine.position());
  expectMissed(answer, Reason::outsideLimits, 10);
  EXPECT_EQ(answer.text, "outside the limits: W above by 10 mm");
}

// Z + W = -3000, and both together reach to -2750.
TEST(Reach, SaysTheExcessWithTheSpareAxisAtItsLimit) {
  const Machine machine = example("gantry-w");
  const Answer answer = Reach(machine).nearest({{100, 50, -3000}, kUp}, machine.position());
  expectMissed(answer, Reason::outsideLimits, 250, 1e-6);
  EXPECT_EQ(answer.outside.size(), 1u);
}

// Upright the table turns the point to X = 480 cos C, Y = 480 sin C; X ends at 300 and Y at 255,
// both together at the root of 300^2 + 255^2 = 393.73: at the corner each is exceeded by less than
// along any single axis. What is said is summed: (480 cos C - 300) + (480 sin C - 255) falls away
// from the middle, so one of them ends at its limit.
TEST(Reach, TurnsTheFreeAxisOfAFamilyToTheLeastExcess) {
  const Machine machine = example("table-ac");
  const Answer answer = Reach(machine).nearest({{480, 0, 200}, kUp}, machine.position());
  const double atX = std::sqrt(480.0 * 480.0 - 300.0 * 300.0) - 255.0;  // Y with X on its limit
  const double atY = std::sqrt(480.0 * 480.0 - 255.0 * 255.0) - 300.0;
  expectMissed(answer, Reason::outsideLimits, std::min(atX, atY), 1e-6);
  EXPECT_EQ(answer.outside.size(), 1u);
  EXPECT_EQ(answer.freeAxes, std::vector<int>{4});
}

// One linear axis short, the free table brings the point into its reach: 40 from the axis of C.
TEST(Reach, TurnsTheFreeAxisOfAFamilyIntoTheReachOfFewLinearAxes) {
  const Machine machine = machineOf(
      "frame\nrotation=A,4,x,0,0,0,0,0\nrotation=C,6,z,0,0,0,0,0\npart=x,y,0,0,0\nlien=BATI\n"
      "axis=X,1,x\naxis=Z,3,z\ntool=z,0,0,0\n");
  const Answer answer = Reach(machine).nearest({{0, 40, 100}, kUp}, machine.position());
  EXPECT_EQ(answer.status, Status::reached) << answer.text;
  EXPECT_LE(answer.residual.pointMm, korvo::kReachedMm);
  EXPECT_NEAR(std::abs(answer.position["X"]), 40, 1e-5);
}

TEST(Reach, AStartThatIsNoNumberIsSaid) {
  const Machine machine = example("mill-3axis");
  const Position from = machine.position({{"X", std::nan("")}});
  const Answer answer = Reach(machine).nearest({{0, 0, 200}, kUp}, from);
  EXPECT_EQ(answer.reason, Reason::noDirection);
  EXPECT_EQ(answer.text, "no start: one of its values is not finite");
}

// --- which form serves a machine

struct Service {
  const char* name;
  const char* english;
  const char* french;
};

class Serves : public testing::TestWithParam<Service> {};

TEST_P(Serves, IsSaidInBothLanguages) {
  const Machine machine = example(GetParam().name);
  const korvo::Solver solver(machine);
  EXPECT_EQ(servedBy(machine, solver).text, GetParam().english);
  EXPECT_EQ(servedBy(machine, solver, {}, Language::french).text, GetParam().french);
}

INSTANTIATE_TEST_SUITE_P(
    Examples, Serves,
    testing::Values(
        Service{"mill-3axis", "no free rotary axis: X, Y and Z carry the tool as it points",
                "aucun axe rotatif libre : X, Y et Z déplacent l'outil tel qu'il est orienté"},
        Service{"mill-4axis", "one rotary axis: B turns the tool, Z, X and Y carry it",
                "un axe rotatif : B oriente l'outil, Z, X et Y le déplacent"},
        Service{"table-ac", "two rotary axes: C and A turn the tool, X, Y and Z carry it",
                "deux axes rotatifs : C et A orientent l'outil, X, Y et Z le déplacent"},
        Service{"gantry-w",
                "two rotary axes: C and A turn the tool, X, Y and Z carry it; a target leaves W "
                "free to choose",
                "deux axes rotatifs : C et A orientent l'outil, X, Y et Z le déplacent ; une cible "
                "laisse W au choix"}),
    [](const auto& row) {
      std::string name = row.param.name;
      std::replace(name.begin(), name.end(), '-', '_');
      return name;
    });

TEST(Serves, OfAnArmOnlyWhatIsFreeCarriesAndTurns) {
  const Machine machine = withLock(example("arm-puma560"), 0);
  const korvo::Served served = servedBy(machine, korvo::Solver(machine));
  EXPECT_EQ(served.carrying, (std::vector<int>{1, 2}));
  EXPECT_EQ(served.locked, std::vector<int>{0});
  EXPECT_EQ(served.text, "arm: J2 and J3 carry the wrist, J4, J5 and J6 turn the tool; locked: J1");
}

TEST(Serves, TheLibraryIsNamedWhereItMayAnswer) {
  Machine machine = example("head-cb-fork");
  machine->getElemByName("B")->setValueIndex(0);  // that of X
  const korvo::Solver solver(machine);
  ASSERT_EQ(solver.unserved(), korvo::Unserved::coupledAxes);
  EXPECT_EQ(servedBy(machine, solver).text,
            "no closed form serves this machine: one value, X, moves two joints; the library's own "
            "solver may answer (LibrarySolver, --engine library)");
}

// Two parallel joints, then one that slides and one that turns about the tool: the library's arm
// solver wants a wrist.
TEST(Serves, TheLibraryIsNotRecommendedWhereItCannotEither) {
  const Machine machine = machineOf(
      "frame\npart=x,y,0,0,0\nlien=BATI\nrotation=J1,1,+z,0,0,0,0,0\n"
      "rotation=J2,2,+z,0,0,250,0,0\naxis=Z,3,-z\nrotation=J4,4,+z,0,0,450,0,0\n"
      "tool=z,450,0,0\n");
  const korvo::Solver solver(machine);
  EXPECT_EQ(servedBy(machine, solver).text,
            "no closed form serves this machine: linear axes: 1, rotary axes: 3, where three "
            "linear axes or six joints are wanted; nor does the library's own solver serve it");
  EXPECT_NE(
      korvo::LibrarySolver(machine).nearest({{300, 100, 50}, {0, 0, 1}}, machine.position()).status,
      Status::reached);
}

TEST(Serves, NamesWhatIsLockedAndHeld) {
  const Machine machine = withLock(example("gantry-w"), 0);
  const int beam = machine.axisNames().find("W");
  const SolverOptions held = with(beam, {Redundancy::Rule::value, 0.0, 2});
  const korvo::Served served = servedBy(machine, korvo::Solver(machine, held), held);
  EXPECT_EQ(served.locked, std::vector<int>{0});
  EXPECT_EQ(served.redundant, std::vector<int>{beam});
  EXPECT_EQ(served.carrying.size(), 2u);
}

}  // namespace
