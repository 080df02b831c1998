// Files that are no good definition files: paths that cannot be read, bytes that are no text, files
// cut off in the middle, machines that lack something. The answer is the return value and whatever
// could be read; never a crash, an exception or an endless load.

#include "tests/support/LoadText.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/kinematics/KMachine_describe.h"

using korvo::test::describe;
using korvo::test::LoadingTest;
using korvo::test::TempDir;
using zkin::KMachine;

namespace {

const std::string kMill =
    "frame\naxis=X,x\naxis=Y,y\npart=x,y\nlien=BATI\naxis=Z,z\ntool=z,0,0,50\n";

// --- paths that cannot be read

class UnreadablePath : public testing::Test {
 protected:
  /// Loads a good file, then the path: nothing may change.
  void expectUnreadable(const std::wstring& path) {
    KMachine machine;
    machine.setDataFilePNE(folder.write("good.def", kMill).wstring(), 2);
    ASSERT_EQ(machine.readDataFile(), 0);
    const std::string before = describe(machine);
    machine.setDataFilePNE(path, 2);
    EXPECT_EQ(machine.readDataFile(), -1);
    EXPECT_EQ(describe(machine), before);
    EXPECT_EQ(machine.getAxisNum(), 3);
    EXPECT_EQ(machine.getDataFilePNE(), path);
  }

  TempDir folder;
};

TEST_F(UnreadablePath, Empty) { expectUnreadable(L""); }
TEST_F(UnreadablePath, Missing) { expectUnreadable((folder.path() / "gone.def").wstring()); }
TEST_F(UnreadablePath, MissingFolder) { expectUnreadable(L"/no/such/folder/m.def"); }
TEST_F(UnreadablePath, Folder) { expectUnreadable(folder.path().wstring()); }
TEST_F(UnreadablePath, FolderWithSlash) { expectUnreadable(folder.path().wstring() + L"/"); }
TEST_F(UnreadablePath, RootFolder) { expectUnreadable(L"/"); }
TEST_F(UnreadablePath, Blanks) { expectUnreadable(L"   "); }
TEST_F(UnreadablePath, LineFeed) { expectUnreadable(L"\n"); }
TEST_F(UnreadablePath, FileUsedAsFolder) {
  expectUnreadable(folder.write("f.def", kMill).wstring() + L"/m.def");
}
TEST_F(UnreadablePath, Device) { expectUnreadable(L"/dev/null"); }
TEST_F(UnreadablePath, PathLongerThanTheSystemAllows) {
  expectUnreadable(L"/" + std::wstring(100000, L'a'));
}
TEST_F(UnreadablePath, HoldsANul) {
  expectUnreadable(folder.write("g.def", kMill).wstring() + std::wstring(1, L'\0') + L"tail");
}
TEST_F(UnreadablePath, HoldsNoCharacter) { expectUnreadable(std::wstring(1, L'\xd800') + L".def"); }
TEST_F(UnreadablePath, BeyondUnicode) {
  expectUnreadable(std::wstring(1, static_cast<wchar_t>(0x7fffffff)));
}
TEST_F(UnreadablePath, DanglingLink) {
  std::filesystem::create_symlink(folder.path() / "gone", folder.path() / "link.def");
  expectUnreadable((folder.path() / "link.def").wstring());
}
TEST_F(UnreadablePath, LinkToItself) {
  std::filesystem::create_symlink(folder.path() / "self.def", folder.path() / "self.def");
  expectUnreadable((folder.path() / "self.def").wstring());
}
TEST_F(UnreadablePath, PipeIsNotWaitedFor) {
  const std::filesystem::path pipe = folder.path() / "pipe.def";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  expectUnreadable(pipe.wstring());
}

/// Gives up the privileges of the super user, who may read everything, until it dies.
class OrdinaryUser {
 public:
  OrdinaryUser() : changed_(geteuid() == 0 && seteuid(65534) == 0) {}
  ~OrdinaryUser() {
    if (changed_ && seteuid(0) != 0) abort();
  }

