// From a tool tip and direction to positions.

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include "adapter/Axes.h"
#include "adapter/NMachine.h"
#include "adapter/PositionList.h"
#include "adapter/PositionTrace.h"
#include "adapter/convert.h"
#include "adapter/memory.h"
#include "adapter/tolerances.h"
#include "platform/ombra/MachineCompute.h"
#include "platform/zgeo/UTools.h"

using Ombra::Vector3D;
using Ombra::Kin::Entity;
using Ombra::Kin::HeadIndex;
using Ombra::Kin::MachineCompute;
using Ombra::Kin::MachinePosition;
using Ombra::Kin::RotariesSolution;
using Ombra::Kin::TableIndex;
using zgeo::UTools;
using zgeo::UVec3d;

namespace zkin {

namespace {

using Axes = std::vector<const Entity*>;

/// What every computation of one query has in common.
struct Query {
  MachineCompute compute;
  HeadIndex head;
  TableIndex table;
  MachinePosition zero;  ///< Of the machine's size.
};

/// Calls `visit(p, r1, r2)` for each pair of rotary axes and each solution, the pairs in order: p
/// has the two angles (degrees), and 0 for all other registers.
template <typename Visit>
void forEachTurn(Query& query, const MachinePosition& start, const UVec3d& dir, const Axes& rotary,
                 Visit visit) {
  for (std::size_t i = 0; i < rotary.size(); ++i) {
    for (std::size_t j = i + 1; j < rotary.size(); ++j) {
      RotariesSolution solution;
      if (!query.compute.ComputeToolIjkTcsToMcsAbc(start, query.head, query.table, toOmbra(dir),
                                                   rotary[i]->GetRegister(),
                                                   rotary[j]->GetRegister(), &solution)) {
        query.compute.GetLastError();  // whatever the cause, the next pair may do
        continue;
      }
      if (solution.count > std::ssize(solution.pairs)) continue;  // not what was asked for
      for (int k = 0; k < solution.count; ++k) {
        MachinePosition p = query.zero;
        p[rotary[i]->GetRegister()] = degreesOf(solution.pairs[k].first.radians);
        p[rotary[j]->GetRegister()] = degreesOf(solution.pairs[k].second.radians);
        visit(p, *rotary[i], *rotary[j]);
      }
    }
  }
}

/// Calls `visit(p)` for each triple of linear axes that puts the tip of the turned tool on a point,
/// when the three are in their ranges; the triples in order.
template <typename Visit>
void forEachSlide(Query& query, const MachinePosition& turned, const UVec3d& pos, double length,
                  const Axes& linear, Visit visit) {
  for (std::size_t i = 0; i < linear.size(); ++i) {
    for (std::size_t j = i + 1; j < linear.size(); ++j) {
      for (std::size_t k = j + 1; k < linear.size(); ++k) {
        const Entity &x = *linear[i], &y = *linear[j], &z = *linear[k];
        Vector3D xyz;
        if (!query.compute.ComputeToolTcsToMcsXyz(turned, query.head, query.table, toOmbra(pos),
                                                  x.GetRegister(), y.GetRegister(), z.GetRegister(),
                                                  {0, 0, length}, &xyz)) {
          continue;
        }
        MachinePosition p = turned;
        p[x.GetRegister()] = xyz.x;
        p[y.GetRegister()] = xyz.y;
        p[z.GetRegister()] = xyz.z;
        visit(p);
      }
    }
  }
}

bool areInRange(const Axes& axes, const MachinePosition& p) {
  return std::all_of(axes.begin(), axes.end(),
                     [&p](const Entity* axis) { return isInRange(*axis, p[axis->GetRegister()]); });
}

bool foldAll(const Axes& rotary, MachinePosition& p) {
  return std::all_of(rotary.begin(), rotary.end(),
                     [&p](const Entity* axis) { return fold(*axis, p[axis->GetRegister()]); });
}

// First near the start, then into the range: the range decides.
bool bringNear(const Entity& axis, const MachinePosition& start, MachinePosition& p) {
  double& v = p[axis.GetRegister()];
  v = nearStart(v, start[axis.GetRegister()]);
  return fold(axis, v);
}

/// Largest change of an axis.
double largestChange(const Axes& rotary, const MachinePosition& a, const MachinePosition& b) {
  double largest = 0.0;
  for (const Entity* axis : rotary) {
    largest = std::max(largest, std::fabs(a[axis->GetRegister()] - b[axis->GetRegister()]));
  }
  return largest;
}

bool isSmaller(double change, double best) { return change < best - kSameChange; }

// Traces that memory is short for lose text, and lines end all the same.

void traceLine(const wchar_t* text) {
  hadMemory([text] { UTools::_traceTS(L"%s", text); });
  UTools::_traceTF();
}

void traceQuestion(int count, const MachinePosition& current, const UVec3d& pos,
                   const UVec3d& dir) {
  hadMemory([&] {
    tracePosition(count, L"zkin::NMachine::getConfigPlus", current, count);
    pos.dump(L" pos", true);
    dir.dump(L" dir", true);
  });
}

void traceAnswer(int count, const MachinePosition& out) {
  hadMemory([&] { tracePosition(count, L"(minmaxdif)", out, count); });
  UTools::_traceTF();
}

}  // namespace

int NMachine::getPossibleAngles(const UVec3d& dir, std::vector<MachinePosition*>& out) const try {
  if (!machine_) return -1;
  const Axes rotary = axesOf(*machine_, Ombra::Kin::Rotary);
  Query query{MachineCompute(machine_), head_, table_, newMachinePosition()};
  PositionList list(out);
  StartGrid starts(rotary);
  MachinePosition start = query.zero;
  while (starts.next(start)) {
    forEachTurn(query, start, dir, rotary, [&](MachinePosition& p, const Entity&, const Entity&) {
      if (foldAll(rotary, p)) list.add(p);
    });
  }
  return 0;
} catch (const std::bad_alloc&) {
  return 0;  // what was found so far is there
}

int NMachine::getPossibleConfigs(const UVec3d& dir, const UVec3d& pos,
                                 std::vector<MachinePosition*>& out) const {
  std::vector<MachinePosition*> turned;
  const int code = getPossibleAngles(dir, turned);
  if (code == 0) slideAll(turned, pos, out);
  _release(turned);
  return code;
}

void NMachine::slideAll(const std::vector<MachinePosition*>& turned, const UVec3d& pos,
                        std::vector<MachinePosition*>& out) const try {
  const Axes linear = axesOf(*machine_, Ombra::Kin::Linear);
  Query query{MachineCompute(machine_), head_, table_, newMachinePosition()};
  PositionList list(out);
  for (const MachinePosition* p : turned) {
    forEachSlide(query, *p, pos, theLength_, linear, [&](const MachinePosition& slid) {
      if (areInRange(linear, slid)) list.add(slid);
    });
  }
} catch (const std::bad_alloc&) {
  return;  // what was found so far is there
}

std::vector<const Entity*> NMachine::freeAxes(Ombra::Kin::LinkKind kind) const {
  Axes axes = axesOf(*machine_, kind);
  std::erase_if(axes, [this](const Entity* axis) { return isLocked(axis->GetRegister()); });
  return axes;
}

int NMachine::getConfigPlus(const MachinePosition& current, const UVec3d& pos, const UVec3d& dir,
                            MachinePosition& out) const try {
  if (!machine_) {
    traceLine(L"zkin::NMachine::getConfigPlus, no machine");
    return 1;
  }
  const int count = registerNb().value;
  traceQuestion(count, current, pos, dir);

  const Axes rotary = freeAxes(Ombra::Kin::Rotary), linear = freeAxes(Ombra::Kin::Linear);
  Query query{MachineCompute(machine_), head_, table_, newMachinePosition()};
  MachinePosition best;
  double bestChange = std::numeric_limits<double>::infinity();
  forEachTurn(query, current, dir, rotary,
              [&](MachinePosition& turned, const Entity& r1, const Entity& r2) {
                if (!bringNear(r1, current, turned) || !bringNear(r2, current, turned)) return;
                const double change = largestChange(rotary, turned, current);
                if (!isSmaller(change, bestChange)) return;
                forEachSlide(query, turned, pos, theLength_, linear, [&](const MachinePosition& p) {
                  if (!isSmaller(change, bestChange) || !areInRange(linear, p)) return;
                  best = p;
                  bestChange = change;
                });
              });
  if (best.Size() == 0) {
    traceLine(L"(NO RES)");
    return 0;
  }
  out = best;
  traceAnswer(count, out);
  return 0;
} catch (const std::bad_alloc&) {
  traceLine(L"(NO RES)");
  return 0;
}

}  // namespace zkin
