#include "platform/ombra/EntityMesh.h"

#include <utility>

namespace Ombra::Kin {

EntityMesh::Owned::Owned(std::vector<std::uint32_t> c, std::vector<std::uint32_t> i,
                         std::vector<double> p)
    : counts(std::move(c)), indices(std::move(i)), points(std::move(p)) {
  view = {counts.data(),  static_cast<std::uint32_t>(counts.size()),
          indices.data(), static_cast<std::uint32_t>(indices.size()),
          points.data(),  static_cast<std::uint32_t>(points.size() / 4)};
}

const Mesh* EntityMesh::GetMesh(int i) const {
  const bool known = i >= 0 && i < GetMeshNb() && meshes_[i];
  return known ? &meshes_[i]->view : nullptr;
}

int EntityMesh::AddMesh(std::vector<std::uint32_t> vertexCounts, std::vector<std::uint32_t> indices,
                        std::vector<double> points) {
  meshes_.emplace_back(std::in_place, std::move(vertexCounts), std::move(indices),
                       std::move(points));
  return GetMeshNb() - 1;
}

bool EntityMesh::RemoveMesh(int i) {
  if (!GetMesh(i)) return false;
  meshes_[i].reset();
  return true;
}

}  // namespace Ombra::Kin
