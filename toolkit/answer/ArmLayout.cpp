#include "toolkit/answer/ArmLayout.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numbers>

#include "toolkit/Text.h"
#include "toolkit/answer/FreeAxes.h"
#include "toolkit/answer/Sentences.h"
#include "toolkit/answer/Words.h"
#include "toolkit/solve/Cone.h"

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValueBase;

namespace korvo {
namespace {

// Sines and cosines below this are zero for the solver, and lengths (mm) below it nothing.
constexpr double kSmall = 1e-5;

constexpr double kRadToDeg = 180.0 / std::numbers::pi;

const UVec3d kUp(0, 0, 1);

bool isRotary(const KMachineElem* e) { return e->getElemType() == KMachineElem::KMET_TYPE_AROT; }

std::string nameOf(const KMachineElem* e) { return shownText(e->getElemName()); }

UVec3d unitOf(const KMachineElem* e) { return e->getElemAxis().normalised(); }

// How far from square two directions are (radians).
double fromSquare(const KMachineElem* a, const KMachineElem* b) {
  return std::asin(std::min(std::abs(unitOf(a) * unitOf(b)), 1.0));
}

// How far from parallel, in either sense (radians).
double fromParallel(const KMachineElem* a, const KMachineElem* b) {
  return std::atan2((unitOf(a) ^ unitOf(b)).norm(), std::abs(unitOf(a) * unitOf(b)));
}

// Distance of a point from the line of a joint.
double fromLine(const UVec3d& point, const KMachineElem* line) {
  return ((point - line->getElemPivot()) ^ unitOf(line)).norm();
}

Text textOf(ArmCondition condition) {
  namespace s = sentences;
  switch (condition) {
    case ArmCondition::enoughJoints:
      return s::kFewElements;
    case ArmCondition::upright:
      return s::kNotUpright;
    case ArmCondition::firstInChain:
      return s::kAxisBefore;
    case ArmCondition::lowestNumbers:
      return s::kHighNumbers;
    case ArmCondition::shape:
      return s::kShape;
    case ArmCondition::fourthSquare:
      return s::kFourthSquare;
    case ArmCondition::upperArm:
      return s::kUpperArm;
    case ArmCondition::sameSense:
      return s::kSameSense;
    case ArmCondition::ballWrist:
      return s::kBallWrist;
    case ArmCondition::toolOnLastJoint:
      return s::kToolOffLine;
    default:
      return s::kOtherTool;
  }
}

// With how far it is off, where that has a measure. Two conditions are said without one.
std::string saidOf(const ArmFault& fault, Language language) {
  const Words said =
      filled(textOf(fault.condition), {fault.joint ? nameOf(fault.joint) : std::string()});
  const bool isMeasured = fault.off != 0 && fault.condition != ArmCondition::sameSense;
  if (!isMeasured) return said.in(language);
  const Words off = fault.isAngle ? degrees(fault.off) : millimetres(fault.off);
  return filled(sentences::kOff, {said, off}, language);
}

}  // namespace

ArmLayout::ArmLayout(const KMachine& machine)
    : machine_(machine), chain_(machine.getToolChain(true, -1)) {
  tool_ = machine.getElemByIndex(KMachineElem::_getToolIndex(machine.getCurrentTool()));
  joints_.assign(std::find_if(chain_.begin(), chain_.end(), isRotary), chain_.end());
  UVec3d centre;
  const int wrist = machine.hasRotule(centre, machine.getCurrentTool());
  if (wrist > 0) wrist_ = machine.getElemByIndex(wrist);
}

namespace {

// The angle (radians) where it is off, else the distance (mm) where that is.
std::optional<ArmFault> lineFault(ArmCondition condition, const KMachineElem* joint, double angle,
                                  double distance) {
  if (!(angle < kSmall)) return ArmFault{condition, joint, angle * kRadToDeg, true};
  if (!(distance < kSmall)) return ArmFault{condition, joint, distance, false};
  return {};
}

}  // namespace

std::optional<ArmFault> ArmLayout::uprightFault() const {
  return lineFault(ArmCondition::upright, joints_[0], angleBetween(joints_[0]->getElemAxis(), kUp),
                   fromLine(UVec3d(), joints_[0]));
}

bool ArmLayout::isFirstInChain() const {
  const auto isAxis = [](const KMachineElem* e) { return e->getValueIndex() >= 0; };
  return std::find_if(chain_.begin(), chain_.end(), isAxis) ==
         std::find(chain_.begin(), chain_.end(), joints_[0]);
}

bool ArmLayout::hasLowestPlaces() const {
  for (int i = 0; i < 3; ++i) {
    if (joints_[static_cast<std::size_t>(i)]->getValueIndex() != i) return false;
  }
  return true;
}

std::optional<ArmFault> ArmLayout::shapeFault() const {
  const auto other = std::find_if_not(joints_.begin(), joints_.begin() + 4, isRotary);
  if (other != joints_.begin() + 4) return ArmFault{ArmCondition::shape, *other};
  const double square = fromSquare(joints_[0], joints_[1]);
  if (!(square < kSmall)) return lineFault(ArmCondition::shape, joints_[1], square, 0.0);
  return lineFault(ArmCondition::shape, joints_[2], fromParallel(joints_[1], joints_[2]), 0.0);
}

// Where two joints and the tool meet, the fourth joint's line has to pass there too. Where nothing
// meets, the first offset of the last three joints that is not 0 keeps their lines apart.
std::optional<ArmFault> ArmLayout::wristFault() const {
  if (wrist_) {
    const double apart = fromLine(wrist_->getElemPivot(), joints_[3]);
    return lineFault(ArmCondition::ballWrist, joints_[3], 0.0, apart);
  }
  std::vector<const Elem*> rotary;
  std::copy_if(joints_.begin(), joints_.end(), std::back_inserter(rotary), isRotary);
  const KMachineElem::_sUDHm& middle = rotary[rotary.size() - 2]->getDHmRef();
  const KMachineElem::_sUDHm& last = rotary.back()->getDHmRef();
  const double apart = std::max({std::abs(middle.a), std::abs(middle.d), std::abs(last.a)});
  return ArmFault{ArmCondition::ballWrist, rotary.back(), apart, false};
}

std::optional<ArmFault> ArmLayout::toolFault() const {
  const KMachineElem* last = *std::find_if(chain_.rbegin(), chain_.rend(), isRotary);
  return lineFault(ArmCondition::toolOnLastJoint, nullptr, fromParallel(last, tool_),
                   fromLine(tool_->getElemPivot(), last));
}

double ArmLayout::upperArm() const { return fromLine(joints_[2]->getElemPivot(), joints_[1]); }

// Of the fourth joint's line from the third's.
double ArmLayout::forearmOffset() const { return std::abs(joints_[3]->getDHmRef().a); }

// Signed along the tool, from the tip back to the wrist centre.
double ArmLayout::centreOffset() const {
  const bool isGun = tool_->getElemType() == KMachineElem::KMET_TYPE_DGUN;  // its tip stays
  return (wrist_->getElemPivot() - tool_->getElemPivot()) * unitOf(tool_) +
         (isGun ? 0.0 : tool_->getTHELength());
}

std::optional<double> ArmLayout::toolOffset() const {
  if (!wrist_) return {};
  return std::abs(centreOffset());
}

std::optional<double> ArmLayout::tipToCentre() const {
  if (!wrist_ || joints_.size() < 4 || toolFault()) return {};
  return centreOffset();
}

// The joint records are derived anew: those of shared joints may have been another tool's.
Machine ArmLayout::aimedAtCentre(const Machine& machine) const {
  Machine aimed = machine;
  aimed->getElemByIndex(tool_->getElemIndex())->setElemPivot(wrist_->getElemPivot());
  aimed->setTHELength(0.0, -1);
  aimed->initDHm(machine->getCurrentTool());
  return aimed;
}

// A tool of a higher number behind the same last joint: that joint keeps the wrist length of it.
const KMachineElem* ArmLayout::laterToolOnWrist() const {
  const KMachineElem* found = nullptr;
  for (int n = machine_.getCurrentTool() + 1; n <= machine_.getToolNumber(); ++n) {
    const auto other = machine_.getToolChain(true, n);
    if (std::find(other.begin(), other.end(), wrist_) != other.end()) found = other.back();
  }
  return found;
}

std::vector<ArmFault> ArmLayout::faults() const {
  if (joints_.size() < 4) return {{ArmCondition::enoughJoints}};
  std::vector<ArmFault> faults;
  const auto require = [&](bool isKept, const ArmFault& fault) {
    if (!isKept) faults.push_back(fault);
  };
  const auto none = [&](const std::optional<ArmFault>& fault) {
    if (fault) faults.push_back(*fault);
  };
  none(uprightFault());
  require(isFirstInChain(), {ArmCondition::firstInChain, joints_[0]});
  require(hasLowestPlaces(), {ArmCondition::lowestNumbers, joints_[0]});
  const std::optional<ArmFault> shape = shapeFault();
  none(shape);
  if (shape) return faults;
  none(lineFault(ArmCondition::fourthSquare, joints_[3], fromSquare(joints_[2], joints_[3]), 0.0));
  require(upperArm() > kSmall, {ArmCondition::upperArm, joints_[2]});
  require(unitOf(joints_[1]) * unitOf(joints_[2]) > 0 || forearmOffset() < kSmall,
          {ArmCondition::sameSense, joints_[2], forearmOffset()});
  none(wristFault());
  none(toolFault());
  require(!wrist_ || !laterToolOnWrist(), {ArmCondition::wristOfOneTool});
  return faults;
}

std::vector<std::string> ArmLayout::brokenByMachine(Language language) const {
  std::vector<std::string> broken;
  for (const ArmFault& fault : faults()) {
    if (fault.condition != ArmCondition::wristOfOneTool) broken.push_back(saidOf(fault, language));
  }
  return broken;
}

bool ArmLayout::isBehind(const Target& target) const {
  if (!wrist_) return false;
  const UVec3d centre = target.tip + target.direction.normalised() * centreOffset();
  const double lateral = wrist_->getElemPivot() * unitOf(joints_[1]);
  return std::abs(centre.y) <= kSmall && std::abs(lateral) <= kSmall && centre.x < 0;
}

std::vector<std::string> ArmLayout::brokenBehind(const Target& target, Language language) const {
  if (!isBehind(target)) return {};
  return {filled(sentences::kBehind, {}, language)};
}

bool ArmLayout::isTargetSolvable(const Target& target, const KMachineValueBase& from) const {
  if (isBehind(target)) return false;
  if (!wrist_) return true;
  // The solver takes the tool upright: what it misses is the offset times what the directions
  // differ.
  const UVec3d direction = target.direction.normalised();
  if (std::abs(centreOffset()) * (direction - kUp).norm() > kReachedMm) return false;
  UVec3d wristAxis;
  machine_.getElemAxis(from, wrist_->getElemIndex(), wristAxis);
  const bool isStraight = angleBetween(wristAxis, toolDirection(machine_, from)) < kSmall;
  return isStraight || tool_->getTHELength() <= 0;
}

// The wrist centre lies beside the first axis by `lateral`; in the plane of the arm that leaves two
// circles about the shoulder, as the arm faces the centre or turns its back on it.
std::optional<double> ArmLayout::outOfReach(const Target& target) const {
  if (!brokenByMachine(Language::english).empty()) return {};
  const UVec3d shoulder = joints_[1]->getElemPivot(), centreAtZero = wrist_->getElemPivot();
  const UVec3d centre = target.tip + target.direction.normalised() * centreOffset();
  const double lateral = centreAtZero * unitOf(joints_[1]);
  const double across = centre.x * centre.x + centre.y * centre.y - lateral * lateral;
  if (across < 0) return std::abs(lateral) - std::hypot(centre.x, centre.y);
  const UVec3d side = unitOf(joints_[1]);
  const UVec3d flat = shoulder - side * (shoulder * side);  // shoulder in the plane of the arm
  const double ahead = std::hypot(flat.x, flat.y), height = centre.z - flat.z;
  const double arm = upperArm(), forearm = fromLine(centreAtZero, joints_[2]);
  double missing = std::numeric_limits<double>::infinity();
  for (const double reach : {std::sqrt(across), -std::sqrt(across)}) {
    const double far = std::hypot(reach - ahead, height);
    missing = std::min(missing, Band{std::abs(arm - forearm), arm + forearm}.missing(far));
  }
  if (missing <= kReachedMm) return {};
  return missing;
}

}  // namespace korvo
