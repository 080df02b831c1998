#include "toolkit/Describe.h"

#include <algorithm>
#include <map>

#include "toolkit/DhBase.h"
#include "toolkit/Sentence.h"
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

AxisInfo axisOf(const KMachineElem& e, bool isArm, Language language) {
  AxisInfo info{shownText(e.getElemName()),
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
  if (info.isRotary) {
    info.sense = rotarySense(info.name, e.getElemAxis(), bodyOf(e, isArm), language);
  }
  return info;
}

// Two elements of one axis number share a value; each is shown.
std::vector<AxisInfo> axesOf(const KMachine& machine, bool isArm, Language language) {
  std::vector<AxisInfo> axes;
  for (int value = 0; value < machine.getAxisNum(); ++value) {
    for (const KMachineElem* e : elementsOf(machine)) {
      if (e->getValueIndex() == value) axes.push_back(axisOf(*e, isArm, language));
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

int countLinear(const std::vector<const KMachineElem*>& chain) {
  return static_cast<int>(std::count_if(chain.begin(), chain.end(), [](const KMachineElem* e) {
    return e->getElemType() == KMachineElem::KMET_TYPE_ALIN;
  }));
}

std::vector<DhRow> dhTableOf(const KMachine& machine, int tool) {
  std::vector<DhRow> rows;
  for (const KMachineElem* e : machine.getToolChain(true, tool)) {
    rows.push_back({elementName(*e), e->getDHmRef()});
  }
  return rows;
}

void describeKinematics(ToolInfo& info, const KMachine& machine, const KMachine::_sUKine& kine,
                        Language language) {
  const auto chain = machine.getToolChain(false, info.number);
  info.kine = kine;
  info.kinematicClass =
      kinematicClassText(kine, countRotary(chain, false), countRotary(chain, true), language);
  const int slides = countLinear(chain);
  if (kine.kinematicClass != 5 && slides > 3) {
    info.kinematicClass +=
        filled({"; {0} linear axes in all", " ; {0} axes linéaires en tout"}, {slides}, language);
  }
  info.armShape = armShapeText(kine, language);
  info.dhTable = dhTableOf(machine, info.number);
  info.dhBase = dhBase(machine, info.number);
}

ToolInfo toolOf(const KMachine& machine, int tool, int lastTool, Language language) {
  const KMachineElem* e = machine.getElemByIndex(KMachineElem::_getToolIndex(tool));
  ToolInfo info;
  info.number = tool;
  info.isGun = e->getElemType() == KMachineElem::KMET_TYPE_DGUN;
  info.length = e->getTHELength();
  info.nose = e->getElemPivot();
  info.direction = e->getElemAxis().normalised();
  if (tool == lastTool) {
    describeKinematics(info, machine, machine.analysis(tool), language);
  } else {  // shared elements hold what the last tool stored
    KMachine copy(machine);
    const KMachine::_sUKine kine = copy.initDHm(tool);
    describeKinematics(info, copy, kine, language);
  }
  return info;
}

std::vector<ToolInfo> toolsOf(const KMachine& machine, Language language) {
  const int last = machine.getToolNumber();
  std::vector<ToolInfo> tools;
  for (int t = 1; t <= last; ++t) {
    if (machine.getElemByIndex(KMachineElem::_getToolIndex(t))) {
      tools.push_back(toolOf(machine, t, last, language));
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
    files.push_back({elementName(*e), shownText(file), e->isGeomFileReadable()});
  }
  return files;
}

Words placesText(int inHead, int underPart) {
  if (!underPart) {
    return inHead == 1 ? Words("in the head", "dans la tête")
                       : Words("all in the head", "tous dans la tête");
  }
  if (!inHead) {
    return underPart == 1 ? Words("under the part", "sous la pièce")
                          : Words("all under the part", "tous sous la pièce");
  }
  return filled({"{0} in the head, {1} under the part", "{0} dans la tête, {1} sous la pièce"},
                {inHead, underPart});
}

Text classText(int kinematicClass) {
  switch (kinematicClass) {
    case 1:
      return {"three linear axes, no rotary axis", "trois axes linéaires, aucun axe rotatif"};
    case 2:
      return {"three linear axes and one rotary axis ({0})",
              "trois axes linéaires et un axe rotatif ({0})"};
    case 3:
      return {"three linear axes and two rotary axes ({0})",
              "trois axes linéaires et deux axes rotatifs ({0})"};
    case 4:
      return {"three linear axes and three or more rotary axes ({0})",
              "trois axes linéaires et au moins trois axes rotatifs ({0})"};
    case 5:
      return {"no three independent linear axes (articulated arm or unknown layout)",
              "pas trois axes linéaires indépendants (bras articulé ou disposition inconnue)"};
    default:
      return {"not classified", "non classée"};
  }
}

Words shapeText(int armType) {
  switch (armType) {
    case 1:
      return {"arm with a rotary axis after its first one",
              "bras avec un axe rotatif après le premier"};
    case 3:
      return {"arm with a linear, then a rotary axis after its first rotary one",
              "bras avec un axe linéaire, puis un axe rotatif après le premier axe rotatif"};
    case 4:
      return {"arm with two linear axes after its first rotary one",
              "bras avec deux axes linéaires après le premier axe rotatif"};
    default:
      return {"no known arm shape", "forme de bras inconnue"};
  }
}

Words wristText(int wristType) {
  switch (wristType) {
    case 2:
      return {"ball wrist with the tool on its last axis",
              "poignet sphérique, l'outil sur son dernier axe"};
    case 4:
      return {"ball wrist with the tool off its last axis",
              "poignet sphérique, l'outil hors de son dernier axe"};
    default:
      return {"no ball wrist", "pas de poignet sphérique"};
  }
}

}  // namespace

// Every tool has the same name in the library.
std::string elementName(const KMachineElem& e) {
  const int tool = e.isTool() ? KMachineElem::_getIndexTool(e.getElemIndex()) : 0;
  return tool ? "tool " + std::to_string(tool) : shownText(e.getElemName());
}

std::string kinematicClassText(const zkin::KMachine::_sUKine& kine, int inHead, int underPart,
                               Language language) {
  return filled(classText(kine.kinematicClass), {placesText(inHead, underPart)}, language);
}

std::string armShapeText(const zkin::KMachine::_sUKine& kine, Language language) {
  if (kine.kinematicClass != 5) return "";
  return filled({"{0}; {1}", "{0} ; {1}"}, {shapeText(kine.armType), wristText(kine.wristType)},
                language);
}

MachineInfo describe(const Machine& machine, Language language) {
  MachineInfo info;
  info.file = shownText(machine->getDataFilePNE());
  info.tree = treeOf(*machine);
  info.tools = toolsOf(*machine, language);
  const bool isArm = !info.tools.empty() && info.tools.front().kine.kinematicClass == 5;
  info.axes = axesOf(*machine, isArm, language);
  info.collisions = collisionsOf(*machine);
  info.geometry = geometryOf(*machine);
  return info;
}

}  // namespace korvo
