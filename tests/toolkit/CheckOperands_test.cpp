// Rules about the operands of a line: numbers, directions, points, colours, and what is left.

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/TempFile.h"
#include "toolkit/check/Check.h"

using korvo::Diagnostic;
using korvo::Format;
using korvo::Severity;
using korvo::test::TempDir;

namespace {

// What these rules say; the lines are no whole machines, and others say so.
const std::vector<std::string> kCodes = {
    "number-partial",       "number-not-finite",   "decimal-comma",
    "operand-semicolon",    "axis-number-missing", "axis-number-unwanted",
    "vector-two-numbers",   "vector-unread",       "axis-direction",
    "tool-direction",       "direction-not-unit",  "rotary-point-swallowed",
    "rotary-point-missing", "frame-direction",     "file-is-number",
    "operands-left",        "colour-partial",      "colour-range",
    "part-position",        "part-axes-replaced",  "part-axes",
    "name-quotes",          "number-blanks"};

std::vector<Diagnostic> diagnosticsOf(const std::string& text, Format format) {
  const TempDir folder;
  std::vector<Diagnostic> some;
  for (const Diagnostic& d : korvo::check(folder.write("m.def", text), format).diagnostics) {
    if (std::find(kCodes.begin(), kCodes.end(), d.code) != kCodes.end()) some.push_back(d);
  }
  return some;
}

struct Row {
  const char* label;
  const char* line;
  const char* code;
  int column;
  int length;
  const char* said;
  Format format = Format::version1;
};

std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.label; }

class OperandFindings : public testing::TestWithParam<Row> {};

// One finding of all these rules: one cause. It is in the last of the lines.
TEST_P(OperandFindings, AreOneAtTheirPlace) {
  const Row& row = GetParam();
  const auto some = diagnosticsOf("# a comment\n" + std::string(row.line) + "\n", row.format);
  ASSERT_EQ(some.size(), 1u) << (some.empty() ? "" : korvo::toString(some[1]));
  EXPECT_EQ(some[0].code, row.code);
  const std::string lines = row.line;
  EXPECT_EQ(some[0].line, 2 + std::count(lines.begin(), lines.end(), '\n'));
  EXPECT_EQ(some[0].column, row.column);
  EXPECT_EQ(some[0].length, row.length);
  EXPECT_EQ(some[0].text, row.said);
}

const auto rowName = [](const auto& row) { return std::string(row.param.label); };

