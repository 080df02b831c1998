// The container: accessors, values, lookups, tools, collision pairs, dumps. Building and chains are
// in KMachine_graph_build_test.cpp.

#include "tests/support/LoadText.h"

#include <utility>

#include "tests/kinematics/KMachine_describe.h"

using korvo::test::LoadingTest;
using korvo::test::noPositionLine;
using zgeo::UMatrix;
using zgeo::UTools;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValue;
using zkin::KMachineValueBase;

namespace {

/// Part, table C, frame, X, Z, two tools and a gun; axis numbers 1, 3, 6.
const char* const kHead =
    "frame\nrotation=C,z,1,1,10,20,0\npart=x,y\nlien=BATI\naxis=X,x\naxis=Z,z\n"
    "tool=z,0,0,50\nlien=Z\ngun=z,30,0,0\nlien=Z\ntool=z,0,0,70\n";

class Machine : public LoadingTest {
 protected:
  KMachine head() {
    const KMachine machine = load(kHead, 2);
    trace.claimAll(L"... ? Unrecognized stuff");
    return machine;
  }
};

// --- accessors

TEST_F(Machine, StartsEmpty) {
  const KMachine machine;
  EXPECT_EQ(machine.getVersion(), 0);
  EXPECT_EQ(machine.getStrategy(), 0);
  EXPECT_EQ(machine.getMode_RTCP(), 0);
  EXPECT_EQ(machine.getAxisNum(), 0);
  EXPECT_EQ(machine.getCurrentTool(), 0);
  EXPECT_EQ(machine.getElemNumber(), 0);
  EXPECT_EQ(machine.getToolNumber(), 0);
  EXPECT_EQ(machine.getDataFilePNE(), L"");
  EXPECT_TRUE(machine.getCollCheck().empty());
  EXPECT_EQ(machine.getLegacyOffset(), UVec3d());
  EXPECT_EQ(machine.getUNI2MAC(), UMatrix());
  EXPECT_EQ(machine.getMAC2UNI(), UMatrix());
  EXPECT_EQ(machine.getRotationPoint(0), nullptr);
  EXPECT_EQ(machine.getAxisElem(1), nullptr);
}

TEST_F(Machine, AccessorsStoreWhatTheyAreGiven) {
  KMachine machine;
  machine.setVersion(2);
  machine.setStrategy(-4);
  machine.setMode_RTCP(9);
  EXPECT_EQ(machine.getVersion(), 2);
  EXPECT_EQ(machine.getStrategy(), -4);
  EXPECT_EQ(machine.getMode_RTCP(), 9);
}

TEST_F(Machine, FrameChangeSetsBothMatrices) {
  KMachine machine;
  machine.setUNI2MAC(UMatrix::_translation({1, 2, 3}));
  EXPECT_EQ(machine.getUNI2MAC(), UMatrix::_translation({1, 2, 3}));
  EXPECT_EQ(machine.getMAC2UNI(), UMatrix::_translation({-1, -2, -3}));
}

// --- values

TEST_F(Machine, NewValueHasTheDimensionOfTheMachine) {
  const KMachine machine = head();
  KMachineValueBase* value = machine.newMachineValue();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->size(), 3);
  for (int i = 0; i < 3; ++i) EXPECT_EQ((*value)[i], 0.0);
  KMachineValueBase::_release(value);
  EXPECT_EQ(value, nullptr);
}

TEST_F(Machine, NewValueTakesWhatBothDimensionsHave) {
  const KMachine machine = head();
  KMachineValue<2> shorter;
  shorter[0] = 5, shorter[1] = 6;
  KMachineValueBase* value = machine.newMachineValue(shorter);
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->size(), 3);
  EXPECT_EQ(machine.axisValues(*value), (std::vector<double>{5, 6, 0}));
  KMachineValueBase::_release(value);
}

TEST_F(Machine, NewValueLeavesOutWhatIsTooMuch) {
  const KMachine machine = head();
  KMachineValue<5> longer;
  for (int i = 0; i < 5; ++i) longer[i] = i + 1;
  KMachineValueBase* value = machine.newMachineValue(longer);
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->size(), 3);
  EXPECT_EQ(machine.axisValues(*value), (std::vector<double>{1, 2, 3}));
  KMachineValueBase::_release(value);
}

