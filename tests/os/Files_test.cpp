#include "platform/os/Files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <cstring>
#include <iterator>

#include "tests/os/TempFolder.h"

namespace korvo::os {
namespace {

using test::TempFolder;

std::string contentOf(const File& file) {
  std::string content;
  for (int c = std::getc(file.get()); c != EOF; c = std::getc(file.get()))
    content.push_back(static_cast<char>(c));
  return content;
}

/// What the file that a wide path opens holds; "(none)" when it opens none. All three questions
/// must agree.
std::string opened(const std::wstring& path) {
  const File file = openRead(path);
  EXPECT_EQ(_waccess(path.c_str(), 4), file ? 0 : -1);
  EXPECT_EQ(resolve(path).has_value(), file != nullptr);
  return file ? contentOf(file) : "(none)";
}

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

// --- Narrow paths

TEST(NarrowPath, OpensExactlyWhatItNames) {
  const TempFolder folder;
  folder.write("caf\xe9.zrn", "bytes");
  EXPECT_TRUE(openRead(folder.narrow("caf\xe9.zrn")));
  for (const char* const other : {"CAF\xe9.zrn", "caf\xc3\xa9.zrn", "gone", "."}) {
    EXPECT_FALSE(openRead(folder.narrow(other))) << other;
  }
  EXPECT_FALSE(openRead(std::string()));
}

// --- Plain files

TEST(OpenRead, GivesTheBytesAsTheyAre) {
  const TempFolder folder;
  const std::string content("a\r\n\x1A\0\xFF", 6);
  folder.write("plain.def", content);
  EXPECT_EQ(opened(folder.wide(L"plain.def")), content);
  EXPECT_EQ(resolve(folder.wide(L"plain.def")), folder.narrow("plain.def"));
}

TEST(OpenRead, OpensAnEmptyFile) {
  const TempFolder folder;
  folder.write("empty", "");
  EXPECT_EQ(opened(folder.wide(L"empty")), "");
}

TEST(OpenRead, FollowsLinks) {
  const TempFolder folder;
  folder.write("real", "through the link");
  std::filesystem::create_symlink("real", folder.path() / "link");
  EXPECT_EQ(opened(folder.wide(L"link")), "through the link");
}

TEST(OpenRead, FindsRelativePaths) {
  const TempFolder folder;
  folder.write("sub/x.def", "relative");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  EXPECT_EQ(opened(L"sub/x.def"), "relative");
  EXPECT_EQ(opened(L".\\SUB\\..\\Sub\\X.DEF"), "relative");
  std::filesystem::current_path(before);
}

TEST(OpenRead, DoesNotPassTheFileToChildPrograms) {
  const TempFolder folder;
  folder.write("x");
  const File file = openRead(folder.wide(L"x"));
  ASSERT_NE(file, nullptr);
  EXPECT_NE(fcntl(fileno(file.get()), F_GETFD) & FD_CLOEXEC, 0);
}

TEST(OpenRead, LeavesNothingOpenBehind) {
  const TempFolder folder;
  folder.write("x");
  folder.write("sub/y");
  const std::ptrdiff_t before = openDescriptors();
  for (const wchar_t* name : {L"x", L"X", L"sub", L"SUB/Y", L"SUB/Z", L"none"}) {
    opened(folder.wide(name));
    _waccess(folder.wide(name).c_str(), 0);
  }
  EXPECT_EQ(openDescriptors(), before);
}

// --- What is no readable regular file

TEST(OpenReadRefuses, MissingFiles) {
  const TempFolder folder;
  EXPECT_EQ(opened(folder.wide(L"none.def")), "(none)");
  EXPECT_EQ(opened(folder.wide(L"none/none.def")), "(none)");
}

TEST(OpenReadRefuses, Folders) {
  const TempFolder folder;
  folder.write("sub/x");
  for (const wchar_t* name : {L"", L"sub", L"sub/", L"SUB", L"SUB\\", L"sub\\"})
    EXPECT_EQ(opened(folder.wide(name)), "(none)");
  EXPECT_EQ(opened(L"/"), "(none)");
  EXPECT_EQ(opened(L"."), "(none)");
}

TEST(OpenReadRefuses, FilesWrittenAsFolders) {
  const TempFolder folder;
  folder.write("x.stl");
  for (const wchar_t* name : {L"x.stl/", L"x.stl\\", L"X.STL/", L"X.STL\\", L"x.stl/.", L"X.STL/y"})
    EXPECT_EQ(opened(folder.wide(name)), "(none)");
}

TEST(OpenReadRefuses, EmptyPaths) {
  EXPECT_EQ(opened(L""), "(none)");
  EXPECT_EQ(_waccess(nullptr, 4), -1);
}

TEST(OpenReadRefuses, PipesWithoutWaiting) {
  const TempFolder folder;
  ASSERT_EQ(mkfifo(folder.narrow("pipe").c_str(), 0600), 0);
  EXPECT_EQ(opened(folder.wide(L"pipe")), "(none)");
  EXPECT_EQ(opened(folder.wide(L"PIPE")), "(none)");
}

TEST(OpenReadRefuses, Devices) { EXPECT_EQ(opened(L"/dev/null"), "(none)"); }

TEST(OpenReadRefuses, Sockets) {
  const TempFolder folder;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string name = folder.narrow("socket");
  ASSERT_LT(name.size(), sizeof address.sun_path);
  std::memcpy(address.sun_path, name.c_str(), name.size());
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(opened(folder.wide(L"socket")), "(none)");
  close(descriptor);
}

TEST(OpenReadRefuses, LinksToNothingAndToThemselves) {
  const TempFolder folder;
  std::filesystem::create_symlink("nowhere", folder.path() / "dangling");
  std::filesystem::create_symlink("loop", folder.path() / "loop");
  EXPECT_EQ(opened(folder.wide(L"dangling")), "(none)");
  EXPECT_EQ(opened(folder.wide(L"DANGLING")), "(none)");
  EXPECT_EQ(opened(folder.wide(L"loop")), "(none)");
}

/// Takes the right to pass over file permissions from this thread, which root has otherwise.
class WithoutRootRights {
 public:
  WithoutRootRights() {
    syscall(SYS_capget, &header_, before_.data());
    auto reduced = before_;
    reduced[0].effective &= ~(1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH);
    syscall(SYS_capset, &header_, reduced.data());
  }
  WithoutRootRights(const WithoutRootRights&) = delete;
  WithoutRootRights& operator=(const WithoutRootRights&) = delete;
  ~WithoutRootRights() { syscall(SYS_capset, &header_, before_.data()); }

