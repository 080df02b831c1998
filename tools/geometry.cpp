#include "tools/geometry.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>

#include "geometry/ZrnTriangles.h"
#include "toolkit/Text.h"
#include "tools/Messages.h"
#include "tools/Verbs.h"
#include "tools/geometry_json.h"
#include "tools/geometry_text.h"

using zgeo::UTri;

namespace korvo::tools {
namespace {

struct GeometryOptions {
  std::string file;
  std::optional<std::string> output;
  bool json = false;
};

std::string suffixOf(const std::string& file) {
  std::string suffix = std::filesystem::path(file).extension().string();
  std::transform(suffix.begin(), suffix.end(), suffix.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return suffix;
}

// --- reading

// What machines show of a file is as close to its surfaces as this, in the file's unit.
constexpr double kTolerance = 0.01;

void readText(GeometryAnswer& answer) {
  const auto listen = [&](const char* text) { answer.messages.emplace_back(text); };
  answer.isText = true;
  answer.code =
      zkin::ZRN_LoadFile(answer.file.c_str(), answer.nodes, answer.scale, nullptr, nullptr, listen);
  zkin::ZRN_FileToTriangles(answer.file.c_str(), kTolerance, answer.triangles);
}

GeometryAnswer read(const std::string& file) {
  GeometryAnswer answer;
  answer.file = file;
  const std::string suffix = suffixOf(file);
  if (suffix == ".zrn") {
    readText(answer);
  } else if (suffix == ".stl") {
    answer.code = UTri::_loadSTL(toWide(file), answer.triangles);
  } else {
    throw Failure(Exit::refused, file +
                                     ": expected a file whose name ends in .zrn or .stl, found " +
                                     (suffix.empty() ? "no ending" : inQuotes(suffix)));
  }
  answer.measures = measure(answer.triangles);
  return answer;
}

// --- what went wrong

const char* problemOfText(int code) {
  return code < 0 ? "expected a geometry file that can be read, found none, or an empty one"
                  : "expected to read it to the end, found an error of the system on the way";
}

const char* problemOfStl(int code) {
  switch (code) {
    case UTri::STL_NO_FILE:
      return "expected an STL file that can be read, found none";
    case UTri::STL_READ_ERROR:
      return "expected to read it to the end, found an error of the system on the way";
    case UTri::STL_NO_STL:
      return "expected an STL file, found neither of its forms";
    case UTri::STL_NO_TRIANGLE:
      return "expected the triangles that it announces, found none that can be read";
    default:
      return "expected memory for its triangles, found too little";
  }
}

void requireLoaded(const GeometryAnswer& answer) {
  if (answer.code == 0) return;
  const char* problem = answer.isText ? problemOfText(answer.code) : problemOfStl(answer.code);
  throw Failure(Exit::refused,
                answer.file + ": " + problem + " (code " + std::to_string(answer.code) + ")");
}

// --- the verb

void print(const GeometryOptions& o, const GeometryAnswer& answer) {
  o.json ? printJson(std::cout, answer) : printText(std::cout, answer);
}

void run(const GeometryOptions& o) {
  const GeometryAnswer answer = read(o.file);
  print(o, answer);
  requireLoaded(answer);
}

}  // namespace

void addGeometry(CLI::App& app, Exit&) {
  CLI::App* verb = app.add_subcommand(
      "geometry", "Say what a geometry file holds: every number, and measures of its triangles");
  const auto o = std::make_shared<GeometryOptions>();
  verb->add_option("FILE", o->file)->required()->option_text("Geometry file: .zrn or .stl");
  verb->add_flag("--json", o->json, "Answer in JSON (korvo.geometry.1.json in share/korvo/schemas)")
      ->disable_flag_override();
  verb->callback([o] { run(*o); });
}

}  // namespace korvo::tools
