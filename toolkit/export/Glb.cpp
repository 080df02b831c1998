// The library is one header, which is compiled here and nowhere else. Its names stay inside: the
// whole of this library is hidden but for what Export.h marks.
#define TINYGLTF_IMPLEMENTATION
#define TINYGLTF_NO_STB_IMAGE
#define TINYGLTF_NO_STB_IMAGE_WRITE
#define TINYGLTF_NO_EXTERNAL_IMAGE

#include <tiny_gltf.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ostream>
#include <stdexcept>
#include <streambuf>

#include "toolkit/export/Corners.h"
#include "toolkit/export/Placed.h"
#include "toolkit/export/WholeFile.h"
#include "toolkit/export/Write.h"

using zgeo::UMatrix;
using zgeo::UTri;
using zgeo::UVec3d;

namespace korvo {
namespace {

constexpr std::size_t kMostBytes = 0xffff0000;  // lengths have 32 bits; some room for the text

// --- one body's corners

struct Surface {
  std::vector<float> points;   // three a corner
  std::vector<float> normals;  // of the same corners
  std::vector<std::uint32_t> indices;
};

void append(std::vector<float>& list, const float* three) {
  list.insert(list.end(), three, three + 3);
}

// A corner of two faces is two corners, since it has two normals.
Surface surfaceOf(const Body& body) {
  Surface surface;
  exporting::Corners<float, 6> corners;
  for (const UTri& t : body.triangles) {
    const UVec3d n = exporting::normalOf(t);
    if (!exporting::fits(t) || !exporting::fits(exporting::placed(body.motion, t))) continue;
    if (n == UVec3d()) continue;
    for (const UVec3d& p : t.p) {
      const std::array<float, 6> corner = {static_cast<float>(p.x), static_cast<float>(p.y),
                                           static_cast<float>(p.z), static_cast<float>(n.x),
                                           static_cast<float>(n.y), static_cast<float>(n.z)};
      const auto [index, isNew] = corners.add(corner);
      surface.indices.push_back(index);
      if (!isNew) continue;
      append(surface.points, corner.data());
      append(surface.normals, corner.data() + 3);
    }
  }
  return surface;
}

// --- the parts of the file; each gives its number

int lastOf(std::size_t count) { return static_cast<int>(count) - 1; }

template <class T>
int addView(tinygltf::Model& model, const std::vector<T>& list, int target) {
  std::vector<unsigned char>& bytes = model.buffers[0].data;
  const std::size_t length = list.size() * sizeof(T);
  if (bytes.size() + length > kMostBytes) {
    throw std::length_error("expected fewer triangles: a GLB file ends at 4 GiB");
  }
  tinygltf::BufferView view;
  view.buffer = 0;
  view.byteOffset = bytes.size();
  view.byteLength = length;
  view.target = target;
  bytes.resize(bytes.size() + length);
  std::memcpy(bytes.data() + view.byteOffset, list.data(), length);
  model.bufferViews.push_back(std::move(view));
  return lastOf(model.bufferViews.size());
}

int addVectors(tinygltf::Model& model, const std::vector<float>& list) {
  tinygltf::Accessor accessor;
  accessor.bufferView = addView(model, list, TINYGLTF_TARGET_ARRAY_BUFFER);
  accessor.componentType = TINYGLTF_COMPONENT_TYPE_FLOAT;
  accessor.type = TINYGLTF_TYPE_VEC3;
  accessor.count = list.size() / 3;
  accessor.minValues.assign(list.begin(), list.begin() + 3);
  accessor.maxValues = accessor.minValues;
  for (std::size_t i = 0; i < list.size(); ++i) {
    accessor.minValues[i % 3] = std::min(accessor.minValues[i % 3], double{list[i]});
    accessor.maxValues[i % 3] = std::max(accessor.maxValues[i % 3], double{list[i]});
  }
  model.accessors.push_back(std::move(accessor));
  return lastOf(model.accessors.size());
}

int addIndices(tinygltf::Model& model, const std::vector<std::uint32_t>& list) {
  tinygltf::Accessor accessor;
  accessor.bufferView = addView(model, list, TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER);
  accessor.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT;
  accessor.type = TINYGLTF_TYPE_SCALAR;
  accessor.count = list.size();
  model.accessors.push_back(std::move(accessor));
  return lastOf(model.accessors.size());
}

// Colours of files are those of screens; the format wants the light itself.
// Source: IEC 61966-2-1 (sRGB), decoding.
double lightOf(int component) {
  const double c = component / 255.0;
  return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

int addMaterial(tinygltf::Model& model, const Body& body) {
  tinygltf::Material material;
  material.name = body.name;
  material.doubleSided = true;  // files do not agree on which side is outside
  tinygltf::PbrMetallicRoughness& surface = material.pbrMetallicRoughness;
  surface.baseColorFactor = {lightOf(body.rgb[0]), lightOf(body.rgb[1]), lightOf(body.rgb[2]), 1.0};
  surface.metallicFactor = 0.0;
  surface.roughnessFactor = 0.6;
  model.materials.push_back(std::move(material));
  return lastOf(model.materials.size());
}

int addMesh(tinygltf::Model& model, const Body& body, const Surface& surface) {
  tinygltf::Primitive primitive;
  primitive.attributes["POSITION"] = addVectors(model, surface.points);
  primitive.attributes["NORMAL"] = addVectors(model, surface.normals);
  primitive.indices = addIndices(model, surface.indices);
  primitive.material = addMaterial(model, body);
  primitive.mode = TINYGLTF_MODE_TRIANGLES;
  tinygltf::Mesh mesh;
  mesh.name = body.name;
  mesh.primitives.push_back(std::move(primitive));
  model.meshes.push_back(std::move(mesh));
  return lastOf(model.meshes.size());
}

// Column by column, as the format has them.
std::vector<double> valuesOf(const UMatrix& m) {
  std::vector<double> values(16);
  for (int i = 0; i < 16; ++i) values[static_cast<std::size_t>(i)] = m(i % 4, i / 4);
  return values;
}

void addBody(tinygltf::Model& model, const Body& body) {
  const Surface surface = surfaceOf(body);
  if (surface.indices.empty()) return;
  tinygltf::Node node;
  node.name = body.name;
  node.mesh = addMesh(model, body, surface);
  if (!(body.motion == UMatrix())) node.matrix = valuesOf(body.motion);
  model.nodes.push_back(std::move(node));
  model.nodes[0].children.push_back(lastOf(model.nodes.size()));
}

// Turned by -90 degrees about X: what was Z is Y, what was Y is -Z.
tinygltf::Node rootNode() {
  const double half = std::sqrt(0.5);
  tinygltf::Node root;
  root.name = "machine";
  root.rotation = {-half, 0, 0, half};
  root.scale = {0.001, 0.001, 0.001};
  return root;
}

tinygltf::Model modelOf(std::span<const Body> bodies) {
  tinygltf::Model model;
  model.asset.version = "2.0";
  model.asset.generator = "korvo";
  model.defaultScene = 0;
  model.scenes.emplace_back().nodes = {0};
  model.nodes.push_back(rootNode());
  model.buffers.emplace_back();
  for (const Body& body : bodies) addBody(model, body);
  if (model.buffers[0].data.empty()) model.buffers.clear();
  return model;
}

// --- the bytes

class FileStream : public std::streambuf {
 public:
  explicit FileStream(WholeFile& file) : file_(file) {}

 private:
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    file_.write({bytes, static_cast<std::size_t>(count)});
    return count;
  }
  int_type overflow(int_type c) override {
    const char byte = traits_type::to_char_type(c);
    file_.write({&byte, 1});
    return c;
  }

  WholeFile& file_;
};

}  // namespace

void writeGlb(const std::filesystem::path& path, std::span<const Body> bodies) {
  WholeFile file(path);
  const tinygltf::Model model = modelOf(bodies);
  FileStream buffer(file);
  std::ostream stream(&buffer);
  tinygltf::TinyGLTF().WriteGltfSceneToStream(&model, stream, false, true);
  file.commit();
}

}  // namespace korvo
