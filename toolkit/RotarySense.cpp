#include "toolkit/RotarySense.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

namespace korvo {
namespace {

double component(const zgeo::UVec3d& v, int i) { return i == 0 ? v.x : i == 1 ? v.y : v.z; }

// Below this a direction is square to a coordinate axis: a tenth of the smallest angle that a
// machine maker states (0.001 degrees).
constexpr double kSquare = 1e-6;

int largest(const zgeo::UVec3d& v) {
  int best = 0;
  for (int i = 1; i < 3; ++i) {
    if (std::abs(component(v, i)) > std::abs(component(v, best)) + kSquare) best = i;
  }
  return best;
}

// The coordinate axis whose positive end the axis is judged by.
int referenceAxis(const std::string& name, const zgeo::UVec3d& direction) {
  if (name.size() == 1) {
    const int letter = (name[0] | 0x20) - 'a';
    const bool isRotaryName = letter >= 0 && letter < 3;
    if (isRotaryName && std::abs(component(direction, letter)) > kSquare) return letter;
  }
  return largest(direction);
}

std::string shortNumber(double value) {
  char text[32];
  const double rounded = std::round(value * 1e4) / 1e4 + 0.0;  // no "-0"
  return {text, std::to_chars(text, text + sizeof text, rounded).ptr};
}

std::string viewpoint(const zgeo::UVec3d& positive, int axis) {
  if (component(positive, axis) > 1.0 - kSquare) return std::string("+") + "XYZ"[axis];
  return "(" + shortNumber(positive.x) + ", " + shortNumber(positive.y) + ", " +
         shortNumber(positive.z) + ")";
}

const char* wayText(bool counter) { return counter ? "counter-clockwise" : "clockwise"; }

std::string sentence(const RotarySense& s, bool toolCounter) {
  const std::string from = " seen from " + s.seenFrom;
  const std::string iso = s.isIso841 ? "the sense of ISO 841" : "against the sense of ISO 841";
  if (s.body != RotaryBody::table) {
    const std::string body = s.body == RotaryBody::arm ? "the arm" : "the head";
    return "at +90 " + body + " turns " + wayText(s.bodyTurnsCounter) + from + ": " + iso;
  }
  return std::string("at +90 the table turns ") + wayText(s.bodyTurnsCounter) + from +
         ", so the tool " + wayText(toolCounter) + " about the part: " + iso;
}

}  // namespace

RotarySense rotarySense(const std::string& name, const zgeo::UVec3d& direction, RotaryBody body) {
  const zgeo::UVec3d unit = direction.normalised();
  const int axis = referenceAxis(name, unit);
  const bool isPositive = component(unit, axis) > 0.0;
  RotarySense sense;
  sense.body = body;
  sense.seenFrom = viewpoint(isPositive ? unit : -unit, axis);
  sense.isIso841 = isPositive;
  sense.bodyTurnsCounter = body == RotaryBody::table ? !isPositive : isPositive;
  sense.text = sentence(sense, isPositive);
  return sense;
}

}  // namespace korvo
