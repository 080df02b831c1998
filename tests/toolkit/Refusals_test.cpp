// Targets without a position: one refusal a row, with its amount and its words worked by hand.
#include <cmath>

#include "tests/toolkit/Answers.h"
#include "toolkit/answer/Reach.h"

using korvo::Answer;
using korvo::Language;
using korvo::Machine;
using korvo::Position;
using korvo::Reach;
using korvo::Reason;
using korvo::Redundancy;
using korvo::SolverOptions;
using korvo::Status;
using korvo::Target;
using korvo::Unit;
using zgeo::UVec3d;
using namespace korvo::test;

namespace {

const double kRoot75 = std::sqrt(0.75);  // cosine of 30 degrees

// Stretched at the height of its shoulder, the arm has its wrist centre on the circle of this
// radius about the first axis.
const double kPumaReach = std::hypot(431.8 + std::hypot(20.3, 431.8), 150.05);

constexpr const char* kHead = "frame\npart=x,y,0,0,0\nlien=BATI\n";

// J4 and J5 meet at (400, 0, 1100); the line of J6, parallel to that of J4, passes 12.5 beside it.
constexpr const char* kWristOnThird =
    "frame\npart=x,y,0,0,0\nlien=BATI\nrotation=J1,1,+z,0,0,0,0,0\n"
    "rotation=J2,2,+y,0,0,100,0,600\nrotation=J3,3,+y,0,0,800,0,1400\n"
    "rotation=J4,4,+x,0,0,800,0,1400\nrotation=J5,5,+y,0,0,800,0,1400\n"
    "rotation=J6,6,+z,0,0,800,0,1400\ntool=-x,900,0,1400\n";

constexpr const char* kSplitWrist =
    "frame\npart=x,y,0,0,0\nlien=BATI\nrotation=J1,1,+z,0,0,0,0,0\n"
    "rotation=J2,2,+y,0,0,100,0,600\nrotation=J3,3,+y,0,0,100,0,1300\n"
    "rotation=J4,4,+x,0,0,800,0,1400\naxis=S,7,+z\nrotation=J5,5,+y,0,0,800,0,1400\n"
    "rotation=J6,6,+x,0,0,800,0,1400\ntool=-x,800,0,1400\n";

constexpr const char* kOffsetWrist =
    "frame\npart=x,y,0,0,0\nlien=BATI\n"
    "rotation=J1,1,+z,0,0,0,0,0\nrotation=J2,2,-y,0,0,0,0,600\nrotation=J3,3,-y,0,0,400,0,600\n"
    "rotation=J4,4,+z,0,0,400,0,1100\nrotation=J5,5,-y,0,0,400,0,1100\n"
    "rotation=J6,6,+z,0,0,412.5,0,1100\ntool=-z,412.5,0,1100\n";

constexpr const char* kRailArm =
    "frame\npart=x,y,0,0,0\nlien=BATI\naxis=RAIL,7,y\n"
    "rotation=J1,1,+z,0,0,0,0,0\nrotation=J2,2,-y,0,0,0,0,600\nrotation=J3,3,-y,0,0,400,0,600\n"
    "rotation=J4,4,+z,0,0,400,0,1100\nrotation=J5,5,-y,0,0,400,0,1100\n"
    "rotation=J6,6,+z,0,0,400,0,1100\ntool=-z,400,0,1100\nlimits=RAIL,0,1000\n";

Machine definition(const std::string& lines) { return machineOf(kHead + lines); }

struct Refusal {
  const char* label;
  Machine machine;
  std::vector<std::pair<std::string, double>> from;
  Target target;
  Reason reason;
  double by;
  Unit unit;
  const char* english;
  const char* french;
};

Target targetAt(const Machine& machine, const std::vector<std::pair<std::string, double>>& values) {
  Position at = machine.position();
  for (const auto& [axis, value] : values) at[axis] = value;
  UVec3d nose, direction;
  machine->getTool(at, nose, direction, -1);
  return {nose - direction * machine->getTHELength(-1), direction};
}

Position startOf(const Refusal& r) {
  Position from = r.machine.position();
  for (const auto& [axis, value] : r.from) from[axis] = value;
  return from;
}

std::vector<Refusal> refusals() {
  return {
      {"NullDirection",
       example("mill-3axis"),
       {},
       {{0, 0, 200}, {}},
       Reason::noDirection,
       0,
       Unit::none,
       "no target: the point or the direction is beyond the range of numbers, or the direction is "
       "null",
       "pas de cible : le point ou la direction dépasse le domaine des nombres, ou la direction "
       "est nulle"},
      {"NoRotaryAxis",
       example("mill-3axis"),
       {},
       {{0, 0, 200}, fromZ(30, 0)},
       Reason::noRotaryAxis,
       30,
       Unit::degree,
       "no free rotary axis: the tool stays 30 degrees from the direction",
       "aucun axe rotatif libre : l'outil reste à 30 degrés de la direction"},
      // B turns about Y: the tool stays level
      {"BesideTheCone",
       example("mill-4axis"),
       {},
       {{0, 200, 300}, {0, 0.5, kRoot75}},
       Reason::outsideCone,
       30,
       Unit::degree,
       "the direction lies 30 degrees beside the cone that the tool describes about B",
       "la direction est à 30 degrés du cône que l'outil décrit autour de B"},
      // the head lays the spindle down to 90 degrees from Z
      {"BesideTheBand",
       example("head-nutating"),
       {},
       {{0, 0, 500}, fromZ(100, 33)},
       Reason::outsideCone,
       10,
       Unit::degree,
       "the direction lies 10 degrees beside what is reached by C and B",
       "la direction est à 10 degrés de ce que C et B permettent d'atteindre"},
      // X ends at 381
      {"OneAxisOutside",
       example("mill-3axis"),
       {},
       {{400, 0, 200}, kUp},
       Reason::outsideLimits,
       19,
       Unit::mm,
       "outside the limits: X above by 19 mm",
       "hors des courses : X dépasse de 19 mm son maximum"},
      // Y ends at -203 and Z, with the nose 110 above the table at 0, at 508
      {"TwoAxesOutside",
       example("mill-3axis"),
       {},
       {{0, -204.5, 620}, kUp},
       Reason::outsideLimits,
       1.5,
       Unit::mm,
       "outside the limits: Y below by 1.5 mm, Z above by 2 mm",
       "hors des courses : Y descend de 1.5 mm sous son minimum, Z dépasse de 2 mm son maximum"},
      // A ends at -120; the other branch, A = 130, is 100 beyond its end at 30
      {"ARotaryAxisOutside",
       example("table-ac"),
       {},
       above(fromZ(130, 90)),
       Reason::outsideLimits,
       10,
       Unit::degree,
       "outside the limits: A below by 10 degrees",
       "hors des courses : A descend de 10 degrés sous son minimum"},
      {"LockedLinearAxis",
       withLock(example("mill-3axis"), 0),
       {{"X", 4}},
       {{14, 20, 150}, kUp},
       Reason::lockedAxis,
       10,
       Unit::mm,
       "X is locked: the target would be reached with X at 14 mm, 10 mm away",
       "X est bloqué : la cible serait atteinte avec X à 14 mm, soit un écart de 10 mm"},
      // 30 degrees about Y, the nose 215 below B, B 0.02 beside C: X by 215 sin 30 and more
      {"LockedRotaryAxis",
       withLock(example("head-cb-fork"), 3),
       {{"X", 1000}, {"Y", 1000}},
       {{1000, 1000, -100}, fromZ(30, 0)},
       Reason::lockedAxis,
       30,
       Unit::degree,
       "B is locked: the target would be reached with B at 30 degrees, 30 degrees away",
       "B est bloqué : la cible serait atteinte avec B à 30 degrés, soit un écart de 30 degrés"},
      // The first joint turns whatever the others reach about its line
      {"LockedJointOfAnArm",
       withLock(example("arm-irb2400"), 0),
       {},
       targetAt(example("arm-irb2400"), {{"J1", 30}, {"J2", 10}, {"J5", 40}}),
       Reason::lockedAxis,
       30,
       Unit::degree,
       "J1 is locked: the target would be reached with J1 at 30 degrees, 30 degrees away",
       "J1 est bloqué : la cible serait atteinte avec J1 à 30 degrés, soit un écart de 30 degrés"},
      {"TwoLockedAxes",
       withLock(withLock(example("mill-3axis"), 0), 1),
       {},
       {{10, 20, 150}, kUp},
       Reason::lockedAxis,
       10,
       Unit::mm,
       "X and Y are locked: the target would be reached with X at 10 mm and Y at 20 mm",
       "X et Y sont bloqués : la cible serait atteinte avec X à 10 mm et Y à 20 mm"},
      {"TwoLinearAxes",
       definition("axis=Y,2,y\naxis=Z,3,z\ntool=z,0,0,0\n"),
       {},
       {{14, 20, 30}, kUp},
       Reason::linearAxes,
       14,
       Unit::mm,
       "2 free linear axes do not carry the tool there: the point is missed by 14 mm",
       "2 axes linéaires libres n'y amènent pas l'outil : le point est manqué de 14 mm"},
      {"OneLinearAxis",
       definition("axis=Z,3,z\ntool=z,0,0,0\n"),
       {},
       {{3, 4, 30}, kUp},
       Reason::linearAxes,
       5,
       Unit::mm,
       "1 free linear axis does not carry the tool there: the point is missed by 5 mm",
       "1 axe linéaire libre n'y amène pas l'outil : le point est manqué de 5 mm"},
      {"DependentLinearAxes",
       definition("axis=X,1,x\naxis=Y,2,y\naxis=W,7,1,1,0\ntool=z,0,0,0\n"),
       {},
       {{3, 4, 7}, kUp},
       Reason::linearAxes,
       7,
       Unit::mm,
       "no three free linear axes in independent directions: the point is missed by 7 mm",
       "les axes linéaires libres n'ont pas trois directions indépendantes : le point est manqué "
       "de 7 mm"},
      // X and Z of a lathe: the spindle C turns the tool's direction alone
      {"Lathe",
       machineOf("frame\nrotation=C,6,z,0,0,0,0,0\npart=x,y,0,0,0\nlien=BATI\naxis=Z,3,z\n"
                 "axis=X,1,x\ntool=x,100,0,50\n"),
       {},
       {{60, 10, 20}, {1, 0, 0}},
       Reason::linearAxes,
       10,
       Unit::mm,
       "2 free linear axes do not carry the tool there: the point is missed by 10 mm",
       "2 axes linéaires libres n'y amènent pas l'outil : le point est manqué de 10 mm"},
      {"FewJoints",
       definition("axis=X,1,x\nrotation=A,4,x\nrotation=B,5,y\nrotation=C,6,z\ntool=z,0,0,0\n"),
       {},
       {{1, 2, 3}, kUp},
       Reason::noSolver,
       0,
       Unit::none,
       "no closed form serves this machine: linear axes: 1, rotary axes: 3, where three linear "
       "axes or six joints are wanted; nor does the library's own solver serve it",
       "aucune solution analytique pour cette machine : axes linéaires : 1, axes rotatifs : 3, "
       "alors qu'il faut trois axes linéaires ou six articulations ; le solveur de la "
       "bibliothèque ne la traite pas non plus"},
      // the wrist centre 150.05 beside the first axis; arms of 431.8 and the root of 20.3^2 +
      // 431.8^2
      {"ArmTooShort",
       example("arm-puma560"),
       {},
       {{2000, 0, 671.83}, {0, 0, -1}},
       Reason::outOfReach,
       2000 - kPumaReach,
       Unit::mm,
       "out of reach: the wrist centre would lie 1122.9915 mm beyond what the arm reaches",
       "hors de portée : le centre du poignet serait à 1122.9915 mm de ce que le bras atteint"},
      // no joint free brings it nearer
      {"LockedArmTooShort",
       withLock(example("arm-puma560"), 3),
       {},
       {{2000, 0, 671.83}, {0, 0, -1}},
       Reason::outOfReach,
       2000 - kPumaReach,
       Unit::mm,
       "out of reach: the wrist centre would lie 1122.9915 mm beyond what the arm reaches",
       "hors de portée : le centre du poignet serait à 1122.9915 mm de ce que le bras atteint"},
      {"ArmTooNearItsAxis",
       example("arm-puma560"),
       {},
       {{100, 0, 700}, {0, 0, -1}},
       Reason::outOfReach,
       50.05,
       Unit::mm,
       "out of reach: the wrist centre would lie 50.05 mm beyond what the arm reaches",
       "hors de portée : le centre du poignet serait à 50.05 mm de ce que le bras atteint"},
      // arms of 400 and 500, level with the shoulder: 1899 along the rail is reached from 999 on
      {"ArmOnItsLockedRail",
       withLock(machineOf(kRailArm), 6),
       {},
       {{0, 1899, 600}, {0, 1, -1}},
       Reason::lockedAxis,
       999,
       Unit::mm,
       "RAIL is locked: the target would be reached with RAIL at 999 mm, 999 mm away",
       "RAIL est bloqué : la cible serait atteinte avec RAIL à 999 mm, soit un écart de 999 mm"},
      {"NoBallWrist",
       machineOf(kOffsetWrist),
       {},
       {{500, 0, 900}, {0, 0, -1}},
       Reason::noSolver,
       12.5,
       Unit::mm,
       "no closed form serves this machine: the lines of J4, J5 and J6 miss each other by 12.5 mm; "
       "nor does the library's own solver serve it",
       "aucune solution analytique pour cette machine : les axes J4, J5 et J6 ne se coupent pas en "
       "un point : écart de 12.5 mm ; le solveur de la bibliothèque ne la traite pas non plus"},
      {"WristOnThirdAxis",
       machineOf(kWristOnThird),
       {},
       {{900, 0, 1400}, {-1, 0, 0}},
       Reason::noSolver,
       0,
       Unit::none,
       "no closed form serves this machine: the line of J3 passes through the point where those of "
       "J4, J5 and J6 meet, so that J3 does not carry it; nor does the library's own solver serve "
       "it",
       "aucune solution analytique pour cette machine : l'axe J3 passe par le point où se coupent "
       "les axes J4, J5 et J6, si bien que J3 ne le déplace pas ; le solveur de la bibliothèque ne "
       "la traite pas non plus"},
      {"SplitWrist",
       machineOf(kSplitWrist),
       {},
       {{800, 0, 1400}, {-1, 0, 0}},
       Reason::noSolver,
       0,
       Unit::none,
       "no closed form serves this machine: S moves between the axes of the wrist, J4, J5 and J6, "
       "whose lines therefore do not always meet in one point; nor does the library's own solver "
       "serve it",
       "aucune solution analytique pour cette machine : S se déplace entre les axes du poignet, "
       "J4, J5 et J6, qui ne se coupent donc pas toujours en un point ; le solveur de la "
       "bibliothèque ne la traite pas non plus"},
  };
}

class Refused : public testing::TestWithParam<Refusal> {};

TEST_P(Refused, SaysWhyInBothLanguages) {
  const Refusal& r = GetParam();
  const Position from = startOf(r);
  for (const Language language : {Language::english, Language::french}) {
    Reach reach(r.machine, {}, language);
    const Answer answer = reach.nearest(r.target, from);
    EXPECT_NE(answer.status, Status::reached);
    EXPECT_EQ(answer.reason, r.reason) << answer.text;
    EXPECT_NEAR(answer.by, r.by, 1e-6) << answer.text;
    EXPECT_EQ(answer.unit, r.unit);
    EXPECT_EQ(answer.text, language == Language::french ? r.french : r.english);
    const korvo::Answers all = reach.all(r.target, from, 5);
    ASSERT_TRUE(all.none);
    EXPECT_EQ(all.none->text, answer.text);
    Position at = from;
    korvo::Residual residual;
    const auto missed = reach.follow(r.target, at, residual);
    ASSERT_TRUE(missed);
    EXPECT_EQ(missed->text, answer.text);
    EXPECT_EQ(at, from);
  }
}

INSTANTIATE_TEST_SUITE_P(Reach, Refused, testing::ValuesIn(refusals()),
                         [](const auto& row) { return std::string(row.param.label); });

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.label; }

}  // namespace
