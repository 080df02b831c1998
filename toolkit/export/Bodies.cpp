#include "toolkit/export/Bodies.h"

#include <algorithm>
#include <limits>

#include "geometry/GeometryFile.h"
#include "platform/ombra/EntityMesh.h"
#include "platform/ombra/Kinematic.h"
#include "platform/ombra/MachineCompute.h"
#include "toolkit/Describe.h"
#include "toolkit/export/Placed.h"

using Ombra::Kin::Entity;
using Ombra::Kin::EntityId;
using Ombra::Kin::MachinePosition;
using zgeo::UMatrix;
using zgeo::UTri;
using zgeo::UVec3d;
using zkin::KMachineElem;
using zkin::NMachine;

namespace korvo {
namespace {

using Rgb = std::array<int, 3>;

// Told apart side by side, none of them loud: machine greys, then colours.
constexpr Rgb kPalette[] = {{176, 184, 192}, {120, 144, 168}, {196, 180, 150}, {140, 164, 140},
                            {190, 140, 120}, {150, 140, 172}, {210, 190, 110}, {110, 120, 130}};

bool isColour(const Rgb& rgb) {
  return std::all_of(rgb.begin(), rgb.end(), [](int c) { return c >= 0 && c <= 255; });
}

Rgb colourOf(const KMachineElem& e, int rank) {
  Rgb rgb;
  e.getGeomRGB(rgb.data());
  return isColour(rgb) ? rgb : kPalette[static_cast<std::size_t>(rank) % std::size(kPalette)];
}

// The copy is as long as the list, while readers reserve more than they fill.
Body bodyOf(const KMachineElem& e, int rank, const UMatrix& motion,
            const std::vector<UTri>& triangles) {
  return {rank, elementName(e), colourOf(e, rank), motion, std::vector<UTri>(triangles)};
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr Box kNothing{{kInfinity, kInfinity, kInfinity}, {-kInfinity, -kInfinity, -kInfinity}};

}  // namespace

std::vector<Body> bodiesOf(const zkin::KMachine& machine, const zkin::KMachineValueBase& position) {
  std::vector<Body> bodies;
  std::vector<UTri> triangles;
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    const KMachineElem& e = *machine.getElemByRank(rank);
    triangles.clear();
    zkin::loadGeometryFile(e.getGeomFile(), triangles);
    if (triangles.empty()) continue;
    bodies.push_back(bodyOf(e, rank, machine.getMatrix(position, &e), triangles));
  }
  return bodies;
}

std::vector<Body> bodiesOf(const zkin::KMachine& machine, const NMachine& external,
                           const MachinePosition& position) {
  std::vector<Body> bodies;
  if (!external.machine()) return bodies;
  const Ombra::Kin::Kinematic& kinematic = external.machine()->GetKinematic();
  Ombra::Kin::MachineCompute compute(external.machine());
  const auto placementOf = [&](const Entity* entity) {
    Ombra::Matrix43 placement;
    compute.ComputePositionEntity(entity, position, &placement);
    return NMachine::_fromMatrix43(placement);
  };
  const UMatrix toTable = placementOf(kinematic.GetEntityTable(external.tableIndex())).inverse();
  std::vector<UTri> triangles;
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    const Entity* const entity = kinematic.GetEntity(EntityId(rank + 1));
    NMachine::_ombraEntityGeom(entity, triangles);
    if (triangles.empty()) continue;
    const UMatrix motion = toTable * placementOf(entity);
    bodies.push_back(bodyOf(*machine.getElemByRank(rank), rank, motion, triangles));
  }
  return bodies;
}

void standOnFrame(const zkin::KMachine& machine, const zkin::KMachineValueBase& position,
                  std::vector<Body>& bodies) {
  const zgeo::UMatrix back = machine.getMatrix(position, KMachineElem::KMET_BATI).inverse();
  for (Body& body : bodies) body.motion = back * body.motion;
}

Box unite(const Box& a, const Box& b) {
  return {{std::min(a.min.x, b.min.x), std::min(a.min.y, b.min.y), std::min(a.min.z, b.min.z)},
          {std::max(a.max.x, b.max.x), std::max(a.max.y, b.max.y), std::max(a.max.z, b.max.z)}};
}

Extent extentOf(const Body& body) {
  Extent extent{kNothing};
  exporting::forEachPlaced(body, [&extent](const UTri& t) {
    for (const UVec3d& p : t.p) extent.box = unite(extent.box, {p, p});
    ++extent.triangles;
  });
  return extent;
}

}  // namespace korvo
