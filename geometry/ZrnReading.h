#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "geometry/ZrnFile.h"
#include "geometry/ZrnLines.h"

/// The steps of a load, over one open stream.
namespace zkin::zrn {

/// A stream that is being read: its present line, a place to go back to, and the caller's
/// callbacks.
class Reading {
 public:
  /// Both must live longer.
  Reading(std::FILE* stream, const ZRN_Callbacks& callbacks)
      : stream_(stream), callbacks_(callbacks) {}

  /// Asks the caller whether to stop and goes by the result.
  bool isCancelled() const;
  /// Asks the caller whether to stop and goes by the flag.
  bool isFlaggedToStop() const;
  void report(const char* text) const;

  /// False at the end of the file and on a read error.
  bool nextLine();
  std::string_view line() const { return line_.text(); }

  /// Remembers the place in the stream; reports `error` and returns false when that fails.
  bool remember(const char* error);
  /// Goes back to the remembered place, one line before the present one.
  bool giveBack(const char* error);

  /// Lines read and not given back.
  std::uint64_t linesTaken() const { return linesTaken_; }

  bool isAtEnd() const { return std::feof(stream_) != 0; }
  bool hasStreamError() const { return std::ferror(stream_) != 0; }
  std::FILE* stream() const { return stream_; }
  const ZRN_Callbacks& callbacks() const { return callbacks_; }

 private:
  std::FILE* stream_;
  const ZRN_Callbacks& callbacks_;
  Line line_;
  std::fpos_t place_ = {};
  std::uint64_t linesTaken_ = 0;
};

/// Reads a header's numbers, value and name into an entity.
void setHeader(CGeomFileEntity& entity, const Header& header);

/// Reads the data of an entity that must be of that kind.
bool readDatas(Reading& in, CGeomFileEntity& entity, ZRN_KIND expected);

/// What a skip came to.
enum class Skip {
  done,           ///< At a header, or at the end behind sub-entities.
  end,            ///< At the end of the file, or the stream broke.
  positionError,  ///< The stream's place could not be got or set.
};

Skip skipToNextEntity(Reading& in, bool skipSubEntities);

/// `positionError` is set when a skip inside could not get or set a place.
bool readTrimmingCurves(Reading& in, CGeomFileNode& node, bool& positionError);
bool readPatchSurfaces(Reading& in, CGeomFileNode& node, bool& positionError);
bool readAttributes(Reading& in, CGeomFileEntity& entity);
bool readNextEntity(Reading& in, CGeomFileNode& node, long long& surfaceCounter,
                    bool& positionError);

}  // namespace zkin::zrn
