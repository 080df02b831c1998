#pragma once

#include <charconv>
#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "geometry/ZrnFile.h"

/// Geometry nodes as short texts that tests compare and people can write by hand:
///
///     1[2,3,1](0 0 0 1 0 0 1 1 0)        kind [a,b,code] (numbers of the data, lists parted by |)
///     9[2,2,10](0 0 1) v=0.5 n=top\n #0  value, name, surface number; absent ones are left out
///     ... @{line\n} T{...} P{...}        attribute lines, trimming curves, patches
namespace korvo::test {

/// The shortest text that reads back as `value`, whatever the locale.
inline std::string textOf(double value) {
  char buffer[32];
  const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return {buffer, result.ptr};
}

/// Control characters made visible; the others as they are.
inline std::string escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == '\t') {
      out += "\\t";
    } else {
      out += c;
    }
  }
  return out;
}

/// Numbers one behind the other with blanks between them, and lists parted by a bar.
class NumberText {
 public:
  NumberText& operator<<(double value) { return add(textOf(value)); }
  NumberText& operator<<(long long value) { return add(std::to_string(value)); }
  NumberText& operator<<(const zgeo::UVec3d& p) { return *this << p.x << p.y << p.z; }
  NumberText& operator<<(const zgeo::UVec2d& p) { return *this << p.x << p.y; }
  NumberText& operator<<(const zkin::ZRN_INTERVAL& i) { return *this << i.start << i.end; }
  template <class T>
  NumberText& operator<<(const std::vector<T>& list) {
    for (const T& value : list) *this << value;
    return *this;
  }
  NumberText& poles(const std::vector<zgeo::UVec3d>& poles, const std::vector<double>& weights) {
    for (std::size_t i = 0; i < poles.size(); ++i) *this << poles[i] << weights.at(i);
    return *this;
  }
  /// Begins the next list.
  NumberText& bar() {
    text_ += '|';
    isFirst_ = true;
    return *this;
  }
  const std::string& str() const { return text_; }

 private:
  NumberText& add(std::string_view number) {
    if (!isFirst_) text_ += ' ';
    isFirst_ = false;
    text_ += number;
    return *this;
  }

  std::string text_;
  bool isFirst_ = true;
};

template <class Class>
const Class& dataOf(const zkin::CGeomFileEntity& entity) {
  return dynamic_cast<const Class&>(*entity.GetGeom());
}

inline std::string dataText(const zkin::CGeomFileEntity& e) {
  using namespace zkin;
  NumberText out;
  switch (e.GetKind()) {
    case ZRN_KIND_POLYLINE_CURVE:
      out << dataOf<CGeomFilePrivatePolylineCurve>(e).points;
      break;
    case ZRN_KIND_POLYLINE_UV_CURVE:
      out << dataOf<CGeomFilePrivatePolylineUVCurve>(e).points;
      break;
    case ZRN_KIND_POLYNOMIAL_CURVE:
      out << dataOf<CGeomFilePrivatePolynomialcurve>(e).coefficients;
      break;
    case ZRN_KIND_POLYNOMIAL_SURFACE:
      out << dataOf<CGeomFilePrivatePolynomialSurface>(e).coefficients;
      break;
    case ZRN_KIND_TRIM_POLYNOMIAL_CURVE: {
      const auto& curve = dataOf<CGeomFilePrivateTrimPolynomialcurve>(e);
      (out << curve.interval).bar() << curve.coefficients;
      break;
    }
    case ZRN_KIND_MULTIPATCH_SURFACE: {
      const auto& surface = dataOf<CGeomFilePrivateMultipatchSurface>(e);
      (out << surface.u).bar() << surface.v;
      break;
    }
    case ZRN_KIND_NURBS_CURVE: {
      const auto& c = dataOf<CGeomFilePrivateNurbsCurve>(e);
      const long long planar = c.isPlanar;
      const long long periodic = c.isPeriodic;
      out.poles(c.poles, c.weights).bar() << planar << c.degree << periodic << c.interval;
      out.bar() << c.knots;
      break;
    }
    case ZRN_KIND_NURBS_SURFACE: {
      const auto& s = dataOf<CGeomFilePrivateNurbsSurface>(e);
      const long long rationalU = s.isRationalU;
      const long long rationalV = s.isRationalV;
      out.poles(s.poles, s.weights).bar() << s.degreeU << s.degreeV << rationalU << rationalV;
      (out << s.intervalU << s.intervalV).bar() << s.knotsU;
      out.bar() << s.knotsV;
      break;
    }
    case ZRN_KIND_PLANAR_SURFACE:
      out << dataOf<CGeomFilePrivatePlanarSurface>(e).plane;
      break;
    case ZRN_KIND_CIRCULAR_ARC_CURVE: {
      const auto& arc = dataOf<CGeomFilePrivateCircularArcCurve>(e);
      (out << arc.range << arc.radius << arc.centre).bar();
      (out << arc.rows[0] << arc.rows[1] << arc.rows[2]).bar() << arc.translation;
      break;
    }
    default:
      break;
  }
  return out.str();
}

