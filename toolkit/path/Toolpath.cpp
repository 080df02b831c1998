#include "toolkit/path/Toolpath.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <future>
#include <numeric>

#include "toolkit/answer/Explain.h"
#include "toolkit/answer/Reach.h"
#include "toolkit/answer/Sentences.h"
#include "toolkit/answer/Values.h"
#include "toolkit/path/Between.h"
#include "toolkit/path/Blocks.h"
#include "toolkit/path/Margins.h"
#include "toolkit/path/Statistics.h"
#include "toolkit/path/Sweep.h"

namespace korvo {
namespace {

/// What a path may keep of its own, less than is promised by what blocks take beside it.
constexpr std::size_t kBytesPerTarget = 60;

}  // namespace

struct Toolpath::Task {
  Task(const Machine& m, const ToolpathOptions& o)
      : machine(m), options(o), sides(machine, options) {
    if (options.tolerance) between.emplace(machine, options, sides.axes());
  }

  Machine machine;
  ToolpathOptions options;
  Sides sides;
  std::optional<Between> between;
};

namespace {

/// Solved sides that are kept for the second pass, as many as there is room for.
class Kept {
 public:
  void take(const SideBlock& block, const PathAxes& axes, std::size_t room) {
    PackedBlock& packed = blocks_.emplace_back();
    packed.pack(block, axes, room > bytes_ ? room - bytes_ : 0);
    bytes_ += packed.size();
  }

  void skip() { blocks_.emplace_back(); }

  void shrink(std::size_t room) {
    for (auto block = blocks_.rbegin(); block != blocks_.rend() && bytes_ > room; ++block) {
      bytes_ -= block->size();
      block->clear();
    }
  }

  const std::vector<PackedBlock>& blocks() const { return blocks_; }

 private:
  std::vector<PackedBlock> blocks_;
  std::size_t bytes_ = 0;
};

/// The second pass: the positions of the best path, from the first to the last.
class Giving {
 public:
  using Targets = std::span<const PathTarget>;
  using Look = std::function<bool()>;

  /// `look` is asked by the thread that gives alone; false stops.
  Giving(const Sides& sides, const Sweep& sweep, const Between* between,
         const ToolpathOptions& options, Targets targets, const PathSink& sink, const Look& look,
         ToolpathReport& report)
      : sides_(sides),
        sweep_(sweep),
        between_(between),
        options_(options),
        targets_(targets),
        sink_(sink),
        look_(look),
        report_(report),
        costs_(sides.axes()),
        statistics_(sides.axes(), options, report) {}

  /// False once it was stopped: the report is that of what was given.
  bool give(const SideBlock& block, const std::vector<std::uint32_t>& chosen) {
    list(block, chosen);
    const std::size_t count = positions_.size();
    const std::size_t jobs = between_ ? static_cast<std::size_t>(std::max(options_.jobs, 1)) : 1;
    const std::size_t many = between_ ? jobs * kGivenAtOnce : count;
    for (std::size_t begin = 0; begin < count && !isStopped_; begin += many) {
      giveSome(begin, std::min(begin + many, count), jobs);
      if (report_.positions - looked_ >= kMostUnlooked) goesOn();
    }
    if (isStopped_) {
      leaveOut();
      return false;
    }
    next_ += block.size();
    report_.done = next_;
    return look_();
  }

 private:
  /// Positions of targets whose ways are filled by one thread before they are given.
  static constexpr std::size_t kGivenAtOnce = 32;
  static constexpr std::size_t kMostUnlooked = 1000;  ///< Positions given between two looks.

  /// What stands between the positions before, and how many of each; of the last none where it was
  /// stopped.
  struct Added {
    Between::Added all;
    std::vector<std::size_t> ends;
  };

  /// A position of a target, and what leads to it.
  struct Given {
    PathPosition position;
    bool isFollowing = false;  ///< The target before has a position, and there is no break.
    double cost = 0.0;         ///< Of all up to here.
  };

  void list(const SideBlock& block, const std::vector<std::uint32_t>& chosen) {
    if (!positions_.empty()) before_ = positions_.back().position;
    positions_.clear();
    for (std::size_t i = 0; i < block.size(); ++i) {
      const std::size_t target = next_ + i;
      if (chosen[i] == Sweep::kNone) {
        report_.unreached.push_back(target);
        isGap_ = true;
        continue;
      }
      add(stateOf(sides_.axes(), block.of(i), chosen[i]), target);
    }
  }

