#pragma once

#include <cstddef>

#include "benchmarks/FaceModels.h"

/// Bare OpenCASCADE, given surfaces and curves by the calls that were found to mesh them rightly.
namespace korvo::bench {

struct BareMesh {
  double deviation = 0;  ///< Of the triangles from the surface, measured; mm.
  std::size_t triangles = 0;
};

void meshBare(const FaceModel& face, double tolerance);

/// The same, and how far the triangles are from the surface, at samples all over each of them.
BareMesh measuredBare(const FaceModel& face, double tolerance);

}  // namespace korvo::bench
