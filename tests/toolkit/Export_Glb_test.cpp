#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

#include "tests/support/TempFile.h"
#include "tests/toolkit/ExportBodies.h"
#include "toolkit/export/Write.h"

using korvo::Body;
using korvo::Box;
using korvo::test::boxBody;
using korvo::test::bytesOf;
using korvo::test::TempDir;
using nlohmann::json;
using zgeo::UMatrix;
using zgeo::UTri;
using zgeo::UVec3d;

namespace {

// Reads a GLB as its specification says (glTF 2.0, "GLB File Format Specification").
class GlbFile {
 public:
  explicit GlbFile(const std::string& bytes) : bytes_(bytes) {
    EXPECT_EQ(bytes.substr(0, 4), "glTF");
    EXPECT_EQ(number(4), 2u);
    EXPECT_EQ(number(8), bytes.size());
    EXPECT_EQ(bytes.substr(16, 4), "JSON");
    text = json::parse(bytes.substr(20, number(12)));
    binary_ = 20 + number(12) + 8;
  }

  const json& node(const std::string& name) const {
    for (const json& n : text["nodes"]) {
      if (n["name"] == name) return n;
    }
    throw std::out_of_range(name);
  }

  std::vector<UVec3d> vectors(int accessor) const {
    std::vector<UVec3d> list;
    const json& a = text["accessors"][static_cast<std::size_t>(accessor)];
    EXPECT_EQ(a["type"], "VEC3");
    EXPECT_EQ(a["componentType"], 5126);
    for (std::size_t i = 0; i < a["count"].get<std::size_t>(); ++i) {
      float v[3];
      std::memcpy(v, bytes_.data() + start(a) + 12 * i, sizeof v);
      list.emplace_back(double{v[0]}, double{v[1]}, double{v[2]});
    }
    return list;
  }

  // Corners of a node's triangles, three each, in the node's own frame.
  std::vector<UVec3d> corners(const json& node, const char* attribute = "POSITION") const {
    const json& p = primitive(node);
    const std::vector<UVec3d> all = vectors(p["attributes"][attribute]);
    const json& a = text["accessors"][p["indices"].get<std::size_t>()];
    std::vector<UVec3d> list;
    for (std::size_t i = 0; i < a["count"].get<std::size_t>(); ++i) {
      list.push_back(all.at(number(start(a) + 4 * i)));
    }
    return list;
  }

  const json& primitive(const json& node) const {
    return text["meshes"][node["mesh"].get<std::size_t>()]["primitives"][0];
  }

  json text;

 private:
  std::uint32_t number(std::size_t at) const {
    std::uint32_t n = 0;
    std::memcpy(&n, bytes_.data() + at, sizeof n);
    return n;
  }
  std::size_t start(const json& accessor) const {
    const json& view = text["bufferViews"][accessor["bufferView"].get<std::size_t>()];
    return binary_ + view.value("byteOffset", std::size_t{0});
  }

