#include "tests/awkward/Awkward.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <numbers>
#include <string_view>

namespace korvo::test {

using zgeo::UVec3d;
using zkin::KMachine;

// --- tally

void Tally::add(const Marks& marks) {
  ++draws_;
  for (const std::string& mark : marks) ++counts_[mark];
}

void Tally::expectCommon(std::initializer_list<const char*> marks) const {
  const bool isUsual = drawCount(100) >= 100;  // too few draws for shares where it is less
  for (const char* mark : marks) {
    const auto found = counts_.find(mark);
    EXPECT_TRUE(!isUsual || (found != counts_.end() && found->second * 10 >= draws_)) << mark;
  }
  if (!std::getenv("KORVO_REPORT")) return;
  for (const auto& [mark, count] : counts_) {
    std::printf("  %5.1f %% of %d: %s\n", 100.0 * count / draws_, draws_, mark.c_str());
  }
}

int drawCount(int usual) {
  constexpr std::string_view kMore = "max_success=";
  const char* const params = std::getenv("RC_PARAMS");
  const std::string_view text = params ? params : "";
  const auto at = text.find(kMore);
  int cases = 100;  // of a RapidCheck property
  if (at != std::string_view::npos) cases = std::atoi(text.data() + at + kMore.size());
#ifdef KORVO_SANITIZED  // in other hosts RC_PARAMS asks for a tenth
  usual = (usual + 9) / 10;
#endif
  return std::max(1, usual * cases / 100);
}

int firstSeed() {
  const char* const seed = std::getenv("KORVO_SEED");
  return seed ? std::atoi(seed) : 0;
}

std::string textOf(const std::vector<double>& values) {
  std::string text;
  for (const double value : values) {
    char number[32];
    text += " " + std::string(number, std::to_chars(number, number + sizeof number, value).ptr);
  }
  return text;
}

std::string textOf(const UVec3d& v) { return textOf(std::vector{v.x, v.y, v.z}); }

// --- numbers

double slightly(Dice& dice) {
  constexpr double sizes[] = {0, 1e-15, 1e-12, 1e-9, 1e-7, 1e-5, 1e-3};
  return sizes[dice.below(7)] * (dice.oneIn(2) ? 1 : -1);
}

UVec3d anyUnit(Dice& dice) {
  while (true) {
    const UVec3d v(dice.between(-1, 1), dice.between(-1, 1), dice.between(-1, 1));
    if (v.norm() > 0.1 && v.norm() < 1) return v.normalised();
  }
}

namespace {

UVec3d turnedBy(const UVec3d& v, const UVec3d& axis, double rad) {
  return rounded(turned(exact(v), unit(exact(axis)),
                        static_cast<long double>(rad) * 180 / std::numbers::pi_v<long double>));
}

/// Directions and points that take those drawn before into account.
class Lines {
 public:
  Lines(Dice& dice, Marks& marks) : dice_(dice), marks_(marks) {}

  /// About `nominal`: itself, opposed to it, slightly off, like another rotary axis, or any.
  UVec3d direction(const UVec3d& nominal, bool isRotary) {
    UVec3d v = drawn(nominal, isRotary);
    if (isRotary) rotary_.push_back(v);
    constexpr double lengths[] = {1, 1, 1, 2, 1e-3, 1000, 0.7};
    return v * (lengths[dice_.below(7)] * (dice_.oneIn(4) ? -1 : 1));
  }

  UVec3d point() {
    points_.push_back(drawnPoint());
    return points_.back();
  }

 private:
  UVec3d drawn(const UVec3d& nominal, bool isRotary) {
    const int kind = dice_.below(12);
    if (kind == 0) return anyUnit(dice_);
    if (kind == 1) return (nominal + UVec3d(nominal.y, nominal.z, nominal.x)).normalised();
    if (kind < 5) return besides(nominal);
    if (kind < 8 && isRotary && !rotary_.empty()) {
      const UVec3d other =
          rotary_[static_cast<std::size_t>(dice_.below(static_cast<int>(rotary_.size())))];
      if (dice_.oneIn(3)) return besides(other);
      marks_.insert(mark::parallel);
      return other;
    }
    return nominal;
  }

  UVec3d besides(const UVec3d& v) {
    marks_.insert(mark::almostParallel);
    const double justNoLongerParallel = 0.0033;  // rad: where lines get points of their own
    const double angle = dice_.oneIn(6) ? justNoLongerParallel : slightly(dice_);
    return turnedBy(v, v ^ anyUnit(dice_), angle);
  }

