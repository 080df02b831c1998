#pragma once

#include <memory>
#include <vector>

#include "platform/solidra/CTopo_CoEdge.h"
#include "platform/solidra/Export.h"

/// The trimming curves of a face: all its loops together, in any order and direction.
class SOLIDRA_API CTopo_Wire {
 public:
  CTopo_Wire();
  ~CTopo_Wire();
  CTopo_Wire(const CTopo_Wire&) = delete;
  CTopo_Wire& operator=(const CTopo_Wire&) = delete;

  /// Flag bits, kept for their owner. They have no effect here.
  void SetFlags(int bits) { flags_ |= bits; }
  int GetFlags() const { return flags_; }

  /// Adds a piece. Pieces whose ends lie within `gap` (mm) of each other follow one another.
  ///
  /// @param direction,kind  Not used: which piece follows which is found from their ends.
  /// @param edge    Set to null: no edge is made.
  /// @return  Whether it was added: false for null, and when memory is short.
  /// @owner   The wire owns `coEdge` from now on, also when it was not added.
  bool AddCoEdge(CTopo_CoEdge* coEdge, int direction, int kind, CTopo_Edge*& edge, double gap);

  /// The number of pieces whose curves can bound something. Edges themselves are made while the
  /// face is meshed, by the mesh's own tolerance: neither argument has an effect.
  int MakeEdgeFromCoEdge(int kind, double deviation);

  /// The number of pieces added.
  int GetCoEdgeCount() const { return static_cast<int>(coEdges_.size()); }
  const CTopo_CoEdge* GetCoEdge(int i) const { return coEdges_[static_cast<std::size_t>(i)].get(); }

  /// The widest gap in mm that any piece was added with.
  double GetGap() const { return gap_; }

 private:
  std::vector<std::unique_ptr<CTopo_CoEdge>> coEdges_;
  double gap_ = 0;
  int flags_ = 0;
};
