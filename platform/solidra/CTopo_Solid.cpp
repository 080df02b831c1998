#include "platform/solidra/CTopo_Solid.h"

#include <exception>

CTopo_Solid::CTopo_Solid() = default;

CTopo_Solid::~CTopo_Solid() = default;

bool CTopo_Solid::AddFace(CTopo_Face* face) {
  std::unique_ptr<CTopo_Face> owned(face);
  if (!owned) return false;
  try {
    faces_.push_back(std::move(owned));
    return true;
  } catch (const std::exception&) {  // memory is short
    return false;
  }
}
