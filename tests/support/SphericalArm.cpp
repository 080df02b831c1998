#include "tests/support/SphericalArm.h"

#include <charconv>
#include <cmath>
#include <numbers>

#include "tests/support/MachineGenerator.h"

namespace korvo::test {
namespace {

using std::numbers::pi;
using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;

/// The shortest text that reads back as the same double.
std::string number(double value) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

std::string numbers(const UVec3d& v) { return number(v.x) + "," + number(v.y) + "," + number(v.z); }

UVec3d anyDirection(Dice& dice) {
  while (true) {
    const UVec3d v(dice.between(-1, 1), dice.between(-1, 1), dice.between(-1, 1));
    if (v.norm() > 0.1 && v.norm() < 1) return v.normalised();
  }
}

UVec3d turned(const UVec3d& v, const UVec3d& axis, double angle) {
  return v * std::cos(angle) + (axis ^ v) * std::sin(angle) +
         axis * ((axis * v) * (1 - std::cos(angle)));
}

/// At `angle` from a direction of length 1, on any side.
UVec3d besides(const UVec3d& v, double angle, Dice& dice) {
  const UVec3d across = (v ^ anyDirection(dice)).normalised();
  return turned(v, across, angle);
}

/// Where the lines lie, in a frame whose Z is the first one.
class Drawing {
 public:
  Drawing(Dice& dice, const ArmWishes& wishes) : dice_(dice), wishes_(wishes) {}

  void draw() {
    drawShoulder();
    drawWrist();
    drawTool();
    if (!wishes_.isUsual && !dice_.oneIn(3)) placeBase();
    for (UVec3d& d : directions) d = dice_.oneIn(4) ? -d : d;
  }

  std::array<UVec3d, 6> directions, points;
  UVec3d centre, toolDirection, toolPoint;

 private:
  double offset(double reach) { return dice_.oneIn(2) ? 0.0 : dice_.between(-reach, reach); }
  double lateral() { return wishes_.isPlanar ? 0.0 : offset(150); }

  /// Upper arm and forearm in the plane of X and Z, and aside from it by lateral offsets.
  void drawShoulder() {
    const UVec3d x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
    const bool isAny = !wishes_.isUsual && dice_.oneIn(4);
    directions[0] = z;
    directions[1] = isAny ? anyDirection(dice_) : y;
    directions[2] = isAny ? anyDirection(dice_) : y;
    const UVec3d upper = turned(z, y, dice_.between(-1, 1));
    along_ = turned(upper, y, dice_.between(0.6, 2.2) * (dice_.oneIn(2) ? 1 : -1));
    points[0] = {};
    points[1] = x * offset(250) + y * lateral() + z * dice_.between(200, 700);
    points[2] = points[1] + upper * dice_.between(300, 1200) + y * lateral();
    centre =
        points[2] + along_ * dice_.between(250, 1100) + (along_ ^ y) * offset(150) + y * lateral();
  }

  void drawWrist() {
    const bool isSquare = wishes_.isUsual || !dice_.oneIn(3);
    const double angle45 = isSquare ? pi / 2 : dice_.oneIn(2) ? pi / 3 : dice_.between(0.6, 2.5);
    const double angle56 = isSquare || dice_.oneIn(2) ? angle45 : dice_.between(0.6, 2.5);
    directions[3] = along_;
    directions[4] = besides(along_, angle45, dice_);
    directions[5] =
        turned(besides(directions[4], angle56, dice_), directions[4], dice_.between(-pi, pi));
    for (std::size_t i = 3; i < 6; ++i) points[i] = centre;
  }

  void drawTool() {
    const double length = dice_.between(50, 300);
    toolPoint = centre + directions[5] * length;
    toolDirection = dice_.oneIn(2) ? directions[5] : -directions[5];
    if (wishes_.isCoaxial) return;
    toolPoint += anyDirection(dice_) * dice_.between(20, 200);
    toolDirection = anyDirection(dice_);
  }

  void placeBase() {
    const UVec3d axis = anyDirection(dice_);
    const double angle = dice_.between(-pi, pi);
    const UVec3d to = anyDirection(dice_) * dice_.between(0, 1500);
    for (UVec3d& d : directions) d = turned(d, axis, angle);
    for (UVec3d& p : points) p = turned(p, axis, angle) + to;
    centre = turned(centre, axis, angle) + to;
    toolPoint = turned(toolPoint, axis, angle) + to;
    toolDirection = turned(toolDirection, axis, angle);
  }

  Dice& dice_;
  const ArmWishes& wishes_;
  UVec3d along_;  ///< Of the forearm.
};

std::string limitsOf(const std::string& name, Dice& dice) {
  return "limits=" + name + "," + number(-dice.between(90, 370)) + "," +
         number(dice.between(90, 370)) + "\n";
}

}  // namespace

SphericalArm sphericalArm(Dice& dice, const ArmWishes& wishes) {
  Drawing drawing(dice, wishes);
  drawing.draw();
  SphericalArm arm;
  arm.centre = drawing.centre;
  arm.directions = drawing.directions;
  for (std::size_t i = 0; i < 3; ++i) arm.points[i] = drawing.points[i];
  arm.text = "frame\n";
  if (wishes.hasTable) {
    arm.text += "rotation=TABLE,8," + numbers(anyDirection(dice)) + ",0,0," +
                numbers(anyDirection(dice) * 800.0) + "\n";
  }
  arm.text += "part=x,y,0,0,0\nlien=BATI\n";
  if (wishes.hasRail) arm.text += "axis=RAIL,7," + numbers(anyDirection(dice)) + "\n";
  for (std::size_t i = 0; i < 6; ++i) {
    const std::string n = std::to_string(i + 1);
    const UVec3d point = drawing.points[i] + drawing.directions[i] * dice.between(-300, 300);
    arm.text += "rotation=J" + n + "," + n + "," + numbers(drawing.directions[i]) + ",0,0," +
                numbers(point) + "\n";
    if (wishes.hasLimits) arm.text += limitsOf("J" + n, dice);
  }
  arm.text += "tool=" + numbers(drawing.toolDirection) + "," + numbers(drawing.toolPoint) + "\n";
  return arm;
}

std::unique_ptr<KMachine> SphericalArm::load() const { return loadMachine(text, 1); }

const zkin::KMachineElem* SphericalArm::jointOf(const KMachine& machine, int k) {
  return machine.getElemByIndex(k + 1);
}

}  // namespace korvo::test
