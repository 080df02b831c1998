#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/Checked.h"
#include "tools/InfoJson.h"
#include "tools/Label.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/Session.h"
#include "tools/ToolPoint.h"
#include "tools/Verb.h"
#include "tools/Verbs.h"

using zgeo::UVec3d;
using zkin::KMachineElem;

namespace korvo::tools {
namespace {

constexpr double kRadToDeg = 57.29577951308232;

std::string text(const UVec3d& v) {
  return "(" + rounded(v.x) + ", " + rounded(v.y) + ", " + rounded(v.z) + ")";
}

std::string limitText(const std::optional<double>& limit, const std::string& none) {
  return limit ? exact(*limit) : none;
}

std::string travelText(const AxisInfo& a, Language l) {
  if (!a.min && !a.max) return in(l, "without limits", "sans limites");
  const std::string none = in(l, "none", "aucune");
  return in(l, "limits ", "limites ") + limitText(a.min, none) + in(l, " to ", " à ") +
         limitText(a.max, none) + (a.isRotary ? in(l, " degrees", " degrés") : " mm");
}

std::string typeText(const std::string& type, Language l) {
  static constexpr const char* kWords[][2] = {{"frame", "bâti"},        {"part", "pièce"},
                                              {"tool", "outil"},        {"linear", "linéaire"},
                                              {"rotary", "rotatif"},    {"gun", "tête de perçage"},
                                              {"geometry", "géométrie"}};
  const auto row = std::find_if(std::begin(kWords), std::end(kWords),
                                [&](const auto& words) { return type == words[0]; });
  return row == std::end(kWords) ? type : in(l, (*row)[0], (*row)[1]);
}

void printTree(std::ostream& out, const MachineInfo& info, Language l) {
  out << in(l, "Chains", "Chaînes") << '\n';
  for (const TreeNode& n : info.tree) {
    out << "  " << std::string(static_cast<std::size_t>(2 * n.depth), ' ') << n.name << "  "
        << typeText(n.type, l) << ", index " << n.index
        << (n.onPartSide ? in(l, ", part side", ", côté pièce") : "") << '\n';
  }
}

void printAxis(std::ostream& out, const AxisInfo& a, Language l) {
  out << "  " << a.valueIndex << "  " << padded(a.name, 5) << ' '
      << padded(typeText(a.isRotary ? "rotary" : "linear", l), l == Language::french ? 9 : 7)
      << in(l, " number ", " numéro ") << a.number << ", direction " << text(a.direction);
  if (a.isRotary) out << in(l, ", a point on its line ", ", un point de son axe ") << text(a.point);
  out << ", " << travelText(a, l) << (a.onPartSide ? in(l, ", part side", ", côté pièce") : "")
      << (a.isLocked ? in(l, ", locked", ", bloqué") : "") << '\n';
  if (a.sense) out << "       " << a.sense->text << '\n';
}

void printAxes(std::ostream& out, const MachineInfo& info, Language l) {
  out << in(l, "Axes, by value index (directions: of the tool's motion relative to the part)",
            "Axes, par indice de valeur (directions : du mouvement de l'outil par rapport à la "
            "pièce)")
      << '\n';
  for (const AxisInfo& a : info.axes) printAxis(out, a, l);
}

// The table leaves the place of its base open: row i's frame is this times the product of
// rows 1..i.
void printDhBase(std::ostream& out, const zgeo::UMatrix& base, Language l) {
  out << in(l, "      base of the table in the machine frame\n",
            "      base du tableau dans le repère machine\n");
  for (int r = 0; r < 3; ++r) {
    out << std::string(14, ' ');
    for (int c = 0; c < 4; ++c) out << std::setw(16) << rounded(base(r, c));
    out << '\n';
  }
}

void printDh(std::ostream& out, const ToolInfo& tool, Language l) {
  out << in(l, "    Denavit-Hartenberg (modified), zero position: ",
            "    Denavit-Hartenberg (modifié), position zéro : ")
      << "alpha deg, a mm, theta deg, d mm\n";
  for (const DhRow& row : tool.dhTable) {
    out << "      " << padded(row.name, 8);
    for (const double v :
         {row.dh.alpha * kRadToDeg, row.dh.a, row.dh.theta * kRadToDeg, row.dh.d}) {
      out << std::setw(16) << rounded(v);
    }
    out << '\n';
  }
  if (tool.dhBase) printDhBase(out, *tool.dhBase, l);
}

void printTool(std::ostream& out, const ToolInfo& tool, const ToolPoint& at, Language l) {
  out << "  " << tool.number << "  "
      << (tool.isGun ? in(l, "drill gun", "tête de perçage") : typeText("tool", l))
      << in(l, ", length ", ", longueur ") << exact(tool.length)
      << in(l, " mm; at zero nose ", " mm ; à zéro nez ") << text(at.nose)
      << in(l, ", tip ", ", pointe ") << text(at.tip) << ", direction " << text(at.direction)
      << '\n'
      << "    " << tool.kinematicClass << '\n';
  if (!tool.armShape.empty()) out << "    " << tool.armShape << '\n';
  printDh(out, tool, l);
}

void printPairs(std::ostream& out, const MachineInfo& info, Language l) {
  out << in(l, "Collision pairs", "Paires de collision")
      << (info.collisions.empty() ? in(l, ": none", " : aucune") : "") << '\n';
  for (const CollisionPair& p : info.collisions) {
    out << "  " << p.a << " (" << p.indices.first << ") - " << p.b << " (" << p.indices.second
        << ")\n";
  }
}

void printGeometry(std::ostream& out, const MachineInfo& info, Language l) {
  out << in(l, "Geometry files", "Fichiers de géométrie")
      << (info.geometry.empty() ? in(l, ": none", " : aucun") : "") << '\n';
  for (const GeometryFile& g : info.geometry) {
    out << "  " << g.element << "  " << g.file
        << (g.found ? in(l, "  found", "  trouvé") : in(l, "  NOT FOUND", "  INTROUVABLE")) << '\n';
  }
}

void print(std::ostream& out, const Session& session, const MachineInfo& info,
           const std::vector<ToolPoint>& atZero, const Served& served, Language l) {
  out << label(l, "Machine", "Machine", 10) << info.file << '\n'
      << label(l, "Settings", "Réglages", 10) << session.settingsText(l) << '\n';
  printTree(out, info, l);
  printAxes(out, info, l);
  out << in(l, "Tools (points in the part-zero frame)\n",
            "Outils (points dans le repère du zéro pièce)\n");
  for (std::size_t i = 0; i < info.tools.size(); ++i) printTool(out, info.tools[i], atZero[i], l);
  out << "Inverse\n  " << served.text << '\n';
  printPairs(out, info, l);
  printGeometry(out, info, l);
}

// With --tool only that tool is described.
void keepTool(MachineInfo& info, const Session& session) {
  if (!session.hasToolOption()) return;
  std::erase_if(info.tools, [&](const ToolInfo& t) { return t.number != session.tool(); });
}

std::vector<ToolPoint> toolsAtZero(const Session& session, const MachineInfo& info) {
  std::vector<ToolPoint> points;
  const Position zero = session.machine().position();
  points.reserve(info.tools.size());
  for (const ToolInfo& t : info.tools) {
    points.push_back(toolPoint(*session.machine(), *zero, t.number));
  }
  return points;
}

// --- what no answer can hold

bool isFinite(const UVec3d& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool isFinite(const AxisInfo& a) {
  return isFinite(a.direction) && isFinite(a.point) && std::isfinite(a.min.value_or(0.0)) &&
         std::isfinite(a.max.value_or(0.0));
}

bool isFinite(const KMachineElem::_sUDHm& dh) {
  return std::isfinite(dh.alpha) && std::isfinite(dh.a) && std::isfinite(dh.theta) &&
         std::isfinite(dh.d);
}

bool isFinite(const ToolInfo& tool, const ToolPoint& at) {
  return isFinite(at.nose) && isFinite(at.tip) && isFinite(at.direction) &&
         std::all_of(tool.dhTable.begin(), tool.dhTable.end(),
                     [](const DhRow& row) { return isFinite(row.dh); });
}

void requireFinite(const Session& session, const MachineInfo& info,
                   const std::vector<ToolPoint>& atZero) {
  std::vector<std::string> bad;
  for (const AxisInfo& a : info.axes) {
    if (!isFinite(a)) bad.push_back("axis " + a.name);
  }
  for (std::size_t i = 0; i < info.tools.size(); ++i) {
    if (!isFinite(info.tools[i], atZero[i])) {
      bad.push_back("tool " + std::to_string(info.tools[i].number));
    }
  }
  if (bad.empty()) return;
  throw Failure(Exit::refused, session.file() + ": expected finite numbers, found others at " +
                                   joined(bad) + " (directions, points, limits or chain)");
}

// In JSON the sentences alone are in that language.
void run(const CommonOptions& options, const std::string& tag) {
  const Language language = languageOf(tag);
  Session session(options);
  MachineInfo info = describe(session.machine(), language);
  keepTool(info, session);
  const std::vector<ToolPoint> atZero = toolsAtZero(session, info);
  requireFinite(session, info, atZero);
  const Served served = servedBy(session.machine(), Solver(session.machine()), {}, language);
  if (options.json) {
    std::cout << infoJson(session, info, atZero, served).dump(2) << '\n';
  } else {
    print(std::cout, session, info, atZero, served, language);
  }
  session.closeTrace();
}

}  // namespace

void addInfo(CLI::App& app, Exit&) {
  Verb verb(app, "info", "Say what machine a definition file describes");
  const auto options = std::make_shared<CommonOptions>();
  addCommonOptions(verb, *options, {"--strategy"});  // the settings alone name it
  const auto language = std::make_shared<std::string>("en");
  verb.addOption("--lang", *language,
                 "Language of the answer, in JSON of its sentences alone: en, fr [en]");
  verb.setAction([options, language] { run(*options, *language); });
}

}  // namespace korvo::tools
