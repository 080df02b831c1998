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

/// How large a picture is, in pixels.
struct PictureSize {
  int width = 1200;
  int height = 900;
};

/// PNG: the machine from the front, right and above, as large as fits; isometric, flat shaded by
/// one light, on a light grey. X runs to the right and back, Z up. Which way triangles are turned
/// plays no part.
///
/// @param size  From 1 to 16384 each way.
/// @cost  One pass over the triangles for every 4 million samples (9 a pixel), 40 MB of memory and
///        10 bytes a pixel.
KORVO_TOOLKIT_API void writePng(const std::filesystem::path& path, std::span<const Body> bodies,
                                PictureSize size = {});

}  // namespace korvo
