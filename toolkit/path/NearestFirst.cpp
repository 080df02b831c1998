#include "toolkit/path/NearestFirst.h"

#include <vector>

#include "toolkit/answer/Values.h"
#include "toolkit/path/Margins.h"
#include "toolkit/path/Statistics.h"
#include "toolkit/path/Sweep.h"

namespace korvo {
namespace {

constexpr std::size_t kBetweenLooks = 1024;

class NearestFirst {
 public:
  NearestFirst(const Machine& machine, const ToolpathOptions& options, ToolpathReport& report)
      : solver_(machine, options.solver),
        axes_(solver_.chain(), options),
        costs_(axes_),
        statistics_(axes_, options, report),
        report_(report),
        hasStart_(options.start) {
    at_ = options.start ? *options.start : axes_.reference();
    report.axisCount = solver_.chain().axisCount;
  }

  void take(const PathTarget& target, std::size_t number, const PathSink& sink) {
    const Solution* const nearest = nearestTo(target.target);
    ++report_.done;
    if (!nearest) {
      report_.unreached.push_back(number);
      isGap_ = true;
      return;
    }
    PathPosition position = positionOf(*nearest, target, number);
    step(position);
    statistics_.take(position);
    if (sink) sink(position);
    at_ = position.values;
    last_ = position;
    isGap_ = false;
  }

 private:
  const Solution* nearestTo(const Target& target) {
    solver_.solve(target, at_, found_);
    const Solution* nearest = nullptr;
    for (const Solution& solution : found_) {
      if (!nearest || isNearer(solution.values, nearest->values, at_)) nearest = &solution;
    }
    return nearest;
  }

  PathPosition positionOf(const Solution& solution, const PathTarget& target,
                          std::size_t number) const {
    PathPosition position;
    position.target = number;
    position.values = solution.values;
    position.branch = solution.branch;
    position.singular = solution.singular;
    position.feed = target.feed;
    takeMargin(axes_, position);
    return position;
  }

  void step(PathPosition& position) {
    const std::vector<double> row = rowOf(position.values);
    report_.cost += axes_.marginCost(row.data());
    if (last_ || hasStart_) report_.cost += costs_.way(rowOf(at_).data(), row.data());
    if (!last_) return;
    const bool isBroken = !isGap_ && costs_.isBreak(rowOf(at_).data(), row.data());
    position.isAfterBreak = isGap_ || isBroken;
    if (isBroken) report_.breaks.push_back(breakBetween(axes_, *last_, position));
    if (!position.isAfterBreak) statistics_.takeStep(*last_, position);
  }

  std::vector<double> rowOf(const Values& values) const {
    std::vector<double> row;
    for (const PathAxis& axis : axes_.all()) row.push_back(values[axis.at()]);
    return row;
  }

  Solver solver_;
  PathAxes axes_;
  StepCosts costs_;
  Statistics statistics_;
  ToolpathReport& report_;
  bool hasStart_;
  Values at_{};
  std::optional<PathPosition> last_;
  bool isGap_ = false;
  std::vector<Solution> found_;
};

}  // namespace

ToolpathReport nearestFirst(const Machine& machine, const ToolpathOptions& options,
                            std::span<const PathTarget> targets, const PathSink& sink,
                            const ToolpathWatch& watch) {
  ToolpathReport report;
  report.targets = targets.size();
  NearestFirst path(machine, options, report);
  for (std::size_t i = 0; i < targets.size(); ++i) {
    path.take(targets[i], i, sink);
    const bool isLook = watch && (i + 1) % kBetweenLooks == 0;
    if (isLook && !watch({i + 1, i + 1, targets.size()})) break;
  }
  return report;
}

}  // namespace korvo
