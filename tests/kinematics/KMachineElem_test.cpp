#include "kinematics/KMachineElem.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

#include "tests/kinematics/SampleElem.h"
#include "tests/support/TraceCapture.h"

using korvo::test::expectColour;
using korvo::test::expectDefaults;
using korvo::test::expectDHm;
using korvo::test::sampleElem;
using korvo::test::TracedTest;
using zgeo::UVec3d;
using zkin::KMachineElem;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

KMachineElem::KME_TYPE typeOf(int value) { return static_cast<KMachineElem::KME_TYPE>(value); }

KMachineElem elemOf(int type) {
  KMachineElem e;
  e.setElemType(typeOf(type));
  return e;
}

// --- the record

static_assert(std::has_virtual_destructor_v<KMachineElem>);
static_assert(std::is_copy_constructible_v<KMachineElem>);
static_assert(std::is_copy_assignable_v<KMachineElem>);
static_assert(sizeof(KMachineElem::KME_TYPE) == sizeof(int));
static_assert(sizeof(KMachineElem::_sUDHm) == 4 * sizeof(double));

TEST(KMachineElem, TypeHoldsEveryInt) {
  // Types of other values than the named ones are legal, so the enumeration must have the range of
  // an int, which only a stated underlying type gives.
  EXPECT_TRUE((std::is_same_v<std::underlying_type_t<KMachineElem::KME_TYPE>, int>));
}

TEST(KMachineElem, DenavitHartenbergRecordIsAlphaAThetaD) {
  const KMachineElem::_sUDHm h{1, 2, 3, 4};
  expectDHm(h, 1, 2, 3, 4);
}

TEST(KMachineElem, TypeValuesAreFixed) {
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_TYPE_NONE), 0);
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_TYPE_BATI), 1);
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_TYPE_PART), 2);
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_TYPE_TOOL), 3);
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_TYPE_ALIN), 4);
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_TYPE_AROT), 5);
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_TYPE_DGUN), 6);
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_TYPE_GEOM), 7);
}

TEST(KMachineElem, FixedIndices) {
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_BATI), 0);
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_PART), -1);
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_TOOL), -2);
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_GEOM), -3);
  EXPECT_EQ(static_cast<int>(KMachineElem::KMET_NONE), -10);
}

TEST(KMachineElem, NewElementHasDefaults) { expectDefaults(KMachineElem()); }

TEST(KMachineElem, ResetGivesEveryFieldItsDefault) {
  KMachineElem e = sampleElem();
  e.reset();
  expectDefaults(e);
}

TEST(KMachineElem, ConstructorFromLineReadsIt) {
  const KMachineElem e(L"translation=X,-x,xaxis.stl", 2);
  EXPECT_EQ(e.getElemType(), KMachineElem::KMET_TYPE_ALIN);
  EXPECT_EQ(e.getElemName(), L"X");
}

TEST(KMachineElem, ConstructorFromUnknownLineGivesDefaults) {
  expectDefaults(KMachineElem(L"spindle=1,2,3", 2));
}

void expectSample(const KMachineElem& e) {
  expectDHm(e.getDHmRef(), 0.1, 0.2, 0.3, 0.4);
  expectDHm(e.getDHmCur(), 0.5, 0.6, 0.7, 0.8);
  EXPECT_EQ(e.getElemType(), KMachineElem::KMET_TYPE_AROT);
  EXPECT_TRUE(e.getElemAxis() == UVec3d(0, 0.6, 0.8));
  EXPECT_TRUE(e.getElemAxisX() == UVec3d(1, 0, 0));
  EXPECT_TRUE(e.getElemPivot() == UVec3d(10, 20, 30));
  EXPECT_EQ(e.getElemIndex(), 5);
  EXPECT_EQ(e.getValueIndex(), 3);
  EXPECT_EQ(e.getPrevIndex(), 2);
  UVec3d point;
  EXPECT_EQ(e.getHook(point), 4);
  EXPECT_TRUE(point == UVec3d(7, 8, 9));
  EXPECT_EQ(e.getElemName(), L"Head");
  EXPECT_EQ(e.getGeomFile(), L"Head.stl");
  expectColour(e, 11, 12, 13);
  EXPECT_TRUE(e.isInverted());
  EXPECT_EQ(e.getTHELength(), 150);
  EXPECT_TRUE(e.isLocked());
  EXPECT_EQ(e.getElemLaw(), 6);
  EXPECT_TRUE(e.hasMin());
  EXPECT_TRUE(e.hasMax());
  EXPECT_EQ(e.getMin(), -90);
  EXPECT_EQ(e.getMax(), 120);
}

