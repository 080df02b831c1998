#include "tools/geometry_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>
#include <string_view>

#include "toolkit/Text.h"
#include "tools/CheckText.h"
#include "tools/geometry_fields.h"

using zgeo::UVec2d;
using zgeo::UVec3d;
using zkin::CGeomFileEntity;
using zkin::CGeomFileNode;
using zkin::CGeomFileNodeList;

namespace korvo::tools {
namespace {

constexpr std::size_t kLabelWidth = 11;

// --- words and numbers

/// Digits of a number in place, so that a long list makes no text for each of them.
class Digits {
 public:
  explicit Digits(double value) {
    if (std::isnan(value)) value = std::nan("");  // without the sign that some have
    size_ = static_cast<std::size_t>(std::to_chars(text_, text_ + sizeof text_, value).ptr - text_);
  }
  std::string_view view() const { return {text_, size_}; }

 private:
  char text_[32];
  std::size_t size_;
};

std::string textOf(double value) { return std::string(Digits(value).view()); }
std::string textOf(bool value) { return value ? "yes" : "no"; }
std::string textOf(long long value) { return std::to_string(value); }
std::string textOf(const UVec3d& p) {
  return textOf(p.x) + "  " + textOf(p.y) + "  " + textOf(p.z);
}
std::string textOf(const zkin::ZRN_INTERVAL& i) { return textOf(i.start) + "  " + textOf(i.end); }

// Text of the file on one line of a terminal.
std::string shown(std::string_view bytes) {
  std::string text;
  for (const char c : spelled(shownText(bytes))) {
    text += c == '\n' ? "\\n" : c == '\t' ? "\\t" : std::string(1, c);
  }
  return text;
}

std::string padded(std::string_view word, std::size_t width) {
  return std::string(word) + std::string(width > word.size() ? width - word.size() : 0, ' ');
}

const char* kindName(zkin::ZRN_KIND kind) {
  static constexpr const char* kNames[] = {"unknown",
                                           "polyline",
                                           "UV polyline",
                                           "polynomial",
                                           "polynomial surface",
                                           "trimmed polynomial",
                                           "multi-patch surface",
                                           "NURBS curve",
                                           "NURBS surface",
                                           "planar surface",
                                           "circular arc"};
  return kNames[kind <= zkin::ZRN_KIND_CIRCULAR_ARC_CURVE ? kind : 0];
}

// --- the tree

std::vector<double> realsOf(std::span<const UVec2d> points) {
  std::vector<double> reals;
  reals.reserve(2 * points.size());
  for (const UVec2d& p : points) reals.insert(reals.end(), {p.x, p.y});
  return reals;
}

std::vector<double> realsOf(std::span<const UVec3d> points) {
  std::vector<double> reals;
  reals.reserve(3 * points.size());
  for (const UVec3d& p : points) reals.insert(reals.end(), {p.x, p.y, p.z});
  return reals;
}

/// What belongs to one entity, indented below it.
class Branch {
 public:
  Branch(std::ostream& out, std::size_t indent) : out_(out), indent_(indent, ' ') {}

  template <class Value>
  void field(const char* name, const Value& value) {
    label(name) << textOf(value) << '\n';
  }
  // A row for each point.
  void field(const char* name, std::span<const UVec2d> points) {
    table(name, realsOf(points), {2, 1});
  }
  void field(const char* name, std::span<const UVec3d> points) {
    table(name, realsOf(points), {3, 1});
  }
  void field(const char* name, std::span<const double> reals) {
    constexpr std::size_t kInRow = 8;
    table(name, reals, {kInRow, kInRow});
  }

  std::ostream& label(const char* name) {
    return out_ << indent_ << padded(name, kLabelWidth) << ' ';
  }

 private:
  struct Shape {
    std::size_t columns;
    std::size_t itemsInRow;
  };

