// The readers of operand tokens.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "kinematics/KMachineElem.h"
#include "tests/support/TraceCapture.h"

using korvo::test::TracedTest;
using testing::ElementsAre;
using zgeo::UVec3d;
using zkin::KMachineElem;

namespace {

using Tokens = std::vector<std::wstring>;
constexpr double kInf = std::numeric_limits<double>::infinity();

// --- whole numbers

struct IntRow {
  const char* name;
  const wchar_t* token;
  bool scans;
  int value = 0;
};

class ReadIntValue : public TracedTest, public testing::WithParamInterface<IntRow> {};
INSTANTIATE_TEST_SUITE_P(
    Token, ReadIntValue,
    testing::Values(IntRow{"Plain", L"42", true, 42}, IntRow{"Negative", L"-7", true, -7},
                    IntRow{"PlusSign", L"+5", true, 5}, IntRow{"LeadingBlank", L" 8", true, 8},
                    IntRow{"TextBehind", L"12abc", true, 12}, IntRow{"Fraction", L"0.5", true, 0},
                    IntRow{"FractionCut", L"4.7", true, 4}, IntRow{"Exponent", L"1e3", true, 1},
                    IntRow{"HexIsZero", L"0x10", true, 0}, IntRow{"LeadingZero", L"010", true, 10},
                    // glibc keeps the low 32 bits of the 64-bit number:
                    // 99999999999 - 23 * 2^32 = 1215752191
                    IntRow{"TooLarge", L"99999999999", true, 1215752191},
                    IntRow{"TooSmall", L"-99999999999", true, -1215752191},
                    // Beyond 64 bits it saturates first: the low bits of 2^63 - 1 and of -2^63.
                    IntRow{"FarTooLarge", L"99999999999999999999", true, -1},
                    IntRow{"FarTooSmall", L"-99999999999999999999", true, 0},
                    IntRow{"Word", L"abc", false}, IntRow{"Empty", L"", false},
                    IntRow{"Blank", L" ", false}, IntRow{"OnlySign", L"-", false},
                    IntRow{"NoLeadingDigit", L".5", false}, IntRow{"TwoSigns", L"--1", false},
                    IntRow{"SignAndBlank", L"- 1", false}, IntRow{"OtherDigits", L"\u0663", false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(ReadIntValue, AdvancesWhenItScans) {
  const Tokens tokens = {L"x", GetParam().token, L"9"};
  int pos = 1, value = 77;
  EXPECT_EQ(KMachineElem::_readValue(tokens, pos, value), GetParam().scans);
  EXPECT_EQ(pos, GetParam().scans ? 2 : 1);
  EXPECT_EQ(value, GetParam().scans ? GetParam().value : 77);
}

// --- real numbers

struct RealRow {
  const char* name;
  const wchar_t* token;
  bool scans;
  double value = 0;
};

class ReadRealValue : public TracedTest, public testing::WithParamInterface<RealRow> {};
INSTANTIATE_TEST_SUITE_P(
    Token, ReadRealValue,
    testing::Values(
        RealRow{"Plain", L"1.5", true, 1.5}, RealRow{"Negative", L"-2.25", true, -2.25},
        RealRow{"PlusSign", L"+3", true, 3}, RealRow{"Exponent", L"1e3", true, 1000},
        RealRow{"NegativeExponent", L"25E-2", true, 0.25},
        RealRow{"TextBehind", L"12abc", true, 12}, RealRow{"NoLeadingDigit", L".5", true, 0.5},
        RealRow{"NoFractionDigits", L"5.", true, 5}, RealRow{"DecimalComma", L"1,5", true, 1},
        RealRow{"OpenExponent", L"1e", true, 1}, RealRow{"OpenSignedExponent", L"1e+", true, 1},
        RealRow{"LeadingBlank", L" 8.5", true, 8.5}, RealRow{"SecondNumberBehind", L"1 2", true, 1},
        RealRow{"HexFloat", L"0x1p", true, 1}, RealRow{"HexInteger", L"0x10", true, 16},
        RealRow{"Infinity", L"-inf", true, -kInf}, RealRow{"LongInfinity", L"Infinity", true, kInf},
        RealRow{"Overflow", L"1e999", true, kInf}, RealRow{"Word", L"abc", false},
        RealRow{"Empty", L"", false}, RealRow{"OnlySign", L"+", false},
        RealRow{"OnlyPoint", L".", false}, RealRow{"OnlyExponent", L"e5", false},
        RealRow{"OpenHex", L"0x", false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(ReadRealValue, AdvancesWhenItScans) {
  const Tokens tokens = {L"x", GetParam().token, L"9"};
  int pos = 1;
  double value = 77;
  EXPECT_EQ(KMachineElem::_readValue(tokens, pos, value), GetParam().scans);
  EXPECT_EQ(pos, GetParam().scans ? 2 : 1);
  EXPECT_EQ(value, GetParam().scans ? GetParam().value : 77);
}

TEST(ReadValue, NotANumberScansAsReal) {
  for (const wchar_t* token : {L"nan", L"NaN", L"nan(1)"}) {
    int pos = 0;
    double value = 77;
    EXPECT_TRUE(KMachineElem::_readValue({token}, pos, value));
    EXPECT_EQ(pos, 1);
    EXPECT_TRUE(std::isnan(value));
  }
}

TEST(ReadValue, RefusesAPositionBeyondTheTokens) {
  const Tokens tokens = {L"1", L"2"};
  for (const int beyond : {2, 3, std::numeric_limits<int>::max()}) {
    int pos = beyond, whole = 77;
    double real = 77;
    EXPECT_FALSE(KMachineElem::_readValue(tokens, pos, whole));
    EXPECT_FALSE(KMachineElem::_readValue(tokens, pos, real));
    EXPECT_EQ(pos, beyond);
    EXPECT_EQ(whole, 77);
    EXPECT_EQ(real, 77);
  }
}

TEST(ReadValue, RefusesAnEmptyList) {
  int pos = 0, whole = 77;
  EXPECT_FALSE(KMachineElem::_readValue({}, pos, whole));
  EXPECT_EQ(pos, 0);
}

// --- vectors

struct VectorRow {
  const char* name;
  Tokens tokens;
  int pos;
  bool reads;
  UVec3d value = {};
  int after = 0;
};

class ReadVector : public TracedTest, public testing::WithParamInterface<VectorRow> {};

INSTANTIATE_TEST_SUITE_P(
    Word, ReadVector,
    testing::Values(VectorRow{"x", {L"x"}, 0, true, {1, 0, 0}, 1},
                    VectorRow{"PlusX", {L"+x"}, 0, true, {1, 0, 0}, 1},
                    VectorRow{"MinusX", {L"-x"}, 0, true, {-1, 0, 0}, 1},
                    VectorRow{"y", {L"y"}, 0, true, {0, 1, 0}, 1},
                    VectorRow{"PlusY", {L"+y"}, 0, true, {0, 1, 0}, 1},
                    VectorRow{"MinusY", {L"-y"}, 0, true, {0, -1, 0}, 1},
                    VectorRow{"z", {L"z"}, 0, true, {0, 0, 1}, 1},
                    VectorRow{"PlusZ", {L"+z"}, 0, true, {0, 0, 1}, 1},
                    VectorRow{"MinusZ", {L"-z"}, 0, true, {0, 0, -1}, 1},
                    VectorRow{"UpperX", {L"X"}, 0, true, {1, 0, 0}, 1},
                    VectorRow{"UpperPlusY", {L"+Y"}, 0, true, {0, 1, 0}, 1},
                    VectorRow{"UpperMinusZ", {L"-Z"}, 0, true, {0, 0, -1}, 1},
                    VectorRow{"InTheMiddle", {L"1", L"-y", L"2"}, 1, true, {0, -1, 0}, 2}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Numbers, ReadVector,
    testing::Values(VectorRow{"Three", {L"1", L"-2.5", L"1e3"}, 0, true, {1, -2.5, 1000}, 3},
                    VectorRow{"NotNormalised", {L"0", L"0", L"5"}, 0, true, {0, 0, 5}, 3},
                    VectorRow{"TextBehind", {L"1mm", L"2mm", L"3mm"}, 0, true, {1, 2, 3}, 3},
                    VectorRow{"LastThree", {L"a", L"4", L"5", L"6"}, 1, true, {4, 5, 6}, 4},
                    VectorRow{"FirstThreeOfFour", {L"4", L"5", L"6", L"7"}, 0, true, {4, 5, 6}, 3}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Refused, ReadVector,
    testing::Values(
        VectorRow{"NoTokens", {}, 0, false},
        VectorRow{"PositionAtTheEnd", {L"1", L"2", L"3"}, 3, false},
        VectorRow{"PositionBeyond", {L"1", L"2", L"3"}, 9, false},
        VectorRow{"OneNumber", {L"1"}, 0, false}, VectorRow{"TwoNumbers", {L"1", L"2"}, 0, false},
        VectorRow{"TwoNumbersLeft", {L"1", L"2", L"3"}, 1, false},
        VectorRow{"FirstIsNoNumber", {L"a", L"2", L"3"}, 0, false},
        VectorRow{"SecondIsNoNumber", {L"1", L"b", L"3"}, 0, false},
        VectorRow{"ThirdIsNoNumber", {L"1", L"2", L"c"}, 0, false},
        VectorRow{"WordAmongNumbers", {L"1", L"x", L"3"}, 0, false},
        VectorRow{"EmptyFirst", {L"", L"2", L"3"}, 0, false},
        VectorRow{"EmptySecond", {L"1", L"", L"3"}, 0, false},
        VectorRow{"UnknownWord", {L"w"}, 0, false}, VectorRow{"TwoSigns", {L"--x"}, 0, false},
        VectorRow{"OnlySign", {L"+"}, 0, false}, VectorRow{"WordAndText", {L"xx"}, 0, false},
        VectorRow{"WordAndBlank", {L"x "}, 0, false},
        VectorRow{"WordAndTail", {L"-x -x"}, 0, false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(ReadVector, TakesAllOrNothing) {
  int pos = GetParam().pos;
  UVec3d v(7, 8, 9);
  EXPECT_EQ(KMachineElem::_readVector(GetParam().tokens, pos, v), GetParam().reads);
  EXPECT_EQ(pos, GetParam().reads ? GetParam().after : GetParam().pos);
  const UVec3d expected = GetParam().reads ? GetParam().value : UVec3d(7, 8, 9);
  EXPECT_EQ(v.x, expected.x);
  EXPECT_EQ(v.y, expected.y);
  EXPECT_EQ(v.z, expected.z);
}

// --- geometry file and colour

struct FileRow {
  const char* name;
  Tokens tokens;
  int pos;
  bool reads;
  const wchar_t* file;
  int red, green, blue;
  int after;
};

class ReadGeomFile : public TracedTest, public testing::WithParamInterface<FileRow> {};

INSTANTIATE_TEST_SUITE_P(
    Operands, ReadGeomFile,
    testing::Values(
        FileRow{"NoTokens", {}, 0, false, L"before", 1, 2, 3, 0},
        FileRow{"PositionAtTheEnd", {L"a.stl"}, 1, false, L"before", 1, 2, 3, 1},
        FileRow{"NameOnly", {L"a.stl"}, 0, true, L"a.stl", 200, 200, 200, 1},
        FileRow{"OneNumberBehind", {L"a.stl", L"9"}, 0, true, L"a.stl", 200, 200, 200, 1},
        FileRow{"TwoNumbersBehind", {L"a.stl", L"9", L"8"}, 0, true, L"a.stl", 200, 200, 200, 1},
        FileRow{"Colour", {L"a.stl", L"9", L"8", L"7"}, 0, true, L"a.stl", 9, 8, 7, 4},
        FileRow{"ColourAndMore", {L"a.stl", L"9", L"8", L"7", L"6"}, 0, true, L"a.stl", 9, 8, 7, 4},
        FileRow{"FromTheMiddle", {L"z", L"a.stl", L"9", L"8", L"7"}, 1, true, L"a.stl", 9, 8, 7, 5},
        FileRow{"ColourIsNotClamped",
                {L"a.stl", L"-1", L"256", L"3.9"},
                0,
                true,
                L"a.stl",
                -1,
                256,
                3,
                4},
        // A component that does not scan keeps its token, so the next one tries the same.
        FileRow{"RedFails", {L"a.stl", L"r", L"8", L"7"}, 0, true, L"a.stl", 1, 2, 3, 1},
        FileRow{"GreenFails", {L"a.stl", L"9", L"g", L"7"}, 0, true, L"a.stl", 9, 2, 3, 2},
        FileRow{"BlueFails", {L"a.stl", L"9", L"8", L"b"}, 0, true, L"a.stl", 9, 8, 3, 3},
        FileRow{"EmptyRed", {L"a.stl", L"", L"8", L"7"}, 0, true, L"a.stl", 1, 2, 3, 1},
        FileRow{"EmptyName", {L""}, 0, false, L"", 200, 200, 200, 1},
        FileRow{"EmptyNameWithColour", {L"", L"9", L"8", L"7"}, 0, false, L"", 9, 8, 7, 4},
        FileRow{"NumberAsName", {L"100"}, 0, true, L"100", 200, 200, 200, 1}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(ReadGeomFile, ReadsNameAndColour) {
  int pos = GetParam().pos;
  std::wstring file = L"before";
  int rgb[3] = {1, 2, 3};
  EXPECT_EQ(KMachineElem::_readGeomFile(GetParam().tokens, pos, file, rgb), GetParam().reads);
  EXPECT_EQ(file, GetParam().file);
  EXPECT_THAT(rgb, ElementsAre(GetParam().red, GetParam().green, GetParam().blue));
  EXPECT_EQ(pos, GetParam().after);
}

}  // namespace
