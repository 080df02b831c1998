#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kinematics/KMachine.h"
#include "platform/zgeo/UVec3d.h"
#include "toolkit/Export.h"
#include "toolkit/Language.h"
#include "toolkit/Machine.h"
#include "toolkit/RotarySense.h"

namespace korvo {

/// One element in the tree of the chains.
struct TreeNode {
  int rank = 0;             ///< Of the element, in file order.
  int depth = 0;            ///< 0 for a root; a child follows its parent with one more.
  std::string name;         ///< Of an axis as in the file; "tool 1"; else the library's own.
  std::string type;         ///< "frame", "part", "tool", "linear", "rotary", "gun", "geometry".
  int index = 0;            ///< Element index.
  bool onPartSide = false;  ///< Between the part and the frame, ends included.
};

/// One axis, in value order.
struct AxisInfo {
  std::string name;
  bool isRotary = false;
  int number = 0;             ///< Axis number, the element index.
  int valueIndex = 0;         ///< Its place in a position.
  zgeo::UVec3d direction;     ///< Unit; of the tool's motion relative to the part.
  zgeo::UVec3d point;         ///< On the line of a rotary axis, mm; not always the file's.
  std::optional<double> min;  ///< mm or degrees.
  std::optional<double> max;
  bool isLocked = false;
  bool onPartSide = false;
  std::optional<RotarySense> sense;  ///< Of a rotary axis.
};

/// One row of a Denavit-Hartenberg table.
struct DhRow {
  std::string name;
  zkin::KMachineElem::_sUDHm dh;  ///< Angles in radians.
};

/// One tool.
struct ToolInfo {
  int number = 0;
  bool isGun = false;
  double length = 0.0;     ///< mm
  zgeo::UVec3d nose;       ///< At the zero position, in the machine frame, mm.
  zgeo::UVec3d direction;  ///< Unit, from tip to spindle.
  zkin::KMachine::_sUKine kine;
  std::string kinematicClass;  ///< In words.
  std::string armShape;        ///< In words; empty for a machine with three linear axes.
  std::vector<DhRow> dhTable;  ///< From the root to the tool, at the zero position.

  /// Base of the table in the machine frame: dhBase times the product of the rows up to an element
  /// is a frame whose Z is that element's line (the part's row excepted). Nothing when an element
  /// of the chain has no direction.
  std::optional<zgeo::UMatrix> dhBase;
};

/// One pair of elements to test for collision.
struct CollisionPair {
  std::string a, b;
  std::pair<int, int> indices;
};

/// One geometry file that an element names.
struct GeometryFile {
  std::string element;
  std::string file;
  bool found = false;  ///< Readable, as the library looks for it.
};

/// What can be said of a machine without moving it.
struct MachineInfo {
  std::string file;
  std::vector<TreeNode> tree;
  std::vector<AxisInfo> axes;
  std::vector<ToolInfo> tools;
  std::vector<CollisionPair> collisions;
  std::vector<GeometryFile> geometry;
};

/// Describes `machine`.
///
/// @errors  The Denavit-Hartenberg table of a tool is the one that the library holds right after
///          it derived that tool's; elements shared by several tools keep the last one's.
/// @cost    Copies the machine once per tool but the last.
KORVO_TOOLKIT_API MachineInfo describe(const Machine& machine,
                                       Language language = Language::english);

/// Name of an element for people, UTF-8: "tool 1" for a tool, else the library's own.
KORVO_TOOLKIT_API std::string elementName(const zkin::KMachineElem& e);

/// Kinematic class in words, with the rotary axes in the head and under the part counted.
KORVO_TOOLKIT_API std::string kinematicClassText(const zkin::KMachine::_sUKine& kine, int inHead,
                                                 int underPart,
                                                 Language language = Language::english);

/// Shape of an arm and of its wrist in words; empty for kinematic classes 1 to 4.
KORVO_TOOLKIT_API std::string armShapeText(const zkin::KMachine::_sUKine& kine,
                                           Language language = Language::english);

}  // namespace korvo
