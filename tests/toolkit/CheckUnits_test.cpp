// Radians in fields of degrees, metres in fields of millimetres, points far away.

#include <set>
#include <string>
#include <vector>

#include "tests/support/TempFile.h"
#include "toolkit/check/Check.h"

using korvo::Diagnostic;
using korvo::test::TempDir;

namespace {

const std::set<std::string> kCodes{"limits-radians", "limits-metres", "point-metres", "point-far"};

std::vector<Diagnostic> unitsOf(const std::string& lines) {
  const TempDir folder;
  const auto result = korvo::check(folder.write("m.def", lines), korvo::Format::version1);
  std::vector<Diagnostic> found;
  for (const Diagnostic& d : result.diagnostics) {
    if (kCodes.contains(d.code)) found.push_back(d);
  }
  return found;
}

struct Row {
  const char* label;
  std::string lines;
  const char* found;  // "line:column code: suggestion"; empty: nothing is found
};

std::string told(const std::vector<Diagnostic>& found) {
  std::string text;
  for (const Diagnostic& d : found) {
    text += std::to_string(d.line) + ":" + std::to_string(d.column) + " " + d.code + ": " +
            d.suggestion + "\n";
  }
  return text.empty() ? text : text.substr(0, text.size() - 1);
}

class Units : public testing::TestWithParam<Row> {};

TEST_P(Units, AreTheOnesOfTheFormat) {
  EXPECT_EQ(told(unitsOf(GetParam().lines)), GetParam().found);
}

std::string rotary(const std::string& limits) { return "rotation=C,1,z,0,0,0,0,0\n" + limits; }

std::string head(const std::string& pivot, const std::string& limits = "limits=X,0,4000\n",
                 const std::string& tool = "tool=z,0,0,0\n") {
  return "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\nrotation=B,5,y,0,0," + pivot + "\n" + tool +
         limits;
}

std::string arm(const std::string& elbow) {
  return "rotation=J1,1,z,0,0,0,0,0\nrotation=J2,2,y,0,0," + elbow +
         "\nrotation=J3,3,y,0,0,0,0,0\nrotation=J4,4,x,0,0,0,0,0\n";
}

INSTANTIATE_TEST_SUITE_P(
    Radians, Units,
    testing::Values(
        Row{"HalfTurns", rotary("limits=C,-3.1416,3.1416\n"),
            "2:10 limits-radians: write degrees: -180, 180"},
        Row{"TwoDigits", rotary("limits=C,0,6.28\n"),
            "2:12 limits-radians: write degrees: 0, 359.817"},
        Row{"ThirdsInLinesOfTheirOwn", rotary("courseminimum=C,-2.0944\ncoursemaximum=C,1.0472\n"),
            "2:17 limits-radians: write degrees: -120, 60"},
        Row{"OneEndAlone", rotary("coursemaximum=C,1.5708\n"),
            "2:17 limits-radians: write degrees: 90"},
        Row{"QuarterWithMoreTravel", rotary("limits=C,-1.5708,30\n"), ""},
        Row{"DegreesOfAFineTilt", rotary("limits=C,-2.5,2.5\n"), ""},
        Row{"WholeNumbers", rotary("limits=C,-3,3\n"), ""},
        Row{"Null", rotary("limits=C,0,0.0\n"), ""},
        Row{"LinearAxis", "axis=X,1,x\nlimits=X,-3.1416,3.1416\n", ""},
        Row{"UnknownAxis", rotary("limits=B,-3.1416,3.1416\n"), ""},
        Row{"BeforeTheAxis", "limits=C,-3.1416,3.1416\nrotation=C,1,z,0,0,0,0,0\n", ""},
        Row{"LaterLineDecides", rotary("limits=C,-3.1416,3.1416\nlimits=C,-180,180\n"), ""}),
    [](const auto& row) { return std::string(row.param.label); });

INSTANTIATE_TEST_SUITE_P(
    Metres, Units,
    testing::Values(
        Row{"Travel", "axis=X,1,x\ntool=z,0,0,250\nlimits=X,-0.4,0.4\n",
            "3:10 limits-metres: write millimetres: -400, 400"},
        Row{"AllTravelsTheFirstWithDecimals",
            "axis=X,1,x\naxis=Y,2,y\ntool=z,0,0,250\nlimits=X,0,4\nlimits=Y,0,2.5\n",
            "5:12 limits-metres: write millimetres: 0, 2500"},
        Row{"WholeTravelsProveNothing", "axis=X,1,x\ntool=z,0,0,250\nlimits=X,0,4\n", ""},
        Row{"OneLongTravel",
            "axis=X,1,x\naxis=Y,2,y\ntool=z,0,0,250\nlimits=X,0,0.5\nlimits=Y,0,250\n", ""},
        Row{"SmallMachine", "axis=X,1,x\ntool=z,0,0,25\nlimits=X,0,0.5\n", ""},
        Row{"PivotLength", head("0,0,0.215"), "5:20 point-metres: write millimetres: 215"},
        Row{"PivotLengthInMillimetres", head("0,0,215"), ""},
        Row{"AxesThatMeetInTheToolPoint", head("0,0,0"), ""},
        Row{"MeetButForTheMeasuredError", head("0.02,0,0.03"), ""},
        Row{"PivotLengthOnAMachineWithoutTravels", head("0,0,0.215", ""), ""},
        Row{"ErrorBesideAPivotLength", head("0.3,0,215"), ""},
        Row{"AxisAlongTheTool", head("0.3,0,0", "limits=X,0,4000\n", "tool=y,0,0,0\n"), ""},
        Row{"TableAxis",
            "frame\nrotation=A,4,x,0,0,0,0.5,0\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\n"
            "tool=z,0,0,0\nlimits=X,0,400\n",
            ""},
        Row{"Arm", arm("0.1,0,0.615"), "2:21 point-metres: write millimetres: 623.077"},
        Row{"ArmInMillimetres", arm("100,0,615"), ""}),
    [](const auto& row) { return std::string(row.param.label); });

INSTANTIATE_TEST_SUITE_P(
    Far, Units,
    testing::Values(
        Row{"LostPoint", "rotation=B,1,y,0,0,0,0,215000\n",
            "1:20 point-far: look for a lost decimal point, or move the origin to the machine"},
        Row{"TwentyTimesAllElse", "rotation=B,1,y,0,0,0,0,21500\ntool=z,0,0,300\n",
            "1:20 point-far: look for a lost decimal point, or move the origin to the machine"},
        Row{"LessThanTwentyTimes", "rotation=B,1,y,0,0,0,0,21500\ntool=z,0,0,1300\n", ""},
        Row{"TravelsCount", "axis=X,2,x\nrotation=B,1,y,0,0,0,0,21500\nlimits=X,0,3000\n", ""},
        Row{"ToolOfAnOriginAtTheDoor", "rotation=B,1,y,0,0,8000,0,0\ntool=z,0,0,0\n", ""},
        Row{"WholeMachineIsSaidOnce", "rotation=B,1,y,0,0,250000,0,0\ntool=z,250000,0,300\n",
            "1:20 point-far: look for a lost decimal point, or move the origin to the machine"},
        Row{"NotFinite", "rotation=B,1,y,0,0,inf,0,0\n", ""}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(UnitsSay, WhatWasFound) {
  const auto radians = unitsOf(rotary("limits = C, -3.1416, 3.1416\n"));
  ASSERT_EQ(radians.size(), 1u);
  EXPECT_EQ(radians[0].text,
            "expected limits of a rotary axis in degrees, found -3.142, 3.142 for 'C', which look "
            "like radians");
  EXPECT_EQ(radians[0].column, 13);
  EXPECT_EQ(radians[0].length, 7);
  const auto far = unitsOf("tool=z,0,0,250000\n");
  ASSERT_EQ(far.size(), 1u);
  EXPECT_EQ(far[0].text, "expected points on the machine, found one 250 m from the origin");
  EXPECT_EQ(far[0].length, 10);
}

}  // namespace
