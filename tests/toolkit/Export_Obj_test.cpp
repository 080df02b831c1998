#include <gtest/gtest.h>

#include <locale>
#include <map>
#include <sstream>

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

struct Object {
  std::string name, material;
  std::vector<UTri> triangles;
};

// What a reader of the format makes of the text: lines of words, the first says what it is.
struct ObjFile {
  explicit ObjFile(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) read(line);
  }

  void read(const std::string& line) {
    std::istringstream words(line);
    words.imbue(std::locale::classic());
    std::string word;
    words >> word;
    if (word == "mtllib") words >> library;
    if (word == "o") words >> objects.emplace_back().name;
    if (word == "usemtl") words >> objects.back().material;
    if (word == "v") {
      UVec3d& p = corners.emplace_back();
      words >> p.x >> p.y >> p.z;
    }
    if (word == "f") {
      std::size_t a = 0, b = 0, c = 0;
      words >> a >> b >> c;
      objects.back().triangles.emplace_back(corners.at(a - 1), corners.at(b - 1),
                                            corners.at(c - 1));
    }
    EXPECT_FALSE(words.fail()) << line;
  }

  std::string library;
  std::vector<UVec3d> corners;
  std::vector<Object> objects;
};

std::map<std::string, UVec3d> coloursOf(const std::string& text) {
  std::map<std::string, UVec3d> colours;
  std::istringstream lines(text);
  std::string name;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    words.imbue(std::locale::classic());
    std::string word;
    words >> word;
    if (word == "newmtl") words >> name;
    if (word == "Kd") words >> colours[name].x >> colours[name].y >> colours[name].z;
  }
  return colours;
}

class ExportObj : public testing::Test {
 protected:
  ObjFile written(const std::vector<Body>& bodies) {
    writeObj(folder_.path() / "part one.obj", bodies);
    return ObjFile(bytesOf(folder_.path() / "part one.obj"));
  }
  std::map<std::string, UVec3d> colours() const {
    return coloursOf(bytesOf(folder_.path() / "part one.mtl"));
  }
  const TempDir folder_;
};

TEST_F(ExportObj, HasOneObjectForEachBodyWithItsTrianglesInPlace) {
  const UMatrix motion = UMatrix::_translation({100, -7, 0.125});
  const ObjFile file = written({boxBody("BATI", {}, {0, 0, 0}, {1, 2, 3}),
                                boxBody("X", {}, {-5, -5, -5}, {5, 5, 5}, motion)});
  ASSERT_EQ(file.objects.size(), 2u);
  EXPECT_EQ(file.objects[0].name, "BATI");
  EXPECT_EQ(file.objects[0].triangles, korvo::test::boxTriangles({0, 0, 0}, {1, 2, 3}));
  EXPECT_EQ(file.objects[1].name, "X");
  EXPECT_EQ(file.objects[1].triangles,
            korvo::test::boxTriangles({95, -12, -4.875}, {105, -2, 5.125}));
}

TEST_F(ExportObj, CornersAtOnePlaceAreOne) {
  const ObjFile file = written(
      {boxBody("a", {}, {0, 0, 0}, {1, 1, 1}), boxBody("b", {}, {-0.0, -0.0, -0.0}, {1, 1, 1})});
  EXPECT_EQ(file.corners.size(), 16u);  // eight for each body
}

TEST_F(ExportObj, NamesHaveNoBlanksAndAreUnique) {
  const ObjFile file = written(
      {boxBody("tool 1", {}, {0, 0, 0}, {1, 1, 1}), boxBody("GEOM", {}, {0, 0, 0}, {1, 1, 1}),
       boxBody("GEOM", {}, {0, 0, 0}, {1, 1, 1}), boxBody("GEOM_2", {}, {0, 0, 0}, {1, 1, 1}),
       boxBody("", {}, {0, 0, 0}, {1, 1, 1}), boxBody("B\xc3\xa4r\n", {}, {0, 0, 0}, {1, 1, 1})});
  std::vector<std::string> names;
  for (const Object& o : file.objects) {
    names.push_back(o.name);
    EXPECT_EQ(o.material, o.name);
  }
  EXPECT_EQ(names, (std::vector<std::string>{"tool_1", "GEOM", "GEOM_2", "GEOM_2_2", "body",
                                             "B\xc3\xa4r_"}));
  EXPECT_EQ(colours().size(), names.size());
}

TEST_F(ExportObj, MaterialsBesideItHaveTheColours) {
  const ObjFile file = written({boxBody("red", {255, 0, 51}, {0, 0, 0}, {1, 1, 1}),
                                boxBody("black", {0, 0, 0}, {0, 0, 0}, {1, 1, 1})});
  const auto found = colours();
  EXPECT_EQ(found.at("red"), UVec3d(1, 0, 0.2));
  EXPECT_EQ(found.at("black"), UVec3d(0, 0, 0));
}

TEST_F(ExportObj, NamesItsMaterialFile) {
  korvo::writeObj(folder_.path() / "a.OBJ", {});
  EXPECT_EQ(ObjFile(bytesOf(folder_.path() / "a.OBJ")).library, "a.mtl");
  EXPECT_TRUE(std::filesystem::exists(folder_.path() / "a.mtl"));
}

TEST_F(ExportObj, NumbersAreThoseOfSinglePrecisionAtLeast) {
  const double x = 1234.56789, y = 1.0 / 3.0, z = -1e-7;
  const ObjFile file = written({{0, "a", {}, {}, {{{x, y, z}, {x, 0, 0}, {0, y, 0}}}}});
  const UVec3d p = file.objects[0].triangles[0].p[0];
  EXPECT_NEAR(p.x, x, 1e-8 * x);
  EXPECT_NEAR(p.y, y, 1e-8 * y);
  EXPECT_NEAR(p.z, z, -1e-8 * z);
}

TEST_F(ExportObj, ManyTrianglesComeInOrder) {
  Body body;
  body.name = "many";
  for (int i = 0; i < 20000; ++i) {
    body.triangles.push_back({{0, 0, 0}, {1, 0, 0}, {0, 1, double(i)}});
  }
  const ObjFile file = written({body});
  EXPECT_EQ(file.objects[0].triangles, body.triangles);
  EXPECT_EQ(file.corners.size(), 20002u);
}

}  // namespace
