#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG

#include <gtest/gtest.h>
#include <stb/stb_image.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>

#include "tests/support/TempFile.h"
#include "tests/toolkit/ExportBodies.h"
#include "toolkit/export/Write.h"

using korvo::Body;
using korvo::test::boxBody;
using korvo::test::bytesOf;
using korvo::test::TempDir;
using zgeo::UMatrix;
using zgeo::UTri;
using zgeo::UVec3d;

namespace {

using Pixel = std::array<int, 3>;

class Image {
 public:
  explicit Image(const std::filesystem::path& path)
      : bytes_(stbi_load(path.c_str(), &width, &height, &channels, 0), stbi_image_free) {
    if (!bytes_) throw std::runtime_error("no picture");
  }
  Pixel at(int x, int y) const {
    const unsigned char* p = bytes_.get() + 3 * (y * width + x);
    return {p[0], p[1], p[2]};
  }
  bool isBackground(int x, int y) const { return at(x, y) == at(0, 0); }

  int width = 0, height = 0, channels = 0;

 private:
  std::unique_ptr<unsigned char, void (*)(void*)> bytes_;
};

Image drawn(const std::vector<Body>& bodies, korvo::PictureSize size = {400, 400}) {
  const TempDir folder;
  writePng(folder.path() / "a.png", bodies, size);
  return Image(folder.path() / "a.png");
}

std::string bytesOfPicture(const std::vector<Body>& bodies) {
  const TempDir folder;
  writePng(folder.path() / "a.png", bodies, {200, 150});
  return bytesOf(folder.path() / "a.png");
}

Body cube(const std::string& name, const Pixel& rgb, double a, const UVec3d& middle = {}) {
  const UVec3d half(a / 2, a / 2, a / 2);
  return boxBody(name, rgb, middle - half, middle + half);
}

// How many rows or columns are not background alone.
template <class IsEmpty>
int extent(int count, IsEmpty isEmpty) {
  int used = 0;
  for (int i = 0; i < count; ++i) used += !isEmpty(i);
  return used;
}

int usedRows(const Image& image) {
  return extent(image.height, [&](int y) {
    for (int x = 0; x < image.width; ++x) {
      if (!image.isBackground(x, y)) return false;
    }
    return true;
  });
}

int usedColumns(const Image& image) {
  return extent(image.width, [&](int x) {
    for (int y = 0; y < image.height; ++y) {
      if (!image.isBackground(x, y)) return false;
    }
    return true;
  });
}

// Pixels that something black covers, with their parts where it covers parts.
double coveredByBlack(const Image& image) {
  double covered = 0;
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x)
      covered += 1 - double(image.at(x, y)[0]) / image.at(0, 0)[0];
  }
  return covered;
}

bool isRed(const Pixel& p) { return p[0] > 60 && p[1] == 0 && p[2] == 0; }
bool isBlue(const Pixel& p) { return p[0] == 0 && p[1] == 0 && p[2] > 60; }

int countOf(const Image& image, bool (*is)(const Pixel&)) {
  int count = 0;
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) count += is(image.at(x, y));
  }
  return count;
}

// A cube of side a is a regular hexagon of height 4 a / sqrt(6), width a sqrt(2) and area
// sqrt(3) a^2. The size is that of three bands of samples.
TEST(ExportPng, ACubeIsAHexagonOfItsArea) {
  const Image image = drawn({cube("a", {0, 0, 0}, 100)}, {1200, 900});
  const double scale = usedRows(image) / (400 / std::sqrt(6.0));  // pixels a mm
  EXPECT_NEAR(usedColumns(image), 100 * std::sqrt(2.0) * scale, 2);
  EXPECT_NEAR(coveredByBlack(image) / (std::sqrt(3.0) * 1e4 * scale * scale), 1, 0.005);
}

TEST(ExportPng, FitsAndStandsInTheMiddle) {
  const Image image = drawn({cube("a", {0, 0, 0}, 100, {500, -300, 1e4})}, {300, 200});
  EXPECT_EQ(image.width, 300);
  EXPECT_EQ(image.height, 200);
  EXPECT_EQ(image.channels, 3);
  EXPECT_GT(usedRows(image), 170);
  EXPECT_LE(usedRows(image), 190);
  int left = 0, right = 0;
  while (image.isBackground(left, 100)) ++left;
  while (image.isBackground(299 - right, 100)) ++right;
  EXPECT_NEAR(left, right, 1);
}

// Above the middle lies the top (+Z), below it to the left the front (-Y), to the right +X.
TEST(ExportPng, ShadesTheThreeFacesOfARedCube) {
  const Image image = drawn({cube("a", {255, 0, 0}, 100)});
  const Pixel top = image.at(200, 120), front = image.at(130, 240), side = image.at(270, 240);
  for (const Pixel& p : {top, front, side, image.at(200, 200)}) EXPECT_TRUE(isRed(p)) << p[0];
  EXPECT_GT(top[0], front[0]);
  EXPECT_GT(front[0], side[0]);
  EXPECT_GT(side[0], 100);
}