 private:
  bool changed_;
};

TEST_F(UnreadablePath, WithoutPermission) {
  const std::filesystem::path file = folder.write("secret.def", kMill);
  KMachine machine(file.wstring().c_str(), 2);
  chmod(file.c_str(), 0);
  {
    const OrdinaryUser user;
    EXPECT_EQ(machine.readDataFile(), -1);
  }
  EXPECT_EQ(machine.getElemNumber(), 0);
}

TEST_F(UnreadablePath, FolderWithoutPermission) {
  const std::filesystem::path file = folder.write("closed/m.def", kMill);
  KMachine machine(file.wstring().c_str(), 2);
  chmod(file.parent_path().c_str(), 0);
  {
    const OrdinaryUser user;
    EXPECT_EQ(machine.readDataFile(), -1);
  }
  EXPECT_EQ(machine.getElemNumber(), 0);
  chmod(file.parent_path().c_str(), 0700);
}

// --- whole files

struct FileRow {
  std::string name;
  std::string bytes;
  int version;
  int result;
  std::string names;  ///< the elements by name, in rank order
};

std::ostream& operator<<(std::ostream& out, const FileRow& row) { return out << row.name; }

const auto rowName = [](const auto& info) { return info.param.name; };

std::string names(const KMachine& machine) {
  std::string all;
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    all += (rank ? " " : "") + korvo::test::narrow(machine.getElemByRank(rank)->getElemName());
  }
  return all;
}

class BadFile : public LoadingTest, public testing::WithParamInterface<FileRow> {};

TEST_P(BadFile, GivesResultAndWhatCouldBeRead) {
  const KMachine machine = load(GetParam().bytes, GetParam().version);
  EXPECT_EQ(result, GetParam().result);
  EXPECT_EQ(names(machine), GetParam().names);
  EXPECT_TRUE(result == 0 || machine.getAxisNum() == 0);
  trace.claimAll(L"... ? Unrecognized stuff");
  trace.claimAll(L"\t(geom. file not found");
}

const std::string kNul(1, '\0');

