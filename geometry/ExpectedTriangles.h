#pragma once

#include <cstddef>
#include <string>

namespace zkin {

/// About how many triangles `loadGeometryFile` will give, for a list that takes several files.
///
/// Those of a binary STL file or a few more; of ASCII STL some times as many, for its triangles are
/// longer. 0 for .zrn, of which only meshing tells, and when there is nothing to be read.
///
/// @errors  Never throws.
/// @cost    The file is opened, not read.
std::size_t expectedTriangles(const std::wstring& path);

}  // namespace zkin
