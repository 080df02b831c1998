#pragma once

#include <string>
#include <vector>

#include "kinematics/Export.h"
#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UVec3d.h"

namespace zkin {

/// One element of a machine: the frame, the part, a tool, an axis, a drill gun or a body.
///
/// A value type: a machine keeps its elements by value and hands out pointers to them. Points are
/// mm in the machine frame at the zero position; directions are unit vectors of the tool's motion
/// relative to the part. Nothing here throws; nothing but `isAxis` and `dump` traces.
class KORVO_KINEMATICS_API KMachineElem {
 public:
  /// Element types; the values are part of the interface.
  enum KME_TYPE : int {
    KMET_TYPE_NONE = 0,
    KMET_TYPE_BATI = 1,  ///< Machine frame.
    KMET_TYPE_PART = 2,  ///< Workpiece carrier.
    KMET_TYPE_TOOL = 3,
    KMET_TYPE_ALIN = 4,  ///< Linear axis.
    KMET_TYPE_AROT = 5,  ///< Rotary axis.
    KMET_TYPE_DGUN = 6,  ///< Drill gun: a tool that slides along its axis.
    KMET_TYPE_GEOM = 7,  ///< Geometry only, no motion.
  };

  /// Element indices of what is not an axis. Axes have 1 and above, tool n has -100 - n, geometry
  /// elements are below -200.
  enum KMET_INDEX : int {
    KMET_BATI = 0,
    KMET_PART = -1,
    KMET_TOOL = -2,   ///< A tool or gun as read, before the machine numbers it.
    KMET_GEOM = -3,   ///< A geometry element as read, before the machine numbers it.
    KMET_NONE = -10,  ///< Unset.
  };

  /// Modified (proximal) Denavit-Hartenberg parameters: angles in radians, lengths in mm.
  struct _sUDHm {
    double alpha = 0.0;  ///< Twist about the previous X axis.
    double a = 0.0;      ///< Offset along the previous X axis.
    double theta = 0.0;  ///< Rotation about the own Z axis: the variable of a rotary axis.
    double d = 0.0;      ///< Offset along the own Z axis: the variable of a linear axis.
  };

  KMachineElem() = default;

  /// `setFromLine(line, version)` on a new element, its result ignored.
  KMachineElem(const std::wstring& line, int version);

  KMachineElem(const KMachineElem&) = default;
  KMachineElem& operator=(const KMachineElem&) = default;
  virtual ~KMachineElem();

  void reset();  ///< Gives every field its default.

  /// Equal in names and geometry files (ignoring case), indices, type, directions, points, tool
  /// length, law, lock, hook, sense and the limits that are set. Value index, Denavit-Hartenberg
  /// parameters, colour and the reserved number take no part.
  bool operator==(const KMachineElem& o) const;

  /// Traces the element in one line that starts with `prefix`.
  void dump(const wchar_t* const prefix) const;

  // --- KMachineElem_line.cpp: from a line of the definition file

  /// Resets the element and reads it from one line, keyword "=" operands separated by ",".
  ///
  /// @param version  2: axes are X, Y, Z, A, B, C ("AXE_" in front is dropped), other names get
  ///                 index 0. Any other: free names, the axis number is the second operand.
  /// @return  Whether the keyword was recognised. Missing or malformed operands leave defaults.
  ///          False, too, and the element reset, when memory is out.
  bool setFromLine(const std::wstring& line, int version);

  /// Reads the token at `pos` as "%d" and advances `pos`; false, and nothing changed, when there is
  /// no such token or it does not scan.
  static bool _readValue(const std::vector<std::wstring>& tokens, int& pos, int& value);
  /// The same as "%lf".
  static bool _readValue(const std::vector<std::wstring>& tokens, int& pos, double& value);

  /// Reads a direction word ("x", "+x", "-x", ... any case; one token) or three numbers.
  /// False, and nothing changed, when neither is there.
  static bool _readVector(const std::vector<std::wstring>& tokens, int& pos, zgeo::UVec3d& v);

  /// Reads a file name and its colour: three "%d" when at least three tokens follow, else
  /// (200, 200, 200); a component that does not scan keeps what `rgb` held and its token.
  /// @return  Whether the name is not empty. False with nothing changed when no token is left.
  static bool _readGeomFile(const std::vector<std::wstring>& tokens, int& pos, std::wstring& file,
                            int* const rgb);

  // --- accessors

  KME_TYPE getElemType() const { return type_; }
  void setElemType(KME_TYPE t) { type_ = t; }
  const zgeo::UVec3d& getElemAxis() const { return axis_; }
  zgeo::UVec3d& getElemAxis() { return axis_; }
  void setElemAxis(const zgeo::UVec3d& v) { axis_ = v; }
  const zgeo::UVec3d& getElemAxisX() const { return axisX_; }
  zgeo::UVec3d& getElemAxisX() { return axisX_; }
  void setElemAxisX(const zgeo::UVec3d& v) { axisX_ = v; }
  const zgeo::UVec3d& getElemPivot() const { return pivot_; }
  zgeo::UVec3d& getElemPivot() { return pivot_; }
  void setElemPivot(const zgeo::UVec3d& p) { pivot_ = p; }
  int getElemIndex() const { return link_.index; }
  void setElemIndex(int i) { link_.index = i; }
  void setElemIndex(KMET_INDEX i) { link_.index = i; }
  int getValueIndex() const { return valueIndex_; }
  void setValueIndex(int i) { valueIndex_ = i; }
  int getPrevIndex() const { return link_.previous; }
  void setPrevIndex(int i) { link_.previous = i; }
  const std::wstring& getElemName() const { return name_; }
  void setElemName(const std::wstring& name) { name_ = name; }
  const std::wstring& getGeomFile() const { return geomFile_; }
  void setGeomFile(const std::wstring& file) { geomFile_ = file; }
  /// Whether the geometry file is a regular file that opens, found as the readers find it: as
  /// written, with "\" as "/", then with its names matched ignoring case.
  bool isGeomFileReadable() const;

