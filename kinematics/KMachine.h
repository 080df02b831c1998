#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kinematics/Export.h"
#include "kinematics/KMachineElem.h"
#include "kinematics/KMachineValue.h"
#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UTri.h"
#include "platform/zgeo/UVec3d.h"

namespace zkin {

class ChainWalk;
struct SolveView;

/// A machine tool: its elements, the chains that join them, and the answers to where they are.
///
/// Frames: points and directions are in the machine frame M, in mm. Values are mm (linear) and
/// degrees (rotary) in value order. Chains are rooted in the part where the file gives one, so the
/// machine frame is the part's. Tool numbers are 1 and up; below 1 means the current tool, which is
/// unset (0) until `setCurrentTool` is called: loading does not set it.
///
/// Failures are return values: null, -1, false or an empty list; nothing throws across this
/// interface. Pointers to elements are valid until the next element is added or the machine is
/// loaded again. The queries of KMachine_forward.cpp read only, and `getMatrix` and its relatives,
/// `getTool`, `getElemAxis` and `getTrianglesU` may run on one machine in many threads at once;
/// `updateDHm` and `getKine` must not. A cycle of previous-element links makes chains endless:
/// check files first.
class KORVO_KINEMATICS_API KMachine {
 public:
  /// Kinematic record of one tool.
  struct _sUKine {
    int toolIndex = -1;      ///< Element index of the tool; -1 in the empty record.
    int rotuleIndex = -1;    ///< Element index of the ball joint's first rotary axis; -1 without.
    int kinematicClass = 0;  ///< 1 to 4: three linear axes and 0, 1, 2, 3 or more rotary; 5: arm.
    int armType = 0;         ///< 5 for classes 1 to 4; of an arm 1, 3, 4, or -1 when unclear.
    int wristType = 0;       ///< 0 for classes 1 to 4; of an arm -1, 2 or 4.
  };

  KMachine();  ///< An empty machine of version 0, to be built with `addElem`.
  KMachine(const wchar_t* path, int version);  ///< Stores path and version; reads nothing.
  KMachine(const KMachine& o);
  KMachine& operator=(const KMachine& o);
  virtual ~KMachine();

  // --- KMachine_read.cpp: the definition file

  /// Names the definition file and its format version (1 or 2; any but 2 reads as 1).
  void setDataFilePNE(const std::wstring& path, int version);
  void setDataFilePNE(const std::string& path, int version);  ///< Path in UTF-8.
  const std::wstring& getDataFilePNE() const { return dataFilePNE_; }

  /// Reads the definition file and finalises the machine.
  ///
  /// @return  The result of `finalise`. -1, and nothing changed, when the version is 0 or the file
  ///          cannot be read to its end; -1 when memory is out.
  /// @errors  Lines that do not parse are ignored. A rotation-point line with an operand that is no
  ///          number never ends (Deliberate: part of the interface; check files first).
  ///          A part line whose reversal would lead back to an earlier part for ever is left
  ///          after two turns of each element; the links may then be a cycle, see above.
  ///          Collision pairs, strategy, mode, current tool, records and legacy offset of a former
  ///          load stay.
  /// @cost    Linear in the file, but for the pairs that its collision lines name: the lengths of
  ///          both groups multiplied, line by line; and for its tools: every tool's chain is
  ///          analysed twice, each time looked up among all elements.
  int readDataFile();

  // --- KMachine_graph.cpp: accessors, values, lookups, building, chains, tools, collision pairs

  int getVersion() const { return version_; }
  void setVersion(int version) { version_ = version; }
  int getStrategy() const { return strategy_; }
  void setStrategy(int strategy) { strategy_ = strategy; }
  int getMode_RTCP() const { return modeRTCP_; }
  void setMode_RTCP(int mode) { modeRTCP_ = mode; }
  int getAxisNum() const { return axisNum_; }  ///< Number of axes: the dimension of positions.
  const std::vector<std::pair<int, int>>& getCollCheck() const { return collCheck_; }
  int getCurrentTool() const { return currentTool_; }
  int getElemNumber() const { return static_cast<int>(elements_.size()); }

  /// A position of this machine's dimension, all zero (or set from `v`), owned by the caller who
  /// releases it with `KMachineValueBase::_release`; null when the axis number is outside 1 to 12.
  KMachineValueBase* newMachineValue() const;
  KMachineValueBase* newMachineValue(const KMachineValueBase& v) const;