TEST(ExportPng, TheBackgroundIsALightGrey) {
  const Pixel p = drawn({cube("a", {255, 0, 0}, 100)}).at(0, 0);
  EXPECT_GT(*std::min_element(p.begin(), p.end()), 200);
  EXPECT_LT(*std::max_element(p.begin(), p.end()) - *std::min_element(p.begin(), p.end()), 10);
}

// X to the right and forward, Y to the right and back, Z up.
TEST(ExportPng, LooksFromTheFrontRightAndAbove) {
  const Body middle = cube("m", {128, 128, 128}, 10);
  const auto placeOfRed = [&](const UVec3d& at) {
    const Image image = drawn({middle, cube("r", {255, 0, 0}, 10, at)});
    double x = 0, y = 0, n = 0;
    for (int iy = 0; iy < image.height; ++iy) {
      for (int ix = 0; ix < image.width; ++ix) {
        if (isRed(image.at(ix, iy))) x += ix, y += iy, ++n;
      }
    }
    return std::pair(x / n - 199.5, 199.5 - y / n);  // right, up
  };
  const auto [xRight, xUp] = placeOfRed({50, 0, 0});
  EXPECT_GT(xRight, 50);
  EXPECT_LT(xUp, -20);
  const auto [yRight, yUp] = placeOfRed({0, 50, 0});
  EXPECT_GT(yRight, 50);
  EXPECT_GT(yUp, 20);
  const auto [zRight, zUp] = placeOfRed({0, 0, 50});
  EXPECT_NEAR(zRight, 0, 1);
  EXPECT_GT(zUp, 50);
}

// The small one stands on the line of sight through the middle of the large one.
TEST(ExportPng, NearHidesFarWhateverTheOrder) {
  const Body large = cube("l", {0, 0, 255}, 100);
  const UVec3d toViewer(200, -200, 200);
  const Body before = cube("b", {255, 0, 0}, 20, toViewer);
  const Body behind = cube("h", {255, 0, 0}, 20, -toViewer);
  for (const auto& bodies : {std::vector{large, before}, std::vector{before, large}}) {
    const Image image = drawn(bodies);
    EXPECT_TRUE(isRed(image.at(200, 200)));
    EXPECT_GT(countOf(image, isBlue), countOf(image, isRed));
  }
  for (const auto& bodies : {std::vector{large, behind}, std::vector{behind, large}}) {
    EXPECT_EQ(countOf(drawn(bodies), isRed), 0);
  }
}

TEST(ExportPng, BothSidesOfATriangleLookAlike) {
  Body body = cube("a", {10, 200, 100}, 100);
  const std::string outward = bytesOfPicture({body});
  for (UTri& t : body.triangles) std::swap(t.p[1], t.p[2]);
  EXPECT_EQ(bytesOfPicture({body}), outward);
}

TEST(ExportPng, IsTheSameEachTimeAndAnotherWhenSomethingMoves) {
  const Body bed = cube("a", {100, 110, 120}, 100);
  Body slide = cube("b", {200, 60, 40}, 30, {0, 0, 65});
  const std::string first = bytesOfPicture({bed, slide});
  EXPECT_EQ(bytesOfPicture({bed, slide}), first);
  slide.motion = UMatrix::_translation({20, 0, 0});
  EXPECT_NE(bytesOfPicture({bed, slide}), first);
}

// Edges are mixed of what is on both sides.
TEST(ExportPng, EdgesAreSmooth) {
  const Image image = drawn({cube("a", {0, 0, 0}, 100)});
  EXPECT_GT(countOf(image, [](const Pixel& p) { return p[0] > 20 && p[0] < 200; }), 300);
}

TEST(ExportPng, LeavesOutWhatIsNoNumber) {
  Body body = cube("a", {10, 200, 100}, 100);
  const std::string sound = bytesOfPicture({body});
  for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity(), 1e300}) {
    body.triangles.push_back({{0, bad, 0}, {1, 0, 0}, {0, 1, 0}});
  }
  EXPECT_EQ(bytesOfPicture({body}), sound);
}

TEST(ExportPng, OfNothingOrOfAPointIsBackground) {
  const Body point{0, "p", {}, {}, {{{5, 5, 5}, {5, 5, 5}, {5, 5, 5}}}};
  for (const auto& bodies : {std::vector<Body>(), std::vector{point}}) {
    EXPECT_EQ(usedRows(drawn(bodies, {20, 10})), 0);
  }
}

TEST(ExportPng, HugeBodiesFitToo) {
  EXPECT_GT(usedRows(drawn({cube("a", {0, 0, 0}, 1e37)}, {100, 100})), 80);
}

TEST(ExportPng, RefusesSizesThatAreNone) {
  const TempDir folder;
  for (const korvo::PictureSize size : {korvo::PictureSize{0, 10}, {10, -1}, {16385, 1}}) {
    EXPECT_THROW(korvo::writePng(folder.path() / "a.png", {}, size), std::length_error);
  }
  EXPECT_EQ(korvo::test::filesIn(folder.path()), 0u);
  EXPECT_EQ(drawn({}, {1, 1}).width, 1);
}

}  // namespace
