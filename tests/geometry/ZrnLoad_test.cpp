// Files that are right, the callbacks, and paths that lead nowhere.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <random>
#include <utility>

#include "tests/geometry/ZrnFiles.h"
#include "tests/support/MemoryFile.h"
#include "tests/support/ZrnStream.h"

namespace korvo::test {
namespace {

using zkin::CGeomFileNode;
using zkin::CGeomFileNodeList;
using zkin::ZRN_LoadFile;

using Texts = std::vector<std::string>;

class ZrnFile : public ZrnFileTable {};

TEST_P(ZrnFile, GivesItsEntities) { expectAnswer(); }

INSTANTIATE_TEST_SUITE_P(
    Curves, ZrnFile,
    testing::Values(
        FileRow{"Polyline",
                "2 4 1\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n",
                {"1[2,4,1](0 0 0 1 0 0 1 1 0 0 1 0)"},
                {}},
        FileRow{"SamePolylineByCode22",
                "4 0 22\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n",
                {"1[4,0,22](0 0 0 1 0 0 1 1 0 0 1 0)"},
                {}},
        FileRow{"EveryKindOfTopLevelCurve",
                kLine + kPolynomial + kTrimmed + kNurbs + kArc,
                {kLineNode, kPolynomialNode, kTrimmedNode, kNurbsNode, kArcNode},
                {}},
        FileRow{"ValueAndName",
                "2 1 1 0.125 left edge\n.5 2 3\n",
                {"1[2,1,1](0.5 2 3) v=0.125 n=left edge\\n"},
                {}},
        FileRow{"WithAttribute",
                kLine + "2 2 210 0 steel\n<CAD_ATTR>(INT) 5\n\nlast",
                {kLineNode + " @{<CAD_ATTR>(INT) 5\\n}{\\n}{last}"},
                {}},
        FileRow{"WithEmptyAttribute", kLine + "2 2 210\n" + kArc, {kLineNode, kArcNode}, {}},
        FileRow{"AttributeEndsAtWhatLooksLikeAHeader",
                kLine + "2 2 210\nfirst\n1 2 3 go\nsecond\n" + kPlane,
                {kLineNode + " @{first\\n}", planeNode(0)},
                {}},
        FileRow{"NoFinalLineFeed", "2 1 1\n.5 2 3", {kLineNode}, {}}),
    fileRowName);

INSTANTIATE_TEST_SUITE_P(
    Surfaces, ZrnFile,
    testing::Values(
        FileRow{"EveryKindNumberedInOrder",
                kPlane + kSurface + kMulti + kPlane,
                {planeNode(0), surfaceNode(1), multiNode(2), planeNode(3)},
                {}},
        FileRow{"WithTrimmingCurvesOfEveryKind",
                kPlane + kUv + kLine + kPolynomial + kTrimmed + kNurbs + kArc + kText,
                {planeNode(0) + " @{text\\n} T{" + kUvNode + "}{" + kLineNode + "}{" +
                 kPolynomialNode + "}{" + kTrimmedNode + "}{" + kNurbsNode + "}{" + kArcNode + "}"},
                {}},
        FileRow{"TrimmingCurveWithValueAndName",
                kPlane + "1 1 2 4 outer loop\n.5 2\n",
                {planeNode(0) + " T{" + kUvNode + " v=4 n=outer loop\\n}"},
                {}},
        FileRow{"WithPatchesTrimsAndAttributes",
                kMulti + kPatch + "2 2 4 1 second\n.5 0 0\n.5 1 0\n.5 0 1\n.5 1 1\n" + kUv + kText,
                {multiNode(0) + " @{text\\n} P{" + kPatchNode + "}{" + kPatchNode +
                 " v=1 n=second\\n} T{" + kUvNode + "}"},
                {}},
        FileRow{"PatchesAreNotCounted",
                "7 9 8\n0\n0\n" + kPatch,
                {"6[7,9,8](|) #0 P{" + kPatchNode + "}"},
                {}},
        FileRow{"NurbsSurfaceWithAttribute",
                kSurface + kText + kPlane,
                {surfaceNode(0) + " @{text\\n}", planeNode(1)},
                {}},
        FileRow{"OtherCountsAreNoAttribute",
                kSurface + "2 3 210\ntext\n" + kPlane,
                {surfaceNode(0), planeNode(1)},
                {}},
        FileRow{"ValueAndName",
                "2 2 10 -1.5 top face\n0 0 .5\n",
                {"9[2,2,10](0 0 0.5) v=-1.5 n=top face\\n #0"},
                {}},
        FileRow{"UnreadOneUsesUpANumber", "0 0 11\n" + kUv + kLine + kPlane, {planeNode(1)}, {}},
        FileRow{"EveryUnreadOneUsesUpANumber",
                "0 0 11\n0 0 17\n0 0 18\n0 0 20\n0 0 110\n" + kPlane,
                {planeNode(5)},
                {}},
        FileRow{"UnreadOneInFrontOfAnother",
                kPlane + "0 0 17\nx\n" + kUv + kPlane,
                {planeNode(0), planeNode(2)},
                {}},
        FileRow{"TopLevelPatchUsesUpNone", kPatch + kPlane, {planeNode(0)}, {}}),
    fileRowName);

INSTANTIATE_TEST_SUITE_P(
    Scalings, ZrnFile,
    testing::Values(
        FileRow{"One", "2 2 100\n25.4\n" + kPlane, {planeNode(0)}, {}, 25.4},
        FileRow{"TheLastOfTwo", "2 2 100\n2\n2 2 100\n-0.5\n" + kPlane, {planeNode(0)}, {}, -0.5},
        FileRow{"BehindEntities", kLine + "2 2 100\n3\n" + kLine, {kLineNode, kLineNode}, {}, 3.0},
        // The loop looks once more behind a line feed: the text is no error.
        FileRow{"AtTheEnd", "2 2 100\n3\n", {}, {kEnd}, 3.0},
        FileRow{"AtTheEndWithoutLineFeed", "2 2 100\n3", {}, {}, 3.0},
        FileRow{"UnreadSurfaceAtTheEnd", "2 1 1\n.5 2 3\n0 0 11\n", {kLineNode}, {kEnd, kEnd}}),
    fileRowName);

// --- the second reader on files that are nearly right

/// Entities in any order, with lines lost, doubled, cut, or in the wrong place.
std::string damagedFile(std::mt19937_64& random) {
  const std::string kPieces[] = {kPlane,
                                 kLine,
                                 kUv,
                                 kPolynomial,
                                 kTrimmed,
                                 kNurbs,
                                 kArc,
                                 kMulti,
                                 kPatch,
                                 kText,
                                 kSurface,
                                 "0 0 11\n",
                                 "2 2 100\n4\n",
                                 "0 0 0\n",
                                 "\n",
                                 "2 2 10\n0 0 1\n",
                                 "3 2 1\n",
                                 "2 1 9\n0 0 1\n1 2 3 4\n1 1\n1 1\n0 1\n0 1\n1\n5\n0\n"};
  const auto below = [&random](std::size_t n) { return static_cast<std::size_t>(random() % n); };
  std::string file;
  for (std::size_t left = 1 + below(12); left > 0; --left)
    file += kPieces[below(std::size(kPieces))];
  for (std::size_t left = below(4); left > 0 && !file.empty(); --left) {
    const std::size_t at = below(file.size());
    switch (below(4)) {
      case 0:
        file.erase(at, below(12));
        break;
      case 1:
        file.insert(at, file.substr(below(file.size()), below(12)));
        break;
      case 2:
        file[at] = "\n\0 09x.-"[below(8)];
        break;
      default:
        file.insert(at, below(6) == 0 ? std::string(250, ' ') : "\n");
    }
  }
  return file;
}

TEST(ZrnFile, IsReadAsFgetsAndSscanfReadIt) {
  std::mt19937_64 random(11);
  std::size_t nodes = 0, messages = 0;
  for (int i = 0; i < 20'000; ++i) {
    const std::string file = damagedFile(random);
    const MemoryFile memory(file);
    const std::string path = memory.path();
    const ZrnAnswer reference = ZrnReference::read(path.c_str());
    ASSERT_EQ(answerOf(path.c_str()), reference) << escaped(file);
    nodes += reference.nodes.size();
    messages += reference.messages.size();
  }
  EXPECT_GT(nodes, 20'000u);
  EXPECT_GT(messages, 5'000u);
}

// --- paths

class ZrnPath : public testing::Test {
 protected:
  /// Loads, and expects that nothing was opened: -1, one text, scale 1, nodes left, no progress.
  void expectEmpty(const char* path) {
    CGeomFileNodeList nodes;
    nodes.push_back(std::make_unique<CGeomFileNode>());
    double scale = 7;
    Texts said;
    bool hasProgressed = false;
    const int code = ZRN_LoadFile(
        path, nodes, scale, nullptr, [&](int, int) { hasProgressed = true; },
        [&](const char* text) { said.emplace_back(text); });
    EXPECT_EQ(code, -1);
    EXPECT_EQ(scale, 1.0);
    EXPECT_EQ(nodes.size(), 1u);
    EXPECT_EQ(said, (Texts{"ZRN_LoadFile:: File is empty"}));
    EXPECT_FALSE(hasProgressed);
    EXPECT_EQ(ZRN_LoadFile(path, nodes, scale), -1);  // nobody to tell
  }

  std::string in(const char* name) const { return (folder.path() / name).string(); }

  TempDir folder;
};

TEST_F(ZrnPath, Null) { expectEmpty(nullptr); }
TEST_F(ZrnPath, Empty) { expectEmpty(""); }
TEST_F(ZrnPath, Missing) { expectEmpty(in("gone.zrn").c_str()); }
TEST_F(ZrnPath, EmptyFile) { expectEmpty(folder.write("f.zrn", "").c_str()); }
TEST_F(ZrnPath, Folder) { expectEmpty(folder.path().c_str()); }
TEST_F(ZrnPath, Device) { expectEmpty("/dev/zero"); }
TEST_F(ZrnPath, FileWhoseBytesCannotBeRead) { expectEmpty("/proc/self/mem"); }
TEST_F(ZrnPath, TooLong) { expectEmpty(std::string(100'000, 'a').c_str()); }
TEST_F(ZrnPath, FileUsedAsFolder) {
  expectEmpty((folder.write("f.zrn", kPlane).string() + "/g.zrn").c_str());
}
TEST_F(ZrnPath, LinkToNothing) {
  ASSERT_EQ(symlink("gone.zrn", in("link.zrn").c_str()), 0);
  expectEmpty(in("link.zrn").c_str());
}
TEST_F(ZrnPath, PipeThatNobodyWritesTo) {
  ASSERT_EQ(mkfifo(in("pipe.zrn").c_str(), 0600), 0);
  expectEmpty(in("pipe.zrn").c_str());
}

TEST_F(ZrnPath, LetterCaseIsAsWritten) {
  folder.write("PART.ZRN", kPlane);
  expectEmpty(in("part.zrn").c_str());
}

TEST_F(ZrnPath, OfAnyBytes) {
  for (const char* const name : {"caf\xc3\xa9.zrn", "caf\xe9.zrn", "a b\\c.zrn", "x"}) {
    EXPECT_EQ(answerOf(folder.write(name, kPlane).c_str()).nodes, (Texts{planeNode(0)})) << name;
  }
}

// --- callbacks

class ZrnCallbacks : public testing::Test {
 protected:
  /// A question: what the callback returns and whether it sets the flag.
  struct Reply {
    bool returns;
    bool flags;
  };
  static constexpr Reply kGoOn{false, false};
  static constexpr Reply kStop{true, true};

  /// Loads with replies to the questions in order; the last one goes on.
  int load(const std::string& bytes, std::vector<Reply> replies) {
    nodes.clear();
    said.clear();
    questions = 0;
    const std::string path = folder.write("f.zrn", bytes).string();
    const auto cancel = [&](unsigned char* flag) -> unsigned char {
      EXPECT_EQ(*flag, 0);
      const Reply reply = replies[std::min(questions++, replies.size() - 1)];
      if (reply.flags) *flag = 1;
      return reply.returns;
    };
    return ZRN_LoadFile(path.c_str(), nodes, scale, cancel, nullptr,
                        [&](const char* text) { said.emplace_back(text); });
  }

  TempDir folder;
  CGeomFileNodeList nodes;
  Texts said;
  double scale = 0;
  std::size_t questions = 0;
};

TEST_F(ZrnCallbacks, CancelAtTheFirstQuestionGivesNothing) {
  for (const bool returns : {false, true}) {
    EXPECT_EQ(load(kPlane + kLine, {{returns, true}}), 0);
    EXPECT_EQ(questions, 1u);
    EXPECT_TRUE(nodes.empty());
    EXPECT_TRUE(said.empty());
    EXPECT_EQ(scale, 1.0);
  }
}

TEST_F(ZrnCallbacks, CancelIsAskedInTheLoopAtAnEntityAndAtEachOfItsCurves) {
  // Loop, entity, curve; loop, entity, one for each trimming curve and one for what ends them.
  EXPECT_EQ(load(kLine + kPlane + kUv + kUv, {kGoOn}), 0);
  EXPECT_EQ(questions, 3u + 2u + 3u);
  EXPECT_EQ(textsOf(nodes),
            (Texts{kLineNode, planeNode(0) + " T{" + kUvNode + "}{" + kUvNode + "}"}));
}

TEST_F(ZrnCallbacks, CancelKeepsWhatWasReadBefore) {
  const std::string file = kMulti + kPatch + kPatch + kUv + kText + kLine + kLine + kPlane;
  ASSERT_EQ(load(file, {kGoOn}), 0);
  const std::size_t all = questions;
  const Texts whole = textsOf(nodes);
  ASSERT_EQ(whole.size(), 4u);
  for (std::size_t stop = 0; stop < all; ++stop) {
    std::vector<Reply> replies(stop, kGoOn);
    replies.push_back(kStop);
    EXPECT_EQ(load(file, replies), 0);
    ASSERT_LE(nodes.size(), whole.size());
    // The last one may lack what belongs to it.
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i) EXPECT_EQ(textsOf(nodes)[i], whole[i]);
  }
}

TEST_F(ZrnCallbacks, CancelledCurveIsReportedAndPassedOver) {
  EXPECT_EQ(load(kLine + kArc + kPlane, {kGoOn, kGoOn, {true, false}, kGoOn}), 0);
  EXPECT_EQ(textsOf(nodes), (Texts{planeNode(0)}));
  EXPECT_EQ(said, (Texts{notRead("Polyline")}));
}

TEST_F(ZrnCallbacks, CancelledTrimsLeaveTheRestToTheTopLevel) {
  EXPECT_EQ(load(kPlane + kLine, {kGoOn, kGoOn, {true, false}, kGoOn}), 0);
  EXPECT_EQ(textsOf(nodes), (Texts{planeNode(0), kLineNode}));
}

TEST_F(ZrnCallbacks, CancelByTheResultAloneStillEnds) {
  EXPECT_EQ(load("x\n" + kLine + kPlane + kPlane, {{true, false}}), 0);
  EXPECT_TRUE(nodes.empty());
}

TEST_F(ZrnCallbacks, CancelByTheFlagAloneStopsAtTheNextEntity) {
  EXPECT_EQ(load(kLine + kArc, {kGoOn, {false, true}, kGoOn, {false, true}}), 0);
  EXPECT_EQ(textsOf(nodes), (Texts{kLineNode}));
}

TEST_F(ZrnCallbacks, ProgressIsToldOnceAndOnlyWithMessages) {
  const std::string path = folder.write("f.zrn", kPlane + kLine).string();
  std::vector<std::pair<int, int>> told;
  const auto progress = [&](int done, int total) { told.emplace_back(done, total); };
  EXPECT_EQ(ZRN_LoadFile(path.c_str(), nodes, scale, nullptr, progress), 0);
  EXPECT_TRUE(told.empty());
  EXPECT_EQ(ZRN_LoadFile(path.c_str(), nodes, scale, nullptr, progress, [](const char*) {}), 0);
  EXPECT_EQ(told, (std::vector<std::pair<int, int>>{{0, 100}}));
}

TEST_F(ZrnCallbacks, NoneIsNeeded) {
  const std::string path = folder.write("f.zrn", "x\n2 1 1\ny\n" + kPlane).string();
  EXPECT_EQ(ZRN_LoadFile(path.c_str(), nodes, scale), 0);
  EXPECT_EQ(textsOf(nodes), (Texts{planeNode(0)}));
}

TEST_F(ZrnCallbacks, NodesAreAppendedToThoseThatAreThere) {
  const std::string path = folder.write("f.zrn", kPlane).string();
  EXPECT_EQ(ZRN_LoadFile(path.c_str(), nodes, scale), 0);
  EXPECT_EQ(ZRN_LoadFile(path.c_str(), nodes, scale), 0);
  EXPECT_EQ(textsOf(nodes), (Texts{planeNode(0), planeNode(0)}));
}

// --- the steps on a stream

class ZrnSteps : public testing::Test {
 protected:
  Texts said;
  zkin::ZRN_Callbacks callbacks{nullptr, nullptr,
                                [this](const char* text) { said.emplace_back(text); }};
};

TEST_F(ZrnSteps, NextEntityCountsSurfaces) {
  const Stream stream = streamOf(kPlane + "0 0 11\n" + kPlane);
  long long counter = 41;
  CGeomFileNode first;
  EXPECT_TRUE(GetNextEntity(stream.get(), first, counter, callbacks));
  EXPECT_EQ(first.entity.surfaceNumber, 42);
  CGeomFileNode second;
  EXPECT_FALSE(GetNextEntity(stream.get(), second, counter, callbacks));
  EXPECT_EQ(counter, 43);
  EXPECT_EQ(restOf(stream.get()), kPlane);
}

TEST_F(ZrnSteps, NextEntityIsTrueForAnUnknownOneAndLeavesItsLines) {
  const Stream stream = streamOf("1 2 3 4 any\nrest\n");
  long long counter = -1;
  CGeomFileNode node;
  EXPECT_TRUE(GetNextEntity(stream.get(), node, counter, callbacks));
  EXPECT_EQ(entityText(node.entity), "0[1,2,3]() v=4 n=any\\n");
  EXPECT_EQ(counter, -1);
  EXPECT_EQ(restOf(stream.get()), "rest\n");
}

TEST_F(ZrnSteps, NextEntityIsFalseAtTheEndAndAtOtherLines) {
  long long counter = -1;
  CGeomFileNode node;
  EXPECT_FALSE(GetNextEntity(streamOf("").get(), node, counter, callbacks));
  EXPECT_FALSE(GetNextEntity(streamOf("x\n").get(), node, counter, callbacks));
  EXPECT_TRUE(said.empty());
}

TEST_F(ZrnSteps, TrimmingCurvesEndAtAnotherHeader) {
  const Stream stream = streamOf(kUv + kLine + kPlane);
  CGeomFileNode node;
  EXPECT_TRUE(GetTrimmingCurves(stream.get(), node, callbacks));
  EXPECT_EQ(textsOf(node.trimmingCurves), (Texts{kUvNode, kLineNode}));
  EXPECT_EQ(restOf(stream.get()), kPlane);
}

TEST_F(ZrnSteps, TrimmingCurvesAreFalseAtTheEndAndBehindALineThatIsNoHeader) {
  CGeomFileNode node;
  EXPECT_FALSE(GetTrimmingCurves(streamOf(kUv).get(), node, callbacks));
  const Stream stream = streamOf("x\n" + kUv);
  EXPECT_FALSE(GetTrimmingCurves(stream.get(), node, callbacks));
  EXPECT_EQ(restOf(stream.get()), kUv);
  EXPECT_TRUE(GetTrimmingCurves(streamOf("x").get(), node, callbacks));  // the file's last line
  EXPECT_EQ(node.trimmingCurves.size(), 1u);
}

TEST_F(ZrnSteps, PatchesEndAtAnotherHeader) {
  const Stream stream = streamOf(kPatch + kPolynomial);
  CGeomFileNode node;
  EXPECT_TRUE(GetPatchSurfaces(stream.get(), node, callbacks));
  EXPECT_EQ(textsOf(node.patches), (Texts{kPatchNode}));
  EXPECT_EQ(restOf(stream.get()), kPolynomial);
}

TEST_F(ZrnSteps, CancelStopsCurvesAndPatchesBeforeALineIsRead) {
  const zkin::ZRN_Callbacks stop{[](unsigned char*) -> unsigned char { return 1; }, nullptr,
                                 nullptr};
  const Stream stream = streamOf(kUv + kPatch);
  CGeomFileNode node;
  long long counter = -1;
  EXPECT_FALSE(GetTrimmingCurves(stream.get(), node, stop));
  EXPECT_FALSE(GetPatchSurfaces(stream.get(), node, stop));
  EXPECT_FALSE(GetNextEntity(stream.get(), node, counter, stop));
  EXPECT_EQ(restOf(stream.get()), kUv + kPatch);
}

TEST_F(ZrnSteps, AttributesReplaceThoseBefore) {
  zkin::CGeomFileEntity entity;
  entity.attributes.append("old\n");
  EXPECT_TRUE(GetAttributes(streamOf(kText).get(), entity, callbacks));
  ASSERT_EQ(entity.attributes.size(), 1u);
  EXPECT_EQ(entity.attributes[0], "text\n");
  EXPECT_TRUE(GetAttributes(streamOf("2 2 210\n").get(), entity, callbacks));
  EXPECT_TRUE(entity.attributes.empty());
}

TEST_F(ZrnSteps, AttributesLeaveWhatIsNone) {
  for (const std::string& text : Texts{kPlane, "x\n", "2 3 210\ny\n", ""}) {
    zkin::CGeomFileEntity entity;
    entity.attributes.append("old\n");
    const Stream stream = streamOf(text);
    EXPECT_TRUE(GetAttributes(stream.get(), entity, callbacks));
    EXPECT_EQ(restOf(stream.get()), text);
    EXPECT_EQ(entity.attributes.size(), 1u);
  }
}

TEST_F(ZrnSteps, SkipFindsAHeader) {
  const Stream stream = streamOf("x\ny\n" + kLine);
  bool error = false;
  EXPECT_TRUE(SkipToNextEntity(stream.get(), error, false, callbacks));
  EXPECT_EQ(restOf(stream.get()), kLine);
  EXPECT_FALSE(error);
}

TEST_F(ZrnSteps, SkipPassesSubEntitiesWhenAsked) {
  const Stream stream = streamOf("x\n" + kLine + kPatch + kText + kPlane);
  bool error = false;
  EXPECT_TRUE(SkipToNextEntity(stream.get(), error, true, callbacks));
  EXPECT_EQ(restOf(stream.get()), kPlane);
  EXPECT_FALSE(error);
}

TEST_F(ZrnSteps, SkipIsFalseAtTheEndButNotBehindSubEntities) {
  bool error = false;
  EXPECT_FALSE(SkipToNextEntity(streamOf("x\n").get(), error, true, callbacks));
  EXPECT_TRUE(SkipToNextEntity(streamOf(kLine + kLine).get(), error, true, callbacks));
  EXPECT_EQ(said, (Texts{kEnd, kEnd}));
  EXPECT_FALSE(error);
}

TEST_F(ZrnSteps, SkipEndsOnAStreamThatBreaks) {
  const Stream folder(std::fopen("/", "rb"));
  ASSERT_TRUE(folder);
  bool error = false;
  EXPECT_FALSE(SkipToNextEntity(folder.get(), error, true, callbacks));
  EXPECT_TRUE(said.empty());
}

}  // namespace
}  // namespace korvo::test
