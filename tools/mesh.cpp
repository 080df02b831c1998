#include <algorithm>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "geometry/GeometryFile.h"
#include "toolkit/Describe.h"
#include "toolkit/Text.h"
#include "toolkit/export/Bodies.h"
#include "toolkit/export/WholeFile.h"
#include "toolkit/export/Write.h"
#include "tools/Engine.h"
#include "tools/External.h"
#include "tools/FileName.h"
#include "tools/InfoJson.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/PositionText.h"
#include "tools/Travel.h"
#include "tools/Verb.h"
#include "tools/Verbs.h"

using nlohmann::json;
namespace fs = std::filesystem;

namespace korvo::tools {
namespace {

struct MeshOptions {
  CommonOptions common;
  std::optional<std::string> at;
  std::string output;
  std::optional<std::string> size;
  Engine engine = Engine::library;
};

// --- what was asked

PictureSize sizeOf(const std::string& text) {
  constexpr int kMost = 8192;
  const std::vector<std::string> parts = split(text, 'x');
  const auto pixels = [&](std::size_t i) { return integerOf(parts[i]).value_or(0); };
  const auto fits = [](int n) { return n >= 1 && n <= kMost; };
  if (parts.size() != 2 || !fits(pixels(0)) || !fits(pixels(1))) {
    failUsage("WIDTHxHEIGHT in pixels, each from 1 to 8192, after --size", inQuotes(text));
  }
  return {pixels(0), pixels(1)};
}

using Write = void (*)(const fs::path&, std::span<const Body>, PictureSize);

// One row for each kind of file.
struct Kind {
  const char* suffix;
  Write write;
};
constexpr Kind kKinds[] = {
    {".stl", [](const fs::path& p, std::span<const Body> b, PictureSize) { writeStl(p, b); }},
    {".glb", [](const fs::path& p, std::span<const Body> b, PictureSize) { writeGlb(p, b); }},
    {".obj", [](const fs::path& p, std::span<const Body> b, PictureSize) { writeObj(p, b); }},
    {".png", [](const fs::path& p, std::span<const Body> b, PictureSize s) { writePng(p, b, s); }},
};

const Kind& kindOf(const MeshOptions& o) {
  const std::string suffix = suffixOf(o.output);
  for (const Kind& kind : kKinds) {
    if (suffix == kind.suffix) return kind;
  }
  failUsage("a file that ends in .stl, .glb, .obj or .png after -o", inQuotes(o.output));
}

std::vector<Body> bodiesAt(const MeshOptions& o, const Session& session, const Position& at) {
  if (o.engine == Engine::library) return bodiesOf(*session.machine(), at);
  return External(session, zkin::Bodies::fromGeometryFiles).bodies(at);
}

// --- elements without a body

// What the check has said as a warning is not said again.
bool isSaid(const Session& session, const std::string& file) {
  const std::string last = file.substr(file.find_last_of("\\/") + 1);
  const std::vector<Diagnostic>& all = session.findings();
  return std::any_of(all.begin(), all.end(), [&last](const Diagnostic& d) {
    return d.severity == Severity::warning && d.code.starts_with("geometry-") &&
           d.text.find(last) != std::string::npos;
  });
}

json withoutBody(const Session& session, const std::vector<Body>& bodies) {
  json elements = json::array();
  for (int rank = 0; rank < session.machine()->getElemNumber(); ++rank) {
    const zkin::KMachineElem& e = *session.machine()->getElemByRank(rank);
    const bool hasBody =
        std::any_of(bodies.begin(), bodies.end(), [rank](const Body& b) { return b.rank == rank; });
    if (hasBody || e.getGeomFile().empty()) continue;
    elements.push_back({{"element", elementName(e)},
                        {"file", shownText(e.getGeomFile())},
                        {"found", e.isGeomFileReadable()}});
  }
  return elements;
}

void warn(const Session& session, const json& elements) {
  for (const json& e : elements) {
    const std::string file = e["file"];
    if (isSaid(session, file)) continue;
    say(session.file() + ": warning: expected a body of " + e["element"].get<std::string>() +
        (e["found"] ? ", found no triangles in " : ", found no readable file ") + inQuotes(file));
  }
}

void refuseNone(const Session& session, const json& elements) {
  throw Failure(Exit::refused,
                session.file() + ": expected bodies, found none: " +
                    (elements.empty() ? "no element names a geometry file. Write one at the end of "
                                        "an element's line: geom=$ZRN_MACHINE_DEF/head.stl"
                                      : "no geometry file that its elements name gives triangles. "
                                        "'korvo geometry FILE' shows what one holds"));
}

// --- the answer

struct Measured {
  std::vector<Extent> extents;  // of each body
  Box box;
  std::size_t triangles = 0;
  std::size_t leftOut = 0;
};

Measured measured(const std::vector<Body>& bodies) {
  Measured answer;
  for (const Body& body : bodies) {
    const Extent& e = answer.extents.emplace_back(extentOf(body));
    answer.box = answer.extents.size() == 1 ? e.box : unite(answer.box, e.box);
    answer.triangles += e.triangles;
    answer.leftOut += body.triangles.size() - e.triangles;
  }
  return answer;
}

std::string textOf(const Box& box) {
  if (box.isEmpty()) return "nowhere";
  const zgeo::UVec3d &a = box.min, &b = box.max;
  return "X " + rounded(a.x) + " to " + rounded(b.x) + ", Y " + rounded(a.y) + " to " +
         rounded(b.y) + ", Z " + rounded(a.z) + " to " + rounded(b.z);
}

json jsonOf(const Box& box) {
  if (box.isEmpty()) return nullptr;
  return {{"min", vectorJson(box.min)}, {"max", vectorJson(box.max)}};
}

std::string counted(std::size_t n) {
  return std::to_string(n) + (n == 1 ? " triangle" : " triangles");
}

void print(std::ostream& out, const MeshOptions& o, const Session& session, const Position& at,
           const std::vector<Body>& bodies, const Measured& answer) {
  out << "Machine    " << session.file() << "\nSettings   " << session.settingsText()
      << "\nPosition   " << tools::textOf(at);
  const std::vector<std::string> outside = outsideLimits(session.machine(), at);
  if (!outside.empty()) out << "\nOutside limits: " << joined(outside);
  out << "\nBodies\n";
  for (std::size_t i = 0; i < bodies.size(); ++i) {
    out << "  " << bodies[i].name << "  " << counted(answer.extents[i].triangles) << ", "
        << textOf(answer.extents[i].box) << '\n';
  }
  out << "Total      " << counted(answer.triangles) << ", " << textOf(answer.box) << "\nWritten    "
      << shownText(o.output) << '\n';
}

json bodiesJson(const std::vector<Body>& bodies, const Measured& answer) {
  json list = json::array();
  for (std::size_t i = 0; i < bodies.size(); ++i) {
    list.push_back({{"rank", bodies[i].rank},
                    {"name", bodies[i].name},
                    {"rgb", bodies[i].rgb},
                    {"triangles", answer.extents[i].triangles},
                    {"box", jsonOf(answer.extents[i].box)}});
  }
  return list;
}

json answerJson(const MeshOptions& o, const Session& session, const Position& at,
                const std::vector<Body>& bodies, const Measured& answer) {
  return {{"schema", "korvo.mesh/1"},
          {"units", unitsJson()},
          {"machine", session.machineJson()},
          {"settings", session.settingsJson()},
          {"position", tools::jsonOf(at)},
          {"outsideLimits", outsideLimits(session.machine(), at)},
          {"bodies", bodiesJson(bodies, answer)},
          {"withoutBody", withoutBody(session, bodies)},
          {"triangles", answer.triangles},
          {"leftOut", answer.leftOut},
          {"box", jsonOf(answer.box)},
          {"output", shownText(o.output)}};
}

// --- the file

bool isSameFile(const fs::path& a, const fs::path& b) {
  std::error_code error;
  return fs::equivalent(a, b, error) && !error;
}

void refuseWhatIsRead(const MeshOptions& o, const Session& session) {
  bool isRead = isSameFile(o.output, session.path());
  for (int rank = 0; rank < session.machine()->getElemNumber(); ++rank) {
    const std::string path =
        zkin::geometryFilePath(session.machine()->getElemByRank(rank)->getGeomFile());
    isRead = isRead || isSameFile(o.output, std::u8string(path.begin(), path.end()));
  }
  if (isRead) failUsage("a file of its own after -o", inQuotes(o.output) + ", which is read");
}

void move(const zgeo::UMatrix& by, std::vector<Body>& bodies) {
  for (Body& body : bodies) body.motion = by * body.motion;
}

// A picture is what one sees beside the machine, wherever part zero lies.
void standStill(const MeshOptions& o, const Session& session, const Position& at,
                std::vector<Body>& bodies) {
  if (suffixOf(o.output) != ".png") return;
  move(session.machine()->getUNI2MAC(), bodies);
  standOnFrame(*session.machine(), at, bodies);
}

void write(const Kind& kind, const MeshOptions& o, const std::vector<Body>& bodies) {
  try {
    kind.write(o.output, bodies, o.size ? sizeOf(*o.size) : PictureSize());
  } catch (const WriteError& e) {
    throw Failure(Exit::refused, e.what());
  } catch (const std::length_error& e) {
    throw Failure(Exit::refused, o.output + ": " + e.what());
  }
}

void checkTogether(const MeshOptions& o) {
  if (!o.size) return;
  sizeOf(*o.size);
  if (suffixOf(o.output) != ".png") failUsage("--size with a .png file", inQuotes(o.output));
}

Exit run(const MeshOptions& o) {
  const Kind& kind = kindOf(o);
  checkTogether(o);
  Session session(o.common);
  const Position at = o.at ? positionOf(session, *o.at, "--at") : session.machine().position();
  refuseWhatIsRead(o, session);
  std::vector<Body> bodies = bodiesAt(o, session, at);
  move(session.machine()->getMAC2UNI(), bodies);
  const json elements = withoutBody(session, bodies);
  warn(session, elements);
  const Measured answer = measured(bodies);
  if (answer.triangles == 0) refuseNone(session, elements);
  if (answer.leftOut > 0) {
    say("korvo: warning: left out " + counted(answer.leftOut) +
        " with a corner that is no number, or too large for the file");
  }
  standStill(o, session, at, bodies);
  write(kind, o, bodies);
  if (o.common.json) {
    std::cout << answerJson(o, session, at, bodies, answer).dump(2) << '\n';
  } else {
    print(std::cout, o, session, at, bodies, answer);
  }
  session.closeTrace();
  return Exit::answered;
}

}  // namespace

void addMesh(CLI::App& app, Exit& exit) {
  Verb verb(app, "mesh", "Write the bodies of the machine at axis values, or a picture");
  const auto o = std::make_shared<MeshOptions>();
  addCommonOptions(verb, o->common, {"--lock", "--strategy"});  // it solves nothing
  verb.addOption("--at", o->at,
                 "Position: X=10,C=90 (unnamed axes are 0), or all values in order [all 0]");
  verb.addOption("-o,--output", o->output,
                 "The file to write; its end says which kind: .stl, .glb, .obj or .png")
      .required();
  verb.addOption("--size", o->size, "Size of a .png in pixels, WIDTHxHEIGHT [1200x900]");
  addEngineOption(verb, o->engine, {Engine::library, Engine::external});
  verb.setFooter(
      "STL (binary), OBJ (with a .mtl beside it): mm, in part zero (--frame), in which points are\n"
      "answered: the part stands still, table axes move the rest. The boxes told are in it, too.\n"
      "GLB: metres, Y up, as glTF wants it; one node for each body, in its own frame (mm) and "
      "moved\n"
      "by its matrix, below one root that scales and turns.\n"
      "PNG: from the front, right and above, isometric; the machine's frame stands still, so that\n"
      "table axes move the table.\n"
      "Bodies are the .stl and .zrn files that the elements name. A file is written whole or not "
      "at "
      "all.");
  verb.setAction([o, &exit] { exit = run(*o); });
}

}  // namespace korvo::tools