  /// Copies the colour (red, green, blue) out.
  void getGeomRGB(int& r, int& g, int& b) const;
  void getGeomRGB(int* const rgb) const;
  /// Deliberate: a setter under a getter's name; copies the colour in from `rgb`. A non-const
  /// element with a non-const array calls the getter only through `std::as_const`-like const
  /// access.
  void getGeomRGB(const int* const rgb);
  void setGeomRGB(int r, int g, int b);

  double getTHELength() const { return theLength_; }  ///< Tool length or gun extension, mm.
  void setTHELength(double length) const { theLength_ = length; }
  bool isLocked() const {
    return locked_;
  }  ///< Rotary and linear axes: solvers leave it; arms do not look.
  void setLocked(bool locked) { locked_ = locked; }
  int getElemLaw() const { return law_; }  ///< The host's motion law; stored and compared only.
  void setElemLaw(int law) { law_ = law; }
  double getMin() const { return min_; }
  double getMax() const { return max_; }
  bool hasMin() const { return hasMin_; }
  bool hasMax() const { return hasMax_; }
  void setMin(double value, bool isSet) { min_ = value, hasMin_ = isSet; }
  void setMax(double value, bool isSet) { max_ = value, hasMax_ = isSet; }

  /// On the part's side of the machine. Changes no sign: the element's own motion is only left out
  /// of its own motion matrix.
  bool isInverted() const { return inverted_; }
  void invert() { inverted_ = !inverted_; }

  /// Copies the hook point out and returns the index hooked to, -10 without a hook.
  int getHook(zgeo::UVec3d& point) const;
  void setHook(int index, const zgeo::UVec3d& point);
  int getHookIndex() const { return hookIndex_; }

  // --- types and indices

  static bool _isTool(KME_TYPE t);  ///< Tool or drill gun.
  bool isTool() const { return _isTool(type_); }
  /// Neither unset, frame nor geometry; unknown types are active.
  bool isActive() const {
    return type_ != KMET_TYPE_NONE && type_ != KMET_TYPE_BATI && type_ != KMET_TYPE_GEOM;
  }

  /// Linear axis, rotary axis or drill gun.
  /// Deliberate: without a value index it traces an error line and is still true, so for every gun.
  bool isAxis() const;

  static bool _isIndexAxis(int i) { return i >= 1; }
  static bool _isIndexTool(int i) { return -200 <= i && i <= -101; }
  static bool _isIndexGeom(int i) { return i < -200; }
  /// Tool number to index, -100 - n, not checked: numbers that leave the range of int wrap around.
  static int _getToolIndex(int n) {
    return static_cast<int>(0u - 100u - static_cast<unsigned>(n));  // signed would be undefined
  }
  static int _getIndexTool(int i) { return _isIndexTool(i) ? -100 - i : 0; }  ///< 0: no tool.

  static std::wstring _typeName(KME_TYPE t);  ///< "BATI", "ALin", ...; "(unknown_%d)" for others.

  // --- Denavit-Hartenberg and user values

  const _sUDHm& getDHmRef() const { return dhmRef_; }  ///< At the zero position.
  const _sUDHm& getDHmCur() const { return dhmCur_; }  ///< At the position set last.
  void setDHmRef(const _sUDHm& h) { dhmRef_ = h; }

  /// The axis variable: theta (radians) of a rotary axis, d (mm) of a linear one, 0 for others.
  double getDHmValue(bool current) const;
  void setDHmValue(double v) const;  ///< Sets the current variable; nothing for other types.
  void setDHmValue(const _sUDHm& h) const { dhmCur_ = h; }  ///< The whole current record, any type.

  /// User value (degrees or mm from zero) of an axis variable; 0 for other types. No wrapping.
  double getUMVValue(double v) const;
  double getUMVValue(const _sUDHm& h) const;
  void setUMVValue(double u) const;  ///< Sets the current variable from a user value.

  /// Transform from the previous element's frame to this one's.
  /// @source  Modified Denavit-Hartenberg: Rx(alpha) Trans(a,0,0) Rz(theta) Trans(0,0,d)
  ///          (Craig, Introduction to Robotics, 3rd edition, eq. 3.6).
  static zgeo::UMatrix _transitionMatrix(const _sUDHm& h);

 private:
  friend class KMachine;  // keeps the links by which it has found chains

  /// What an element's place in chains depends on.
  struct Link {
    int index = KMET_NONE;
    int previous = KMET_NONE;

    bool operator==(const Link&) const = default;
  };

  _sUDHm dhmRef_;
  mutable _sUDHm dhmCur_;
  KME_TYPE type_ = KMET_TYPE_NONE;
  zgeo::UVec3d axis_;
  zgeo::UVec3d axisX_;
  zgeo::UVec3d pivot_;
  Link link_;
  int valueIndex_ = -1;
  int hookIndex_ = KMET_NONE;
  zgeo::UVec3d hookPoint_;
  std::wstring name_;
  std::wstring geomFile_;
  int rgb_[3] = {0, 0, 0};
  bool inverted_ = false;
  mutable double theLength_ = 0.0;
  bool locked_ = false;
  int reserved_ = 1;
  int law_ = 0;
  bool hasMin_ = false;
  bool hasMax_ = false;
  double min_ = 0.0;
  double max_ = 0.0;
};

}  // namespace zkin
