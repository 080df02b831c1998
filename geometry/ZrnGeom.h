#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "kinematics/Export.h"
#include "platform/zgeo/UVec2d.h"
#include "platform/zgeo/UVec3d.h"

/// The data of the entities of a geometry file (.zrn): one class for each kind.
namespace zkin {

/// Asks the caller whether to stop. `flag` points to a byte that holds 0.
/// To stop reading everywhere it must set the flag and return something other than 0: the loop of
/// `ZRN_LoadFile` looks at the flag alone, the operations inside at the result alone.
using ZRN_CancelCallback = std::function<unsigned char(unsigned char* flag)>;

/// Called once with (0, 100) when a file was opened, provided that there is a message callback.
using ZRN_ProgressCallback = std::function<void(int done, int total)>;

/// Takes one report; the text is valid during the call.
using ZRN_MessageCallback = std::function<void(const char* text)>;

/// Kinds of entities; the numbers are part of the interface.
enum ZRN_KIND : int {
  ZRN_KIND_UNKNOWN = 0,
  ZRN_KIND_POLYLINE_CURVE = 1,
  ZRN_KIND_POLYLINE_UV_CURVE = 2,
  ZRN_KIND_POLYNOMIAL_CURVE = 3,
  ZRN_KIND_POLYNOMIAL_SURFACE = 4,  ///< A patch of a multi-patch surface.
  ZRN_KIND_TRIM_POLYNOMIAL_CURVE = 5,
  ZRN_KIND_MULTIPATCH_SURFACE = 6,
  ZRN_KIND_NURBS_CURVE = 7,
  ZRN_KIND_NURBS_SURFACE = 8,
  ZRN_KIND_PLANAR_SURFACE = 9,
  ZRN_KIND_CIRCULAR_ARC_CURVE = 10,
  ZRN_KIND_SCALING = 11,
  ZRN_KIND_ATTRIBUTE = 12,
  ZRN_KIND_REVOLUTION_SURFACE = 13,  ///< From here on: known, numbered, never read.
  ZRN_KIND_RULED_SURFACE = 14,
  ZRN_KIND_CYLINDER_SURFACE = 15,
  ZRN_KIND_PARAMETRIC_SPLINE_SURFACE = 16,
  ZRN_KIND_OFFSET_SURFACE = 17,
};

/// Lines of text in one buffer: a file of a million empty lines is no million small texts.
class KORVO_KINEMATICS_API CGeomFileLines {
 public:
  std::size_t size() const { return ends_.size(); }
  bool empty() const { return ends_.empty(); }
  /// Line `i` (below `size()`), its line feed included; valid until the next change.
  std::string_view operator[](std::size_t i) const;
  void append(std::string_view line);
  void reset();  ///< No lines; the storage stays.

 private:
  std::string text_;
  std::vector<std::size_t> ends_;  ///< Where each line ends in the text.
};

/// What one entity holds: the counts of its header and the data of its lines, as written.
///
/// Numbers are those of the file, in its own units; not a number and the infinities are legal.
/// Counts may be zero or negative (then there is no such line) or larger than any file: arrays grow
/// with the lines that are there, so memory follows the file, never a count.
class KORVO_KINEMATICS_API CGeomFilePrivateGeom {
 public:
  CGeomFilePrivateGeom() = default;
  CGeomFilePrivateGeom(const CGeomFilePrivateGeom&) = delete;
  CGeomFilePrivateGeom& operator=(const CGeomFilePrivateGeom&) = delete;

  // The order of the virtual operations is part of the binary interface.
  virtual ~CGeomFilePrivateGeom();

  /// Empties the data and keeps their storage; the counts stay.
  virtual void Reset() = 0;

  /// Empties the data and releases their storage; the counts stay. A new object is in this state.
  virtual void Clear() = 0;

  virtual CGeomFilePrivateGeom* GetGeom();                   ///< The object itself.
  virtual const CGeomFilePrivateGeom* GetConstGeom() const;  ///< The object itself.

