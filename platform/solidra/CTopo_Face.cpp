#include "platform/solidra/CTopo_Face.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "platform/solidra/FaceMesh.h"

struct CTopo_Face::Mesh : solidra::FaceMesh {};

namespace {

// The usable curves of all wires.
solidra::Trim trimOf(const std::vector<std::unique_ptr<CTopo_Wire>>& wires, double gap) {
  solidra::Trim trim;
  trim.gap = gap;
  for (const auto& wire : wires) {
    trim.gap = std::max(trim.gap, wire->GetGap());
    for (int i = 0; i < wire->GetCoEdgeCount(); ++i) {
      const CGeom2d_Curve* curve = wire->GetCoEdge(i)->GetCurve();
      if (curve && curve->IsValid()) trim.curves.push_back(*curve->Data());
    }
  }
  return trim;
}

}  // namespace

CTopo_Face::CTopo_Face(CGeom_Surf* surface, int) : surface_(surface) {}

CTopo_Face::~CTopo_Face() = default;

void CTopo_Face::AddOuterWire(bool) {
  wires_.clear();
  mesh_.reset();
}

bool CTopo_Face::AddWire(CTopo_Wire* wire) {
  std::unique_ptr<CTopo_Wire> owned(wire);
  if (!owned) return false;
  mesh_.reset();
  try {
    wires_.push_back(std::move(owned));
    return true;
  } catch (const std::exception&) {  // memory is short
    return false;
  }
}

void CTopo_Face::Regen(int, double) { mesh_.reset(); }

void CTopo_Face::RepearOrderedWire(double, double, double gap) {
  if (std::isfinite(gap)) gap_ = std::max(gap_, gap);
  mesh_.reset();
}

bool CTopo_Face::ValidateMesh(double chord, double edge) {
  if (mesh_) return true;
  if (!surface_ || !surface_->IsValid() || !(chord > 0) || !(edge > 0)) return false;
  try {
    auto mesh = std::make_unique<Mesh>();
    if (solidra::meshFace(*surface_->Data(), trimOf(wires_, gap_), std::min(chord, edge), *mesh))
      mesh_ = std::move(mesh);
  } catch (const std::exception&) {  // memory is short
    mesh_.reset();
  }
  return HasMesh();
}

bool CTopo_Face::HasMesh() const { return mesh_ != nullptr; }

int CTopo_Face::GetMeshVertex(CStd_Array1<CMesh_Vertex>& vertices) const {
  vertices.RemoveAll();
  if (!mesh_) return 0;
  try {
    vertices.SetCount(static_cast<int>(mesh_->points.size()));
  } catch (const std::exception&) {  // memory is short
    return 0;
  }
  for (int i = 0; i < vertices.GetCount(); ++i) {
    const CGeom_XYZ& p = mesh_->points[i];
    vertices[i] = {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)};
  }
  return vertices.GetCount();
}

int CTopo_Face::GetVTriangles(CStd_Array1<CMesh_Index>& triangles) const {
  triangles.RemoveAll();
  if (!mesh_) return 0;
  try {
    triangles.SetCount(static_cast<int>(mesh_->triangles.size()));
  } catch (const std::exception&) {  // memory is short
    return 0;
  }
  for (int i = 0; i < triangles.GetCount(); ++i) {
    const auto& [a, b, c] = mesh_->triangles[i];
    triangles[i] = {a, b, c};
  }
  return triangles.GetCount();
}

CMesh_Stats CTopo_Face::GetMeshStats() const { return mesh_ ? mesh_->stats : CMesh_Stats{}; }