TEST_F(Machine, NoAxesNoValue) {
  const KMachine machine;
  EXPECT_EQ(machine.newMachineValue(), nullptr);
  EXPECT_EQ(machine.newMachineValue(KMachineValue<3>()), nullptr);
  EXPECT_EQ(machine.axisValues(std::vector<double>{1, 2, 3}), nullptr);
  EXPECT_TRUE(machine.axisValues(KMachineValue<3>()).empty());
  EXPECT_EQ(trace.claimAll(noPositionLine(0)), 3);
}

TEST_F(Machine, AxisNumbersAddressTheirPlaceInTheValue) {
  const KMachine machine = head();  // places 0, 1, 2 are X, Z, C
  KMachineValue<3> value;
  machine.setAxisVal(value, 1, 10.0);
  machine.setAxisVal(value, 3, 30.0);
  machine.getAxisVal(value, 6) = 60.0;
  EXPECT_EQ(machine.axisValues(value), (std::vector<double>{10, 30, 60}));
  EXPECT_EQ(machine.getAxisVal(std::as_const(value), 1), 10.0);
  EXPECT_EQ(machine.getAxisVal(std::as_const(value), 3), 30.0);
  EXPECT_EQ(machine.getAxisVal(std::as_const(value), 6), 60.0);
}

TEST_F(Machine, AxisNumbersOfNoAxisMeanTheFirstValue) {
  const KMachine machine = head();
  KMachineValue<3> value;
  for (const int number : {2, 4, 5, 7, 1000, 0, -1, -1000}) {
    machine.setAxisVal(value, number, number + 0.5);
    EXPECT_EQ(value[0], number + 0.5);
    EXPECT_EQ(machine.getAxisVal(std::as_const(value), number), number + 0.5);
    EXPECT_EQ(&machine.getAxisVal(value, number), &value[0]);
  }
  EXPECT_EQ(value[1], 0.0);
  EXPECT_EQ(value[2], 0.0);
}

TEST_F(Machine, AxisValuesRoundTrip) {
  const KMachine machine = head();
  KMachineValueBase* value = machine.axisValues(std::vector<double>{1, 2, 3});
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->size(), 3);
  EXPECT_EQ(machine.axisValues(*value), (std::vector<double>{1, 2, 3}));
  KMachineValueBase::_release(value);
}