  /// Replaces the data by those of the lines that follow in `stream`, one record a line.
  ///
  /// @param message  Told of positions that cannot be got or set (attributes only). The others are
  ///                 passed through and not called.
  /// @return  Whether every line that the layout requires was there and held its numbers. What a
  ///          line holds behind them is ignored. On false the object holds what came before, and
  ///          the line that did not fit is used up.
  /// @errors  Throws std::bad_alloc only.
  /// @cost    One pass; memory in proportion to the lines read.
  virtual bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                         const ZRN_ProgressCallback& progress,
                         const ZRN_MessageCallback& message) = 0;
};

/// An interval of a parameter, as written: the start may lie behind the end.
struct ZRN_INTERVAL {
  double start = 0.0;
  double end = 0.0;
  constexpr bool operator==(const ZRN_INTERVAL&) const = default;
};

/// Kind 1 (code 1 with a = 2, code 22): n points.
class KORVO_KINEMATICS_API CGeomFilePrivatePolylineCurve : public CGeomFilePrivateGeom {
 public:
  explicit CGeomFilePrivatePolylineCurve(long long count);
  void Reset() override;
  void Clear() override;
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;

  const long long n;
  std::vector<zgeo::UVec3d> points;
};

/// Kind 2 (code 2): n points in the parameter plane of the surface that owns the curve.
class KORVO_KINEMATICS_API CGeomFilePrivatePolylineUVCurve : public CGeomFilePrivateGeom {
 public:
  explicit CGeomFilePrivatePolylineUVCurve(long long count);
  void Reset() override;
  void Clear() override;
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;

  const long long n;
  std::vector<zgeo::UVec2d> points;
};

/// Kind 3 (code 4 with b = 1): n coefficient vectors.
class KORVO_KINEMATICS_API CGeomFilePrivatePolynomialcurve : public CGeomFilePrivateGeom {
 public:
  explicit CGeomFilePrivatePolynomialcurve(long long count);
  void Reset() override;
  void Clear() override;
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;

  const long long n;
  std::vector<zgeo::UVec3d> coefficients;
};

/// Kind 4 (code 4 with b >= 2): a x b coefficient vectors in file order.
class KORVO_KINEMATICS_API CGeomFilePrivatePolynomialSurface : public CGeomFilePrivateGeom {
 public:
  CGeomFilePrivatePolynomialSurface(long long countA, long long countB);
  void Reset() override;
  void Clear() override;
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;

  const long long a;
  const long long b;
  std::vector<zgeo::UVec3d> coefficients;
};

/// Kind 5 (code 5): an interval line and n coefficient vectors.
class KORVO_KINEMATICS_API CGeomFilePrivateTrimPolynomialcurve : public CGeomFilePrivateGeom {
 public:
  explicit CGeomFilePrivateTrimPolynomialcurve(long long count);
  void Reset() override;
  void Clear() override;
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;

  const long long n;
  /// Deliberate: stays (0, 0); the line that holds it is passed over, whatever it says. Test:
  /// Curves/ZrnData.IsAsWritten/TrimPolynomialCurve.
  ZRN_INTERVAL interval;
  std::vector<zgeo::UVec3d> coefficients;
};

/// Kind 6 (code 8): two lists of parameters. Its patches are child nodes.
class KORVO_KINEMATICS_API CGeomFilePrivateMultipatchSurface : public CGeomFilePrivateGeom {
 public:
  CGeomFilePrivateMultipatchSurface(long long countA, long long countB);
  void Reset() override;
  void Clear() override;
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;

  const long long a;
  const long long b;
  std::vector<double> u;
  std::vector<double> v;
};

/// Kind 7 (code 9 with b = 1): n poles with weights, and knots.
class KORVO_KINEMATICS_API CGeomFilePrivateNurbsCurve : public CGeomFilePrivateGeom {
 public:
  explicit CGeomFilePrivateNurbsCurve(long long count);
  void Reset() override;
  void Clear() override;
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;

  const long long n;
  bool isPlanar = false;  ///< The first pole line held x, y, weight: every pole is at z = 0.
  std::vector<zgeo::UVec3d> poles;  ///< Cartesian, not multiplied by the weights.
  std::vector<double> weights;      ///< As many as poles.
  long long degree = 0;             ///< The degree field as written.
  bool isPeriodic = false;
  ZRN_INTERVAL interval;
  std::vector<double> knots;
};