  /// The value of axis number `axisNumber` (from 1). Deliberate: a number that no axis has means
  /// the first value (test: Machine.AxisNumbersOfNoAxisMeanTheFirstValue).
  double getAxisVal(const KMachineValueBase& v, int axisNumber) const;
  double& getAxisVal(KMachineValueBase& v, int axisNumber) const;
  void setAxisVal(KMachineValueBase& v, int axisNumber, double x) const;

  std::vector<double> axisValues(const KMachineValueBase& v) const;  ///< The first axisNum values.
  /// A new position from `d` (missing numbers are 0), owned by the caller; null as newMachineValue.
  KMachineValueBase* axisValues(const std::vector<double>& d) const;

  const KMachineElem* getElemByRank(int rank) const;  ///< In order of addition, from 0; or null.
  KMachineElem* getElemByRank(int rank);
  const KMachineElem* getElemByIndex(int index) const;  ///< The first with that index, or null.
  KMachineElem* getElemByIndex(int index);
  static const KMachineElem* _getElemByIndex(const std::vector<KMachineElem>& elements, int index);

  /// The first element of that name, ignoring case; a version-2 machine also drops "AXE_" from the
  /// wanted name. Null when there is none or `name` is null.
  const KMachineElem* getElemByName(const wchar_t* name) const;
  KMachineElem* getElemByName(const wchar_t* name);
  const KMachineElem* getElemByName(const char* name) const;
  KMachineElem* getElemByName(const char* name);
  static const KMachineElem* _getElemByName(const std::vector<KMachineElem>& elements,
                                            const wchar_t* name, int version);

  int getElemRank(const KMachineElem& e) const;        ///< Of the first equal element, or -1.
  int getElemRank(const KMachineElem* const e) const;  ///< By value, not address; null gives -1.
  const KMachineElem* getPrevElem(const KMachineElem* e) const;  ///< Towards the root, or null.
  KMachineElem* getPrevElem(const KMachineElem* e);

  /// The axis element at place `k` (from 1) of the value order, or null.
  const KMachineElem* getAxisElem(int k) const;

  /// Appends a copy and returns it; null, and nothing added, when the version is not 0.
  KMachineElem* addElem(const KMachineElem& e);
  KMachineElem* addElem(KMachineElem::KME_TYPE t);

  /// Grafts a tool chain onto the frame (the first element); its last element becomes tool n + 1.
  /// @return  That tool's element index; -1, nothing added, for an empty chain or machine, a first
  ///          element that is no frame, a last one that is no tool, or a version other than 0.
  int addBatiToTool(const std::vector<KMachineElem>& chain);

  /// Installs the part side [frame, axes..., part] of an empty machine, linked from the part back.
  /// @return  The frame's element index; -1, nothing changed, when the chain or machine is not so.
  int setBatiToPart(const std::vector<KMachineElem>& chain);

  /// The elements from the root to `e`, root first. Empty for null.
  std::vector<const KMachineElem*> getChain(const KMachineElem* e) const;
  std::vector<const KMachineElem*> getChain(int index) const;
  std::vector<const KMachineElem*> getToolChain(bool activeOnly, int tool) const;

  static int _getToolsIndices(const std::vector<KMachineElem>& elements, std::vector<int>& out);
  int getTools(std::vector<int>& out) const;  ///< Element indices of tools and guns; their count.
  int getToolNumber() const;                  ///< Number of tools and guns.
  int getToolIndex(int n) const;              ///< -100 - n, of the current tool for n below 1.
  /// Nothing when no element has the index -100 - n.
  void setCurrentTool(int n);

  /// Collision pairs of element indices, kept as (smaller, larger), each once, never (a, a).
  void addElemCollCheck(int a, int b);
  void addElemCollCheck(const std::pair<int, int>& pair);
  void delElemCollCheck(int a, int b);
  void delElemCollCheck(const std::pair<int, int>& pair);
  void clearElemCollCheck(int index);  ///< Removes every pair that holds `index`.
  void clearCollCheck();
  /// Partners of `index` in list order; empties `out` first. Nothing for an index without element.
  void getElemCollCheck(int index, std::vector<int>& out) const;
  void setElemCollCheck(int index, const std::vector<int>& partners);

  const KMachineValue<12>* getRotationPoint(int i) const;  ///< Or null.

  void dump(const wchar_t* const label) const;                 ///< All elements, to the trace.
  void dump(const KMachineValueBase& v, bool keepLine) const;  ///< A position with axis names.

  // --- KMachine_finalise.cpp: axis numbering, kinematic class, Denavit-Hartenberg records