inline std::string entityText(const zkin::CGeomFileEntity& e) {
  std::string text = std::to_string(e.GetKind()) + '[' + std::to_string(e.GetA()) + ',' +
                     std::to_string(e.GetB()) + ',' + std::to_string(e.GetCode()) + "](" +
                     dataText(e) + ')';
  if (e.value != 0) text += " v=" + textOf(e.value);
  if (!e.name.empty()) text += " n=" + escaped(e.name);
  if (e.surfaceNumber != -1) text += " #" + std::to_string(e.surfaceNumber);
  if (!e.attributes.empty()) {
    text += " @";
    for (std::size_t i = 0; i < e.attributes.size(); ++i) {
      text += '{' + escaped(e.attributes[i]) + '}';
    }
  }
  return text;
}

inline std::vector<std::string> textsOf(const zkin::CGeomFileNodeList& nodes);

inline std::string listText(const char* name, const zkin::CGeomFileNodeList& nodes) {
  if (nodes.empty()) return "";
  std::string text = std::string(" ") + name;
  for (const std::string& node : textsOf(nodes)) text += '{' + node + '}';
  return text;
}

/// One text a node, in order.
inline std::vector<std::string> textsOf(const zkin::CGeomFileNodeList& nodes) {
  std::vector<std::string> texts;
  for (const auto& node : nodes) {
    texts.push_back(entityText(node->entity) + listText("P", node->patches) +
                    listText("T", node->trimmingCurves));
  }
  return texts;
}

/// What a load said, comparable.
struct ZrnAnswer {
  int code = 0;
  double scale = 0;
  std::vector<std::string> nodes;
  std::vector<std::string> messages;  ///< As sent.
  /// A scale that is not a number equals itself.
  bool operator==(const ZrnAnswer& o) const {
    return code == o.code && textOf(scale) == textOf(o.scale) && nodes == o.nodes &&
           messages == o.messages;
  }
};

inline std::ostream& operator<<(std::ostream& out, const ZrnAnswer& answer) {
  out << "code " << answer.code << ", scale " << answer.scale;
  for (const std::string& node : answer.nodes) out << "\n  " << node;
  for (const std::string& message : answer.messages) out << "\n  says " << escaped(message);
  return out << '\n';
}

/// What the library says of the file at `path`.
inline ZrnAnswer answerOf(const char* path) {
  ZrnAnswer answer;
  zkin::CGeomFileNodeList nodes;
  answer.code = zkin::ZRN_LoadFile(path, nodes, answer.scale, nullptr, nullptr,
                                   [&](const char* text) { answer.messages.push_back(text); });
  answer.nodes = textsOf(nodes);
  return answer;
}

}  // namespace korvo::test
