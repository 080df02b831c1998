#include <optional>
#include <string_view>

#include "geometry/ZrnReading.h"

// Back to a header after something that did not fit.
namespace zkin {
namespace zrn {
namespace {

/// Passes over lines up to the next header and leaves that in the stream.
Skip findHeader(Reading& in) {
  for (;;) {
    if (!in.remember("SkipToNextEntity::fgetpos error\n")) return Skip::positionError;
    if (!in.nextLine()) {
      if (in.isAtEnd()) in.report("SkipToNextEntity::end of file\n");
      return Skip::end;  // a stream that broke never comes to its end
    }
    if (isHeader(in.line())) {
      const bool isBack = in.giveBack("SkipToNextEntity::fsetpos error\n");
      return isBack ? Skip::done : Skip::positionError;
    }
  }
}

bool isSubEntity(std::string_view line) {
  const std::optional<Header> header = headerOf(line);
  return header && ZRN_IsSubEntity(ZRN_KindOf(header->a, header->b, header->code));
}

/// From header to header as long as they are those of sub-entities. A loop: a file may have any
/// number of them in a row.
Skip passSubEntities(Reading& in) {
  for (;;) {
    if (!in.remember("SkipSubEntities::fgetpos error\n")) return Skip::positionError;
    if (!in.nextLine()) return Skip::done;
    if (!isSubEntity(in.line())) {
      const bool isBack = in.giveBack("SkipSubEntities::fsetpos error\n");
      return isBack ? Skip::done : Skip::positionError;
    }
    const Skip found = findHeader(in);
    if (found == Skip::end && in.isAtEnd()) return Skip::done;
    if (found != Skip::done) return found;
  }
}

}  // namespace

Skip skipToNextEntity(Reading& in, bool skipSubEntities) {
  const Skip found = findHeader(in);
  return found == Skip::done && skipSubEntities ? passSubEntities(in) : found;
}

}  // namespace zrn

bool SkipToNextEntity(std::FILE* stream, bool& errorFlag, bool skipSubEntities,
                      const ZRN_Callbacks& callbacks) {
  zrn::Reading in(stream, callbacks);
  const zrn::Skip skip = zrn::skipToNextEntity(in, skipSubEntities);
  errorFlag |= skip == zrn::Skip::positionError;
  return skip == zrn::Skip::done;
}

}  // namespace zkin
