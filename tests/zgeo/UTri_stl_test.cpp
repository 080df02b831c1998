#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>

#include "tests/zgeo/StlFiles.h"

namespace zgeo {
namespace {

using korvo::test::TempDir;
using test::binary;
using test::facet;
using test::kA;
using test::kB;
using test::kC;
using test::load;
using test::Loaded;
using test::loadPath;
using test::record;
using test::solid;
using test::wide;

Loaded loaded(std::vector<UTri> triangles) { return {UTri::STL_LOADED, std::move(triangles)}; }

// --- Binary files

TEST(StlBinary, GivesItsTrianglesInOrder) {
  EXPECT_EQ(load(binary({kA, kB, kC})), loaded({kA, kB, kC}));
}

TEST(StlBinary, WidensFloatsExactly) {
  const float tenth = 0.1f;
  const float denormal = std::numeric_limits<float>::denorm_min();
  const float largest = std::numeric_limits<float>::max();
  const UTri t({tenth, -tenth, denormal}, {-denormal, largest, -largest}, {0.0, -0.0, 1.0});
  const Loaded result = load(binary({t}));
  EXPECT_EQ(result, loaded({t}));
  EXPECT_TRUE(std::signbit(result.triangles[0].p[2].y));
}

TEST(StlBinary, OfNoTrianglesIsLoaded) { EXPECT_EQ(load(binary({})), loaded({})); }

TEST(StlBinary, MayBeginWithSolid) {
  for (const char* header : {"solid", "solid part", "SOLID", " solid x", "solid facet normal",
                             "solid x facet endfacet endsolid", "\xEF\xBB\xBFsolid facet"}) {
    EXPECT_EQ(load(binary({kA, kB}, 2, header)), loaded({kA, kB})) << header;
  }
}

TEST(StlBinary, MayBeginWithSolidAndHaveAWrongCount) {
  for (const char* header : {"solid", "solid part", "solid facet normal", "solid endsolid"}) {
    EXPECT_EQ(load(binary({kA, kB}, 0xFFFFFFFF, header)), loaded({kA, kB})) << header;
    EXPECT_EQ(load(binary({kA, kB}, 7, header)), loaded({kA, kB})) << header;
    EXPECT_EQ(load(binary({kA, kB}, 1, header)), loaded({kA})) << header;
  }
}

TEST(StlBinary, MayHaveAnyHeader) {
  EXPECT_EQ(load(binary({kA}, 1, std::string(80, '\0'))), loaded({kA}));
  EXPECT_EQ(load(binary({kA}, 1, std::string(80, '\xFF'))), loaded({kA}));
}

TEST(StlBinary, IgnoresBytesBehindTheLastRecord) {
  for (const std::size_t size : {1, 2, 49, 50, 51, 100, 1000}) {
    EXPECT_EQ(load(binary({kA, kB}, 2) + std::string(size, 'x')), loaded({kA, kB})) << size;
    EXPECT_EQ(load(binary({kA, kB}, 2, "solid") + std::string(size, '\0')), loaded({kA, kB}));
  }
}

TEST(StlBinary, WithACountOfNoneHasNoneWhateverFollows) {
  EXPECT_EQ(load(binary({kA, kB}, 0)), loaded({}));
}

TEST(StlBinary, WithTooLargeACountGivesTheWholeRecords) {
  for (const std::uint32_t count : {4u, 1000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(load(binary({kA, kB, kC}, count)), loaded({kA, kB, kC})) << count;
  }
}

TEST(StlBinary, CutAnywhereGivesTheRecordsBeforeTheCut) {
  const std::string whole = binary({kA, kB, kC});
  const std::vector<UTri> all{kA, kB, kC};
  for (std::size_t size = 134; size <= whole.size(); ++size) {
    const auto count = static_cast<std::ptrdiff_t>((size - 84) / 50);
    EXPECT_EQ(load(whole.substr(0, size)), loaded({all.begin(), all.begin() + count})) << size;
  }
}

TEST(StlBinary, ItsCountReservesNoMoreThanTheFileHas) {
  const TempDir folder;
  const auto path = folder.write("x.stl", binary({kA, kB, kC}, 0xFFFFFFFF));
  std::vector<UTri> out;
  ASSERT_EQ(UTri::_loadSTL(wide(path), out), UTri::STL_LOADED);
  EXPECT_EQ(out.capacity(), 3u);
}

/// What is not finite, at each of its nine places.
class StlNotFinite : public testing::TestWithParam<int> {};

TEST_P(StlNotFinite, IsLeftOutAndItsNeighboursStay) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  for (const double bad : {kInf, -kInf, std::nan(""), -std::nan("")}) {
    UTri t = kB;
    (&t.p[GetParam() / 3].x)[GetParam() % 3] = bad;
    EXPECT_EQ(load(binary({kA, t, kC})), loaded({kA, kC}));
    EXPECT_EQ(load(solid(facet(kA) + facet(t) + facet(kC))), loaded({kA, kC}));
    EXPECT_EQ(load(binary({t, t})), (Loaded{UTri::STL_NO_TRIANGLE, {}}));
    EXPECT_EQ(load(solid(facet(t))), (Loaded{UTri::STL_NO_TRIANGLE, {}}));
  }
}

INSTANTIATE_TEST_SUITE_P(Coordinate, StlNotFinite, testing::Range(0, 9));

/// The size of a block is of no matter: around each multiple of it, all records arrive.
TEST(StlBinary, GivesEveryRecordOfManyBlocks) {
  std::vector<UTri> all;
  std::mt19937 random(7);
  const auto next = [&random] { return static_cast<double>(random() >> 8) - 8e6; };
  for (int i = 0; i < 3 * 2048 + 1; ++i) {
    all.push_back({{next(), next(), next()}, {next(), next(), next()}, {next(), next(), next()}});
  }
  for (const std::ptrdiff_t count : {2047, 2048, 2049, 4096, 6143, 6144, 6145}) {
    const std::vector<UTri> part(all.begin(), all.begin() + count);
    EXPECT_EQ(load(binary(part)), loaded(part)) << count;
  }
}

RC_GTEST_PROP(StlBinaryLaws, WhatIsWrittenIsLoaded, ()) {
  const auto coordinate = [] { return static_cast<double>(*rc::gen::arbitrary<float>()); };
  std::vector<UTri> triangles(*rc::gen::inRange(0, 40));
  for (UTri& t : triangles) {
    for (UVec3d& p : t.p) p.set(coordinate(), coordinate(), coordinate());
  }
  const auto count = static_cast<std::uint32_t>(triangles.size());
  const std::string trailing(*rc::gen::inRange(0, 120), 'e');
  const std::string header = *rc::gen::container<std::string>(rc::gen::arbitrary<char>());
  RC_ASSERT(load(binary(triangles, count, header)) == loaded(triangles));
  // With trailing bytes the header has a say: it must not make a text of the file.
  RC_ASSERT(load(binary(triangles, count) + trailing) == loaded(triangles));
}

// --- Files, paths and lists

TEST(StlFile, IsFoundByNamesBeyondAscii) {
  const TempDir folder;
  folder.write("t\xC3\xAAte/\xE6\xA9\x9F.stl", binary({kA}));
  folder.write("c\xF4ne.stl", solid(facet(kB)));  // Latin-1
  EXPECT_EQ(loadPath(wide(folder.path()) + L"/tête/機.stl"), loaded({kA}));
  EXPECT_EQ(loadPath(wide(folder.path()) + L"/cône.stl"), loaded({kB}));
}

TEST(StlFile, IsFoundByAPathWrittenOnWindows) {
  const TempDir folder;
  folder.write("Parts/Head_B.stl", binary({kA}));
  EXPECT_EQ(loadPath(wide(folder.path()) + L"\\PARTS\\head_b.STL"), loaded({kA}));
}

TEST(StlFile, NeedsNoExtension) {
  const TempDir folder;
  EXPECT_EQ(loadPath(wide(folder.write("part", binary({kA})))), loaded({kA}));
}

TEST(StlFile, ThatDoesNotOpenGivesNoFile) {
  const TempDir folder;
  folder.write("sub/x.stl", binary({kA}));
  const std::wstring root = wide(folder.path());
  ASSERT_EQ(mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
  for (const std::wstring& path :
       {std::wstring(), root + L"/none.stl", root + L"/sub", root + L"/sub/x.stl/", root + L"/pipe",
        std::wstring(L"/dev/zero"), std::wstring(70000, L'x'), root + L"/sub/x.stl" + L'\0'}) {
    EXPECT_EQ(loadPath(path), (Loaded{UTri::STL_NO_FILE, {}}));
  }
}

TEST(StlFile, ThatFailsToReadGivesAReadError) {
  // The first page of a program is not mapped, so reading it fails.
  EXPECT_EQ(loadPath(L"/proc/self/mem"), (Loaded{UTri::STL_READ_ERROR, {}}));
}

TEST(StlFile, IsReadAgainOnEveryCall) {
  const TempDir folder;
  EXPECT_EQ(loadPath(wide(folder.write("x.stl", binary({kA})))), loaded({kA}));
  EXPECT_EQ(loadPath(wide(folder.write("x.stl", solid(facet(kB))))), loaded({kB}));
}

TEST(StlFile, IsClosedAfterwards) {
  const auto openFiles = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  const std::ptrdiff_t before = openFiles();
  for (const std::string& bytes : {binary({kA}), solid(facet(kA)), std::string("no stl")}) {
    load(bytes);
  }
  EXPECT_EQ(openFiles(), before);
}

TEST(StlList, KeepsItsStorageFromFileToFile) {
  const TempDir folder;
  const std::wstring path = wide(folder.write("x.stl", binary({kA, kB})));
  std::vector<UTri> out(100);
  const UTri* const storage = out.data();
  ASSERT_EQ(UTri::_loadSTL(path, out), UTri::STL_LOADED);
  EXPECT_EQ(out, (std::vector<UTri>{kA, kB}));
  EXPECT_EQ(out.data(), storage);
}

#ifndef KORVO_SANITIZED  // sanitizers need their own address space, and end what asks for too much

/// At most that much address space more than there is now.
class LessMemory {
 public:
  explicit LessMemory(std::size_t more) {
    getrlimit(RLIMIT_AS, &before_);
    long pages = 0;
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    if (file == nullptr || std::fscanf(file, "%ld", &pages) != 1) pages = 0;
    if (file != nullptr) std::fclose(file);
    const rlimit less{static_cast<rlim_t>(pages * sysconf(_SC_PAGESIZE)) + more, before_.rlim_max};
    setrlimit(RLIMIT_AS, &less);
  }
  LessMemory(const LessMemory&) = delete;
  LessMemory& operator=(const LessMemory&) = delete;
  ~LessMemory() { setrlimit(RLIMIT_AS, &before_); }

 private:
  rlimit before_{};
};

TEST(StlFile, WhoseTrianglesDoNotFitIntoMemoryGivesNoMemory) {
  const TempDir folder;
  constexpr std::uint32_t kCount = 20'000'000;  // 1.4 GB
  const auto large = folder.write("binary.stl", binary({}, kCount));
  std::filesystem::resize_file(large, 84 + 50ull * kCount);  // a hole: it takes no room on the disk
  const auto text = folder.write("text.stl", solid(facet(kA)));
  std::filesystem::resize_file(text, 1ull << 31);
  const LessMemory limit(1 << 29);
  EXPECT_EQ(loadPath(wide(large)), (Loaded{UTri::STL_NO_MEMORY, {}}));
  EXPECT_EQ(loadPath(wide(text)), (Loaded{UTri::STL_NO_MEMORY, {}}));
}

#endif

}  // namespace
}  // namespace zgeo