  /// Numbers the axes, shifts version-2 limits by the legacy offset, notes every tool's chain, and
  /// stores its record with `initDHm`. Queries take the chains noted as long as no element is added
  /// and none has another index or predecessor; else they look them up again.
  /// @return  0; -1 when there is not exactly one frame, one part and at least one tool: then no
  ///          axis is counted; tool records are made and axis elements of a run before stay.
  int finalise();

  /// Derives the Denavit-Hartenberg parameters of the tool's chain and returns `analysis(tool)`.
  /// Each chain element's point is replaced by its frame's origin, which lies on the same axis
  /// line. Shared elements keep what the last call stored.
  _sUKine initDHm(int tool);

  _sUKine analysis(int tool) const;  ///< Classifies the chain; meaningful after `initDHm(tool)`.

  /// Element index of the first rotary axis of the tool's ball joint, or 0.
  /// @param[out] centre  (0, 0, 0) when found, else untouched. Deliberate: never the joint's
  ///                     centre (test: Wrist.IsFoundWhereThreeAxesMeet).
  int hasRotule(zgeo::UVec3d& centre, int tool) const;

  /// Deliberate: appends for every tool from 1 up. Test: Records.LaterRecordOfAToolWins.
  void addKine(int tool, const _sUKine& k);

  /// The last record stored for the tool, in one record shared by all machines: copy it at once.
  /// Deliberate: a tool without a record gives the record of the last lookup that found one.
  /// Test: Records.ToolWithoutRecordGivesTheLastOneFound.
  _sUKine& getKine(int tool) const;

  const zgeo::UVec3d& getLegacyOffset() const { return legacyOffset_; }

  // --- KMachine_forward.cpp: element placement, tool frames, tool point

  /// Motion matrix of `e` at position `v`: carries a point of e's body from its place at the zero
  /// position to its place at v.
  ///
  /// @frames  Machine frame on both sides: p_M(v) = getMatrix(v, e) * p_M(0).
  /// @units   v[i] in mm (linear) or degrees (rotary), in value order. Translation in mm.
  /// @source  Product of exponentials, space form (Lynch and Park, Modern Robotics, 2017, ch. 4):
  ///          S1(q1) * ... * Sn(qn), root leftmost; Si turns about or slides along the
  ///          zero-position axis line of the i-th chain element. A drill gun slides by its length.
  /// @errors  Identity when `e` is null. An axis whose number is below 1, or beyond all numbers at
  ///          `finalise`, does not move; one added later in a gap of them moves by the first value.
  /// @cost    One walk along the chain; no allocation up to 64 elements; no cache.
  zgeo::UMatrix getMatrix(const KMachineValueBase& v, const KMachineElem* e) const;
  zgeo::UMatrix getMatrix(const KMachineValueBase& v, int elemIndex) const;

  /// Motion matrices of all elements, by rank: the same values, bit by bit, as the single calls.
  /// @cost  Linear in the number of elements. `out` is resized and reused.
  void getMatrices(const KMachineValueBase& v, std::vector<zgeo::UMatrix>& out) const;

  zgeo::UMatrix getMatrix1(const KMachineValueBase& v) const;  ///< Of the current tool element.
  zgeo::UMatrix getMatrix(const KMachineValueBase& v) const;   ///< As `getMatrix_H2T`.

  /// Tool frame: the tool's motion, its origin at the moved tool point. Identity without a tool.
  zgeo::UMatrix getMatrix_H2T(const KMachineValueBase& v) const;

  /// Tool-tip frame in the universal frame: the origin lies the tool length back from the tool
  /// point against the tool direction.
  zgeo::UMatrix getMatrix_TP2U(const KMachineValueBase& v) const;

  /// Tool point (without the tool length) and unit tool direction, from tip to spindle.
  /// @return  False, outputs untouched, when the tool has no element.
  bool getTool(const KMachineValueBase& v, zgeo::UVec3d& pos, zgeo::UVec3d& dir, int tool) const;

  /// An element's direction (not normalised) and point, moved by its own motion matrix.
  /// @return  False, outputs untouched, when there is no such element.
  bool getElemAxis(const KMachineValueBase& v, int elemIndex, zgeo::UVec3d& dir,
                   zgeo::UVec3d& point) const;
  bool getElemAxis(const KMachineValueBase& v, int elemIndex, zgeo::UVec3d& dir) const;