/// Kind 8 (code 9 with b >= 2): a x b poles with weights in file order, and knots.
class KORVO_KINEMATICS_API CGeomFilePrivateNurbsSurface : public CGeomFilePrivateGeom {
 public:
  CGeomFilePrivateNurbsSurface(long long countA, long long countB);
  void Reset() override;
  void Clear() override;
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;

  const long long a;  ///< Poles in U.
  const long long b;  ///< Poles in V.
  std::vector<zgeo::UVec3d> poles;
  std::vector<double> weights;
  long long degreeU = 0;
  long long degreeV = 0;
  bool isRationalU = false;
  bool isRationalV = false;
  ZRN_INTERVAL intervalU;
  ZRN_INTERVAL intervalV;
  std::vector<double> knotsU;
  std::vector<double> knotsV;
};

/// Kind 9 (code 10): three reals of a plane.
class KORVO_KINEMATICS_API CGeomFilePrivatePlanarSurface : public CGeomFilePrivateGeom {
 public:
  CGeomFilePrivatePlanarSurface();
  void Reset() override;
  void Clear() override;
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;

  zgeo::UVec3d plane;
};

/// Kind 10 (code 14): an arc; new ones have the identity as matrix and zero elsewhere.
class KORVO_KINEMATICS_API CGeomFilePrivateCircularArcCurve : public CGeomFilePrivateGeom {
 public:
  CGeomFilePrivateCircularArcCurve();
  void Reset() override;
  void Clear() override;
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;

  ZRN_INTERVAL range;  ///< Of the arc's parameter.
  double radius;
  zgeo::UVec3d centre;
  zgeo::UVec3d rows[3];  ///< Of the orientation matrix.
  zgeo::UVec3d translation;
};

/// Kind 11 (code 100): the scale factor, 1 until read.
class KORVO_KINEMATICS_API CGeomFilePrivateScaling : public CGeomFilePrivateGeom {
 public:
  CGeomFilePrivateScaling();
  void Reset() override;
  void Clear() override;
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;

  double factor;
};

/// Kind 12 (code 210): every line up to the next one that begins with three integers. A line that
/// carries "<CAD_ATTR>" has items with type tags; they stay text.
class KORVO_KINEMATICS_API CGeomFilePrivateAttribute : public CGeomFilePrivateGeom {
 public:
  CGeomFilePrivateAttribute();
  void Reset() override;
  void Clear() override;
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;

  CGeomFileLines lines;
};

/// The surfaces that are known and not read: kinds 13 to 17.
class KORVO_KINEMATICS_API CGeomFilePrivateUnreadSurface : public CGeomFilePrivateGeom {
 public:
  void Reset() override;
  void Clear() override;
  /// Reads nothing and returns false.
  bool ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                 const ZRN_ProgressCallback& progress, const ZRN_MessageCallback& message) override;
  virtual CGeomFilePrivateGeom* GetSurface();                   ///< The object itself.
  virtual const CGeomFilePrivateGeom* GetConstSurface() const;  ///< The object itself.
};

/// Kind 13 (code 11).
class KORVO_KINEMATICS_API CGeomFilePrivateRevolutionSurface
    : public CGeomFilePrivateUnreadSurface {};
/// Kind 14 (code 17).
class KORVO_KINEMATICS_API CGeomFilePrivateRuledSurface : public CGeomFilePrivateUnreadSurface {};
/// Kind 15 (code 18).
class KORVO_KINEMATICS_API CGeomFilePrivateCylinderSurface : public CGeomFilePrivateUnreadSurface {
};
/// Kind 16 (code 20).
class KORVO_KINEMATICS_API CGeomFilePrivateParametricSplineSurface
    : public CGeomFilePrivateUnreadSurface {};
/// Kind 17 (code 110).
class KORVO_KINEMATICS_API CGeomFilePrivateOffsetSurface : public CGeomFilePrivateUnreadSurface {};

}  // namespace zkin
