#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/support/CommaLocale.h"
#include "tests/support/TempFile.h"
#include "tests/support/ZrnReference.h"
#include "tests/support/ZrnText.h"

/// Pieces of geometry files with the texts of what they give, and tables of whole files.
namespace korvo::test {

/// Entities none of whose data lines begins with three integers, so that skips pass over them.
inline const std::string kPlane = "2 2 10\n0 0 .5\n";
inline const std::string kLine = "2 1 1\n.5 2 3\n";
inline const std::string kLineNode = "1[2,1,1](0.5 2 3)";
inline const std::string kUv = "1 1 2\n.5 2\n";
inline const std::string kUvNode = "2[1,1,2](0.5 2)";
inline const std::string kPolynomial = "2 1 4\n.5 0 0\n.5 1 1\n";
inline const std::string kPolynomialNode = "3[2,1,4](0.5 0 0 0.5 1 1)";
inline const std::string kTrimmed = "2 0 5\n0 1\n.5 0 0\n.5 1 1\n";
inline const std::string kTrimmedNode = "5[2,0,5](0 0|0.5 0 0 0.5 1 1)";
inline const std::string kNurbs = "2 1 9\n.5 0 0 1\n1.5 0 0 1\n1 0\n0 0\n0 1\n0 1\n2\n.5\n1.5\n0\n";
inline const std::string kNurbsNode = "7[2,1,9](0.5 0 0 1 1.5 0 0 1|0 1 0 0 1|0.5 1.5)";
inline const std::string kArc = "1 1 14\n0 1\n5\n.5 0 0\n.5 0 0\n0 .5 0\n0 0 .5\n.5 0 0\n";
inline const std::string kArcNode = "10[1,1,14](0 1 5 0.5 0 0|0.5 0 0 0 0.5 0 0 0 0.5|0.5 0 0)";
inline const std::string kMulti = "1 1 8\n1\n.5\n1\n1.5\n";
inline const std::string kPatch = "2 2 4\n.5 0 0\n.5 1 0\n.5 0 1\n.5 1 1\n";
inline const std::string kPatchNode = "4[2,2,4](0.5 0 0 0.5 1 0 0.5 0 1 0.5 1 1)";
inline const std::string kSurface =
    "2 2 9\n.5 0 0 1\n.5 1 0 1\n.5 0 1 1\n.5 1 1 1\n1 1\n0 0\n0 1\n0 1\n1\n.5\n1\n1.5\n";
inline const std::string kText = "2 2 210\ntext\n";  ///< An attribute block.

/// The nodes of surfaces with their numbers.
inline std::string planeNode(int number) { return "9[2,2,10](0 0 0.5) #" + std::to_string(number); }
inline std::string multiNode(int number) { return "6[1,1,8](0.5|1.5) #" + std::to_string(number); }
inline std::string surfaceNode(int number) {
  return "8[2,2,9](0.5 0 0 1 0.5 1 0 1 0.5 0 1 1 0.5 1 1 1|1 1 0 0 0 1 0 1|0.5|1.5) #" +
         std::to_string(number);
}

inline const std::string kEnd = "SkipToNextEntity::end of file\n";
inline std::string notRead(const char* what) {
  return std::string("GetNextEntity:: could not read ") + what;
}
inline std::string trimNotRead(const char* what) {
  return std::string("GetTrimmingCurves:: could not read ") + what;
}
inline const std::string kPatchNotRead = "GetPatchSurface:: could not read Patch";

/// A literal that may hold NULs.
template <std::size_t N>
std::string bytes(const char (&literal)[N]) {
  return {literal, N - 1};
}

struct FileRow {
  const char* name;
  std::string bytes;
  std::vector<std::string> nodes;
  std::vector<std::string> messages;
  double scale = 1.0;
};

inline std::ostream& operator<<(std::ostream& out, const FileRow& row) { return out << row.name; }

/// Files that load (result 0), with everything that comes of them.
class ZrnFileTable : public testing::TestWithParam<FileRow> {
 protected:
  std::string path() const { return folder_.write("f.zrn", GetParam().bytes).string(); }
  static ZrnAnswer expected() {
    return {0, GetParam().scale, GetParam().nodes, GetParam().messages};
  }

  /// The body of the tables' tests.
  void expectAnswer() const {
    const std::string file = path();
    EXPECT_EQ(answerOf(file.c_str()), expected());
    EXPECT_EQ(ZrnReference::read(file.c_str()), expected()) << "by fgets and sscanf";
    const CommaLocale locale;
    ASSERT_TRUE(locale.isSet());
    EXPECT_EQ(answerOf(file.c_str()), expected()) << "under a decimal comma";
  }

 private:
  TempDir folder_;
};

inline std::string fileRowName(const testing::TestParamInfo<FileRow>& info) {
  return info.param.name;
}

}  // namespace korvo::test
