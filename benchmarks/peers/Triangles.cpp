#include "benchmarks/peers/Triangles.h"

#include <assimp/scene.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace korvo::bench {
namespace {

constexpr std::size_t kHead = 84, kRecord = 50, kNormal = 12;

class Mapped {
 public:
  explicit Mapped(const std::string& path) : descriptor_(open(path.c_str(), O_RDONLY)) {
    if (descriptor_ < 0) std::abort();
    struct stat status{};
    fstat(descriptor_, &status);
    size_ = static_cast<std::size_t>(status.st_size);
    begin_ = static_cast<const char*>(mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, descriptor_, 0));
    if (begin_ == MAP_FAILED) std::abort();
  }
  ~Mapped() {
    munmap(const_cast<char*>(begin_), size_);
    close(descriptor_);
  }
  Mapped(const Mapped&) = delete;
  Mapped& operator=(const Mapped&) = delete;

  const char* begin() const { return begin_; }
  const char* end() const { return begin_ + size_; }
  std::size_t triangles() const { return (size_ - kHead) / kRecord; }
  const char* records() const { return begin_ + kHead + kNormal; }

 private:
  int descriptor_;
  std::size_t size_ = 0;
  const char* begin_ = nullptr;
};

double* move(const Mapped& file, const zgeo::UMatrix& m, double* out) {
  const char* record = file.records();
  for (std::size_t i = 0; i < file.triangles(); ++i, record += kRecord) {
    float x[9];
    std::memcpy(x, record, sizeof x);
    for (const float* p = x; p != x + 9; p += 3, out += 3) {
      const zgeo::UVec3d moved = m * zgeo::UVec3d(p[0], p[1], p[2]);
      out[0] = moved.x, out[1] = moved.y, out[2] = moved.z;
    }
  }
  return out;
}

}  // namespace

Doubles mapAndCopy(const std::string& path) {
  const Mapped file(path);
  Doubles out(9 * file.triangles());
  const char* record = file.records();
  for (double* to = out.at.get(); to != out.at.get() + out.count; to += 9, record += kRecord) {
    float x[9];
    std::memcpy(x, record, sizeof x);
    std::copy(x, x + 9, to);
  }
  return out;
}

std::vector<double> scanNumbers(const std::string& path) {
  const Mapped file(path);
  std::vector<double> numbers;
  for (const char* at = file.begin(); at != file.end();) {
    double value = 0;
    const auto [end, error] = std::from_chars(at, file.end(), value);
    const bool isNumber = error == std::errc{};
    if (isNumber) numbers.push_back(value);
    at = isNumber ? end : at + 1;
  }
  return numbers;
}

Doubles readAndMove(const std::vector<std::string>& paths,
                    const std::vector<zgeo::UMatrix>& motions) {
  std::vector<std::unique_ptr<Mapped>> files;
  std::size_t triangles = 0;
  for (const std::string& path : paths) {
    files.push_back(std::make_unique<Mapped>(path));
    triangles += files.back()->triangles();
  }
  Doubles out(9 * triangles);
  double* to = out.at.get();
  for (std::size_t i = 0; i < files.size(); ++i) to = move(*files[i], motions[i], to);
  return out;
}

std::size_t loadAssimp(const std::string& path) {
  Assimp::Importer importer;
  const aiScene* scene = importer.ReadFile(path, 0);
  return scene ? scene->mMeshes[0]->mNumFaces : 0;
}

std::vector<double> cornersOfAssimp(const std::string& path) {
  Assimp::Importer importer;
  const aiScene* scene = importer.ReadFile(path, 0);
  std::vector<double> out;
  if (!scene) return out;
  const aiMesh& mesh = *scene->mMeshes[0];
  for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
    for (unsigned k = 0; k < 3; ++k) {
      const aiVector3D& p = mesh.mVertices[mesh.mFaces[i].mIndices[k]];
      out.insert(out.end(), {double{p.x}, double{p.y}, double{p.z}});
    }
  }
  return out;
}

}  // namespace korvo::bench
