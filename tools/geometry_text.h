#pragma once

#include <ostream>

#include "tools/geometry.h"

namespace korvo::tools {

/// Writes all of the answer for people: the entities as a tree with every number read, each as the
/// shortest text that reads back as the same, then the measures of the triangles.
void printText(std::ostream& out, const GeometryAnswer& answer);

}  // namespace korvo::tools
