// Definition files that are as they should be: which file, which lines, which keywords, which
// chains. Faulty files are in KMachine_badinput_test.cpp.

#include "tests/support/LoadText.h"

#include <sstream>

#include "tests/kinematics/KMachine_describe.h"

using korvo::test::chainWords;
using korvo::test::describe;
using korvo::test::LoadingTest;
using korvo::test::noPositionLine;
using korvo::test::TempDir;
using zkin::KMachine;
using zkin::KMachineElem;

namespace {

const char* const kMill =
    "frame\naxis=X,x\naxis=Y,y\npart=x,y\nlien=BATI\naxis=Z,z\ntool=z,0,0,50\n";

// --- which file

TEST(DefinitionFile, ConstructorStoresPathAndVersionAndReadsNothing) {
  const TempDir folder;
  const KMachine machine(folder.write("m.def", kMill).wstring().c_str(), 2);
  EXPECT_EQ(machine.getDataFilePNE(), (folder.path() / "m.def").wstring());
  EXPECT_EQ(machine.getVersion(), 2);
  EXPECT_EQ(machine.getElemNumber(), 0);
  EXPECT_EQ(machine.getAxisNum(), 0);
}

TEST(DefinitionFile, NullPathIsTheEmptyPath) {
  KMachine machine(nullptr, 2);
  EXPECT_EQ(machine.getDataFilePNE(), L"");
  EXPECT_EQ(machine.readDataFile(), -1);
}

TEST(DefinitionFile, WideAndNarrowPathsNameTheSameFile) {
  KMachine wide, narrow;
  wide.setDataFilePNE(L"/no/such/\u00e9.def", 1);
  narrow.setDataFilePNE(std::string("/no/such/\xc3\xa9.def"), 3);
  EXPECT_EQ(wide.getDataFilePNE(), L"/no/such/\u00e9.def");
  EXPECT_EQ(narrow.getDataFilePNE(), wide.getDataFilePNE());
  EXPECT_EQ(wide.getVersion(), 1);
  EXPECT_EQ(narrow.getVersion(), 3);
}

TEST_F(LoadingTest, WholeFileGivesResultOfFinalise) {
  const KMachine machine = load(kMill, 2);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(machine.getElemNumber(), 6);
  EXPECT_EQ(machine.getAxisNum(), 3);
  const KMachine incomplete = load("frame\naxis=X,x\ntool=z,0,0,0\n", 2);
  EXPECT_EQ(result, -1);
  EXPECT_EQ(incomplete.getElemNumber(), 3);
  EXPECT_EQ(trace.claimAll(L"... ? Unrecognized stuff"), 2);
}

TEST_F(LoadingTest, VersionZeroReadsNothingAndChangesNothing) {
  const TempDir folder;
  KMachine machine;
  machine.setDataFilePNE(folder.write("m.def", kMill).wstring(), 2);
  ASSERT_EQ(machine.readDataFile(), 0);
  trace.claimAll(L"e[");
  const std::string before = describe(machine);
  machine.setVersion(0);
  EXPECT_EQ(machine.readDataFile(), -1);
  EXPECT_EQ(describe(machine), before);
  EXPECT_EQ(machine.getAxisNum(), 3);
}

TEST_F(LoadingTest, MissingFileChangesNothing) {
  const TempDir folder;
  KMachine machine;
  machine.setDataFilePNE(
      folder.write("m.def", std::string(kMill) + "rotationpoint=1,2\n").wstring(), 2);
  ASSERT_EQ(machine.readDataFile(), 0);
  trace.claimAll(L"e[");
  const std::string before = describe(machine);
  machine.setDataFilePNE((folder.path() / "gone.def").wstring(), 1);
  EXPECT_EQ(machine.readDataFile(), -1);
  EXPECT_EQ(describe(machine), before);
  EXPECT_EQ(machine.getAxisNum(), 3);
  EXPECT_NE(machine.getRotationPoint(0), nullptr);
  EXPECT_NE(machine.getAxisElem(1), nullptr);
  EXPECT_EQ(machine.getVersion(), 1);
}

TEST_F(LoadingTest, AnyVersionButTwoReadsAsOne) {
  for (const int version : {1, 3, -1, 100}) {
    const KMachine machine = load("axis=AXE_Q,7,x\n", version);
    EXPECT_EQ(describe(machine), "AXE_Q(7<-10) dir 1 0 0") << version;
    EXPECT_EQ(machine.getVersion(), version);
  }
}

TEST_F(LoadingTest, BackslashesInThePathOpenTheFileOnEverySystem) {
  const TempDir folder;
  folder.write("sub/Mill.def", kMill);
  KMachine machine;
  machine.setDataFilePNE(folder.path().wstring() + L"\\SUB\\mill.DEF", 2);
  EXPECT_EQ(machine.readDataFile(), 0);
  claimFinalise(machine);
}

// --- lines: the strategy that the text leaves says which lines counted

struct LineRow {
  const char* name;
  std::string text;
  int strategy;
};

std::ostream& operator<<(std::ostream& out, const LineRow& row) { return out << row.name; }

const auto rowName = [](const auto& info) { return std::string(info.param.name); };

class LineCleaning : public LoadingTest, public testing::WithParamInterface<LineRow> {};

TEST_P(LineCleaning, LeavesStrategy) {
  EXPECT_EQ(load(GetParam().text, 2).getStrategy(), GetParam().strategy);
  EXPECT_EQ(result, -1);
}

const std::string kLongTail(1300, 'x');

INSTANTIATE_TEST_SUITE_P(
    Machine, LineCleaning,
    testing::Values(
        LineRow{"Plain", "strategy=2\n", 2}, LineRow{"WithoutFinalLineFeed", "strategy=2", 2},
        LineRow{"CarriageReturn", "strategy=2\r\nmode=1\r\n", 2},
        LineRow{"BlanksEverywhere", "  s t r a t e g y  =  1 2  \n", 12},
        LineRow{"TabsEverywhere", "\tstra\ttegy\t=\t1\t2\t\n", 12},
        LineRow{"VerticalTabAndFormFeed", "\v\fstrategy\v=\f3\n", 3},
        LineRow{"EmptyLinesBetween", "\n\n\r\n   \n\t\nstrategy=4\n\n", 4},
        LineRow{"CommentBehind", "strategy=2 # fast", 2},
        LineRow{"CommentCutsTheNumber", "strategy=1#2", 1},
        LineRow{"CommentCutsEverything", "#strategy=2", 0},
        LineRow{"SecondCommentSignIsComment", "strategy=2 # a # strategy=3", 2},
        LineRow{"NoteLine", "# note\nstrategy=2\n", 2}, LineRow{"StarLine", "*** strategy=3\n", 0},
        LineRow{"SlashLine", "// strategy=3\n", 0}, LineRow{"OneSlashIsEnough", "/strategy=3\n", 0},
        LineRow{"BlanksBeforeStar", "   * strategy=3\n", 0},
        LineRow{"BlanksBeforeSharp", "  \t # strategy=3\n", 0},
        LineRow{"StarInsideIsText", "strategy=3*2\n", 3},
        LineRow{"UpperCaseKeyword", "STRATEGY=2\n", 2},
        LineRow{"MixedCaseKeyword", "StraTeGIe=2\n", 2},
        LineRow{"LastLineWins", "strategy=1\nstrategie=9\n", 9},
        LineRow{"NegativeNumber", "strategy=-3", -3}, LineRow{"SignedNumber", "strategy=+3", 3},
        LineRow{"NumberPrefix", "strategy=12abc", 12}, LineRow{"RealIsCut", "strategy=2.9", 2},
        LineRow{"FirstOperandOnly", "strategy=5,6", 5},
        LineRow{"ThirdPartIgnored", "strategy=5=6", 5},
        LineRow{"EqualSignsInARowAreOne", "strategy==5", 5},
        LineRow{"EqualSignInFrontIsNothing", "=strategy=5", 5},
        LineRow{"UnreadableGivesZero", "strategy=7\nstrategy=fast", 0},
        LineRow{"EmptyGivesZero", "strategy=7\nstrategy=", 0},
        LineRow{"KeywordAloneGivesZero", "strategy=7\nstrategy", 0},
        LineRow{"EmptyFirstOperandGivesZero", "strategy=7\nstrategy=,5", 0},
        LineRow{"HexIsItsZero", "strategy=0x10", 0},
        LineRow{"TooLargeKeepsLowBits", "strategy=99999999999", 1215752191},
        LineRow{"LongLineIsCutAndItsRestIgnored", "strategy=2" + kLongTail + "\nmode=1\n", 2},
        LineRow{"RestOfALongLineIsNoLine", std::string(1203, 'x') + "strategy=3\n", 0},
        LineRow{"NumberCutAtTheLineEnd", "strategy=" + std::string(1193, '0') + "1" + "9\n",
                1},  // 9 + 1193 + 1 = 1203
        LineRow{"LineOfFullLength", std::string(1193, ' ') + "strategy=4\nmode=2\n", 4},
        LineRow{"LineAfterALongLine", kLongTail + kLongTail + "\nstrategy=6\n", 6},
        LineRow{"ByteOrderMarkAtTheStart", "\xef\xbb\xbfstrategy=2\n", 2},
        LineRow{"ByteOrderMarkElsewhereIsText", "\n\xef\xbb\xbfstrategy=2\n", 0},
        LineRow{"SecondByteOrderMarkIsText", "\xef\xbb\xbf\xef\xbb\xbfstrategy=2\n", 0},
        LineRow{"PartOfAMarkIsText", "\xef\xbbstrategy=2\n", 0},
        LineRow{"BytesAbove127DoNotStopTheFile", "# \xe9t\xe9 \xff\nstrategy=8\n", 8},
        LineRow{"OldMacFileIsOneLine", "# note\rstrategy=2\r", 0}),
    rowName);

TEST_F(LoadingTest, ModeIsReadAsStrategyIs) {
  EXPECT_EQ(load("mode=3\n", 2).getMode_RTCP(), 3);
  EXPECT_EQ(load("MODE = -4 # x\n", 1).getMode_RTCP(), -4);
  EXPECT_EQ(load("mode=3\nmode=on\n", 2).getMode_RTCP(), 0);
  EXPECT_EQ(load("mode=3\nmode\n", 2).getMode_RTCP(), 0);
  EXPECT_EQ(load("strategy=3\n", 2).getMode_RTCP(), 0);
}

TEST_F(LoadingTest, BytesOfNamesAreLatin1Characters) {
  const KMachine machine = load("axis=caf\xe9,9,x\n", 1);
  ASSERT_EQ(machine.getElemNumber(), 1);
  EXPECT_EQ(machine.getElemByRank(0)->getElemName(), L"caf\u00e9");
}

TEST_F(LoadingTest, BlanksInsideNamesDisappear) {
  EXPECT_EQ(describe(load("axis = my long name , 9 , x\n", 1)), "mylongname(9<-10) dir 1 0 0");
}

// --- keywords

struct KeywordRow {
  const char* keyword;
  const char* expected;
};

std::ostream& operator<<(std::ostream& out, const KeywordRow& row) { return out << row.keyword; }

const auto keywordName = [](const auto& row) { return std::string(row.param.keyword); };

class ElementKeyword : public LoadingTest, public testing::WithParamInterface<KeywordRow> {};

TEST_P(ElementKeyword, MakesElementInAnyCase) {
  const std::string word = GetParam().keyword;
  std::string upper = word;
  for (char& c : upper) c = static_cast<char>(c - 'a' + 'A');
  EXPECT_EQ(describe(load(word + "\n", 1)), GetParam().expected);
  EXPECT_EQ(describe(load(upper + "\n", 1)), GetParam().expected);
  trace.claimAll(L"... ? Unrecognized stuff");
}

INSTANTIATE_TEST_SUITE_P(
    Machine, ElementKeyword,
    testing::Values(KeywordRow{"bati", "BATI(0<-10)"}, KeywordRow{"frame", "BATI(0<-10)"},
                    KeywordRow{"piece", "PIECE(-1<-10)"}, KeywordRow{"table", "PIECE(-1<-10)"},
                    KeywordRow{"part", "PIECE(-1<-10)"}, KeywordRow{"outil", "OUTIL(-101<-10)"},
                    KeywordRow{"tool", "OUTIL(-101<-10)"}, KeywordRow{"geom", "GEOM(-201<-10)"},
                    KeywordRow{"geometry", "GEOM(-201<-10)"},
                    KeywordRow{"canon", "DRILL(-101<-10)"}, KeywordRow{"gun", "DRILL(-101<-10)"},
                    KeywordRow{"drillgun", "DRILL(-101<-10)"}),
    keywordName);

TEST_F(LoadingTest, AxisKeywordsMakeAxes) {
  for (const char* word : {"axe", "axis", "translation", "AXE", "Translation"}) {
    const KMachine machine = load(std::string(word) + "=X,x\n", 2);
    ASSERT_EQ(machine.getElemNumber(), 1) << word;
    EXPECT_EQ(machine.getElemByRank(0)->getElemType(), KMachineElem::KMET_TYPE_ALIN);
  }
  const KMachine machine = load("rotation=AXE_B,y,1,1,0,0,100\n", 2);
  EXPECT_EQ(describe(machine), "B(5<-10) dir 0 1 0 at 0 0 100");
  EXPECT_EQ(machine.getElemByRank(0)->getElemType(), KMachineElem::KMET_TYPE_AROT);
}

// --- chains

TEST_F(LoadingTest, ConsecutiveElementLinesFormAChain) {
  const KMachine machine = load("frame\naxis=X,x\naxis=Y,y\ntool=z,0,0,0\n", 2);
  EXPECT_EQ(describe(machine),
            "BATI(0<-10); X(1<0) dir 1 0 0; Y(2<1) dir 0 1 0; OUTIL(-101<2) dir 0 0 1");
  EXPECT_EQ(trace.claimAll(L"... ? Unrecognized stuff"), 2);
}

struct ChainRow {
  const char* name;
  const char* text;
  int version;
  int result;
  const char* elements;  ///< name(index<previous) and "inv", in rank order
  const char* toolChain;
};

std::ostream& operator<<(std::ostream& out, const ChainRow& row) { return out << row.name; }

std::string links(const KMachine& machine) {
  korvo::test::WordStream out;
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    const KMachineElem& e = *machine.getElemByRank(rank);
    out << (rank ? " " : "") << korvo::test::narrow(e.getElemName()) << '(' << e.getElemIndex()
        << '<' << e.getPrevIndex() << ')' << (e.isInverted() ? "inv" : "");
  }
  return out.str();
}

