#pragma once

#include "platform/ombra/Entity.h"
#include "platform/ombra/Export.h"
#include "platform/ombra/Indices.h"
#include "platform/ombra/Machine.h"
#include "platform/ombra/MachinePosition.h"
#include "platform/ombra/Matrix43.h"
#include "platform/ombra/RotariesSolution.h"
#include "platform/ombra/Vector3D.h"

namespace Ombra::Kin {

/// Why the last computation failed: a code for each cause.
enum MachineComputeErrorType : int {
  NoError = 0,
  NoMachine,             ///< There is no machine to compute with.
  NoResult,              ///< Null where the result goes.
  WrongPosition,         ///< The position has another number of registers than the machine.
  NotFinite,             ///< A value of the position or of the target is not a finite number.
  UnknownEntity,         ///< The entity is null or none of this machine's.
  UnknownHead,           ///< No head has that index.
  UnknownTable,          ///< No table has that index.
  UnknownRegister,       ///< No axis has the register.
  AxisOfOtherKind,       ///< Not a rotary, or not a linear axis, as is needed.
  AxisNotInChain,        ///< The axis stands neither below that head nor below that table.
  SameRegisters,         ///< Two of the axes to be solved are one.
  NullDirection,         ///< The wanted direction has the length 0.
  ParallelAxes,          ///< The two rotary axes are parallel: they do the work of one.
  UnreachableDirection,  ///< No turns of the two axes give the direction.
  DependentDirections,   ///< The three linear axes span no space.
};

/// Computes with a machine, which must stay as it is as long as this object is used.
///
/// Frames: Mcs, machine coordinates, is the frame of the base. An entity stands at the product of
/// the motions of the axes that carry it, the one on the base leftmost, its own included, each
/// about or along its line at the zero position. Tcs is the frame of a table: its zero placement,
/// moved with it. The tool is that of a head: its tool frame, moved with it, less the offset.
/// Seen from the table, the axes below the table come first, in the opposite sense and order.
///
/// Units: mm and degrees in positions, radians in `Angle`. A failed computation leaves its result
/// untouched, returns false and keeps the cause for `GetLastError`; no computation throws but for
/// memory. Ranges are not looked at.
class OMBRA_API MachineCompute {
 public:
  explicit MachineCompute(const Machine* machine) : machine_(machine) {}
  explicit MachineCompute(const Machine& machine) : machine_(&machine) {}

  /// The tool frame in the frame of the table: place(table)^-1 * place(head) * tool frame.
  ///
  /// @param offset  From the tool tip to the tool frame's origin, in the tool frame (mm): a tool of
  ///                length L, (0, 0, L), has its tip L back against W.
  /// @errors  A position that is not finite passes and gives a matrix that is not finite.
  bool ComputeMcsToToolTcs(const MachinePosition& position, const HeadIndex& head,
                           const TableIndex& table, const Vector3D& offset, Matrix43* tool);

  /// Angles of the rotary axes r1 and r2 that turn the tool's W onto a direction.
  ///
  /// @frames  `ijk` in the frame of the table, of any length.
  /// @param start  All other registers stay as in it. Angles are within half a turn of its own,
  ///               (start - pi, start + pi]; one without effect is the start's.
  /// @param solution  One or two pairs (one where the two are less than 1e-7 apart), the first with
  ///               the smaller turns away from the start.
  /// @source  korvo::rotations::twoAxes, from the tool's direction at the start.
  bool ComputeToolIjkTcsToMcsAbc(const MachinePosition& start, const HeadIndex& head,
                                 const TableIndex& table, const Vector3D& ijk, const Register& r1,
                                 const Register& r2, RotariesSolution* solution);

  /// Values of the linear axes rx, ry and rz that put the tool tip on a point.
  ///
  /// @frames  `xyz` in the frame of the table, mm.
  /// @param start  All other registers stay as in it; its own values of the three have no effect.
  /// @param offset  As for `ComputeMcsToToolTcs`.
  /// @param values  Of rx, ry and rz, in this order.
  /// @source  korvo::rotations::threeDirections, from where the tip is with the three at 0.
  bool ComputeToolTcsToMcsXyz(const MachinePosition& start, const HeadIndex& head,
                              const TableIndex& table, const Vector3D& xyz, const Register& rx,
                              const Register& ry, const Register& rz, const Vector3D& offset,
                              Vector3D* values);

  /// Where an entity stands in machine coordinates, its zero placement included.
  bool ComputePositionEntity(const Entity* entity, const MachinePosition& position,
                             Matrix43* placement);

  /// The cause of the last computation's failure; NoError after one that succeeded.
  MachineComputeErrorType GetLastError() const { return lastError_; }

 private:
  bool end(MachineComputeErrorType error);

  const Machine* machine_;
  MachineComputeErrorType lastError_ = NoError;
};

}  // namespace Ombra::Kin
