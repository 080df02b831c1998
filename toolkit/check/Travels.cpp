#include "toolkit/check/Travels.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>

#include "platform/zgeo/UTools.h"

using zgeo::UTools;
using zkin::KMachineElem;

namespace korvo::checking {
namespace {

// Reads the limits as the library does: for the first element of a name among those above the line.
class Walk {
 public:
  explicit Walk(const Source& source) : source_(source) {
    for (const SourceLine& line : source.document.lines) read(line);
  }

  std::vector<Travel> take() { return std::move(travels_); }

 private:
  void read(const SourceLine& line) {
    const std::vector<int>& lines = source_.linked.lines;
    for (; next_ < lines.size() && lines[next_] <= line.number; ++next_) {
      const std::wstring& name = source_.linked.elements[next_].getElemName();
      rankOf_.emplace(UTools::_low(name), static_cast<int>(next_));
    }
    const bool isBoth = line.keyword == text::Keyword::limits;
    const bool isMin = isBoth || line.keyword == text::Keyword::minimum;
    const bool isMax = isBoth || line.keyword == text::Keyword::maximum;
    if (isMin || isMax) readLimits(line, isMin, isMax);
  }

  void readLimits(const SourceLine& line, bool isMin, bool isMax) {
    std::vector<std::wstring> operands;
    operands.reserve(line.statement.operands.size());
    for (const text::Token& token : line.statement.operands) operands.push_back(token.text);
    if (operands.empty()) return;
    const auto rank = rankOf_.find(UTools::_low(UTools::_removeFrom(operands[0], L"AXE_")));
    if (rank == rankOf_.end()) return;
    Travel& travel = travelOf(rank->second);
    int at = 1;
    if (isMin) readOne(line, operands, at, travel.min, travel.minPlace);
    if (isMax) readOne(line, operands, at, travel.max, travel.maxPlace);
  }

  static void readOne(const SourceLine& line, const std::vector<std::wstring>& operands, int& at,
                      std::optional<double>& value, Place& place) {
    const Place here = line.placeOf(at);
    double read = 0.0;
    value.reset();
    if (!KMachineElem::_readValue(operands, at, read)) return;
    value = read;
    place = here;
  }

  Travel& travelOf(int rank) {
    const auto [at, isNew] = indexOf_.emplace(rank, travels_.size());
    if (isNew) travels_.push_back({rank, {}, {}, {}, {}});
    return travels_[at->second];
  }

  const Source& source_;
  std::size_t next_ = 0;
  std::unordered_map<std::wstring, int> rankOf_;
  std::unordered_map<int, std::size_t> indexOf_;
  std::vector<Travel> travels_;
};

bool hasPoint(const KMachineElem& e) {
  return e.isTool() || e.getElemType() == KMachineElem::KMET_TYPE_AROT;
}

}  // namespace

std::vector<Travel> travelsOf(const Source& source) { return Walk(source).take(); }

std::vector<StatedPoint> pointsOf(const LinkedElements& linked) {
  std::vector<StatedPoint> points;
  for (std::size_t i = 0; i < linked.elements.size(); ++i) {
    const zgeo::UVec3d& p = linked.elements[i].getElemPivot();
    const double distance = std::hypot(p.x, p.y, p.z);
    if (!hasPoint(linked.elements[i]) || !std::isfinite(distance)) continue;
    points.push_back({static_cast<int>(i), p, distance});
  }
  return points;
}

const SourceLine& lineOf(const Source& source, int rank) {
  const int number = source.linked.lines[static_cast<std::size_t>(rank)];
  return *std::lower_bound(source.document.lines.begin(), source.document.lines.end(), number,
                           [](const SourceLine& l, int n) { return l.number < n; });
}

Place placeOf(const Source& source, int rank, Role role) {
  const SourceLine& line = lineOf(source, rank);
  const std::vector<Step> steps = stepsOf(line, source.format.version);
  const Step* step = stepOf(steps, role);
  if (!step || step->count == 0) return {line.number};
  return line.placeOf(step->first, step->count);
}

}  // namespace korvo::checking
