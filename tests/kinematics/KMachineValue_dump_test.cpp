#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "kinematics/KMachineValue.h"
#include "tests/kinematics/Positions.h"
#include "tests/support/TraceCapture.h"

using korvo::test::newPosition;
using korvo::test::TracedTest;
using korvo::test::valueOf;
using testing::ElementsAre;
using zgeo::UTools;
using zkin::KMachineValue;
using zkin::KMachineValueBase;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct DumpRow {
  const char* name;
  const wchar_t* label;
  std::vector<double> values;
  const wchar_t* line;
};

class KMachineValueDump : public TracedTest, public testing::WithParamInterface<DumpRow> {};
INSTANTIATE_TEST_SUITE_P(
    Positions, KMachineValueDump,
    testing::Values(
        DumpRow{"ThreeValues",
                L"p",
                {10, -2.5, 0},
                L"KMV<3> (p) [    +10.000 |     -2.500 |     +0.000 ]"},
        DumpRow{"OneValue", L"start", {1}, L"KMV<1> (start) [     +1.000 ]"},
        DumpRow{"TwelveValues",
                L"all",
                {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
                L"KMV<12> (all) [     +1.000 |     +2.000 |     +3.000 |     +4.000 |     +5.000"
                L" |     +6.000 |     +7.000 |     +8.000 |     +9.000 |    +10.000 |    +11.000"
                L" |    +12.000 ]"},
        DumpRow{
            "ThreeDecimals", L"p", {0.0625, -0.9996}, L"KMV<2> (p) [     +0.062 |     -1.000 ]"},
        DumpRow{"WiderThanTen", L"p", {-1234567.25}, L"KMV<1> (p) [ -1234567.250 ]"},
        DumpRow{"Infinity", L"p", {kInf, -kInf}, L"KMV<2> (p) [       +inf |       -inf ]"},
        DumpRow{"NotANumber", L"p", {kNan, 1}, L"KMV<2> (p) [       +nan |     +1.000 ]"},
        DumpRow{"EmptyName", L"", {0}, L"KMV<1> () [     +0.000 ]"},
        DumpRow{
            "WideName", L"d\u00e9part \u20ac", {0}, L"KMV<1> (d\u00e9part \u20ac) [     +0.000 ]"},
        DumpRow{"NameWithConversion", L"%d", {0}, L"KMV<1> (%d) [     +0.000 ]"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(KMachineValueDump, WritesOneLine) {
  newPosition(GetParam().values)->dump(GetParam().label, false);
  EXPECT_THAT(trace.lines(), ElementsAre(GetParam().line));
  trace.claimAll();
}

using KMachineValueTrace = TracedTest;

TEST_F(KMachineValueTrace, KeptLineStaysOpenForTheCaller) {
  valueOf({1, 2}).dump(L"p", true);
  EXPECT_TRUE(trace.lines().empty());
  UTools::_traceTS(L" -> ");
  valueOf({3}).dump(L"q", false);
  EXPECT_TRUE(trace.claim(L"KMV<2> (p) [     +1.000 |     +2.000 ] -> KMV<1> (q) [     +3.000 ]"));
}

TEST_F(KMachineValueTrace, OperationsWriteNothing) {
  KMachineValue<3> value = valueOf({1, 2, 3});
  value += valueOf({1});
  value -= valueOf({1});
  value[99] = 7;
  const KMachineValue<4> other = valueOf({1, 2, 3, 4});
  value.set(static_cast<const KMachineValueBase&>(other));
  EXPECT_FALSE(value == std::as_const(other));
  value.reset();
  EXPECT_TRUE(trace.lines().empty());
}

TEST(KMachineValueWithoutSink, DumpEndsALineThatWasOpenBefore) {
  {
    korvo::test::TraceCapture trace;
    valueOf({1}).dump(L"open", true);
  }
  valueOf({2}).dump(L"end", false);
  korvo::test::TraceCapture trace;
  UTools::_trace(L"next");
  EXPECT_TRUE(trace.claim(L"next"));
}

TEST(KMachineValueWithoutSink, KeptDumpLeavesALineOpen) {
  {
    korvo::test::TraceCapture trace;
    valueOf({1}).dump(L"open", true);
  }
  valueOf({2}).dump(L"unheard", true);
  korvo::test::TraceCapture trace;
  UTools::_trace(L" next");
  EXPECT_TRUE(trace.claim(L"KMV<1> (open) [     +1.000 ] next"));
}

TEST(KMachineValueWithoutSink, DumpDoesNothing) {
  valueOf({1, 2}).dump(L"p", true);
  valueOf({1, 2}).dump(L"p", false);
  korvo::test::TraceCapture trace;
  UTools::_traceTF();
  EXPECT_TRUE(trace.claim(L""));
}

}  // namespace
