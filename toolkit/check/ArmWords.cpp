#include "toolkit/check/ArmWords.h"

#include <string>

#include "toolkit/answer/Words.h"

namespace korvo::checking {
namespace {

Words off(const ArmFault& fault) {
  if (fault.off == 0) return "";
  const std::string figure = words(fault.off);
  if (fault.isAngle) return {": " + figure + " degrees off", " : " + figure + " degrés d'écart"};
  return {": " + figure + " mm off", " : " + figure + " mm d'écart"};
}

Text conditionOf(ArmCondition condition) {
  switch (condition) {
    case ArmCondition::enoughJoints:
      return {"fewer than four elements from the first rotary axis on",
              "moins de quatre éléments à partir du premier axe rotatif"};
    case ArmCondition::upright:
      return {"the first joint not upright (+z) on the Z line of the file",
              "la première articulation pas verticale (+z) sur la ligne Z du fichier"};
    case ArmCondition::firstInChain:
      return {"an axis before the first joint", "un axe avant la première articulation"};
    case ArmCondition::lowestNumbers:
      return {"the first three joints without the three lowest axis numbers",
              "les trois premières articulations sans les trois plus petits numéros d'axe"};
    case ArmCondition::shape:
      return {
          "the first four joints not rotary, the second not square to the first or the third "
          "not parallel to the second",
          "les quatre premières articulations pas rotatives, la deuxième pas "
          "perpendiculaire à la première ou la troisième pas parallèle à la deuxième"};
    case ArmCondition::fourthSquare:
      return {"the fourth joint not square to the third",
              "la quatrième articulation pas perpendiculaire à la troisième"};
    case ArmCondition::upperArm:
      return {"the second and the third joint on one line",
              "la deuxième et la troisième articulation sur une même ligne"};
    case ArmCondition::sameSense:
      return {"the third joint against the second, with an offset to the fourth",
              "la troisième articulation opposée à la deuxième, avec un décalage vers la "
              "quatrième"};
    case ArmCondition::ballWrist:
      return {"the last three joints not meeting in one point",
              "les trois dernières articulations sans point commun"};
    case ArmCondition::toolOnLastJoint:
      return {"the tool not on the line of the last joint",
              "l'outil pas sur la ligne de la dernière articulation"};
    default:
      return {"another tool on the same wrist, which is solved with that one's length",
              "un autre outil sur le même poignet, résolu avec la longueur de celui-là"};
  }
}

}  // namespace

Words wordsOf(const ArmFault& fault) {
  const Text text = conditionOf(fault.condition);
  const Words figure = off(fault);
  return {text.english + figure.english, text.french + figure.french};
}

}  // namespace korvo::checking
