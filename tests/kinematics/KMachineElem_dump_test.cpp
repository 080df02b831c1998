#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>

#include "kinematics/KMachine.h"
#include "kinematics/KMachineElem.h"
#include "tests/support/TraceCapture.h"

using korvo::test::TracedTest;
using testing::ElementsAre;
using zkin::KMachineElem;

namespace {

using E = KMachineElem;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// An element with all that a dump can show.
KMachineElem elemOf(int type) {
  KMachineElem e;
  e.setElemType(static_cast<KMachineElem::KME_TYPE>(type));
  e.setElemName(L"N");
  e.setElemIndex(3);
  e.setPrevIndex(-1);
  e.setElemAxis({0, 0, 1});
  e.setElemAxisX({1, 0, 0});
  e.setElemPivot({100, -20.5, 0.125});
  e.setGeomFile(L"n.stl");
  e.setMin(-500, true);
  e.setMax(12345.678, false);
  return e;
}

void change(KMachineElem&) {}

struct DumpRow {
  const char* name;
  int type;
  const wchar_t* line;
  std::function<void(KMachineElem&)> before = change;
};

class KMachineElemDump : public TracedTest, public testing::WithParamInterface<DumpRow> {};

INSTANTIATE_TEST_SUITE_P(
    Type, KMachineElemDump,
    testing::Values(DumpRow{"Frame", 1, L"pre_BATI,     N (i:   3, p:  -1) <n.stl>"},
                    DumpRow{"Part", 2,
                            L"pre_PART,     N (i:   3, p:  -1) <n.stl>"
                            L"  pos: ( 100.00 ;  -20.50 ;    0.12)"
                            L" vZ: (   0.00 ;    0.00 ;    1.00)"
                            L" vX: (   1.00 ;    0.00 ;    0.00)"},
                    DumpRow{"Tool", 3,
                            L"pre_TOOL,     N (i:   3, p:  -1) <n.stl>"
                            L"  pos: ( 100.00 ;  -20.50 ;    0.12)"},
                    DumpRow{"LinearAxis", 4,
                            L"pre_LIN,      N (i:   3, p:  -1) <n.stl>"
                            L"  dir: (   0.00 ;    0.00 ;    1.00) "
                            L"  min: -500.00 SET ; max: 12345.68 unset"},
                    DumpRow{"RotaryAxis", 5,
                            L"pre_ROT,      N (i:   3, p:  -1) <n.stl>"
                            L"  axe: (   0.00 ;    0.00 ;    1.00)"
                            L" pos: ( 100.00 ;  -20.50 ;    0.12)"},
                    DumpRow{"DrillGun", 6,
                            L"pre_GUN,      N (i:   3, p:  -1) <n.stl>"
                            L"  nez: ( 100.00 ;  -20.50 ;    0.12)"
                            L"  min: -500.00 SET ; max: 12345.68 unset"},
                    DumpRow{"Geometry", 7, L"pre_GEOM,     N (i:   3, p:  -1) <n.stl>"},
                    DumpRow{"None", 0, L"pre_ ???      N (i:   3, p:  -1) <n.stl>"},
                    DumpRow{"Unknown", 99, L"pre_ ???      N (i:   3, p:  -1) <n.stl>"}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Detail, KMachineElemDump,
    testing::Values(
        DumpRow{"InvertedAxis", 4,
                L"pre_LIN,      N (i:   3, p:  -1) <n.stl>"
                L"  dir: (   0.00 ;    0.00 ;    1.00) (INV)"
                L"  min: -500.00 SET ; max: 12345.68 unset",
                [](E& e) { e.invert(); }},
        DumpRow{"OtherLimitSet", 4,
                L"pre_LIN,      N (i:   3, p:  -1) <n.stl>"
                L"  dir: (   0.00 ;    0.00 ;    1.00) "
                L"  min:    0.00 unset ; max:    7.50 SET",
                [](E& e) { e.setMin(0, false), e.setMax(7.5, true); }},
        DumpRow{"InvertedRotaryAxisDoesNotSaySo", 5,
                L"pre_ROT,      N (i:   3, p:  -1) <n.stl>"
                L"  axe: (   0.00 ;    0.00 ;    1.00)"
                L" pos: ( 100.00 ;  -20.50 ;    0.12)",
                [](E& e) { e.invert(); }},
        DumpRow{"NoGeometryFile", 1, L"pre_BATI,     N (i:   3, p:  -1) <>",
                [](E& e) { e.setGeomFile(L""); }},
        DumpRow{"LongName", 1, L"pre_BATI, LongName (i:   3, p:  -1) <n.stl>",
                [](E& e) { e.setElemName(L"LongName"); }},
        DumpRow{"WideIndices", 1, L"pre_BATI,     N (i:-12345, p:12345) <n.stl>",
                [](E& e) { e.setElemIndex(-12345), e.setPrevIndex(12345); }},
        DumpRow{"Hook", 1,
                L"pre_BATI,     N (i:   3, p:  -1) <n.stl> hook=4 (1.000, 2.500, -3.000)",
                [](E& e) { e.setHook(4, {1, 2.5, -3}); }},
        DumpRow{"HookToTheFrame", 7,
                L"pre_GEOM,     N (i:   3, p:  -1) <n.stl> hook=0 (0.000, 0.000, 0.000)",
                [](E& e) { e.setHook(0, {0, 0, 0}); }},
        DumpRow{"HookAfterTheLimits", 6,
                L"pre_GUN,      N (i:   3, p:  -1) <n.stl>"
                L"  nez: ( 100.00 ;  -20.50 ;    0.12)"
                L"  min: -500.00 SET ; max: 12345.68 unset hook=-101 (0.000, 0.000, 1.000)",
                [](E& e) { e.setHook(-101, {0, 0, 1}); }},
        DumpRow{"PointWithoutHook", 1, L"pre_BATI,     N (i:   3, p:  -1) <n.stl>",
                [](E& e) { e.setHook(-10, {1, 2, 3}); }},
        DumpRow{"NotANumber", 4,
                L"pre_LIN,      N (i:   3, p:  -1) <n.stl>"
                L"  dir: (    nan ;     inf ;    -inf) "
                L"  min:     nan SET ; max: 12345.68 unset",
                [](E& e) { e.setElemAxis({kNan, kInf, -kInf}), e.setMin(kNan, true); }},
        DumpRow{"WideText", 1, L"pre_BATI, B\u00e2ti\u20ac (i:   3, p:  -1) <%s.stl>",
                [](E& e) { e.setElemName(L"B\u00e2ti\u20ac"), e.setGeomFile(L"%s.stl"); }}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(KMachineElemDump, IsOneLine) {
  KMachineElem e = elemOf(GetParam().type);
  GetParam().before(e);
  e.dump(L"pre");
  EXPECT_THAT(trace.lines(), ElementsAre(GetParam().line));
  trace.claimAll();
}

TEST_P(KMachineElemDump, EndsItsLine) {
  elemOf(GetParam().type).dump(L"a");
  elemOf(GetParam().type).dump(L"");
  ASSERT_EQ(trace.lines().size(), 2u);
  EXPECT_EQ(trace.lines()[0].substr(0, 2), L"a_");
  EXPECT_EQ(trace.lines()[1].substr(0, 1), L"_");
  trace.claimAll();
}

/// What is left of a line that is opened with a sink, while `trace` does without one what traces.
template <class Trace>
std::vector<std::wstring> linesAfter(const Trace& doTrace) {
  {
    korvo::test::TraceCapture trace;
    zgeo::UTools::_traceTS(L"open ");
  }
  doTrace();
  korvo::test::TraceCapture trace;
  zgeo::UTools::_trace(L"next");
  std::vector<std::wstring> lines = trace.lines();
  trace.claimAll();
  return lines;
}

TEST(KMachineWithoutSink, DumpsEndALineThatWasOpenBefore) {
  const zkin::KMachine machine;
  const zkin::KMachineValue<1> value;
  EXPECT_THAT(linesAfter([&] { machine.dump(L"label"); }), ElementsAre(L"next"));
  EXPECT_THAT(linesAfter([&] { machine.dump(value, false); }), ElementsAre(L"next"));
  EXPECT_THAT(linesAfter([&] { machine.dump(value, true); }), ElementsAre(L"open next"));
}

TEST(KMachineElemWithoutSink, TracesEndALineThatWasOpenBefore) {
  EXPECT_THAT(linesAfter([] {}), ElementsAre(L"open next"));
  EXPECT_THAT(linesAfter([] { elemOf(5).dump(L"pre"); }), ElementsAre(L"next"));
  EXPECT_THAT(linesAfter([] { elemOf(6).isAxis(); }), ElementsAre(L"next"));
  EXPECT_THAT(linesAfter([] { elemOf(3).isAxis(); }), ElementsAre(L"open next"));
}

}  // namespace