INSTANTIATE_TEST_SUITE_P(
    Numbers, OperandFindings,
    testing::Values(Row{"LetterForZero", "tool=z,0,0,1O0", "number-partial", 12, 3,
                        "expected a number, found '1O0', of which 1 is read"},
                    Row{"TwoPoints", "tool = z, 0, 1.5.2, 3", "number-partial", 14, 5,
                        "expected a number, found '1.5.2', of which 1.5 is read"},
                    Row{"Unit", "limits=X,-100,250mm", "number-partial", 15, 5,
                        "expected a number, found '250mm', of which 250 is read"},
                    Row{"AxisNumberWithDecimals", "axis=X,1.5,x", "number-partial", 8, 3,
                        "expected a number, found '1.5', of which 1 is read"},
                    Row{"StrategyWithDecimals", "strategy=2.5", "number-partial", 10, 3,
                        "expected a number, found '2.5', of which 2 is read"},
                    Row{"RotationPoint", "rotationpoint=0,0,90deg", "number-partial", 19, 5,
                        "expected a number, found '90deg', of which 90 is read"},
                    Row{"HookPoint", "loop=X,0,0,1_000", "number-partial", 12, 5,
                        "expected a number, found '1_000', of which 1 is read"},
                    Row{"ColourInPercent", "geom=a.stl,50%,0,0", "number-partial", 12, 3,
                        "expected a number, found '50%', of which 50 is read"},
                    Row{"TooLargeForADouble", "tool=z,0,0,1e999", "number-not-finite", 12, 5,
                        "expected a finite number, found '1e999'"},
                    Row{"NoNumber", "rotation=C,3,z,0,0,0,nan,0", "number-not-finite", 22, 3,
                        "expected a finite number, found 'nan'"},
                    Row{"InfiniteRotationPoint", "rotationpoint=0,-Inf,0", "number-not-finite", 17,
                        4, "expected a finite number, found '-Inf'"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Commas, OperandFindings,
    testing::Values(
        Row{"DecimalCommaInTheLastNumber", "tool=z,0,0,100,5", "decimal-comma", 12, 5,
            "expected 3 numbers, found more, as if '100,5' had a decimal comma"},
        Row{"DecimalCommaInTheFirstNumber", "tool=z, 12,5, 0, 100", "decimal-comma", 9, 4,
            "expected 3 numbers, found more, as if '12,5' had a decimal comma"},
        Row{"DecimalCommaInFrontOfAFile", "tool=z,0,0,100,5,head.stl", "decimal-comma", 12, 5,
            "expected 3 numbers, found more, as if '100,5' had a decimal comma"},
        Row{"DecimalCommasInAllThree", "tool=z,1,5,2,5,100,5", "decimal-comma", 8, 13,
            "expected 3 numbers, found more, as if '1,5,2,5,100,5' had a decimal comma"},
        Row{"DecimalCommaOfARotaryPoint", "rotation=B,5,y,0,0,12,5,0,100", "decimal-comma", 20, 4,
            "expected 5 numbers, found more, as if '12,5' had a decimal comma"},
        Row{"DecimalCommaInALimit", "limits=X,-100,5,250", "decimal-comma", 10, 6,
            "expected 2 numbers, found more, as if '-100,5' had a decimal comma"},
        Row{"DecimalCommasInBothLimits", "limits=X,-100,5,250,5", "decimal-comma", 10, 12,
            "expected 2 numbers, found more, as if '-100,5,250,5' had a decimal comma"},
        Row{"DecimalCommaInAMinimum", "courseminimum=X,-0,5", "decimal-comma", 17, 4,
            "expected one number, found more, as if '-0,5' had a decimal comma"},
        Row{"DecimalCommaOfAHook", "loop=X,0,0,70,2", "decimal-comma", 12, 4,
            "expected 3 numbers, found more, as if '70,2' had a decimal comma"},
        Row{"Semicolons", "tool=z;0;0;100", "operand-semicolon", 6, 9,
            "expected commas between operands, found semicolons in 'z;0;0;100'"},
        Row{"SemicolonsAndDecimalCommas", "tool=z;0;0;100,5", "operand-semicolon", 6, 9,
            "expected commas between operands, found semicolons in 'z;0;0;100'"},
        Row{"SemicolonBehindTheName", "limits=X,-1;1", "operand-semicolon", 10, 4,
            "expected commas between operands, found semicolons in '-1;1'"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Vectors, OperandFindings,
    testing::Values(
        Row{"TwoNumbers", "tool=z,0,100", "vector-two-numbers", 8, 5,
            "expected a direction or point of three numbers, found only '0,100'"},
        Row{"OneNumber", "tool=z,100", "vector-two-numbers", 8, 3,
            "expected a direction or point of three numbers, found only '100'"},
        Row{"TwoNumbersAndAFile", "tool=z,0,100,head.stl,1,2,3", "vector-two-numbers", 8, 5,
            "expected a direction or point of three numbers, found only '0,100'"},
        Row{"FileThatBeginsWithADigit", "tool=z,0,100,2head.stl,1,2,3", "vector-two-numbers", 8, 5,
            "expected a direction or point of three numbers, found only '0,100'"},
        Row{"DirectionOfTwoNumbers", "axis=X,1,0.6,0.8", "vector-two-numbers", 10, 7,
            "expected a direction or point of three numbers, found only '0.6,0.8'"},
        Row{"BlanksForCommas", "tool=z,0 0 100", "number-blanks", 8, 7,
            "expected a number without blanks, found '0 0 100', which is read as '00100'"},
        Row{"BlanksForCommasInADirection", "axis=X,1,0 -1 0", "number-blanks", 10, 6,
            "expected a number without blanks, found '0 -1 0', which is read as '0-10'"},
        Row{"PositionOfTwoNumbers", "part=x,y,0,0", "vector-two-numbers", 10, 3,
            "expected a direction or point of three numbers, found only '0,0'"},
        Row{"RotaryPointOfTwoNumbers", "rotation=C,3,z,0,0,0,100", "vector-two-numbers", 20, 5,
            "expected a direction or point of three numbers, found only '0,100'"},
        Row{"FrameOfTwoNumbers", "frame=0,1", "vector-two-numbers", 7, 3,
            "expected a direction or point of three numbers, found only '0,1'", Format::version2},
        Row{"HookPointOfTwoNumbers", "loop=X,0,1", "vector-two-numbers", 8, 3,
            "expected a direction or point of three numbers, found only '0,1'"},
        Row{"WordThatIsNoDirection", "tool=up,0,0,0", "vector-unread", 6, 2,
            "expected x, y, z, -x, -y, -z or three numbers, found 'up'"},
        Row{"SignBehindTheLetter", "axis=X,1,x+", "vector-unread", 10, 2,
            "expected x, y, z, -x, -y, -z or three numbers, found 'x+'"},
        Row{"LetterForZeroInFront", "tool=z,0,O,0", "vector-unread", 10, 1,
            "expected x, y, z, -x, -y, -z or three numbers, found 'O'"},
        Row{"EmptyDirection", "tool=,0,0,0", "vector-unread", 6, 0,
            "expected x, y, z, -x, -y, -z or three numbers, found ''"},
        Row{"EmptyNumber", "tool=z,0,,5", "vector-unread", 10, 0,
            "expected x, y, z, -x, -y, -z or three numbers, found ''"},
        Row{"HookPointThatIsNone", "loop=X,here", "vector-unread", 8, 4,
            "expected x, y, z, -x, -y, -z or three numbers, found 'here'"},
        Row{"DirectionInQuotes", "tool=\"z\",0,0,0", "name-quotes", 6, 3,
            "expected an operand without quotes, found \"z\""}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Directions, OperandFindings,
    testing::Values(
        Row{"AxisOfLengthZero", "axis=X,1,0,0,0", "axis-direction", 10, 5,
            "expected a direction for every axis, found none for 'X'"},
        Row{"AxisWithAFileOnly", "axis=X,1,slide.stl", "axis-direction", 0, 0,
            "expected a direction for every axis, found none for 'X'"},
        Row{"AxisNotFinite", "axis=X,1,0,inf,0", "axis-direction", 10, 7,
            "expected a direction for every axis, found one that is not finite for 'X'"},
        Row{"ToolOfLengthZero", "tool=0,0,0,0,0,100", "tool-direction", 6, 5,
            "expected a direction from the tip to the drive, found none"},
        Row{"ToolWithAFileOnly", "tool=head.stl", "tool-direction", 0, 0,
            "expected a direction from the tip to the drive, found none"},
        Row{"GunNotFinite", "gun=nan,0,1,0,0,100", "tool-direction", 5, 7,
            "expected a direction from the tip to the drive, found one that is not finite"},
        // 0.36 + 0.81 = 1.17, whose square root is 1.08167
        Row{"NotOfLengthOne", "tool=0.6,0,0.9,0,0,0", "direction-not-unit", 6, 9,
            "expected a direction of length 1, found '0.6,0,0.9' of length 1.08167"},
        Row{"PointForDirection", "tool=0,0,100,0,0,1", "direction-not-unit", 6, 7,
            "expected a direction of length 1, found '0,0,100' of length 100"},
        // 2 * 0.49 = 0.98, whose square root is 0.989949
        Row{"TooFewDecimals", "rotation=B,5,0,.7,.7,0,0,0,0,260", "direction-not-unit", 14, 7,
            "expected a direction of length 1, found '0,.7,.7' of length 0.989949"},
        Row{"FrameDiagonal", "frame=0,1,1", "direction-not-unit", 7, 5,
            "expected a direction of length 1, found '0,1,1' of length 1.41421", Format::version2}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Points, OperandFindings,
    testing::Values(
        Row{"PointAlone", "rotation=B,5,y,0,0,100", "rotary-point-swallowed", 16, 7,
            "expected two integers and a point, found the point '0,0,100' alone"},
        Row{"PointAloneInFormat2", "rotation=AXE_B,0,1,0,0,0,100", "rotary-point-swallowed", 22, 7,
            "expected two integers and a point, found the point '0,0,100' alone", Format::version2},
        Row{"PointAloneWithDecimals", "rotation=B,5,y,0.5,-2,100.5", "rotary-point-swallowed", 16,
            12, "expected two integers and a point, found the point '0.5,-2,100.5' alone"},
        Row{"PointAloneAndAFile", "rotation=B,5,y,1,2,3,a.stl,9,9,9", "rotary-point-swallowed", 16,
            5, "expected two integers and a point, found the point '1,2,3' alone"},
        Row{"NoPoint", "rotation=C,3,z", "rotary-point-missing", 0, 0,
            "expected a point on the axis 'C', found none"},
        Row{"NoPointButAFile", "rotation=C,3,z,table.stl", "rotary-point-missing", 0, 0,
            "expected a point on the axis 'C', found none"},
        Row{"IntegersOnly", "rotation=C,3,z,0,0", "rotary-point-missing", 0, 0,
            "expected a point on the axis 'C', found none"},
        // What is swallowed is zero: nothing is lost.
        Row{"OriginAlone", "rotation=C,3,z,0,0,0", "rotary-point-missing", 0, 0,
            "expected a point on the axis 'C', found none"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Formats, OperandFindings,
    testing::Values(
        Row{"NumberInFormat2", "axis=X,x\naxis=Y,y\naxis=Z,3,z", "axis-number-unwanted", 8, 1,
            "expected a direction behind the axis name in format 2, found the axis number '3'",
            Format::version2},
        Row{"NumberInFrontOfNumbersInFormat2", "axis=X,x\naxis=Y,y\nrotation=B,5,0,1,0,0,0,0,0,100",
            "axis-number-unwanted", 12, 1,
            "expected a direction behind the axis name in format 2, found the axis number '5'",
            Format::version2},
        Row{"NoNumberInFormat1", "axis=X,1,x\naxis=Y,2,y\naxis=Z,0,0,1", "axis-number-missing", 8,
            5,
            "expected an axis number behind the axis name in format 1, found the direction "
            "'0,0,1'"},
        Row{"FrameWordInFormat1", "frame=z", "frame-direction", 7, 1,
            "expected a geometry file or nothing on the frame line of format 1, found 'z'"},
        Row{"FrameNumbersInFormat1", "frame=0,0,1", "frame-direction", 7, 5,
            "expected a geometry file or nothing on the frame line of format 1, found '0,0,1'"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Rest, OperandFindings,
    testing::Values(Row{"ZeroTooMany", "tool=z,0,0,0,0", "file-is-number", 14, 1,
                        "expected a geometry file or nothing more, found '0'"},
                    Row{"NumberWithDecimalsTooMany", "tool=z,0,0,100,0.5", "file-is-number", 16, 3,
                        "expected a geometry file or nothing more, found '0.5'"},
                    Row{"ColourWithoutFile", "tool=z,0,0,0,255,0,0", "file-is-number", 14, 3,
                        "expected a geometry file or nothing more, found '255'"},
                    Row{"BodyThatIsANumber", "geom=5", "file-is-number", 6, 1,
                        "expected a geometry file or nothing more, found '5'"},
                    Row{"SecondDirection", "axis=X,1,x,y", "file-is-number", 12, 1,
                        "expected a geometry file or nothing more, found 'y'"},
                    Row{"FourthColour", "axis=X,1,x,a.stl,1,2,3,250", "operands-left", 24, 3,
                        "expected no more operands, found '250'"},
                    Row{"SecondFile", "geom=a.stl, b.stl", "operands-left", 13, 5,
                        "expected no more operands, found 'b.stl'"},
                    Row{"ThirdLimit", "limits=X,-1.5,1.5,0", "operands-left", 19, 1,
                        "expected no more operands, found '0'"},
                    Row{"SecondStrategy", "strategy=1,5", "operands-left", 12, 1,
                        "expected no more operands, found '5'"},
                    Row{"BehindAHook", "loop=X,z,1", "operands-left", 10, 1,
                        "expected no more operands, found '1'"},
                    Row{"TwoColours", "geom=a.stl,255,0", "colour-partial", 12, 5,
                        "expected three integers for the colour behind the file, found '255,0'"},
                    Row{"ColourInWords", "geom=a.stl,red,0,0", "colour-partial", 12, 7,
                        "expected three integers for the colour behind the file, found 'red,0,0'"},
                    Row{"ColourWithAHole", "geom=a.stl,255,,0", "colour-partial", 12, 6,
                        "expected three integers for the colour behind the file, found '255,,0'"},
                    Row{"ColourTooLarge", "geom=a.stl,0,256,0", "colour-range", 14, 3,
                        "expected a part of a colour from 0 to 255, found '256'"},
                    Row{"ColourBelowZero", "geom=a.stl,0,0,-1", "colour-range", 16, 2,
                        "expected a part of a colour from 0 to 255, found '-1'"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Part, OperandFindings,
    testing::Values(
        Row{"PositionIsNotUsed", "part=x,y,0,0,50", "part-position", 10, 6,
            "expected 0,0,0 as the place of the part, found '0,0,50'"},
        Row{"DirectionAsPosition", "part=x,y,z", "part-position", 10, 1,
            "expected 0,0,0 as the place of the part, found 'z'"},
        Row{"AxesOfFormat2", "part=z,x,0,0,0", "part-axes-replaced", 6, 3,
            "expected x,y as the directions of a part in format 2, found 'z,x'", Format::version2},
        Row{"OppositeAxesOfFormat2", "part=-x,-y,0,0,0", "part-axes-replaced", 6, 5,
            "expected x,y as the directions of a part in format 2, found '-x,-y'",
            Format::version2},
        Row{"OppositeAxes", "part=x,-x,0,0,0", "part-axes", 6, 4,
            "expected X and Y directions of a part at a right angle, found parallel ones"},
        Row{"AxisOfLengthZero", "part=x,0,0,0,0,0,0", "part-axes", 6, 7,
            "expected X and Y directions of a part at a right angle, found one of length zero"},
        Row{"OneAxisOnly", "part=x", "part-axes", 6, 1,
            "expected X and Y directions of a part at a right angle, found no Y direction"},
        // The angle between (1, 0, 0) and (1, 1, 0).
        Row{"NotSquare", "part=x,1,1,0,0,0,0", "part-axes", 6, 7,
            "expected X and Y directions of a part at a right angle, found an angle of 45 "
            "degrees"}),
    rowName);

// --- what is right

struct Quiet {
  const char* label;
  const char* line;
  Format format = Format::version1;
};

std::ostream& operator<<(std::ostream& out, const Quiet& row) { return out << row.label; }

class NoOperandFindings : public testing::TestWithParam<Quiet> {};

TEST_P(NoOperandFindings, OnWhatIsRight) {
  const auto some = diagnosticsOf(std::string(GetParam().line) + "\n", GetParam().format);
  EXPECT_TRUE(some.empty()) << korvo::toString(some[0]);
}

INSTANTIATE_TEST_SUITE_P(
    Table, NoOperandFindings,
    testing::Values(
        Quiet{"Exponents", "tool=z,1e2,-1.5E+1,.5"}, Quiet{"IntegersWithAPoint", "axis=X,1.0,x"},
        Quiet{"SkippedIntegersMayBeAnything", "rotation=C,3,z,1.5,7x,0,0,0"},
        Quiet{"InfiniteTravel", "limits=C,-inf,inf"}, Quiet{"LimitsOnly", "limits=X,-100,250"},
        Quiet{"CommaAtTheEnd", "tool=z,0,0,0,"}, Quiet{"CommasAtTheEnd", "axis=X,1,x,,"},
        Quiet{"FileAndColour", "tool=z,0,0,100,head.stl,0,128,255"},
        Quiet{"FileThatBeginsWithADigit", "tool=z,0,0,100,2head.stl"},
        Quiet{"FileInAFolder", "axis=X,1,x,$ZRN_MACHINE_DEF\\slide.stl"},
        Quiet{"FileWithoutPoint", "tool=z,head.stl,1,2,3"}, Quiet{"FrameFile", "frame=bed.stl"},
        Quiet{"FrameDirection", "frame=z,bed.stl", Format::version2},
        Quiet{"FrameFileOnly", "frame=bed.stl", Format::version2},
        Quiet{"FrameFileWithoutType", "frame=bed", Format::version2}, Quiet{"PartAlone", "part"},
        Quiet{"PartWithAFileOnly", "part=part.stl"}, Quiet{"PartWithoutPosition", "part=y,-x"},
        Quiet{"PartInNumbers", "part=1,0,0,0,1,0,0,0,0", Format::version2},
        Quiet{"PartUpright", "part=z,x,0,0,0"},
        Quiet{"DiagonalAxis", "rotation=B,5,0,1,1,0,0,0,0,260"},
        Quiet{"DiagonalOfLengthOne", "tool=0.7071,0,0.7071,0,0,0"},
        Quiet{"ThreeDecimals", "tool=0.577,0.577,0.577,0,0,0"},
        Quiet{"RotaryAxisOfFormat2", "rotation=AXE_B,y,1,1,0,0,100", Format::version2},
        Quiet{"AxisNamedLikeAnother", "axis=1,1,x"}, Quiet{"HookOnAWord", "loop=X,z"},
        Quiet{"HookWithoutPoint", "loop=X"},
        Quiet{"TwelveNumbers", "rotationpoint=1,2,3,4,5,6,7,8,9,10,11,12"},
        Quiet{"Collisions", "collisions=tool,BATI,PIECE,1,2,3"},
        Quiet{"UnknownKeyword", "tol=0,0"}),
    rowName);

// --- suggestions and fixes

struct FixRow {
  const char* label;
  const char* line;
  const char* suggestion;
  const char* mended;  // the line then; null: no fix
};

std::ostream& operator<<(std::ostream& out, const FixRow& row) { return out << row.label; }

class OperandFixes : public testing::TestWithParam<FixRow> {};

TEST_P(OperandFixes, ChangeWhatCanOnlyBeMeant) {
  const FixRow& row = GetParam();
  const auto some = diagnosticsOf(row.line, Format::version1);
  ASSERT_EQ(some.size(), 1u);
  EXPECT_EQ(some[0].suggestion, row.suggestion);
  ASSERT_EQ(some[0].fix.has_value(), row.mended != nullptr);
  if (!row.mended) return;
  const korvo::Fix& fix = *some[0].fix;
  std::string line = row.line;
  line.replace(static_cast<std::size_t>(fix.column - 1), static_cast<std::size_t>(fix.length),
               fix.text);
  EXPECT_EQ(line, row.mended);
}

INSTANTIATE_TEST_SUITE_P(
    Table, OperandFixes,
    testing::Values(FixRow{"PointAlone", "rotation=B,5,y, 0,0,100",
                           "write two integers in front of the point, such as 0,0",
                           "rotation=B,5,y, 0,0,0,0,100"},
                    FixRow{"Semicolons", "tool= z; 0; 0; 100",
                           "write commas, and decimal points in numbers", "tool= z, 0, 0, 100"},
                    FixRow{"SemicolonsAndCommas", "tool=z;0;0;100,5",
                           "write commas, and decimal points in numbers", nullptr},
                    FixRow{"DecimalComma", "tool=z,0,0,100,5", "write a decimal point: '100.5'",
                           nullptr},
                    FixRow{"NotOfLengthOne", "tool=0,0,20,0,0,0",
                           "if the direction is right, '0,0,1' is the same", nullptr}),
    rowName);

TEST(CheckOperands, SeverityIsErrorWhereNumbersAreLost) {
  const auto severityOf = [](const char* line) {
    return diagnosticsOf(line, Format::version1).at(0).severity;
  };
  EXPECT_EQ(severityOf("rotation=B,5,y,0,0,100"), Severity::error);
  EXPECT_EQ(severityOf("tool=z,0,0,100,5"), Severity::error);
  EXPECT_EQ(severityOf("part=x,y,0,0,50"), Severity::warning);
  EXPECT_EQ(severityOf("rotation=C,3,z"), Severity::note);
}

// When the whole file is of the other format its axes are not told one by one.
TEST(CheckOperands, AFileOfTheOtherFormatIsNotSaidForEachAxis) {
  for (const Diagnostic& d : diagnosticsOf("axis=X,1,x\naxis=Y,2,y\n", Format::version2)) {
    EXPECT_NE(d.code, "axis-number-unwanted");
    EXPECT_NE(d.code, "vector-unread");
    EXPECT_NE(d.code, "axis-direction");
  }
}

}  // namespace
