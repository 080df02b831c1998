#include "toolkit/Describe.h"

#include <algorithm>
#include <map>

#include "toolkit/DhBase.h"
#include "toolkit/Text.h"

using zkin::KMachine;
using zkin::KMachineElem;

namespace korvo {
namespace {

std::string typeWord(KMachineElem::KME_TYPE type) {
  static constexpr const char* kWords[] = {"none",   "frame",  "part", "tool",
                                           "linear", "rotary", "gun",  "geometry"};
  const auto i = static_cast<std::size_t>(type);
  return i < std::size(kWords) ? kWords[i] : kWords[0];
}

std::vector<const KMachineElem*> elementsOf(const KMachine& machine) {
  std::vector<const KMachineElem*> elements;
  elements.reserve(machine.getElemNumber());
  for (int r = 0; r < machine.getElemNumber(); ++r) elements.push_back(machine.getElemByRank(r));
  return elements;
}

std::string nameOf(const KMachine& machine, int index) {
  const KMachineElem* e = machine.getElemByIndex(index);
  return e ? elementName(*e) : std::string();
}

// --- the chains as a tree

using Children = std::map<const KMachineElem*, std::vector<int>>;  // null: the roots

TreeNode nodeOf(const KMachineElem& e, int rank, int depth) {
  const bool isPart = e.getElemType() == KMachineElem::KMET_TYPE_PART;
  return {rank,
          depth,
          elementName(e),
          typeWord(e.getElemType()),
          e.getElemIndex(),
          isPart || e.isInverted()};
}

// Depth first, by a list of open places instead of recursion: a file may hold long chains.
std::vector<TreeNode> treeOf(const KMachine& machine) {
  Children children;
  for (int r = machine.getElemNumber() - 1; r >= 0; --r) {  // the last opened is walked first
    children[machine.getPrevElem(machine.getElemByRank(r))].push_back(r);
  }
  std::vector<TreeNode> tree;
  std::vector<std::pair<int, int>> open;  // rank, depth
  const auto openChildren = [&](const KMachineElem* parent, int depth) {
    for (const int rank : children[parent]) open.emplace_back(rank, depth);
  };
  openChildren(nullptr, 0);
  while (!open.empty()) {
    const auto [rank, depth] = open.back();
    open.pop_back();
    const KMachineElem* e = machine.getElemByRank(rank);
    tree.push_back(nodeOf(*e, rank, depth));
    openChildren(e, depth + 1);
  }
  return tree;
}

// --- axes

RotaryBody bodyOf(const KMachineElem& axis, bool isArm) {
  if (axis.isInverted()) return RotaryBody::table;
  return isArm ? RotaryBody::arm : RotaryBody::head;
}

AxisInfo axisOf(const KMachineElem& e, bool isArm) {
  AxisInfo info{toUtf8(e.getElemName()),
                e.getElemType() == KMachineElem::KMET_TYPE_AROT,
                e.getElemIndex(),
                e.getValueIndex(),
                e.getElemAxis(),
                e.getElemPivot(),
                std::nullopt,
                std::nullopt,
                e.isLocked(),
                e.isInverted(),
                std::nullopt};
  if (e.hasMin()) info.min = e.getMin();
  if (e.hasMax()) info.max = e.getMax();
  if (info.isRotary) info.sense = rotarySense(info.name, e.getElemAxis(), bodyOf(e, isArm));
  return info;
}

// Two elements of one axis number share a value; each is shown.
std::vector<AxisInfo> axesOf(const KMachine& machine, bool isArm) {
  std::vector<AxisInfo> axes;
  for (int value = 0; value < machine.getAxisNum(); ++value) {
    for (const KMachineElem* e : elementsOf(machine)) {
      if (e->getValueIndex() == value) axes.push_back(axisOf(*e, isArm));
    }
  }
  return axes;
}

// --- tools

int countRotary(const std::vector<const KMachineElem*>& chain, bool underPart) {
  return static_cast<int>(std::count_if(chain.begin(), chain.end(), [&](const KMachineElem* e) {
    return e->getElemType() == KMachineElem::KMET_TYPE_AROT && e->isInverted() == underPart;
  }));
}

std::vector<DhRow> dhTableOf(const KMachine& machine, int tool) {
  std::vector<DhRow> rows;
  for (const KMachineElem* e : machine.getToolChain(true, tool)) {
    rows.push_back({elementName(*e), e->getDHmRef()});
  }
  return rows;
}

void describeKinematics(ToolInfo& info, const KMachine& machine, const KMachine::_sUKine& kine) {
  const auto chain = machine.getToolChain(false, info.number);
  info.kine = kine;
  info.kinematicClass =
      kinematicClassText(kine, countRotary(chain, false), countRotary(chain, true));
  info.armShape = armShapeText(kine);
  info.dhTable = dhTableOf(machine, info.number);
  info.dhBase = dhBase(machine, info.number);
}

ToolInfo toolOf(const KMachine& machine, int tool, int lastTool) {
  const KMachineElem* e = machine.getElemByIndex(KMachineElem::_getToolIndex(tool));
  ToolInfo info;
  info.number = tool;
  info.isGun = e->getElemType() == KMachineElem::KMET_TYPE_DGUN;
  info.length = e->getTHELength();
  info.nose = e->getElemPivot();
  info.direction = e->getElemAxis().normalised();
  if (tool == lastTool) {
    describeKinematics(info, machine, machine.analysis(tool));
  } else {  // shared elements hold what the last tool stored
    KMachine copy(machine);
    const KMachine::_sUKine kine = copy.initDHm(tool);
    describeKinematics(info, copy, kine);
  }
  return info;
}

std::vector<ToolInfo> toolsOf(const KMachine& machine) {
  const int last = machine.getToolNumber();
  std::vector<ToolInfo> tools;
  for (int t = 1; t <= last; ++t) {
    if (machine.getElemByIndex(KMachineElem::_getToolIndex(t))) {
      tools.push_back(toolOf(machine, t, last));
    }
  }
  return tools;
}

// --- collisions and geometry

std::vector<CollisionPair> collisionsOf(const KMachine& machine) {
  std::vector<CollisionPair> pairs;
  for (const auto& pair : machine.getCollCheck()) {
    pairs.push_back({nameOf(machine, pair.first), nameOf(machine, pair.second), pair});
  }
  return pairs;
}

std::vector<GeometryFile> geometryOf(const KMachine& machine) {
  std::vector<GeometryFile> files;
  for (const KMachineElem* e : elementsOf(machine)) {
    const std::wstring& file = e->getGeomFile();
    if (file.empty()) continue;
    files.push_back({elementName(*e), toUtf8(file), e->isGeomFileReadable()});
  }
  return files;
}

std::string placesText(int inHead, int underPart) {
  if (!underPart) return inHead == 1 ? "in the head" : "all in the head";
  if (!inHead) return underPart == 1 ? "under the part" : "all under the part";
  return std::to_string(inHead) + " in the head, " + std::to_string(underPart) + " under the part";
}

}  // namespace

// Every tool has the same name in the library.
std::string elementName(const KMachineElem& e) {
  const int tool = e.isTool() ? KMachineElem::_getIndexTool(e.getElemIndex()) : 0;
  return tool ? "tool " + std::to_string(tool) : toUtf8(e.getElemName());
}

std::string kinematicClassText(const zkin::KMachine::_sUKine& kine, int inHead, int underPart) {
  const std::string places = " (" + placesText(inHead, underPart) + ")";
  switch (kine.kinematicClass) {
    case 1:
      return "three linear axes, no rotary axis";
    case 2:
      return "three linear axes and one rotary axis" + places;
    case 3:
      return "three linear axes and two rotary axes" + places;
    case 4:
      return "three linear axes and three or more rotary axes" + places;
    case 5:
      return "no three independent linear axes (articulated arm or unknown layout)";
    default:
      return "not classified";
  }
}

std::string armShapeText(const zkin::KMachine::_sUKine& kine) {
  if (kine.kinematicClass != 5) return "";
  const std::string shape = kine.armType == 1 ? "a rotary axis after the first rotary axis"
                            : kine.armType == 3
                                ? "a linear, then a rotary axis after the first rotary axis"
                            : kine.armType == 4 ? "two linear axes after the first rotary axis"
                                                : "no known arm shape";
  const std::string wrist = kine.wristType == 2   ? "ball wrist with the tool on its last axis"
                            : kine.wristType == 4 ? "ball wrist with the tool off its last axis"
                                                  : "no ball wrist";
  return shape + "; " + wrist;
}

MachineInfo describe(const Machine& machine) {
  MachineInfo info;
  info.file = toUtf8(machine->getDataFilePNE());
  info.tree = treeOf(*machine);
  info.tools = toolsOf(*machine);
  const bool isArm = !info.tools.empty() && info.tools.front().kine.kinematicClass == 5;
  info.axes = axesOf(*machine, isArm);
  info.collisions = collisionsOf(*machine);
  info.geometry = geometryOf(*machine);
  return info;
}

}  // namespace korvo
