#pragma once

#include <string>
#include <vector>

#include "kinematics/Export.h"
#include "platform/ombra/Entity.h"
#include "platform/ombra/Indices.h"
#include "platform/ombra/Machine.h"
#include "platform/ombra/MachinePosition.h"
#include "platform/ombra/Matrix43.h"
#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UTri.h"
#include "platform/zgeo/UVec3d.h"

namespace zkin {

/// A machine of the external kinematics library, asked what `KMachine` is asked.
///
/// Frames: "machine coordinates" are the frame of the adapter's table, as those of `KMachine` are
/// the part's; points in mm. Positions hold mm for linear and degrees for rotary axes, by register.
/// A tool direction points from the tip to the spindle. No result is changed by UNI2MAC or MAC2UNI;
/// they are kept for the host.
///
/// Every computation is the external library's (`Ombra::Kin::MachineCompute`). The adapter keeps no
/// result: what reads only may run on one adapter in many threads.
///
/// Memory: where it is out, codes, lists, matrices and pointers say so, each as written below.
/// Constructors, copies, `set`, `reset` and what returns a position, a list or a text by value
/// throw std::bad_alloc; nothing else is thrown.
class KORVO_KINEMATICS_API NMachine {
 public:
  // --- NMachine.cpp: construction, copies, accessors, locks

  /// Copies `m` and analyses its axes; without one (null) an empty adapter.
  ///
  /// @owner  The copy is the adapter's, but only `reset(true)` deletes it. Deliberate: neither the
  ///         destructor nor `set` does (test: Ownership.OnlyResetTrueDeletesTheCopy). Call
  ///         `reset(true)` exactly once for each copy.
  NMachine(const Ombra::Kin::Machine* const m, Ombra::Kin::HeadIndex h, Ombra::Kin::TableIndex t);

  NMachine(const NMachine& o);  ///< As `set(o)` on a new adapter: a copy of the machine of its own.
  ~NMachine();                  ///< Does not delete the machine's copy.

  /// Takes a new copy of `m` with head `h` and table `t`, all registers unlocked; or no machine
  /// when `m` is null: head and table stay then, whatever is given.
  ///
  /// @errors  The name becomes "<unnamed>"; THE length and frames stay. Deliberate: without a
  ///          machine the registers and locks of the former one stay, too (test:
  ///          Setting.NoMachineKeepsTheRegistersOfTheFormerOne).
  void set(const Ombra::Kin::Machine* const m, Ombra::Kin::HeadIndex h, Ombra::Kin::TableIndex t);

  /// Takes the other's name, THE length and frames and, where it has a machine, a new copy of that
  /// with head and table, all registers unlocked; where it has none, head, table, registers and
  /// locks stay. Deliberate: set to itself an adapter loses machine and name (test:
  /// Setting.ToItselfLosesTheMachineAndTheName).
  void set(const NMachine& o);

  /// Copies every member, locks included.
  /// @owner  Deliberate: both hold the same machine, and `reset(true)` on one leaves the other with
  ///         a pointer to nothing (test: Ownership.AssignedAdaptersShareTheMachine).
  NMachine& operator=(const NMachine& o);

  /// Leaves the adapter without a machine, named "<unnamed>"; all else stays.
  /// @param destroy  Whether the machine's copy is deleted.
  void reset(bool destroy);

  const Ombra::Kin::Machine* machine() const { return machine_; }  ///< Or null.
  Ombra::Kin::HeadIndex headIndex() const { return head_; }
  Ombra::Kin::TableIndex tableIndex() const { return table_; }
  std::wstring& name() { return name_; }
  const std::wstring& name() const { return name_; }

  /// Registers of the rotary and of the linear axes, in register order.
  const std::vector<Ombra::Kin::Register>& rotations() const { return rotations_; }
  const std::vector<Ombra::Kin::Register>& translations() const { return translations_; }

  double getTHELength() const { return theLength_; }  ///< From tool tip to tool point, mm.
  void setTHELength(double length) { theLength_ = length; }
  void setUNI2MAC(const zgeo::UMatrix& m);  ///< Sets MAC2UNI, too: its inverse.
  const zgeo::UMatrix& getUNI2MAC() const { return uni2mac_; }
  const zgeo::UMatrix& getMAC2UNI() const { return mac2uni_; }

  /// A locked register takes no part in `getConfigPlus`. Indices of no register are ignored, and
  /// read as locked.
  void lockAxis(int i);
  void unlockAxis(int i);
  bool isLocked(int i) const;
  bool isLocked(const Ombra::Kin::Register& r) const { return isLocked(r.value); }