  const zgeo::UMatrix& getUNI2MAC() const { return uni2mac_; }  ///< Universal to machine frame.
  const zgeo::UMatrix& getMAC2UNI() const { return mac2uni_; }  ///< Its inverse.
  void setUNI2MAC(const zgeo::UMatrix& m);                      ///< Sets both.

  double getTHELength(int tool) const;               ///< mm; -1.0 when the tool has no element.
  bool setTHELength(double length, int tool) const;  ///< False when the tool has no element.

  /// Writes the position into the current Denavit-Hartenberg values of the tool's chain.
  void updateDHm(const KMachineValueBase& v, int tool) const;

  // --- KMachine_inverse.cpp: from a tool point and direction to axis values
  //
  // Targets are tool tips (mm) and tool directions (any length, from tip to spindle) in the machine
  // frame, for the current tool. Solving goes by increments from a start, which picks the turn and
  // the branch. Limits are not looked at, except by the lists. Codes do not say whether the target
  // was reached: verify with `getTool`. Solvers write the start into the elements'
  // Denavit-Hartenberg values: one machine must not be asked from two threads, copies may.

  /// One position that reaches the target, by the class of the current tool's record.
  ///
  /// @param[out] out  The solution, or what could be solved of it: see the two solvers below.
  /// @return  Classes 1 to 4: as `getConfig`. Class 5: 0; -1 without a tool element (`out` is
  ///          `current` then), and when the arm solver refuses and there is no wrist to turn. No
  ///          class, or no memory: -1, `out` untouched.
  /// @cost    A few walks along the chain; no allocation once warm.
  int getConfigPlus(const KMachineValueBase& current, const zgeo::UVec3d& pos,
                    const zgeo::UVec3d& dir, KMachineValueBase& out) const;

  /// Rotary and linear axes: the free rotary axes turn the tool onto the direction (one: as near as
  /// its cone allows; several: the pair with the smallest turns, by strategy), then the first three
  /// free linear axes, counted from the tool, that can carry the tool point.
  ///
  /// @return  -1 without a rotary solution (`out` is `current`); else the code of the last linear
  ///          solve, 0 for solved and for fewer than three free linear axes. With four the code is
  ///          that of the last three, also when an earlier triple was solved.
  /// @errors  A machine without free rotary axes is never solved.
  int getConfig(const KMachineValueBase& current, const zgeo::UVec3d& pos, const zgeo::UVec3d& dir,
                KMachineValueBase& out) const;

  /// Six-joint arm with a ball wrist, first three joints in closed form, then the wrist. Traces the
  /// whole way.
  ///
  /// @param[in,out] out  The start on entry.
  /// @return  0, reached or not; -1, `out` untouched, without a tool element or with fewer than
  ///          three elements after the first rotary axis.
  /// @errors  The point is missed where the arm is not laid out as the solver wants it, and where a
  ///          tool with a length does not point along the machine's Z axis.
  int solveConfig1(const KMachineValueBase& current, const zgeo::UVec3d& pos,
                   const zgeo::UVec3d& dir, KMachineValueBase& out) const;

  /// Appends the positions that turn the current tool onto `dir` inside the rotary limits, each
  /// once; `out` is not emptied, and what is there counts. The linear values are those of the tool
  /// point (0, 0, 0). Entries are the caller's (`KMachineValueBase::_release`).
  ///
  /// @param tool  Whose rotary axes are started from all over their ranges; below 1: the current.
  /// @return  0.
  /// @cost    One solve per start: nine for every free axis without limits, multiplied.
  int getPossibleAngles(const zgeo::UVec3d& dir, std::vector<KMachineValueBase*>& out,
                        int tool) const;

  /// The same, then every entry of `out` is solved for the point `pos`; entries that do not reach
  /// it inside the linear limits are released and leave the list. Mind the order of arguments.
  int getPossibleConfigs(const zgeo::UVec3d& dir, const zgeo::UVec3d& pos,
                         std::vector<KMachineValueBase*>& out, int tool) const;

  int ijk2abc(const zgeo::UVec3d& a, const zgeo::UVec3d& b, zgeo::UVec3d& abc) const;  ///< No: -1.
  int abc2ijk(const zgeo::UVec3d& abc, zgeo::UVec3d& ijk) const;                       ///< No: -1.
  int pts2xyz(const zgeo::UVec3d& a, const zgeo::UVec3d& b, zgeo::UVec3d& xyz) const;  ///< No: -1.

  // --- KMachine_limits.cpp: travel limits, interpolation, translation

