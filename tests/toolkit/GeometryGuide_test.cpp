#include <gtest/gtest.h>

#include <fstream>
#include <numbers>
#include <string>
#include <vector>

#include "geometry/ZrnFile.h"
#include "geometry/ZrnTriangles.h"
#include "tests/support/HasFaces.h"
#include "tests/support/TempFile.h"

// docs/geometry-file.md against the library: its examples load and have the area that they say.

namespace korvo::test {
namespace {

using zgeo::UTri;
using zgeo::UVec3d;

constexpr double kTolerance = 0.01;        // of the mesh, as machines show it
constexpr double kSinglePrecision = 1e-4;  // corners of a body of this size, all added up

/// The examples of the guide: fenced as zrn.
std::vector<std::string> guideExamples() {
  std::vector<std::string> blocks;
  bool inside = false;
  std::ifstream guide(KORVO_SOURCE_DIR "/docs/geometry-file.md");
  for (std::string line; std::getline(guide, line);) {
    if (inside && line == "```") {
      inside = false;
    } else if (inside) {
      blocks.back() += line + "\n";
    } else if (line == "```zrn") {
      blocks.emplace_back();
      inside = true;
    }
  }
  return blocks;
}

/// A piece of the plane z = 0: its area and its first moments.
struct Flat {
  double area = 0.0;
  double momentX = 0.0;
  double momentY = 0.0;

  static Flat about(double x, double y, double area) { return {area, area * x, area * y}; }
  Flat operator-(const Flat& o) const {
    return {area - o.area, momentX - o.momentX, momentY - o.momentY};
  }
};

Flat flatOf(const std::vector<UTri>& triangles) {
  Flat sum;
  for (const UTri& t : triangles) {
    const double area = ((t.p[1] - t.p[0]) ^ (t.p[2] - t.p[0])).norm() / 2;
    const UVec3d middle = (t.p[0] + t.p[1] + t.p[2]) * (1.0 / 3);
    sum.area += area;
    sum.momentX += area * middle.x;
    sum.momentY += area * middle.y;
  }
  return sum;
}

Flat flatOfText(const std::string& text) {
  const TempDir folder;
  const std::string path = folder.write("body.zrn", text).string();
  std::vector<UTri> triangles;
  EXPECT_EQ(zkin::ZRN_FileToTriangles(path.c_str(), kTolerance, triangles) > 0, kHasFaces);
  return flatOf(triangles);
}

struct Row {
  const char* name;
  std::size_t example;
  std::size_t entities;
  double scale;
  Flat expected;
  double error = kSinglePrecision;  ///< Of the area; moments are off by at most 10 times that.
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

class GeometryGuide : public testing::TestWithParam<Row> {};

TEST_P(GeometryGuide, ExampleLoadsWithNothingToTell) {
  const TempDir folder;
  const std::string path =
      folder.write("body.zrn", guideExamples().at(GetParam().example)).string();
  zkin::CGeomFileNodeList nodes;
  double scale = 0.0;
  const auto tell = [](const char* text) { ADD_FAILURE() << text; };
  ASSERT_EQ(zkin::ZRN_LoadFile(path.c_str(), nodes, scale, nullptr, nullptr, tell), 0);
  EXPECT_EQ(nodes.size(), GetParam().entities);
  EXPECT_EQ(scale, GetParam().scale);
}

// The moments tell where a hole is: (u, v) and (v, u) give one area.
TEST_P(GeometryGuide, ExampleHasItsAreaWhereItSays) {
  const Row& row = GetParam();
  const Flat found = flatOfText(guideExamples().at(row.example));
  const Flat expected = kHasFaces ? row.expected : Flat();
  EXPECT_NEAR(found.area, expected.area, row.error);
  EXPECT_NEAR(found.momentX, expected.momentX, 10 * row.error);
  EXPECT_NEAR(found.momentY, expected.momentY, 10 * row.error);
}

const Flat kSquare = Flat::about(5, 5, 10 * 10);
const Flat kWindow = Flat::about(7, 4.5, 2 * 5);
const Flat kHole = Flat::about(6, 3, std::numbers::pi * 2 * 2);

// Chords no further than the tolerance inside a circle of radius 2.
const double kChords = std::numbers::pi * (2 * 2 - (2 - kTolerance) * (2 - kTolerance));

const Row kRows[] = {
    {"Square", 0, 1, 1.0, kSquare},
    {"Window", 1, 1, 1.0, kSquare - kWindow},
    {"RoundHole", 2, 1, 1.0, kSquare - kHole, kChords + kSinglePrecision},
    {"ScaleAndPlane", 3, 3, 25.4, Flat::about(4, 2.5, 8 * 5)},
};

INSTANTIATE_TEST_SUITE_P(Guide, GeometryGuide, testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(GeometryGuideText, HasNoOtherExamples) { EXPECT_EQ(guideExamples().size(), std::size(kRows)); }

/// The example with the window, `what` in front of the header line that begins with `header`.
std::string windowWith(const std::string& what, const std::string& header) {
  std::string text = guideExamples().at(1);
  return text.insert(text.find("\n" + header) + 1, what);
}

constexpr double kWholeSquare = kHasFaces ? 100 : 0;

// The square without its window: the trap that the guide warns of first.
TEST(GeometryGuideText, BlankOrCommentLineBeforeATrimmingCurveLosesIt) {
  for (const char* line : {"\n", "# a window\n"}) {
    EXPECT_NEAR(flatOfText(windowWith(line, "5 1 2 0 window")).area, kWholeSquare,
                kSinglePrecision);
  }
}

TEST(GeometryGuideText, AttributesBeforeTrimmingCurvesLoseThem) {
  const std::string text = windowWith("2 2 210\nmaterial=steel\n", "5 1 2 0 rim");
  EXPECT_NEAR(flatOfText(text).area, kWholeSquare, kSinglePrecision);
}

}  // namespace
}  // namespace korvo::test