TEST_F(Machine, MissingAxisValuesAreZeroAndMoreAreIgnored) {
  const KMachine machine = head();
  KMachineValueBase* few = machine.axisValues(std::vector<double>{1});
  KMachineValueBase* none = machine.axisValues(std::vector<double>{});
  KMachineValueBase* many = machine.axisValues(std::vector<double>{1, 2, 3, 4, 5});
  EXPECT_EQ(machine.axisValues(*few), (std::vector<double>{1, 0, 0}));
  EXPECT_EQ(machine.axisValues(*none), (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(machine.axisValues(*many), (std::vector<double>{1, 2, 3}));
  for (KMachineValueBase* value : {few, none, many}) KMachineValueBase::_release(value);
}

TEST_F(Machine, ShortValuesAreReadClamped) {
  const KMachine machine = head();
  KMachineValue<1> value;
  value[0] = 4;
  EXPECT_EQ(machine.axisValues(value), (std::vector<double>{4, 4, 4}));
}

// --- lookups

TEST_F(Machine, RanksFollowTheOrderOfAddition) {
  KMachine machine = head();
  EXPECT_EQ(machine.getElemByRank(0)->getElemName(), L"BATI");
  EXPECT_EQ(machine.getElemByRank(2)->getElemName(), L"PIECE");
  EXPECT_EQ(machine.getElemByRank(7)->getElemIndex(), -103);
  EXPECT_EQ(machine.getElemByRank(8), nullptr);
  EXPECT_EQ(machine.getElemByRank(-1), nullptr);
  EXPECT_EQ(std::as_const(machine).getElemByRank(1000), nullptr);
  EXPECT_EQ(std::as_const(machine).getElemByRank(3), machine.getElemByRank(3));
}

TEST_F(Machine, IndicesFindTheFirstElementOfTheirs) {
  KMachine machine = head();
  EXPECT_EQ(machine.getElemByIndex(0), machine.getElemByRank(0));
  EXPECT_EQ(machine.getElemByIndex(-1), machine.getElemByRank(2));
  EXPECT_EQ(machine.getElemByIndex(-102), machine.getElemByRank(6));
  EXPECT_EQ(machine.getElemByIndex(2), nullptr);
  EXPECT_EQ(std::as_const(machine).getElemByIndex(-104), nullptr);
  machine.getElemByRank(5)->setElemIndex(0);
  EXPECT_EQ(machine.getElemByIndex(0), machine.getElemByRank(0));
  machine.getElemByRank(1)->setElemIndex(-103);
  EXPECT_EQ(machine.getElemByIndex(-103), machine.getElemByRank(1));
}

TEST_F(Machine, StaticLookupsSearchAnyList) {
  std::vector<KMachineElem> list(2);
  list[0].setElemName(L"AXE_B"), list[0].setElemIndex(5);
  list[1].setElemName(L"B"), list[1].setElemIndex(5);
  EXPECT_EQ(KMachine::_getElemByIndex(list, 5), &list[0]);
  EXPECT_EQ(KMachine::_getElemByIndex(list, 4), nullptr);
  EXPECT_EQ(KMachine::_getElemByIndex({}, 5), nullptr);
  EXPECT_EQ(KMachine::_getElemByName(list, L"axe_b", 2), &list[1]);
  EXPECT_EQ(KMachine::_getElemByName(list, L"axe_b", 1), &list[0]);
  EXPECT_EQ(KMachine::_getElemByName(list, nullptr, 1), nullptr);
  EXPECT_EQ(KMachine::_getElemByName({}, L"B", 1), nullptr);
}

struct NameRow {
  const char* name;
  int version;
  const wchar_t* wanted;
  int rank;  ///< of the element found; -1 for none
};

std::ostream& operator<<(std::ostream& out, const NameRow& row) { return out << row.name; }

const auto rowName = [](const auto& row) { return std::string(row.param.name); };

class ElemByName : public testing::TestWithParam<NameRow> {};

TEST_P(ElemByName, FindsTheFirstOfTheName) {
  KMachine machine;
  for (const wchar_t* name : {L"BATI", L"B", L"AXE_C", L"b", L"\u00c9t\u00e9", L""}) {
    machine.addElem(KMachineElem::KMET_TYPE_ALIN)->setElemName(name);
  }
  machine.setVersion(GetParam().version);
  KMachineElem* expected = machine.getElemByRank(GetParam().rank);
  EXPECT_EQ(machine.getElemByName(GetParam().wanted), expected);
  EXPECT_EQ(std::as_const(machine).getElemByName(GetParam().wanted), expected);
  const std::string utf8 = korvo::test::narrow(GetParam().wanted);
  EXPECT_EQ(machine.getElemByName(utf8.c_str()), expected);
  EXPECT_EQ(std::as_const(machine).getElemByName(utf8.c_str()), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Machine, ElemByName,
    testing::Values(NameRow{"Exact", 2, L"B", 1}, NameRow{"LowerCase", 2, L"b", 1},
                    NameRow{"Prefix", 2, L"AXE_B", 1}, NameRow{"LowerCasePrefix", 2, L"axe_b", 1},
                    NameRow{"PrefixInside", 2, L"BAXE_", 1},
                    NameRow{"PrefixTwice", 2, L"AXE_AXE_B", -1},
                    NameRow{"ElementKeepsItsPrefix", 2, L"AXE_C", -1},
                    NameRow{"PrefixTwiceFindsItsPrefix", 2, L"AXE_AXE_C", 2},
                    NameRow{"PrefixOnlyIsTheEmptyName", 2, L"AXE_", 5},
                    NameRow{"Version1WholeName", 1, L"AXE_C", 2},
                    NameRow{"Version1AnyCase", 1, L"axe_c", 2},
                    NameRow{"Version1NoPrefixDropped", 1, L"AXE_B", -1},
                    NameRow{"Version0NoPrefixDropped", 0, L"AXE_B", -1},
                    NameRow{"Accents", 1, L"\u00e9T\u00c9", 4}, NameRow{"Unknown", 2, L"Q", -1},
                    NameRow{"PartOfAName", 2, L"BAT", -1}, NameRow{"Empty", 1, L"", 5}),
    rowName);

TEST_F(Machine, NullNamesFindNothing) {
  KMachine machine = head();
  EXPECT_EQ(machine.getElemByName(static_cast<const wchar_t*>(nullptr)), nullptr);
  EXPECT_EQ(machine.getElemByName(static_cast<const char*>(nullptr)), nullptr);
}

TEST_F(Machine, RankOfAnElementIsFoundByValue) {
  const KMachine machine = head();
  KMachineElem twin = *machine.getElemByRank(4);
  EXPECT_EQ(machine.getElemRank(twin), 4);
  EXPECT_EQ(machine.getElemRank(&twin), 4);
  EXPECT_EQ(machine.getElemRank(machine.getElemByRank(7)), 7);
  twin.setTHELength(1.0);
  EXPECT_EQ(machine.getElemRank(twin), -1);
  EXPECT_EQ(machine.getElemRank(&twin), -1);
  EXPECT_EQ(machine.getElemRank(nullptr), -1);
}

TEST_F(Machine, RankOfEqualElementsIsTheFirst) {
  KMachine machine;
  machine.addElem(KMachineElem::KMET_TYPE_ALIN);
  machine.addElem(KMachineElem::KMET_TYPE_AROT);
  machine.addElem(KMachineElem::KMET_TYPE_AROT);
  EXPECT_EQ(machine.getElemRank(machine.getElemByRank(2)), 1);
}

TEST_F(Machine, PreviousElementLeadsToTheRoot) {
  KMachine machine = head();
  EXPECT_EQ(machine.getPrevElem(machine.getElemByIndex(3)), machine.getElemByIndex(1));
  EXPECT_EQ(machine.getPrevElem(machine.getElemByIndex(1)), machine.getElemByIndex(0));
  EXPECT_EQ(machine.getPrevElem(machine.getElemByIndex(0)), machine.getElemByIndex(6));
  EXPECT_EQ(machine.getPrevElem(machine.getElemByIndex(6)), machine.getElemByIndex(-1));
  EXPECT_EQ(machine.getPrevElem(machine.getElemByIndex(-1)), nullptr);
  EXPECT_EQ(machine.getPrevElem(static_cast<KMachineElem*>(nullptr)), nullptr);
  EXPECT_EQ(std::as_const(machine).getPrevElem(nullptr), nullptr);
}

TEST_F(Machine, AxisElementsFollowTheValueOrder) {
  const KMachine machine = head();
  EXPECT_EQ(machine.getAxisElem(1), machine.getElemByIndex(1));
  EXPECT_EQ(machine.getAxisElem(2), machine.getElemByIndex(3));
  EXPECT_EQ(machine.getAxisElem(3), machine.getElemByIndex(6));
  EXPECT_EQ(machine.getAxisElem(0), nullptr);
  EXPECT_EQ(machine.getAxisElem(4), nullptr);
  EXPECT_EQ(machine.getAxisElem(-1), nullptr);
}

// --- tools

TEST_F(Machine, ToolsAreToolsAndGunsInRankOrder) {
  const KMachine machine = head();
  std::vector<int> indices = {7, 7, 7, 7};
  EXPECT_EQ(machine.getTools(indices), 3);
  EXPECT_EQ(indices, (std::vector<int>{-101, -102, -103}));
  EXPECT_EQ(machine.getToolNumber(), 3);
  EXPECT_EQ(KMachine::_getToolsIndices({}, indices), 0);
  EXPECT_TRUE(indices.empty());
}

TEST_F(Machine, CurrentToolIsUnsetAfterLoading) {
  KMachine machine = head();
  EXPECT_EQ(machine.getCurrentTool(), 0);
  EXPECT_EQ(machine.getToolIndex(0), -100);
  EXPECT_TRUE(machine.getToolChain(false, 0).empty());
  EXPECT_TRUE(machine.getToolChain(true, -5).empty());
}

TEST_F(Machine, CurrentToolIsSetOnlyToAToolThatIsThere) {
  KMachine machine = head();
  machine.setCurrentTool(2);
  EXPECT_EQ(machine.getCurrentTool(), 2);
  for (const int number : {4, 99, 0, -1}) {
    machine.setCurrentTool(number);
    EXPECT_EQ(machine.getCurrentTool(), 2) << number;
  }
  EXPECT_EQ(machine.getToolIndex(0), -102);
  EXPECT_EQ(machine.getToolIndex(-3), -102);
  EXPECT_EQ(machine.getToolIndex(5), -105);
  EXPECT_EQ(machine.getToolChain(false, 0), machine.getToolChain(false, 2));
}

TEST_F(Machine, AnyElementWithAToolsIndexCanBeCurrent) {
  KMachine machine = head();
  machine.getElemByIndex(3)->setElemIndex(-150);
  machine.setCurrentTool(50);
  EXPECT_EQ(machine.getCurrentTool(), 50);
  machine.setCurrentTool(-100);  // the frame: -100 - -100
  EXPECT_EQ(machine.getCurrentTool(), -100);
}

// --- collision pairs

using Pairs = std::vector<std::pair<int, int>>;

TEST_F(Machine, CollisionPairsAreOrderedAndKeptOnce) {
  KMachine machine;
  machine.addElemCollCheck(7, 3);
  machine.addElemCollCheck(7, 3);
  machine.addElemCollCheck(3, 7);
  machine.addElemCollCheck({3, 7});
  machine.addElemCollCheck(std::pair(0, -101));
  EXPECT_EQ(machine.getCollCheck(), (Pairs{{3, 7}, {-101, 0}}));
}

TEST_F(Machine, NoCollisionPairWithItself) {
  KMachine machine;
  machine.addElemCollCheck(3, 3);
  machine.addElemCollCheck(std::pair(0, 0));
  EXPECT_TRUE(machine.getCollCheck().empty());
}

TEST_F(Machine, RemovingCollisionPairsKeepsTheOrder) {
  KMachine machine;
  for (const auto& [a, b] : Pairs{{1, 2}, {1, 3}, {2, 3}, {4, 5}}) machine.addElemCollCheck(a, b);
  machine.delElemCollCheck(3, 1);
  EXPECT_EQ(machine.getCollCheck(), (Pairs{{1, 2}, {2, 3}, {4, 5}}));
  machine.delElemCollCheck(std::pair(2, 1));
  machine.delElemCollCheck(9, 8);
  machine.delElemCollCheck(4, 4);
  EXPECT_EQ(machine.getCollCheck(), (Pairs{{2, 3}, {4, 5}}));
}

TEST_F(Machine, ClearingRemovesPairsOfAnElementOrAll) {
  KMachine machine;
  for (const auto& [a, b] : Pairs{{1, 2}, {1, 3}, {2, 3}, {4, 1}}) machine.addElemCollCheck(a, b);
  machine.clearElemCollCheck(1);
  EXPECT_EQ(machine.getCollCheck(), (Pairs{{2, 3}}));
  machine.clearElemCollCheck(1);
  EXPECT_EQ(machine.getCollCheck().size(), 1u);
  machine.clearCollCheck();
  EXPECT_TRUE(machine.getCollCheck().empty());
}

TEST_F(Machine, PartnersAreListedForElementsThatAreThere) {
  KMachine machine = head();
  for (const auto& [a, b] : Pairs{{7, 3}, {3, -1}, {1, 6}, {3, 0}, {99, 3}}) {
    machine.addElemCollCheck(a, b);
  }
  std::vector<int> partners = {1, 1, 1};
  machine.getElemCollCheck(3, partners);
  EXPECT_EQ(partners, (std::vector<int>{7, -1, 0, 99}));
  machine.getElemCollCheck(6, partners);
  EXPECT_EQ(partners, std::vector<int>{1});
  machine.getElemCollCheck(99, partners);  // named by a pair, but no element
  EXPECT_TRUE(partners.empty());
  partners = {5};
  machine.getElemCollCheck(-103, partners);
  EXPECT_TRUE(partners.empty());
}

TEST_F(Machine, SettingPartnersReplacesThem) {
  KMachine machine;
  for (const auto& [a, b] : Pairs{{1, 2}, {3, 4}, {1, 5}}) machine.addElemCollCheck(a, b);
  machine.setElemCollCheck(1, {6, 1, 0, 6});
  EXPECT_EQ(machine.getCollCheck(), (Pairs{{3, 4}, {1, 6}, {0, 1}}));
  machine.setElemCollCheck(3, {});
  EXPECT_EQ(machine.getCollCheck(), (Pairs{{1, 6}, {0, 1}}));
}

// --- rotation points

TEST_F(Machine, RotationPointsAreNumberedFromZero) {
  const KMachine machine = load("rotationpoint=1,2\nrotationpoint=3\n", 2);
  EXPECT_EQ((*machine.getRotationPoint(0))[1], 2.0);
  EXPECT_EQ((*machine.getRotationPoint(1))[0], 3.0);
  EXPECT_EQ(machine.getRotationPoint(0)->size(), 12);
  EXPECT_EQ(machine.getRotationPoint(2), nullptr);
  EXPECT_EQ(machine.getRotationPoint(-1), nullptr);
}

struct Clearing : KMachine {
  using KMachine::clearRotationPoints;
  explicit Clearing(const KMachine& machine) : KMachine(machine) {}
};

TEST_F(Machine, DerivedMachinesMayClearRotationPoints) {
  Clearing machine(load("rotationpoint=1,2\nrotationpoint=3\n", 2));
  ASSERT_NE(machine.getRotationPoint(1), nullptr);
  machine.clearRotationPoints();
  EXPECT_EQ(machine.getRotationPoint(0), nullptr);
}

// --- dumps

TEST_F(Machine, DumpListsTheElements) {
  KMachine machine;
  machine.setDataFilePNE(std::wstring(L"m.def"), 0);
  machine.addElem(KMachineElem(L"frame", 1));
  machine.addElem(KMachineElem(L"tool=z,1,2,3,t.stl", 1));
  machine.dump(L"before");
  const std::vector<std::wstring> expected = {
      L"--- --- zkin::KMachine <m.def> before", L"0_BATI,  BATI (i:   0, p: -10) <>", L"    |",
      L"1_TOOL, OUTIL (i:  -2, p: -10) <t.stl>  pos: (   1.00 ;    2.00 ;    3.00)", L"--- ---"};
  EXPECT_EQ(trace.lines(), expected);
  trace.claimAll();
}

TEST_F(Machine, DumpOfAnEmptyMachine) {
  KMachine().dump(L"");
  EXPECT_EQ(trace.lines(), (std::vector<std::wstring>{L"--- --- zkin::KMachine <> ", L"--- ---"}));
  trace.claimAll();
}

TEST_F(Machine, DumpOfAPositionNamesTheAxes) {
  const KMachine machine = head();
  KMachineValue<3> value;
  value[0] = 1, value[1] = -2.5, value[2] = 12345.6789;
  machine.dump(value, false);
  EXPECT_TRUE(trace.claim(L"3x_[ X+1.000     | Z-2.500     | C+12345.679 ]"));
}

TEST_F(Machine, DumpOfAPositionMayLeaveTheLineOpen) {
  const KMachine machine = head();
  KMachineValue<3> value;
  machine.dump(value, true);
  EXPECT_TRUE(trace.lines().empty());
  UTools::_trace(L" %s", L"reached");
  EXPECT_TRUE(trace.claim(L"3x_[ X+0.000     | Z+0.000     | C+0.000     ] reached"));
}

TEST_F(Machine, DumpOfAPositionWithoutAxes) {
  KMachine().dump(KMachineValue<3>(), false);
  EXPECT_TRUE(trace.claim(L"0x_[  ]"));
}

}  // namespace
