#include "tools/geometry_json.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <span>
#include <string_view>

#include "tools/geometry_fields.h"

using zgeo::UVec2d;
using zgeo::UVec3d;
using zkin::CGeomFileEntity;
using zkin::CGeomFileNode;
using zkin::CGeomFileNodeList;

namespace korvo::tools {
namespace {

// "-0" would be read as the whole number, which has no sign.
void appendNumber(std::string& text, double value) {
  if (std::isnan(value)) {
    text += "\"nan\"";
  } else if (std::isinf(value)) {
    text += value > 0 ? "\"inf\"" : "\"-inf\"";
  } else {
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 17).ptr;
    text.append(digits, end);
    if (value == 0 && std::signbit(value)) text += ".0";
  }
}

void appendByte(std::string& text, unsigned char byte) {
  constexpr const char* kHex = "0123456789abcdef";
  if (byte == '"' || byte == '\\') {
    text += {'\\', static_cast<char>(byte)};
  } else if (byte == '\n') {
    text += "\\n";
  } else if (byte < 0x20 || byte >= 0x7F) {
    text += {'\\', 'u', '0', '0', kHex[byte >> 4], kHex[byte & 0xF]};
  } else {
    text += static_cast<char>(byte);
  }
}

/// JSON from left to right: commas come by themselves, and what is written leaves in pieces.
class JsonStream {
 public:
  explicit JsonStream(std::ostream& out) : out_(out) {}
  ~JsonStream() { flush(); }
  JsonStream(const JsonStream&) = delete;
  JsonStream& operator=(const JsonStream&) = delete;

  void open(char bracket) {
    separate();
    text_ += bracket;
    isFirst_ = true;
  }
  void close(char bracket) {
    text_ += bracket;
    isFirst_ = false;
    if (text_.size() > kPiece) flush();
  }
  void key(std::string_view name) {
    value(name);
    text_ += ": ";
    isFirst_ = true;
  }
  /// What follows stands on a line of its own.
  void newLine() {
    if (!isFirst_) text_ += ',';
    text_ += '\n';
    isFirst_ = true;
  }

  void value(double v) {
    separate();
    appendNumber(text_, v);
  }
  void value(long long v) { plain(std::to_string(v)); }
  void value(bool v) { plain(v ? "true" : "false"); }
  void value(std::string_view bytes) {
    plain("\"");
    for (const char c : bytes) appendByte(text_, static_cast<unsigned char>(c));
    text_ += '"';
  }
  void value(const char*) = delete;  // it would be a bool
  void null() { plain("null"); }

  void value(const zkin::ZRN_INTERVAL& i) { list(i.start, i.end); }
  void value(const UVec2d& p) { list(p.x, p.y); }
  void value(const UVec3d& p) { list(p.x, p.y, p.z); }
  template <class Item>
  void value(std::span<const Item> items) {
    open('[');
    for (const Item& item : items) value(item);
    close(']');
  }

  template <class Value>
  void field(std::string_view name, const Value& v) {
    key(name);
    value(v);
  }

 private:
  static constexpr std::size_t kPiece = 1 << 16;

  void separate() {
    if (!isFirst_) text_ += ", ";
    isFirst_ = false;
  }
  void plain(std::string_view word) {
    separate();
    text_ += word;
  }
  template <class... Numbers>
  void list(Numbers... numbers) {
    open('[');
    (value(numbers), ...);
    close(']');
  }
  void flush() {
    out_.write(text_.data(), static_cast<std::streamsize>(text_.size()));
    text_.clear();
  }

  std::ostream& out_;
  std::string text_;
  bool isFirst_ = true;
};

// --- entities

void giveHeader(JsonStream& json, const CGeomFileEntity& entity) {
  json.field("kind", static_cast<long long>(entity.GetKind()));
  json.field("a", entity.GetA());
  json.field("b", entity.GetB());
  json.field("code", entity.GetCode());
  json.field("value", entity.value);
  json.key("name");
  entity.name.empty() ? json.null() : json.value(std::string_view(entity.name));
}

void giveAttributes(JsonStream& json, const zkin::CGeomFileLines& lines) {
  json.key("attributes");
  json.open('[');
  for (std::size_t i = 0; i < lines.size(); ++i) json.value(lines[i]);
  json.close(']');
}

void giveNodes(JsonStream& json, const char* name, const CGeomFileNodeList& nodes);

// Children have no children: what calls itself here ends after one step.
void giveNode(JsonStream& json, const CGeomFileNode& node) {
  json.open('{');
  giveHeader(json, node.entity);
  giveAttributes(json, node.entity.attributes);
  json.field("surface", node.entity.surfaceNumber);
  json.key("data");
  json.open('{');
  giveFields(node.entity, json);
  json.close('}');
  giveNodes(json, "trims", node.trimmingCurves);
  giveNodes(json, "patches", node.patches);
  json.close('}');
}

void giveNodes(JsonStream& json, const char* name, const CGeomFileNodeList& nodes) {
  json.key(name);
  json.open('[');
  for (const auto& node : nodes) {
    json.newLine();
    giveNode(json, *node);
  }
  json.close(']');
}

// --- the rest

void giveMessages(JsonStream& json, const std::vector<std::string>& messages) {
  json.key("messages");
  json.open('[');
  for (const std::string& message : messages) json.value(std::string_view(message));
  json.close(']');
}

void giveBox(JsonStream& json, const Measures& m) {
  json.key("box");
  if (m.count == 0) return json.null();
  json.open('{');
  json.field("min", m.min);
  json.field("max", m.max);
  json.close('}');
}

void giveMeasures(JsonStream& json, const Measures& m) {
  json.key("triangles");
  json.open('{');
  json.field("count", static_cast<long long>(m.count));
  giveBox(json, m);
  json.field("area", m.area);
  json.field("volume", m.volume);
  json.field("open_edges", static_cast<long long>(m.openEdges));
  json.close('}');
}

}  // namespace

void printJson(std::ostream& out, const GeometryAnswer& answer) {
  {
    JsonStream json(out);
    json.open('{');
    json.field("code", static_cast<long long>(answer.code));
    if (answer.isText) {
      json.field("scale", answer.scale);
      json.newLine();
      giveMessages(json, answer.messages);
      json.newLine();
      giveNodes(json, "nodes", answer.nodes);
    }
    json.newLine();
    giveMeasures(json, answer.measures);
    json.close('}');
  }
  out << '\n';
}

}  // namespace korvo::tools