  void table(const char* name, std::span<const double> reals, Shape shape) {
    label(name) << reals.size() * shape.itemsInRow / shape.columns << '\n';
    const std::size_t width = widthOf(reals);
    const std::size_t rows = (reals.size() + shape.columns - 1) / shape.columns;
    const std::size_t rankWidth = std::to_string(rows * shape.itemsInRow).size();
    for (std::size_t row = 0; row < rows; ++row) {
      right(std::to_string(row * shape.itemsInRow), indent_.size() + 2 + rankWidth);
      out_ << ':';
      const std::size_t begin = row * shape.columns;
      for (const double value :
           reals.subspan(begin, std::min(shape.columns, reals.size() - begin))) {
        right(Digits(value).view(), width + 2);
      }
      out_ << '\n';
    }
  }

  // One width for all columns: the eye finds them without their own.
  static std::size_t widthOf(std::span<const double> reals) {
    std::size_t width = 0;
    for (const double value : reals) width = std::max(width, Digits(value).view().size());
    return width;
  }

  void right(std::string_view word, std::size_t width) {
    for (std::size_t i = word.size(); i < width; ++i) out_ << ' ';
    out_ << word;
  }

  std::ostream& out_;
  std::string indent_;
};

void printHeader(std::ostream& out, const CGeomFileEntity& e) {
  out << kindName(e.GetKind()) << " (kind " << e.GetKind() << ")  a " << e.GetA() << "  b "
      << e.GetB() << "  code " << e.GetCode() << "  value " << textOf(e.value);
  if (e.surfaceNumber != -1) out << "  surface " << e.surfaceNumber;
  if (!e.name.empty()) out << "  name '" << shown(e.name) << '\'';
  out << '\n';
}

void printAttributes(Branch& branch, const zkin::CGeomFileLines& lines) {
  for (std::size_t i = 0; i < lines.size(); ++i) {
    branch.label("attribute") << '\'' << shown(lines[i]) << "'\n";
  }
}

// Children have no children: what calls itself here ends after one step.
void printNodes(std::ostream& out, const CGeomFileNodeList& nodes, const char* word,
                std::size_t indent) {
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const CGeomFileNode& node = *nodes[i];
    Branch branch(out, indent + 2);
    out << std::string(indent, ' ') << word << ' ' << i << ": ";
    printHeader(out, node.entity);
    giveFields(node.entity, branch);
    printAttributes(branch, node.entity.attributes);
    printNodes(out, node.trimmingCurves, "trim", indent + 2);
    printNodes(out, node.patches, "patch", indent + 2);
  }
}

// --- the rest

std::ostream& line(std::ostream& out, const char* label) {
  return out << padded(label, kLabelWidth) << ' ';
}

void printEntities(std::ostream& out, const GeometryAnswer& answer) {
  line(out, "Scale") << textOf(answer.scale) << " (said, not applied)\n";
  for (const std::string& message : answer.messages) line(out, "Message") << shown(message) << '\n';
  line(out, "Entities") << answer.nodes.size() << '\n';
  printNodes(out, answer.nodes, "entity", 2);
}

void printMeasures(std::ostream& out, const Measures& m) {
  line(out, "Triangles") << m.count << '\n';
  if (m.count == 0) return;
  line(out, "Box min") << textOf(m.min) << '\n';
  line(out, "Box max") << textOf(m.max) << '\n';
  line(out, "Area") << textOf(m.area) << '\n';
  line(out, "Volume") << textOf(m.volume) << (m.openEdges ? " (a hint: it is open)\n" : "\n");
  line(out, "Open edges") << m.openEdges << '\n';
}

}  // namespace

void printText(std::ostream& out, const GeometryAnswer& answer) {
  line(out, "File") << shown(answer.file) << '\n';
  line(out, "Code") << answer.code << '\n';
  if (answer.isText) printEntities(out, answer);
  printMeasures(out, answer.measures);
  if (answer.output) line(out, "Written") << shown(*answer.output) << '\n';
}

}  // namespace korvo::tools
