#include <charconv>
#include <set>
#include <string>

#include "toolkit/Path.h"
#include "toolkit/export/Corners.h"
#include "toolkit/export/Placed.h"
#include "toolkit/export/WholeFile.h"
#include "toolkit/export/Write.h"

using zgeo::UTri;
using zgeo::UVec3d;

namespace korvo {
namespace {

constexpr std::size_t kAtOnce = 1 << 16;  // bytes written in one go

// Names of the format end at a blank. Two bodies of one name would become one object.
std::string uniqueName(std::string name, std::set<std::string>& known) {
  for (char& c : name) {
    if (static_cast<unsigned char>(c) <= ' ' || c == '\x7f') c = '_';
  }
  if (name.empty()) name = "body";
  std::string unique = name;
  for (int n = 2; !known.insert(unique).second; ++n) unique = name + "_" + std::to_string(n);
  return unique;
}

std::vector<std::string> namesOf(std::span<const Body> bodies) {
  std::set<std::string> known;
  std::vector<std::string> names;
  names.reserve(bodies.size());
  for (const Body& body : bodies) names.push_back(uniqueName(body.name, known));
  return names;
}

// Nine digits tell all numbers of single precision apart, which is what readers keep. The same in
// every locale.
void append(std::string& text, double x) {
  char digits[32];
  const auto end =
      std::to_chars(std::begin(digits), std::end(digits), x, std::chars_format::general, 9).ptr;
  text.append(1, ' ').append(digits, end);
}

std::string materials(std::span<const Body> bodies, const std::vector<std::string>& names) {
  std::string text = "# Colours of the bodies, written by korvo\n";
  for (std::size_t i = 0; i < bodies.size(); ++i) {
    text += "newmtl " + names[i] + "\nKd";
    for (const int c : bodies[i].rgb) append(text, c / 255.0);
    text += "\nillum 1\n";
  }
  return text;
}

// Lines of one body after the other. Corners count from 1, over all bodies.
class ObjText {
 public:
  explicit ObjText(const std::filesystem::path& path) : file_(path) {}

  void add(const std::string& text) {
    text_ += text;
    if (text_.size() >= kAtOnce) flush();
  }

  void add(const Body& body) {
    Corners corners;
    exporting::forEachPlaced(body, [&](const UTri& t) { addTriangle(corners, t); });
    first_ += corners.size();
  }

  void commit() {
    flush();
    file_.commit();
  }

 private:
  using Corners = exporting::Corners<double, 3>;

  void addTriangle(Corners& corners, const UTri& t) {
    std::string face = "f";
    for (const UVec3d& p : t.p) {
      const auto [index, isNew] = corners.add({p.x, p.y, p.z});
      if (isNew) addCorner(p);
      face += " " + std::to_string(first_ + index);
    }
    add(face + "\n");
  }

  void addCorner(const UVec3d& p) {
    text_ += "v";
    for (const double x : {p.x, p.y, p.z}) append(text_, x);
    text_ += "\n";
  }

  void flush() {
    file_.write(text_);
    text_.clear();
  }

  WholeFile file_;
  std::string text_;
  std::size_t first_ = 1;
};

}  // namespace

// The materials take their place first: no file of bodies names some that are not there.
void writeObj(const std::filesystem::path& path, std::span<const Body> bodies) {
  std::filesystem::path materialPath = path;
  materialPath.replace_extension(".mtl");
  const std::vector<std::string> names = namesOf(bodies);
  WholeFile materialFile(materialPath);
  materialFile.write(materials(bodies, names));

  ObjText text(path);
  text.add("# mm, written by korvo\nmtllib " + utf8Of(materialPath.filename()) + "\n");
  for (std::size_t i = 0; i < bodies.size(); ++i) {
    text.add("o " + names[i] + "\nusemtl " + names[i] + "\n");
    text.add(bodies[i]);
  }
  materialFile.commit();
  text.commit();
}

}  // namespace korvo