/// Bytes without meaning, the same on every run.
std::string noise(int count, unsigned seed) {
  std::string bytes;
  for (int i = 0; i < count; ++i) {
    seed = seed * 1664525u + 1013904223u;
    bytes += static_cast<char>(seed >> 24);
  }
  return bytes;
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

INSTANTIATE_TEST_SUITE_P(
    Bytes, BadFile,
    testing::Values(
        FileRow{"Empty", "", 2, -1, ""}, FileRow{"OneLineFeed", "\n", 2, -1, ""},
        FileRow{"OneByte", "f", 2, -1, ""}, FileRow{"OneNul", kNul, 2, -1, ""},
        FileRow{"Blanks", std::string(5000, ' '), 2, -1, ""},
        FileRow{"LineFeeds", std::string(100000, '\n'), 2, -1, ""},
        FileRow{"CarriageReturns", std::string(100000, '\r'), 2, -1, ""},
        FileRow{"Nuls", std::string(100000, '\0'), 2, -1, ""},
        FileRow{"AllOnes", std::string(100000, '\xff'), 2, -1, ""},
        FileRow{"EqualSigns", std::string(100000, '='), 2, -1, ""},
        FileRow{"Commas", std::string(100000, ','), 2, -1, ""},
        FileRow{"Sharps", std::string(100000, '#'), 2, -1, ""},
        FileRow{"OnlyAByteOrderMark", "\xef\xbb\xbf", 2, -1, ""},
        FileRow{"HalfAByteOrderMark", "\xef\xbb", 2, -1, ""},
        FileRow{"TwoByteText", "\xff\xfe" + repeated("f" + kNul, 20), 2, -1, ""},
        FileRow{"Noise1", noise(50000, 1), 2, -1, ""},
        FileRow{"Noise2", noise(50000, 2), 1, -1, ""},
        FileRow{"NoiseThenMachine", noise(5000, 3) + "\n" + kMill, 2, 0, "BATI X Y PIECE Z OUTIL"},
        FileRow{"MachineThenNoise", kMill + noise(5000, 4), 2, 0, "BATI X Y PIECE Z OUTIL"},
        FileRow{"ElfHeader",
                "\x7f"
                "ELF\x02\x01\x01" +
                    std::string(9, '\0'),
                2, -1, ""},
        FileRow{"ZipHeader", "PK\x03\x04\n" + noise(100, 5), 2, -1, ""},
        FileRow{"TenMegabytesInOneLine", std::string(10 << 20, 'x'), 2, -1, ""},
        FileRow{"TenMegabytesOfOperands", "frame=" + std::string(10 << 20, ','), 2, -1, "BATI"},
        FileRow{"TenMegabyteNumber", "tool=" + std::string(10 << 20, '9'), 2, -1, "OUTIL"},
        FileRow{"LongCommentBetween", "frame\n#" + std::string(1 << 20, 'x') + "\ntool\n", 2, -1,
                "BATI OUTIL"},
        FileRow{"NulLineBetween", "frame\n" + kNul + "\ntool\n", 2, -1, "BATI OUTIL"},
        FileRow{"NulInAComment", "frame#" + kNul + "x\ntool\n", 2, -1, "BATI OUTIL"},
        FileRow{"EndOfTextByte", "frame\n\x1a\ntool\n", 2, -1, "BATI OUTIL"},
        FileRow{"MachineWithCarriageReturns", "frame\r\npart\r\nlien=BATI\r\ntool\r\n", 2, 0,
                "BATI PIECE OUTIL"},
        FileRow{"MachineWithOldMacLines", "frame\rpart\rtool\r", 2, -1, ""}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Elements, BadFile,
    testing::Values(
        FileRow{"OnlyComments", "# a\n* b\n// c\n", 2, -1, ""},
        FileRow{"OnlySettings", "strategy=1\nmode=2\n", 2, -1, ""},
        FileRow{"NoFrame", "axis=X,x\npart\ntool\n", 2, -1, "X PIECE OUTIL"},
        FileRow{"NoPart", "frame\naxis=X,x\ntool\n", 2, -1, "BATI X OUTIL"},
        FileRow{"NoTool", "frame\naxis=X,x\npart\n", 2, -1, "BATI X PIECE"},
        FileRow{"GunIsNoTool", "frame\npart\nlien=BATI\naxis=Z,z\ngun\n", 2, -1,
                "BATI PIECE Z DRILL"},
        FileRow{"OnlyFrame", "frame\n", 2, -1, "BATI"},
        FileRow{"OnlyPart", "part\n", 2, -1, "PIECE"},
        FileRow{"OnlyTool", "tool\n", 2, -1, "OUTIL"},
        FileRow{"OnlyAxes", "axis=X,x\naxis=Y,y\n", 2, -1, "X Y"},
        FileRow{"OnlyGeometry", "geom=a.stl\ngeom=b.stl\n", 2, -1, "GEOM GEOM"},
        FileRow{"TwoFrames", kMill + "frame\n", 2, -1, "BATI X Y PIECE Z OUTIL BATI"},
        FileRow{"TwoFramesInARow", "frame\nframe\npart\nlien=BATI\ntool\n", 2, -1,
                "BATI BATI PIECE OUTIL"},
        FileRow{"TwoParts", "frame\npart\nlien=BATI\npart\nlien=BATI\ntool\n", 2, -1,
                "BATI PIECE PIECE OUTIL"},
        FileRow{"TwoFramesAndTwoParts", "frame\npart\nframe\nlien=BATI\npart\nlien=BATI\ntool\n", 2,
                -1, "BATI PIECE BATI PIECE OUTIL"},
        FileRow{"PartAlone", "part\ntool\n", 2, -1, "PIECE OUTIL"},
        FileRow{"NoAxis", "frame\npart\nlien=BATI\ntool\n", 2, 0, "BATI PIECE OUTIL"},
        FileRow{"ToolBesideTheMachine", "tool\nframe\npart\n", 2, 0, "OUTIL BATI PIECE"},
        FileRow{"SameAxisTwice", "frame\naxis=X,x\npart\nlien=BATI\naxis=X,y\naxis=Z,z\ntool\n", 2,
                0, "BATI X PIECE X Z OUTIL"},
        FileRow{"SameAxisTwiceInARow", "frame\npart\nlien=BATI\naxis=X,x\naxis=X,x\ntool\n", 2, 0,
                "BATI PIECE X X OUTIL"},
        FileRow{"SameNumberOtherName", "frame\npart\nlien=BATI\naxis=U,1,x\naxis=V,1,y\ntool\n", 1,
                0, "BATI PIECE U V OUTIL"},
        FileRow{"SameNameOtherNumber", "frame\npart\nlien=BATI\naxis=U,1,x\naxis=U,2,y\ntool\n", 1,
                0, "BATI PIECE U U OUTIL"},
        FileRow{"NamedLikeTheFrame", "frame\npart\nlien=BATI\naxis=BATI,1,x\ntool\n", 1, 0,
                "BATI PIECE BATI OUTIL"},
        FileRow{"AxesWithoutNumbers", "frame\npart\nlien=BATI\naxis=U,x\naxis=V,y\ntool\n", 1, 0,
                "BATI PIECE U V OUTIL"},
        FileRow{"AxesOfUnknownNames", "frame\npart\nlien=BATI\naxis=U,x\nrotation=D,y\ntool\n", 2,
                0, "BATI PIECE U D OUTIL"},
        FileRow{"AxesWithoutDirections",
                "frame\npart\nlien=BATI\naxis=X\nrotation=C\naxis=Z\ntool\n", 2, 0,
                "BATI PIECE X C Z OUTIL"},
        FileRow{"AxesWithHugeDirections",
                "frame\npart\nlien=BATI\naxis=X,1e308,1e308,0\ntool=z,1e308,0,0\n", 2, 0,
                "BATI PIECE X OUTIL"},
        FileRow{"NumbersThatOverflow",
                "frame=1e999,0,0\npart\nlien=BATI\nrotation=C,1e999,0,0,1,1,1e999,0,0\n"
                "tool=1e999,-1e999,0,1e999,0,0\n",
                2, 0, "BATI PIECE C OUTIL"},
        FileRow{"NumbersThatAreNone",
                "frame=nan,0,0\npart\nlien=BATI\nrotation=C,nan,nan,nan,1,1,nan,nan,nan\n"
                "tool=nan,0,0,nan,nan,nan\n",
                2, 0, "BATI PIECE C OUTIL"},
        FileRow{
            "NumbersBelowTheSmallest",
            "frame\npart\nlien=BATI\nrotation=C,1e-320,0,0,1,1,1e-999,0,0\ntool=0,0,1e-200,0,0,0\n",
            2, 0, "BATI PIECE C OUTIL"},
        FileRow{"LinkToNothing", "lien=Q\nframe\npart\nlien=BATI\ntool\n", 2, 0,
                "BATI PIECE OUTIL"},
        FileRow{"LinkWithoutName", "frame\npart\nlien=BATI\nlien\ntool\n", 2, 0,
                "BATI PIECE OUTIL"},
        FileRow{"LinkWithEmptyName", "frame\npart\nlien=BATI\nlien=\ntool\n", 2, 0,
                "BATI PIECE OUTIL"},
        FileRow{"LinkToWhatComesLater", "frame\npart\nlien=Z\naxis=Z,z\ntool\n", 2, 0,
                "BATI PIECE Z OUTIL"},
        FileRow{"LinkByKeyword", "frame\npart\nlien=frame\ntool\n", 2, 0, "BATI PIECE OUTIL"},
        FileRow{"HookBeforeAnyElement", "loop=X,1,2,3\n" + kMill, 2, 0, "BATI X Y PIECE Z OUTIL"},
        FileRow{"LimitsBeforeAnyElement", "limits=X,1,2\n" + kMill, 2, 0, "BATI X Y PIECE Z OUTIL"},
        FileRow{"ThirteenAxes",
                "frame\npart\nlien=BATI\n" +
                    [] {
                      std::string axes;
                      for (int i = 1; i <= 13; ++i) {
                        axes += "axis=Q" + std::to_string(i) + "," + std::to_string(i) + ",x\n";
                      }
                      return axes;
                    }() +
                    "# no tool\n",
                1, -1, "BATI PIECE Q1 Q2 Q3 Q4 Q5 Q6 Q7 Q8 Q9 Q10 Q11 Q12 Q13"},
        FileRow{"Version1FileReadAs2", "frame\npart\nlien=BATI\naxis=U,1,x\ntool\n", 2, 0,
                "BATI PIECE U OUTIL"},
        FileRow{"Version2FileReadAs1", kMill, 1, 0, "BATI X Y PIECE Z OUTIL"},
        FileRow{"NegativeVersion", kMill, -7, 0, "BATI X Y PIECE Z OUTIL"},
        FileRow{"ReversedOrder",
                "tool=z,0,0,50\naxis=Z,z\nlien=BATI\npart=x,y\naxis=Y,y\naxis=X,x\nframe\n", 2, 0,
                "OUTIL Z PIECE Y X BATI"},
        FileRow{"OneLineForAll", "frame,axis=X,x,part,tool", 2, -1, ""},
        FileRow{"SemicolonsBetween", "frame;part;tool\n", 2, -1, ""}),
    rowName);

/// The mill's file cut off behind every byte: the elements are those of the lines that are whole
/// enough to name them.
class TruncatedFile : public LoadingTest, public testing::WithParamInterface<int> {};

TEST_P(TruncatedFile, GivesThePrefixOfTheMachine) {
  const std::string bytes = kMill.substr(0, static_cast<std::size_t>(GetParam()));
  const KMachine machine = load(bytes, 2);
  int keywords = 0;  // lines that already hold a whole element keyword
  for (std::size_t at = 0; at < bytes.size(); at = bytes.find('\n', at) + 1) {
    for (const std::string word : {"frame", "axis", "part", "tool"}) {
      const std::string line = bytes.substr(at, bytes.find('\n', at) - at);
      keywords += line == word || line.starts_with(word + "=");
    }
    if (bytes.find('\n', at) == std::string::npos) break;
  }
  EXPECT_EQ(machine.getElemNumber(), keywords);
  EXPECT_EQ(result, keywords == 6 ? 0 : -1);
  trace.claimAll(L"\t(geom. file not found");
  trace.claimAll(L"... ? Unrecognized stuff");
}

INSTANTIATE_TEST_SUITE_P(Mill, TruncatedFile,
                         testing::Range(0, static_cast<int>(kMill.size()) + 1));

TEST_F(LoadingTest, ThirteenAxesHaveNoPosition) {
  std::string text = "frame\npart\nlien=BATI\n";
  for (int i = 1; i <= 13; ++i)
    text += "axis=Q" + std::to_string(i) + "," + std::to_string(i) + ",x\n";
  const KMachine machine = load(text + "tool\n", 1);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(machine.getAxisNum(), 13);
  EXPECT_TRUE(trace.claim(korvo::test::noPositionLine(13)));
  EXPECT_EQ(machine.newMachineValue(), nullptr);
  EXPECT_TRUE(trace.claim(korvo::test::noPositionLine(13)));
}

TEST_F(LoadingTest, ManyElementsLoad) {
  std::string text = "frame\npart\nlien=BATI\n";
  for (int i = 0; i < 2000; ++i) text += "geom\n";
  const KMachine machine = load(text + "tool\n", 2);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(machine.getElemNumber(), 2003);
  EXPECT_EQ(machine.getToolChain(false, 1).size(), 2003u);
  EXPECT_EQ(trace.claimAll(L"... ? Unrecognized stuff"), 2);
}

// --- memory that is out

#if !defined(KORVO_SANITIZED)
/// Loads an axis numbered two thousand million, whose table of axes does not fit, and exits 0 when
/// the answer is -1 and the machine can still be used.
void loadWithoutMemory() {
  const rlim_t bytes = rlim_t{2} << 30;
  const rlimit limit = {bytes, bytes};
  setrlimit(RLIMIT_AS, &limit);
  KMachine machine;
  TempDir folder;
  machine.setDataFilePNE(
      folder.write("m.def", "frame\npart\nlien=BATI\naxis=Q,2000000000,x\ntool\n").wstring(), 1);
  const bool refused = machine.readDataFile() == -1;
  machine.setDataFilePNE(folder.write("n.def", kMill).wstring(), 2);
  const bool usable = machine.readDataFile() == 0 && machine.getAxisNum() == 3;
  exit(refused && usable ? 0 : 1);
}

TEST(DefinitionFileMemory, TableThatDoesNotFitGivesMinusOne) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(loadWithoutMemory(), testing::ExitedWithCode(0), "");
}
#endif

}  // namespace
