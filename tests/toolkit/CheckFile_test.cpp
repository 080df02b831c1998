// Rules about the file as a whole, its lines, keywords and names.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/TempFile.h"
#include "toolkit/check/Check.h"

using korvo::Diagnostic;
using korvo::Format;
using korvo::Severity;
using korvo::test::TempDir;

namespace {

std::vector<Diagnostic> diagnosticsOf(const std::string& text, Format format = Format::automatic) {
  const TempDir folder;
  return korvo::check(folder.write("m.def", text), format).diagnostics;
}

std::vector<Diagnostic> found(const std::string& text, const std::string& code,
                              Format format = Format::automatic) {
  std::vector<Diagnostic> some;
  for (const Diagnostic& d : diagnosticsOf(text, format)) {
    if (d.code == code) some.push_back(d);
  }
  return some;
}

struct Row {
  const char* label;
  std::string text;
  const char* code;
  int line;
  int column;
  int length;
  const char* said;
};

std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.label; }

class FileFindings : public testing::TestWithParam<Row> {};

TEST_P(FileFindings, AreOneAtTheirPlace) {
  const Row& row = GetParam();
  const std::vector<Diagnostic> some = found(row.text, row.code);
  ASSERT_EQ(some.size(), 1u);
  EXPECT_EQ(some[0].line, row.line);
  EXPECT_EQ(some[0].column, row.column);
  EXPECT_EQ(some[0].length, row.length);
  EXPECT_EQ(some[0].text, row.said);
}

const auto rowName = [](const auto& row) { return std::string(row.param.label); };

const std::string kNul(1, '\0');
const std::string kA1196(1196, 'a');

