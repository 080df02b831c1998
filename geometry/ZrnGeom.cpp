#include "geometry/ZrnGeom.h"

#include "geometry/ZrnData.h"
#include "geometry/ZrnReading.h"

// The base class, and the entities that are no geometry: scaling and attributes.
namespace zkin {

// --- lines of text

std::string_view CGeomFileLines::operator[](std::size_t i) const {
  const std::size_t begin = i == 0 ? 0 : ends_[i - 1];
  return std::string_view(text_).substr(begin, ends_[i] - begin);
}

void CGeomFileLines::append(std::string_view line) {
  text_.append(line);
  ends_.push_back(text_.size());
}

void CGeomFileLines::reset() {
  text_.clear();
  ends_.clear();
}

// --- every entity

CGeomFilePrivateGeom::~CGeomFilePrivateGeom() = default;

CGeomFilePrivateGeom* CGeomFilePrivateGeom::GetGeom() { return this; }

const CGeomFilePrivateGeom* CGeomFilePrivateGeom::GetConstGeom() const { return this; }

// --- scaling

CGeomFilePrivateScaling::CGeomFilePrivateScaling() { CGeomFilePrivateScaling::Clear(); }

void CGeomFilePrivateScaling::Reset() { factor = 1.0; }

void CGeomFilePrivateScaling::Clear() { CGeomFilePrivateScaling::Reset(); }

bool CGeomFilePrivateScaling::ReadDatas(std::FILE* stream, const ZRN_CancelCallback&,
                                        const ZRN_ProgressCallback&, const ZRN_MessageCallback&) {
  Reset();
  return zrn::DataLines(stream).record(factor);
}

// --- attribute

CGeomFilePrivateAttribute::CGeomFilePrivateAttribute() { CGeomFilePrivateAttribute::Clear(); }

void CGeomFilePrivateAttribute::Reset() { lines.reset(); }

void CGeomFilePrivateAttribute::Clear() { lines = CGeomFileLines(); }

bool CGeomFilePrivateAttribute::ReadDatas(std::FILE* stream, const ZRN_CancelCallback& cancel,
                                          const ZRN_ProgressCallback& progress,
                                          const ZRN_MessageCallback& message) {
  Reset();
  const ZRN_Callbacks callbacks{cancel, progress, message};
  zrn::Reading in(stream, callbacks);
  for (;;) {
    if (!in.remember("CGeomFilePrivateAttribute::ReadDatas::fgetpos error\n")) return false;
    if (!in.nextLine()) return true;
    if (zrn::isHeader(in.line())) {
      return in.giveBack("CGeomFilePrivateAttribute::ReadDatas::fsetpos error\n");
    }
    lines.append(in.line());
  }
}

}  // namespace zkin
