#pragma once

#include <string>
#include <vector>

#include "kinematics/Export.h"
#include "platform/zgeo/UTri.h"

namespace zkin {

/// Reads the triangles of one body's file, STL or the text format .zrn: what an element's geometry
/// file gives before the element is placed.
///
/// The extension says which, whatever its case. It is that of the last component of the path (parts
/// end at "/" and at "\", on every system), cut at its first ":", from its last dot on. A component
/// whose only dot is its first character (".stl") has none; "C:part.stl" has none either, as its
/// component ends at the colon.
///
/// @param path  Names a file as everywhere: any characters, also as written on Windows. A name that
///              does not convert exactly to the system's encoding names no file.
/// @param[out] triangles  Emptied first (its storage is kept), then those of the file, in its
/// order.
/// @frames  The file's own.
/// @units   The file's own, mm by custom; a scale in a .zrn file is not applied. Its curved faces
///          are meshed within 0.01.
/// @errors  None is told: the list is empty when there is no such regular file to be read, when the
///          extension is another one, when the file does not load, and when memory is short. Never
///          throws, traces nothing.
/// @cost    The file is read, and a .zrn file is meshed, at every call: see `UTri::_loadSTL` and
///          `ZRN_FileToTriangles`.
KORVO_KINEMATICS_API void loadGeometryFile(const std::wstring& path,
                                           std::vector<zgeo::UTri>& triangles);

/// The file that is read for such a path, as the system spells it (UTF-8 on Windows): for callers
/// that ask whether two paths are one file. Empty when there is none, and when memory is short.
KORVO_KINEMATICS_API std::string geometryFilePath(const std::wstring& path);

}  // namespace zkin
