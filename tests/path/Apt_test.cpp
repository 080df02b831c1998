// Toolpaths in APT and CL text: what is read, what is skipped, where it says what is wrong.
#include "toolkit/path/Apt.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace korvo::test {
namespace {

struct Read {
  std::vector<PathTarget> targets;
  std::vector<int> lines;
  std::optional<AptProblem> problem;
  AptReader::Counts skipped, notFollowed;
};

Read read(const std::vector<std::string>& lines, Language language = Language::english) {
  Read all;
  AptReader reader(
      [&all](const PathTarget& target, int line) {
        all.targets.push_back(target);
        all.lines.push_back(line);
      },
      language);
  for (const std::string& line : lines) {
    all.problem = reader.line(line);
    if (all.problem) return all;
  }
  all.problem = reader.end();
  all.skipped = reader.skipped();
  all.notFollowed = reader.notFollowed();
  return all;
}

void expectAt(const PathTarget& t, const zgeo::UVec3d& tip, const zgeo::UVec3d& direction) {
  EXPECT_EQ(t.target.tip, tip);
  EXPECT_EQ(t.target.direction, direction);
}

// --- targets

TEST(Apt, GotoWithSixNumbersIsATarget) {
  const Read all = read({"GOTO/1.5,-2,3e1,0,0.6,0.8"});
  ASSERT_FALSE(all.problem);
  ASSERT_EQ(all.targets.size(), 1u);
  expectAt(all.targets[0], {1.5, -2, 30}, {0, 0.6, 0.8});
  EXPECT_EQ(all.targets[0].feed, 0);
  EXPECT_EQ(all.lines, std::vector<int>{1});
}

TEST(Apt, GotoWithThreeNumbersKeepsTheLastDirection) {
  const Read all = read({"GOTO/1,2,3", "GOTO/1,2,3,0,1,0", "GOTO/4,5,6"});
  ASSERT_EQ(all.targets.size(), 3u);
  expectAt(all.targets[0], {1, 2, 3}, {0, 0, 1});
  expectAt(all.targets[2], {4, 5, 6}, {0, 1, 0});
}

class AptSpelling : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(AptSpelling, IsTheSameTarget) {
  const Read all = read(GetParam());
  ASSERT_FALSE(all.problem) << all.problem->text;
  ASSERT_EQ(all.targets.size(), 1u);
  expectAt(all.targets[0], {1, 2, 3}, {0, 0, 1});
}

INSTANTIATE_TEST_SUITE_P(
    Apt, AptSpelling,
    testing::Values(std::vector<std::string>{"GOTO/1,2,3,0,0,1"},
                    std::vector<std::string>{"goto / 1. , 2.0,\t+3 , 0,0 , 1 "},
                    std::vector<std::string>{"  GOTO/1,2,3,0,0,1 $$ with a remark $ of its own"},
                    std::vector<std::string>{"GOTO/1,2,$", "3,0,0,1"},
                    std::vector<std::string>{"GOTO/1,2 $ what stands here is passed over", ",3,0,$",
                                             "$", "0,1"},
                    std::vector<std::string>{"$$ nothing", "", "   ", "GOTO/1,2,3,0,0,1"},
                    std::vector<std::string>{"UNITS/MM", "GOTO/1,2,3,0,0,1"}));

TEST(Apt, ATargetIsWhereItsGotoBegins) {
  const Read all = read({"$$", "GOTO/1,2,$", "3,0,0,1", "GOTO/1,2,4"});
  EXPECT_EQ(all.lines, (std::vector<int>{2, 4}));
}

TEST(Apt, InchesAreConvertedFromWhereTheyAreSaid) {
  const Read all = read(
      {"GOTO/1,2,3", "UNITS/INCHES", "FEDRAT/10", "GOTO/1,2,-3,0,0,1", "units / mm", "GOTO/1,2,3"});
  ASSERT_EQ(all.targets.size(), 3u);
  expectAt(all.targets[0], {1, 2, 3}, {0, 0, 1});
  expectAt(all.targets[1], {1 * 25.4, 2 * 25.4, -3 * 25.4}, {0, 0, 1});
  EXPECT_DOUBLE_EQ(all.targets[1].feed, 254);
  expectAt(all.targets[2], {1, 2, 3}, {0, 0, 1});
}

// --- feeds

struct Feed {
  const char* line;
  double value;
};

class AptFeed : public testing::TestWithParam<Feed> {};

TEST_P(AptFeed, HoldsForTheTargetsBehindIt) {
  const Read all = read({"GOTO/0,0,0", GetParam().line, "GOTO/1,0,0", "GOTO/2,0,0"});
  ASSERT_FALSE(all.problem) << all.problem->text;
  ASSERT_EQ(all.targets.size(), 3u);
  EXPECT_EQ(all.targets[0].feed, 0);
  EXPECT_DOUBLE_EQ(all.targets[1].feed, GetParam().value);
  EXPECT_DOUBLE_EQ(all.targets[2].feed, GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Apt, AptFeed,
                         testing::Values(Feed{"FEDRAT/1200", 1200}, Feed{"FEDRAT/MMPM,1200", 1200},
                                         Feed{"FEDRAT/ 0.2 , MMPR", 0.2},
                                         Feed{"FEDRAT/10,IPM", 254}, Feed{"fedrat/ipr,1", 25.4},
                                         Feed{"FEDRAT/PERMIN,5", 5},
                                         Feed{"FEDRAT/0.1,PERREV", 0.1}));

TEST(Apt, FeedsWithoutALengthAreInTheUnitOfLengths) {
  const Read all =
      read({"UNITS/INCHES", "FEDRAT/2,PERMIN", "GOTO/1,0,0", "FEDRAT/2,MMPM", "GOTO/2,0,0"});
  ASSERT_EQ(all.targets.size(), 2u);
  EXPECT_DOUBLE_EQ(all.targets[0].feed, 50.8);
  EXPECT_DOUBLE_EQ(all.targets[1].feed, 2);
}

TEST(Apt, RapidIsForTheNextTargetAlone) {
  const Read all = read({"FEDRAT/500", "RAPID", "GOTO/1,0,0", "GOTO/2,0,0"});
  ASSERT_EQ(all.targets.size(), 2u);
  EXPECT_EQ(all.targets[0].feed, kRapid);
  EXPECT_EQ(all.targets[1].feed, 500);
  EXPECT_TRUE(all.skipped.empty());
}

// --- what is skipped

TEST(Apt, OtherStatementsAreSkippedAndCountedByTheirWord) {
  const Read all = read({"PARTNO GOTO/1,2,3", "LOADTL/4", "N9 loadtl/5", "PPRINT/GOTO/1,2,3",
                         "N5 PPRINT GOTO/1,2,3", "GOTOX/1,2,3", "/1,2", "P1=POINT/1,2,3", "FINI"});
  EXPECT_FALSE(all.problem);
  EXPECT_TRUE(all.targets.empty());
  const AptReader::Counts wanted{{"?", 1},      {"FINI", 1}, {"GOTOX", 1}, {"LOADTL", 2},
                                 {"PARTNO", 1}, {"P1", 1},   {"PPRINT", 2}};
  EXPECT_EQ(all.skipped, wanted);
  EXPECT_TRUE(all.notFollowed.empty());
}

TEST(Apt, WhatChangesThePathIsCountedForItself) {
  const Read all = read({"FROM/0,0,9", "GODLTA/0,0,5", "N7 circle/0,0,0,0,0,1,5", "CIRCLE/1",
                         "TRANS/1,2,3", "TRACUT/M1", "TLAXIS/0,0,1", "L1) CYCLE/DRILL,5", "FINI"});
  EXPECT_FALSE(all.problem);
  const AptReader::Counts wanted{{"CIRCLE", 2}, {"CYCLE", 1},  {"FROM", 1}, {"GODLTA", 1},
                                 {"TLAXIS", 1}, {"TRACUT", 1}, {"TRANS", 1}};
  EXPECT_EQ(all.notFollowed, wanted);
  EXPECT_EQ(all.skipped, (AptReader::Counts{{"FINI", 1}}));
}

TEST(Apt, ANumberOrALabelMayStandBeforeAStatement) {
  const Read all = read({"N10 UNITS/INCHES", "N20 GOTO/1,0,0", "0030 goto/2,0,0", "L1) GOTO/3,0,0",
                         "LBL = GOTO/4,0,0", "N50 RAPID", "N60 GOTO/5,0,0"});
  ASSERT_FALSE(all.problem) << all.problem->text;
  ASSERT_EQ(all.targets.size(), 5u);
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(all.targets[i].target.tip.x, 25.4 * static_cast<double>(i + 1));
  }
  EXPECT_EQ(all.targets[4].feed, kRapid);
  EXPECT_EQ(all.lines, (std::vector<int>{2, 3, 4, 5, 7}));
  EXPECT_TRUE(all.skipped.empty());
}

TEST(Apt, ManyWordsAreCountedTogether) {
  std::vector<std::string> lines;
  for (int i = 0; i < 150; ++i) lines.push_back("WORD" + std::to_string(i) + "/1");
  const Read all = read(lines);
  EXPECT_EQ(all.skipped.size(), 101u);
  EXPECT_EQ(all.skipped.at("..."), 50u);
}

// --- what is wrong

struct Wrong {
  std::vector<std::string> lines;
  int line;
  int column;
  const char* found;
};

class AptProblems : public testing::TestWithParam<Wrong> {};

TEST_P(AptProblems, AreSaidWithTheirPlace) {
  const Wrong& wrong = GetParam();
  const Read all = read(wrong.lines);
  ASSERT_TRUE(all.problem);
  EXPECT_EQ(all.problem->line, wrong.line);
  EXPECT_EQ(all.problem->column, wrong.column);
  EXPECT_TRUE(all.problem->text.starts_with("expected ")) << all.problem->text;
  EXPECT_NE(all.problem->text.find(std::string("found ") + wrong.found), std::string::npos)
      << all.problem->text;
}

INSTANTIATE_TEST_SUITE_P(
    Apt, AptProblems,
    testing::Values(
        Wrong{{"GOTO/P1"}, 1, 6, "'P1'"}, Wrong{{"GOTO 1,2,3"}, 1, 6, "'1'"},
        Wrong{{"GOTO"}, 1, 5, "''"}, Wrong{{"GOTO1,2,3"}, 1, 1, "'GOTO1,2,3'"},
        Wrong{{"FINI", "N20goto/1,2,3"}, 2, 4, "'N20goto/1,2,3'"},
        Wrong{{"RAPID, GOTO/1,2,3"}, 1, 8, "'RAPID, "},
        Wrong{{"CUTTER/5 $", " GOTO/1,2,3"}, 2, 2, "'CUTTER/5 "},
        Wrong{{"/GOTO/1,2,3"}, 1, 2, "'/GOTO/"}, Wrong{{"N20 GOTO/1,2"}, 1, 13, "2 numbers"},
        Wrong{{"$$", "GOTO/1,2"}, 2, 9, "2 numbers"}, Wrong{{"GOTO/1,2,3,4"}, 1, 13, "4 numbers"},
        Wrong{{"GOTO/1,2,3,0,0,1,7"}, 1, 19, "7 numbers"}, Wrong{{"GOTO/1,2,3,"}, 1, 12, "''"},
        Wrong{{"GOTO/1,,3"}, 1, 8, "''"}, Wrong{{"GOTO/1,2 3"}, 1, 10, "'3'"},
        Wrong{{"GOTO/1,2,0x10"}, 1, 10, "'0x10'"}, Wrong{{"GOTO/1,2,nan"}, 1, 10, "'nan'"},
        Wrong{{"GOTO/1,2,1e"}, 1, 10, "'1e'"}, Wrong{{"GOTO/1,2,1e999"}, 1, 10, "'1e999'"},
        Wrong{{"UNITS/INCHES", "GOTO/1,2,1e308"}, 2, 10, "'1e308'"},
        Wrong{{" GOTO/1,2,3,0,0,0"}, 1, 1, "i,j,k all 0"},
        Wrong{{"GOTO/1,2,$", "3,0,$ more", " x,1"}, 3, 2, "'x'"},
        Wrong{{"GOTO/1,2,$"}, 1, 10, "the end"}, Wrong{{"FEDRAT/"}, 1, 8, "''"},
        Wrong{{"FEDRAT 5"}, 1, 8, "'5'"}, Wrong{{"FEDRAT/-5"}, 1, 10, "''"},
        Wrong{{"FEDRAT/5,FAST"}, 1, 10, "'FAST'"}, Wrong{{"FEDRAT/5,6"}, 1, 10, "'6'"},
        Wrong{{"FEDRAT/MMPM"}, 1, 12, "''"}, Wrong{{"UNITS/CM"}, 1, 7, "'CM'"},
        Wrong{{"UNITS"}, 1, 6, "''"}));

TEST(Apt, ProblemsAreFrenchToo) {
  const Read all = read({"GOTO/P1"}, Language::french);
  ASSERT_TRUE(all.problem);
  EXPECT_EQ(all.problem->text, "GOTO/x,y,z ou GOTO/x,y,z,i,j,k attendu, trouvé : 'P1'");
}

TEST(Apt, AStatementWithoutEndIsRefused) {
  std::string line(30'000, '1');
  line.back() = '$';
  const std::vector<std::string> lines(3, line);
  const Read all = read(lines);
  ASSERT_TRUE(all.problem);
  EXPECT_EQ(all.problem->line, 3);
  EXPECT_NE(all.problem->text.find("65536"), std::string::npos);
}

}  // namespace
}  // namespace korvo::test
