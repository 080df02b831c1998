// Text that an editor holds: checked as if it stood in its file, and explained.
#include <rapidcheck/gtest.h>

#include <algorithm>

#include "tests/support/TempFile.h"
#include "toolkit/check/Check.h"
#include "toolkit/check/Hover.h"

using korvo::Completion;
using korvo::Diagnostic;
using korvo::Format;
using korvo::Language;
using korvo::test::TempDir;

namespace {

// Format 1; the lines that follow begin with line 6.
const std::string kMachine = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\n";

std::vector<Diagnostic> found(const std::string& text, const std::string& code,
                              const std::filesystem::path& path = "m.def") {
  std::vector<Diagnostic> all = korvo::checkText(text, path, Format::version1).diagnostics;
  std::erase_if(all, [&](const Diagnostic& d) { return d.code != code; });
  return all;
}

TEST(CheckText, FindsWhatTheFileWouldShow) {
  const std::string text = kMachine + "rotationpoint=1,b\n";
  const TempDir folder;
  const auto path = folder.write("m.def", text);
  const auto inFile = korvo::check(path, Format::version1);
  const auto inText = korvo::checkText(text, path, Format::version1);
  ASSERT_FALSE(inFile.diagnostics.empty());
  ASSERT_EQ(inText.diagnostics.size(), inFile.diagnostics.size());
  for (std::size_t i = 0; i < inFile.diagnostics.size(); ++i) {
    EXPECT_EQ(toString(inText.diagnostics[i]), toString(inFile.diagnostics[i]));
    EXPECT_EQ(inText.diagnostics[i].file, path.string());
  }
  EXPECT_EQ(inText.format.version, 1);
}

TEST(CheckText, TakesTheTextAndNotTheFile) {
  const TempDir folder;
  const auto path = folder.write("m.def", kMachine + "rotationpoint=b\n");
  EXPECT_TRUE(found(kMachine, "rotation-point-number", path).empty());
  EXPECT_EQ(found(kMachine + "\nrotationpoint=b", "rotation-point-number", path).at(0).line, 7);
}

TEST(CheckText, NeedsNoFileAtThePath) {
  EXPECT_FALSE(korvo::hasError(korvo::checkText(kMachine, "/nonexistent/m.def").diagnostics));
  EXPECT_EQ(found("rotationpoint=b", "rotation-point-number", "/nonexistent/m.def").at(0).file,
            "/nonexistent/m.def");
  EXPECT_EQ(found("rotationpoint=b", "rotation-point-number", "").at(0).file, "");
}

TEST(CheckText, LeavesNothingInTheTemporaryFolder) {
  const auto count = [] {
    int files = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::temp_directory_path())) {
      files += entry.path().filename().string().starts_with("korvo-") ? 1 : 0;
    }
    return files;
  };
  const TempDir folder;  // nobody else writes here
  const char* const before = std::getenv("TMPDIR");
  const std::string kept = before ? before : "";
  setenv("TMPDIR", folder.path().c_str(), 1);
  korvo::checkText(kMachine, "m.def");
  const int left = count();
  before ? setenv("TMPDIR", kept.c_str(), 1) : unsetenv("TMPDIR");
  EXPECT_EQ(left, 0);
}

TEST(CheckText, SaysThatTheTemporaryFolderIsNotThere) {
  const char* const before = std::getenv("TMPDIR");
  const std::string kept = before ? before : "";
  setenv("TMPDIR", "/nonexistent", 1);
  EXPECT_THROW(korvo::checkText(kMachine, "m.def"), std::filesystem::filesystem_error);
  before ? setenv("TMPDIR", kept.c_str(), 1) : unsetenv("TMPDIR");
}

TEST(CheckText, AnEmptyTextIsAFileWithoutLines) {
  const auto result = korvo::checkText("", "m.def");
  EXPECT_TRUE(korvo::hasError(result.diagnostics));
  for (const Diagnostic& d : result.diagnostics) EXPECT_EQ(d.line, 0) << toString(d);
}

// --- columns: characters of the line as it is written, whatever its bytes

struct ColumnRow {
  const char* label;
  std::string line;  // a rotation point with one operand that is no number
  int column;
  int length;
  std::string source;
};

class ColumnTable : public testing::TestWithParam<ColumnRow> {};

TEST_P(ColumnTable, CountsCharacters) {
  const ColumnRow& row = GetParam();
  const auto diagnostics = found(kMachine + row.line + "\n", "rotation-point-number");
  ASSERT_EQ(diagnostics.size(), 1u);
  EXPECT_EQ(diagnostics[0].line, 6);
  EXPECT_EQ(diagnostics[0].column, row.column);
  EXPECT_EQ(diagnostics[0].length, row.length);
  EXPECT_EQ(diagnostics[0].source, row.source);
}

