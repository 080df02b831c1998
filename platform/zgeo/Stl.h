#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <vector>

#include "platform/zgeo/UTri.h"

/// The two forms of STL file, read in blocks. None of it is exported.
namespace zgeo::stl {

/// A binary file: a header without meaning, the count of records, the records.
inline constexpr std::size_t kHeaderSize = 80, kRecordsAt = 84, kRecordSize = 50;

/// Appends the finite ones of at most `count` triangles from where `file` stands; false when the
/// system failed to read. It reserves room for `count`: that they fit into the file is the caller's
/// to check. Lets std::bad_alloc through.
bool readBinary(std::FILE* file, std::uint64_t count, std::vector<UTri>& out);

/// Appends the whole and finite facets of a text of `size` bytes from where `file` stands; false
/// when the system failed to read. `hasFacet` says whether any facet was there. Lets std::bad_alloc
/// through.
bool readText(std::FILE* file, std::uint64_t size, std::vector<UTri>& out, bool& hasFacet);

/// Whether a text that begins with `head` is an ASCII STL file.
bool isText(std::string_view head);

/// Whether `bytes` hold no control character but white space, and no FF: no text has that, while
/// programs that do not know their count write four of them.
bool isPlain(std::string_view bytes);

}  // namespace zgeo::stl