  UVec3d drawnPoint() {
    const UVec3d before = points_.empty() ? UVec3d() : points_.back();
    switch (dice_.below(10)) {
      case 0:
      case 1:
        marks_.insert(mark::atOrigin);
        return {};
      case 2:
      case 3:
        marks_.insert(mark::onePoint);
        return before;
      case 4:
      case 5:
        marks_.insert(mark::almostMeeting);
        return before + anyUnit(dice_) * slightly(dice_);
      case 6:
        marks_.insert(mark::tiny);
        return before + anyUnit(dice_) * 1e-6;
      case 7:
        marks_.insert(mark::huge);
        return anyUnit(dice_) * 1e6;
      default:
        return {dice_.between(-400, 400), dice_.between(-400, 400), dice_.between(-400, 400)};
    }
  }

  Dice& dice_;
  Marks& marks_;
  std::vector<UVec3d> rotary_, points_;
};

// --- limits

void limit(AxisLine& axis, Dice& dice, Marks& marks) {
  const double way = axis.isRotary ? 180 : 1000;
  switch (dice.below(8)) {
    case 0:
      axis.min = -way, axis.max = way;
      break;
    case 1:
      axis.min = -way * dice.between(0.1, 0.9), axis.max = way * dice.between(0.1, 0.9);
      break;
    case 2:
      axis.min = -way;
      break;
    case 3:
      axis.max = way;
      break;
    case 4:
      if (axis.isRotary) marks.insert(mark::farLimits);
      axis.min = -8 * way, axis.max = 12 * way;
      break;
    default:
      break;
  }
}

void limitAll(AwkwardMachine& machine, LimitKinds kinds, Dice& dice) {
  if (kinds == LimitKinds::none) return;
  std::vector<AxisLine*> axes;
  for (AxisLine& axis : machine.lines.part) axes.push_back(&axis);
  for (AxisLine& axis : machine.lines.head) axes.push_back(&axis);
  for (AxisLine* axis : axes) limit(*axis, dice, machine.marks);
  AxisLine& one = *axes[static_cast<std::size_t>(dice.below(static_cast<int>(axes.size())))];
  if (dice.oneIn(6)) {
    machine.marks.insert(mark::equalLimits);
    one.min = one.max = dice.oneIn(2) ? 0.0 : dice.between(-90, 90);
  } else if (kinds == LimitKinds::any && dice.oneIn(5)) {
    machine.marks.insert(mark::crossedLimits);
    one.min = 10, one.max = -10;
  }
}

// --- machines

constexpr const char* kMills[] = {"|XYZ",   "XY|Z",    "A|XYZ",   "|XYZB",  "YC|XZ",  "AC|XYZ",
                                  "BC|XYZ", "YBC|XZ",  "C|XYZB",  "XA|YZB", "|XYZCB", "|XYZCA",
                                  "XY|ZCA", "|XUYZCA", "C|XYZBW", "|XYZC",  "|XYZCBA"};

UVec3d nominalOf(char letter) {
  const UVec3d directions[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  constexpr std::string_view letters = "XYZABCU_W";
  return directions[letters.find(letter) % 3];
}

/// The axes of a side get their numbers later.
std::vector<AxisLine> sideOf(std::string_view letters, Lines& lines) {
  std::vector<AxisLine> axes;
  for (const char letter : letters) {
    const bool isRotary = 'A' <= letter && letter <= 'C';
    const UVec3d direction = lines.direction(nominalOf(letter), isRotary);
    axes.push_back(isRotary ? rotary(std::string(1, letter), 0, direction, lines.point())
                            : linear(std::string(1, letter), 0, direction));
  }
  return axes;
}

/// Any order, with gaps.
void number(MachineLines& lines, Dice& dice) {
  std::vector<AxisLine*> axes;
  for (AxisLine& axis : lines.part) axes.push_back(&axis);
  for (AxisLine& axis : lines.head) axes.push_back(&axis);
  int next = 1;
  while (!axes.empty()) {
    const int i = dice.below(static_cast<int>(axes.size()));
    axes[static_cast<std::size_t>(i)]->number = next;
    axes.erase(axes.begin() + i);
    next += dice.oneIn(4) ? 3 : 1;
  }
}

double lengthOf(Dice& dice, Marks& marks) {
  if (!dice.oneIn(2)) return dice.oneIn(8) ? -12.5 : dice.between(1, 300);
  marks.insert(mark::noLength);
  return 0.0;
}

}  // namespace

AwkwardMachine awkwardMill(Dice& dice, LimitKinds limits) {
  AwkwardMachine machine;
  Lines lines(dice, machine.marks);
  const std::string_view layout = kMills[dice.below(static_cast<int>(std::size(kMills)))];
  const auto bar = layout.find('|');
  machine.lines.part = sideOf(layout.substr(0, bar), lines);
  machine.lines.head = sideOf(layout.substr(bar + 1), lines);
  machine.lines.toolDirection = lines.direction({0, 0, 1}, true);
  machine.lines.toolPoint = lines.point();
  for (int more = dice.oneIn(3) ? 2 : 0; more > 0; --more) {
    machine.lines.moreTools.push_back(
        {dice.oneIn(2), lines.direction({0, 0, 1}, true), lines.point()});
  }
  for (std::size_t i = 0; i <= machine.lines.moreTools.size(); ++i) {
    machine.lengths.push_back(lengthOf(dice, machine.marks));
  }
  number(machine.lines, dice);
  limitAll(machine, limits, dice);
  return machine;
}

namespace {

/// An offset that many arms do not have: none, a hair, or some.
double offset(Dice& dice, Marks& marks, double most) {
  const int kind = dice.below(4);
  if (kind == 0) return dice.between(-most, most);
  if (kind == 1) marks.insert(mark::almostMeeting);
  return kind == 1 ? slightly(dice) : 0.0;
}

UVec3d almost(const UVec3d& v, Dice& dice, Marks& marks) {
  if (!dice.oneIn(4)) return v;
  marks.insert(mark::almostParallel);
  return turnedBy(v, v ^ anyUnit(dice), slightly(dice));
}

/// The bend of the elbow, or of the wrist, at the zero position.
double bend(Dice& dice, Marks& marks, const char* straight) {
  if (dice.oneIn(2)) return dice.between(0.5, 2.5) * (dice.oneIn(2) ? 1 : -1);
  marks.insert(straight);
  return (dice.oneIn(4) ? std::numbers::pi : 0.0) + slightly(dice);
}

}  // namespace

AwkwardMachine awkwardArm(Dice& dice, LimitKinds limits) {
  AwkwardMachine machine;
  machine.isArm = true;
  Marks& marks = machine.marks;
  const UVec3d x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
  const UVec3d upper = turnedBy(z, y, dice.between(-1, 1));
  const UVec3d along = turnedBy(upper, y, bend(dice, marks, mark::straightElbow));
  UVec3d p[6];
  p[1] =
      p[0] + x * offset(dice, marks, 250) + y * offset(dice, marks, 150) + z * dice.between(0, 700);
  p[2] = p[1] + upper * dice.between(300, 1200) + y * offset(dice, marks, 150);
  p[3] = p[2] + along * dice.between(250, 1100) + (along ^ y) * offset(dice, marks, 150);
  p[4] = p[5] = p[3];
  if (dice.oneIn(3)) {
    marks.insert(mark::overFirst);
    p[0] = {p[3].x + slightly(dice), p[3].y, 0};
  }
  if (dice.oneIn(6)) {
    marks.insert(mark::almostMeeting);
    p[5] += anyUnit(dice) * slightly(dice);
    machine.wristMiss = p[5].distanceTo(p[3]);
  }
  const UVec3d last = turnedBy(along, y, bend(dice, marks, mark::straightWrist));
  const UVec3d directions[] = {z, y, y, along, y, last};
  for (int i = 0; i < 6; ++i) {
    const UVec3d direction = almost(directions[i], dice, marks) * (dice.oneIn(4) ? -1.0 : 1.0);
    machine.lines.head.push_back(rotary("J" + std::to_string(i + 1), i + 1, direction, p[i]));
  }
  if (dice.oneIn(8)) {
    machine.lines.head.insert(machine.lines.head.begin(),
                              linear("RAIL", 7, almost(x, dice, marks)));
  }
  const bool isFlange = dice.oneIn(2);
  machine.lines.toolPoint = p[5] + last * (isFlange ? dice.between(50, 200) : 0.0);
  machine.lines.toolDirection = last;
  if (dice.oneIn(3)) {
    machine.lines.toolPoint += anyUnit(dice) * dice.between(10, 200);
    machine.lines.toolDirection = anyUnit(dice) * 3.0;
  }
  machine.lengths = {lengthOf(dice, marks)};
  limitAll(machine, limits, dice);
  return machine;
}

AwkwardMachine awkwardMachine(Dice& dice, LimitKinds limits) {
  return dice.oneIn(3) ? awkwardArm(dice, limits) : awkwardMill(dice, limits);
}

std::unique_ptr<KMachine> AwkwardMachine::load() const {
  std::unique_ptr<KMachine> machine = loadMachine(lines.text(), 1);
  if (!machine) return nullptr;
  for (int tool = 1; tool <= tools(); ++tool) {
    machine->setTHELength(lengths[static_cast<std::size_t>(tool - 1)], tool);
  }
  return machine;
}

ExactPose AwkwardMachine::pose(const std::vector<double>& values, int tool) const {
  return poseAt(lines, values, tool, lengths[static_cast<std::size_t>(tool - 1)]);
}

Exact AwkwardMachine::tip(const std::vector<double>& values, int tool) const {
  const ExactPose at = pose(values, tool);
  return at.point - at.direction * lengths[static_cast<std::size_t>(tool - 1)];
}

double AwkwardMachine::directionBound(const std::vector<double>& values) const {
  double angles = 0.0;
  for (const PlacedAxis& axis : chainOf(lines)) {
    if (axis.line.isRotary) angles += std::abs(values[axis.place]) * std::numbers::pi / 180;
  }
  return std::numeric_limits<double>::epsilon() * (angles + 8.0 * (axes() + 1));
}

double offLine(const KMachine& machine, const AxisLine& line) {
  const UVec3d kept = machine.getElemByIndex(line.number)->getElemPivot();
  return static_cast<double>(
      length(cross(exact(kept) - exact(line.point), unit(exact(line.direction)))));
}

double AwkwardMachine::pointBound(const KMachine& machine,
                                  const std::vector<double>& values) const {
  double lever = lines.toolPoint.norm(), beside = 0.0;
  for (const ToolLine& tool : lines.moreTools) lever = std::max(lever, tool.point.norm());
  for (const double length : lengths) lever += std::abs(length);
  for (const PlacedAxis& axis : chainOf(lines)) {
    if (!axis.line.isRotary) lever += std::abs(values[axis.place]);
    if (!axis.line.isRotary) continue;
    lever += axis.line.point.norm();
    lever += machine.getElemByIndex(axis.line.number)->getElemPivot().norm();
    beside += offLine(machine, axis.line);
  }
  return lever * directionBound(values) + 2 * beside + std::numeric_limits<double>::min();
}

// --- positions

namespace {

double rotaryValue(Dice& dice, Marks& marks) {
  constexpr double turns[] = {180, 360, 540, 90};
  const double sign = dice.oneIn(2) ? 1 : -1;
  switch (dice.below(9)) {
    case 0:
      marks.insert(mark::nothing);
      return sign * (dice.oneIn(2) ? 0.0 : 5e-324);
    case 1:
    case 2:
      marks.insert(mark::turns);
      return sign * turns[dice.below(4)];
    case 3: {
      marks.insert(mark::slight);
      const double slight = sign * std::pow(10.0, -12 + dice.below(9));
      return dice.oneIn(3) ? 180 + slight : slight;
    }
    case 4:
      marks.insert(mark::manyTurns);
      return sign * (dice.oneIn(2) ? 1e6 : dice.between(1e5, 1e6));
    case 5:
      return 0.0;
    default:
      return dice.between(-180, 180);
  }
}

double linearValue(Dice& dice, Marks& marks) {
  switch (dice.below(6)) {
    case 0:
      marks.insert(mark::nothing);
      return dice.oneIn(2) ? -0.0 : 5e-324;
    case 1:
      return slightly(dice);
    case 2:
      return dice.between(-1e6, 1e6);
    default:
      return dice.between(-900, 900);
  }
}

/// On one of the limits or the next double on either side of it.
double limitValue(const AxisLine& axis, bool isInside, Dice& dice, Marks& marks) {
  const bool isMin = axis.max == kNoLimit || (axis.min != -kNoLimit && dice.oneIn(2));
  const double limit = isMin ? axis.min : axis.max;
  const int side = dice.below(3);
  if (side == 0) {
    marks.insert(mark::onLimit);
    return limit;
  }
  marks.insert(mark::oneUlp);
  const bool isUp = isInside ? isMin : side == 1;
  return std::nextafter(limit, isUp ? kNoLimit : -kNoLimit);
}

}  // namespace

std::vector<double> awkwardValues(const AwkwardMachine& machine, bool isInside, Dice& dice,
                                  Marks& marks) {
  std::vector<double> values(static_cast<std::size_t>(machine.axes()));
  for (const auto& [axis, place] : chainOf(machine.lines)) {
    double value = axis.isRotary ? rotaryValue(dice, marks) : linearValue(dice, marks);
    const bool isLimited = axis.min != -kNoLimit || axis.max != kNoLimit;
    if (isLimited && dice.oneIn(4)) value = limitValue(axis, isInside, dice, marks);
    if (isInside) value = std::max(axis.min, std::min(axis.max, value));
    values[place] = value;
  }
  return values;
}

}  // namespace korvo::test
