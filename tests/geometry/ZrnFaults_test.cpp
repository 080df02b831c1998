// What the system may refuse: memory, places in a stream, bytes, the file itself. And how much a
// load takes: memory in proportion to the file, a stack that no file can make larger.

#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <new>

#include "geometry/GeometryFile.h"
#include "tests/geometry/ZrnFaces.h"
#include "tests/geometry/ZrnFiles.h"
#include "tests/support/LoadText.h"
#include "tests/support/ZrnStream.h"

namespace {

/// Counts down to the call that fails; below zero none does.
class Fault {
 public:
  void atCall(int n) { left_ = n - 1; }
  void never() { left_ = -1; }
  bool isNow() { return left_ >= 0 && left_-- == 0; }
  bool isToCome() const { return left_ >= 0; }

 private:
  int left_ = -1;
};

Fault getPosition, setPosition, allocation, allocationOrNull, opening;

/// Bytes on the heap, and the most there were. Other tests of this program run threads.
std::atomic<std::size_t> heldBytes = 0;
std::atomic<std::size_t> mostBytes = 0;

void* held(void* p) noexcept {
  if (p != nullptr) heldBytes += malloc_usable_size(p);
  const std::size_t now = heldBytes;
  if (now > mostBytes) mostBytes = now;
  return p;
}

void* newOrThrow(std::size_t size) {
  void* const p = allocation.isNow() ? nullptr : held(std::malloc(size == 0 ? 1 : size));
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

void released(void* p) noexcept {
  if (p != nullptr) heldBytes -= malloc_usable_size(p);
  std::free(p);
}

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// Those of the standard are replaced in this program and the libraries it uses.
[[gnu::noinline]] void* operator new(std::size_t size) { return newOrThrow(size); }
[[gnu::noinline]] void* operator new[](std::size_t size) { return newOrThrow(size); }
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocationOrNull.isNow() ? nullptr : held(std::malloc(size == 0 ? 1 : size));
}
[[gnu::noinline]] void operator delete(void* p) noexcept { released(p); }
[[gnu::noinline]] void operator delete[](void* p) noexcept { released(p); }
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept { released(p); }
[[gnu::noinline]] void operator delete[](void* p, std::size_t) noexcept { released(p); }
[[gnu::noinline]] void operator delete(void* p, const std::nothrow_t&) noexcept { released(p); }

// OpenCASCADE leaves some of its own behind when memory fails it in the middle.
extern "C" const char* __lsan_default_suppressions();   // NOLINT: the name is the sanitizer's
extern "C" const char* __lsan_default_suppressions() {  // NOLINT
  return "leak:libTK\nleak:solidra_triangulate\nleak:solidra::triangulate\n";
}

extern "C" [[gnu::visibility("default")]] int fgetpos(std::FILE* stream, std::fpos_t* place) {
  static auto* const real = next<int(std::FILE*, std::fpos_t*)>("fgetpos");
  return getPosition.isNow() ? -1 : real(stream, place);
}

extern "C" [[gnu::visibility("default")]] int fsetpos(std::FILE* stream, const std::fpos_t* place) {
  static auto* const real = next<int(std::FILE*, const std::fpos_t*)>("fsetpos");
  return setPosition.isNow() ? -1 : real(stream, place);
}

extern "C" [[gnu::visibility("default")]] std::FILE* fdopen(int descriptor,
                                                            const char* mode) noexcept {
  static auto* const real = next<std::FILE*(int, const char*)>("fdopen");
  return opening.isNow() ? nullptr : real(descriptor, mode);
}

namespace korvo::test {
namespace {

using zkin::CGeomFileNode;
using zkin::CGeomFileNodeList;
using zkin::ZRN_LoadFile;

using Texts = std::vector<std::string>;

class ZrnFaults : public testing::Test {
 protected:
  ~ZrnFaults() override {
    for (Fault* const fault :
         {&getPosition, &setPosition, &allocation, &allocationOrNull, &opening})
      fault->never();
  }