  void add(const State& state, std::size_t target) {
    const PathPosition* const last = lastTarget();
    Given given;
    PathPosition& p = given.position;
    p.target = target;
    p.values = state.values;
    p.branch = state.side->branch;
    p.singular = state.side->singularDistance();
    p.feed = targets_[target].feed;
    row_.clear();
    for (const PathAxis& axis : sides_.axes().all()) {
      row_.push_back(p.values[axis.at()]);
      if (axis.isEndless) p.values[axis.at()] = turned(row_.back(), axis.at());
    }
    takeMargin(sides_.axes(), p);
    cost_ += last ? costs_.way(lastRow_.data(), row_.data()) : sweep_.startCost(row_.data());
    cost_ += sides_.axes().marginCost(row_.data());
    given.cost = cost_;
    if (last && !isGap_) {
      given.isFollowing = !costs_.isBreak(lastRow_.data(), row_.data());
      if (!given.isFollowing) report_.breaks.push_back(breakBetween(sides_.axes(), *last, p));
    }
    p.isAfterBreak = last && !given.isFollowing;
    std::swap(lastRow_, row_);
    isGap_ = false;
    positions_.push_back(given);
  }

  const PathPosition* lastTarget() const {
    if (!positions_.empty()) return &positions_.back().position;
    return before_ ? &*before_ : nullptr;
  }

  /// An endless axis goes on from where it stands.
  double turned(double value, std::size_t place) const {
    const PathPosition* const last = lastTarget();
    if (!last && !options_.start) return value;
    const double from = last ? last->values[place] : (*options_.start)[place];
    return value + kFullTurn * std::round((from - value) / kFullTurn);
  }

  const PathPosition& positionBefore(std::size_t i) const {
    return i == 0 ? *before_ : positions_[i - 1].position;
  }

  /// The other threads stop when this one does.
  void giveSome(std::size_t begin, std::size_t end, std::size_t jobs) {
    const auto edge = [=](std::size_t job) { return begin + (end - begin) * job / jobs; };
    std::vector<std::future<Added>> added;
    for (std::size_t job = 1; job < jobs; ++job) {
      added.push_back(
          std::async(std::launch::async, [this, first = edge(job), last = edge(job + 1)] {
            return between(first, last, [this] { return !isStopped_; });
          }));
    }
    giveAll(between(edge(0), edge(1), [this] { return goesOn(); }), edge(0));
    for (std::size_t job = 1; job < jobs; ++job) {
      while (added[job - 1].wait_for(kBetweenLooks) != std::future_status::ready) goesOn();
      const Added some = added[job - 1].get();
      if (!isStopped_) giveAll(some, edge(job));
    }
  }

  static constexpr std::chrono::milliseconds kBetweenLooks{20};

  bool goesOn() {
    looked_ = report_.positions;
    if (!isStopped_ && !look_()) isStopped_ = true;
    return !isStopped_;
  }

  Added between(std::size_t begin, std::size_t end, const Between::GoesOn& goesOn) const {
    Added added;
    for (std::size_t i = begin; i < end; ++i) {
      const PathPosition& to = positions_[i].position;
      if (between_ && positions_[i].isFollowing) {
        const PathPosition& from = positionBefore(i);
        const bool isWhole = between_->add(targets_[from.target], targets_[to.target], to.target,
                                           from, to, goesOn, added.all);
        if (!isWhole) return added;
      }
      added.ends.push_back(added.all.positions.size());
    }
    return added;
  }

  void giveAll(const Added& added, std::size_t begin) {
    std::size_t next = 0;
    auto standing = added.all.standing.begin();
    for (std::size_t k = 0; k < added.ends.size(); ++k) {
      const std::size_t i = begin + k;
      for (; next < added.ends[k]; ++next) give(added.all.positions[next]);
      if (positions_[i].isFollowing) {
        statistics_.takeStep(positionBefore(i), positions_[i].position);
      }
      PathPosition& position = positions_[i].position;
      for (; standing != added.all.standing.end() && standing->target == position.target;
           ++standing) {
        position.isAfterBreak |= standing->behind == 1.0;
        report_.standing.push_back(*standing);
      }
      give(position);
      report_.cost = positions_[i].cost;
      report_.done = position.target + 1;
    }
  }

  void give(const PathPosition& position) {
    statistics_.take(position);
    if (sink_) sink_(position);
  }

  /// What was listed of targets that were not given any more.
  void leaveOut() {
    std::erase_if(report_.unreached, [this](std::size_t target) { return target >= report_.done; });
    std::erase_if(report_.breaks, [this](const PathBreak& b) { return b.target >= report_.done; });
  }

