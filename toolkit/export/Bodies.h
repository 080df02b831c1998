#pragma once

#include <array>
#include <string>
#include <vector>

#include "adapter/NMachine.h"
#include "kinematics/KMachine.h"
#include "platform/ombra/MachinePosition.h"
#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UTri.h"
#include "toolkit/Export.h"

namespace korvo {

/// The body of one element, ready to be placed.
struct Body {
  int rank = 0;                       ///< Of the element, in file order.
  std::string name;                   ///< As in `elementName`, UTF-8. Not always unique.
  std::array<int, 3> rgb{};           ///< Red, green, blue for display, 0 to 255.
  zgeo::UMatrix motion;               ///< From the body's own frame to the machine frame.
  std::vector<zgeo::UTri> triangles;  ///< In the body's own frame.
};

/// The bodies of a machine at a position: one for each element whose geometry file has triangles.
///
/// Every triangle moved by its body's motion, body after body, is what `getTrianglesU` gives.
///
/// @frames  Triangles: the file's own frame. Motion: `getMatrix(position, element)`.
/// @units   As in the files, mm by custom.
/// @return  In file order. The colour is the element's, or one of ours by rank when a component of
///          it is none from 0 to 255.
/// @errors  Elements without a file, or with one that gives no triangles, have no body. Throws
///          std::bad_alloc.
/// @cost    Reads every file, as often as elements name it.
KORVO_TOOLKIT_API std::vector<Body> bodiesOf(const zkin::KMachine& machine,
                                             const zkin::KMachineValueBase& position);

/// The bodies of the machine as one of the external library has and places them, in the frame of
/// the adapter's table; names and colours are those of the elements.
///
/// Every triangle moved by its body's motion, body after body, is what `NMachine::getTrianglesU`
/// gives but for rounding.
///
/// @param external  Over what `machineFromDefinition` made of `machine`, with its bodies: entity k
///                  is the element of rank k - 1.
/// @frames  Triangles: the entity's own frame, of such a machine the machine frame at its zero
///          position. Motion: from there into the table's frame, of its table 0 the machine frame.
/// @errors  Without an external machine there are none. Throws std::bad_alloc.
KORVO_TOOLKIT_API std::vector<Body> bodiesOf(const zkin::KMachine& machine,
                                             const zkin::NMachine& external,
                                             const Ombra::Kin::MachinePosition& position);

/// Moves the bodies to where they are for one who stands beside the machine: its frame (the
/// element) stays as at the zero position, and table axes move the table. The machine frame is the
/// part's, so without this it is the rest of the machine that tilts about the table.
KORVO_TOOLKIT_API void standOnFrame(const zkin::KMachine& machine,
                                    const zkin::KMachineValueBase& position,
                                    std::vector<Body>& bodies);

/// Smallest and largest coordinates; min.x > max.x when there are none.
struct Box {
  zgeo::UVec3d min;
  zgeo::UVec3d max;

  bool isEmpty() const { return min.x > max.x; }
};

/// The boxes of the placed bodies, in the machine frame, and how many triangles the files below
/// take: those whose corners are numbers that fit into single precision.
struct Extent {
  Box box;
  std::size_t triangles = 0;
};
KORVO_TOOLKIT_API Extent extentOf(const Body& body);

/// The smallest box around both.
KORVO_TOOLKIT_API Box unite(const Box& a, const Box& b);

}  // namespace korvo
