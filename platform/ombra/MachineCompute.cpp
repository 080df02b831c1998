#include "platform/ombra/MachineCompute.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <optional>

#include "platform/ombra/ToolChain.h"
#include "platform/rotations/Solvers.h"

namespace Ombra::Kin {

namespace {

namespace rotations = korvo::rotations;

rotations::Vec3 toVec3(const Vector3D& v) { return {v.x, v.y, v.z}; }

bool isFinite(const Vector3D& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool isFinite(const MachinePosition& position) {
  for (int i = 0; i < position.Size(); ++i) {
    if (!std::isfinite(position[Register(i)])) return false;
  }
  return true;
}

MachineComputeErrorType checkPosition(const Machine* machine, const MachinePosition& position) {
  if (!machine) return NoMachine;
  return position.Size() == machine->GetRegisterNb().value ? NoError : WrongPosition;
}

/// A head and a table of a machine with the chain between them, or why there is none.
struct Task {
  Task(const Machine* machine, const MachinePosition& position, const HeadIndex& h,
       const TableIndex& t, const void* result) {
    error = checkPosition(machine, position);
    if (error == NoError && !result) error = NoResult;
    if (error != NoError) return;
    const Entity* const head = machine->GetKinematic().GetEntityHead(h);
    const Entity* const table = machine->GetKinematic().GetEntityTable(t);
    if (!head || !table) {
      error = head ? UnknownTable : UnknownHead;
      return;
    }
    chain.emplace(machine->GetKinematic(), *head, *table);
  }

  /// Asks for axes of one kind, none of them twice.
  void need(const Kinematic& kinematic, LinkKind kind, std::initializer_list<Register> registers) {
    for (auto r = registers.begin(); r != registers.end() && error == NoError; ++r) {
      const Entity* const axis = kinematic.GetEntity(*r);
      error = !axis                                    ? UnknownRegister
              : axis->GetEntityLink().kind != kind     ? AxisOfOtherKind
              : !chain->find(*r)                       ? AxisNotInChain
              : std::count(r, registers.end(), *r) > 1 ? SameRegisters
                                                       : NoError;
    }
  }

  void needFinite(const MachinePosition& position, const Vector3D& a, const Vector3D& b) {
    const bool finite = isFinite(position) && isFinite(a) && isFinite(b);
    if (error == NoError && !finite) error = NotFinite;
  }

  MachineComputeErrorType error = NoError;
  std::optional<ToolChain> chain;
};

double turnOf(double radians) { return radians == rotations::kFreeAngle ? 0.0 : radians; }

Angle turned(const MachinePosition& start, const Register& reg, double turn) {
  return Angle(start[reg] * (std::numbers::pi / 180.0) + turnOf(turn));
}

bool areParallel(const Vector3D& a, const Vector3D& b) {
  const Vector3D cross = a ^ b;
  return cross * cross <= rotations::kOnAxis * rotations::kOnAxis * (a * a) * (b * b);
}

}  // namespace

bool MachineCompute::end(MachineComputeErrorType error) {
  lastError_ = error;
  return error == NoError;
}

bool MachineCompute::ComputeMcsToToolTcs(const MachinePosition& position, const HeadIndex& head,
                                         const TableIndex& table, const Vector3D& offset,
                                         Matrix43* tool) {
  Task task(machine_, position, head, table, tool);
  if (task.error != NoError) return end(task.error);
  Matrix43 placed = task.chain->tableFrame().Inverse() * task.chain->walk(position);
  placed.SetTrans(placed.Apply(offset * -1.0));
  *tool = placed;
  return end(NoError);
}

bool MachineCompute::ComputeToolIjkTcsToMcsAbc(const MachinePosition& start, const HeadIndex& head,
                                               const TableIndex& table, const Vector3D& ijk,
                                               const Register& r1, const Register& r2,
                                               RotariesSolution* solution) {
  Task task(machine_, start, head, table, solution);
  if (task.error == NoError) task.need(machine_->GetKinematic(), Rotary, {r1, r2});
  task.needFinite(start, ijk, {});
  if (task.error == NoError && ijk == Vector3D()) task.error = NullDirection;
  if (task.error != NoError) return end(task.error);

  const Matrix43 tool = task.chain->walk(start);
  const ToolChain::Step* nearer = task.chain->find(r1);
  const ToolChain::Step* farther = task.chain->find(r2);
  const bool swapped = farther < nearer;
  if (swapped) std::swap(nearer, farther);
  if (areParallel(nearer->direction, farther->direction)) return end(ParallelAxes);

  const auto turns =
      rotations::twoAxes(toVec3(tool.GetW()), toVec3(task.chain->tableFrame().ApplyDir(ijk)),
                         toVec3(nearer->direction), toVec3(farther->direction));
  if (turns.count == 0) return end(UnreachableDirection);
  *solution = {};
  for (const auto& [a1, a2] : turns) {
    solution->pairs[solution->count++] = {turned(start, r1, swapped ? a2 : a1),
                                          turned(start, r2, swapped ? a1 : a2)};
  }
  return end(NoError);
}

bool MachineCompute::ComputeToolTcsToMcsXyz(const MachinePosition& start, const HeadIndex& head,
                                            const TableIndex& table, const Vector3D& xyz,
                                            const Register& rx, const Register& ry,
                                            const Register& rz, const Vector3D& offset,
                                            Vector3D* values) {
  Task task(machine_, start, head, table, values);
  if (task.error == NoError) task.need(machine_->GetKinematic(), Linear, {rx, ry, rz});
  task.needFinite(start, xyz, offset);
  if (task.error != NoError) return end(task.error);

  MachinePosition zeroed(start);
  for (const Register& reg : {rx, ry, rz}) zeroed[reg] = 0.0;
  const Matrix43 tool = task.chain->walk(zeroed);
  const Vector3D way = task.chain->tableFrame().Apply(xyz) - tool.Apply(offset * -1.0);
  const auto travel = rotations::threeDirections(
      toVec3(way), toVec3(task.chain->find(rx)->direction), toVec3(task.chain->find(ry)->direction),
      toVec3(task.chain->find(rz)->direction));
  if (!travel) return end(DependentDirections);
  *values = {(*travel)[0], (*travel)[1], (*travel)[2]};
  return end(NoError);
}

bool MachineCompute::ComputePositionEntity(const Entity* entity, const MachinePosition& position,
                                           Matrix43* placement) {
  MachineComputeErrorType error = checkPosition(machine_, position);
  if (error == NoError && !placement) error = NoResult;
  if (error != NoError) return end(error);
  const auto& list = machine_->GetKinematic().GetListEntity();
  if (!entity || std::find(list.begin(), list.end(), entity) == list.end()) {
    return end(UnknownEntity);
  }
  Matrix43 placed;
  for (const Entity* e : machine_->GetKinematic().GetChain(*entity)) {
    placed = placed * motionOf(*e, position, 1.0);
  }
  *placement = placed * entity->GetZeroPlacement();
  return end(NoError);
}

}  // namespace Ombra::Kin
