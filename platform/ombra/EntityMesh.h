#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/ombra/Export.h"
#include "platform/ombra/Mesh.h"

namespace Ombra::Kin {

/// The meshes of an entity, in the entity's own frame. Copies are deep.
class OMBRA_API EntityMesh {
 public:
  /// Number of meshes, removed ones included.
  int GetMeshNb() const { return static_cast<int>(meshes_.size()); }

  /// A mesh by its number from 0; null for a removed one and for a number that is none. Valid until
  /// a mesh is added or removed.
  const Mesh* GetMesh(int i) const;

  /// Adds a mesh and returns its number. `points` has four doubles for each point (a rest that is
  /// no whole point is not seen). What the numbers say is not checked.
  int AddMesh(std::vector<std::uint32_t> vertexCounts, std::vector<std::uint32_t> indices,
              std::vector<double> points);

  /// Takes a mesh away; the others keep their numbers. False when there is none.
  bool RemoveMesh(int i);

 private:
  /// The arrays and the view that shows them.
  struct Owned {
    Owned(std::vector<std::uint32_t> c, std::vector<std::uint32_t> i, std::vector<double> p);
    Owned(const Owned& o) : Owned(o.counts, o.indices, o.points) {}
    Owned(Owned&&) = default;  // arrays keep their addresses when they are moved
    Owned& operator=(const Owned& o) { return *this = Owned(o); }
    Owned& operator=(Owned&&) = default;
    ~Owned() = default;

    std::vector<std::uint32_t> counts;
    std::vector<std::uint32_t> indices;
    std::vector<double> points;
    Mesh view;
  };

  std::vector<std::optional<Owned>> meshes_;
};

}  // namespace Ombra::Kin
