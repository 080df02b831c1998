#pragma once

#include <cstddef>
#include <filesystem>
#include <span>

#include "toolkit/Export.h"
#include "toolkit/export/Bodies.h"

/// Writers of bodies that stand at their place.
///
/// @errors  A file is written whole or not at all: WriteError when that cannot be done,
///          std::length_error when the format has no room for so many triangles. Left out are
///          triangles with a corner that is no number, or too large for single precision
///          (`extentOf` counts the others).
namespace korvo {

/// Binary STL in mm, machine frame. Normals are those of the corners' order, zero for triangles
/// without an area.
/// @cost  One pass, memory below 1 MB.
KORVO_TOOLKIT_API void writeStl(const std::filesystem::path& path, std::span<const Body> bodies);

/// Wavefront OBJ in mm, machine frame, UTF-8: one object for each body, and the file of its
/// materials beside it, of the same name with .mtl.
///
/// Objects and materials have the bodies' names, blanks as "_" and with "_2", "_3" behind those
/// that come again. Corners at the same place are one.
/// @cost  One pass, about 100 bytes of memory for each corner of the largest body.
KORVO_TOOLKIT_API void writeObj(const std::filesystem::path& path, std::span<const Body> bodies);

/// glTF 2.0, binary, in metres with Y up as the format wants it.
///
/// One node for each body that has triangles, with its name, its material and its motion as matrix
/// (left out where it is the identity); the corners below are in the body's own frame in mm. All
/// are children of one root, "machine", which scales by 0.001 and turns Z up to Y up. Faces are
/// flat and seen from both sides; triangles without an area are left out.
/// @errors  std::length_error also for a file of 4 GiB or more.
/// @cost  About 250 bytes of memory for each triangle, and 100 for each of the largest body.
KORVO_TOOLKIT_API void writeGlb(const std::filesystem::path& path, std::span<const Body> bodies);

/// How large a picture is, in pixels.
struct PictureSize {
  int width = 1200;
  int height = 900;
};

/// PNG: the machine from the front, right and above, as large as fits; isometric, flat shaded by
/// one light, on a light grey. X runs to the right and forward, Y to the right and back, Z up.
/// Which way triangles are turned plays no part.
///
/// @param size  From 1 to 16384 each way.
/// @cost  One pass over the triangles for every 4 million samples (9 a pixel), 40 MB of memory and
///        10 bytes a pixel.
KORVO_TOOLKIT_API void writePng(const std::filesystem::path& path, std::span<const Body> bodies,
                                PictureSize size = {});

}  // namespace korvo
