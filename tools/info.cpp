#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <memory>

#include "tools/InfoJson.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/Session.h"
#include "tools/ToolPoint.h"
#include "tools/Verbs.h"

using zgeo::UVec3d;
using zkin::KMachineElem;

namespace korvo::tools {
namespace {

constexpr double kRadToDeg = 57.29577951308232;

std::string text(const UVec3d& v) {
  return "(" + rounded(v.x) + ", " + rounded(v.y) + ", " + rounded(v.z) + ")";
}

std::string limitText(const std::optional<double>& limit, const char* none) {
  return limit ? exact(*limit) : none;
}

std::string travelText(const AxisInfo& a) {
  if (!a.min && !a.max) return "without limits";
  return "limits " + limitText(a.min, "none") + " to " + limitText(a.max, "none") +
         (a.isRotary ? " degrees" : " mm");
}

void printTree(std::ostream& out, const MachineInfo& info) {
  out << "Chains\n";
  for (const TreeNode& n : info.tree) {
    out << "  " << std::string(static_cast<std::size_t>(2 * n.depth), ' ') << n.name << "  "
        << n.type << ", index " << n.index << (n.onPartSide ? ", part side" : "") << '\n';
  }
}

void printAxis(std::ostream& out, const AxisInfo& a) {
  out << "  " << a.valueIndex << "  " << std::left << std::setw(6) << a.name << std::setw(7)
      << (a.isRotary ? "rotary" : "linear") << " number " << a.number << ", direction "
      << text(a.direction);
  if (a.isRotary) out << ", a point on its line " << text(a.point);
  out << ", " << travelText(a) << (a.onPartSide ? ", part side" : "")
      << (a.isLocked ? ", locked" : "") << '\n';
  if (a.sense) out << "       " << a.sense->text << '\n';
}

void printAxes(std::ostream& out, const MachineInfo& info) {
  out << "Axes, by value index (directions: of the tool's motion relative to the part)\n";
  for (const AxisInfo& a : info.axes) printAxis(out, a);
}

// The table leaves the place of its base open: row i's frame is this times the product of
// rows 1..i.
void printDhBase(std::ostream& out, const zgeo::UMatrix& base) {
  out << "      base of the table in the machine frame\n";
  for (int r = 0; r < 3; ++r) {
    out << std::string(14, ' ');
    for (int c = 0; c < 4; ++c) out << std::setw(16) << rounded(base(r, c));
    out << '\n';
  }
}

void printDh(std::ostream& out, const ToolInfo& tool) {
  out << "    Denavit-Hartenberg (modified), zero position: alpha deg, a mm, theta deg, d mm\n";
  for (const DhRow& row : tool.dhTable) {
    out << "      " << std::left << std::setw(8) << row.name << std::right;
    for (const double v :
         {row.dh.alpha * kRadToDeg, row.dh.a, row.dh.theta * kRadToDeg, row.dh.d}) {
      out << std::setw(16) << rounded(v);
    }
    out << '\n';
  }
  if (tool.dhBase) printDhBase(out, *tool.dhBase);
}

void printTool(std::ostream& out, const ToolInfo& tool, const ToolPoint& at) {
  out << "  " << tool.number << (tool.isGun ? "  drill gun" : "  tool") << ", length "
      << exact(tool.length) << " mm; at zero nose " << text(at.nose) << ", tip " << text(at.tip)
      << ", direction " << text(at.direction) << '\n'
      << "    " << tool.kinematicClass << '\n';
  if (!tool.armShape.empty()) out << "    " << tool.armShape << '\n';
  printDh(out, tool);
}

void printPairs(std::ostream& out, const MachineInfo& info) {
  out << "Collision pairs" << (info.collisions.empty() ? ": none" : "") << '\n';
  for (const CollisionPair& p : info.collisions) {
    out << "  " << p.a << " (" << p.indices.first << ") - " << p.b << " (" << p.indices.second
        << ")\n";
  }
}

void printGeometry(std::ostream& out, const MachineInfo& info) {
  out << "Geometry files" << (info.geometry.empty() ? ": none" : "") << '\n';
  for (const GeometryFile& g : info.geometry) {
    out << "  " << g.element << "  " << g.file << (g.found ? "  found" : "  NOT FOUND") << '\n';
  }
}

void print(std::ostream& out, const Session& session, const MachineInfo& info,
           const std::vector<ToolPoint>& atZero, const Served& served) {
  out << "Machine   " << info.file << "\nSettings  " << session.settingsText() << '\n';
  printTree(out, info);
  printAxes(out, info);
  out << "Tools (points in the part-zero frame)\n";
  for (std::size_t i = 0; i < info.tools.size(); ++i) printTool(out, info.tools[i], atZero[i]);
  out << "Inverse\n  " << served.text << '\n';
  printPairs(out, info);
  printGeometry(out, info);
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

void run(const CommonOptions& options) {
  Session session(options);
  MachineInfo info = describe(session.machine());
  keepTool(info, session);
  const std::vector<ToolPoint> atZero = toolsAtZero(session, info);
  requireFinite(session, info, atZero);
  const Served served = servedBy(session.machine(), Solver(session.machine()));
  if (options.json) {
    std::cout << infoJson(session, info, atZero, served).dump(2) << '\n';
  } else {
    print(std::cout, session, info, atZero, served);
  }
  session.closeTrace();
}

}  // namespace

void addInfo(CLI::App& app, Exit&) {
  CLI::App* verb = app.add_subcommand("info", "Say what machine a definition file describes");
  const auto options = std::make_shared<CommonOptions>();
  addCommonOptions(*verb, *options, {"--strategy"});  // the settings alone name it
  verb->callback([options] { run(*options); });
}

}  // namespace korvo::tools