  // --- NMachine_positions.cpp: positions of the machine's registers
  //
  // Without a machine there are no registers: positions are empty.

  Ombra::Kin::MachinePosition newMachinePosition() const;  ///< All 0.
  Ombra::Kin::MachinePosition newMachinePosition(const Ombra::Kin::MachinePosition& p) const;

  /// The same on the heap; the caller's, to be released with `_release`. Null when memory is out.
  Ombra::Kin::MachinePosition* newMachinePositionP() const;
  Ombra::Kin::MachinePosition* newMachinePositionP(const Ombra::Kin::MachinePosition& p) const;

  static void _release(Ombra::Kin::MachinePosition*& p);  ///< Deletes (null allowed), sets to null.
  static void _release(std::vector<Ombra::Kin::MachinePosition*>& v);  ///< All; empties the list.

  /// The values of all registers, in order.
  std::vector<double> axisValues(const Ombra::Kin::MachinePosition& p) const;
  /// A position from values in register order; missing ones are 0, further ones are left out.
  Ombra::Kin::MachinePosition axisValues(const std::vector<double>& v) const;

  /// Same size, and every value closer than `tol`: a difference of exactly `tol` makes them
  /// unequal.
  static bool _equals(const Ombra::Kin::MachinePosition& a, const Ombra::Kin::MachinePosition& b,
                      double tol);

  /// Traces "NMP<size> (label) [ v0 | v1 ... ]", a value for each register of the machine; less of
  /// it when memory is out.
  /// @param keepLine  True leaves the trace line open for the next text.
  void dumpValues(const Ombra::Kin::MachinePosition& p, const wchar_t* const label,
                  bool keepLine) const;

  // --- NMachine_forward.cpp: tool frames, tool point, translation

  /// The tool frame of head `h` in the frame of table `t`, its origin `len` back from the tool
  /// point against the tool direction.
  /// @errors  All zero without a machine. Deliberate: a failed computation gives the identity, as
  ///          one does that memory is short for (test:
  ///          ToolFrame.OfAFailedComputationIsTheIdentity).
  zgeo::UMatrix getMatrix(const Ombra::Kin::MachinePosition& p, Ombra::Kin::HeadIndex h,
                          Ombra::Kin::TableIndex t, double len) const;
  zgeo::UMatrix getMatrix(const Ombra::Kin::MachinePosition& p) const;       ///< At the tool point.
  zgeo::UMatrix getMatrix_H2T(const Ombra::Kin::MachinePosition& p) const;   ///< The same.
  zgeo::UMatrix getMatrix_TP2U(const Ombra::Kin::MachinePosition& p) const;  ///< At the tool tip.

  /// U, V, W and the translation as columns.
  static zgeo::UMatrix _fromMatrix43(const Ombra::Matrix43& m);

  /// Tool point (without THE length) and tool direction.
  /// @return  True in every case; zeros without a machine.
  bool getTool(const Ombra::Kin::MachinePosition& p, zgeo::UVec3d& pos, zgeo::UVec3d& dir) const;
  /// The same. Deliberate: head and table given are not looked at (test:
  /// ToolPoint.HeadAndTableGivenAreNotLookedAt).
  bool getTool(const Ombra::Kin::MachinePosition& p, zgeo::UVec3d& pos, zgeo::UVec3d& dir,
               Ombra::Kin::HeadIndex h, Ombra::Kin::TableIndex t) const;

  /// Increments of the first three linear registers that shift the tool point by `delta` (mm), in a
  /// position of which all else is 0; all 0 when they cannot.
  Ombra::Kin::MachinePosition axisTranslation(const Ombra::Kin::MachinePosition& p,
                                              const zgeo::UVec3d& delta) const;

  // --- NMachine_inverse.cpp: from a tool tip and direction to positions
  //
  // Targets are tool tips (mm) and tool directions (any length, from tip to spindle) in the frame
  // of the table. Axes are solved in pairs (rotary) and threes (linear) in the order of the
  // machine's entities. Deliberate: registers outside the pair and the three are 0 in every result,
  // so with a third rotary axis a result need not have the direction it was solved for (tests:
  // Angles.OtherRegistersAreZero, Nearest.StartsFromZeroBesideTheSolvedPair). Verify with getTool.