 private:
  __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, 2> before_{};
};

TEST(OpenReadRefuses, FilesWithoutPermission) {
  const TempFolder folder;
  folder.write("secret");
  ASSERT_EQ(chmod(folder.narrow("secret").c_str(), 0), 0);
  const WithoutRootRights limited;
  EXPECT_EQ(openRead(folder.wide(L"secret")), nullptr);
  EXPECT_EQ(_waccess(folder.wide(L"secret").c_str(), 4), -1);
  EXPECT_EQ(_waccess(folder.wide(L"secret").c_str(), 0), 0);
}

TEST(OpenReadRefuses, NamesInFoldersThatDoNotList) {
  const TempFolder folder;
  folder.write("sub/x.stl", "found");
  ASSERT_EQ(chmod(folder.narrow("sub").c_str(), 0100), 0);
  {
    const WithoutRootRights limited;
    EXPECT_EQ(opened(folder.wide(L"sub/x.stl")), "found");
    EXPECT_EQ(opened(folder.wide(L"sub/X.stl")), "(none)");
  }
  chmod(folder.narrow("sub").c_str(), 0700);
}

TEST(OpenReadRefuses, WhenNoDescriptorIsLeft) {
  const TempFolder folder;
  folder.write("x");
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{0, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const int access = _waccess(folder.wide(L"x").c_str(), 4);
  const int accessOtherCase = _waccess(folder.wide(L"X").c_str(), 4);
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(access, -1);
  EXPECT_EQ(accessOtherCase, -1);
}

TEST(OpenReadRefuses, PathsLongerThanTheSystemTakes) {
  std::wstring path;
  for (int i = 0; i < 100000; ++i) path += L"./";
  EXPECT_EQ(opened(path + L"x"), "(none)");
  EXPECT_EQ(opened(std::wstring(100000, L'x')), "(none)");
}

TEST(OpenReadRefuses, NamesThatHoldANul) {
  const TempFolder folder;
  folder.write("x");
  for (const std::wstring& name : {std::wstring(L"x\0", 2), std::wstring(L"x\0y", 3)}) {
    EXPECT_EQ(openRead(folder.wide(name)), nullptr);
    EXPECT_FALSE(resolve(folder.wide(name)));
  }
}

TEST(OpenReadRefuses, NamesThatDoNotConvert) {
  const TempFolder folder;
  folder.write("?");
  EXPECT_EQ(opened(folder.wide(std::wstring(1, wchar_t{0xD800}))), "(none)");
  EXPECT_EQ(opened(folder.wide(std::wstring(1, wchar_t{0x110000}))), "(none)");
}

// --- Modes

TEST(Access, ModeZeroAsksForExistence) {
  const TempFolder folder;
  folder.write("sub/x");
  EXPECT_EQ(_waccess(folder.wide(L"sub").c_str(), 0), 0);
  EXPECT_EQ(_waccess(folder.wide(L"SUB\\").c_str(), 0), 0);
  EXPECT_EQ(_waccess(folder.wide(L"sub\\X").c_str(), 0), 0);
  EXPECT_EQ(_waccess(folder.wide(L"none").c_str(), 0), -1);
  EXPECT_EQ(_waccess(L"", 0), -1);
  EXPECT_EQ(_waccess(nullptr, 0), -1);
}

TEST(Access, OtherModesAreRefused) {
  const TempFolder folder;
  folder.write("x");
  for (int mode : {-1, 1, 2, 3, 5, 6, 7, 8})
    EXPECT_EQ(_waccess(folder.wide(L"x").c_str(), mode), -1);
}

// --- Names beyond ASCII

TEST(WideNames, AreUtf8First) {
  const TempFolder folder;
  folder.write("t\xC3\xAAte", "UTF-8");
  folder.write("t\xEAte", "Latin-1");
  EXPECT_EQ(opened(folder.wide(L"tête")), "UTF-8");
}

TEST(WideNames, AreBytesWhenNoUtf8NameIsThere) {
  const TempFolder folder;
  folder.write("t\xEAte", "Latin-1");
  EXPECT_EQ(opened(folder.wide(L"tête")), "Latin-1");
}

TEST(WideNames, CopiedByteByByteFromAFileStillOpen) {
  const TempFolder folder;
  folder.write("t\xC3\xAAte", "UTF-8");
  EXPECT_EQ(opened(folder.wide(L"t\xC3\xAAte")), "UTF-8");
}

TEST(WideNames, EachNameOfAPathHasItsOwnReading) {
  const TempFolder folder;
  folder.write("t\xC3\xAAte/\xC3\xA9t\xC3\xA9.stl", "bytes in characters");
  folder.write("\xE6\xA9\x9F/t\xEAte/x.stl", "Latin-1 in UTF-8");
  folder.write("d\xC3\xA9/\xE6\xA9\x9F.stl", "characters in bytes");
  EXPECT_EQ(opened(folder.wide(L"tête/\xC3\xA9t\xC3\xA9.stl")), "bytes in characters");
  EXPECT_EQ(opened(folder.wide(L"tête\\\xC3\xA9t\xC3\xA9.STL")), "bytes in characters");
  EXPECT_EQ(opened(folder.wide(L"機/tête/x.stl")), "Latin-1 in UTF-8");
  EXPECT_EQ(opened(folder.wide(L"d\xC3\xA9/機.stl")), "characters in bytes");
  EXPECT_EQ(resolve(folder.wide(L"TÊTE\\\xC3\xA9t\xC3\xA9.STL")),
            folder.narrow("t\xC3\xAAte/\xC3\xA9t\xC3\xA9.stl"));
}

TEST(WideNames, TheReadingAsWrittenIsTakenBeforeOtherCase) {
  const TempFolder folder;
  folder.write("\xE6\xA9\x9F/T\xEAte", "Latin-1, same case");
  folder.write("\xE6\xA9\x9F/t\xC3\xAAte", "UTF-8, other case");
  EXPECT_EQ(opened(folder.wide(L"機/Tête")), "Latin-1, same case");
  EXPECT_EQ(opened(folder.wide(L"機/TÊTE")), "(none)");  // both fit
}

TEST(WideNames, BeyondOneByteAreUtf8Only) {
  const TempFolder folder;
  folder.write("\xE6\xA9\x9F.def", "UTF-8");
  EXPECT_EQ(opened(folder.wide(L"機.def")), "UTF-8");
}

TEST(WideNames, DoNotDependOnTheLocale) {
  const std::string former = std::setlocale(LC_CTYPE, nullptr);
  ASSERT_NE(std::setlocale(LC_CTYPE, "C"), nullptr);
  const TempFolder folder;
  folder.write("\xF0\x9F\x94\xA7");
  EXPECT_EQ(resolve(folder.wide(L"\x1F527")), folder.narrow("\xF0\x9F\x94\xA7"));
  std::setlocale(LC_CTYPE, former.c_str());
}

// --- Paths written on Windows

TEST(WindowsPaths, BackslashesSeparate) {
  const TempFolder folder;
  folder.write("parts/head.stl", "found");
  EXPECT_EQ(opened(folder.wide(L"parts\\head.stl")), "found");
  EXPECT_EQ(opened(folder.wide(L"parts\\\\head.stl")), "found");
}

TEST(WindowsPaths, ABackslashInANameComesFirst) {
  const TempFolder folder;
  folder.write("parts/head.stl", "in the folder");
  folder.write("parts\\head.stl", "as written");
  EXPECT_EQ(opened(folder.wide(L"parts\\head.stl")), "as written");
}

TEST(WindowsPaths, EveryNameIgnoresCase) {
  const TempFolder folder;
  folder.write("Parts/Heads/Head_B.stl", "found");
  EXPECT_EQ(opened(folder.wide(L"PARTS\\heads\\HEAD_b.STL")), "found");
  EXPECT_EQ(resolve(folder.wide(L"PARTS\\heads\\HEAD_b.STL")),
            folder.narrow("Parts/Heads/Head_B.stl"));
}

TEST(WindowsPaths, CaseIsIgnoredInAccentedNames) {
  const TempFolder folder;
  folder.write("T\xC3\x8ATE.stl", "UTF-8");
  folder.write("C\xD4NE.stl", "Latin-1");
  EXPECT_EQ(opened(folder.wide(L"tête.STL")), "UTF-8");
  EXPECT_EQ(opened(folder.wide(L"t\xC3\xAAte.STL")), "UTF-8");
  EXPECT_EQ(opened(folder.wide(L"c\xF4ne.STL")), "Latin-1");
}

TEST(WindowsPaths, SeveralFitsAreNone) {
  const TempFolder folder;
  folder.write("head.stl");
  folder.write("Head.stl");
  EXPECT_EQ(opened(folder.wide(L"HEAD.STL")), "(none)");
}

TEST(WindowsPaths, SeveralFittingFoldersAreNone) {
  const TempFolder folder;
  folder.write("parts/head.stl");
  folder.write("Parts/other.stl");
  EXPECT_EQ(opened(folder.wide(L"PARTS\\head.stl")), "(none)");
}

TEST(WindowsPaths, AFitThatIsNoFileStillCounts) {
  const TempFolder folder;
  folder.write("head.stl");
  folder.write("Head.stl/inside");
  EXPECT_EQ(opened(folder.wide(L"HEAD.STL")), "(none)");
}

TEST(WindowsPaths, TheExactNameIsTakenAmongSeveral) {
  const TempFolder folder;
  folder.write("head.stl", "small");
  folder.write("Head.stl", "capital");
  EXPECT_EQ(opened(folder.wide(L"Head.stl")), "capital");
}

TEST(WindowsPaths, TheExactFolderIsTakenAmongSeveral) {
  const TempFolder folder;
  folder.write("parts/head.stl", "small");
  folder.write("Parts/head.stl", "capital");
  EXPECT_EQ(opened(folder.wide(L"Parts\\HEAD.stl")), "capital");
}

TEST(WindowsPaths, AnExactFolderHidesNoFileOfThatName) {
  const TempFolder folder;
  folder.write("head/inside");
  folder.write("Head", "a file");
  EXPECT_EQ(opened(folder.wide(L"head")), "(none)");
}

TEST(WindowsPaths, DriveLettersNameNoRootHere) {
  const TempFolder folder;
  folder.write("x.def");
  EXPECT_EQ(opened(L"C:" + folder.wide(L"x.def")), "(none)");
}

}  // namespace
}  // namespace korvo::os
