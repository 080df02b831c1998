#pragma once

#include <ostream>

#include "tools/geometry.h"

namespace korvo::tools {

/// Writes all of the answer as JSON, in pieces: a file of a hundred megabytes is never one text.
/// Doubles have 17 digits, those that are not finite are the texts "nan", "inf", "-inf". Bytes
/// above 127 are Latin-1 characters, escaped, so that what is written is ASCII.
void printJson(std::ostream& out, const GeometryAnswer& answer);

}  // namespace korvo::tools