  /// Appends the positions whose rotary axes turn the tool onto `dir`, each once (1e-4), brought
  /// into the ranges by whole turns; `out` is not emptied, and what is there counts. Entries are
  /// the caller's (`_release`). Deliberate: `KMachine` refuses angles outside the ranges where a
  /// turn would do (test: Angles.AreFoldedIntoTheRangeByWholeTurns).
  ///
  /// @return  0, also when memory is out: what was found so far is there. Deliberate: -1, nothing
  ///          appended, without a machine, which is 1 for `getConfigPlus` (tests:
  ///          Angles.WithoutAMachineAreMinusOne, Nearest.WithoutAMachineIsOne).
  /// @cost    A computation for each pair and start: nine starts for every rotary axis without a
  ///          range, multiplied.
  int getPossibleAngles(const zgeo::UVec3d& dir,
                        std::vector<Ombra::Kin::MachinePosition*>& out) const;

  /// Appends the positions that put the tool tip on `pos` as well, within the linear ranges. Mind
  /// the order of arguments. Returns as `getPossibleAngles` does.
  int getPossibleConfigs(const zgeo::UVec3d& dir, const zgeo::UVec3d& pos,
                         std::vector<Ombra::Kin::MachinePosition*>& out) const;

  /// The position on the target, of the unlocked axes, whose rotary values have the smallest
  /// largest change from `current`; the earlier of equal ones (1e-9 degrees). Traces start, target
  /// and result, "(NO RES)" when there is none.
  ///
  /// @return  0. Deliberate: also when there is none or memory is out; `out` is untouched then
  ///          (test: Nearest.WithoutASolutionIsZeroAndOutStays). Deliberate: 1 without a machine,
  ///          which is -1 for the lists (test: Nearest.WithoutAMachineIsOne).
  int getConfigPlus(const Ombra::Kin::MachinePosition& current, const zgeo::UVec3d& pos,
                    const zgeo::UVec3d& dir, Ombra::Kin::MachinePosition& out) const;

  // --- NMachine_geometry.cpp: the bodies as triangles

  /// The triangles of all entities at a position, in the frame of the adapter's table: the
  /// workpiece's side stays still. `tris` is emptied first; empty without a machine and when memory
  /// is out.
  /// @errors  Without that table: in the frame of the machine's base. An entity that cannot be
  ///          placed stands as its meshes are written, its own frame on the base's.
  void getTrianglesU(const Ombra::Kin::MachinePosition& pos, std::vector<zgeo::UTri>& tris) const;

  /// The triangles of one entity in its own frame; `tris` is emptied first.
  ///
  /// Deliberate: of a polygon the first three corners count, and one with fewer keeps the others of
  /// the polygon before (tests: EntityTriangles.TakeTheFirstThreeCorners,
  /// EntityTriangles.OfTwoCornersKeepTheThirdOfThePolygonBefore).
  /// @return  0; -1 and no triangle without an entity or a mesh and when memory is out.
  /// @errors  A mesh ends with the first polygon that lacks corners or one of whose first three
  ///          corners names no point; that one gives no triangle. Traces one line.
  static int _ombraEntityGeom(const Ombra::Kin::Entity* e, std::vector<zgeo::UTri>& tris);

  static std::wstring _typeName(Ombra::Kin::EntityType t);  ///< "Axis", "Head" or "Table".

 protected:
  /// Sorts the registers into linear and rotary ones and unlocks all.
  /// @return  0; -3 with fewer than three linear registers, else -2 with fewer than two rotary.
  int axisAnalysis();

 private:
  void keepCopyOf(const Ombra::Kin::Machine& m);
  Ombra::Kin::Register registerNb() const;
  std::vector<const Ombra::Kin::Entity*> freeAxes(Ombra::Kin::LinkKind kind) const;
  void slideAll(const std::vector<Ombra::Kin::MachinePosition*>& turned, const zgeo::UVec3d& pos,
                std::vector<Ombra::Kin::MachinePosition*>& out) const;

  Ombra::Kin::Machine* machine_ = nullptr;
  Ombra::Kin::HeadIndex head_;
  Ombra::Kin::TableIndex table_;
  double theLength_ = 0.0;
  std::vector<Ombra::Kin::Register> rotations_;
  std::vector<Ombra::Kin::Register> translations_;
  zgeo::UMatrix uni2mac_;
  zgeo::UMatrix mac2uni_;
  std::wstring name_ = L"<unnamed>";
  std::vector<bool> locked_;
};

}  // namespace zkin
