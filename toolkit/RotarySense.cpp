#include "toolkit/RotarySense.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

#include "toolkit/Sentence.h"

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

Words wayText(bool counter) {
  return counter ? Words("counter-clockwise", "dans le sens inverse des aiguilles d'une montre")
                 : Words("clockwise", "dans le sens des aiguilles d'une montre");
}

constexpr Text kBodyTurns{"at +90 {0} turns {1} seen from {2}: {3}",
                          "à +90 {0} tourne {1}, vu depuis {2} : {3}"};
constexpr Text kTableTurns{
    "at +90 the table turns {1} seen from {2}, so the tool {4} about the part: {3}",
    "à +90 la table tourne {1}, vu depuis {2}, donc l'outil {4} autour de la pièce : {3}"};

std::string sentence(const RotarySense& s, bool toolCounter, Language language) {
  const Words iso = s.isIso841
                        ? Words("the sense of ISO 841", "le sens de l'ISO 841")
                        : Words("against the sense of ISO 841", "contre le sens de l'ISO 841");
  const Words body =
      s.body == RotaryBody::arm ? Words("the arm", "le bras") : Words("the head", "la tête");
  return filled(s.body == RotaryBody::table ? kTableTurns : kBodyTurns,
                {body, wayText(s.bodyTurnsCounter), s.seenFrom, iso, wayText(toolCounter)},
                language);
}

}  // namespace

RotarySense rotarySense(const std::string& name, const zgeo::UVec3d& direction, RotaryBody body,
                        Language language) {
  const zgeo::UVec3d unit = direction.normalised();
  const int axis = referenceAxis(name, unit);
  const bool isPositive = component(unit, axis) > 0.0;
  RotarySense sense;
  sense.body = body;
  sense.seenFrom = viewpoint(isPositive ? unit : -unit, axis);
  sense.isIso841 = isPositive;
  sense.bodyTurnsCounter = body == RotaryBody::table ? !isPositive : isPositive;
  sense.text = sentence(sense, isPositive, language);
  return sense;
}

}  // namespace korvo