  /// Number of rotary axes (linear axes and guns; all of them) outside their limits at `v`. On a
  /// limit is inside.
  ///
  /// @param[out] out  May be null. One entry per value of `v`: -1 below, 1 above, 0 inside. The
  ///                  first two resize it and leave the entries of other axes as they were.
  int checkLimitsRot(const KMachineValueBase& v, std::vector<int>* out) const;
  int checkLimitsLin(const KMachineValueBase& v, std::vector<int>* out) const;
  int checkLimitsFull(const KMachineValueBase& v, std::vector<int>* out) const;

  /// The position at `t` (0: `from`, 1: `to`), every rotary axis the short way, the tool tip
  /// brought onto the straight line between its ends by one linear step of the first three unlocked
  /// linear axes. Values may leave the limits.
  /// @return  0.
  int interpolate(const KMachineValueBase& from, const KMachineValueBase& to, double t,
                  KMachineValueBase& out) const;
  /// The same without bringing the tip onto the line.
  int interpolateRaw(const KMachineValueBase& from, const KMachineValueBase& to, double t,
                     KMachineValueBase& out) const;

  /// Increments that shift the tool tip by `delta` (mm, machine frame) at the same direction, owned
  /// by the caller; null when `v` is null or the number of axes is outside 1 to 12. When the solver
  /// finds nothing: what it left, minus `v`.
  KMachineValueBase* axisTranslation(const KMachineValueBase* v, const zgeo::UVec3d& delta) const;

  // --- geometry/KMachine_triangles.cpp: the bodies as triangles

  /// The triangles of all bodies at position `value`, for display and collision checks.
  ///
  /// Each element's geometry file, STL or .zrn (`loadGeometryFile`), is moved by the element's
  /// motion matrix; two elements that name one file have a body each.
  ///
  /// @frames  Machine frame: p_M = getMatrix(value, e) * p, files hold p at the zero position.
  /// @units   mm, as the files have them; the scale in a .zrn file is not applied.
  /// @param[out] triangles  Emptied first (its storage is kept), then the bodies in order of
  ///                        addition of their elements, each in its file's order.
  /// @errors  An element without a file, whose file cannot be read or loaded, or for whose
  ///          triangles memory is short has none; nothing is told. Never throws, traces nothing.
  /// @cost    Every file is read, and .zrn meshed, at every call; nothing is kept. A caller that
  ///          needs many positions loads the files once and moves them by `getMatrices`. The list
  ///          reserves room for what the sizes of STL files let expect, and for ASCII that is more
  ///          than there is: address space, which `shrink_to_fit` gives back.
  void getTrianglesU(const KMachineValueBase& value, std::vector<zgeo::UTri>& triangles) const;

 protected:
  void clearRotationPoints() { rotationPoints_.clear(); }

  static _sUKine _NOKine;  ///< The record that `getKine` returns, one for the process.

 private:
  const KMachineElem* toolElem(int tool) const;  ///< Element of a tool number; below 1: current.
  ChainWalk toolChain(int tool) const;           ///< Its chain; empty without an element.
  bool hasLearntLinks() const;
  void learnChains(int tools);
  bool isComplete() const;
  void numberAxes();
  void applyLegacyOffset();
  void initTools();
  _sUKine recordOf(int tool) const;
  SolveView solveView() const;
  int solve(const SolveView& view, const KMachineValueBase& current, const zgeo::UVec3d& pos,
            const zgeo::UVec3d& dir, KMachineValueBase& out) const;  ///< As `getConfigPlus`.
  template <typename IsChecked>
  int countOutside(const KMachineValueBase& v, IsChecked isChecked, std::vector<int>* out) const;

  std::wstring dataFilePNE_;
  std::vector<KMachineElem> elements_;
  int version_ = 0;
  int strategy_ = 0;
  int modeRTCP_ = 0;
  int axisNum_ = 0;
  std::vector<int> axisValueIndex_;
  std::vector<int> axisElems_;  // ranks of the axis elements in value order: they survive copies
  std::vector<KMachineElem::Link> links_;     // of all elements, as `finalise` found them
  std::vector<std::vector<int>> toolChains_;  // of tool n at n - 1: its ranks by those links
  std::vector<_sUKine> kines_;
  std::vector<std::pair<int, int>> collCheck_;
  zgeo::UMatrix uni2mac_;
  zgeo::UMatrix mac2uni_;
  zgeo::UVec3d legacyOffset_;
  std::vector<KMachineValue<12>> rotationPoints_;
  int currentTool_ = 0;
};

}  // namespace zkin
