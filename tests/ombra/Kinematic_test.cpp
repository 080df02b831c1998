#include "platform/ombra/Kinematic.h"

#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/ombra/Machines.h"

namespace korvo::test {
namespace {

using Ombra::Kin::Entity;
using Ombra::Kin::EntityMesh;
using Ombra::Kin::Kinematic;
using Ombra::Kin::kNoRegister;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(OmbraKinematic, NumbersEntitiesFromOne) {
  const Machine machine = headHead();
  const Kinematic& k = machine.GetKinematic();
  EXPECT_EQ(machine.GetEntityNb(), 7);
  EXPECT_EQ(machine.GetRegisterNb(), Register(5));
  EXPECT_EQ(k.GetEntity(EntityId(0)), nullptr);
  EXPECT_EQ(k.GetEntity(EntityId(8)), nullptr);
  EXPECT_EQ(k.GetEntity(EntityId(-1)), nullptr);
  ASSERT_EQ(k.GetListEntity().size(), 7u);
  for (int i = 1; i <= 7; ++i) {
    EXPECT_EQ(k.GetEntity(EntityId(i)), k.GetListEntity()[i - 1]);
    EXPECT_EQ(k.GetEntity(EntityId(i))->GetEntityId(), EntityId(i));
  }
}

TEST(OmbraKinematic, AxesAreFoundByRegister) {
  const Machine machine = headHead();
  const Kinematic& k = machine.GetKinematic();
  const Entity* const c = k.GetEntity(Register(3));
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->GetEntityName(), L"C");
  EXPECT_EQ(c->GetEntityType(), Ombra::Kin::Axis);
  EXPECT_EQ(c->GetEntityLink().kind, 1);
  EXPECT_EQ(c->GetEntityLink().carrier, 3);
  EXPECT_EQ(c->GetEntityLink().entity, 4);
  EXPECT_EQ(c->GetRegister(), Register(3));
  EXPECT_EQ(c->GetDirection(), Vector3D(0, 0, 1));
  EXPECT_EQ(c->GetPivot(), Vector3D());
  EXPECT_EQ(k.GetEntity(Register(0))->GetEntityLink().kind, 0);
  EXPECT_EQ(k.GetEntity(Register(5)), nullptr);
  EXPECT_EQ(k.GetEntity(Register(-1)), nullptr) << "heads and tables have no register";
}

TEST(OmbraKinematic, HeadsAndTablesAreCountedFromZero) {
  Machine machine = headHead();
  Kinematic& k = machine.EditKinematic();
  const EntityId second = k.AddTable(L"PALLET", EntityId(1));
  EXPECT_EQ(k.GetEntityHead(HeadIndex(0))->GetEntityName(), L"HEAD");
  EXPECT_EQ(k.GetEntityHead(HeadIndex(1)), nullptr);
  EXPECT_EQ(k.GetEntityHead(HeadIndex(-1)), nullptr);
  EXPECT_EQ(k.GetEntityTable(TableIndex(0))->GetEntityName(), L"TABLE");
  EXPECT_EQ(k.GetEntityTable(TableIndex(1))->GetEntityId(), second);
  EXPECT_EQ(k.GetEntityTable(TableIndex(0))->GetEntityType(), Ombra::Kin::Table);
  EXPECT_EQ(k.GetEntityTable(TableIndex(0))->GetRegister(), kNoRegister);
  EXPECT_EQ(k.GetEntityHead(HeadIndex(0))->GetEntityType(), Ombra::Kin::Head);
  EXPECT_EQ(k.GetEntityHead(HeadIndex(0))->GetEntityLink().kind, 2);
}

struct Refused {
  const char* name;
  AxisDefinition axis;
  int carrier;
};

class RefusedAxis : public testing::TestWithParam<Refused> {};

TEST_P(RefusedAxis, IsNotAdded) {
  Machine machine = headHead();
  EXPECT_EQ(machine.EditKinematic().AddAxis(GetParam().axis, EntityId(GetParam().carrier)),
            EntityId(0));
  EXPECT_EQ(machine.GetEntityNb(), 7);
  EXPECT_EQ(machine.GetRegisterNb(), Register(5));
}

INSTANTIATE_TEST_SUITE_P(
    OmbraKinematic, RefusedAxis,
    testing::Values(Refused{"DirectionNotFinite", rotary(L"B", 5, {0, kNan, 0}), 0},
                    Refused{"PivotNotFinite", rotary(L"B", 5, {0, 1, 0}, {kNan, 0, 0}), 0},
                    Refused{"RegisterBelowNone", rotary(L"B", -2, {0, 1, 0}), 0},
                    Refused{"RegisterBeyondTheLast",
                            rotary(L"B", Kinematic::kMostRegisters, {0, 1, 0}), 0},
                    Refused{"RegisterTaken", rotary(L"B", 4, {0, 1, 0}), 0},
                    Refused{"NoSuchCarrier", rotary(L"B", 5, {0, 1, 0}), 8}),
    [](const auto& row) { return row.param.name; });

TEST(OmbraKinematic, HeadsAndTablesNeedACarrierThatIsThere) {
  Machine machine = headHead();
  EXPECT_EQ(machine.EditKinematic().AddHead(L"H", Matrix43(), EntityId(9)), EntityId(0));
  EXPECT_EQ(machine.EditKinematic().AddTable(L"T", EntityId(-1)), EntityId(0));
  EXPECT_EQ(machine.GetEntityNb(), 7);
}

TEST(OmbraKinematic, AxesWithoutARegisterMayBeMany) {
  Kinematic k;
  EXPECT_EQ(k.AddAxis(rotary(L"R", -1, {0, 0, 1})), EntityId(1));
  EXPECT_EQ(k.AddAxis(rotary(L"S", -1, {0, 0, 1})), EntityId(2));
  EXPECT_EQ(k.GetRegisterNb(), Register(0));
}

TEST(OmbraKinematic, RegistersCountUpToTheLargest) {
  Kinematic k;
  k.AddAxis(linear(L"X", 4, {1, 0, 0}));
  EXPECT_EQ(k.GetRegisterNb(), Register(5));
  k.AddAxis(linear(L"Y", 2, {0, 1, 0}));
  EXPECT_EQ(k.GetRegisterNb(), Register(5));
}

TEST(OmbraKinematic, RemovedEntitiesLeaveAGap) {
  Machine machine = headHead();
  Kinematic& k = machine.EditKinematic();
  EXPECT_FALSE(k.RemoveEntity(EntityId(5))) << "A carries the head";
  EXPECT_TRUE(k.RemoveEntity(EntityId(6)));
  EXPECT_FALSE(k.RemoveEntity(EntityId(6)));
  EXPECT_TRUE(k.RemoveEntity(EntityId(5)));
  EXPECT_FALSE(k.RemoveEntity(EntityId(0)));
  EXPECT_EQ(machine.GetEntityNb(), 7);
  EXPECT_EQ(k.GetEntity(EntityId(5)), nullptr);
  EXPECT_EQ(k.GetListEntity()[4], nullptr);
  EXPECT_EQ(k.GetEntity(Register(4)), nullptr);
  EXPECT_EQ(machine.GetRegisterNb(), Register(5));
  EXPECT_EQ(k.AddTable(L"T"), EntityId(8));
}

TEST(OmbraKinematic, LinksNeverMakeACircle) {
  Machine machine = headHead();
  Kinematic& k = machine.EditKinematic();
  EXPECT_FALSE(k.LinkEntity(EntityId(1), EntityId(1)));
  EXPECT_FALSE(k.LinkEntity(EntityId(1), EntityId(6)));
  EXPECT_FALSE(k.LinkEntity(EntityId(9), EntityId(1)));
  EXPECT_FALSE(k.LinkEntity(EntityId(1), EntityId(9)));
  EXPECT_EQ(k.GetEntity(EntityId(1))->GetEntityLink().carrier, 0);
  EXPECT_TRUE(k.LinkEntity(EntityId(7), EntityId(1)));
  EXPECT_TRUE(k.LinkEntity(EntityId(4), EntityId(0)));
  EXPECT_EQ(k.GetEntity(EntityId(4))->GetEntityLink().carrier, 0);
}

TEST(OmbraKinematic, ChainsStartAtTheBase) {
  const Machine machine = headHead();
  std::vector<int> numbers;
  const Kinematic& k = machine.GetKinematic();
  for (const Entity* e : k.GetChain(*k.GetEntity(EntityId(4)))) {
    numbers.push_back(e->GetEntityId().value);
  }
  EXPECT_EQ(numbers, (std::vector<int>{1, 2, 3, 4}));
}

TEST(OmbraEntity, KeepsWhatIsSet) {
  Machine machine = headHead();
  Entity& c = *machine.EditKinematic().EditEntity(EntityId(4));
  EXPECT_FALSE(c.GetCheckRangeAxis());
  c.SetRange(-90, 120);
  EXPECT_TRUE(c.GetCheckRangeAxis());
  EXPECT_EQ(c.GetRangeMin(), -90.0);
  EXPECT_EQ(c.GetRangeMax(), 120.0);
  c.ClearRange();
  EXPECT_FALSE(c.GetCheckRangeAxis());

  EXPECT_EQ(c.GetEntityMesh(), nullptr);
  c.SetEntityMesh(EntityMesh());
  ASSERT_NE(c.GetEntityMesh(), nullptr);
  EXPECT_EQ(c.GetEntityMesh()->GetMeshNb(), 0);
  c.ClearEntityMesh();
  EXPECT_EQ(c.GetEntityMesh(), nullptr);

  c.SetEntityName(L"C2");
  EXPECT_EQ(c.GetEntityName(), L"C2");
  EXPECT_EQ(machine.EditKinematic().EditEntity(EntityId(0)), nullptr);
}

TEST(OmbraMachine, CopiesAreDeep) {
  Machine machine = headHead();
  EntityMesh mesh;
  mesh.AddMesh({}, {}, {1, 2, 3, 1});
  machine.EditKinematic().EditEntity(EntityId(7))->SetEntityMesh(mesh);
  machine.EditKinematic().RemoveEntity(EntityId(6));
  const Machine copy(machine);
  Machine assigned(L"other");
  assigned = machine;
  machine.EditKinematic().EditEntity(EntityId(7))->SetEntityName(L"gone");
  machine.SetMachineName(L"gone");

  for (const Machine* m : {&copy, static_cast<const Machine*>(&assigned)}) {
    const Entity* const table = m->GetKinematic().GetEntity(EntityId(7));
    EXPECT_EQ(m->GetMachineName(), L"fork");
    EXPECT_EQ(m->GetRegisterNb(), Register(5));
    EXPECT_EQ(m->GetKinematic().GetEntity(EntityId(6)), nullptr);
    EXPECT_EQ(table->GetEntityName(), L"TABLE");
    EXPECT_EQ(table->GetEntityMesh()->GetMesh(0)->points[1], 2.0);
    EXPECT_EQ(m->GetKinematic().GetListEntity()[6], table);
  }
}

}  // namespace
}  // namespace korvo::test