  const Sides& sides_;
  const Sweep& sweep_;
  const Between* between_;
  const ToolpathOptions& options_;
  Targets targets_;
  const PathSink& sink_;
  const Look& look_;
  ToolpathReport& report_;
  StepCosts costs_;
  Statistics statistics_;

  std::vector<Given> positions_;
  std::optional<PathPosition> before_;
  std::vector<double> lastRow_, row_;
  std::size_t next_ = 0;
  std::size_t looked_ = 0;
  double cost_ = 0.0;
  bool isGap_ = false;
  std::atomic<bool> isStopped_ = false;
};

void explain(std::span<const PathTarget> targets, const Machine& machine,
             const ToolpathOptions& options, const PathAxes& axes, ToolpathReport& report) {
  if (report.unreached.empty()) return;
  Reach reach(machine, options.solver, options.language);
  Position from = machine.position();
  setValues(axes.start(), from);
  for (std::size_t i = 0; i < report.unreached.size(); ++i) {
    const std::size_t target = report.unreached[i];
    if (i > 0 && report.unreached[i - 1] + 1 == target) continue;
    if (report.reasons.size() >= options.mostReasons) return;
    Answer answer = reach.nearest(targets[target].target, from);
    // A path leaves what targets leave to the start where it is.
    if (answer.status == Status::reached) explainStaying(machine, from, options.language, answer);
    report.reasons.emplace_back(target, std::move(answer));
  }
}

/// No target has a position from such a start, and none is looked for.
void refuseStart(const Machine& machine, const ToolpathOptions& options, const PathAxes& axes,
                 ToolpathReport& report) {
  report.done = report.targets;
  report.unreached.resize(report.targets);
  std::iota(report.unreached.begin(), report.unreached.end(), std::size_t{0});
  if (report.targets == 0 || options.mostReasons == 0) return;
  Answer answer(machine.position());
  setValues(axes.start(), answer.position);
  explainNoTarget(sentences::kStartTooFar, options.language, answer);
  report.reasons.emplace_back(0, std::move(answer));
}

}  // namespace

Toolpath::Toolpath(const Machine& machine, const ToolpathOptions& options)
    : task_(std::make_unique<const Task>(machine, options)) {}
Toolpath::Toolpath(Toolpath&&) noexcept = default;
Toolpath& Toolpath::operator=(Toolpath&&) noexcept = default;
Toolpath::~Toolpath() = default;

SolverKind Toolpath::kind() const { return task_->sides.solver().kind(); }

ToolpathReport Toolpath::run(std::span<const PathTarget> targets, const PathSink& sink,
                             const ToolpathWatch& watch) const {
  const Sides& sides = task_->sides;
  const ToolpathOptions& options = task_->options;
  ToolpathReport report;
  report.targets = targets.size();
  report.axisCount = sides.solver().chain().axisCount;

  if (sides.axes().isStartFar()) {
    refuseStart(task_->machine, options, sides.axes(), report);
    return report;
  }
  Sweep sweep(sides.axes(), options);
  Kept kept;
  bool isStopped = false;
  BlockSource first(sides, targets, options.jobs);
  for (std::size_t b = 0; b < first.blockCount() && !isStopped; ++b) {
    const SideBlock block = first.next();
    sweep.take(block);
    const std::size_t room = kBytesPerTarget * sweep.size();
    // What depends on the position before is told from block to block, so none is left out.
    if (!sides.isHistoric())
      kept.take(block, sides.axes(), room > sweep.bytes() ? room - sweep.bytes() : 0);
    else
      kept.skip();
    isStopped = watch && !watch({sweep.size(), 0, targets.size()});
  }
  const std::size_t room = kBytesPerTarget * sweep.size();
  kept.shrink(room > sweep.bytes() ? room - sweep.bytes() : 0);

  const std::size_t searched = sweep.size();
  const auto chosen = sweep.chosen();
  BlockSource second(sides, targets.first(searched), options.jobs, &kept.blocks());
  const Giving::Look look = [&] {
    return isStopped || !watch || watch({searched, report.done, targets.size()});
  };
  Giving giving(sides, sweep, task_->between ? &*task_->between : nullptr, options, targets, sink,
                look, report);
  for (std::size_t b = 0; b < second.blockCount(); ++b) {
    if (!giving.give(second.next(), chosen[b])) break;
  }
  explain(targets, task_->machine, options, sides.axes(), report);
  return report;
}

}  // namespace korvo
