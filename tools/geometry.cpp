#include "tools/geometry.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "geometry/ZrnTriangles.h"
#include "toolkit/Text.h"
#include "toolkit/export/Bodies.h"
#include "toolkit/export/WholeFile.h"
#include "toolkit/export/Write.h"
#include "tools/FileName.h"
#include "tools/Messages.h"
#include "tools/Verb.h"
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

const char* problemOfText(const std::string& file, int code) {
  if (code > 0) return "expected to read it to the end, found an error of the system on the way";
  std::error_code error;
  return std::filesystem::exists(file, error)
             ? "expected a geometry file that can be read, found an empty one, or no permission"
             : "expected a geometry file that can be read, found none";
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
  const char* problem =
      answer.isText ? problemOfText(answer.file, answer.code) : problemOfStl(answer.code);
  throw Failure(Exit::refused,
                answer.file + ": " + problem + " (code " + std::to_string(answer.code) + ")");
}

// --- the triangles as a file

void requireOutput(const GeometryOptions& o) {
  if (!o.output) return;
  if (suffixOf(*o.output) != ".stl")
    failUsage("a file that ends in .stl after -o", inQuotes(*o.output));
  std::error_code error;
  if (std::filesystem::equivalent(*o.output, o.file, error)) {
    failUsage("a file of its own after -o", inQuotes(*o.output) + ", which is read");
  }
}

void warnOfThoseLeftOut(const GeometryAnswer& answer, std::size_t written) {
  const std::size_t leftOut = answer.measures.count - written;
  if (leftOut == 0) return;
  say("korvo: warning: left out " + std::to_string(leftOut) +
      " triangles with a corner that is no number, or too large for the file");
}

void write(const std::string& path, GeometryAnswer& answer) {
  Body body;
  body.triangles = std::move(answer.triangles);
  const std::size_t count = extentOf(body).triangles;
  if (count == 0) return;
  warnOfThoseLeftOut(answer, count);
  try {
    writeStl(path, {&body, 1});
  } catch (const WriteError& e) {
    throw Failure(Exit::refused, e.what());
  } catch (const std::length_error& e) {
    throw Failure(Exit::refused, path + ": " + e.what());
  }
  answer.output = path;
}

void requireWritten(const GeometryOptions& o, const GeometryAnswer& answer) {
  if (!o.output || answer.output) return;
  throw Failure(Exit::refused, o.file + ": expected triangles to write, found none; there is no " +
                                   inQuotes(*o.output));
}

// --- the verb

void run(const GeometryOptions& o) {
  requireOutput(o);
  GeometryAnswer answer = read(o.file);
  if (o.output) write(*o.output, answer);
  o.json ? printJson(std::cout, answer) : printText(std::cout, answer);
  requireLoaded(answer);
  requireWritten(o, answer);
}

}  // namespace

void addGeometry(CLI::App& app, Exit&) {
  Verb verb(app, "geometry",
            "Say what a geometry file holds: every number, and measures of its triangles");
  const auto o = std::make_shared<GeometryOptions>();
  verb.addOption("FILE", o->file).required().text("Geometry file: .zrn or .stl");
  verb.addFlag("--json", o->json, "Answer in JSON (korvo.geometry.1.json in share/korvo/schemas)");
  verb.addOption("-o,--output", o->output, "Write the triangles to this file (binary STL)");
  verb.setFooter(
      "Measures are of the triangles, in the file's own frame and unit; corners are shared where\n"
      "they are equal. Faces of a .zrn file are meshed one by one, as machines show them.\n"
      "Exit codes: 0 answered, 2 bad usage, 3 nothing that can be read, or -o without triangles");
  verb.setAction([o] { run(*o); });
}

}  // namespace korvo::tools