TEST(KMachineElem, SettersStoreWhatGettersGive) { expectSample(sampleElem()); }

TEST(KMachineElem, CopiesCarryEveryField) {
  const KMachineElem original = sampleElem();
  const KMachineElem copied(original);
  KMachineElem assigned;
  assigned = original;
  expectSample(copied);
  expectSample(assigned);
}

TEST(KMachineElem, VectorGettersGiveReferences) {
  KMachineElem e;
  e.getElemAxis().x = 1;
  e.getElemAxisX().y = 2;
  e.getElemPivot().z = 3;
  const KMachineElem& read = e;
  EXPECT_EQ(&read.getElemAxis(), &e.getElemAxis());
  EXPECT_TRUE(read.getElemAxis() == UVec3d(1, 0, 0));
  EXPECT_TRUE(read.getElemAxisX() == UVec3d(0, 2, 0));
  EXPECT_TRUE(read.getElemPivot() == UVec3d(0, 0, 3));
}

TEST(KMachineElem, IndexIsSetFromNumberOrName) {
  KMachineElem e;
  e.setElemIndex(-107);
  EXPECT_EQ(e.getElemIndex(), -107);
  e.setElemIndex(KMachineElem::KMET_GEOM);
  EXPECT_EQ(e.getElemIndex(), -3);
}

TEST(KMachineElem, ColourIsCopiedOutAndIn) {
  KMachineElem e;
  e.setGeomRGB(1, 2, 3);
  int out[3] = {};
  std::as_const(e).getGeomRGB(out);
  EXPECT_EQ(out[0], 1);
  EXPECT_EQ(out[1], 2);
  EXPECT_EQ(out[2], 3);
}

TEST(KMachineElem, ColourGetterOfAConstArraySets) {
  KMachineElem e;
  const int in[3] = {10, 20, 30};
  e.getGeomRGB(in);
  expectColour(e, 10, 20, 30);
}

TEST(KMachineElem, InvertToggles) {
  KMachineElem e;
  e.invert();
  EXPECT_TRUE(e.isInverted());
  e.invert();
  EXPECT_FALSE(e.isInverted());
}

TEST(KMachineElem, LimitsStoreValueAndFlag) {
  KMachineElem e;
  e.setMin(5, false);
  e.setMax(6, true);
  EXPECT_EQ(e.getMin(), 5);
  EXPECT_FALSE(e.hasMin());
  EXPECT_EQ(e.getMax(), 6);
  EXPECT_TRUE(e.hasMax());
  e.setMax(7, false);
  EXPECT_EQ(e.getMax(), 7);
  EXPECT_FALSE(e.hasMax());
}

// --- equality

struct EqualityRow {
  const char* name;
  std::function<void(KMachineElem&)> change;  ///< Applied to one of two equal elements.
  bool equal;
  std::function<void(KMachineElem&)> before = [](KMachineElem&) {};  ///< Applied to both.
};

class KMachineElemEquality : public testing::TestWithParam<EqualityRow> {};

