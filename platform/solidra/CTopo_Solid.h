#pragma once

#include <memory>
#include <vector>

#include "platform/solidra/CTopo_Face.h"
#include "platform/solidra/Export.h"

/// Owns faces.
class SOLIDRA_API CTopo_Solid {
 public:
  CTopo_Solid();
  ~CTopo_Solid();
  CTopo_Solid(const CTopo_Solid&) = delete;
  CTopo_Solid& operator=(const CTopo_Solid&) = delete;

  /// Owns `face` from now on. False for null; when memory is short it is deleted, and false too.
  bool AddFace(CTopo_Face* face);

  int GetFaceCount() const { return static_cast<int>(faces_.size()); }
  CTopo_Face* GetFace(int i) const { return faces_[static_cast<std::size_t>(i)].get(); }

 private:
  std::vector<std::unique_ptr<CTopo_Face>> faces_;
};
