#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/zgeo/UMatrix.h"

/// Triangle files by the plainest loops that get at their numbers.
namespace korvo::bench {

/// Nine doubles a triangle.
struct Doubles {
  explicit Doubles(std::size_t n) : count(n), at(std::make_unique_for_overwrite<double[]>(n)) {}

  std::size_t count;
  std::unique_ptr<double[]> at;
};

/// The corners of a binary STL file: mapped, and copied into fresh memory as doubles.
Doubles mapAndCopy(const std::string& path);

/// Every number of a text file, and nothing but the numbers.
std::vector<double> scanNumbers(const std::string& path);

/// The corners of some binary STL files, each file's moved by its matrix, in one loop.
Doubles readAndMove(const std::vector<std::string>& paths,
                    const std::vector<zgeo::UMatrix>& motions);

/// The triangles that assimp finds.
std::size_t loadAssimp(const std::string& path);

/// The corners that assimp finds, in the file's order.
std::vector<double> cornersOfAssimp(const std::string& path);

}  // namespace korvo::bench
