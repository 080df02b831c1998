// Inverse queries at their edges: axes and positions that do not fit, results written over the
// start, sinks that solve, values that are no numbers.
#include <algorithm>
#include <cstring>
#include <limits>
#include <tuple>
#include <utility>

#include "tests/kinematics/KMachine_arm.h"
#include "tests/kinematics/KMachine_inverse.h"

namespace korvo::test {
namespace {

using zgeo::UTools;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValueBase;

const std::string kA = "rotation=A,4,x,0,0,0,0,0\n";
const std::string kB = "rotation=B,5,y,0,0,0,0,0\n";
const std::string kC = "rotation=C,6,z,0,0,0,0,0\n";

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

const UVec3d kPoint(10, 20, 30);

UVec3d alongB(double b) { return {std::sin(rad(b)), 0, std::cos(rad(b))}; }

/// X Y Z of a table B at b: where the part point `p` stands before the table turns.
Numbers onTableB(const UVec3d& p, double b) {
  const double c = std::cos(rad(b)), s = std::sin(rad(b));
  return {c * p.x - s * p.z, p.y, s * p.x + c * p.z, b};
}

bool sameBits(const Numbers& a, const Numbers& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

void setLimits(KMachineElem& e, double low, double high) {
  e.setMin(low, true);
  e.setMax(high, true);
}

void setRecord(KMachine& machine, int kinematicClass, int armType) {
  machine.addKine(1, {.toolIndex = -101, .kinematicClass = kinematicClass, .armType = armType});
}

/// Positions of any dimension that the library releases.
struct AnyPosition : KMachineValueBase {
  static Position of(const Numbers& values) {
    Position v(_newMachineValue(static_cast<int>(values.size())));
    v->set(values.data());
    return v;
  }
};

/// X Y Z and a table B.
class WithTableB : public InverseTest {
 protected:
  WithTableB() : machine(table(kB)) {}

  std::size_t listed(const UVec3d& dir = alongB(30), const UVec3d& pos = kPoint) {
    Entries entries;
    EXPECT_EQ(machine.getPossibleConfigs(dir, pos, entries.list, 1), 0);
    return entries.list.size();
  }

  KMachine machine;
};

// --- a sink that solves

/// A three-joint arm: its chain is shorter than that of six joints.
const std::string kShortArm =
    "frame\npart=x,y,0,0,0\nlien=BATI\nrotation=J1,1,z,0,0,0,0,0\n"
    "rotation=J2,2,-y,0,0,50,0,300\nrotation=J3,3,-y,0,0,450,0,300\ntool=x,600,0,300\n";

/// Solves another arm before the walk along the wrist, itself off meanwhile: sinks must not trace.
class SolvingSink : public TraceCapture {
 public:
  explicit SolvingSink(const KMachine& other) : other_(other) {}
  ~SolvingSink() override { claimAll(); }

  void line(const std::wstring& text, std::chrono::system_clock::time_point time) override {
    TraceCapture::line(text, time);
    if (!text.starts_with(L"oToolCenter: ")) return;
    UTools::_setTraceSink(nullptr);
    const Numbers start = {1, 2, 3};
    const Position out = positionOf(other_, start);
    solved += other_.solveConfig1(*positionOf(other_, start), UVec3d(100, 200, 300),
                                  UVec3d(1, 0, 0), *out) == 0;
    UTools::_setTraceSink(this);
  }

  int solved = 0;

 private:
  const KMachine& other_;
};

using SolvingSinks = InverseTest;

// With a tool length the wrist centre depends on every joint after the wrist's first.
TEST_F(SolvingSinks, DoNotChangeWhatIsBeingSolved) {
  const KMachine machine = machineOf(arm::squareArm(56).text()), other = machineOf(kShortArm);
  machine.setTHELength(40, 1);
  const Numbers start = {25, 28, 75, 10, 40, 30};
  const UVec3d pos(400, 100, 600), dir(1, 2, 3);
  const Solved undisturbed = solve(machine, start, pos, dir);
  SolvingSink sink(other);
  const Solved disturbed = solve(machine, start, pos, dir);
  EXPECT_EQ(sink.solved, 1);
  EXPECT_EQ(disturbed.code, undisturbed.code);
  EXPECT_TRUE(sameBits(disturbed.v, undisturbed.v));
  EXPECT_FALSE(sameBits(disturbed.v, start));
  trace.claimAll();
}

// --- axes without place

/// The host numbers axes anew after the load: beyond all numbers, or as the frame.
class Placeless : public InverseTest, public testing::WithParamInterface<int> {
 protected:
  /// An axis of the chain; the element `next` hangs on it. The frame, which comes first, makes room
  /// for the index 0.
  void renumber(KMachine& machine, const wchar_t* axis, int next) {
    machine.getElemByName(L"X")->setPrevIndex(77);
    machine.getElemByIndex(0)->setElemIndex(77);
    machine.getElemByName(axis)->setElemIndex(GetParam());
    machine.getElemByIndex(next)->setPrevIndex(GetParam());
    ASSERT_EQ(static_cast<int>(machine.getToolChain(true, 1).size()), machine.getAxisNum() + 2);
  }
};

// (0, -0.6, 0.8) by C and B: B turns by acos(0.8), C by -90. The 40 of A turns nothing.
TEST_P(Placeless, AxesAreNotFree) {
  KMachine machine = head(kXYZ + kC + kA + kB);
  renumber(machine, L"A", 5);
  const Solved s = solve(machine, {0, 0, 0, 40, 0, 0}, UVec3d(), UVec3d(0, -0.6, 0.8));
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{0, 0, 0, 40, std::acos(0.8) / rad(1), -90}, 1e-9));
}

TEST_P(Placeless, TheOnlyAxisLeavesNothingToTurn) {
  KMachine machine = head(kXYZ + kB);
  renumber(machine, L"B", -101);
  const Solved s = solve(machine, {1, 2, 3, 40}, kPoint, alongB(30));
  EXPECT_EQ(s.code, -1);
  EXPECT_EQ(s.v, (Numbers{1, 2, 3, 40}));
  EXPECT_TRUE(trace.claim(kNoRotations));
}

// The wrist would be A and B, next to the tool; without B it is C and A.
TEST_P(Placeless, AxesAreNoWrist) {
  KMachine machine = head(kXYZ + kC + kA + kB);
  renumber(machine, L"B", -101);
  setRecord(machine, 5, 4);
  const Solved s = solve(machine, {1, 2, 3, 40, 25, 130}, UVec3d(), UVec3d(0.36, 0.48, 0.8));
  EXPECT_EQ(s.code, 0);
  const double a = std::acos(0.8) / rad(1), c = std::atan2(0.36, -0.48) / rad(1);
  EXPECT_THAT(s.v, AllNear(Numbers{1, 2, 3, a, 25, c}, 1e-9));
}

TEST_P(Placeless, AxesAreNotStartedFrom) {
  KMachine machine = head(kXYZ + kA + kB);
  renumber(machine, L"A", 5);
  Entries entries;
  EXPECT_EQ(machine.getPossibleAngles(alongB(30), entries.list, 1), 0);
  EXPECT_THAT(entries.column(4), AllNear(Numbers{30, -330, 390}, 1e-9));
  EXPECT_EQ(entries.column(3), (Numbers{0, 0, 0}));
}

// B carries the tool, Q and W stand beside the chain. Values X Y Z B Q W. The tool is at (0, 0, 0):
// X = 0, the first value, is outside the limits [10, 90] but not to be held against them.
TEST_P(Placeless, AxesAreNotHeldAgainstTheirLimits) {
  KMachine machine =
      head(kXYZ + kB, "tool=z,0,0,0\nlien=BATI\nrotation=Q,7,x,0,0,0,0,0\nlien=BATI\naxis=W,8,x\n");
  const auto listed = [&] {
    Entries entries;
    EXPECT_EQ(machine.getPossibleConfigs(alongB(30), UVec3d(), entries.list, 1), 0);
    return entries.list.size();
  };
  for (const wchar_t* axis : {L"Q", L"W"}) {
    KMachineElem& e = *machine.getElemByName(axis);
    setLimits(e, 10, 90);
    EXPECT_EQ(machine.checkLimitsFull(*positionOf(machine), nullptr), 1);
    EXPECT_EQ(listed(), 0u);
    e.setElemIndex(GetParam());
    e.setValueIndex(-1);
    std::vector<int> sides;
    EXPECT_EQ(machine.checkLimitsRot(*positionOf(machine), &sides), 0);
    EXPECT_EQ(machine.checkLimitsLin(*positionOf(machine), &sides), 0);
    EXPECT_EQ(sides, std::vector<int>(6, 0));
    EXPECT_EQ(listed(), 3u);
  }
}

TEST_P(Placeless, AxesAddedLaterAreNotEither) {
  KMachine machine = head(kXYZ + kB);
  machine.setVersion(0);
  for (const wchar_t* line : {L"rotation=R,9,y,0,0,0,0,0", L"axis=V,9,y"}) {
    KMachineElem* const added = machine.addElem(KMachineElem(line, 1));
    ASSERT_NE(added, nullptr);
    ASSERT_EQ(added->getValueIndex(), -1);
    added->setElemIndex(GetParam());
    setLimits(*added, 10, 90);
  }
  EXPECT_EQ(machine.checkLimitsFull(*positionOf(machine), nullptr), 0);
  Entries entries;
  EXPECT_EQ(machine.getPossibleConfigs(alongB(30), UVec3d(), entries.list, 1), 0);
  EXPECT_EQ(entries.list.size(), 3u);
}

INSTANTIATE_TEST_SUITE_P(Index, Placeless, testing::Values(50, 0),
                         testing::PrintToStringParamName());

// --- entries of the host that do not fit the machine

/// C under A under the part's side. Values X Y Z A C.
class HostEntries : public InverseTest {
 protected:
  HostEntries() : machine(table("rotation=A,4,x,0,0,0,10,-35\nrotation=C,6,z,0,0,10,-20,0\n")) {}