  std::string bytes_;
  std::size_t binary_ = 0;
};

GlbFile written(const std::vector<Body>& bodies) {
  const TempDir folder;
  writeGlb(folder.path() / "a.glb", bodies);
  return GlbFile(bytesOf(folder.path() / "a.glb"));
}

// The node's matrix, column by column in the file.
UVec3d moved(const json& node, const UVec3d& p) {
  if (!node.contains("matrix")) return p;
  const std::vector<double> m = node["matrix"];
  return {m[0] * p.x + m[4] * p.y + m[8] * p.z + m[12],
          m[1] * p.x + m[5] * p.y + m[9] * p.z + m[13],
          m[2] * p.x + m[6] * p.y + m[10] * p.z + m[14]};
}

// Scaled, then turned by the unit quaternion (u, w): p + 2 u x (u x p + w p).
UVec3d inScene(const json& root, const UVec3d& p) {
  const std::vector<double> s = root["scale"], q = root["rotation"];
  const UVec3d v(s[0] * p.x, s[1] * p.y, s[2] * p.z), u(q[0], q[1], q[2]);
  return v + 2.0 * (u ^ ((u ^ v) + q[3] * v));
}

// Of all that a viewer shows, in its own frame.
Box sceneBox(const GlbFile& file) {
  const double inf = std::numeric_limits<double>::infinity();
  Box box{{inf, inf, inf}, {-inf, -inf, -inf}};
  const json& root = file.text["nodes"][file.text["scenes"][0]["nodes"][0].get<std::size_t>()];
  for (const std::size_t child : root["children"]) {
    const json& node = file.text["nodes"][child];
    for (const UVec3d& p : file.corners(node)) {
      const UVec3d at = inScene(root, moved(node, p));
      box = unite(box, {at, at});
    }
  }
  return box;
}

void expectNear(const UVec3d& found, const UVec3d& wanted, double tolerance) {
  EXPECT_NEAR(found.x, wanted.x, tolerance);
  EXPECT_NEAR(found.y, wanted.y, tolerance);
  EXPECT_NEAR(found.z, wanted.z, tolerance);
}

// 2 m wide (X), 1 m deep (Y), 3 m high (Z): Y up, so that depth runs along -Z.
TEST(ExportGlb, IsInMetresWithYUp) {
  const Box box = sceneBox(written({boxBody("a", {}, {0, 0, 0}, {2000, 1000, 3000})}));
  expectNear(box.min, {0, 0, -1}, 1e-6);
  expectNear(box.max, {2, 3, 0}, 1e-6);
}

// A quarter turn about Z carries (x, y) to (-y, x): the box 10 x 20 lies in [-20, 0] x [0, 10].
TEST(ExportGlb, MovesEachBodyByItsMatrix) {
  const UMatrix motion =
      UMatrix::_translation({0, 0, 100}) * UMatrix::_rotation({0, 0, 1}, std::acos(0.0));
  const GlbFile file = written({boxBody("C", {}, {0, 0, 0}, {10, 20, 30}, motion)});
  for (const UVec3d& p : file.corners(file.node("C"))) {
    EXPECT_TRUE((p.x == 0 || p.x == 10) && (p.y == 0 || p.y == 20)) << p.x << ' ' << p.y;
  }
  const Box box = sceneBox(file);
  expectNear(box.min, {-0.020, 0.100, -0.010}, 1e-9);
  expectNear(box.max, {0.000, 0.130, 0.000}, 1e-9);
  const std::vector<double> m = file.node("C")["matrix"];
  for (int i = 0; i < 16; ++i) EXPECT_EQ(m[static_cast<std::size_t>(i)], motion(i % 4, i / 4));
}

TEST(ExportGlb, HasOneNamedNodeForEachBody) {
  const GlbFile file = written({boxBody("BATI", {}, {0, 0, 0}, {1, 1, 1}),
                                boxBody("tool 1", {}, {0, 0, 0}, {1, 1, 1}),
                                boxBody("B\xc3\xa4r", {}, {0, 0, 0}, {1, 1, 1})});
  const json& nodes = file.text["nodes"];
  ASSERT_EQ(nodes.size(), 4u);
  EXPECT_EQ(nodes[0]["name"], "machine");
  EXPECT_EQ(nodes[0]["children"], json({1, 2, 3}));
  EXPECT_EQ(nodes[1]["name"], "BATI");
  EXPECT_EQ(nodes[2]["name"], "tool 1");
  EXPECT_EQ(nodes[3]["name"], "B\xc3\xa4r");
  EXPECT_FALSE(nodes[1].contains("matrix"));  // the identity is what no matrix means
}

// The format keeps light, screens show it by the curve of sRGB: 188 is half the light of 255 to
// 0.3 % (IEC 61966-2-1).
TEST(ExportGlb, ColoursAreThoseOfTheBodiesAsLight) {
  const GlbFile file = written({boxBody("a", {255, 188, 0}, {0, 0, 0}, {1, 1, 1})});
  const json& primitive = file.primitive(file.node("a"));
  const json& material = file.text["materials"][primitive["material"].get<std::size_t>()];
  const std::vector<double> light = material["pbrMetallicRoughness"]["baseColorFactor"];
  EXPECT_EQ(light[0], 1.0);
  EXPECT_NEAR(light[1], 0.5, 0.005);
  EXPECT_EQ(light[2], 0.0);
  EXPECT_EQ(light[3], 1.0);
  EXPECT_EQ(material["pbrMetallicRoughness"]["metallicFactor"], 0.0);
  EXPECT_EQ(material["doubleSided"], true);
}

TEST(ExportGlb, FacesAreFlatAndCornersOfOneFaceAreShared) {
  const GlbFile file = written({boxBody("a", {}, {0, 0, 0}, {10, 20, 30})});
  const json& node = file.node("a");
  EXPECT_EQ(file.vectors(file.primitive(node)["attributes"]["POSITION"]).size(), 24u);
  const std::vector<UVec3d> corners = file.corners(node), normals = file.corners(node, "NORMAL");
  ASSERT_EQ(corners.size(), 36u);
  const std::vector<UTri> wanted = korvo::test::boxTriangles({0, 0, 0}, {10, 20, 30});
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const UTri& t = wanted[i / 3];
    EXPECT_EQ(corners[i], t.p[i % 3]);
    EXPECT_EQ(normals[i], ((t.p[1] - t.p[0]) ^ (t.p[2] - t.p[0])).normalised());
  }
}

TEST(ExportGlb, StatesTheBoundsOfItsCorners) {
  const GlbFile file = written({boxBody("a", {}, {-1.1, 2.2, 3.3}, {10, 20, 30})});
  const int index = file.primitive(file.node("a"))["attributes"]["POSITION"];
  const json& a = file.text["accessors"][static_cast<std::size_t>(index)];
  EXPECT_EQ(a["min"], json({double{-1.1f}, double{2.2f}, double{3.3f}}));
  EXPECT_EQ(a["max"], json({10.0, 20.0, 30.0}));
}

TEST(ExportGlb, LeavesOutWhatHasNoAreaOrIsNoNumber) {
  Body body = boxBody("a", {}, {0, 0, 0}, {1, 1, 1});
  body.triangles.push_back({{0, 0, 0}, {std::nan(""), 0, 0}, {0, 1, 0}});
  body.triangles.push_back({{0, 0, 0}, {1e39, 0, 0}, {0, 1, 0}});
  body.triangles.push_back({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}});
  const Body nothing{0, "none", {}, {}, {{{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}}};
  const GlbFile file = written({body, nothing});
  EXPECT_EQ(file.corners(file.node("a")).size(), 36u);
  EXPECT_EQ(file.text["nodes"].size(), 2u);
}

TEST(ExportGlb, OfNothingIsARootAlone) {
  const GlbFile file = written({});
  EXPECT_EQ(file.text["nodes"].size(), 1u);
  EXPECT_FALSE(file.text.contains("buffers"));
}

}  // namespace
