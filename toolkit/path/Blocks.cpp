#include "toolkit/path/Blocks.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace korvo {
namespace {

/// Enough that threads are worth their start, few enough that a block of an arm whose tool is tried
/// in every turn stays in a few megabytes.
constexpr std::size_t kBlock = 1024;
constexpr std::size_t kArmBlock = 64;

/// As Toolpath.h has it.
constexpr std::size_t kSampled = 16;

class Writer {
 public:
  explicit Writer(std::vector<std::byte>& out) : at_(out.data()) {}

  template <typename T>
  void operator()(const T& value) {
    std::memcpy(at_, &value, sizeof value);
    at_ += sizeof value;
  }

 private:
  std::byte* at_;
};

class Reader {
 public:
  explicit Reader(const std::vector<std::byte>& in) : at_(in.data()), end_(at_ + in.size()) {}

  bool isAtEnd() const { return at_ == end_; }

  template <typename T>
  void operator()(T& value) {
    std::memcpy(&value, at_, sizeof value);
    at_ += sizeof value;
  }

 private:
  const std::byte* at_;
  const std::byte* end_;
};

/// One order of fields for both ways. Of machines that are no arms one distance is enough.
template <typename Via, typename OneSide>
void pass(Via& via, OneSide& side, const PathAxes& axes, bool isArm) {
  for (const PathAxis& axis : axes.all()) via(side.values[axis.at()]);
  via(side.singular[0]);
  if (isArm) {
    via(side.singular[1]);
    via(side.singular[2]);
    via(side.branch.shoulder);
    via(side.branch.elbow);
  }
  via(side.branch.wrist);
  via(side.freePlaces);
  via(side.isSample);
}

bool isArmLike(const PathAxes& axes) {
  return std::count_if(axes.all().begin(), axes.all().end(),
                       [](const PathAxis& axis) { return axis.isTurn; }) >= 6;
}

}  // namespace

void PackedBlock::pack(const SideBlock& block, const PathAxes& axes, std::size_t room) {
  const bool isArm = isArmLike(axes);
  const std::size_t bytes = axes.size() * 8 + 4 + (isArm ? 10 : 0) + 4;
  const std::size_t wanted = 2 * block.size() + bytes * block.sides.size();
  if (wanted > room) return;
  bytes_.resize(wanted);
  Writer write(bytes_);
  for (std::size_t i = 0; i < block.size(); ++i) {
    const std::span<const Side> sides = block.of(i);
    write(static_cast<std::uint16_t>(sides.size()));
    for (const Side& side : sides) pass(write, side, axes, isArm);
  }
}

SideBlock PackedBlock::unpack(const PathAxes& axes) const {
  const bool isArm = isArmLike(axes);
  SideBlock block;
  Side side;
  side.values = axes.reference();
  if (!isArm) side.singular.fill(std::numeric_limits<float>::infinity());
  for (Reader read(bytes_); !read.isAtEnd();) {
    std::uint16_t count = 0;
    read(count);
    for (int i = 0; i < count; ++i) {
      pass(read, side, axes, isArm);
      block.sides.push_back(side);
    }
    block.ends.push_back(block.sides.size());
  }
  return block;
}

BlockSource::BlockSource(const Sides& sides, std::span<const PathTarget> targets, int jobs,
                         const std::vector<PackedBlock>* kept)
    : sides_(sides),
      targets_(targets),
      jobs_(static_cast<std::size_t>(std::max(jobs, 1))),
      blockSize_(sides.solver().kind() == SolverKind::arm ? kArmBlock : kBlock),
      kept_(kept),
      nearest_(sides.axes().reference()) {}

SideBlock BlockSource::next() {
  if (jobs_ == 1) {
    SideBlock block = make(next_);
    carry(next_++, block);
    return block;
  }
  while (asked_ < blockCount() && ahead_.size() < jobs_) {
    ahead_.push_back(std::async(std::launch::async, [this, b = asked_] { return make(b); }));
    ++asked_;
  }
  SideBlock block = ahead_.front().get();
  ahead_.pop_front();
  carry(next_++, block);
  return block;
}

SideBlock BlockSource::make(std::size_t block) const {
  return isKept(block) ? (*kept_)[block].unpack(sides_.axes()) : solve(block);
}

SideBlock BlockSource::solve(std::size_t block) const {
  const std::size_t begin = block * blockSize_;
  const std::size_t end = std::min(begin + blockSize_, targets_.size());
  SideBlock solved;
  SideScratch scratch;
  solved.ends.reserve(end - begin);
  solved.sides.reserve(2 * (end - begin));
  for (std::size_t i = begin; i < end; ++i) {
    sides_.add(targets_[i].target, scratch, solved.sides);
    solved.ends.push_back(solved.sides.size());
  }
  return sides_.hasFamily(solved.sides) ? sampled(begin, solved) : solved;
}

bool BlockSource::isPinned(std::size_t target) const {
  std::vector<Side> sides;
  SideScratch scratch;
  sides_.add(targets_[target].target, scratch, sides);
  return sides_.isPinned(sides);
}

/// With the samples of families that are near a target where not all is free, before or behind.
SideBlock BlockSource::sampled(std::size_t begin, const SideBlock& own) const {
  const std::size_t end = begin + own.size();
  const std::size_t first = begin - std::min(begin, kSampled);
  const std::size_t last = std::min(end + kSampled, targets_.size());
  std::vector<std::size_t> pinned;  // ascending
  for (std::size_t i = first; i < last; ++i) {
    const bool isOwn = i >= begin && i < end;
    if (isOwn ? sides_.isPinned(own.of(i - begin)) : isPinned(i)) pinned.push_back(i);
  }
  SideBlock out;
  SideScratch scratch;
  for (std::size_t i = begin; i < end; ++i) {
    const std::size_t before = out.sides.size();
    const std::span<const Side> sides = own.of(i - begin);
    out.sides.insert(out.sides.end(), sides.begin(), sides.end());
    const auto next = std::lower_bound(pinned.begin(), pinned.end(), i - std::min(i, kSampled));
    const bool isNear = next != pinned.end() && *next <= i + kSampled;
    if (isNear && sides_.hasFamily(sides)) {
      sides_.sample(targets_[i].target, before, scratch, out.sides);
    }
    out.ends.push_back(out.sides.size());
  }
  return out;
}

/// In order and by one thread; kept blocks have it behind them.
void BlockSource::carry(std::size_t block, SideBlock& own) {
  if (!isKept(block) && isCarried(own)) own = carried(block, own);
  for (std::size_t i = own.size(); i-- > 0;) {
    if (own.of(i).empty()) continue;
    before_.assign(own.of(i).begin(), own.of(i).end());
    return;
  }
}

bool BlockSource::isCarried(const SideBlock& own) const {
  for (std::size_t i = 0; i < own.size(); ++i) {
    if (sides_.areCarried(own.of(i))) return true;
  }
  return false;
}

SideBlock BlockSource::carried(std::size_t block, const SideBlock& own) {
  SideBlock out;
  std::vector<Side> before = before_;
  for (std::size_t i = 0; i < own.size(); ++i) {
    const std::size_t first = out.sides.size();
    out.sides.insert(out.sides.end(), own.of(i).begin(), own.of(i).end());
    if (sides_.areCarried(own.of(i))) {
      const Target& target = targets_[block * blockSize_ + i].target;
      sides_.carry(target, before, first, nearest_, scratch_, out.sides);
    }
    out.ends.push_back(out.sides.size());
    if (!out.of(i).empty()) before.assign(out.of(i).begin(), out.of(i).end());
  }
  return out;
}

}  // namespace korvo
