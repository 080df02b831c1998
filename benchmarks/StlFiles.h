#pragma once

#include <string>

#include "benchmarks/Scratch.h"

/// STL files of triangles all over a machine's body.
namespace korvo::bench {

void writeBinaryStl(const Scratch& file, int triangles);
void writeTextStl(const Scratch& file, int triangles);

}  // namespace korvo::bench
