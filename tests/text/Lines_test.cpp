#include "platform/text/Lines.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <memory>

namespace korvo::text {
namespace {

const auto rowName = [](const auto& info) { return std::string(info.param.name); };

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

File fileOf(std::string_view bytes) {
  File file(std::tmpfile());
  std::fwrite(bytes.data(), 1, bytes.size(), file.get());
  std::rewind(file.get());
  return file;
}

std::vector<std::wstring> linesOf(std::string_view bytes) {
  const File file = fileOf(bytes);
  LineReader reader(file.get());
  std::vector<std::wstring> lines;
  for (std::wstring line; reader.next(line);) {
    lines.push_back(line);
    EXPECT_EQ(reader.lineNumber(), static_cast<int>(lines.size()));
  }
  return lines;
}

// --- Bytes to lines

struct LinesRow {
  const char* name;
  std::string bytes;
  std::vector<std::wstring> lines;
};

std::ostream& operator<<(std::ostream& out, const LinesRow& row) { return out << row.name; }

class Lines : public testing::TestWithParam<LinesRow> {};

TEST_P(Lines, AreReadOneByOne) { EXPECT_EQ(linesOf(GetParam().bytes), GetParam().lines); }

INSTANTIATE_TEST_SUITE_P(
    Table, Lines,
    testing::Values(
        LinesRow{"EmptyFile", "", {}}, LinesRow{"OneEmptyLine", "\n", {L""}},
        LinesRow{"LastLineWithoutLineFeed", "a\nb", {L"a", L"b"}},
        LinesRow{"NothingBehindTheLastLineFeed", "a\nb\n", {L"a", L"b"}},
        LinesRow{"EmptyLinesBetween", "\na\n\n\nb", {L"", L"a", L"", L"", L"b"}},
        LinesRow{"CarriageReturnsStay", "a\r\nb\r\n", {L"a\r", L"b\r"}},
        LinesRow{"CarriageReturnsAloneEndNoLine", "a\rb", {L"a\rb"}},
        LinesRow{"NulIsACharacter", std::string("a\0b\nc", 5), {std::wstring(L"a\0b", 3), L"c"}},
        LinesRow{"EndOfTextByteIsACharacter", "a\x1A\nb", {L"a\x1A", L"b"}},
        LinesRow{"OneByteIsOneCharacter",
                 "t\xEAte\n\x80\xFF\n\xC3\xAA",
                 {L"t\xEAte", L"\x80\xFF", L"\xC3\xAA"}}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Utf8Mark, Lines,
    testing::Values(LinesRow{"IsSkipped", "\xEF\xBB\xBFmode=1\nb", {L"mode=1", L"b"}},
                    LinesRow{"BeforeAnEmptyLine", "\xEF\xBB\xBF\nb", {L"", L"b"}},
                    LinesRow{"Alone", "\xEF\xBB\xBF", {}},
                    LinesRow{"OnlyOnce", "\xEF\xBB\xBF\xEF\xBB\xBF", {L"\xEF\xBB\xBF"}},
                    LinesRow{"OnlyAtTheStart", "a\n\xEF\xBB\xBF", {L"a", L"\xEF\xBB\xBF"}},
                    LinesRow{"OnlyWhenComplete", "\xEF\xBB\n", {L"\xEF\xBB"}},
                    LinesRow{"OnlyAtTheFirstCharacter", " \xEF\xBB\xBF", {L" \xEF\xBB\xBF"}}),
    rowName);

// A line has at most 1203 characters; the limit stands here as a number on purpose.
TEST(LongLines, KeepTheirFirst1203Characters) {
  const std::string whole = std::string(1203, 'a');
  const std::wstring kept(1203, L'a');
  EXPECT_EQ(linesOf(whole + "\nnext"), (std::vector<std::wstring>{kept, L"next"}));
  EXPECT_EQ(linesOf(whole + "b\nnext"), (std::vector<std::wstring>{kept, L"next"}));
  EXPECT_EQ(linesOf(whole + "b=c,d"), (std::vector<std::wstring>{kept}));
}

TEST(LongLines, CountFromBehindTheUtf8Mark) {
  const std::string whole = "\xEF\xBB\xBF" + std::string(1203, 'a');
  EXPECT_EQ(linesOf(whole + "b\n"), (std::vector<std::wstring>{std::wstring(1203, L'a')}));
  EXPECT_EQ(linesOf(std::string(1206, 'a')), (std::vector<std::wstring>{std::wstring(1203, L'a')}));
}

// Whether each of the lines of `bytes` was cut.
std::vector<bool> cutsOf(std::string_view bytes) {
  const File file = fileOf(bytes);
  LineReader reader(file.get());
  std::vector<bool> cuts;
  for (std::wstring line; reader.next(line);) cuts.push_back(reader.wasCut());
  return cuts;
}

using Cuts = std::vector<bool>;

TEST(LongLines, AreSaidToBeCutOneByOne) {
  const std::string whole(1203, 'a');
  EXPECT_EQ(cutsOf(whole + "\n" + whole + "b\nc\n" + whole + "bb\nd"),
            (Cuts{false, true, false, true, false}));
}

TEST(LongLines, AreSaidToBeCutAtTheEndOfTheFileToo) {
  EXPECT_EQ(cutsOf(std::string(1203, 'a')), Cuts{false});
  EXPECT_EQ(cutsOf(std::string(1204, 'a')), Cuts{true});
}

// The carriage return is a character of the line.
TEST(LongLines, AreCutInFrontOfACarriageReturn) {
  EXPECT_EQ(cutsOf(std::string(1202, 'a') + "\r\n"), Cuts{false});
  EXPECT_EQ(cutsOf(std::string(1203, 'a') + "\r\n"), Cuts{true});
}

// The mark of three bytes is no part of the first line, and of no other line either.
TEST(LongLines, AreCutBehindTheirOwnCharactersOnly) {
  const std::string mark = "\xEF\xBB\xBF";
  for (std::size_t size : {1203u, 1204u, 1205u, 1206u, 1207u}) {
    EXPECT_EQ(cutsOf(mark + std::string(size, 'a')), Cuts{size > 1203}) << size;
    EXPECT_EQ(cutsOf(std::string(size, 'a')), Cuts{size > 1203}) << size;
  }
}

TEST(LongLines, NoLineIsCutBeforeTheFirst) {
  const File file = fileOf("");
  LineReader reader(file.get());
  EXPECT_FALSE(reader.wasCut());
  std::wstring line;
  EXPECT_FALSE(reader.next(line));
  EXPECT_FALSE(reader.wasCut());
}

TEST(LongLines, TakeNoMemoryForTheirRest) {
  const File file = fileOf(std::string(10'000'000, 'x') + "\nlast");
  LineReader reader(file.get());
  std::wstring line;
  ASSERT_TRUE(reader.next(line));
  EXPECT_LT(line.capacity(), 10'000u);
  ASSERT_TRUE(reader.next(line));
  EXPECT_EQ(line, L"last");
  EXPECT_EQ(reader.lineNumber(), 2);
}

TEST(LineReading, EndsForGood) {
  const File file = fileOf("a");
  LineReader reader(file.get());
  EXPECT_EQ(reader.lineNumber(), 0);
  std::wstring line;
  EXPECT_TRUE(reader.next(line));
  EXPECT_FALSE(reader.next(line));
  EXPECT_FALSE(reader.next(line));
  EXPECT_EQ(reader.lineNumber(), 1);
}

TEST(LineReading, EndsAtAReadError) {
  const File folder(std::fopen("/", "rb"));  // opens, and fails to read
  ASSERT_NE(folder, nullptr);
  LineReader reader(folder.get());
  std::wstring line = L"before";
  EXPECT_FALSE(reader.next(line));
  EXPECT_NE(std::ferror(folder.get()), 0);
}

TEST(LineReading, LeavesTheFileOpen) {
  const File file = fileOf("a\nb\n");
  std::wstring line;
  EXPECT_TRUE(LineReader(file.get()).next(line));
  EXPECT_TRUE(LineReader(file.get()).next(line));
  EXPECT_EQ(line, L"b");
}

RC_GTEST_PROP(LineLaws, JoinedLinesAreTheFile, ()) {
  const auto byte = rc::gen::element('a', '\r', ' ', '#', '\xEF', '\xFF', '\0', '\t', '\n');
  const auto bytes = *rc::gen::container<std::string>(byte);
  std::string joined;
  for (const std::wstring& line : linesOf("start" + bytes + "end")) {
    for (wchar_t c : line) joined.push_back(static_cast<char>(c));
    joined.push_back('\n');
  }
  RC_ASSERT(joined == "start" + bytes + "end\n");
}

// --- Lines to clean lines

struct CleanRow {
  const char* name;
  std::wstring line;
  std::wstring text;
  std::vector<int> columns;
};

std::ostream& operator<<(std::ostream& out, const CleanRow& row) { return out << row.name; }

class CleanUp : public testing::TestWithParam<CleanRow> {};

TEST_P(CleanUp, GivesTextAndColumns) {
  const CleanLine clean = cleanLine(GetParam().line);
  EXPECT_EQ(clean.text, GetParam().text);
  EXPECT_EQ(clean.columns, GetParam().columns);
}

TEST_P(CleanUp, GivesTheSameTextWithoutColumns) {
  std::wstring text = L"what was there before";
  cleanLine(GetParam().line, text);
  EXPECT_EQ(text, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CleanUp,
    testing::Values(
        CleanRow{"Empty", L"", L"", {}}, CleanRow{"Blanks", L" \t\r", L"", {}},
        CleanRow{"NothingToClean", L"a=b", L"a=b", {1, 2, 3}},
        CleanRow{"AllSixWhiteSpaces", L" a\tb\rc\nd\ve\ff", L"abcdef", {2, 4, 6, 8, 10, 12}},
        CleanRow{"BlanksInNamesDisappear",
                 L"axe = my axis",
                 L"axe=myaxis",
                 {1, 2, 3, 5, 7, 8, 10, 11, 12, 13}},
        CleanRow{"HardBlankStays",
                 L"a\xA0"
                 L"b",
                 L"a\xA0"
                 L"b",
                 {1, 2, 3}},
        CleanRow{"OtherControlCharactersStay", L"a\x1A\x85", L"a\x1A\x85", {1, 2, 3}},
        CleanRow{"NulStays", std::wstring(L"a\0 b", 4), std::wstring(L"a\0b", 3), {1, 2, 4}},
        CleanRow{"CommentIsCut", L"ab # c # d", L"ab", {1, 2}},
        CleanRow{"CommentInAName", L"g=a#b.stl", L"g=a", {1, 2, 3}},
        CleanRow{"CommentLine", L"  # note", L"", {}}, CleanRow{"HashAlone", L"#", L"", {}},
        CleanRow{"StarLine", L"*** header", L"", {}},
        CleanRow{"StarBehindBlanks", L" \t* header", L"", {}},
        CleanRow{"SlashLine", L"// note", L"", {}}, CleanRow{"PathLine", L"/home/x=1", L"", {}},
        CleanRow{"StarLaterStays", L"a*/", L"a*/", {1, 2, 3}},
        CleanRow{"StarInTheCommentOnly", L"#*", L"", {}},
        CleanRow{"BackslashIsText", L"\\a", L"\\a", {1, 2}}),
    rowName);

RC_GTEST_PROP(CleanUpLaws, ColumnsPointAtTheCharacters, ()) {
  const auto character =
      rc::gen::element(L'a', L'=', L',', L' ', L'\t', L'\r', L'#', L'*', L'/', L'\xE9', L'\0');
  const auto line = *rc::gen::container<std::wstring>(character);
  const CleanLine clean = cleanLine(line);
  RC_ASSERT(clean.columns.size() == clean.text.size());
  for (std::size_t i = 0; i < clean.text.size(); ++i)
    RC_ASSERT(line[static_cast<std::size_t>(clean.columns[i] - 1)] == clean.text[i]);
  RC_ASSERT(cleanLine(clean.text).text == clean.text);
}

// --- Clean lines to statements

std::wstring shown(const Token& token) { return token.text + L"@" + std::to_wstring(token.column); }

/// "keyword@column" and, behind a "=", the operands in the same way.
std::wstring shown(const Statement& statement) {
  std::wstring text = shown(statement.keyword);
  if (statement.hasOperandPart) text += L" =";
  for (const Token& operand : statement.operands) text += L" " + shown(operand);
  return text;
}

struct StatementRow {
  const char* name;
  const wchar_t* line;
  const wchar_t* statement;
};

std::ostream& operator<<(std::ostream& out, const StatementRow& row) { return out << row.name; }

class Statements : public testing::TestWithParam<StatementRow> {};

TEST_P(Statements, SplitAtEqualSignAndCommas) {
  EXPECT_EQ(shown(statementOf(cleanLine(GetParam().line))), GetParam().statement);
}

INSTANTIATE_TEST_SUITE_P(
    Table, Statements,
    testing::Values(
        StatementRow{"OneOperand", L"mode=1", L"mode@1 = 1@6"},
        StatementRow{"Operands", L"limits=X,-1,2", L"limits@1 = X@8 -1@10 2@13"},
        StatementRow{"ColumnsAreThoseOfTheFile", L"  axe = X , -x # note", L"axe@3 = X@9 -x@13"},
        StatementRow{"KeywordAlone", L"bati", L"bati@1"},
        StatementRow{"NothingBehindTheEqualSign", L"bati=", L"bati@1"},
        StatementRow{"OnlyAComma", L"bati=,", L"bati@1 = @6 @7"},
        StatementRow{"EmptyOperandsStay", L"t=a,,b", L"t@1 = a@3 @5 b@6"},
        StatementRow{"EmptyOperandAtTheEnd", L"t=a,", L"t@1 = a@3 @5"},
        StatementRow{"EmptyOperandPointsAtWhatFollows", L"t=a,  ,b", L"t@1 = a@3 @7 b@8"},
        StatementRow{"LeadingEqualSignIsDropped", L"=bati=x", L"bati@2 = x@7"},
        StatementRow{"DoubledEqualSignIsOne", L"limits==a,b", L"limits@1 = a@9 b@11"},
        StatementRow{"PartsBehindTheSecondAreIgnored", L"g=a,b=c,d", L"g@1 = a@3 b@5"},
        StatementRow{"EqualSignEndsAFileName", L"g=a=b.stl", L"g@1 = a@3"},
        StatementRow{"EmptyOperandBeforeAThirdPart", L"g=a,=c,d", L"g@1 = a@3 @5"},
        StatementRow{"CommaInTheKeyword", L"a,b=c", L"a,b@1 = c@5"},
        StatementRow{"EqualSignsOnly", L"==", L"@3"}, StatementRow{"EmptyLine", L"", L"@1"}),
    rowName);

RC_GTEST_PROP(StatementLaws, TokensStandAtTheirColumns, ()) {
  const auto character = rc::gen::element(L'a', L'b', L'=', L',', L' ', L'1');
  const auto line = *rc::gen::container<std::wstring>(character);
  const Statement statement = statementOf(cleanLine(line));
  std::vector<Token> tokens = statement.operands;
  tokens.push_back(statement.keyword);
  for (const Token& token : tokens) {
    RC_ASSERT(token.column >= 1);
    RC_ASSERT(token.column <= static_cast<int>(line.size()) + 1);
    if (!token.text.empty())
      RC_ASSERT(line[static_cast<std::size_t>(token.column - 1)] == token.text.front());
  }
  RC_ASSERT(statement.hasOperandPart == !statement.operands.empty());
}

}  // namespace
}  // namespace korvo::text