INSTANTIATE_TEST_SUITE_P(
    Reading, FileFindings,
    testing::Values(
        Row{"Utf16LittleEndian",
            "\xFF\xFE"
            "f" +
                kNul,
            "file-encoding", 0, 0, 0, "expected text of one byte a character, found UTF-16"},
        Row{"Utf16BigEndian", "\xFE\xFF" + kNul + "f", "file-encoding", 0, 0, 0,
            "expected text of one byte a character, found UTF-16"},
        Row{"NulInALine", "frame\npart=x" + kNul + ",y\n", "file-encoding", 2, 7, 1,
            "expected text of one byte a character, found a NUL character"},
        Row{"CarriageReturnsAlone", "frame\rpart=x,y,0,0,0\rlien=BATI\r", "file-line-ends", 0, 0, 0,
            "expected lines that end with a line feed, found carriage returns alone: the whole "
            "file is one line"},
        Row{"CarriageReturnsAndAComment", "# mill\rframe\r", "file-line-ends", 0, 0, 0,
            "expected lines that end with a line feed, found carriage returns alone: the whole "
            "file is one line"},
        Row{"CarriageReturnInside", "frame\naxis=X,1,x\raxis=Y,2,y\n", "file-line-ends", 2, 11, 1,
            "expected lines that end with a line feed, found a carriage return inside the line"},
        Row{"NothingAtAll", "", "file-empty", 0, 0, 0,
            "expected the lines of a machine, found none among 0 lines"},
        Row{"CommentsOnly", "# a\n\n* b\n// c\n", "file-empty", 0, 0, 0,
            "expected the lines of a machine, found none among 4 lines"},
        // 7 characters in front of the 1196 letters; one more is too many.
        Row{"LongLine", "frame\ngeom= /" + kA1196 + "b\n", "line-too-long", 2, 1204, 0,
            "expected a line of at most 1203 characters, found more"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Keywords, FileFindings,
    testing::Values(
        Row{"Misspelt", "frame\n  axsi = X,1,x\n", "keyword-unknown", 2, 3, 4,
            "expected a keyword, found 'axsi'"},
        Row{"MisspeltInCapitals", "ROTATOIN=C,3,z,0,0,0,0,0\n", "keyword-unknown", 1, 1, 8,
            "expected a keyword, found 'ROTATOIN'"},
        Row{"MisspeltWithBlanks", "rota tion point s=0,0,0,0\n", "keyword-unknown", 1, 1, 17,
            "expected a keyword, found 'rotationpoints'"},
        Row{"MisspeltWithoutOperands", "frane\n", "keyword-unknown", 1, 1, 5,
            "expected a keyword, found 'frane'"},
        Row{"WordThatIsNone", "link=BATI\n", "keyword-unknown", 1, 1, 4,
            "expected a keyword, found 'link'"},
        Row{"Prose", "My new machine\n", "line-ignored", 1, 1, 14,
            "expected a keyword or a comment, found 'Mynewmachine'"},
        Row{"ProseThatIsLong", "a very long sentence about a milling machine\n", "line-ignored", 1,
            1, 44, "expected a keyword or a comment, found 'averylongsentenceaboutamilling...'"},
        Row{"OtherWord", "version=2\n", "line-ignored", 1, 1, 7,
            "expected a keyword or a comment, found 'version'"},
        Row{"NoMachineHasAModeOfThisKind", "model=VF-2\n", "line-ignored", 1, 1, 5,
            "expected a keyword or a comment, found 'model'"},
        Row{"EqualSignAlone", "=\n", "line-ignored", 1, 2, 0,
            "expected a keyword or a comment, found ''"},
        Row{"BlankForEqualSign", "frame\ntool  z,0,0,0\n", "equals-missing", 2, 5, 2,
            "expected \"=\" behind the keyword 'tool', found none"},
        Row{"ColonForEqualSign", "Axis: X, 1, x # slide\n", "equals-missing", 1, 5, 2,
            "expected \"=\" behind the keyword 'Axis', found none"},
        Row{"LinkWithoutEqualSign", "lien BATI\n", "equals-missing", 1, 5, 1,
            "expected \"=\" behind the keyword 'lien', found none"},
        Row{"ToolAlone", "frame\ntool=\n", "keyword-alone", 2, 1, 4,
            "expected operands behind the keyword 'tool', found none"},
        Row{"LinkAlone", "lien\n", "keyword-alone", 1, 1, 4,
            "expected operands behind the keyword 'lien', found none"},
        Row{"LimitsAlone", "limits = # none\n", "keyword-alone", 1, 1, 6,
            "expected operands behind the keyword 'limits', found none"},
        Row{"SecondEqualSign", "geom=a=b.stl\n", "equals-twice", 1, 7, 6,
            "expected one \"=\" in a line, found '=b.stl' behind the operands"},
        Row{"TwoStatementsInALine", "strategy=1 mode = 2\n", "equals-twice", 1, 17, 3,
            "expected one \"=\" in a line, found '=2' behind the operands"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Names, FileFindings,
    testing::Values(
        Row{"AxisName", "axis = left column , 1, x\n", "name-blanks", 1, 8, 11,
            "expected a name without blanks, found one that is read as 'leftcolumn'"},
        Row{"FileName", "geom=my head.stl,1,2,3\n", "file-blanks", 1, 6, 11,
            "expected a file name without blanks, found one that is read as 'myhead.stl'"},
        Row{"FileNameOfATool", "tool=z,0,0,0, a\tb.stl\n", "file-blanks", 1, 15, 7,
            "expected a file name without blanks, found one that is read as 'ab.stl'"},
        Row{"NumbersWithoutAComma", "frame\nlimits=X,-40 5,4\n", "number-blanks", 2, 10, 5,
            "expected a number without blanks, found '-40 5', which is read as '-405'"},
        Row{"LimitsWithoutAComma", "limits=X,-400 400\n", "number-blanks", 1, 10, 8,
            "expected a number without blanks, found '-400 400', which is read as '-400400'"},
        Row{"PointWithoutCommas", "tool=z,0 0 100\n", "number-blanks", 1, 8, 7,
            "expected a number without blanks, found '0 0 100', which is read as '00100'"},
        Row{"SignsWithoutCommas", "tool=z,10 -5 100\n", "number-blanks", 1, 8, 9,
            "expected a number without blanks, found '10 -5 100', which is read as '10-5100'"},
        Row{"Utf8FileName", "geom=t\xC3\xAAte.stl\n", "file-name-utf8", 1, 6, 8,
            "expected a file name of ASCII letters, found 't\xC3\xAAte.stl', which is looked for "
            "as 't\xC3\x83\xC2\xAAte.stl'"},
        Row{"FileInQuotes", "geom=\"a b.stl\"\n", "name-quotes", 1, 6, 9,
            "expected an operand without quotes, found \"a b.stl\""},
        Row{"NameInSingleQuotes", "frame\nlien='BATI'\n", "name-quotes", 2, 6, 6,
            "expected an operand without quotes, found 'BATI'"},
        Row{"DirectionInQuotes", "tool=\"z\",0,0,0\n", "name-quotes", 1, 6, 3,
            "expected an operand without quotes, found \"z\""},
        Row{"HashInAFileName", "geom=head#2.stl\n", "comment-inside", 1, 10, 6,
            "expected a blank in front of a comment, found \"#\" right behind 'head'"},
        Row{"HashInAName", "limits=X#2,-100,100\n", "comment-inside", 1, 9, 11,
            "expected a blank in front of a comment, found \"#\" right behind 'X'"},
        Row{"HashForADigit", "tool=z,0,0,10#5\n", "comment-inside", 1, 14, 2,
            "expected a blank in front of a comment, found \"#\" right behind '10'"}),
    rowName);

struct Quiet {
  const char* label;
  std::string text;
  const char* code;
};

std::ostream& operator<<(std::ostream& out, const Quiet& row) { return out << row.label; }

class NoFileFindings : public testing::TestWithParam<Quiet> {};

TEST_P(NoFileFindings, OnWhatIsRight) {
  EXPECT_TRUE(found(GetParam().text, GetParam().code).empty());
}

INSTANTIATE_TEST_SUITE_P(
    Table, NoFileFindings,
    testing::Values(Quiet{"Utf8Mark",
                          "\xEF\xBB\xBF"
                          "frame\n",
                          "file-encoding"},
                    Quiet{"NulInAComment", "frame # a" + kNul + "b\n", "file-encoding"},
                    Quiet{"LineEndsOfWindows", "frame\r\npart\r\n", "file-line-ends"},
                    Quiet{"TwoCarriageReturnsAtTheEnd", "frame\r\r\npart\r\r\n", "file-line-ends"},
                    Quiet{"NoLineEndAtAll", "frame", "file-line-ends"},
                    Quiet{"NoLineEndsIsNotEmpty", "# mill\rframe\r", "file-empty"},
                    Quiet{"Utf16IsNotEmpty", "\xFF\xFE", "file-empty"},
                    Quiet{"LineOf1203Characters", "geom= /" + kA1196 + "\n", "line-too-long"},
                    Quiet{"CommentIsCut", "geom=a.stl # " + kA1196, "line-too-long"},
                    Quiet{"BlanksAreCut", "frame" + std::string(1300, ' ') + "\n", "line-too-long"},
                    Quiet{"LongComment", "# " + kA1196 + kA1196 + "\n", "line-too-long"},
                    Quiet{"KeywordsInCapitals", "FRAME\nTool=z,0,0,0\n", "keyword-unknown"},
                    Quiet{"BlanksInAKeyword", "drill gun=z,0,0,0\n", "keyword-unknown"},
                    Quiet{"MissingEqualSignIsNoMisspelling", "lien BATI\n", "keyword-unknown"},
                    Quiet{"ProseIsNoMisspelling", "My new machine\n", "keyword-unknown"},
                    Quiet{"ShortWordIsNoMisspelling", "a=1\n", "keyword-unknown"},
                    Quiet{"ModelIsNotMode", "model=VF-2\n", "keyword-unknown"},
                    Quiet{"MisspellingIsNotIgnored", "axsi=X,1,x\n", "line-ignored"},
                    Quiet{"MissingEqualSignIsNotIgnored", "tool z,0,0,0\n", "line-ignored"},
                    Quiet{"ProseWithAKeyword", "tool of the left head\n", "equals-missing"},
                    Quiet{"ProseWithAKeywordAndAComma", "table, C on cradle A\n", "equals-missing"},
                    Quiet{"ProseWithAColon", "Table: C on cradle A\n", "equals-missing"},
                    Quiet{"KeywordAndAWord", "frame grey\n", "equals-missing"},
                    Quiet{"FrameAlone", "frame\npart\ngeom\n", "keyword-alone"},
                    Quiet{"FrameWithEqualSign", "frame=\n", "keyword-alone"},
                    Quiet{"DoubledEqualSign", "limits==X,1,2\n", "equals-twice"},
                    Quiet{"EqualSignAtTheEnd", "limits=X,1,2=\n", "equals-twice"},
                    Quiet{"EqualSignInFront", "=limits=X,1,2\n", "equals-twice"},
                    Quiet{"EqualSignInAComment", "mode=1 # a=b\n", "equals-twice"},
                    Quiet{"EqualSignsOfAnUnknownLine", "a=b=c\n", "equals-twice"},
                    Quiet{"BlanksAroundNames", "axis =  X , 1 , x , a.stl \n", "name-blanks"},
                    Quiet{"BlanksAroundFiles", "axis =  X , 1 , x , a.stl \n", "file-blanks"},
                    Quiet{"BlanksAroundNumbers", "tool = z , 0 ,\t0 , 100 \n", "number-blanks"},
                    Quiet{"BlankBehindASign", "tool=z,0,0,- 5\n", "number-blanks"},
                    Quiet{"BlankBehindTheSignOfTheOnlyLimit", "limits=X,- 500\n", "number-blanks"},
                    Quiet{"Thousands", "limits=X,-1 250,12 000.5\n", "number-blanks"},
                    Quiet{"MillionsAreGrouped", "limits=X,0,1 250 000\n", "number-blanks"},
                    Quiet{"NameWithNumbers", "axis=slide 1 2,1,x\n", "number-blanks"},
                    Quiet{"Latin1FileName", "geom=t\xEAte.stl\n", "file-name-utf8"},
                    Quiet{"OneQuoteIsAnInch", "geom=plate4\".stl\n", "name-quotes"},
                    Quiet{"CommentBehindABlank", "strategy=2 #1.least turn\n", "comment-inside"},
                    Quiet{"CommentOfWords", "strategy=2#fast\n", "comment-inside"},
                    Quiet{"CommentOfWordsAndDots", "strategy=2#fast, but. safe\n",
                          "comment-inside"},
                    Quiet{"CommentBegunWithABlank", "limits=X,-1,1# 2.5\n", "comment-inside"},
                    Quiet{"HashesInARow", "frame #####\ntool=z,0,0,0##\n", "comment-inside"}),
    rowName);

// --- suggestions and fixes

struct FixRow {
  const char* label;
  const char* line;
  const char* code;
  const char* suggestion;
  const char* mended;  // the line then; null: no fix
};

std::ostream& operator<<(std::ostream& out, const FixRow& row) { return out << row.label; }

class FileFixes : public testing::TestWithParam<FixRow> {};

TEST_P(FileFixes, ChangeWhatCanOnlyBeMeant) {
  const FixRow& row = GetParam();
  const std::vector<Diagnostic> some = found(row.line, row.code);
  ASSERT_EQ(some.size(), 1u);
  EXPECT_EQ(some[0].suggestion, row.suggestion);
  ASSERT_EQ(some[0].fix.has_value(), row.mended != nullptr);
  if (!row.mended) return;
  const korvo::Fix& fix = *some[0].fix;
  EXPECT_EQ(fix.line, 1);
  std::string line = row.line;
  line.replace(static_cast<std::size_t>(fix.column - 1), static_cast<std::size_t>(fix.length),
               fix.text);
  EXPECT_EQ(line, row.mended);
}

INSTANTIATE_TEST_SUITE_P(
    Table, FileFixes,
    testing::Values(FixRow{"SwappedLetters", " rotatoin = C,3,z", "keyword-unknown",
                           "did you mean 'rotation'?", " rotation = C,3,z"},
                    FixRow{"MissingLetter", "colision=tool,BATI", "keyword-unknown",
                           "did you mean 'collision'?", "collision=tool,BATI"},
                    FixRow{"LetterTooMany", "tools=z,0,0,0", "keyword-unknown",
                           "did you mean 'tool'?", "tool=z,0,0,0"},
                    // "axe" is as near as "axis".
                    FixRow{"TwoWordsAreAsNear", "axes=X,1,x", "keyword-unknown",
                           "did you mean 'axe'?", nullptr},
                    FixRow{"TwoLettersWrong", "trasnlaton=X,1,x", "keyword-unknown",
                           "did you mean 'translation'?", nullptr},
                    FixRow{"OfThreeLettersOneWrong", "gum=z,0,0,0", "keyword-unknown",
                           "did you mean 'gun'?", nullptr},
                    FixRow{"WordOfTheSameMeaning", "link=BATI", "keyword-unknown",
                           "did you mean 'lien'?", nullptr},
                    FixRow{"BlankForEqualSign", "tool z,0,0,0", "equals-missing",
                           "write \"=\" between keyword and operands", "tool=z,0,0,0"},
                    FixRow{"ColonForEqualSign", "lien : BATI", "equals-missing",
                           "write \"=\" between keyword and operands", "lien=BATI"},
                    FixRow{"Quotes", "geom=\"a b.stl\"", "name-quotes", "remove the quotes",
                           "geom=a b.stl"}),
    rowName);

// --- format

TEST(CheckFormat, AnotherOneAskedForThanTheAxesAreWrittenInIsSaidOnce) {
  const std::string version1 = "axis=X,1,x\naxis=Y,2,y\n", version2 = "axis=X,x\naxis=Y,y\n";
  auto some = found(version1, "format-version", Format::version2);
  ASSERT_EQ(some.size(), 1u);
  EXPECT_EQ(some[0].line, 0);
  EXPECT_EQ(some[0].text, "expected axis lines of format 2, as asked for, found those of format 1");
  EXPECT_EQ(some[0].suggestion, "load the file as format 1");
  some = found(version2, "format-version", Format::version1);
  ASSERT_EQ(some.size(), 1u);
  EXPECT_EQ(some[0].text, "expected axis lines of format 1, as asked for, found those of format 2");
}

TEST(CheckFormat, TheOneThatIsToldFromTheLinesIsNotDoubted) {
  for (const char* text : {"axis=X,1,x\n", "axis=X,x\n"}) {
    EXPECT_TRUE(found(text, "format-version").empty()) << text;
  }
}

TEST(CheckFormat, NothingIsSaidWhenTheLinesDoNotTell) {
  for (const char* text : {"frame\n", "axis=X,1,x\naxis=Y,y\n", "axis=U\n"}) {
    for (const Format format : {Format::version1, Format::version2}) {
      EXPECT_TRUE(found(text, "format-version", format).empty()) << text;
    }
  }
}

// --- one finding for one cause

TEST(CheckFile, WhatCannotBeReadHasOneFinding) {
  for (const std::string& text :
       {std::string(), std::string("# note\n"), std::string("frame\rpart\r"),
        "\xFF\xFE#" + kNul + "\r" + kNul + "\n" + kNul}) {
    EXPECT_EQ(diagnosticsOf(text).size(), 1u) << text;
  }
}

TEST(CheckFile, SeverityIsErrorWhereALineIsLost) {
  EXPECT_EQ(found("axsi=X,1,x\n", "keyword-unknown").at(0).severity, Severity::error);
  EXPECT_EQ(found("remark\n", "line-ignored").at(0).severity, Severity::warning);
  EXPECT_EQ(found("axis=a b,1,x\n", "name-blanks").at(0).severity, Severity::note);
}

TEST(CheckFile, LimitsWithoutTheirCommaAreNotSaidToBeMissingToo) {
  EXPECT_TRUE(found("axis=X,1,x\nlimits=X,-400 400\n", "limits-missing").empty());
}

// --- the examples

// The axes of one are 0,1,1 on purpose, and none lacks a point: not even notes.
TEST(CheckFile, TheExampleMachinesHaveNoFindingAboutTheirLines) {
  const std::vector<std::string> codes = {"file-encoding",
                                          "file-line-ends",
                                          "file-empty",
                                          "line-too-long",
                                          "keyword-unknown",
                                          "line-ignored",
                                          "equals-missing",
                                          "equals-twice",
                                          "keyword-alone",
                                          "format-version",
                                          "name-blanks",
                                          "file-blanks",
                                          "file-name-utf8",
                                          "name-quotes",
                                          "comment-inside",
                                          "number-partial",
                                          "number-not-finite",
                                          "decimal-comma",
                                          "operand-semicolon",
                                          "number-blanks",
                                          "axis-number-unwanted",
                                          "axis-number-missing",
                                          "vector-two-numbers",
                                          "vector-unread",
                                          "axis-direction",
                                          "tool-direction",
                                          "direction-not-unit",
                                          "rotary-point-swallowed",
                                          "rotary-point-missing",
                                          "frame-direction",
                                          "file-is-number",
                                          "operands-left",
                                          "colour-partial",
                                          "colour-range",
                                          "part-position",
                                          "part-axes-replaced",
                                          "part-axes"};
  int machines = 0;
  for (const auto& entry : std::filesystem::directory_iterator(KORVO_MACHINES)) {
    if (entry.path().extension() != ".def") continue;
    ++machines;
    for (const Diagnostic& d : korvo::check(entry.path()).diagnostics) {
      EXPECT_EQ(std::count(codes.begin(), codes.end(), d.code), 0) << korvo::toString(d);
    }
  }
  EXPECT_GE(machines, 12);
}

}  // namespace