  std::vector<Numbers> configs(const std::vector<Numbers>& before) {
    Entries entries;
    for (const Numbers& v : before) {
      entries.list.push_back(v.empty() ? nullptr : AnyPosition::of(v).release());
    }
    EXPECT_EQ(machine.getPossibleConfigs(UVec3d(1, 1, 1), UVec3d(25, 40, 60), entries.list, 1), 0);
    EXPECT_EQ(std::erase(entries.list, nullptr), 0u);
    return entries.numbers();
  }

  KMachine machine;
};

// (1, 1, 1) from zero: C turns by 45 one way or 135 the other, A by 54.7. The smaller of a pair's
// angles counts, so 45. From a solved position nothing is turned.
TEST_F(HostEntries, ShortOnesAreSolvedFromZeroWhateverCameBefore) {
  const std::vector<Numbers> all = configs({});
  const auto wanted = std::find_if(all.begin(), all.end(), [](const Numbers& v) {
    return std::abs(std::abs(v[4]) - 45) < 1e-6 && std::abs(v[3]) < 90;
  });
  ASSERT_NE(wanted, all.end());
  const Numbers point(wanted->begin(), wanted->begin() + 3);
  EXPECT_THAT(configs({{0, 0, 0}}).front(), AllNear(point, 1e-9));
  int others = 0;
  for (const Numbers& before : all) {
    const std::vector<Numbers> listed = configs({before, {0, 0, 0}});
    EXPECT_THAT(listed[0], AllNear(before, 1e-9));
    EXPECT_THAT(listed[1], AllNear(point, 1e-9));
    others += std::abs(before[0] - point[0]) > 1;
  }
  EXPECT_GT(others, 0);  // some stood on the other side of A
}

TEST_F(HostEntries, LongOnesKeepWhatTheMachineDoesNotHave) {
  Numbers expected = configs({{1, 2, 3, 4, 5}}).front();
  expected.insert(expected.end(), {66, 77});
  EXPECT_TRUE(sameBits(configs({{1, 2, 3, 4, 5, 66, 77}}).front(), expected));
}

TEST_F(HostEntries, NullOnesLeave) { EXPECT_EQ(configs({{}, {}}), configs({})); }

// --- positions shorter or longer than the machine

/// The position at B = 30, `current` and `out` of any size.
class OddSizes : public WithTableB {
 protected:
  Solved solveInto(const Numbers& current, const Numbers& out) {
    const Position v = AnyPosition::of(out);
    const int code = machine.getConfigPlus(*AnyPosition::of(current), kPoint, alongB(30), *v);
    return {code, numbersOf(*v)};
  }
};

TEST_F(OddSizes, OfAShortStartTheResultKeepsTheRest) {
  const Solved zero = solveInto({1, 2}, {0, 0, 0, 0});
  EXPECT_EQ(zero.code, 0);
  EXPECT_THAT(zero.v, AllNear(onTableB(kPoint, 30), 1e-10));
  const Solved turned = solveInto({1, 2}, {0, 0, 0, 720});
  EXPECT_EQ(turned.code, 0);
  EXPECT_NEAR(turned.v[3], 750, 1e-9);
}

TEST_F(OddSizes, WhatTheMachineDoesNotHaveIsNotSolved) {
  const Solved s = solveInto({1, 2, 3, 360, 33, 44}, {0, 0, 0, 0, 55, 66, 77});
  EXPECT_EQ(s.code, 0);
  Numbers expected = solve(machine, {1, 2, 3, 360}, kPoint, alongB(30)).v;
  EXPECT_NEAR(expected[3], 390, 1e-9);
  expected.insert(expected.end(), {33, 44, 77});  // of the start, as far as it goes
  EXPECT_TRUE(sameBits(s.v, expected));
}

// Its last value stands for Y, Z and B; X has a place of its own.
TEST_F(OddSizes, AShortResultStaysInItsBounds) {
  const Solved s = solveInto({1, 20, 3, 4}, {0, 0});
  EXPECT_EQ(s.code, 0);
  ASSERT_EQ(s.v.size(), 2u);
  EXPECT_NEAR(s.v[0], onTableB(kPoint, 30)[0], 1e-10);
}

// --- what a solve leaves in the elements

using ElementValues = InverseTest;

TEST_F(ElementValues, HoldTheStartAfterSolving) {
  KMachine machine = head(kXYZ + kC + kA);
  const Numbers start = {1, 2, 3, 40, 130};
  for (const int kinematicClass : {1, 2, 3, 4}) {
    setRecord(machine, kinematicClass, 5);
    machine.updateDHm(*positionOf(machine), 1);
    const Solved s = solve(machine, start, kPoint, UVec3d(0.36, 0.48, 0.8));
    EXPECT_EQ(s.code, 0);
    EXPECT_GT(std::abs(s.v[3] - start[3]), 1);
    for (int k = 1; k <= 5; ++k) {
      const KMachineElem& e = *machine.getAxisElem(k);
      const double x = start[static_cast<std::size_t>(k - 1)];
      EXPECT_NEAR(e.getDHmCur().theta, e.getDHmRef().theta + (k > 3 ? rad(x) : 0), 1e-12);
      EXPECT_NEAR(e.getDHmCur().d, e.getDHmRef().d + (k > 3 ? 0 : x), 1e-12);
    }
  }
}

// --- how far a tip may be from its line

using TipTolerance = InverseTest;

// A tool at radius r over a table that turns by 2 d: half way it stands r (1 - cos d) = 2 r
// sin^2(d / 2) outside the chord, along the X axis as the table sees it.
TEST_F(TipTolerance, IsAHundredthOfAMicrometre) {
  const KMachine machine = table(kC);
  const double r = 100;
  for (const double away : {0.999e-5, 1.001e-5}) {
    const double turn = 4 * std::asin(std::sqrt(away / (2 * r))) / rad(1);
    const Position from = positionOf(machine, {r, 0, 0, 0}),
                   to = positionOf(machine, {r, 0, 0, turn});
    const Position raw = positionOf(machine), out = positionOf(machine);
    machine.interpolateRaw(*from, *to, 0.5, *raw);
    EXPECT_EQ(machine.interpolate(*from, *to, 0.5, *out), 0);
    if (away < 1e-5) {
      EXPECT_TRUE(sameBits(numbersOf(*out), numbersOf(*raw)));
    } else {
      EXPECT_THAT(numbersOf(*out), AllNear(Numbers{r - away, 0, 0, turn / 2}, 1e-12));
    }
  }
}

// --- drill guns with a place in positions

/// The host makes a drill gun of Z, which keeps its place.
class GunAxis : public WithTableB {
 protected:
  GunAxis() { z.setElemType(KMachineElem::KMET_TYPE_DGUN); }

