#pragma once

#include <string>
#include <vector>

#include "platform/zgeo/Export.h"
#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UVec3d.h"

namespace zgeo {

/// A triangle of three points (mm). Its outside is where the corners run counter-clockwise.
struct KORVO_COLLISIONUTILS_API UTri {
  UVec3d p[3];

  constexpr UTri() = default;
  constexpr UTri(const UVec3d& a, const UVec3d& b, const UVec3d& c) : p{a, b, c} {}
  constexpr bool operator==(const UTri&) const = default;  ///< Exact.

  /// What `_loadSTL` returns: 0, or why there are no triangles.
  enum STL_RESULT {
    STL_LOADED = 0,
    STL_NO_FILE = -1,      ///< No regular file of that name opens for reading (missing, a folder).
    STL_READ_ERROR = -2,   ///< It opened, but the system failed to read it.
    STL_NO_STL = -3,       ///< Neither form: empty, too short, or another kind of text.
    STL_NO_TRIANGLE = -4,  ///< It announces triangles, and not one of them can be read.
    STL_NO_MEMORY = -5     ///< The triangles do not fit into memory.
  };

  /// Reads the triangles of an STL file, binary or ASCII.
  ///
  /// The content tells the forms apart: a file as long as a binary one of its count is binary,
  /// whatever its header says; else text that begins with the word "solid" and has a "facet" or an
  /// "endsolid" in its first 64 KB is ASCII (a UTF-8 mark before it is passed over), and other text
  /// is no STL; else it
  /// is binary, with as many triangles as its count says or, when there are fewer, as are there
  /// whole.
  ///
  /// In ASCII words are parted by any white space and matched ignoring case; a file may hold
  /// several solids. Numbers are what `scanf` takes in the C locale, correctly rounded to double.
  ///
  /// @units   As the file has them, mm by custom. Normals and attributes of the file are not used:
  ///          the order of the corners says where the outside is.
  /// @param path  Names a file as everywhere: any characters, also as written on Windows.
  /// @param[out] out  Emptied first (its storage is kept), then the triangles in the file's order.
  /// @return  STL_LOADED, also for a file of no triangles; else one of the other codes and an empty
  ///          list.
  /// @errors  A triangle is taken whole or not at all. Left out are ASCII facets that are not
  ///          `facet ... outer loop`, three times `vertex` and three numbers, `endloop endfacet`
  ///          (four corners, a missing number, "10,5", no `endfacet`, a word of more than 256 KB),
  ///          and in both forms triangles with a NaN or an infinity. Never throws, traces nothing.
  /// @owner   `out` is the caller's; the file is closed on return.
  /// @cost    The file is read once. Memory: the triangles and below 1 MB, whatever its count says.
  ///          The list reserves room for the most triangles that the file's size can hold, and for
  ///          ASCII these are more than there are: that room is address space, and no memory before
  ///          something is put there (`shrink_to_fit` gives it back).
  static int _loadSTL(const std::wstring& path, std::vector<UTri>& out);

  /// Moves every corner of `triangles` by `m`, in place: p becomes `m * p`.
  ///
  /// @frames  `m` carries from the frame that the triangles are in to the one they come out in.
  /// @errors  The order of corners stays, so a reflection turns the outside in.
  /// @cost    One pass, no allocation.
  static void _applyMatrix(const UMatrix& m, std::vector<UTri>& triangles);
};

}  // namespace zgeo
