#include "adapter/machineFromDefinition.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/adapter/External.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/TempFile.h"

namespace korvo::test {
namespace {

using Ombra::Kin::Entity;
using Ombra::Kin::Kinematic;
using zgeo::UVec3d;
using zkin::Bodies;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::machineFromDefinition;

constexpr double kInfinite = std::numeric_limits<double>::infinity();

constexpr const char* kTrunnion = R"(frame
rotation=A,4,+x,0,0,0,-0.5,60
rotation=C,6,+z,0,0,0,0,0
part=x,y,0,0,0
lien=BATI
axis=X,1,+x
axis=Y,2,+y
axis=Z,3,+z
tool=z,0,0,120
limits=A,-120,30
courseminimum=X,-300
)";

std::unique_ptr<Machine> converted(const KMachine& machine) {
  return machineFromDefinition(machine, Bodies::none);
}

const Entity& entity(const Machine& machine, int number) {
  return *machine.GetKinematic().GetEntity(EntityId(number));
}

int carrierOf(const Machine& machine, int number) {
  return entity(machine, number).GetEntityLink().carrier;
}

TEST(FromDefinition, GivesEveryElementItsEntity) {
  const auto loaded = loadMachine(kTrunnion, 1);
  const auto machine = converted(*loaded);
  ASSERT_NE(machine, nullptr);
  ASSERT_EQ(machine->GetEntityNb(), loaded->getElemNumber());
  for (int rank = 0; rank < loaded->getElemNumber(); ++rank) {
    EXPECT_EQ(entity(*machine, rank + 1).GetEntityName(),
              loaded->getElemByRank(rank)->getElemName());
  }
  EXPECT_EQ(machine->GetMachineName(), loaded->getDataFilePNE());
  EXPECT_EQ(machine->GetRegisterNb(), Register(5));
  EXPECT_EQ(entity(*machine, 1).GetEntityLink().kind, Ombra::Kin::Fixed);
  EXPECT_EQ(entity(*machine, 4).GetEntityType(), Ombra::Kin::Table);
  EXPECT_EQ(entity(*machine, 8).GetEntityType(), Ombra::Kin::Head);
}

TEST(FromDefinition, HangsTheTableOnItsAxesAndThoseOnTheFrame) {
  const auto machine = converted(*loadMachine(kTrunnion, 1));
  EXPECT_EQ(carrierOf(*machine, 1), 0);
  EXPECT_EQ(carrierOf(*machine, 2), 1) << "A on the frame";
  EXPECT_EQ(carrierOf(*machine, 3), 2) << "C on A";
  EXPECT_EQ(carrierOf(*machine, 4), 3) << "the part on C";
  EXPECT_EQ(carrierOf(*machine, 5), 1) << "X on the frame";
  EXPECT_EQ(carrierOf(*machine, 8), 7) << "the tool on Z";
}

TEST(FromDefinition, TurnsTheAxesBelowTheTableRound) {
  const auto machine = converted(*loadMachine(kTrunnion, 1));
  EXPECT_EQ(entity(*machine, 2).GetDirection(), Vector3D(-1, 0, 0));
  EXPECT_EQ(entity(*machine, 3).GetDirection(), Vector3D(0, 0, -1));
  EXPECT_EQ(entity(*machine, 5).GetDirection(), Vector3D(1, 0, 0));
  EXPECT_EQ(entity(*machine, 2).GetEntityLink().kind, Ombra::Kin::Rotary);
  EXPECT_EQ(entity(*machine, 5).GetEntityLink().kind, Ombra::Kin::Linear);
}

TEST(FromDefinition, RegistersAreThePlacesOfPositions) {
  const auto loaded = loadMachine(kTrunnion, 1);
  const auto machine = converted(*loaded);
  for (int rank = 0; rank < loaded->getElemNumber(); ++rank) {
    EXPECT_EQ(entity(*machine, rank + 1).GetRegister().value,
              loaded->getElemByRank(rank)->getValueIndex());
  }
}

TEST(FromDefinition, LimitsAreRangesWithTheirOpenEnds) {
  const auto machine = converted(*loadMachine(kTrunnion, 1));
  EXPECT_TRUE(entity(*machine, 2).GetCheckRangeAxis());
  EXPECT_EQ(entity(*machine, 2).GetRangeMin(), -120.0);
  EXPECT_EQ(entity(*machine, 2).GetRangeMax(), 30.0);
  EXPECT_FALSE(entity(*machine, 3).GetCheckRangeAxis());
  EXPECT_TRUE(entity(*machine, 5).GetCheckRangeAxis());
  EXPECT_EQ(entity(*machine, 5).GetRangeMin(), -300.0);
  EXPECT_EQ(entity(*machine, 5).GetRangeMax(), kInfinite);
}

TEST(FromDefinition, UprightToolsKeepTheMachinesAxes) {
  const auto machine = converted(*loadMachine(kTrunnion, 1));
  EXPECT_EQ(entity(*machine, 8).GetToolFrame(), Matrix43::Translation({0, 0, 120}));
}

struct ToolRow {
  const char* name;
  const char* line;
  Vector3D w;
};

class FromDefinitionTool : public testing::TestWithParam<ToolRow> {};

TEST_P(FromDefinitionTool, HasARightHandedFrameAlongItsAxis) {
  const std::string text =
      std::string("frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,+x\n") + GetParam().line + "\n";
  const auto machine = converted(*loadMachine(text, 1));
  const Matrix43 frame = entity(*machine, 4).GetToolFrame();
  EXPECT_THAT(frame.GetW(), NearPoint(GetParam().w, 1e-15));
  EXPECT_NEAR(frame.GetU() * frame.GetU(), 1, 1e-14);
  EXPECT_NEAR(frame.GetU() * frame.GetW(), 0, 1e-15);
  EXPECT_THAT(frame.GetU() ^ frame.GetV(), NearPoint(GetParam().w, 1e-14));
  EXPECT_EQ(frame.GetTrans(), Vector3D(1, 2, 3));
}

INSTANTIATE_TEST_SUITE_P(Tools, FromDefinitionTool,
                         testing::Values(ToolRow{"Down", "tool=-z,1,2,3", {0, 0, -1}},
                                         ToolRow{"Level", "tool=-x,1,2,3", {-1, 0, 0}},
                                         ToolRow{"Along", "tool=y,1,2,3", {0, 1, 0}},
                                         ToolRow{"Oblique", "tool=0,3,4,1,2,3", {0, 0.6, 0.8}}),
                         [](const auto& row) { return row.param.name; });

TEST(FromDefinition, EveryToolIsAHead) {
  const auto loaded = loadMachine(
      "frame\npart=x,y,0,0,0\nlien=BATI\naxis=Z,1,+z\nrotation=C,2,+z,0,0,0,0,0\n"
      "tool=z,0,0,0\nlien=C\ngun=x,0,0,-96\n",
      1);
  ASSERT_TRUE(loaded->setTHELength(12, 2));
  const auto machine = converted(*loaded);
  const Kinematic& k = machine->GetKinematic();
  EXPECT_EQ(k.GetEntityHead(HeadIndex(0))->GetEntityId(), EntityId(5));
  ASSERT_NE(k.GetEntityHead(HeadIndex(1)), nullptr);
  EXPECT_EQ(k.GetEntityHead(HeadIndex(1))->GetToolFrame().GetTrans(), Vector3D(12, 0, -96))
      << "pushed out by its length";
  EXPECT_EQ(k.GetEntityHead(HeadIndex(2)), nullptr);
}

TEST(FromDefinition, WhatAGunPushesStartsPushed) {
  // The second tool hangs on the gun, which slides it by its length.
  const auto loaded = loadMachine(
      "frame\npart=x,y,0,0,0\nlien=BATI\naxis=Z,1,+z\ngun=x,0,0,0\nrotation=C,2,+z,0,0,5,0,0\n"
      "tool=z,0,0,100\n",
      1);
  ASSERT_TRUE(loaded->setTHELength(12, 1));
  const auto machine = converted(*loaded);
  const Vector3D pivot = entity(*machine, 5).GetPivot();
  EXPECT_EQ(Vector3D(pivot.x, pivot.y, 0), Vector3D(17, 0, 0)) << "any point of its line";
  EXPECT_EQ(entity(*machine, 6).GetToolFrame().GetTrans(), Vector3D(12, 0, 100));
}

TEST(FromDefinition, WhatHangsOnTheTablesSideStandsOnItsCarrier) {
  // The cover hangs on A by a link after the part: the definition moves it by the motions from the
  // part to A, which is where the frame is.
  const auto loaded = loadMachine(std::string(kTrunnion) + "lien=A\ngeometry=cover.stl\n", 1);
  const auto machine = converted(*loaded);
  EXPECT_EQ(entity(*machine, 9).GetEntityLink().kind, Ombra::Kin::Fixed);
  EXPECT_EQ(carrierOf(*machine, 9), 1);
  const auto onC = loadMachine(std::string(kTrunnion) + "lien=C\ngeometry=cover.stl\n", 1);
  EXPECT_EQ(carrierOf(*converted(*onC), 9), 2);
}

// --- machines built in memory

KMachineElem element(KMachineElem::KME_TYPE type, int index, int previous, const UVec3d& axis) {
  KMachineElem e;
  e.setElemType(type);
  e.setElemIndex(index);
  e.setPrevIndex(previous);
  e.setElemAxis(axis);
  return e;
}

TEST(FromDefinition, WithoutAPartAtTheRootTheTableIsTheRootsFrame) {
  KMachine loaded;  // the frame is the root, the part hangs on X
  loaded.addElem(element(KMachineElem::KMET_TYPE_BATI, 0, -10, {}));
  loaded.addElem(element(KMachineElem::KMET_TYPE_ALIN, 1, 0, {1, 0, 0}));
  loaded.addElem(element(KMachineElem::KMET_TYPE_PART, -1, 1, {}));
  loaded.addElem(element(KMachineElem::KMET_TYPE_TOOL, -101, 1, {0, 0, 1}));
  ASSERT_EQ(loaded.finalise(), 0);
  const auto machine = converted(loaded);
  ASSERT_NE(machine, nullptr);
  EXPECT_EQ(machine->GetEntityNb(), 5);
  EXPECT_EQ(entity(*machine, 3).GetEntityType(), Ombra::Kin::Axis) << "a body that rides on X";
  EXPECT_EQ(carrierOf(*machine, 3), 2);
  EXPECT_EQ(entity(*machine, 5).GetEntityType(), Ombra::Kin::Table);
  EXPECT_EQ(entity(*machine, 2).GetDirection(), Vector3D(1, 0, 0));
  UVec3d pos, dir;
  Adapter(*machine).getTool(position({25}), pos, dir);
  EXPECT_EQ(pos, UVec3d(25, 0, 0));
}

/// X carries the frame, that Z with the tool and the part; `loose` hangs on nothing.
KMachine frameOnAnAxis() {
  KMachine loaded;
  loaded.addElem(element(KMachineElem::KMET_TYPE_ALIN, 1, -10, {1, 0, 0}));
  loaded.addElem(element(KMachineElem::KMET_TYPE_BATI, 0, 1, {}));
  loaded.addElem(element(KMachineElem::KMET_TYPE_ALIN, 3, 0, {0, 0, 1}));
  loaded.addElem(element(KMachineElem::KMET_TYPE_TOOL, -101, 3, {0, 0, 1}));
  loaded.addElem(element(KMachineElem::KMET_TYPE_PART, -1, 0, {}));
  loaded.addElem(element(KMachineElem::KMET_TYPE_ALIN, 4, -10, {0, 1, 0}));  // loose
  return loaded;
}

TEST(FromDefinition, ARootThatMovesCarriesTheTable) {
  KMachine loaded = frameOnAnAxis();
  ASSERT_EQ(loaded.finalise(), 0);
  const auto machine = converted(loaded);
  ASSERT_NE(machine, nullptr);
  ASSERT_EQ(machine->GetEntityNb(), 7);
  EXPECT_EQ(entity(*machine, 7).GetEntityType(), Ombra::Kin::Table);
  EXPECT_EQ(carrierOf(*machine, 7), 1);
  EXPECT_EQ(carrierOf(*machine, 1), 2) << "X on the frame, turned round";
  EXPECT_EQ(entity(*machine, 1).GetDirection(), Vector3D(-1, 0, 0));
  // X moves the frame, with the tool, against where it starts.
  UVec3d pos, dir;
  ASSERT_TRUE(loaded.getTool(*positionOf(loaded, {10, 0, 0}), pos, dir, 1));
  EXPECT_EQ(pos, UVec3d(10, 0, 0));
  Adapter(*machine).getTool(position({10, 0, 0}), pos, dir);
  EXPECT_EQ(pos, UVec3d(10, 0, 0));
}

TEST(FromDefinition, WhatHangsOnNothingStaysWithTheTableOfARootThatMoves) {
  KMachine loaded = frameOnAnAxis();
  ASSERT_EQ(loaded.finalise(), 0);
  const auto machine = converted(loaded);
  ASSERT_NE(machine, nullptr);
  EXPECT_EQ(carrierOf(*machine, 6), 1) << "as the table";
}

TEST(FromDefinition, WhatHangsOnNothingStaysWithTheRoot) {
  const auto loaded = loadMachine(kTrunnion, 1);
  loaded->getElemByRank(4)->setPrevIndex(-10);  // X and what it carries
  const auto machine = converted(*loaded);
  EXPECT_EQ(carrierOf(*machine, 5), 3) << "it stands on C, as the part does";
}

TEST(FromDefinition, AnAxisOfATakenPlaceStays) {
  KMachine loaded;
  loaded.addElem(element(KMachineElem::KMET_TYPE_BATI, 0, -10, {}));
  loaded.addElem(element(KMachineElem::KMET_TYPE_PART, -1, 0, {}));
  loaded.addElem(element(KMachineElem::KMET_TYPE_ALIN, 1, 0, {1, 0, 0}));
  loaded.addElem(element(KMachineElem::KMET_TYPE_ALIN, 1, 1, {0, 1, 0}));
  loaded.addElem(element(KMachineElem::KMET_TYPE_TOOL, -101, 1, {0, 0, 1}));
  ASSERT_EQ(loaded.finalise(), 0);
  const auto machine = converted(loaded);
  EXPECT_EQ(entity(*machine, 3).GetRegister(), Register(0));
  EXPECT_EQ(entity(*machine, 4).GetRegister(), Ombra::Kin::kNoRegister);
}

TEST(FromDefinition, AnAxisThatIsNotFiniteIsFixed) {
  const auto loaded = loadMachine(kTrunnion, 1);
  loaded->getElemByRank(6)->setElemAxis({std::numeric_limits<double>::quiet_NaN(), 0, 0});
  const auto machine = converted(*loaded);
  EXPECT_EQ(machine->GetEntityNb(), 8);
  EXPECT_EQ(entity(*machine, 7).GetEntityLink().kind, Ombra::Kin::Fixed);
  EXPECT_EQ(carrierOf(*machine, 8), 7);
}

struct Text {
  const char* name;
  const char* text;
};

class FromDefinitionWithoutAxes : public testing::TestWithParam<Text> {};

TEST_P(FromDefinitionWithoutAxes, IsNull) {
  const TempDir folder;
  KMachine machine;
  machine.setDataFilePNE(folder.write("machine.def", GetParam().text).wstring(), 1);
  machine.readDataFile();
  EXPECT_EQ(machine.getAxisNum(), 0);
  EXPECT_EQ(converted(machine), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Machines, FromDefinitionWithoutAxes,
    testing::Values(Text{"Empty", ""}, Text{"NoPart", "frame\naxis=X,1,+x\ntool=z,0,0,0\n"},
                    Text{"NoAxis", "frame\npart=x,y,0,0,0\nlien=BATI\ntool=z,0,0,0\n"}),
    [](const auto& row) { return row.param.name; });

// What is missing is taken from a machine that was loaded whole, and whose axes are numbered.

TEST(FromDefinitionRefusal, OfAMachineWithoutFrame) {
  const auto loaded = loadMachine(kTrunnion, 1);
  ASSERT_NE(converted(*loaded), nullptr);
  loaded->getElemByRank(0)->setElemIndex(50);
  EXPECT_EQ(converted(*loaded), nullptr);
}

TEST(FromDefinitionRefusal, OfAMachineWithoutTool) {
  const auto loaded = loadMachine(kTrunnion, 1);
  ASSERT_NE(converted(*loaded), nullptr);
  loaded->getElemByRank(7)->setElemType(KMachineElem::KMET_TYPE_PART);
  EXPECT_EQ(converted(*loaded), nullptr);
}

TEST(FromDefinitionRefusal, OfMoreThanTwelveAxes) {
  for (const int axes : {12, 13}) {
    KMachine loaded;
    loaded.addElem(element(KMachineElem::KMET_TYPE_BATI, 0, -10, {}));
    loaded.addElem(element(KMachineElem::KMET_TYPE_PART, -1, 0, {}));
    for (int i = 1; i <= axes; ++i) {
      loaded.addElem(element(KMachineElem::KMET_TYPE_ALIN, i, i - 1, {1, 0, 0}));
    }
    loaded.addElem(element(KMachineElem::KMET_TYPE_TOOL, -101, axes, {0, 0, 1}));
    ASSERT_EQ(loaded.finalise(), 0);
    ASSERT_EQ(loaded.getAxisNum(), axes);
    EXPECT_EQ(converted(loaded) != nullptr, axes == 12);
  }
}

}  // namespace
}  // namespace korvo::test
