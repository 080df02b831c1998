// The bodies as triangles.

#include <cstddef>
#include <new>
#include <stdexcept>

#include "adapter/NMachine.h"
#include "adapter/memory.h"
#include "platform/ombra/EntityMesh.h"
#include "platform/ombra/MachineCompute.h"
#include "platform/zgeo/UTools.h"

using Ombra::Matrix43;
using Ombra::Mesh;
using Ombra::Kin::Entity;
using Ombra::Kin::EntityId;
using Ombra::Kin::EntityMesh;
using Ombra::Kin::MachineCompute;
using Ombra::Kin::MachinePosition;
using zgeo::UMatrix;
using zgeo::UTools;
using zgeo::UTri;
using zgeo::UVec3d;

namespace zkin {

std::wstring NMachine::_typeName(Ombra::Kin::EntityType t) {
  switch (static_cast<int>(t)) {
    case Ombra::Kin::Axis:
      return L"Axis";
    case Ombra::Kin::Head:
      return L"Head";
    case Ombra::Kin::Table:
      return L"Table";
    default:
      return L"<UNRECOGNISED>";
  }
}

namespace {

/// Room for as many triangles as the mesh may need, if there is that much memory.
void reserveFor(const Mesh& mesh, std::vector<UTri>& tris) {
  try {
    tris.reserve(std::size_t{3} * mesh.indexCount);
  } catch (const std::bad_alloc&) {
    return;  // most meshes need a ninth of it
  } catch (const std::length_error&) {
    return;
  }
}

UVec3d pointOf(const Mesh& mesh, std::uint32_t i) {
  const double* const p = mesh.points + std::size_t{4} * i;
  return {p[0], p[1], p[2]};
}

// A bad corner ends the mesh: what follows can only be as wrong.
void appendMesh(const Mesh& mesh, UTri& scratch, std::vector<UTri>& tris) {
  std::uint32_t q = 0;
  for (std::uint32_t polygon = 0; polygon < mesh.polygonCount; ++polygon) {
    const std::uint32_t corners = mesh.vertexCounts[polygon];
    for (std::uint32_t v = 0; v < corners; ++v, ++q) {
      if (q >= mesh.indexCount) return;
      if (v >= 3) continue;
      if (mesh.indices[q] >= mesh.pointCount) return;
      scratch.p[v] = pointOf(mesh, mesh.indices[q]);
    }
    tris.push_back(scratch);
  }
}

void traceMesh(int i, const Mesh& mesh) {
  UTools::_traceTS(L"\tmesh[%02d] numPts=%d, iNVerts=%d, iIverts=%d", i,
                   static_cast<int>(mesh.pointCount), static_cast<int>(mesh.polygonCount),
                   static_cast<int>(mesh.indexCount));
}

// Deliberate: one scratch triangle for all polygons, so that one of fewer than three corners keeps
// corners of the one before (EntityTriangles.OfTwoCornersKeepTheThirdOfThePolygonBefore).
void appendMeshes(const EntityMesh& meshes, std::vector<UTri>& tris) {
  UTools::_traceTS(L" %d meshes", meshes.GetMeshNb());
  UTri scratch;
  for (int i = 0; i < meshes.GetMeshNb(); ++i) {
    const Mesh* const mesh = meshes.GetMesh(i);
    if (!mesh) continue;
    reserveFor(*mesh, tris);
    traceMesh(i, *mesh);
    appendMesh(*mesh, scratch, tris);
  }
}

}  // namespace

int NMachine::_ombraEntityGeom(const Entity* e, std::vector<UTri>& tris) {
  tris.clear();
  const EntityMesh* const meshes = e ? e->GetEntityMesh() : nullptr;
  const bool isWhole = hadMemory([&] {
    UTools::_traceTS(L"entity <%s> mesh %s", e ? e->GetEntityName().c_str() : L"NO_ENTITY",
                     meshes ? L"OK" : L"NO_MESH");
    if (meshes) appendMeshes(*meshes, tris);
  });
  if (!isWhole) tris.clear();
  UTools::_traceTF();
  return meshes && isWhole ? 0 : -1;
}

void NMachine::getTrianglesU(const MachinePosition& pos, std::vector<UTri>& tris) const try {
  tris.clear();
  if (!machine_) return;
  MachineCompute compute(machine_);
  const auto& kinematic = machine_->GetKinematic();
  const Entity* const table = kinematic.GetEntityTable(table_);
  UMatrix tableFrame;
  std::vector<UTri> local;
  for (int k = 1; k <= machine_->GetEntityNb(); ++k) {
    const Entity* const e = kinematic.GetEntity(EntityId(k));
    if (!e) continue;
    // What has meshes and cannot give them was short of memory: all or nothing.
    if (_ombraEntityGeom(e, local) != 0 && e->GetEntityMesh()) return tris.clear();
    Matrix43 m;
    compute.ComputePositionEntity(e, pos, &m);
    const UMatrix placed = _fromMatrix43(m);
    if (e == table) tableFrame = placed;
    UTri::_applyMatrix(placed, local);
    tris.insert(tris.end(), local.begin(), local.end());
  }
  UTri::_applyMatrix(tableFrame.inverse(), tris);
} catch (const std::bad_alloc&) {
  tris.clear();
}

}  // namespace zkin