  /// Loads with one fault at its n-th call.
  ZrnAnswer load(const std::string& bytes, Fault& fault, int call) {
    const std::string path = folder.write("f.zrn", bytes).string();
    fault.atCall(call);
    ZrnAnswer answer = answerOf(path.c_str());
    fault.never();
    return answer;
  }

  static ZrnAnswer answer(int code, Texts nodes, Texts messages) {
    return {code, 1.0, std::move(nodes), std::move(messages)};
  }

  TempDir folder;
};

// --- places in the stream. Those that a skip cannot have make the result 1, the others cost what
// was to be read there.

const std::string kPlaneZero = "2 2 10\n0 0 1\n";  // its data line is an unknown header
const std::string kZeroNode = "9[2,2,10](0 0 1) #";

TEST_F(ZrnFaults, SkipThatCannotGetAPlace) {
  EXPECT_EQ(load("x\n" + kPlaneZero, getPosition, 1),
            answer(1, {kZeroNode + "0"}, {"SkipToNextEntity::fgetpos error\n"}));
}

TEST_F(ZrnFaults, SkipThatCannotGoBack) {
  EXPECT_EQ(load("x\n" + kPlaneZero, setPosition, 1),
            answer(1, {}, {"SkipToNextEntity::fsetpos error\n", kEnd}));
}

TEST_F(ZrnFaults, CancelBehindAFaultIsACancel) {
  const std::string path = folder.write("f.zrn", "x\n" + kPlaneZero + kPlaneZero).string();
  bool isWanted = true;
  const auto cancel = [&](unsigned char* flag) {
    if (!isWanted) *flag = 1;
    return isWanted ? 0 : 1;
  };
  const auto stopAtTheFault = [&](const char*) { isWanted = false; };
  CGeomFileNodeList nodes;
  double scale = 0;
  getPosition.atCall(1);
  EXPECT_EQ(ZRN_LoadFile(path.c_str(), nodes, scale, cancel, nullptr, stopAtTheFault), 0);
  EXPECT_TRUE(nodes.empty());
}

TEST_F(ZrnFaults, SubEntitySkipThatCannotGetAPlace) {
  EXPECT_EQ(load("x\n" + kPlaneZero, getPosition, 2),
            answer(1, {kZeroNode + "0"}, {"SkipSubEntities::fgetpos error\n"}));
}

TEST_F(ZrnFaults, SubEntitySkipThatCannotGoBack) {
  EXPECT_EQ(load("x\n" + kPlaneZero, setPosition, 2),
            answer(1, {}, {"SkipSubEntities::fsetpos error\n", kEnd}));
}

TEST_F(ZrnFaults, SkipBehindASubEntityThatCannotGetAPlace) {
  // First place: the line's header; second: again, for its kind; third: behind it.
  EXPECT_EQ(load("x\n" + kLine + kPlaneZero, getPosition, 3),
            answer(1, {kZeroNode + "0"}, {"SkipToNextEntity::fgetpos error\n"}));
}

TEST_F(ZrnFaults, SkipInsideAnEntityCountsToo) {
  EXPECT_EQ(
      load("2 1 1\nx\n" + kPlaneZero, getPosition, 1),
      answer(1, {kZeroNode + "0"}, {notRead("Polyline"), "SkipToNextEntity::fgetpos error\n"}));
}

TEST_F(ZrnFaults, SkipBehindATrimmingCurveCountsToo) {
  // First place: in front of the curve; second: the skip behind its fault.
  EXPECT_EQ(load(kPlaneZero + "1 1 2\nx\n" + kPlaneZero, getPosition, 2),
            answer(1, {kZeroNode + "0", kZeroNode + "1"},
                   {trimNotRead("Polyline"), "SkipToNextEntity::fgetpos error\n"}));
}

TEST_F(ZrnFaults, TrimmingCurvesThatCannotGetAPlace) {
  EXPECT_EQ(load(kPlaneZero, getPosition, 1),
            answer(0, {kZeroNode + "0"}, {"GetTrimmingCurves::fgetpos error\n"}));
}

TEST_F(ZrnFaults, TrimmingCurvesThatCannotGoBack) {
  EXPECT_EQ(load(kPlaneZero + kPlaneZero, setPosition, 1),
            answer(0, {kZeroNode + "0"}, {"GetTrimmingCurves::fsetpos error\n", kEnd}));
}

TEST_F(ZrnFaults, PatchesThatCannotGetAPlace) {
  EXPECT_EQ(load("1 1 8\n0\n0\n" + kPlaneZero, getPosition, 1),
            answer(0, {"6[1,1,8](|) #0", kZeroNode + "1"}, {"GetPatchSurfaces::fgetpos error\n"}));
}

TEST_F(ZrnFaults, PatchesThatCannotGoBack) {
  EXPECT_EQ(load("1 1 8\n0\n0\n" + kPlaneZero, setPosition, 1),
            answer(0, {"6[1,1,8](|) #0"}, {"GetPatchSurfaces::fsetpos error\n", kEnd}));
}

TEST_F(ZrnFaults, AttributesThatCannotGetAPlace) {
  EXPECT_EQ(load(kLine + kPlaneZero, getPosition, 1),
            answer(0, {kLineNode, kZeroNode + "0"}, {"GetAttributes::fgetpos error\n"}));
}

TEST_F(ZrnFaults, AttributesThatCannotGoBack) {
  EXPECT_EQ(load(kLine + kPlaneZero, setPosition, 1),
            answer(0, {kLineNode}, {"GetAttributes::fsetpos error\n", kEnd}));
}

TEST_F(ZrnFaults, AttributeBlockThatCannotGetAPlace) {
  // First place: in front of the block; then one in front of each line.
  EXPECT_EQ(load(kLine + kText + kPlaneZero, getPosition, 3),
            answer(0, {kLineNode, kZeroNode + "0"},
                   {"CGeomFilePrivateAttribute::ReadDatas::fgetpos error\n"}));
}

TEST_F(ZrnFaults, AttributeBlockThatCannotGoBack) {
  EXPECT_EQ(
      load(kLine + kText + kPlaneZero, setPosition, 1),
      answer(0, {kLineNode}, {"CGeomFilePrivateAttribute::ReadDatas::fsetpos error\n", kEnd}));
}

TEST_F(ZrnFaults, SkipOnAStreamSetsTheFlagAndNeverClearsIt) {
  bool error = false;
  const Stream stream = streamOf("x\n" + kLine);
  getPosition.atCall(1);
  EXPECT_FALSE(zkin::SkipToNextEntity(stream.get(), error, false, {}));
  EXPECT_TRUE(error);
  EXPECT_TRUE(zkin::SkipToNextEntity(stream.get(), error, false, {}));
  EXPECT_TRUE(error);
}

// --- memory

TEST_F(ZrnFaults, NoMemoryForATrimmingCurve) {
  EXPECT_EQ(load(kPlane + kUv + kPlane, allocationOrNull, 1),
            answer(0, {planeNode(0), planeNode(1)},
                   {"GetTrimmingCurves::could not allocate memory error\n"}));
}

TEST_F(ZrnFaults, NoMemoryForAPatch) {
  EXPECT_EQ(load(kMulti + kPatch + kPlane, allocationOrNull, 1),
            answer(0, {multiNode(0), planeNode(1)},
                   {"GetPatchSurfaces::could not allocate memory error\n"}));
}

TEST_F(ZrnFaults, NoMemoryAnywhereEndsTheLoadWithoutAnException) {
  const std::string path =
      folder.write("f.zrn", kMulti + kPatch + kUv + kText + kNurbs + kArc).string();
  int refusals = 0;
  for (int call = 1; call < 500; ++call) {
    CGeomFileNodeList nodes;
    double scale = 0;
    allocation.atCall(call);
    const int code = ZRN_LoadFile(path.c_str(), nodes, scale);
    allocation.never();
    if (code == 0) break;
    ASSERT_EQ(code, 1);
    ++refusals;
  }
  EXPECT_GT(refusals, 0);
  EXPECT_LT(refusals, 499);  // the last call had all it asked for
}

// --- bytes and the file

TEST_F(ZrnFaults, FileThatIsGoneWhenItIsOpened) {
  ZrnAnswer gone = load(kPlane, opening, 2);  // the first is the look whether it is empty
  EXPECT_EQ(gone, answer(-1, {}, {"ZRN_LoadFile:: Could not open file"}));
  gone = load(kPlane, opening, 1);
  EXPECT_EQ(gone, answer(-1, {}, {"ZRN_LoadFile:: File is empty"}));
}

/// Puts a folder in the place of the open file at `path`: its next bytes cannot be read.
void breakOpenFile(const std::filesystem::path& path) {
  const int folder = open("/", O_RDONLY);
  ASSERT_GE(folder, 0);
  for (int descriptor = 3; descriptor < 1000; ++descriptor) {
    std::error_code error;
    const auto target =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error);
    if (!error && target == path) dup2(folder, descriptor);
  }
  close(folder);
}

TEST_F(ZrnFaults, FileThatBreaksInTheMiddle) {
  std::string bytes;
  for (int i = 0; i < 100'000; ++i) bytes += kLine;
  const std::filesystem::path path = folder.write("f.zrn", bytes);
  CGeomFileNodeList nodes;
  double scale = 0;
  Texts said;
  int questions = 0;
  const auto cancel = [&](unsigned char*) -> unsigned char {
    if (++questions == 10) breakOpenFile(path);
    return 0;
  };
  const int code = ZRN_LoadFile(path.c_str(), nodes, scale, cancel, nullptr,
                                [&](const char* text) { said.emplace_back(text); });
  EXPECT_EQ(code, 1);
  EXPECT_GT(nodes.size(), 3u);  // those before stay
  EXPECT_LT(nodes.size(), 100'000u);
  EXPECT_EQ(entityText(nodes.back()->entity), kLineNode);
  for (const std::string& text : said) EXPECT_NE(text, kEnd);
}

TEST_F(ZrnFaults, PlacesBeyondFourGibibytes) {
  const Stream stream(std::tmpfile());
  ASSERT_TRUE(stream);
  ASSERT_EQ(fseeko(stream.get(), off_t{5} << 30, SEEK_SET), 0);
  const std::string bytes = kPlane + kUv + kText + kPlane;
  ASSERT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), stream.get()), bytes.size());
  ASSERT_EQ(fseeko(stream.get(), off_t{5} << 30, SEEK_SET), 0);
  CGeomFileNode node;
  long long counter = -1;
  EXPECT_TRUE(GetNextEntity(stream.get(), node, counter, {}));
  EXPECT_EQ(entityText(node.entity), planeNode(0) + " @{text\\n}");
  EXPECT_EQ(restOf(stream.get()), kPlane);
}

// --- memory that runs out on the way to triangles

/// Two planes of 100 by 80, the first with a hole, 16 above each other.
std::string twoFaces() {
  return rectangle(100, 80).text() + uvRectangle(.1, .1, .9, .9) + uvEllipse(.5, .5, .3, .3) +
         rectangle(100, 80, {0, 0, 16}).text();
}

/// Areas of the first face with all, some and none of its curves, and without memory for itself.
constexpr double kFrame = .64 * 8000;
constexpr double kCircle = .09 * 3.14159265 * 8000;
constexpr double kLower[] = {kFrame - kCircle, kFrame, kCircle, 8000, 0};

bool isSumOfFaces(double area) {
  return std::ranges::any_of(kLower, [&](double lower) {
    return std::abs(area - lower) < 20 || std::abs(area - lower - 8000) < 20;
  });
}

/// Every call at first, then ever fewer of the thousands that the mesher makes.
int nextCall(int call) { return call + 1 + call / 40; }

TEST_F(ZrnFaults, MemoryShortInAConversionLeavesOutSomethingOrIsMinusOne) {
  const std::string path = folder.write("f.zrn", twoFaces()).string();
  Triangles triangles;
  bool isOver = false;
  for (int call = 1; !isOver; call = nextCall(call)) {
    allocation.atCall(call);
    const int count = zkin::ZRN_FileToTriangles(path.c_str(), 0.01, triangles);
    isOver = allocation.isToCome();
    allocation.never();
    ASSERT_EQ(triangles.size(), count < 0 ? 0u : static_cast<std::size_t>(count)) << call;
    ASSERT_TRUE(isSumOfFaces(areaOf(triangles))) << call << ": " << areaOf(triangles);
  }
  EXPECT_NEAR(areaOf(triangles), kHasMesher ? kFrame - kCircle + 8000 : 0, 10);
}

TEST_F(ZrnFaults, MemoryShortInABodysFileLeavesNothingOrAll) {
  const std::wstring path = folder.write("f.zrn", rectangle(100, 80).text()).wstring();
  Triangles triangles;
  bool isOver = false;
  for (int call = 1; !isOver; call = nextCall(call)) {
    allocation.atCall(call);
    zkin::loadGeometryFile(path, triangles);
    isOver = allocation.isToCome();
    allocation.never();
    ASSERT_TRUE(triangles.empty() || std::abs(areaOf(triangles) - 8000) < 1) << call;
  }
  EXPECT_EQ(triangles.empty(), !kHasMesher);
}

TEST_F(ZrnFaults, MemoryShortForAMachinesBodiesLeavesElementsOut) {
  const std::wstring path = folder.write("f.zrn", rectangle(100, 80).text()).wstring();
  TraceCapture trace;
  zkin::KMachine machine =
      loadText("frame=z\npart=x,y,0,0,0\nlien=BATI\naxis=Z,z\ntool=z,0,0,100\n", 2);
  trace.claimAll(L"");
  machine.getElemByName(L"BATI")->setGeomFile(path);
  machine.getElemByName(L"Z")->setGeomFile(path);
  const std::string stl =
      "solid\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 160 0 0\nvertex 0 100 0\n"
      "endloop\nendfacet\nendsolid\n";
  machine.getElemByName(L"OUTIL")->setGeomFile(folder.write("f.stl", stl).wstring());
  double area = 0;
  bool isOver = false;
  for (int call = 1; !isOver; call = nextCall(call)) {
    Triangles triangles;
    allocation.atCall(call);
    machine.getTrianglesU(zkin::KMachineValue<3>(), triangles);
    isOver = allocation.isToCome();
    allocation.never();
    area = areaOf(triangles);
    const double bodies = std::round(area / 8000);
    ASSERT_TRUE(bodies <= 3 && std::abs(area - bodies * 8000) < 1) << call << ": " << area;
  }
  EXPECT_NEAR(area, kHasMesher ? 24000 : 8000, 1);
}

// --- how much a load takes

std::string repeated(const std::string& piece, std::size_t count) {
  std::string text;
  for (; count > 0; --count) text += piece;
  return text;
}

struct Hungry {
  const char* name;
  std::string bytes;
};

std::ostream& operator<<(std::ostream& out, const Hungry& file) { return out << file.name; }

class ZrnMemory : public testing::TestWithParam<Hungry> {};

TEST_P(ZrnMemory, StaysBelow64TimesTheFileAndOneMegabyte) {
  const TempDir folder;
  const std::string path = folder.write("f.zrn", GetParam().bytes).string();
  CGeomFileNodeList nodes;
  double scale = 0;
  const std::size_t before = heldBytes;
  mostBytes = before;
  EXPECT_EQ(ZRN_LoadFile(path.c_str(), nodes, scale), 0);
  const std::size_t taken = mostBytes - before;
  EXPECT_LT(taken, 64 * GetParam().bytes.size() + (std::size_t{1} << 20));
  RecordProperty("timesTheFile", std::to_string(double(taken) / double(GetParam().bytes.size())));
}

const auto hungryName = [](const auto& info) { return std::string(info.param.name); };

INSTANTIATE_TEST_SUITE_P(
    SmallEntities, ZrnMemory,
    testing::Values(Hungry{"Polylines", repeated("2 0 1\n", 70'000)},
                    Hungry{"NamedPolylines", repeated("2 0 1 0 x\n", 70'000)},
                    Hungry{"PolylinesWithAttributes", repeated("2 0 1\n2 2 210\n\n", 50'000)},
                    Hungry{"TrimmingCurves", kPlane + repeated("0 1 2\n", 70'000)},
                    Hungry{"Planes", repeated("2 2 10\n0 0 0\n", 50'000)},
                    Hungry{"Multipatches", repeated("1 1 8\n0\n0\n", 50'000)},
                    Hungry{"Points", "2 200000 1\n" + repeated("0 0 0\n", 200'000)},
                    Hungry{"UvPoints", kPlane + "200000 1 2\n" + repeated("0 0\n", 200'000)},
                    Hungry{"Reals", "1 1 8\n300000\n" + repeated("0\n", 300'000) + "0\n"},
                    Hungry{"Poles", "300 300 9\n" + repeated("0 0 0 1\n", 90'000)},
                    Hungry{"EmptyAttributeLines", kLine + "2 2 210\n" + repeated("\n", 600'000)},
                    Hungry{"AttributeLinesOfNul",
                           kLine + "2 2 210\n" + repeated(std::string(1, '\0') + "\n", 300'000)},
                    Hungry{"OneLongLine", std::string(3'000'000, 'x')}),
    hungryName);

INSTANTIATE_TEST_SUITE_P(
    LargeCounts, ZrnMemory,
    testing::Values(Hungry{"Surface", "2000000000 2000000000 9\n0 0 0 1\n"},
                    Hungry{"Curve", "9223372036854775807 1 9\n0 0 0 1\n"},
                    Hungry{"Polyline", "2 9223372036854775807 1\n0 0 0\n"},
                    Hungry{"Uv", kPlane + "9223372036854775807 1 2\n0 0\n"},
                    Hungry{"Patch", kMulti + "4294967296 4294967296 4\n0 0 0\n"},
                    Hungry{"Parameters", "1 1 8\n9223372036854775807\n0\n"},
                    Hungry{"Knots",
                           "2 1 9\n0 0 0 1\n0 0 0 1\n1 1\n0 0\n0 1\n0 1\n2000000000\n0\n"}),
    hungryName);

/// Runs it in a thread whose stack is as small as sanitizers bear.
void runOnASmallStack(std::function<void()> what) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{256} << 10), 0);
  pthread_t thread;
  const auto run = [](void* function) -> void* {
    (*static_cast<std::function<void()>*>(function))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &what), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(ZrnStack, IsNotDeepenedByManyEntitiesInARow) {
  const TempDir folder;
  const std::string many = repeated("2 0 1\n", 100'000);
  const std::string skipped = folder.write("skipped.zrn", "x\n" + many + kPlane).string();
  const std::string trims = folder.write("trims.zrn", kPlane + many).string();
  runOnASmallStack([&] {
    CGeomFileNodeList nodes;
    double scale = 0;
    EXPECT_EQ(ZRN_LoadFile(skipped.c_str(), nodes, scale), 0);
    EXPECT_EQ(nodes.size(), 1u);
    EXPECT_EQ(ZRN_LoadFile(trims.c_str(), nodes, scale), 0);
    EXPECT_EQ(nodes.back()->trimmingCurves.size(), 100'000u);
    nodes.clear();
  });
}

}  // namespace
}  // namespace korvo::test