using E = KMachineElem;
INSTANTIATE_TEST_SUITE_P(
    Field, KMachineElemEquality,
    testing::Values(
        EqualityRow{"Nothing", [](E&) {}, true},
        EqualityRow{"Name", [](E& e) { e.setElemName(L"Heat"); }, false},
        EqualityRow{"CaseOfName", [](E& e) { e.setElemName(L"hEAD"); }, true},
        EqualityRow{"CaseOfAccentedName", [](E& e) { e.setElemName(L"T\u00c9TE"); }, true,
                    [](E& e) { e.setElemName(L"t\u00e9te"); }},
        EqualityRow{"LongerName", [](E& e) { e.setElemName(L"Head2"); }, false},
        EqualityRow{"Index", [](E& e) { e.setElemIndex(6); }, false},
        EqualityRow{"PreviousIndex", [](E& e) { e.setPrevIndex(1); }, false},
        EqualityRow{"Type", [](E& e) { e.setElemType(E::KMET_TYPE_ALIN); }, false},
        EqualityRow{"AxisX", [](E& e) { e.getElemAxis().x = 1; }, false},
        EqualityRow{"AxisY", [](E& e) { e.getElemAxis().y = 1; }, false},
        EqualityRow{"AxisZ", [](E& e) { e.getElemAxis().z = 1; }, false},
        EqualityRow{"AxisByOneBit", [](E& e) { e.getElemAxis().z = std::nextafter(0.8, 1.0); },
                    false},
        EqualityRow{"XDirection", [](E& e) { e.setElemAxisX({0, 1, 0}); }, false},
        EqualityRow{"Pivot", [](E& e) { e.setElemPivot({10, 20, 31}); }, false},
        EqualityRow{"ToolLength", [](E& e) { e.setTHELength(std::nextafter(150.0, 200.0)); },
                    false},
        EqualityRow{"Law", [](E& e) { e.setElemLaw(7); }, false},
        EqualityRow{"Lock", [](E& e) { e.setLocked(false); }, false},
        EqualityRow{"HookIndex", [](E& e) { e.setHook(3, {7, 8, 9}); }, false},
        EqualityRow{"HookPoint", [](E& e) { e.setHook(4, {7, 8, 0}); }, false},
        EqualityRow{"HookPointWithoutHook", [](E& e) { e.setHook(-10, {7, 8, 0}); }, false,
                    [](E& e) { e.setHook(-10, {7, 8, 9}); }},
        EqualityRow{"Sense", [](E& e) { e.invert(); }, false},
        EqualityRow{"HasMin", [](E& e) { e.setMin(-90, false); }, false},
        EqualityRow{"SetMin", [](E& e) { e.setMin(-91, true); }, false},
        EqualityRow{"UnsetMin", [](E& e) { e.setMin(-91, false); }, true,
                    [](E& e) { e.setMin(-90, false); }},
        EqualityRow{"HasMax", [](E& e) { e.setMax(120, false); }, false},
        EqualityRow{"SetMax", [](E& e) { e.setMax(121, true); }, false},
        EqualityRow{"UnsetMax", [](E& e) { e.setMax(121, false); }, true,
                    [](E& e) { e.setMax(120, false); }},
        EqualityRow{"MinThatIsNoNumber", [](E&) {}, false, [](E& e) { e.setMin(kNaN, true); }},
        EqualityRow{"GeometryFile", [](E& e) { e.setGeomFile(L"Heat.stl"); }, false},
        EqualityRow{"CaseOfGeometryFile", [](E& e) { e.setGeomFile(L"HEAD.STL"); }, true},
        EqualityRow{"ValueIndex", [](E& e) { e.setValueIndex(9); }, true},
        EqualityRow{"ReferenceParameters", [](E& e) { e.setDHmRef({9, 9, 9, 9}); }, true},
        EqualityRow{"CurrentParameters", [](E& e) { e.setDHmValue(E::_sUDHm{9, 9, 9, 9}); }, true},
        EqualityRow{"Colour", [](E& e) { e.setGeomRGB(9, 9, 9); }, true}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(KMachineElemEquality, IsDecidedByTheField) {
  KMachineElem a = sampleElem();
  GetParam().before(a);
  KMachineElem b = a;
  GetParam().change(b);
  EXPECT_EQ(a == b, GetParam().equal);
  EXPECT_EQ(b == a, GetParam().equal);
}

// --- types

struct TypeRow {
  const char* name;
  int type;
  const wchar_t* typeName;
  bool tool;
  bool active;
  bool axis;
};

class KMachineElemType : public TracedTest, public testing::WithParamInterface<TypeRow> {};
INSTANTIATE_TEST_SUITE_P(
    Type, KMachineElemType,
    testing::Values(TypeRow{"None", 0, L"none", false, false, false},
                    TypeRow{"Frame", 1, L"BATI", false, false, false},
                    TypeRow{"Part", 2, L"PART", false, true, false},
                    TypeRow{"Tool", 3, L"TOOL", true, true, false},
                    TypeRow{"LinearAxis", 4, L"ALin", false, true, true},
                    TypeRow{"RotaryAxis", 5, L"ARot", false, true, true},
                    TypeRow{"DrillGun", 6, L"DGun", true, true, true},
                    TypeRow{"Geometry", 7, L"geom", false, false, false},
                    TypeRow{"FirstUnknown", 8, L"(unknown_8)", false, true, false},
                    TypeRow{"Unknown", 1000, L"(unknown_1000)", false, true, false},
                    TypeRow{"NegativeUnknown", -1, L"(unknown_-1)", false, true, false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(KMachineElemType, HasItsNameAndPredicates) {
  KMachineElem e = elemOf(GetParam().type);
  e.setValueIndex(0);
  EXPECT_EQ(KMachineElem::_typeName(e.getElemType()), GetParam().typeName);
  EXPECT_EQ(KMachineElem::_isTool(e.getElemType()), GetParam().tool);
  EXPECT_EQ(e.isTool(), GetParam().tool);
  EXPECT_EQ(e.isActive(), GetParam().active);
  EXPECT_EQ(e.isAxis(), GetParam().axis);
}

TEST_P(KMachineElemType, AxisWithoutValueIndexIsReportedAndStillAnAxis) {
  KMachineElem e = elemOf(GetParam().type);
  e.setElemName(L"Q");
  EXPECT_EQ(e.isAxis(), GetParam().axis);
  if (!GetParam().axis) return;
  EXPECT_TRUE(trace.claim(std::wstring(L"*** ERROR ***, elem<Q> said to be <") +
                          GetParam().typeName + L"> but value index -1"));
}

TEST_P(KMachineElemType, NegativeValueIndexIsReportedAsItStands) {
  KMachineElem e = elemOf(GetParam().type);
  e.setElemName(L"T\u00eate");
  e.setValueIndex(-7);
  EXPECT_EQ(e.isAxis(), GetParam().axis);
  if (!GetParam().axis) return;
  EXPECT_TRUE(trace.claim(std::wstring(L"*** ERROR ***, elem<T\u00eate> said to be <") +
                          GetParam().typeName + L"> but value index -7"));
}

using KMachineElemTrace = TracedTest;

TEST_F(KMachineElemTrace, EveryGunAsReadIsReported) {
  const KMachineElem gun(L"gun=z,0,0,0", 2);
  EXPECT_TRUE(gun.isAxis());
  EXPECT_TRUE(trace.claim(L"*** ERROR ***, elem<DRILL> said to be <DGun> but value index -1"));
}

// --- indices

struct IndexRow {
  const char* name;
  int index;
  bool axis;
  bool tool;
  bool geometry;
  int toolNumber;
};

class KMachineElemIndex : public testing::TestWithParam<IndexRow> {};
INSTANTIATE_TEST_SUITE_P(
    Index, KMachineElemIndex,
    testing::Values(IndexRow{"Greatest", std::numeric_limits<int>::max(), true, false, false, 0},
                    IndexRow{"FirstAxis", 1, true, false, false, 0},
                    IndexRow{"Frame", 0, false, false, false, 0},
                    IndexRow{"Part", -1, false, false, false, 0},
                    IndexRow{"ToolAsRead", -2, false, false, false, 0},
                    IndexRow{"GeometryAsRead", -3, false, false, false, 0},
                    IndexRow{"Unset", -10, false, false, false, 0},
                    IndexRow{"BeforeTheTools", -100, false, false, false, 0},
                    IndexRow{"FirstTool", -101, false, true, false, 1},
                    IndexRow{"MiddleTool", -142, false, true, false, 42},
                    IndexRow{"LastTool", -200, false, true, false, 100},
                    IndexRow{"FirstGeometry", -201, false, false, true, 0},
                    IndexRow{"Least", std::numeric_limits<int>::min(), false, false, true, 0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(KMachineElemIndex, SaysWhatItNumbers) {
  EXPECT_EQ(KMachineElem::_isIndexAxis(GetParam().index), GetParam().axis);
  EXPECT_EQ(KMachineElem::_isIndexTool(GetParam().index), GetParam().tool);
  EXPECT_EQ(KMachineElem::_isIndexGeom(GetParam().index), GetParam().geometry);
  EXPECT_EQ(KMachineElem::_getIndexTool(GetParam().index), GetParam().toolNumber);
}

TEST(KMachineElemToolIndex, CountsDownFromMinusHundredUnchecked) {
  EXPECT_EQ(KMachineElem::_getToolIndex(1), -101);
  EXPECT_EQ(KMachineElem::_getToolIndex(100), -200);
  EXPECT_EQ(KMachineElem::_getToolIndex(0), -100);
  EXPECT_EQ(KMachineElem::_getToolIndex(101), -201);
  EXPECT_EQ(KMachineElem::_getToolIndex(-5), -95);
  constexpr std::int64_t kTurn = std::int64_t{1} << 32;  // past the range of int it wraps around
  constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();
  EXPECT_EQ(KMachineElem::_getToolIndex(kMost), -100 - std::int64_t{kMost} + kTurn);
  EXPECT_EQ(KMachineElem::_getToolIndex(kLeast), -100 - std::int64_t{kLeast});
}

TEST(KMachineElemToolIndex, ComesBackForEveryToolNumber) {
  for (int n = 1; n <= 100; ++n) {
    EXPECT_EQ(KMachineElem::_getIndexTool(KMachineElem::_getToolIndex(n)), n);
  }
}

}  // namespace