class Links : public LoadingTest, public testing::WithParamInterface<ChainRow> {};

TEST_P(Links, JoinElements) {
  const KMachine machine = load(GetParam().text, GetParam().version);
  trace.claimAll(L"... ? Unrecognized stuff");
  EXPECT_EQ(result, GetParam().result);
  EXPECT_EQ(links(machine), GetParam().elements);
  EXPECT_EQ(chainWords(machine.getToolChain(false, 1)), GetParam().toolChain);
}

INSTANTIATE_TEST_SUITE_P(
    Machine, Links,
    testing::Values(
        ChainRow{"PartSideThenToolSide", kMill, 2, 0,
                 "BATI(0<1)inv X(1<2)inv Y(2<-1)inv PIECE(-1<-10) Z(3<0) OUTIL(-101<3)",
                 "PIECE Y X BATI Z OUTIL"},
        ChainRow{"ToolSideThenPartSide",
                 "frame\naxis=Z,z\ntool=z,0,0,0\nlien=BATI\naxis=X,x\npart=x,y\n", 2, 0,
                 "BATI(0<1)inv Z(3<0) OUTIL(-101<3) X(1<-1)inv PIECE(-1<-10)",
                 "PIECE X BATI Z OUTIL"},
        ChainRow{"PartOnTheFrame", "frame\npart\nlien=BATI\naxis=Z,z\ntool\n", 2, 0,
                 "BATI(0<-1)inv PIECE(-1<-10) Z(3<0) OUTIL(-101<3)", "PIECE BATI Z OUTIL"},
        ChainRow{"PartFirstCarriesTheFrame", "part\nframe\naxis=Z,z\ntool\n", 2, 0,
                 "PIECE(-1<-10) BATI(0<-1) Z(3<0) OUTIL(-101<3)", "PIECE BATI Z OUTIL"},
        ChainRow{"PartBehindTheToolReversesTheToolChain", "frame\naxis=Z,z\ntool\npart\n", 2, 0,
                 "BATI(0<3)inv Z(3<-101)inv OUTIL(-101<-1)inv PIECE(-1<-10)", "PIECE OUTIL"},
        ChainRow{"LinkToAMiddleAxisCutsTheFrameOff",
                 "frame\naxis=X,x\naxis=Y,y\ntool\nlien=X\nrotation=C,z\npart\n", 2, 0,
                 "BATI(0<-10) X(1<6)inv Y(2<1) OUTIL(-101<2) C(6<-1)inv PIECE(-1<-10)",
                 "PIECE C X Y OUTIL"},
        ChainRow{"TwoTools", "frame\naxis=X,x\ntool\nlien=X\naxis=Z,z\ntool\n", 2, -1,
                 "BATI(0<-10) X(1<0) OUTIL(-101<1) Z(3<1) OUTIL(-102<3)", "BATI X OUTIL"},
        ChainRow{"GunsAndToolsShareTheirNumbers", "frame\ngun\nlien=BATI\ntool\nlien=BATI\ncanon\n",
                 2, -1, "BATI(0<-10) DRILL(-101<0) OUTIL(-102<0) DRILL(-103<0)", "BATI DRILL"},
        ChainRow{"ToolOnATool", "frame\ntool\ntool\n", 2, -1,
                 "BATI(0<-10) OUTIL(-101<0) OUTIL(-102<-101)", "BATI OUTIL"},
        ChainRow{"GeometryIsALinkOfTheChain", "frame\ngeom\naxis=X,x\ngeom\ntool\n", 2, -1,
                 "BATI(0<-10) GEOM(-201<0) X(1<-201) GEOM(-202<1) OUTIL(-101<-202)",
                 "BATI GEOM X GEOM OUTIL"},
        ChainRow{"UnknownLinkKeepsTheLink", "frame\naxis=X,x\nlien=Q\ntool\n", 2, -1,
                 "BATI(0<-10) X(1<0) OUTIL(-101<1)", "BATI X OUTIL"},
        // Deliberate: no list: the comma belongs to the name.
        ChainRow{"LinkNameIsTheWholeOperandPart",
                 "frame\naxis=X,x\nlien=BATI\ntool\nlien=X,q\ntool\nlien=X,\ntool\n", 2, -1,
                 "BATI(0<-10) X(1<0) OUTIL(-101<0) OUTIL(-102<-101) OUTIL(-103<-102)",
                 "BATI OUTIL"},
        // Deliberate: a link that is not found forgets where the reversal stops.
        ChainRow{"UnknownLinkForgetsTheStop",
                 "frame\naxis=X,x\naxis=Y,y\ntool\nlien=X\nlien=Q\nrotation=C,z\npart\n", 2, 0,
                 "BATI(0<1)inv X(1<6)inv Y(2<1) OUTIL(-101<2) C(6<-1)inv PIECE(-1<-10)",
                 "PIECE C X Y OUTIL"},
        ChainRow{"SecondPartTurnsTheFrameToIt",
                 "frame\naxis=X,x\npart\nlien=BATI\npart\nlien=BATI\ntool\n", 2, -1,
                 "BATI(0<-1) X(1<-1)inv PIECE(-1<-10) PIECE(-1<-10) OUTIL(-101<0)",
                 "PIECE BATI OUTIL"},
        ChainRow{"ReversalWalksOnThroughAnEarlierPart", "frame\naxis=X,x\npart\naxis=Y,y\npart\n",
                 2, -1, "BATI(0<1)inv X(1<-1)inv PIECE(-1<2)inv Y(2<-1)inv PIECE(-1<-10)", ""},
        ChainRow{"Version2LinkDropsThePrefix",
                 "frame\naxis=AXE_X,x\nlien=BATI\ntool\nlien=axe_x\ntool", 2, -1,
                 "BATI(0<-10) X(1<0) OUTIL(-101<0) OUTIL(-102<1)", "BATI OUTIL"},
        ChainRow{"Version2LinkDropsTwoPrefixes",
                 "frame\naxis=X,x\nlien=BATI\ntool\nlien=AXE_AXE_X\ntool", 2, -1,
                 "BATI(0<-10) X(1<0) OUTIL(-101<0) OUTIL(-102<1)", "BATI OUTIL"},
        // Deliberate: the prefix leaves the wanted name in every version, the element's name in
        // version 2 only, so that a version-1 axis of that name is out of reach.
        ChainRow{"Version1LinkDropsThePrefixToo",
                 "frame\naxis=AXE_X,1,x\nlien=BATI\ntool\nlien=AXE_X\ntool", 1, -1,
                 "BATI(0<-10) AXE_X(1<0) OUTIL(-101<0) OUTIL(-102<-101)", "BATI OUTIL"},
        ChainRow{"Version1LowerCasePrefixIsPartOfTheName",
                 "frame\naxis=AXE_X,1,x\nlien=BATI\ntool\nlien=axe_x\ntool", 1, -1,
                 "BATI(0<-10) AXE_X(1<0) OUTIL(-101<0) OUTIL(-102<1)", "BATI OUTIL"},
        ChainRow{"LinkByFixedNames",
                 "frame\ngeom\nlien=bati\ntool\nlien=Geom\ntool\nlien=outil\ntool", 2, -1,
                 "BATI(0<-10) GEOM(-201<0) OUTIL(-101<0) OUTIL(-102<-201) OUTIL(-103<-101)",
                 "BATI OUTIL"},
        ChainRow{"LinkToPartByItsName", "part\nframe\nlien=PIECE\ntool\n", 2, 0,
                 "PIECE(-1<-10) BATI(0<-1) OUTIL(-101<-1)", "PIECE OUTIL"},
        // Names that version 2 does not know share the frame's number: what follows them hangs on
        // the frame, and they drop out of every chain but their own.
        ChainRow{"Version2AxisOfAnotherName", "frame\naxis=X,x\naxis=W,z\ntool\n", 2, -1,
                 "BATI(0<-10) X(1<0) W(0<1) OUTIL(-101<0)", "BATI OUTIL"},
        ChainRow{"Version1AxisWithoutNumber", "frame\naxis=X,1,x\naxis=W,z\ntool\n", 1, -1,
                 "BATI(0<-10) X(1<0) W(0<1) OUTIL(-101<0)", "BATI OUTIL"},
        ChainRow{"RedundantAxisNeedsVersion1", "frame\naxis=X,1,x\naxis=W,7,z\ntool\n", 1, -1,
                 "BATI(0<-10) X(1<0) W(7<1) OUTIL(-101<7)", "BATI X W OUTIL"},
        ChainRow{"SecondAxisOfTheSameNumberIsNeverFound",
                 "frame\naxis=X,x\naxis=Y,y\naxis=X,z\ntool\n", 2, -1,
                 "BATI(0<-10) X(1<0) Y(2<1) X(1<2) OUTIL(-101<1)", "BATI X OUTIL"}),
    rowName);

