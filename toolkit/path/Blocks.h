#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <future>
#include <span>
#include <vector>

#include "toolkit/path/Sides.h"

namespace korvo {

/// The sides of some targets that follow each other.
struct SideBlock {
  std::vector<Side> sides;
  std::vector<std::size_t> ends;  ///< Of each target's sides.

  std::size_t size() const { return ends.size(); }
  std::span<const Side> of(std::size_t i) const {
    const std::size_t begin = i == 0 ? 0 : ends[i - 1];
    return std::span<const Side>(sides).subspan(begin, ends[i] - begin);
  }
};

/// A block of sides in few bytes: what moves, and all its digits.
class PackedBlock {
 public:
  bool isEmpty() const { return bytes_.empty(); }
  std::size_t size() const { return bytes_.capacity(); }
  void clear() { std::vector<std::byte>().swap(bytes_); }

  /// Nothing where it would take more than `room` bytes.
  void pack(const SideBlock& block, const PathAxes& axes, std::size_t room);
  SideBlock unpack(const PathAxes& axes) const;

 private:
  std::vector<std::byte> bytes_;
};

/// All blocks of a path in order, solved by as many threads as wanted ahead of who takes them. What
/// a target's sides are depends on targets alone, never on the number of threads.
class BlockSource {
 public:
  /// Blocks that are in `kept` are unpacked instead of solved.
  BlockSource(const Sides& sides, std::span<const PathTarget> targets, int jobs,
              const std::vector<PackedBlock>* kept = nullptr);

  std::size_t blockCount() const { return (targets_.size() + blockSize_ - 1) / blockSize_; }
  std::size_t blockSize() const { return blockSize_; }

  BlockSource(const BlockSource&) = delete;
  BlockSource& operator=(const BlockSource&) = delete;

  SideBlock next();

 private:
  SideBlock make(std::size_t block) const;
  SideBlock solve(std::size_t block) const;
  bool isKept(std::size_t block) const { return kept_ && !(*kept_)[block].isEmpty(); }
  bool isPinned(std::size_t target) const;
  SideBlock sampled(std::size_t begin, const SideBlock& own) const;
  bool isCarried(const SideBlock& own) const;
  void carry(std::size_t block, SideBlock& own);
  SideBlock carried(std::size_t block, const SideBlock& own);

  const Sides& sides_;
  std::span<const PathTarget> targets_;
  std::size_t jobs_;
  std::size_t blockSize_;
  const std::vector<PackedBlock>* kept_ = nullptr;

  std::size_t next_ = 0;   // to be taken
  std::size_t asked_ = 0;  // to be solved
  std::deque<std::future<SideBlock>> ahead_;

  // What carries on from target to target.
  std::vector<Side> before_;
  Values nearest_;
  SideScratch scratch_;
};

}  // namespace korvo
