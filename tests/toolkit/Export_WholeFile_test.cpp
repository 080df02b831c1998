#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include "tests/support/TempFile.h"
#include "tests/toolkit/ExportBodies.h"
#include "toolkit/export/WholeFile.h"
#include "toolkit/export/Write.h"

using korvo::WholeFile;
using korvo::WriteError;
using korvo::test::boxBody;
using korvo::test::bytesOf;
using korvo::test::filesIn;
using korvo::test::TempDir;
namespace fs = std::filesystem;

namespace {

// No file grows beyond so many bytes meanwhile: what a full disk looks like.
class Room {
 public:
  explicit Room(rlim_t bytes) : handler_(signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit less{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &less);
  }
  ~Room() {
    setrlimit(RLIMIT_FSIZE, &before_);
    signal(SIGXFSZ, handler_);
  }
  Room(const Room&) = delete;
  Room& operator=(const Room&) = delete;

 private:
  rlimit before_{};
  void (*handler_)(int);
};

std::string messageOf(const std::function<void()>& write) {
  try {
    write();
  } catch (const WriteError& e) {
    return e.what();
  }
  return "no error";
}

void writeText(const fs::path& path, const std::string& text) {
  WholeFile file(path);
  file.write(text);
  file.commit();
}

TEST(WholeFile, IsThereWithAllItsBytes) {
  const TempDir folder;
  WholeFile file(folder.path() / "a");
  file.write("one ");
  file.write(std::string(200000, 'x'));
  EXPECT_FALSE(fs::exists(folder.path() / "a"));
  file.commit();
  EXPECT_EQ(bytesOf(folder.path() / "a"), "one " + std::string(200000, 'x'));
  EXPECT_EQ(filesIn(folder.path()), 1u);
}

TEST(WholeFile, ItsStartMayBeWrittenOver) {
  const TempDir folder;
  WholeFile file(folder.path() / "a");
  file.write("0 lines: one two");
  file.overwriteStart("2");
  file.commit();
  EXPECT_EQ(bytesOf(folder.path() / "a"), "2 lines: one two");
}

TEST(WholeFile, WithoutCommitLeavesEverythingAsItWas) {
  const TempDir folder;
  const fs::path old = folder.write("a", "old");
  {
    WholeFile(old).write("new");
  }
  EXPECT_EQ(bytesOf(old), "old");
  EXPECT_EQ(filesIn(folder.path()), 1u);
}

TEST(WholeFile, KeepsPermissionsAndLinks) {
  const TempDir folder;
  const fs::path old = folder.write("a", "old");
  fs::permissions(old, fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink(old, folder.path() / "link");
  writeText(folder.path() / "link", "new");
  EXPECT_TRUE(fs::is_symlink(folder.path() / "link"));
  EXPECT_EQ(bytesOf(old), "new");
  EXPECT_EQ(fs::status(old).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(WholeFile, RefusesWhatIsNoFileAndWhereNoneCanBe) {
  const TempDir folder;
  fs::create_directory(folder.path() / "a.stl");
  EXPECT_NE(
      messageOf([&] { WholeFile f(folder.path() / "a.stl"); }).find("a.stl: expected a file,"),
      std::string::npos);
  EXPECT_NE(messageOf([&] {
              WholeFile f(folder.path() / "no" / "a.stl");
            }).find("a.stl: expected a folder to write it into, found none of that name"),
            std::string::npos);
}

#if defined(__linux__)

// What /dev/stdout is; where it leads is a pipe, or a file that somebody writes to.
class OpenStream : public testing::Test {
 protected:
  fs::path linkTo(int stream) {
    const fs::path link = folder_.path() / ("link" + std::to_string(stream));
    fs::create_symlink("/proc/self/fd/" + std::to_string(stream), link);
    return link;
  }

  TempDir folder_;
};

TEST_F(OpenStream, LinkToAPipeIsRefusedAndStays) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const fs::path link = linkTo(ends[1]);
  const std::string said = messageOf([&] { writeText(link, "new"); });
  EXPECT_NE(said.find(": expected a file, found something else"), std::string::npos) << said;
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(filesIn(folder_.path()), 1u);
  close(ends[0]);
  close(ends[1]);
}

TEST_F(OpenStream, LinkToAFileThatIsOpenIsRefusedAndBothStay) {
  const fs::path old = folder_.write("a", "old");
  const int stream = open(old.c_str(), O_WRONLY);
  ASSERT_GE(stream, 0);
  const fs::path link = linkTo(stream);
  fs::create_symlink(link.filename(), folder_.path() / "link");
  for (const fs::path& path : {link, folder_.path() / "link"}) {
    const std::string said = messageOf([&] { writeText(path, "new"); });
    EXPECT_NE(said.find("expected a file, found what leads to an open stream"), std::string::npos)
        << said;
    EXPECT_TRUE(fs::is_symlink(path));
  }
  EXPECT_EQ(bytesOf(old), "old");
  EXPECT_EQ(filesIn(folder_.path()), 3u);
  close(stream);
}

#endif

TEST(WholeFile, RefusesALinkToNone) {
  const TempDir folder;
  const fs::path link = folder.path() / "link";
  fs::create_symlink("none", link);
  const std::string said = messageOf([&] { writeText(link, "new"); });
  EXPECT_NE(said.find("expected a file, found a link to none"), std::string::npos) << said;
  EXPECT_TRUE(fs::is_symlink(link));
}

TEST(WholeFile, SaysWhereItsBytesAreUntilItIsWhole) {
  const TempDir folder;
  WholeFile file(folder.path() / "a");
  EXPECT_EQ(file.temporary().parent_path(), folder.path());
  EXPECT_TRUE(fs::exists(file.temporary()));
}

TEST(WholeFile, OnAFullDiskTheOldOneStays) {
  const TempDir folder;
  const fs::path old = folder.write("a", "old");
  const Room room(1000);
  const std::string said = messageOf([&] { writeText(old, std::string(100000, 'x')); });
  EXPECT_NE(said.find("it is as it was"), std::string::npos) << said;
  EXPECT_EQ(bytesOf(old), "old");
  EXPECT_EQ(filesIn(folder.path()), 1u);
}

// The materials of one body fit into 150 bytes, twelve triangles do in no format.
TEST(WholeFile, WritersLeaveNothingBehindOnAFullDisk) {
  const TempDir folder;
  const std::vector<korvo::Body> bodies = {boxBody("b", {1, 2, 3}, {0, 0, 0}, {1, 1, 1})};
  const Room room(150);
  EXPECT_THROW(writeStl(folder.path() / "a.stl", bodies), WriteError);
  EXPECT_THROW(writeObj(folder.path() / "a.obj", bodies), WriteError);
  EXPECT_THROW(writeGlb(folder.path() / "a.glb", bodies), WriteError);
  EXPECT_THROW(writePng(folder.path() / "a.png", bodies), WriteError);
  EXPECT_LE(filesIn(folder.path()), 1u);  // the materials of a.obj, which are written first
  EXPECT_FALSE(fs::exists(folder.path() / "a.obj"));
}

}  // namespace