TEST_F(LoadingTest, MoreElementsThanTheReaderMakesRoomFor) {
  std::string text = "frame\n";
  for (int i = 1; i <= 40; ++i)
    text += "axis=Q" + std::to_string(i) + "," + std::to_string(i) + ",x\n";
  const KMachine machine = load(text, 1);
  ASSERT_EQ(machine.getElemNumber(), 41);
  EXPECT_EQ(machine.getChain(40).size(), 41u);
  EXPECT_EQ(result, -1);
}

// --- order of the trace

TEST_F(LoadingTest, TraceFollowsTheFile) {
  korvo::test::loadText("frame\ngeom=none.stl\ntool=z,1,2,3\n", 2);
  const std::vector<std::wstring> expected = {
      L"\t(geom. file not found none.stl)",
      L"e[0]_BATI,  BATI (i:   0, p: -10) <>",
      L"e[1]_GEOM,  GEOM (i:-201, p:   0) <none.stl>",
      L"e[2]_TOOL, OUTIL (i:-101, p:-201) <>  pos: (   1.00 ;    2.00 ;    3.00)",
      noPositionLine(0),
      L"... ? Unrecognized stuff",
      L"... ? Unrecognized stuff"};
  EXPECT_EQ(trace.lines(), expected);
  trace.claimAll();
}

}  // namespace
