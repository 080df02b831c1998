#pragma once

#include <array>

#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UVec3d.h"

/// The machine table-ac by hand: the part on C about z, that on A about x through (., -0.5, 60); X,
/// Y and Z carry the tool, whose point at zero is (0, 0, 120) and which points along z. Nothing is
/// read or looked up, so this is the floor of what a query of that machine can cost.
namespace korvo::bench {

struct TableAc {
  struct Entry {
    double x, y, z, a, c;  ///< mm and degrees.
  };

  /// Tool frame: the product of the five motions, its origin at the moved tool point.
  static zgeo::UMatrix motion(const Entry& at);

  /// Tool point and direction.
  static void tool(const Entry& at, zgeo::UVec3d& point, zgeo::UVec3d& direction);

  /// Of the two ways to the direction that which turns C least from `from`, as the file's strategy
  /// has it, each axis by less than half a turn.
  static Entry nearest(const Entry& from, const zgeo::UVec3d& tip, const zgeo::UVec3d& direction);

  /// All entries within a turn each way and the linear travels.
  void solve(const zgeo::UVec3d& tip, const zgeo::UVec3d& direction);

  std::array<Entry, 8> entries;
  int count = 0;

 private:
  void add(const Entry& entry);
};

}  // namespace korvo::bench
