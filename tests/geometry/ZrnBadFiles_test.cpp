// Files that are wrong somewhere: what still comes of them, and what is said. Each row was worked
// by hand; a second reader made of fgets and sscanf must agree with it too.

#include "tests/geometry/ZrnFiles.h"

namespace korvo::test {
namespace {

const std::string& P = kPlane;
const std::string& E = kEnd;
const std::vector<std::string> kOnlyPlane = {planeNode(0)};
const std::vector<std::string> kSecondPlane = {planeNode(1)};  // the first number is used up

/// A fault inside an entity of that name, found at the last line of `bytes`; a plane follows it.
FileRow curveFault(const char* name, const char* what, const std::string& bytes) {
  return {name, bytes + P, kOnlyPlane, {notRead(what)}};
}
FileRow surfaceFault(const char* name, const char* what, const std::string& bytes) {
  return {name, bytes + P, kSecondPlane, {notRead(what)}};
}
/// A file that ends inside an entity: the skip behind it says so, and that of the loader again.
FileRow cutOff(const char* name, const char* what, const std::string& bytes) {
  return {name, bytes, {}, {notRead(what), E, E}};
}
/// A fault in a trimming curve, which costs what belongs to the surface from there on.
FileRow trimFault(const char* name, const char* what, const std::string& bytes) {
  return {name, P + bytes + P, {planeNode(0), planeNode(1)}, {trimNotRead(what)}};
}

class ZrnBadFile : public ZrnFileTable {};

TEST_P(ZrnBadFile, GivesWhatCanBeRead) { expectAnswer(); }

// --- faults in data lines of top-level entities

INSTANTIATE_TEST_SUITE_P(
    Curves, ZrnBadFile,
    testing::Values(curveFault("PolylineWord", "Polyline", "2 2 1\n.5 0 0\nx\n"),
                    curveFault("PolylineTwoNumbers", "Polyline", "2 1 1\n.5 0\n"),
                    curveFault("PolylineBlankRow", "Polyline", "2 1 1\n\n"),
                    curveFault("PolylineCommas", "Polyline", "2 1 1\n.5,0,0\n"),
                    curveFault("PolylineDecimalComma", "Polyline", "2 1 1\n0,5 0 0\n"),
                    curveFault("PolylineFortranExponent", "Polyline", "2 1 1\n.5d0 0 0\n"),
                    curveFault("PolylineSemicolons", "Polyline", "2 1 1\n.5; 0; 0\n"),
                    curveFault("PolylineBrackets", "Polyline", "2 1 1\n(.5 0 0)\n"),
                    curveFault("PolylineComment", "Polyline", "2 1 1\n# point\n"),
                    curveFault("PolylineBrokenInfinity", "Polyline", "2 1 1\ninfi 0 0\n"),
                    curveFault("PolylineHexadecimalWithoutDigits", "Polyline", "2 1 1\n0x 0 0\n"),
                    curveFault("PolylineNanInParentheses", "Polyline", "2 1 1\nnan(1) 0 0\n"),
                    curveFault("Polyline22Word", "Polyline", "2 0 22\n.5 0 0\nx\n"),
                    cutOff("PolylineCutOff", "Polyline", "2 2 1\n.5 0 0\n"),
                    cutOff("PolylineHeaderOnly", "Polyline", "2 1 1\n"),
                    cutOff("PolylineHeaderWithoutLineFeed", "Polyline", "2 1 1"),
                    cutOff("PolylineCutInALine", "Polyline", "2 1 1\n.5 0"),
                    curveFault("PolynomialTwoNumbers", "Polynomial Curve", "2 1 4\n.5 0 0\n.5 0\n"),
                    cutOff("PolynomialCutOff", "Polynomial Curve", "2 1 4\n.5 0 0\n"),
                    curveFault("TrimmedWord", "Trimmed Polynomial Curve",
                               "2 0 5\n0 1\n.5 0 0\nx\n"),
                    cutOff("TrimmedWithoutInterval", "Trimmed Polynomial Curve", "2 0 5\n"),
                    cutOff("TrimmedWithoutRows", "Trimmed Polynomial Curve", "2 0 5\n0 1\n")),
    fileRowName);

const std::string kPoles = "2 1 9\n.5 0 0 1\n1.5 0 0 1\n";

INSTANTIATE_TEST_SUITE_P(
    NurbsCurves, ZrnBadFile,
    testing::Values(
        curveFault("PoleOfTwo", "Nurbs Curve", "2 1 9\n.5 0\n"),
        curveFault("SecondPoleOfThree", "Nurbs Curve", "2 1 9\n.5 0 0 1\n1.5 0 0\n"),
        curveFault("SecondPlanarPoleOfTwo", "Nurbs Curve", "2 1 9\n.5 0 1\n1.5 0\n"),
        curveFault("DegreeAlone", "Nurbs Curve", kPoles + "1\n"),
        curveFault("DegreeReal", "Nurbs Curve", kPoles + "1.5 1\n"),
        curveFault("PeriodicWord", "Nurbs Curve", kPoles + "1 0\nno no\n"),
        curveFault("IntervalOfOne", "Nurbs Curve", kPoles + "1 0\n0 0\n.5\n"),
        curveFault("SecondIntervalWord", "Nurbs Curve", kPoles + "1 0\n0 0\n0 1\nx x\n"),
        curveFault("KnotCountWord", "Nurbs Curve", kPoles + "1 0\n0 0\n0 1\n0 1\nx\n"),
        curveFault("KnotWord", "Nurbs Curve", kPoles + "1 0\n0 0\n0 1\n0 1\n2\n.5\nx\n"),
        curveFault("LastLineWord", "Nurbs Curve", kPoles + "1 0\n0 0\n0 1\n0 1\n1\n.5\nx\n"),
        cutOff("LastLineMissing", "Nurbs Curve", kPoles + "1 0\n0 0\n0 1\n0 1\n1\n.5\n"),
        cutOff("CutInPoles", "Nurbs Curve", "2 1 9\n.5 0 0 1\n")),
    fileRowName);

INSTANTIATE_TEST_SUITE_P(
    Arcs, ZrnBadFile,
    testing::Values(
        curveFault("RangeOfOne", "Arc Curve", "1 1 14\n.5\n"),
        curveFault("Radius", "Arc Curve", "1 1 14\n0 1\nr\n"),
        curveFault("Centre", "Arc Curve", "1 1 14\n0 1\n5\n.5 0\n"),
        curveFault("FirstRow", "Arc Curve", "1 1 14\n0 1\n5\n.5 0 0\nx\n"),
        curveFault("SecondRow", "Arc Curve", "1 1 14\n0 1\n5\n.5 0 0\n.5 0 0\n.5 0\n"),
        curveFault("ThirdRow", "Arc Curve", "1 1 14\n0 1\n5\n.5 0 0\n.5 0 0\n.5 0 0\n\n"),
        curveFault("Translation", "Arc Curve",
                   "1 1 14\n0 1\n5\n.5 0 0\n.5 0 0\n.5 0 0\n.5 0 0\nx\n"),
        cutOff("CutOff", "Arc Curve", "1 1 14\n0 1\n5\n.5 0 0\n.5 0 0\n.5 0 0\n.5 0 0\n")),
    fileRowName);

const std::string kNet = "2 2 9\n.5 0 0 1\n.5 1 0 1\n.5 0 1 1\n.5 1 1 1\n";

INSTANTIATE_TEST_SUITE_P(
    Surfaces, ZrnBadFile,
    testing::Values(
        surfaceFault("PlanarTwoNumbers", "Planar surface", "2 2 10\n0 0\n"),
        surfaceFault("PlanarWord", "Planar surface", "2 2 10\nz\n"),
        cutOff("PlanarHeaderOnly", "Planar surface", "2 2 10\n"),
        cutOff("PlanarHeaderWithoutLineFeed", "Planar surface", "2 2 10"),
        surfaceFault("PoleOfThree", "Nurbs surface", "2 2 9\n.5 0 0\n"),
        surfaceFault("LastPole", "Nurbs surface", "2 2 9\n.5 0 0 1\n.5 1 0 1\n.5 0 1 1\n.5 1 1\n"),
        surfaceFault("OneDegree", "Nurbs surface", kNet + "1\n"),
        surfaceFault("FlagWord", "Nurbs surface", kNet + "1 1\nx\n"),
        surfaceFault("OneFlag", "Nurbs surface", kNet + "1 1\n1\n"),
        surfaceFault("IntervalU", "Nurbs surface", kNet + "1 1\n0 0\n.5\n"),
        surfaceFault("IntervalV", "Nurbs surface", kNet + "1 1\n0 0\n0 1\nx\n"),
        surfaceFault("CountU", "Nurbs surface", kNet + "1 1\n0 0\n0 1\n0 1\nx\n"),
        surfaceFault("KnotU", "Nurbs surface", kNet + "1 1\n0 0\n0 1\n0 1\n1\nx\n"),
        surfaceFault("CountV", "Nurbs surface", kNet + "1 1\n0 0\n0 1\n0 1\n1\n.5\n\n"),
        surfaceFault("KnotV", "Nurbs surface", kNet + "1 1\n0 0\n0 1\n0 1\n1\n.5\n1\nx\n"),
        cutOff("CutInNet", "Nurbs surface", "2 2 9\n.5 0 0 1\n.5 1 0 1\n"),
        cutOff("CutInKnots", "Nurbs surface", kNet + "1 1\n0 0\n0 1\n0 1\n2\n.5\n"),
        surfaceFault("MultiCount", "Multipatch surface", "1 1 8\nx\n"),
        surfaceFault("MultiParameter", "Multipatch surface", "1 1 8\n1\nx\n"),
        surfaceFault("MultiSecondCount", "Multipatch surface", "1 1 8\n0\n.x\n"),
        surfaceFault("MultiSecondParameter", "Multipatch surface", "1 1 8\n0\n2\n.5\n-\n"),
        cutOff("MultiCutInFirst", "Multipatch surface", "1 1 8\n2\n.5\n"),
        cutOff("MultiCutBetween", "Multipatch surface", "1 1 8\n0\n"),
        FileRow{"LostSurfaceTakesItsTrimsAlong",
                "2 2 10\nx\n" + kUv + kLine + kText + P,
                kSecondPlane,
                {notRead("Planar surface")}}),
    fileRowName);

INSTANTIATE_TEST_SUITE_P(
    Scalings, ZrnBadFile,
    testing::Values(
        curveFault("Word", "Scale", "2 2 100\nx\n"), cutOff("HeaderOnly", "Scale", "2 2 100\n"),
        FileRow{"SecondIsBad", "2 2 100\n2\n2 2 100\nx\n" + P, kOnlyPlane, {notRead("Scale")}, 2.0},
        FileRow{"TakesFollowingCurvesAlong",
                "2 2 100\nx\n" + kLine + P,
                kOnlyPlane,
                {notRead("Scale")}}),
    fileRowName);

// --- a line too few: the next header is taken for data

INSTANTIATE_TEST_SUITE_P(
    MissingLines, ZrnBadFile,
    testing::Values(
        FileRow{"PolylineTakesTheNextHeader",
                "2 2 1\n.5 0 0\n2 2 10\n0 0 1\n",
                {"1[2,2,1](0.5 0 0 2 2 10)"},
                {E}},  // 0 0 1 is then an unknown entity
        FileRow{"IntervalIsTheFirstRow",
                "2 0 5\n.5 0 0\n.5 1 1\n2 2 10\n0 0 1\n",
                {"5[2,0,5](0 0|0.5 1 1 2 2 10)"},
                {E}},
        FileRow{"ParameterIsTheNextHeader",
                "1 1 8\n2\n.5\n2 2 10\n0 0 1\n",
                {"6[1,1,8](0.5 2|) #0"},
                {}},  // 0 0 1 is a count of zero
        FileRow{"LastNumberIsTheNextHeader",
                kPoles + "1 0\n0 0\n0 1\n0 1\n1\n.5\n2 2 10\n0 0 1\n",
                {"7[2,1,9](0.5 0 0 1 1.5 0 0 1|0 1 0 0 1|0.5)"},
                {E}},
        FileRow{"PlaneIsTheNextHeader", "2 2 10\n2 2 10\n0 0 1\n", {"9[2,2,10](2 2 10) #0"}, {E}},
        FileRow{"FactorIsTheNextHeader", "2 2 100\n2 1 1\n.5 2 3\n", {}, {E}, 2.0}),
    fileRowName);

// --- faults in what belongs to a surface

INSTANTIATE_TEST_SUITE_P(
    TrimmingCurves, ZrnBadFile,
    testing::Values(
        trimFault("UvPolyline", "Polyline", "1 1 2\nx\n"),
        trimFault("UvPolylineOfOne", "Polyline", "1 1 2\n.5\n"),
        trimFault("Polyline", "Polyline", "2 1 1\n.5 0\n"),
        trimFault("Polyline22", "Polyline", "1 0 22\n.5 0\n"),
        trimFault("Polynomial", "Polynomial Curve", "2 1 4\nx\n"),
        trimFault("Trimmed", "Trimmed Polynomial Curve", "2 0 5\n0 1\nx\n"),
        trimFault("Nurbs", "Nurbs Curve", "2 1 9\nx\n"),
        trimFault("Arc", "Arc Curve", "1 1 14\nx\n"),
        trimFault("TakesTheOthersAlong", "Polyline", "1 1 2\nx\n" + kUv + kLine + kText),
        FileRow{"KeepsThoseBefore",
                P + kUv + kArc + "2 1 1\nx\n" + kUv + P,
                {planeNode(0) + " T{" + kUvNode + "}{" + kArcNode + "}", planeNode(1)},
                {trimNotRead("Polyline")}},
        FileRow{"CutOffAtTheEnd", P + "1 1 2\n", {planeNode(0)}, {trimNotRead("Polyline"), E}},
        FileRow{"OfANurbsSurface",
                kSurface + "1 1 2\nx\n" + P,
                {surfaceNode(0), planeNode(1)},
                {trimNotRead("Polyline")}},
        FileRow{"OfAMultipatch",
                kMulti + kPatch + "1 1 2\nx\n" + P,
                {multiNode(0) + " P{" + kPatchNode + "}", planeNode(1)},
                {trimNotRead("Polyline")}},
        FileRow{"BlankLineEndsTheList", P + "\n" + kUv + P, {planeNode(0), planeNode(1)}, {}},
        FileRow{"BlankLineAtTheEnd", P + kUv + "\n", {planeNode(0) + " T{" + kUvNode + "}"}, {}}),
    fileRowName);

INSTANTIATE_TEST_SUITE_P(
    Patches, ZrnBadFile,
    testing::Values(
        FileRow{"FaultTakesTheOthersAlong",
                kMulti + kPatch + "2 2 4\nx\n" + kPatch + kUv + P,
                {multiNode(0) + " P{" + kPatchNode + "}", planeNode(1)},
                {kPatchNotRead}},
        FileRow{"CutOffAtTheEnd", kMulti + "2 2 4\n.5 0 0\n", {multiNode(0)}, {kPatchNotRead, E}},
        FileRow{"CurveIsNone",
                kMulti + kPolynomial + kPatch + P,
                // The curve trims; then the patch is at top level and not read.
                {multiNode(0) + " T{" + kPolynomialNode + "}", planeNode(1)},
                {}},
        FileRow{"BlankLineEndsTheList",
                kMulti + "\n" + kUv + P,
                {multiNode(0) + " T{" + kUvNode + "}", planeNode(1)},
                {}},
        FileRow{"SecondBlankLineEndsTheTrimsToo",
                kMulti + "\n\n" + kUv + P,
                {multiNode(0), planeNode(1)},
                {}}),
    fileRowName);

// --- headers that select nothing

INSTANTIATE_TEST_SUITE_P(
    UnknownHeaders, ZrnBadFile,
    testing::Values(FileRow{"PolylineOfOne", "1 4 1\n.5 0 0\n" + P, kOnlyPlane, {}},
                    FileRow{"Polyline22OfNone", "0 0 22\nx\n" + P, kOnlyPlane, {}},
                    FileRow{"PlaneOfOne", "1 2 10\n.5 0 0\n" + P, kOnlyPlane, {}},
                    FileRow{"Code3", "2 2 3\n" + P, kOnlyPlane, {}},
                    FileRow{"Code257", "2 2 257\n" + P, kOnlyPlane, {}},
                    FileRow{"Negative", "2 2 -10\n" + P, kOnlyPlane, {}},
                    FileRow{"Huge", "2 2 99999999999999999999\n" + P, kOnlyPlane, {}},
                    FileRow{"LowBitsAreAKnownCode", "2 2 4294967306\n" + P, kOnlyPlane, {}},
                    FileRow{"Attribute23", "2 3 210\nx\n" + P, kOnlyPlane, {}},
                    FileRow{"DataOfCurvesBehindItAreRead",
                            "2 2 3\n" + kLine + P,
                            {kLineNode, planeNode(0)},
                            {}},
                    FileRow{"ZeroRow", "1 2 3\n0 0 0\n", {}, {E}},
                    FileRow{"Numbers", "1 2 3\n4 5 6\n7 8 7\n", {}, {E}},
                    FileRow{"NumbersOfFour", "0 0 1 1\n5 5 3 1\n", {}, {E}}),
    fileRowName);

// --- lines that are no headers

INSTANTIATE_TEST_SUITE_P(
    NoHeaders, ZrnBadFile,
    testing::Values(
        FileRow{"Word", "x\n", {}, {E}}, FileRow{"LineFeed", "\n", {}, {E}},
        FileRow{"OneDigit", "2", {}, {E}}, FileRow{"OneNul", bytes("\0"), {}, {E}},
        FileRow{"Blanks", "   ", {}, {E}}, FileRow{"OverTwoLines", "2 2\n10\n0 0 1\n", {}, {E}},
        FileRow{"Commas", "2,2,10\n0 0 1\n", {}, {E}},
        FileRow{"Reals", "2.0 2 10\n.5 0 1\n" + P, kOnlyPlane, {}},
        FileRow{"CommentInFront", "# made by hand\n" + P, kOnlyPlane, {}},
        FileRow{"CommentTakesCurvesAlong", "# made by hand\n" + kLine + P, kOnlyPlane, {}},
        FileRow{
            "BlankLineTakesCurvesAlong", kLine + "\n" + kLine + P, {kLineNode, planeNode(0)}, {}},
        FileRow{"BlankLineBehindASurfaceTakesNone",
                P + "\n" + kLine + P,
                {planeNode(0), kLineNode, planeNode(1)},
                {}},
        FileRow{"TwoBlankLinesBehindASurface",
                P + "\n\n" + kLine + P,
                {planeNode(0), planeNode(1)},
                {}},
        FileRow{"StlText", "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\n", {}, {E}},
        FileRow{"Json", "{\"a\": [2, 2, 10]}\n", {}, {E}},
        FileRow{"Utf16",
                bytes("2\0 \0"
                      "2\0 \0"
                      "1\0"
                      "0\0\n\0"),
                {},
                {E}},
        FileRow{"Binary",
                bytes("\x7f"
                      "ELF\x02\x01\x01\0\0\0\xff\xfe\n\0\0\n"),
                {},
                {E}}),
    fileRowName);

// --- what a skip passes over and where it stops

INSTANTIATE_TEST_SUITE_P(
    Skips, ZrnBadFile,
    testing::Values(
        FileRow{"PassAllSubEntities",
                "x\n" + kLine + kUv + kPolynomial + kPatch + kTrimmed + kNurbs + kArc + kText + P,
                kOnlyPlane,
                {}},
        FileRow{"StopAtAMultipatch", "x\n" + kLine + kMulti, {multiNode(0)}, {}},
        FileRow{"StopAtANurbsSurface", "x\n" + kLine + kSurface, {surfaceNode(0)}, {}},
        FileRow{"StopAtAScaling", "x\n" + kLine + "2 2 100\n5\n" + kLine, {kLineNode}, {}, 5.0},
        FileRow{"StopAtAnUnknownHeader", "x\n" + kLine + "9 9 99\n" + kLine, {kLineNode}, {}},
        FileRow{"StopAtAnUnreadSurface", "x\n" + kLine + "0 0 11\n" + kLine + P, kSecondPlane, {}},
        FileRow{"StopAtDataThatLookLikeAHeader",
                "2 1 1\nx\n1 2 3\n" + kLine + P,
                {kLineNode, planeNode(0)},
                {notRead("Polyline")}},
        FileRow{"EndBehindSubEntitiesIsSaidOnce", "x\n" + kLine + kLine, {}, {E}},
        FileRow{"FaultThenUnreadSurface",
                "2 1 1\nx\n0 0 11\n" + P,
                kSecondPlane,
                {notRead("Polyline")}},
        FileRow{"FaultTakesFollowingCurvesAlong",
                "2 1 1\nx\n" + kLine + kArc + P,
                kOnlyPlane,
                {notRead("Polyline")}},
        FileRow{"TwoFaults",
                "2 1 1\nx\n" + P + "2 2 10\nx\n" + P,
                {planeNode(0), planeNode(2)},
                {notRead("Polyline"), notRead("Planar surface")}},
        FileRow{"TopLevelUvPolyline", kUv + kLine + P, kOnlyPlane, {}},
        FileRow{"TopLevelUvPolylineAtTheEnd", kUv, {}, {E, E}},
        FileRow{"TopLevelPatch", kPatch + kLine + P, kOnlyPlane, {}},
        FileRow{"TopLevelPatchOfHeaders",
                "2 2 4\n0 0 0\n1 0 0\n0 1 0\n1 1 0\n" + kLine + P,
                {kLineNode, planeNode(0)},
                {}},
        FileRow{"TopLevelAttribute", kText + kLine + P, kOnlyPlane, {}},
        FileRow{"SecondAttribute",
                kLine + kText + kText + kLine + P,
                {kLineNode + " @{text\\n}", planeNode(0)},
                {}},
        FileRow{"AttributeBehindAScaling", "2 2 100\n5\n" + kText + kLine, {}, {E}, 5.0},
        FileRow{"AttributeBetweenTrims",
                P + kUv + kText + kLine + kUv + P,
                // It becomes the surface's and ends its trims: the rest is at top level.
                {planeNode(0) + " @{text\\n} T{" + kUvNode + "}", kLineNode, planeNode(1)},
                {}}),
    fileRowName);

// --- counts that no file can hold, and none at all

INSTANTIATE_TEST_SUITE_P(
    Counts, ZrnBadFile,
    testing::Values(
        cutOff("Poles", "Nurbs surface", "2000000000 2000000000 9\n.5 0 0 1\n"),
        cutOff("PolesWhoseProductIsZeroIn32Bits", "Nurbs surface", "65536 65536 9\n.5 0 0 1\n"),
        cutOff("PolesWhoseProductIsZeroIn64Bits", "Nurbs surface",
               "4294967296 4294967296 9\n.5 0 0 1\n"),
        cutOff("PolesOfACurve", "Nurbs Curve", "9223372036854775807 1 9\n.5 0 0 1\n"),
        cutOff("Points", "Polyline", "2 9223372036854775807 1\n.5 0 0\n"),
        cutOff("PointsBeyond64Bits", "Polyline", "2 99999999999999999999 1\n.5 0 0\n"),
        cutOff("Points22", "Polyline", "9223372036854775807 0 22\n.5 0 0\n"),
        cutOff("Coefficients", "Polynomial Curve", "9223372036854775807 1 4\n.5 0 0\n"),
        cutOff("Parameters", "Multipatch surface", "1 1 8\n9223372036854775807\n.5\n"),
        cutOff("ParametersBeyond64Bits", "Multipatch surface",
               "1 1 8\n0\n99999999999999999999\n.5\n"),
        cutOff("Knots", "Nurbs Curve", kPoles + "1 0\n0 0\n0 1\n0 1\n2000000000\n.5\n"),
        cutOff("KnotsOfASurface", "Nurbs surface", kNet + "1 1\n0 0\n0 1\n0 1\n2000000000\n.5\n"),
        FileRow{"PatchOfTwo32BitCounts",
                kMulti + "4294967296 4294967296 4\n.5 0 0\n",
                {multiNode(0)},
                {kPatchNotRead, E}},
        FileRow{"TrimmingCurve",
                P + "9223372036854775807 1 2\n.5 0\n",
                {planeNode(0)},
                {trimNotRead("Polyline"), E}},
        FileRow{"NegativePoints", "2 -1 1\n" + P, {"1[2,-1,1]()", planeNode(0)}, {}},
        FileRow{"NegativePoints22", "-5 0 22\n" + P, {"1[-5,0,22]()", planeNode(0)}, {}},
        FileRow{"LeastPoints",
                "2 -9223372036854775808 1\n" + P,
                {"1[2,-9223372036854775808,1]()", planeNode(0)},
                {}},
        FileRow{"NegativeUvPoints", P + "-1 1 2\n", {planeNode(0) + " T{2[-1,1,2]()}"}, {}},
        FileRow{"NegativeParameters", "1 1 8\n-3\n-4\n", {"6[1,1,8](|) #0"}, {}}),
    fileRowName);

// --- numbers and bytes

INSTANTIATE_TEST_SUITE_P(
    Numbers, ZrnBadFile,
    testing::Values(FileRow{"InfiniteAndNone",
                            "2 2 1\nnan inf -inf\n1e999 -1e999 1e-999\n",
                            {"1[2,2,1](nan inf -inf inf -inf 0)"},
                            {}},
                    FileRow{
                        "Hexadecimal", "2 1 1\n0x10 0x.8 0x1p-1\n", {"1[2,1,1](16 0.5 0.5)"}, {}},
                    FileRow{"BrokenExponents", "2 1 1\n1e 2e+ 3\n", {"1[2,1,1](1 2 3)"}, {}},
                    FileRow{"RunTogether", "2 1 1\n1+2-3\n", {"1[2,1,1](1 2 -3)"}, {}},
                    FileRow{"ScaleOfZero", "2 2 100\n0\n" + P, kOnlyPlane, {}, 0.0},
                    FileRow{"UnitBehindTheFactor", "2 2 100\n25.4mm\n" + P, kOnlyPlane, {}, 25.4}),
    fileRowName);

INSTANTIATE_TEST_SUITE_P(
    Bytes, ZrnBadFile,
    testing::Values(
        FileRow{"CarriageReturns", "2 2 10\r\n0 0 .5\r\n", kOnlyPlane, {}},
        FileRow{"CarriageReturnsOnly", "2 2 10\r0 0 .5\r", {}, {notRead("Planar surface"), E, E}},
        FileRow{"Utf8MarkTakesAPlane", "\xef\xbb\xbf" + P + P, {planeNode(0)}, {}},
        FileRow{"NulHidesTheRest", bytes("2 2 10\0 2 2 100\n0 0 .5\0x\n"), kOnlyPlane, {}},
        FileRow{"NulHidesAHeader",
                bytes("\0"
                      "2 2 10\n0 0 .5\n") +
                    P,
                kOnlyPlane,
                {}},
        FileRow{"EndOfTextByte", P + "\x1a" + P, kOnlyPlane, {E}},
        FileRow{"HeaderCutAt255", std::string(252, ' ') + P, {}, {E}},
        FileRow{"HeaderJustBefore255", std::string(248, ' ') + P, kOnlyPlane, {}},
        // The line feed is the next line: a blank one instead of the plane.
        FileRow{"HeaderOf255", std::string(249, ' ') + P, {}, {notRead("Planar surface"), E, E}},
        FileRow{"PieceIsAHeader", std::string(255, 'x') + P, kOnlyPlane, {}},
        FileRow{"NameOf300",
                "2 1 1 7 " + std::string(300, 'n') + "\n.5 2 3\n",
                {},
                {notRead("Polyline"), E, E}},
        FileRow{"DataLineOf300",
                "2 2 10\n0 0 .5" + std::string(294, ' ') + "\n" + kLine,
                {planeNode(0), kLineNode},
                {}}),
    fileRowName);

}  // namespace
}  // namespace korvo::test
