// Files far larger than what they say: they are read rightly, or refused, with memory that depends
// on what is kept of them and not on their size.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "kinematics/KMachine.h"
#include "platform/zgeo/UTri.h"
#include "tests/big/Child.h"
#include "tests/support/TempFile.h"
#include "toolkit/Machine.h"

namespace korvo::test {
namespace {

namespace fs = std::filesystem;
using zgeo::UTri;
using zkin::KMachine;

// --- a definition file of 200 MB

constexpr std::size_t kDefinitionSize = 200'000'000;

/// Readers keep one line (1203 characters) and a buffer of their file's stream; checks the lines
/// that say something. The rest is the code that a process of its own touches for the first time.
constexpr long kReaderMib = 8;

const char* const kBegin = "frame\naxis=X,+x\naxis=Y,+y\npart=x,y,0,0,0\n";
const char* const kMiddle = "lien=BATI\naxis=Z,+z\n";
const char* const kEnd = "tool=z,0,0,50\nlimits=X,-5,5\nlimits=Z,-6,7\n";

std::string lines() {
  std::string block;
  while (block.size() < 1'000'000) block += "# " + std::string(97, 'c') + "\n";
  return block;
}

/// Of one line, which is cut behind its first characters.
std::string line() { return std::string(1'000'000, '#'); }

fs::path definition(const TempDir& folder, const std::string& filling) {
  const fs::path path = folder.write("machine.def", kBegin);
  std::ofstream out(path, std::ios::binary | std::ios::app);
  const std::size_t half = kDefinitionSize / 2 / filling.size();
  for (std::size_t i = 0; i < half; ++i) out << filling;
  out << '\n' << kMiddle;
  for (std::size_t i = 0; i < half; ++i) out << filling;
  out << '\n' << kEnd;
  return path;
}

bool isRight(const KMachine& machine) {
  const zkin::KMachineElem* const x = machine.getElemByName(L"X");
  const zkin::KMachineElem* const z = machine.getElemByName(L"Z");
  return machine.getAxisNum() == 3 && machine.getElemNumber() == 6 && x && z && x->getMin() == -5 &&
         x->getMax() == 5 && z->getMin() == -6 && z->getMax() == 7;
}

int readByLibrary(const fs::path& path) {
  KMachine machine(path.wstring().c_str(), 2);
  return machine.readDataFile() == 0 && isRight(machine) ? 0 : -1;
}

int readByToolkit(const fs::path& path) {
  const Loaded loaded = load(path);
  return loaded && isRight(**loaded.machine) ? 0 : -1;
}

struct DefinitionRow {
  const char* name;
  std::string (*filling)();
  int (*read)(const fs::path& path);
};

class BigDefinition : public testing::TestWithParam<DefinitionRow> {};

TEST_P(BigDefinition, IsReadInTheMemoryOfOneLine) {
  const TempDir folder;
  const fs::path path = definition(folder, GetParam().filling());
  ASSERT_GE(fs::file_size(path), kDefinitionSize);
  const ChildAnswer answer = inChild([&] { return GetParam().read(path); });
  std::printf("%s: %ld MiB at the peak\n", GetParam().name, answer.peakMib);
  EXPECT_TRUE(answer.hasEnded);
  EXPECT_EQ(answer.code, 0);
  EXPECT_LE(answer.peakMib, kReaderMib);
}

INSTANTIATE_TEST_SUITE_P(Readers, BigDefinition,
                         testing::Values(DefinitionRow{"LibraryManyLines", lines, readByLibrary},
                                         DefinitionRow{"LibraryTwoLongLines", line, readByLibrary},
                                         DefinitionRow{"ToolkitManyLines", lines, readByToolkit},
                                         DefinitionRow{"ToolkitTwoLongLines", line, readByToolkit}),
                         [](const auto& row) { return std::string(row.param.name); });

// --- an STL file of 3 GB

constexpr std::uint64_t kCount = 64'000'000;
constexpr std::uint64_t kBinarySize = 84 + 50 * kCount;  // 3.2 GB, beyond what an int counts
constexpr std::uint64_t kTriangleBytes = kCount * sizeof(UTri);
static_assert(kTriangleBytes == 4'608'000'000);

/// Blocks, buffers and code: what a load takes beside its triangles.
constexpr long kBesideMib = 16;
constexpr std::uint64_t kGigabyte = 1'000'000'000;

/// A file of zeros behind `head` that takes no room on the disk.
fs::path sparse(const TempDir& folder, const std::string& head, std::uint64_t size) {
  const fs::path path = folder.write("big.stl", head);
  fs::resize_file(path, size);
  struct stat status{};
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_LT(status.st_blocks * 512, 1'000'000);
  return path;
}

std::string headOf(std::uint32_t count) {
  std::string head(80, '\0');
  for (int shift = 0; shift < 32; shift += 8) head += static_cast<char>(count >> shift & 0xFF);
  return head;
}

struct StlRow {
  const char* name;
  std::string head;
  std::uint64_t size;
  std::uint64_t addressSpace;
  int code;
  std::uint64_t triangles;
};

std::ostream& operator<<(std::ostream& out, const StlRow& row) { return out << row.name; }

class BigStl : public testing::TestWithParam<StlRow> {};

TEST_P(BigStl, TakesItsTrianglesOrIsRefused) {
  const StlRow& row = GetParam();
  const TempDir folder;
  const fs::path path = sparse(folder, row.head, row.size);
  const ChildAnswer answer = inChild(
      [&] {
        std::vector<UTri> triangles;
        const int code = UTri::_loadSTL(path.wstring(), triangles);
        return triangles.size() == row.triangles ? code : 99;
      },
      row.addressSpace);
  std::printf("%s: %ld MiB at the peak\n", row.name, answer.peakMib);
  EXPECT_TRUE(answer.hasEnded);
  EXPECT_EQ(answer.code, row.code);
  EXPECT_LE(answer.peakMib, kBesideMib + static_cast<long>(row.triangles * sizeof(UTri) >> 20));
}

const std::string kText =
    "solid part\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n"
    "endloop\nendfacet\n";

INSTANTIATE_TEST_SUITE_P(
    Files, BigStl,
    testing::Values(
        StlRow{"AsItsCountSays", headOf(kCount), kBinarySize, kTriangleBytes + kGigabyte / 2,
               UTri::STL_LOADED, kCount},
        StlRow{"WithoutMemoryForIt", headOf(kCount), kBinarySize, 2 * kGigabyte,
               UTri::STL_NO_MEMORY, 0},
        StlRow{"CountsMoreThanItHas", headOf(0xFFFFFFFF), kBinarySize, 2 * kGigabyte,
               UTri::STL_NO_MEMORY, 0},
        StlRow{"CountsMoreThanItHasWithMemory", headOf(0xFFFFFFFF), kBinarySize,
               kTriangleBytes + kGigabyte / 2, UTri::STL_LOADED, kCount},
        StlRow{"CountsLessThanItHas", headOf(1000), kBinarySize, 2 * kGigabyte, UTri::STL_LOADED,
               1000},
        StlRow{"CountsNothing", headOf(0), kBinarySize, 2 * kGigabyte, UTri::STL_LOADED, 0},
        // The room that is reserved for a text is address space alone.
        StlRow{"IsOneFacetAndZeros", kText, 3 * kGigabyte, 4 * kGigabyte, UTri::STL_LOADED, 1}),
    [](const auto& row) { return std::string(row.param.name); });

/// A machine takes room for all bodies and reads each into a list of its own: 9.2 GB here, and what
/// there is no memory for is left out.
TEST(BigStlOfAMachine, IsLeftOutWithoutMemoryForBothLists) {
  const TempDir folder;
  sparse(folder, headOf(kCount), kBinarySize);
  folder.write("small.stl", kText + "endsolid\n");
  const fs::path path = folder.write(
      "machine.def",
      "frame\naxis=X,+x,$ZRN_MACHINE_DEF/big.stl\npart=x,y,0,0,0,$ZRN_MACHINE_DEF/small.stl\n"
      "lien=BATI\naxis=Z,+z\ntool=z,0,0,50\n");
  const ChildAnswer answer = inChild(
      [&] {
        KMachine machine(path.wstring().c_str(), 2);
        if (machine.readDataFile() != 0) return 1;
        std::vector<UTri> triangles;
        machine.getTrianglesU(zkin::KMachineValue<2>(), triangles);
        return triangles.size() == 1 ? 0 : 2;
      },
      6 * kGigabyte);
  EXPECT_TRUE(answer.hasEnded);
  EXPECT_EQ(answer.code, 0);
  EXPECT_LE(answer.peakMib, kBesideMib);
}

/// The check looks at the beginning of a body and at its first hundred thousand triangles.
TEST(BigStlOfAMachine, IsCheckedInTheMemoryOfItsBeginning) {
  const TempDir folder;
  sparse(folder, headOf(kCount), kBinarySize);
  const fs::path path = folder.write("machine.def",
                                     "frame\naxis=X,+x,$ZRN_MACHINE_DEF/big.stl\n"
                                     "part=x,y,0,0,0\nlien=BATI\naxis=Z,+z\ntool=z,0,0,50\n");
  const ChildAnswer answer = inChild([&] { return load(path) ? 0 : 1; });
  EXPECT_TRUE(answer.hasEnded);
  EXPECT_EQ(answer.code, 0);
  EXPECT_LE(answer.peakMib, kBesideMib);
}

}  // namespace
}  // namespace korvo::test
