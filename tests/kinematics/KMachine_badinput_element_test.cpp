// Element lines with faulty operands: whatever a line says, the element takes what it can read and
// keeps defaults for the rest, and the machine says -1 because it has no more than this line.

#include "tests/support/LoadText.h"

#include "tests/kinematics/KMachine_describe.h"

using korvo::test::describe;
using korvo::test::LoadingTest;
using zkin::KMachine;

namespace {

struct ElementRow {
  const char* name;
  int version;
  const char* line;
  const char* expected;  ///< the elements; "" for none
};

std::ostream& operator<<(std::ostream& out, const ElementRow& row) { return out << row.name; }

class BadElementLine : public LoadingTest, public testing::WithParamInterface<ElementRow> {};

TEST_P(BadElementLine, KeepsDefaultsForWhatItCannotRead) {
  const KMachine machine = load(std::string(GetParam().line) + "\n", GetParam().version);
  EXPECT_EQ(result, -1);
  EXPECT_EQ(describe(machine), GetParam().expected);
  EXPECT_EQ(machine.getAxisNum(), 0);
  trace.claimAll(L"... ? Unrecognized stuff");
  trace.claimAll(L"\t(geom. file not found");
}

const auto rowName = [](const auto& info) { return std::string(info.param.name); };

INSTANTIATE_TEST_SUITE_P(
    Keyword, BadElementLine,
    testing::Values(
        ElementRow{"Unknown", 2, "spindle=1,2,3", ""}, ElementRow{"Empty", 2, "=x,y,z", ""},
        ElementRow{"OnlyEqualSign", 2, "=", ""}, ElementRow{"ManyEqualSigns", 2, "====", ""},
        ElementRow{"Truncated", 2, "axi=X,x", ""}, ElementRow{"TooLong", 2, "axiss=X,x", ""},
        ElementRow{"Plural", 2, "axes=X,x", ""}, ElementRow{"Quoted", 2, "\"axis\"=X,x", ""},
        ElementRow{"ColonForEqualSign", 2, "axis:X,x", ""},
        ElementRow{"NoEqualSign", 2, "axisX,x", ""}, ElementRow{"CommaInFront", 2, ",axis=X,x", ""},
        ElementRow{"Accent", 2, "\xe2xis=X,x", ""}, ElementRow{"Number", 2, "1=X,x", ""},
        ElementRow{"Bracket", 2, "[frame]", ""}, ElementRow{"Xml", 2, "<frame/>", ""},
        ElementRow{"CommentedOut", 2, "#axis=X,x", ""}, ElementRow{"Starred", 2, "*axis=X,x", ""},
        ElementRow{"ControlCharacter", 2,
                   "\x01"
                   "axis=X,x",
                   ""}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    LinearAxis, BadElementLine,
    testing::Values(
        ElementRow{"KeywordOnly", 2, "axis", "(0<-10)"},
        ElementRow{"NoOperands", 2, "axis=", "(0<-10)"},
        ElementRow{"EmptyName", 2, "axis=,x", "(0<-10) dir 1 0 0"},
        ElementRow{"NameOnly", 2, "axis=X", "X(1<-10)"},
        ElementRow{"UnknownName", 2, "axis=Q,x", "Q(0<-10) dir 1 0 0"},
        ElementRow{"RotaryName", 2, "axis=A,x", "A(0<-10) dir 1 0 0"},
        ElementRow{"NumberedName", 2, "axis=X1,x", "X1(0<-10) dir 1 0 0"},
        ElementRow{"PrefixOnly", 2, "axis=AXE_,x", "(0<-10) dir 1 0 0"},
        ElementRow{"TwoPrefixes", 2, "axis=AXE_AXE_X,x", "AXE_X(0<-10) dir 1 0 0"},
        ElementRow{"LowerCaseName", 2, "axis=axe_x,x", "X(1<-10) dir 1 0 0"},
        ElementRow{"TwoNumbers", 2, "axis=X,1,0", "X(1<-10) file 1 200 200 200"},
        ElementRow{"WordInVector", 2, "axis=X,1,0,zero", "X(1<-10) file 1 200 200 200"},
        ElementRow{"EmptyInVector", 2, "axis=X,1,,0", "X(1<-10) file 1 200 200 200"},
        ElementRow{"EmptyVector", 2, "axis=X,,,", "X(1<-10)"},
        ElementRow{"NullVector", 2, "axis=X,0,0,0", "X(1<-10)"},
        ElementRow{"LongVector", 2, "axis=X,0,0,-250", "X(1<-10) dir 0 0 -1"},
        ElementRow{"HugeVector", 2, "axis=X,0,1e300,0", "X(1<-10) dir 0 1 0"},
        ElementRow{"TinyVector", 2, "axis=X,0,0,1e-300", "X(1<-10) dir 0 0 1"},
        ElementRow{"AxisWordUnknown", 2, "axis=X,w", "X(1<-10) file w 200 200 200"},
        ElementRow{"AxisWordTwoSigns", 2, "axis=X,--x", "X(1<-10) file --x 200 200 200"},
        ElementRow{"AxisWordSignBehind", 2, "axis=X,x-", "X(1<-10) file x- 200 200 200"},
        ElementRow{"AxisWordDoubled", 2, "axis=X,xx", "X(1<-10) file xx 200 200 200"},
        ElementRow{"AxisWordUpperCase", 2, "axis=X,-Y", "X(1<-10) dir 0 -1 0"},
        ElementRow{"SemicolonsForCommas", 2, "axis=X;1;0;0", "X;1;0;0(0<-10)"},
        ElementRow{"DecimalCommas", 2, "axis=X,1,0,0,0,0,0",
                   "X(1<-10) dir 1 0 0 file 0 200 200 200"},
        ElementRow{"Version1NumberForVector", 1, "axis=X,1,0,0", "X(1<-10) file 0 200 200 200"},
        ElementRow{"Version1NoNumber", 1, "axis=X,x", "X(0<-10) dir 1 0 0"},
        ElementRow{"Version1NumberIsAWord", 1, "axis=X,one,x", "X(0<-10) file one 200 200 200"},
        ElementRow{"Version1NumberOnly", 1, "axis=X,7", "X(7<-10)"},
        ElementRow{"Version1RealNumber", 1, "axis=X,7.9,x", "X(7<-10) dir 1 0 0"},
        ElementRow{"Version1ZeroNumber", 1, "axis=X,0,x", "X(0<-10) dir 1 0 0"},
        ElementRow{"Version1NegativeNumber", 1, "axis=X,-5,x", "X(-5<-10) dir 1 0 0"},
        ElementRow{"Version1NumberTooLarge", 1, "axis=X,-99999999999,x",
                   "X(-1215752191<-10) dir 1 0 0"},
        ElementRow{"Version1EmptyNumber", 1, "axis=X,,x", "X(0<-10)"},
        ElementRow{"Version1KeepsPrefixAndCase", 1, "axis=axe_X,2,x", "axe_X(2<-10) dir 1 0 0"},
        ElementRow{"Version1Vector", 1, "axis=X,1,0,0,1", "X(1<-10) dir 0 0 1"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    RotaryAxis, BadElementLine,
    testing::Values(
        ElementRow{"KeywordOnly", 2, "rotation", "(0<-10)"},
        ElementRow{"NameOnly", 2, "rotation=C", "C(6<-10)"},
        ElementRow{"LinearName", 2, "rotation=X,x", "X(0<-10) dir 1 0 0"},
        ElementRow{"UnknownName", 2, "rotation=D,x", "D(0<-10) dir 1 0 0"},
        ElementRow{"NoPoint", 2, "rotation=A,x", "A(4<-10) dir 1 0 0"},
        // Up to two integers before the point are skipped: a point of whole numbers without them
        // is eaten.
        ElementRow{"PointWithoutTheTwoNumbers", 2, "rotation=B,y,0,0,100",
                   "B(5<-10) dir 0 1 0 file 100 200 200 200"},
        ElementRow{"RealsAreSkippedToo", 2, "rotation=B,y,0.5,0.5,100",
                   "B(5<-10) dir 0 1 0 file 100 200 200 200"},
        ElementRow{"OneNumberThenPoint", 2, "rotation=B,y,1,0,0,100",
                   "B(5<-10) dir 0 1 0 file 0 200 200 200"},
        ElementRow{"VectorOfNumbersThenPoint", 2, "rotation=AXE_B,0,1,0,0,0,100",
                   "B(5<-10) dir 0 1 0 file 100 200 200 200"},
        ElementRow{"TwoNumbersThenPoint", 2, "rotation=B,y,1,1,0,0,100",
                   "B(5<-10) dir 0 1 0 at 0 0 100"},
        ElementRow{"WordsAreNotSkipped", 2, "rotation=B,y,on,on,0,0,100",
                   "B(5<-10) dir 0 1 0 file on 0 0 0"},
        ElementRow{"PointByAxisWord", 2, "rotation=B,y,x", "B(5<-10) dir 0 1 0 at 1 0 0"},
        ElementRow{"PointNotNormalised", 2, "rotation=B,y,1,1,3,4,5",
                   "B(5<-10) dir 0 1 0 at 3 4 5"},
        ElementRow{"PointWithWord", 2, "rotation=B,y,1,1,3,4,five",
                   "B(5<-10) dir 0 1 0 file 3 200 200 200"},
        ElementRow{"PointWithoutFirst", 2, "rotation=B,y,1,1,,4,5", "B(5<-10) dir 0 1 0"},
        ElementRow{"PointOverflows", 2, "rotation=B,y,1,1,1e999,0,-1e999",
                   "B(5<-10) dir 0 1 0 at inf 0 -inf"},
        ElementRow{"UnreadableAxis", 2, "rotation=B,q,1,1,0,0,5", "B(5<-10) file q 1 1 0"},
        ElementRow{"NullAxis", 2, "rotation=B,0,0,0,1,1,7,8,9", "B(5<-10) at 7 8 9"},
        ElementRow{"ThreeNumbersBeforeThePoint", 2, "rotation=B,y,1,1,1,0,0,5",
                   "B(5<-10) dir 0 1 0 at 1 0 0 file 5 200 200 200"},
        ElementRow{"Version1", 1, "rotation=B,5,y,0,0,0,0,100", "B(5<-10) dir 0 1 0 at 0 0 100"},
        ElementRow{"Version1NoNumber", 1, "rotation=B,y,1,1,0,0,9", "B(0<-10) dir 0 1 0 at 0 0 9"},
        ElementRow{"Version1NumberEatsTheVector", 1, "rotation=B,0,1,0,0,0,9",
                   "B(0<-10) dir 1 0 0"},
        ElementRow{"Version1NumberOnly", 1, "rotation=B,5", "B(5<-10)"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Frame, BadElementLine,
    testing::Values(
        ElementRow{"EmptyOperands", 2, "frame=", "BATI(0<-10)"},
        ElementRow{"Commas", 2, "frame=,,,", "BATI(0<-10)"},
        ElementRow{"VectorIsNotNormalised", 2, "frame=0,0,5", "BATI(0<-10) dir 0 0 5"},
        ElementRow{"TwoNumbers", 2, "frame=0,5", "BATI(0<-10) file 0 200 200 200"},
        ElementRow{"File", 2, "frame=z,a.stl", "BATI(0<-10) dir 0 0 1 file a.stl 200 200 200"},
        ElementRow{"FileWithoutVector", 2, "frame=a.stl", "BATI(0<-10) file a.stl 200 200 200"},
        ElementRow{"Version1HasNoVector", 1, "frame=z", "BATI(0<-10) file z 200 200 200"},
        ElementRow{"Version1Numbers", 1, "bati=0,0,1,5", "BATI(0<-10) file 0 0 1 5"},
        ElementRow{"SecondEqualSign", 2, "frame=z=a.stl", "BATI(0<-10) dir 0 0 1"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Part, BadElementLine,
    testing::Values(
        ElementRow{"Version2IgnoresItsVectors", 2, "part=z,x", "PIECE(-1<-10) dir 0 0 1 vX 1 0 0"},
        ElementRow{"Version2WithoutOperands", 2, "part", "PIECE(-1<-10) dir 0 0 1 vX 1 0 0"},
        ElementRow{"Version2UnreadableVectors", 2, "part=left,right",
                   "PIECE(-1<-10) dir 0 0 1 vX 1 0 0 file left 200 200 200"},
        // Deliberate: the position of the part is read and dropped.
        ElementRow{"PositionIsDropped", 2, "part=x,y,10,20,30", "PIECE(-1<-10) dir 0 0 1 vX 1 0 0"},
        ElementRow{"PositionThenFile", 2, "part=x,y,10,20,30,a.stl,1,2,3",
                   "PIECE(-1<-10) dir 0 0 1 vX 1 0 0 file a.stl 1 2 3"},
        ElementRow{"FileWithoutPosition", 2, "part=x,y,a.stl",
                   "PIECE(-1<-10) dir 0 0 1 vX 1 0 0 file a.stl 200 200 200"},
        ElementRow{"Version1", 1, "part=y,z", "PIECE(-1<-10) dir 1 0 0 vX 0 1 0"},
        ElementRow{"Version1Lengths", 1, "part=0,0,2,3,0,0", "PIECE(-1<-10) dir 0 1 0 vX 0 0 1"},
        ElementRow{"Version1ParallelVectors", 1, "part=x,-x", "PIECE(-1<-10) vX 1 0 0"},
        ElementRow{"Version1OneVector", 1, "part=x", "PIECE(-1<-10) vX 1 0 0"},
        ElementRow{"Version1NullVectors", 1, "part=0,0,0,0,0,0", "PIECE(-1<-10)"},
        ElementRow{"Version1Unreadable", 1, "part=left,right",
                   "PIECE(-1<-10) file left 200 200 200"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    ToolAndGun, BadElementLine,
    testing::Values(ElementRow{"NoOperands", 2, "tool=", "OUTIL(-101<-10)"},
                    ElementRow{"AxisOnly", 2, "tool=-z", "OUTIL(-101<-10) dir 0 0 -1"},
                    ElementRow{"PointTooShort", 2, "tool=z,1,2",
                               "OUTIL(-101<-10) dir 0 0 1 file 1 200 200 200"},
                    ElementRow{"PointWithWord", 2, "tool=z,1,two,3",
                               "OUTIL(-101<-10) dir 0 0 1 file 1 200 200 200"},
                    ElementRow{"UnreadableAxisThenPoint", 2, "tool=up,1,2,3",
                               "OUTIL(-101<-10) file up 1 2 3"},
                    ElementRow{"EmptyAxis", 2, "tool=,1,2,3", "OUTIL(-101<-10)"},
                    ElementRow{"NullAxis", 2, "tool=0,0,0,1,2,3", "OUTIL(-101<-10) at 1 2 3"},
                    ElementRow{"FileAndColour", 2, "tool=z,0,0,0,holder.stl,255,0,0",
                               "OUTIL(-101<-10) dir 0 0 1 file holder.stl 255 0 0"},
                    ElementRow{"ColourWithWord", 2, "tool=z,0,0,9,h.stl,255,red,1",
                               "OUTIL(-101<-10) dir 0 0 1 at 0 0 9 file h.stl 255 0 0"},
                    ElementRow{"GunNoOperands", 2, "gun=", "DRILL(-101<-10)"},
                    ElementRow{"GunAxisOnly", 1, "gun=x", "DRILL(-101<-10) dir 1 0 0"},
                    ElementRow{"GunPointOverflows", 2, "gun=x,1e999,0,0",
                               "DRILL(-101<-10) dir 1 0 0 at inf 0 0"},
                    ElementRow{"GunPointTooShort", 1, "canon=x,5",
                               "DRILL(-101<-10) dir 1 0 0 file 5 200 200 200"},
                    ElementRow{"OperandsBehindAreIgnored", 2, "tool=z,0,0,5,h.stl,1,2,3,4,5,6",
                               "OUTIL(-101<-10) dir 0 0 1 at 0 0 5 file h.stl 1 2 3"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Geometry, BadElementLine,
    testing::Values(
        ElementRow{"NoOperands", 2, "geom=", "GEOM(-201<-10)"},
        ElementRow{"EmptyName", 2, "geom=,1,2,3", "GEOM(-201<-10)"},
        ElementRow{"Number", 2, "geom=5", "GEOM(-201<-10) file 5 200 200 200"},
        ElementRow{"ColourTooShort", 2, "geom=a.stl,1,2", "GEOM(-201<-10) file a.stl 200 200 200"},
        ElementRow{"ColourUnreadable", 2, "geom=a.stl,r,g,b", "GEOM(-201<-10) file a.stl 0 0 0"},
        ElementRow{"ColourFirstUnreadable", 2, "geom=a.stl,r,1,2",
                   "GEOM(-201<-10) file a.stl 0 0 0"},
        ElementRow{"ColourLastUnreadable", 1, "geom=a.stl,1,2,b",
                   "GEOM(-201<-10) file a.stl 1 2 0"},
        ElementRow{"ColourOverflows", 2, "geom=a.stl,99999999999,0,0",
                   "GEOM(-201<-10) file a.stl 1215752191 0 0"},
        ElementRow{"QuotesArePartOfTheName", 2, "geom=\"a.stl\"",
                   "GEOM(-201<-10) file \"a.stl\" 200 200 200"},
        ElementRow{"CommentCutsTheName", 2, "geom=a#1.stl", "GEOM(-201<-10) file a 200 200 200"},
        ElementRow{"EqualSignCutsTheName", 2, "geom=a=1.stl", "GEOM(-201<-10) file a 200 200 200"},
        ElementRow{"BlankLeavesTheName", 2, "geom=my part.stl",
                   "GEOM(-201<-10) file mypart.stl 200 200 200"},
        ElementRow{"SharpInFront", 2, "geom=#a.stl", "GEOM(-201<-10)"}),
    rowName);

}  // namespace
