// Classification of a tool's chain, ball joints, and the records that keep both.

#include "tests/support/LoadText.h"

#include <cstddef>
#include <optional>

#include "tests/kinematics/KMachine_describe.h"

using korvo::test::LoadingTest;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using Kine = KMachine::_sUKine;

namespace zkin {
/// Field by field, for failures that show the records.
static bool operator==(const KMachine::_sUKine& a, const KMachine::_sUKine& b) {
  return a.toolIndex == b.toolIndex && a.rotuleIndex == b.rotuleIndex &&
         a.kinematicClass == b.kinematicClass && a.armType == b.armType &&
         a.wristType == b.wristType;
}
static std::ostream& operator<<(std::ostream& out, const KMachine::_sUKine& k) {
  return out << '(' << k.toolIndex << ", " << k.rotuleIndex << ", " << k.kinematicClass << ", "
             << k.armType << ", " << k.wristType << ')';
}
}  // namespace zkin

namespace {

const wchar_t* const kUnrecognized = L"... ? Unrecognized stuff";

// Hosts read the record field by field from memory: five 32-bit numbers in this order.
static_assert(sizeof(int) == 4 && sizeof(Kine) == 20);
static_assert(offsetof(Kine, toolIndex) == 0);
static_assert(offsetof(Kine, rotuleIndex) == 4);
static_assert(offsetof(Kine, kinematicClass) == 8);
static_assert(offsetof(Kine, armType) == 12);
static_assert(offsetof(Kine, wristType) == 16);

/// Lets a test empty the shared record and look at it.
struct SharedRecord : KMachine {
  static Kine& get() { return _NOKine; }
};

// --- classes

struct ClassRow {
  const char* name;
  const char* head;  ///< version-1 lines between the frame and tool 1
  Kine kine;
  int unrecognized;  ///< lines traced per load: two set-ups of the tool
};

std::ostream& operator<<(std::ostream& out, const ClassRow& row) { return out << row.name; }

const auto rowName = [](const auto& row) { return std::string(row.param.name); };

class KinematicClass : public LoadingTest, public testing::WithParamInterface<ClassRow> {};

TEST_P(KinematicClass, FollowsTheChain) {
  SharedRecord::get() = Kine();
  const KMachine machine =
      load(std::string("frame\npart=x,y\nlien=BATI\n") + GetParam().head + "tool=z,3,4,-50\n", 1);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(machine.analysis(1), GetParam().kine);
  EXPECT_EQ(trace.claimAll(kUnrecognized), 3 * GetParam().unrecognized);
  const Kine stored = machine.getKine(1);
  EXPECT_EQ(stored, GetParam().kine);
}

#define X "axis=X,1,x\n"
#define Y "axis=Y,2,y\n"
#define Z "axis=Z,3,z\n"
#define A "rotation=A,4,x,1,1,0,0,11\n"
#define B "rotation=B,5,y,1,1,0,0,22\n"
#define C "rotation=C,6,z,1,1,50,0,33\n"
#define D "rotation=D,7,x,1,1,0,60,44\n"
#define U "axis=U,8,x\n"
#define W "axis=W,9,-z\n"

INSTANTIATE_TEST_SUITE_P(
    ThreeLinearAxes, KinematicClass,
    testing::Values(
        ClassRow{"NoRotary", X Y Z, {-101, -1, 1, 5, 0}, 0},
        ClassRow{"OneRotary", X Y Z C, {-101, -1, 2, 5, 0}, 0},
        ClassRow{"TwoRotary", X Y Z C A, {-101, -1, 3, 5, 0}, 0},
        ClassRow{"ThreeRotary", X Y Z C A B, {-101, -1, 4, 5, 0}, 0},
        ClassRow{"FourRotary", X Y Z C A B D, {-101, -1, 4, 5, 0}, 0},
        ClassRow{"RotaryBetween", X C Y A Z, {-101, -1, 3, 5, 0}, 0},
        ClassRow{"RotaryFirst", C A X Y Z, {-101, -1, 3, 5, 0}, 0},
        ClassRow{"ParallelNeighboursCountOnce", X Y Z W, {-101, -1, 1, 5, 0}, 0},
        ClassRow{"ParallelNeighboursAtTheStart", X U Y Z, {-101, -1, 1, 5, 0}, 0},
        // The second of three parallel neighbours does not count, but stands between the others.
        ClassRow{
            "ThirdParallelNeighbourCountsAgain", X U "axis=V,11,-x\n" Y, {-101, -1, 1, 5, 0}, 0},
        // Only neighbours are compared.
        ClassRow{"ParallelButNotNeighbours", X Y U, {-101, -1, 1, 5, 0}, 0},
        ClassRow{"ParallelRotaryBetweenCountsTwice", X A U Y, {-101, -1, 2, 5, 0}, 0},
        // An element without direction between two parallel axes passes for a parallel one.
        ClassRow{"GeometryBetweenCountsTwice", X "geom\n" U Y, {-101, -1, 1, 5, 0}, 0},
        ClassRow{"NullAxisBetweenCountsTwice", X "rotation=N,11\n" U Y, {-101, -1, 2, 5, 0}, 0},
        ClassRow{"HardlyParallelIsNot", X "axis=U,8,1,0.0032,0\n" Y, {-101, -1, 1, 5, 0}, 0},
        ClassRow{"SixLinear", X Y Z U "axis=V,11,y\n" W, {-101, -1, 1, 5, 0}, 0}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    FewerLinearAxes, KinematicClass,
    testing::Values(
        ClassRow{"None", "", {-101, -1, 5, -1, -1}, 1},
        ClassRow{"OneLinear", X, {-101, -1, 5, -1, -1}, 1},
        ClassRow{"TwoLinear", X Y, {-101, -1, 5, -1, -1}, 1},
        ClassRow{"ParallelsLeaveTwo", X Z W, {-101, -1, 5, -1, -1}, 1},
        ClassRow{"ParallelRotaryOfAnotherDirectionBetween", X C U Y, {-101, -1, 5, 4, -1}, 0},
        ClassRow{"OneRotary", C, {-101, -1, 5, -1, -1}, 1},
        ClassRow{"RotaryAtTheEnd", X Y C, {-101, -1, 5, -1, -1}, 1},
        ClassRow{"TwoRotary", C A, {-101, -1, 5, -1, -1}, 0},
        ClassRow{"RotaryLinear", C X, {-101, -1, 5, -1, -1}, 0},
        ClassRow{"RotaryLinearLinear", C X Y, {-101, -1, 5, 4, -1}, 0},
        ClassRow{"RotaryLinearRotary", C Z A, {-101, -1, 5, 3, -1}, 0},
        ClassRow{"RotaryRotaryLinear", C A Z, {-101, -1, 5, 1, -1}, 0},
        ClassRow{"RotaryRotaryRotary", C A D, {-101, -1, 5, 1, -1}, 0},
        ClassRow{"FirstRotaryCounts", X C A D, {-101, -1, 5, 1, -1}, 0},
        ClassRow{"GeometryBehindTheFirst", C "geom\n" A D, {-101, -1, 5, -1, -1}, 0},
        ClassRow{"GeometryBehindTheSecond", C A "geom\n" D, {-101, -1, 5, -1, -1}, 0},
        ClassRow{"AlmostParallelIsParallel", X "axis=U,8,1,0.0031,0\n" Y, {-101, -1, 5, -1, -1}, 1},
        ClassRow{"AxesWithoutDirectionDoNotCount",
                 X "axis=N,11\n" Y "axis=O,12\n",
                 {-101, -1, 5, -1, -1},
                 1},
        // A direction that is no number is not independent, and not parallel between others.
        ClassRow{
            "AxisThatIsNoNumberDoesNotCount", X "axis=N,11,nan,0,0\n" Z, {-101, -1, 5, -1, -1}, 1},
        ClassRow{"NoNumberBetweenKeepsNothingApart",
                 X "rotation=N,11,nan,0,0\n" U Y,
                 {-101, -1, 5, 4, -1},
                 0}),
    rowName);

#undef X
#undef Y
#undef Z
#undef A
#undef B
#undef C
#undef D
#undef U
#undef W

TEST_F(LoadingTest, FrameWithoutVectorBetweenParallelAxesCountsBoth) {
  const std::string rest = "axis=Y,y\naxis=X,x\npart\nlien=BATI\naxis=Z,y\ntool=z,0,0,5\n";
  EXPECT_EQ(load("bati\n" + rest, 2).analysis(1).kinematicClass, 1);  // part X Y frame Z tool
  EXPECT_EQ(load("bati=-y\n" + rest, 2).analysis(1).kinematicClass, 1);
  EXPECT_EQ(load("bati=z\n" + rest, 2).analysis(1).kinematicClass, 5);
  EXPECT_EQ(trace.claimAll(kUnrecognized), 3);
}

/// The class of a machine in memory with X along (1, 0, 0), U, and Z.
int classWithAxis(const UVec3d& u) {
  KMachineElem elemU(L"axis=U,2", 1);
  elemU.setElemAxis(u);
  KMachine machine;
  machine.setBatiToPart({KMachineElem(L"frame", 1), KMachineElem(L"part=x,y", 1)});
  machine.addBatiToTool({KMachineElem(L"axis=X,1,x", 1), elemU, KMachineElem(L"axis=Z,3,z", 1),
                         KMachineElem(L"tool=z,0,0,50", 1)});
  machine.finalise();
  return machine.analysis(1).kinematicClass;
}

TEST_F(LoadingTest, DirectionsAreComparedAsTheyStand) {
  EXPECT_EQ(classWithAxis({1, 2, 0}), 1);
  EXPECT_EQ(classWithAxis({0.001, 0.002, 0}), 5);  // |(1,0,0) x (0.001,0.002,0)|^2 = 4e-6
  trace.claimAll(L"e[");
  EXPECT_EQ(trace.claimAll(kUnrecognized), 2);
}

TEST_F(LoadingTest, AnalysisOfAToolThatIsNotThere) {
  const KMachine machine = load("frame\npart\nlien=BATI\naxis=X,x\naxis=Y,y\naxis=Z,z\ntool\n", 2);
  EXPECT_EQ(machine.analysis(7), (Kine{-107, -1, 5, -1, -1}));
  EXPECT_EQ(machine.analysis(0), (Kine{-100, -1, 5, -1, -1}));
  EXPECT_EQ(trace.claimAll(kUnrecognized), 2);
}

TEST_F(LoadingTest, ToolNumbersBelowOneMeanTheCurrentTool) {
  KMachine machine = load(
      "frame\npart\nlien=BATI\naxis=X,x\naxis=Y,y\naxis=Z,z\ntool\nlien=Z\nrotation=C,z\ntool\n",
      2);
  machine.setCurrentTool(2);
  EXPECT_EQ(machine.analysis(0), (Kine{-102, -1, 2, 5, 0}));
  EXPECT_EQ(machine.analysis(-5), (Kine{-102, -1, 2, 5, 0}));
  EXPECT_EQ(machine.initDHm(0), (Kine{-102, -1, 2, 5, 0}));
  EXPECT_EQ(machine.analysis(1), (Kine{-101, -1, 1, 5, 0}));
}

// --- arms and ball joints

/// An upright arm: J1 on the world Z line, J2 and J3 along Y, then the wrist about (0, 0, 500)
/// beyond x = 600 with J4 along X, J5 along Y, J6 along X.
std::string arm(const std::string& tool, const std::string& j6 = "1,0,0,1,1,700,0,500") {
  return "frame\npart=x,y\nlien=BATI\nrotation=J1,1,z,1,1,0,0,0\nrotation=J2,2,y,1,1,100,0,400\n"
         "rotation=J3,3,y,1,1,100,0,500.5\nrotation=J4,4,x,1,1,300,0,500\n"
         "rotation=J5,5,y,1,1,600,0,500\nrotation=J6,6," +
         j6 + "\ntool=" + tool + "\n";
}

struct WristRow {
  const char* name;
  std::string text;
  Kine kine;
  int rotule;  ///< answer of hasRotule
};

std::ostream& operator<<(std::ostream& out, const WristRow& row) { return out << row.name; }

class Wrist : public LoadingTest, public testing::WithParamInterface<WristRow> {};

TEST_P(Wrist, IsFoundWhereThreeAxesMeet) {
  const KMachine machine = load(GetParam().text, 1);
  EXPECT_EQ(machine.analysis(1), GetParam().kine);
  UVec3d centre(7, 8, 9);
  EXPECT_EQ(machine.hasRotule(centre, 1), GetParam().rotule);
  // Deliberate: never the joint's centre.
  EXPECT_EQ(centre, GetParam().rotule ? UVec3d() : UVec3d(7, 8, 9));
  trace.claimAll(kUnrecognized);
}

/// P up the world's Z line and Q along Y, 50 beyond it or on it, at the height 100.
std::string twoJoints(const char* q, const char* tool) {
  return std::string("frame\npart=x,y\nlien=BATI\nrotation=P,1,z,1,1,0,0,0\nrotation=Q,2,y,1,1,") +
         q + "\ntool=" + tool + "\n";
}

INSTANTIATE_TEST_SUITE_P(
    Arm, Wrist,
    testing::Values(
        WristRow{"ToolOnTheLineOfJ6", arm("x,800,0,500"), {-101, 4, 5, 1, 2}, 4},
        WristRow{"ToolAgainstJ6", arm("-x,800,0,500"), {-101, 4, 5, 1, 2}, 4},
        WristRow{"ToolParallelToJ6", arm("x,800,30,500"), {-101, 4, 5, 1, 4}, 4},
        WristRow{"ToolAcrossJ6", arm("z,800,0,500"), {-101, 4, 5, 1, 4}, 4},
        // With the tool's point in the wrist the tool meets J5 and J6 there too, and the search
        // runs from the tool.
        WristRow{"ToolPointInTheWrist", arm("x,600,0,500"), {-101, 5, 5, 1, 2}, 5},
        WristRow{"ToolAcrossInTheWrist", arm("z,600,0,500"), {-101, 5, 5, 1, 2}, 5},
        WristRow{
            "J6TwentyBeside", arm("x,800,0,520", "1,0,0,1,1,700,0,520"), {-101, -1, 5, 1, -1}, 0},
        WristRow{"J6BesideWithinTolerance",
                 arm("x,800,0,500.000009", "1,0,0,1,1,700,0,500.000009"),
                 {-101, 4, 5, 1, 2},
                 4},
        WristRow{"J6BesideBeyondTolerance",
                 arm("x,800,0,500.000011", "1,0,0,1,1,700,0,500.000011"),
                 {-101, -1, 5, 1, -1},
                 0},
        // Bodies between the joints are no axes of the wrist.
        WristRow{"BodiesBetweenTheJoints",
                 "frame\npart=x,y\nlien=BATI\nrotation=J1,1,z,1,1,0,0,0\n"
                 "rotation=J2,2,y,1,1,100,0,400\nrotation=J3,3,y,1,1,100,0,500.5\n"
                 "rotation=J4,4,x,1,1,300,0,500\ngeom\nrotation=J5,5,y,1,1,600,0,500\ngeom\n"
                 "geom\nrotation=J6,6,x,1,1,700,0,500\ngeom\ntool=x,800,0,500\n",
                 {-101, 4, 5, 1, 2},
                 4},
        // Three lines meet when three offsets vanish; each of them alone undoes the joint.
        WristRow{"TwoJointsAndTool", twoJoints("0,0,100", "x,300,0,100"), {-101, -1, 5, -1, -1}, 1},
        WristRow{"SecondLineBesideTheFirst",
                 twoJoints("50,0,100", "x,300,0,100"),
                 {-101, -1, 5, -1, -1},
                 0},
        WristRow{"ToolMeetsTheSecondLineElsewhere",
                 twoJoints("0,0,100", "x,300,30,100"),
                 {-101, -1, 5, -1, -1},
                 0},
        WristRow{"ToolBesideTheSecondLine",
                 twoJoints("0,0,100", "x,300,0,130"),
                 {-101, -1, 5, -1, -1},
                 0},
        // A joint before the arm's third element is found, but not used.
        WristRow{
            "BallJointAtTheFoot",
            "frame\npart=x,y\nlien=BATI\nrotation=J1,1,z,1,1,0,0,0\nrotation=J2,2,y,1,1,0,0,0\n"
            "rotation=J3,3,x,1,1,0,0,0\ntool=z,50,30,0\n",
            {-101, -1, 5, 1, -1},
            1},
        // Class 3: there is a ball joint, but it is not recorded.
        WristRow{"HeadOfAMillingMachine",
                 "frame\npart=x,y\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\n"
                 "rotation=C,6,z,1,1,5,7,0\nrotation=B,5,y,1,1,5,0,150\ntool=z,5,7,0\n",
                 {-101, -1, 3, 5, 0},
                 6},
        WristRow{"GunEndsABallJointToo",
                 "frame\npart=x,y\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\n"
                 "rotation=C,6,z,1,1,5,7,0\nrotation=B,5,y,1,1,5,0,150\ngun=z,5,7,0\n"
                 "lien=Z\ntool=z,0,0,0\n",
                 {-101, -1, 3, 5, 0},
                 6},
        WristRow{"LinearAxisBetweenIsNoBallJoint",
                 "frame\npart=x,y\nlien=BATI\nrotation=C,6,z,1,1,0,0,0\nrotation=B,5,y,1,1,0,0,0\n"
                 "axis=W,3,z\ntool=z,0,0,-50\n",
                 {-101, -1, 5, 1, -1},
                 0}),
    rowName);

// The first axis has the index 0, the answer for no joint at all: only the centre tells.
TEST_F(LoadingTest, BallJointWithoutNumberStillClearsTheCentre) {
  const KMachine machine =
      load("rotation=P,z,1,1,0,0,0\nrotation=Q,5,y,1,1,0,0,0\ntool=x,300,0,0\n", 1);
  UVec3d centre(7, 8, 9);
  EXPECT_EQ(machine.hasRotule(centre, 1), 0);
  EXPECT_EQ(centre, UVec3d());
  EXPECT_EQ(machine.analysis(1), (Kine{-101, -1, 5, -1, -1}));
}

// --- records

class Records : public LoadingTest {
 protected:
  Records() { SharedRecord::get() = Kine(); }

  KMachine mill() {
    return load("frame\npart\nlien=BATI\naxis=X,x\naxis=Y,y\naxis=Z,z\ntool\n", 2);
  }
};

TEST_F(Records, EmptyRecord) { EXPECT_EQ(Kine(), (Kine{-1, -1, 0, 0, 0})); }

void exitByFreshRecord() {
  const KMachine machine;
  exit(machine.getKine(1) == Kine{-1, -1, 0, 0, 0} && SharedRecord::get() == Kine() ? 0 : 1);
}

TEST_F(Records, ProcessWithoutLookupHasTheEmptyRecord) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process of its own
  EXPECT_EXIT(exitByFreshRecord(), testing::ExitedWithCode(0), "");
}

TEST_F(Records, LookupReturnsTheOneSharedRecord) {
  const KMachine one = mill(), other;
  EXPECT_EQ(&one.getKine(1), &SharedRecord::get());
  EXPECT_EQ(&other.getKine(5), &SharedRecord::get());
  EXPECT_EQ(one.getKine(1), (Kine{-101, -1, 1, 5, 0}));
}

// Deliberate: what is not found is whatever was found last, by any machine.
TEST_F(Records, ToolWithoutRecordGivesTheLastOneFound) {
  const KMachine one = mill(), other;
  const Kine found = one.getKine(1);
  EXPECT_EQ(one.getKine(2), found);
  EXPECT_EQ(one.getKine(0), found);  // no current tool
  EXPECT_EQ(other.getKine(1), found);
}

TEST_F(Records, NumbersBelowOneMeanTheCurrentTool) {
  KMachine machine = mill();
  machine.setCurrentTool(1);
  SharedRecord::get() = Kine();
  EXPECT_EQ(machine.getKine(0).toolIndex, -101);
  SharedRecord::get() = Kine();
  EXPECT_EQ(machine.getKine(-7).toolIndex, -101);
}

TEST_F(Records, LaterRecordOfAToolWins) {
  KMachine machine;
  machine.addKine(2, {-102, 4, 5, 1, 2});
  machine.addKine(2, {-102, -1, 3, 5, 0});
  EXPECT_EQ(machine.getKine(2), (Kine{-102, -1, 3, 5, 0}));
}

TEST_F(Records, AreFoundByTheirOwnToolIndexNotTheNumberGiven) {
  KMachine machine;
  machine.addKine(3, {-102, -1, 2, 5, 0});
  EXPECT_EQ(machine.getKine(2), (Kine{-102, -1, 2, 5, 0}));
  SharedRecord::get() = Kine();
  EXPECT_EQ(machine.getKine(3), Kine());
}

// Deliberate: a number that equals the shared record's tool index replaces that record only.
TEST_F(Records, StoringUnderMinusOneReachesOnlyTheEmptySharedRecord) {
  KMachine machine;
  machine.addKine(-1, {-105, -1, 2, 5, 0});
  EXPECT_EQ(SharedRecord::get(), (Kine{-105, -1, 2, 5, 0}));
  SharedRecord::get() = Kine();
  EXPECT_EQ(machine.getKine(5), Kine());  // nothing was stored
}

TEST_F(Records, StoringUnderAnIndexReachesOnlyTheSharedRecord) {
  KMachine machine = mill();
  machine.setCurrentTool(1);
  machine.addKine(-101, {-101, -1, 4, 5, 0});  // finds the current tool's record: equal
  EXPECT_EQ(SharedRecord::get().kinematicClass, 4);
  EXPECT_EQ(machine.getKine(1).kinematicClass, 1);
  machine.addKine(-102, {-101, -1, 3, 5, 0});  // not equal: appended
  EXPECT_EQ(machine.getKine(1).kinematicClass, 3);
}

TEST_F(Records, StoringRefreshesTheSharedRecordFirst) {
  KMachine machine = mill();
  SharedRecord::get() = Kine();
  machine.addKine(1, {-107, -1, 2, 5, 0});
  EXPECT_EQ(SharedRecord::get(), (Kine{-101, -1, 1, 5, 0}));  // the lookup of tool 1
}

TEST_F(Records, CopiesAndAssignmentsTakeTheRecordsAlong) {
  const KMachine machine = mill();
  const KMachine copy(machine);
  KMachine assigned;
  assigned = machine;
  SharedRecord::get() = Kine();
  EXPECT_EQ(copy.getKine(1), (Kine{-101, -1, 1, 5, 0}));
  SharedRecord::get() = Kine();
  EXPECT_EQ(assigned.getKine(1), (Kine{-101, -1, 1, 5, 0}));
}

/// Gun 1 on X, Y, Z; tool 2 on X, Y, Z and C.
const char* const kGunFirst =
    "frame\npart\nlien=BATI\naxis=X,x\naxis=Y,y\naxis=Z,z\ngun=z,0,0,0\nlien=Z\nrotation=C,z\n"
    "tool=z,0,0,-50\n";

TEST_F(Records, LoadingStoresOneForEveryToolAndGun) {
  const KMachine machine = load(kGunFirst, 2);
  EXPECT_EQ(machine.getKine(1), (Kine{-101, -1, 1, 5, 0}));
  EXPECT_EQ(machine.getKine(2), (Kine{-102, -1, 2, 5, 0}));
}

// Deliberate: guns are not counted by finalise, though they have tool numbers.
TEST_F(Records, FinaliseCoversAsManyNumbersAsThereAreTools) {
  const KMachine loaded = load(kGunFirst, 2);
  KMachine machine;
  for (int rank = 0; rank < loaded.getElemNumber(); ++rank)
    machine.addElem(*loaded.getElemByRank(rank));
  EXPECT_EQ(machine.finalise(), 0);
  trace.claimAll(L"e[");
  SharedRecord::get() = Kine();
  EXPECT_EQ(machine.getKine(2), Kine());
  EXPECT_EQ(machine.getKine(1), (Kine{-101, -1, 1, 5, 0}));
}

// Deliberate: the step is addKine's, so a shared record whose tool index is the number is replaced
// and the tool's own record is not stored.
TEST_F(Records, FinaliseMayReplaceTheSharedRecordInsteadOfStoring) {
  const KMachine loaded = mill();
  KMachine machine;
  for (int rank = 0; rank < loaded.getElemNumber(); ++rank)
    machine.addElem(*loaded.getElemByRank(rank));
  SharedRecord::get() = Kine{1, -1, 0, 0, 0};
  EXPECT_EQ(machine.finalise(), 0);
  trace.claimAll(L"e[");
  EXPECT_EQ(SharedRecord::get(), (Kine{-101, -1, 1, 5, 0}));
  SharedRecord::get() = Kine();
  EXPECT_EQ(machine.getKine(1), Kine());
}

TEST_F(Records, GunsAloneMakeNoMachineButHaveRecords) {
  const KMachine machine =
      load("frame\npart\nlien=BATI\naxis=X,x\naxis=Y,y\naxis=Z,z\ngun=z,0,0,0\n", 2);
  EXPECT_EQ(result, -1);
  EXPECT_EQ(machine.getKine(1), (Kine{-101, -1, 1, 5, 0}));
}

}  // namespace