// A character of UTF-8 has 2 bytes (U+00E9), 3 (U+2014) or 4 (U+1D518); the operand begins at
// column 15.
INSTANTIATE_TEST_SUITE_P(
    CheckText, ColumnTable,
    testing::Values(
        ColumnRow{"Ascii", "rotationpoint=abc", 15, 3, "rotationpoint=abc"},
        ColumnRow{"Blanks", "\t rotationpoint = a b ", 19, 3, "\t rotationpoint = a b "},
        ColumnRow{"TwoBytes", "rotationpoint=\xC3\xA9", 15, 1, "rotationpoint=\xC3\xA9"},
        ColumnRow{"ThreeBytes", "rotationpoint=\xE2\x80\x94z", 15, 2,
                  "rotationpoint=\xE2\x80\x94z"},
        ColumnRow{"FourBytes", "rotationpoint=\xF0\x9D\x94\x98", 15, 1,
                  "rotationpoint=\xF0\x9D\x94\x98"},
        ColumnRow{"BeforeTheComment", "rotationpoint=b#\xC3\xA9", 15, 1,
                  "rotationpoint=b#\xC3\xA9"},
        ColumnRow{"Latin1", "rotationpoint=\xE9", 15, 1, "rotationpoint=\xC3\xA9"},
        ColumnRow{"Latin1ThatLooksLikeUtf8", "rotationpoint=\xC3\xA9#\xE9", 15, 2,
                  "rotationpoint=\xC3\x83\xC2\xA9#\xC3\xA9"},
        ColumnRow{"OverlongIsLatin1", "rotationpoint=\xC0\x80", 15, 2,
                  "rotationpoint=\xC3\x80\xC2\x80"},
        ColumnRow{"SurrogateIsLatin1", "rotationpoint=\xED\xA0\x80", 15, 3,
                  "rotationpoint=\xC3\xAD\xC2\xA0\xC2\x80"},
        ColumnRow{"BeyondUnicodeIsLatin1", "rotationpoint=\xF4\x90\x80\x80", 15, 4,
                  "rotationpoint=\xC3\xB4\xC2\x90\xC2\x80\xC2\x80"},
        ColumnRow{"HalfACharacterIsLatin1", "rotationpoint=\xE2\x80", 15, 2,
                  "rotationpoint=\xC3\xA2\xC2\x80"},
        ColumnRow{"Empty", "rotationpoint=1,,2", 17, 0, "rotationpoint=1,,2"}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(CheckText, MarkAndLineEndsAreNoColumns) {
  const auto marked = found("\xEF\xBB\xBFrotationpoint=b\r\n", "rotation-point-number");
  ASSERT_EQ(marked.size(), 1u);
  EXPECT_EQ(marked[0].line, 1);
  EXPECT_EQ(marked[0].column, 15);
}

// The line is read up to its 1203rd byte. That half a character is left there changes nothing of
// the characters before it.
TEST(CheckText, ALineCutInsideACharacterKeepsItsColumns) {
  std::string accents;  // of 2 bytes each
  for (int i = 0; i < 700; ++i) accents += "\xC3\xA9";
  // "rotationpoint=1," has 16 bytes: 593 accents follow and half of one; behind "11," all are
  // whole.
  for (const std::string front : {"1,", "11,"}) {
    const auto cut = found(kMachine + "rotationpoint=" + front + accents, "rotation-point-number");
    ASSERT_EQ(cut.size(), 1u);
    EXPECT_EQ(cut[0].column, 15 + static_cast<int>(front.size()));
    EXPECT_GE(cut[0].length, 593) << front;
    EXPECT_LE(cut[0].length, 594) << front;
  }
}

// Messages name what they found as the file spells it.
TEST(CheckText, NamesOfUtf8StayWhatTheyAre) {
  const auto found8 =
      found(kMachine + "rotationpoint=\xC3\xA9\xF0\x9D\x94\x98\n", "rotation-point-number");
  ASSERT_EQ(found8.size(), 1u);
  EXPECT_NE(found8[0].text.find("'\xC3\xA9\xF0\x9D\x94\x98'"), std::string::npos) << found8[0].text;
  const auto found1 = found(kMachine + "rotationpoint=\xE9\n", "rotation-point-number");
  ASSERT_EQ(found1.size(), 1u);
  EXPECT_NE(found1[0].text.find("'\xC3\xA9'"), std::string::npos) << found1[0].text;
}

// Whatever the bytes, a place lies within its line, and its texts are whole.
RC_GTEST_PROP(CheckTextLaws, PlacesLieWithinTheirLines, ()) {
  constexpr std::string_view kBytes = "abx1,=. \t#\r\n\xC3\xA9\xE9\xF0\x9D\x94\x98\xEF\xBB\xBF\xFF";
  const auto bytes =
      *rc::gen::container<std::string>(rc::gen::elementOf(std::string(kBytes) + '\0'));
  const auto text = kMachine + "rotationpoint=" + bytes;
  for (const Diagnostic& d : korvo::checkText(text, "m.def", Format::version1).diagnostics) {
    const auto characters = std::count_if(d.source.begin(), d.source.end(), [](char c) {
      return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    });
    RC_ASSERT(d.column >= 0);
    RC_ASSERT(d.length >= 0);
    RC_ASSERT(d.column == 0 || d.column - 1 + d.length <= characters);
  }
}

// --- hover

struct HoverRow {
  const char* label;
  std::string text;
  std::size_t offset;
  std::size_t begin, end;  // both 0: no text
};

class HoverTable : public testing::TestWithParam<HoverRow> {};

TEST_P(HoverTable, StandsOnTheKeyword) {
  const HoverRow& row = GetParam();
  const auto hover = korvo::hoverAt(row.text, row.offset);
  ASSERT_EQ(hover.has_value(), row.end > 0);
  if (!hover) return;
  EXPECT_EQ(hover->begin, row.begin);
  EXPECT_EQ(hover->end, row.end);
}

INSTANTIATE_TEST_SUITE_P(
    CheckText, HoverTable,
    testing::Values(HoverRow{"First", "mode=1", 0, 0, 4}, HoverRow{"Last", "mode=1", 4, 0, 4},
                    HoverRow{"Operand", "mode=1", 5, 0, 0}, HoverRow{"Beyond", "mode", 99, 0, 0},
                    HoverRow{"SecondLine", "\n mode", 3, 2, 6},
                    HoverRow{"Blank", "\n mode", 1, 0, 0},
                    HoverRow{"BlankInside", "mo de=1", 2, 0, 5},
                    HoverRow{"AnyCase", "MoDe=1", 1, 0, 4},
                    HoverRow{"BehindTheMark", "\xEF\xBB\xBFmode=1", 3, 3, 7},
                    HoverRow{"InTheMark", "\xEF\xBB\xBFmode=1", 1, 0, 0},
                    HoverRow{"Comment", "#mode=1", 2, 0, 0}, HoverRow{"Star", "*mode=1", 2, 0, 0},
                    HoverRow{"Unknown", "made=1", 2, 0, 0}, HoverRow{"Empty", "", 0, 0, 0},
                    HoverRow{"BehindBytesOfNoCharacter", "\xFF\xFE\n\xFFmode", 4, 0, 0}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(Hover, SaysTheFormsOfBothFormats) {
  EXPECT_EQ(korvo::hoverAt("frame", 0)->text.substr(0, 87),
            "format 1: frame=[file[,red,green,blue]]\n"
            "format 2: frame=[direction][,file[,red,green,bl");
  EXPECT_TRUE(korvo::hoverAt("Lien=X", 0)->text.starts_with("Lien=element\n\nThe next element"));
  EXPECT_TRUE(korvo::hoverAt("lien=X", 0, Language::french)->text.starts_with("lien=élément\n\n"));
}

// --- completion

std::vector<std::string> wordsOf(const std::vector<Completion>& completions) {
  std::vector<std::string> words;
  for (const Completion& c : completions) words.push_back(c.word);
  return words;
}

using Words = std::vector<std::string>;

TEST(Completions, AreNamesAboveAndOnce) {
  const std::string above = kMachine + "tool=x,1,1,1\naxis=X,2,y\n";
  const auto elements = korvo::completionsAt(above + "lien=", above.size() + 5);
  EXPECT_EQ(wordsOf(elements.words), (Words{"BATI", "PIECE", "X", "OUTIL"}));
  EXPECT_EQ(elements.begin, above.size() + 5);
  EXPECT_EQ(elements.words[2].detail, "axis=X,1,x");
  const auto axes = korvo::completionsAt("limits=\n" + above, 7);
  EXPECT_TRUE(axes.words.empty());
}

TEST(Completions, ReplaceWhatIsWritten) {
  const std::string text = kMachine + "collisions = X , O";
  const auto found = korvo::completionsAt(text, text.size());
  EXPECT_EQ(found.begin, text.size() - 1);
  EXPECT_EQ(wordsOf(found.words),
            (Words{"BATI", "PIECE", "X", "OUTIL", "tool", "gun", "gundrill"}));
  EXPECT_EQ(korvo::completionsAt("  mo", 4).begin, 2u);
  EXPECT_EQ(korvo::completionsAt("\xEF\xBB\xBFmo", 5).begin, 3u);
}

TEST(Completions, KnowEveryKeywordInBothLanguages) {
  const auto english = korvo::completionsAt("", 0).words;
  const auto french = korvo::completionsAt("", 0, Language::french).words;
  EXPECT_EQ(english.size(), 30u);  // spellings of the definition file
  ASSERT_EQ(wordsOf(english), wordsOf(french));
  for (std::size_t i = 0; i < english.size(); ++i) {
    EXPECT_TRUE(english[i].isKeyword);
    EXPECT_NE(english[i].text, french[i].text) << english[i].word;
    EXPECT_NE(english[i].detail.find(english[i].word + "="), std::string::npos);
  }
}

TEST(Completions, OffsetsBeyondTheTextAreItsEnd) {
  EXPECT_EQ(korvo::completionsAt("mode=1\nl", 99).begin, 7u);
  EXPECT_FALSE(korvo::completionsAt("mode=1\nl", 99).words.empty());
}

}  // namespace
