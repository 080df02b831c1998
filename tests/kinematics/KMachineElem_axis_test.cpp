// Axis lines: the axis name, its number in both versions, and the point of a rotary axis.

#include <gtest/gtest.h>

#include "kinematics/KMachineElem.h"
#include "tests/kinematics/LineRow.h"
#include "tests/kinematics/SampleElem.h"
#include "tests/support/TraceCapture.h"

using korvo::test::expectElem;
using korvo::test::lineName;
using korvo::test::LineRow;
using korvo::test::TracedTest;
using zkin::KMachineElem;
using namespace korvo::test::elemtype;  // kLinear, kRotary

namespace {

class KMachineElemAxisLine : public TracedTest, public testing::WithParamInterface<LineRow> {};

INSTANTIATE_TEST_SUITE_P(
    LinearNameVersion2, KMachineElemAxisLine,
    testing::Values(LineRow{"X", 2, L"axe=X", {kLinear, L"X", 1}},
                    LineRow{"Y", 2, L"axe=Y", {kLinear, L"Y", 2}},
                    LineRow{"Z", 2, L"axe=Z", {kLinear, L"Z", 3}},
                    LineRow{"LowerCase", 2, L"axe=y", {kLinear, L"Y", 2}},
                    LineRow{"Prefix", 2, L"axe=AXE_Z", {kLinear, L"Z", 3}},
                    LineRow{"LowerCasePrefix", 2, L"axe=axe_z", {kLinear, L"Z", 3}},
                    LineRow{"PrefixIsTakenOutAnywhere", 2, L"axe=XAXE_", {kLinear, L"X", 1}},
                    LineRow{"OnlyOnePrefixIsTakenOut", 2, L"axe=AXE_AXE_X", {kLinear, L"AXE_X", 0}},
                    LineRow{"RotaryName", 2, L"axe=A", {kLinear, L"A", 0}},
                    LineRow{"OtherName", 2, L"axe=w", {kLinear, L"W", 0}},
                    LineRow{"LongerName", 2, L"axe=XX", {kLinear, L"XX", 0}},
                    LineRow{"AccentedName", 2, L"axe=t\u00eate", {kLinear, L"T\u00caTE", 0}},
                    LineRow{"OnlyPrefix", 2, L"axe=AXE_", {kLinear, L"", 0}},
                    LineRow{"EmptyName", 2, L"axe=,x", {kLinear, L"", 0, {1, 0, 0}}},
                    LineRow{"NoOperands", 2, L"axe", {kLinear, L"", 0}}),
    lineName);

INSTANTIATE_TEST_SUITE_P(
    RotaryNameVersion2, KMachineElemAxisLine,
    testing::Values(LineRow{"A", 2, L"rotation=A", {kRotary, L"A", 4}},
                    LineRow{"B", 2, L"rotation=B", {kRotary, L"B", 5}},
                    LineRow{"C", 2, L"rotation=C", {kRotary, L"C", 6}},
                    LineRow{"LowerCasePrefix", 2, L"rotation=axe_c", {kRotary, L"C", 6}},
                    LineRow{"LinearName", 2, L"rotation=X", {kRotary, L"X", 0}},
                    LineRow{"OtherName", 2, L"rotation=b2", {kRotary, L"B2", 0}},
                    LineRow{"NoOperands", 2, L"rotation", {kRotary, L"", 0}}),
    lineName);

INSTANTIATE_TEST_SUITE_P(
    LinearVersion2, KMachineElemAxisLine,
    testing::Values(
        LineRow{"WordAndFile",
                2,
                L"translation=X,-x,xaxis.stl",
                {kLinear, L"X", 1, {-1, 0, 0}, {}, {}, L"xaxis.stl", 200, 200, 200}},
        LineRow{"DirectionIsNormalised", 2, L"axe=Z,0,3,4", {kLinear, L"Z", 3, {0, 0.6, 0.8}}},
        LineRow{"NullDirectionStaysNull", 2, L"axe=Z,0,0,0", {kLinear, L"Z", 3}},
        LineRow{"FileAndColour",
                2,
                L"axe=Y,y,y.stl,1,2,3",
                {kLinear, L"Y", 2, {0, 1, 0}, {}, {}, L"y.stl", 1, 2, 3}},
        LineRow{"FileWithoutDirection",
                2,
                L"axe=Y,y.stl",
                {kLinear, L"Y", 2, {}, {}, {}, L"y.stl", 200, 200, 200}},
        // A number behind the name is no axis number here: it starts the direction.
        LineRow{"NoNumberIsRead",
                2,
                L"axe=Y,5,y",
                {kLinear, L"Y", 2, {}, {}, {}, L"5", 200, 200, 200}}),
    lineName);

INSTANTIATE_TEST_SUITE_P(
    LinearVersion1, KMachineElemAxisLine,
    testing::Values(
        LineRow{"NumberBehindTheName", 1, L"axe=X,1,x", {kLinear, L"X", 1, {1, 0, 0}}},
        LineRow{"NameIsKept", 1, L"axe=axe_x,1,x", {kLinear, L"axe_x", 1, {1, 0, 0}}},
        LineRow{"AnyNameAndNumber",
                1,
                L"axe=Slide,17,0,3,4,s.stl,1,2,3",
                {kLinear, L"Slide", 17, {0, 0.6, 0.8}, {}, {}, L"s.stl", 1, 2, 3}},
        LineRow{"WithoutNumber", 1, L"axe=X,-x", {kLinear, L"X", 0, {-1, 0, 0}}},
        LineRow{"NegativeNumber", 1, L"axe=X,-5,x", {kLinear, L"X", -5, {1, 0, 0}}},
        LineRow{"NumberWithText", 1, L"axe=X,7th,x", {kLinear, L"X", 7, {1, 0, 0}}},
        LineRow{"NumberCutAtThePoint", 1, L"axe=X,2.9,x", {kLinear, L"X", 2, {1, 0, 0}}},
        LineRow{"NumberOnly", 1, L"axe=X,3", {kLinear, L"X", 3}},
        LineRow{"EmptyNumber",
                1,
                L"axe=X,,x",
                {kLinear, L"X", 0}},  // the empty operand is no vector, then no file name
        // The first 1 is the axis number; two numbers are no vector, so "0" is the file name.
        LineRow{"VectorWithoutNumber",
                1,
                L"translation=X,1,0,0",
                {kLinear, L"X", 1, {}, {}, {}, L"0", 200, 200, 200}},
        LineRow{"EmptyName", 1, L"axe=,4,x", {kLinear, L"", 4, {1, 0, 0}}},
        LineRow{"NoOperands", 1, L"axe", {kLinear, L"", 0}}),
    lineName);

INSTANTIATE_TEST_SUITE_P(
    OtherVersionsReadAsVersion1, KMachineElemAxisLine,
    testing::Values(
        LineRow{"Version0", 0, L"rotation=AXE_B,5,y", {kRotary, L"AXE_B", 5, {0, 1, 0}}},
        LineRow{"Version3", 3, L"rotation=AXE_B,5,y", {kRotary, L"AXE_B", 5, {0, 1, 0}}},
        LineRow{"NegativeVersion", -2, L"rotation=AXE_B,5,y", {kRotary, L"AXE_B", 5, {0, 1, 0}}},
        LineRow{"FrameOfVersion3",
                3,
                L"bati=frame.stl",
                {kFrame, L"BATI", 0, {}, {}, {}, L"frame.stl", 200, 200, 200}}),
    lineName);

INSTANTIATE_TEST_SUITE_P(
    RotaryPoint, KMachineElemAxisLine,
    testing::Values(
        LineRow{"BehindTwoSkippedNumbers",
                2,
                L"rotation=AXE_B,y,1,1,0,0,100",
                {kRotary, L"B", 5, {0, 1, 0}, {}, {0, 0, 100}}},
        LineRow{"InVersion1",
                1,
                L"rotation=B,5,y,0,0,0,0,100",
                {kRotary, L"B", 5, {0, 1, 0}, {}, {0, 0, 100}}},
        LineRow{"IsNotNormalised",
                2,
                L"rotation=C,0,0,2,1,1,0,3,4",
                {kRotary, L"C", 6, {0, 0, 1}, {}, {0, 3, 4}}},
        LineRow{"AsAWord", 2, L"rotation=C,z,x", {kRotary, L"C", 6, {0, 0, 1}, {}, {1, 0, 0}}},
        LineRow{"BehindOneSkippedNumber",
                2,
                L"rotation=C,z,1,-x",
                {kRotary, L"C", 6, {0, 0, 1}, {}, {-1, 0, 0}}},
        // The two numbers that would belong to the point are skipped; "100" is then the file.
        LineRow{"IsLostWithoutTheNumbers",
                2,
                L"rotation=AXE_B,0,1,0,0,0,100",
                {kRotary, L"B", 5, {0, 1, 0}, {}, {}, L"100", 200, 200, 200}},
        LineRow{"IsLostWithoutTheNumbersBehindAWord",
                1,
                L"rotation=B,y,0,0,100",
                {kRotary, L"B", 0, {0, 1, 0}, {}, {}, L"100", 200, 200, 200}},
        // "0.5" begins like a whole number, so it is skipped like one.
        LineRow{"SkipsFractionsToo",
                2,
                L"rotation=B,y,0.5,0.5,0,0,100",
                {kRotary, L"B", 5, {0, 1, 0}, {}, {0, 0, 100}}},
        // ".5" begins with no digit: nothing is skipped.
        LineRow{"StartsAtAnOperandThatIsNoWholeNumber",
                2,
                L"rotation=B,y,.5,1,2",
                {kRotary, L"B", 5, {0, 1, 0}, {}, {0.5, 1, 2}}},
        LineRow{"StartsAtTheSecondOperandThatIsNoWholeNumber",
                2,
                L"rotation=B,y,9,.5,1,2",
                {kRotary, L"B", 5, {0, 1, 0}, {}, {0.5, 1, 2}}},
        LineRow{"SkipsTwoOnly",
                2,
                L"rotation=B,y,1,2,3,4,5,6",
                {kRotary, L"B", 5, {0, 1, 0}, {}, {3, 4, 5}, L"6", 200, 200, 200}},
        LineRow{"FileBehindThePoint",
                2,
                L"rotation=B,y,1,1,0,0,100,b.stl,1,2,3",
                {kRotary, L"B", 5, {0, 1, 0}, {}, {0, 0, 100}, L"b.stl", 1, 2, 3}},
        LineRow{"FileWithoutPoint",
                2,
                L"rotation=B,y,b.stl",
                {kRotary, L"B", 5, {0, 1, 0}, {}, {}, L"b.stl", 200, 200, 200}},
        LineRow{"FileBehindTheNumbers",
                2,
                L"rotation=B,y,1,1,b.stl,1,2,3",
                {kRotary, L"B", 5, {0, 1, 0}, {}, {}, L"b.stl", 1, 2, 3}}),
    lineName);

TEST_P(KMachineElemAxisLine, GivesTheElement) {
  KMachineElem e = korvo::test::sampleElem();
  EXPECT_TRUE(e.setFromLine(GetParam().line, GetParam().version));
  expectElem(e, GetParam().read);
  expectElem(KMachineElem(GetParam().line, GetParam().version), GetParam().read);
}

}  // namespace