  KMachineElem& z = *machine.getElemByName(L"Z");
};

TEST_F(GunAxis, IsNotInterpolated) {
  const Position zero = positionOf(machine), out = positionOf(machine, kUntouched);
  EXPECT_EQ(machine.interpolateRaw(*zero, *positionOf(machine, {2, 4, 6, 8}), 0.5, *out), 0);
  EXPECT_EQ(numbersOf(*out), (Numbers{1, 2, 12345, 4}));
}

TEST_F(GunAxis, IsCheckedWithTheLinearAxes) {
  setLimits(z, 0, 10);
  std::vector<int> sides;
  EXPECT_EQ(machine.checkLimitsLin(*positionOf(machine, {0, 0, 11, 0}), &sides), 1);
  EXPECT_EQ(sides, (std::vector<int>{0, 0, 1, 0}));
}

// X and Y alone are not solved, so every entry has Z = 0.
TEST_F(GunAxis, IsHeldAgainstItsLimitsInTheList) {
  setLimits(z, 0, 10);
  EXPECT_EQ(listed(), 3u);
  setLimits(z, 1, 10);
  EXPECT_EQ(listed(), 0u);
}

// --- translation of what cannot be solved

using UnsolvedTranslation = InverseTest;

Numbers increments(const KMachine& machine) {
  const Position v = positionOf(machine, {1, 2, 3, 4, 5});
  const Position by(machine.axisTranslation(v.get(), UVec3d(3, -4, 5)));
  return by ? numbersOf(*by) : Numbers{};
}

TEST_F(UnsolvedTranslation, OfNoClassLeadsBackToZero) {
  KMachine machine = head(kXYZ + kC + kA);
  setRecord(machine, 0, 5);
  EXPECT_EQ(increments(machine), (Numbers{-1, -2, -3, -4, -5}));
}

TEST_F(UnsolvedTranslation, WithoutACurrentToolStays) {
  const KMachine machine =
      load("frame\npart=x,y\nlien=BATI\n" + kXYZ + kC + kA + "tool=z,0,0,0\n", 1);
  EXPECT_EQ(machine.getKine(1).kinematicClass, 3);  // found last, so it counts
  EXPECT_EQ(increments(machine), Numbers(5, 0.0));
  EXPECT_TRUE(trace.claim(kNoRotations));
}

// The code is that of the last three linear axes, W X Y: dependent. The first three reach.
TEST_F(UnsolvedTranslation, TakesTheResultWhateverItsCode) {
  const KMachine machine = head("axis=W,7,x\n" + kXYZ + kB);
  EXPECT_NE(solve(machine, {1, 2, 3, 4, 5}, kPoint, alongB(4)).code, 0);
  EXPECT_THAT(increments(machine), AllNear(Numbers{3, -4, 5, 0, 0}, 1e-10));
}

// --- results written over the start

using SameObject = InverseTest;

TEST_F(SameObject, IsSolvedAsTwo) {
  const KMachine mill = head(kXYZ + kC + kA), joints = machineOf(arm::squareArm().text());
  const Numbers start = {25, 28, 75, 40, 130, 30};
  for (const KMachine* machine : {&mill, &joints}) {
    for (const auto query :
         {&KMachine::getConfigPlus, &KMachine::getConfig, &KMachine::solveConfig1}) {
      const auto one = positionOf(*machine, start), two = positionOf(*machine, start);
      const UVec3d pos(370, 90, 700), dir(1, 2, 3);
      const int code = (machine->*query)(*positionOf(*machine, start), pos, dir, *two);
      EXPECT_EQ((machine->*query)(*one, pos, dir, *one), code);
      EXPECT_TRUE(sameBits(numbersOf(*one), numbersOf(*two)));
    }
  }
  trace.claimAll();
}

TEST_F(SameObject, MayBeTheEndOfAnInterpolation) {
  const KMachine machine = table(kC);
  const Position from = positionOf(machine, {100, 0, 0, 0}), out = positionOf(machine);
  const Position to = positionOf(machine, {100, 0, 0, 90});
  machine.interpolate(*from, *to, 0.25, *out);
  machine.interpolate(*from, *to, 0.25, *to);
  EXPECT_TRUE(sameBits(numbersOf(*to), numbersOf(*out)));
}

// --- locks of an arm

using LockedArm = InverseTest;

// Deliberate: locks hold for machines of rotary and linear axes only.
TEST_F(LockedArm, IsMovedAllTheSame) {
  KMachine machine = machineOf(arm::squareArm().text());
  const UVec3d pos(370, 90, 700), dir(1, 2, 3);
  const Numbers start = {25, 28, 75, 10, 40, 30};
  const Solved unlocked = solvedBy(&KMachine::getConfigPlus, machine, start, pos, dir);
  for (int k = 1; k <= 3; ++k) machine.getElemByIndex(k)->setLocked(true);
  const Solved locked = solvedBy(&KMachine::getConfigPlus, machine, start, pos, dir);
  EXPECT_TRUE(sameBits(locked.v, unlocked.v));
  EXPECT_NEAR(locked.v[0], 36.869897645844, 1e-9);  // atan(3 / 4)
  trace.claimAll();
}

// --- what is no number

using NotNumbers = WithTableB;

TEST_F(NotNumbers, AsRotaryLimitsLeaveNoStart) {
  KMachineElem& b = *machine.getElemByName(L"B");
  const std::pair<double, double> rows[] = {{kNaN, kNaN}, {kNaN, 90},     {-90, kNaN},
                                            {kInf, kInf}, {-kInf, -kInf}, {kInf, -kInf}};
  for (const auto& [low, high] : rows) {
    setLimits(b, low, high);
    EXPECT_EQ(listed(), 0u) << low << " to " << high;
  }
  setLimits(b, -kInf, kInf);  // as without limits
  EXPECT_EQ(listed(), 3u);
}

TEST_F(NotNumbers, AsLinearLimitsHoldOnlyWhereTheyAreExceeded) {
  KMachineElem& z = *machine.getElemByName(L"Z");
  const std::tuple<double, double, unsigned> rows[] = {
      {kNaN, kNaN, 3}, {-kInf, kInf, 3}, {kInf, kInf, 0}, {-kInf, -kInf, 0}};
  for (const auto& [low, high, expected] : rows) {
    setLimits(z, low, high);
    EXPECT_EQ(listed(), expected) << low << " to " << high;
  }
}

TEST_F(NotNumbers, AsDirectionOrPointAreNotListed) {
  for (const double x : {kNaN, kInf, -kInf}) {
    EXPECT_EQ(listed(alongB(30), UVec3d(x, 0, 0)), 0u);
    EXPECT_TRUE(trace.lines().empty());  // all angles were solved
    EXPECT_EQ(listed(UVec3d(x, 0, 1), kPoint), 0u);
    EXPECT_EQ(count(kNoSolution), 9);
    EXPECT_EQ(count(kNoRotations), 9);
    EXPECT_EQ(trace.claimAll(L"solveRot_conical (4X) failed : rotAxis"), 9);
  }
}

}  // namespace
}  // namespace korvo::test
