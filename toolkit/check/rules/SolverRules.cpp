// What the loaded machine answers: its class, its solver, its axes against each other.

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>
#include <string>

#include "toolkit/RotarySense.h"
#include "toolkit/Text.h"
#include "toolkit/answer/Answer.h"
#include "toolkit/answer/ArmLayout.h"
#include "toolkit/answer/Words.h"
#include "toolkit/check/ArmWords.h"
#include "toolkit/check/Rule.h"
#include "toolkit/check/SolverView.h"
#include "toolkit/check/Travels.h"
#include "toolkit/solve/Cone.h"

using zgeo::UVec3d;
using zkin::KMachineElem;

namespace korvo::checking {
namespace {

constexpr double kRadToDeg = 180.0 / std::numbers::pi;

Findings refused(const Source& source) {
  if (source.machine) return {};
  return {Finding({}, {})};
}

// Rank of an element, which a copy of the machine shares.
int rankOf(const Machine& machine, const KMachineElem* element) {
  for (int r = 0; r < machine->getElemNumber(); ++r) {
    if (machine->getElemByRank(r) == element) return r;
  }
  return 0;
}

Place placeOf(const Source& source, const View& view, const KMachineElem* element, Role role) {
  return placeOf(source, rankOf(view.machine, element), role);
}

std::string nameOf(const KMachineElem* e) { return inQuotes(e->getElemName()); }

using Axes = std::vector<StandingAxis>;

// Counted from the tool, they are told as the file has them.
std::string namesOf(const Axes& axes) {
  std::string names;
  for (auto axis = axes.rbegin(); axis != axes.rend(); ++axis) {
    appendWord(names, nameOf(axis->element));
  }
  return names;
}

Findings noRotaryAxis(const Source&, View& view) {
  if (!view.rotary.empty() || !view.hasTriple()) return {};
  return {Finding({}, {namesOf(view.linear)})};
}

Words shapeOf(const View& view) {
  switch (view.kine.armType) {
    case 3:
      return {"a linear and a rotary axis", "un axe linéaire et un axe rotatif"};
    case 4:
      return {"two linear axes", "deux axes linéaires"};
    default:
      return {"something else", "autre chose"};
  }
}

Findings classRefused(const Source& source, View& view) {
  if (!view.isUnknownArm()) return {};
  const KMachineElem* first = view.rotary.front().element;
  return {Finding(Place{lineOf(source, rankOf(view.machine, first)).number},
                  {shapeOf(view), nameOf(first)})};
}

Findings linearMissing(const Source&, View& view) {
  if (!view.isLinearMissing()) return {};
  const Words none("none", "aucun");
  return {Finding({}, {view.linear.empty() ? none : Words(namesOf(view.linear))})};
}

// The code is that of the last triple, also where an earlier one was solved.
bool isSolvedWithACode(View& view) {
  const Target target = view.targetAt(view.zero);
  Position out = view.zero;
  const int code = view.machine->getConfigPlus(view.zero, target.tip, target.direction, out);
  return code != 0 && residual(view.machine, out, target).isReached();
}

Findings linearDependent(const Source& source, View& view) {
  if (view.linear.size() < 4 || view.rotary.empty() || view.isArm()) return {};
  const Axes last(view.linear.end() - 3, view.linear.end());
  if (areIndependent(last[0], last[1], last[2]) || !isSolvedWithACode(view)) return {};
  return {Finding(placeOf(source, view, last[0].element, Role::direction), {namesOf(last)})};
}

// --- arms

// What a builder meant to be 0 and measured, or rounded, is within these (degrees, mm); what is
// built so lies far beyond.
bool isAlmostMet(const ArmFault& fault) { return fault.off > 0 && fault.off <= 1.0; }

Findings armFaults(const Source& source, const View& view, bool wantsAlmostMet) {
  if (!view.isArm()) return {};
  Findings findings;
  for (const ArmFault& fault : ArmLayout(*view.machine).faults()) {
    if (isAlmostMet(fault) != wantsAlmostMet) continue;
    findings.push_back(Finding(placeOf(source, view, fault.joint ? fault.joint : view.tool,
                                       fault.isAngle ? Role::direction : Role::point),
                               {wordsOf(fault)}));
  }
  return findings;
}

Findings armAlmost(const Source& source, View& view) { return armFaults(source, view, true); }
Findings armOther(const Source& source, View& view) { return armFaults(source, view, false); }

Findings armOffset(const Source& source, View& view) {
  if (!view.isArm()) return {};
  const ArmLayout arm(*view.machine);
  const double offset = arm.faults().empty() ? arm.toolOffset().value_or(0.0) : 0.0;
  if (offset <= kReachedMm) return {};
  return {Finding(placeOf(source, view, view.tool, Role::point), {words(offset)})};
}

// --- axes against each other

// Below the first a direction was written as well as it can be, above the second (degrees) it is
// meant: calibrated axes are a few thousandths off, and inclined ones degrees.
constexpr double kWrittenParallel = 1e-9, kWrittenSquare = 1e-7, kMeantApart = 0.05;

struct Line {
  const KMachineElem* element;
  UVec3d direction;
};

// Rotary axes and the tool, root first. Arms have conditions of their own.
std::vector<Line> turningLines(const View& view) {
  std::vector<Line> lines;
  if (view.isArm() || view.isUnknownArm() || view.rotary.empty()) return lines;
  for (const StandingAxis& axis : view.rotary) lines.push_back({axis.element, axis.direction});
  lines.push_back({view.tool, view.tool->getElemAxis()});
  return lines;
}

double fromParallel(const Line& a, const Line& b) {
  const double angle = angleBetween(a.direction, b.direction) * kRadToDeg;
  return std::min(angle, 180.0 - angle);
}

double fromSquare(const Line& a, const Line& b) { return std::abs(90.0 - fromParallel(a, b)); }

// Each element once, against the first that it is almost parallel or square to.
Findings almost(const Source& source, const View& view,
                double (*fromNominal)(const Line&, const Line&), double written) {
  Findings findings;
  const std::vector<Line> lines = turningLines(view);
  for (auto b = lines.begin(); b != lines.end(); ++b) {
    const auto a = std::find_if(lines.begin(), b, [&](const Line& line) {
      const double by = fromNominal(line, *b);
      return by > written && by < kMeantApart;
    });
    if (a == b) continue;
    findings.push_back(
        Finding(placeOf(source, view, b->element, Role::direction),
                {nameOf(b->element), nameOf(a->element), words(fromNominal(*a, *b))}));
  }
  return findings;
}

Findings almostParallel(const Source& source, View& view) {
  return almost(source, view, fromParallel, kWrittenParallel);
}
Findings almostSquare(const Source& source, View& view) {
  return almost(source, view, fromSquare, kWrittenSquare);
}

// Makers of arms have senses of their own.
Findings senses(const Source& source, View& view) {
  if (view.isArm() || view.isUnknownArm()) return {};
  Findings findings;
  for (const StandingAxis& axis : view.rotary) {
    const KMachineElem* e = axis.element;
    if (axis.direction.norm2() < 0.5) continue;  // none: that is told
    const RotaryBody body = e->isInverted() ? RotaryBody::table : RotaryBody::head;
    const RotarySense sense = rotarySense(shownText(e->getElemName()), e->getElemAxis(), body);
    if (sense.isIso841) continue;
    const bool isTable = body == RotaryBody::table;
    findings.push_back(
        Finding(placeOf(source, view, e, Role::direction),
                {nameOf(e), isTable ? Words("the table", "la table") : Words("the head", "la tête"),
                 sense.bodyTurnsCounter ? Words("counter-clockwise", "dans le sens antihoraire")
                                        : Words("clockwise", "dans le sens horaire"),
                 sense.seenFrom}));
  }
  return findings;
}

// --- there and back

bool haveDirections(const Axes& axes) {
  return std::all_of(axes.begin(), axes.end(),
                     [](const StandingAxis& a) { return a.direction.norm2() > 0.5; });
}

bool haveOwnPlaces(const View& view) {
  std::set<int> places;
  for (const Axes* axes : {&view.rotary, &view.linear}) {
    for (const StandingAxis& axis : *axes) {
      if (!places.insert(axis.place()).second) return false;
    }
  }
  return true;
}

// What other rules speak of is not said again.
bool isExpectedBack(const Source& source, const View& view) {
  constexpr double kFar = 1e5;  // rounding shows on points further away (mm)
  for (const StatedPoint& p : pointsOf(source.linked)) {
    if (p.distance > kFar) return false;
  }
  if (view.rotary.empty() || view.isUnknownArm() || view.isLinearMissing()) return false;
  if (view.isArm() && !ArmLayout(*view.machine).faults().empty()) return false;
  if (view.tool->getElemAxis().norm2() < 0.5) return false;
  return haveDirections(view.rotary) && haveDirections(view.linear) && haveOwnPlaces(view);
}

Findings roundTrip(const Source& source, View& view) {
  if (!isExpectedBack(source, view)) return {};
  const Trips trips = view.trips();
  if (trips.back == trips.tried) return {};
  return {Finding({}, {trips.back, trips.tried, words(trips.worst.pointMm),
                       words(trips.worst.directionRad * kRadToDeg)})};
}

// Nothing of a machine that was refused, or that no solver should be asked about.
template <Findings (*find)(const Source&, View&)>
Findings withView(const Source& source) {
  if (!source.machine || !isAnswering(*source.machine)) return {};
  View view(*source.machine);
  return view.isSane ? find(source, view) : Findings();
}

constexpr Rule kRules[] = {
    {.code = "not-loaded",
     .severity = Severity::error,
     .stage = Stage::machine,
     .sentence = {"expected a complete machine, found that the library refused it",
                  "machine complète attendue, mais la bibliothèque l'a refusée"},
     .suggestion = {},
     .meaning = {"The library reads the file and gives a code that is not 0, for a reason that no "
                 "other rule knows. Please tell us of such a file.",
                 "La bibliothèque lit le fichier et donne un code différent de 0, pour une raison "
                 "qu'aucune autre règle ne connaît. Merci de nous signaler un tel fichier."},
     .wrong = "",
     .right = "",
     .find = refused},
    {.code = "no-rotary-axis",
     .severity = Severity::note,
     .stage = Stage::machine,
     .sentence = {"expected a rotary axis for the solver, found linear axes only: {0}",
                  "axe rotatif attendu pour le solveur, trouvé : des axes linéaires seulement : "
                  "{0}"},
     .suggestion = {},
     .meaning = {"The library solves a position by turning the tool first, so that it answers no "
                 "target of a machine without a rotary axis. \"korvo inverse\" carries the tool "
                 "there by the linear axes alone; a program of your own has to do the same.",
                 "La bibliothèque résout une position en tournant d'abord l'outil : elle ne "
                 "répond à aucune cible d'une machine sans axe rotatif. « korvo inverse » y "
                 "amène l'outil par les seuls axes linéaires ; votre programme doit faire de "
                 "même."},
     .wrong = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=X,1,x\n"
              "axis=Y,2,y\n"
              "axis=Z,3,z\n"
              "tool=z,0,0,0\n",
     .right = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=X,1,x\n"
              "axis=Y,2,y\n"
              "axis=Z,3,z\n"
              "rotation=C,6,z,0,0,0,0,0\n"
              "tool=z,0,0,0\n",
     .exampleFormat = Format::version1,
     .find = withView<noRotaryAxis>},
    {.code = "class-refused",
     .severity = Severity::warning,
     .stage = Stage::machine,
     .sentence = {"expected two joints right behind the first rotary axis of an arm, found {0} "
                  "behind {1}",
                  "deux articulations attendues juste après le premier axe rotatif d'un bras, "
                  "trouvé : {0} après {1}"},
     .suggestion = {"hang bodies beside the chain: a line \"lien\" with the joint behind each",
                    "accrochez les corps à côté de la chaîne : une ligne « lien » avec "
                    "l'articulation après chacun"},
     .meaning = {"An arm is known by the elements that follow its first rotary axis. In any "
                 "other order, a body between two joints included, the solver turns the wrist "
                 "alone: it leaves the point where it is and answers with the code of success.",
                 "Un bras est reconnu aux éléments qui suivent son premier axe rotatif. Dans "
                 "tout autre ordre, même avec un corps entre deux articulations, le solveur ne "
                 "tourne que le poignet : il laisse le point où il est et répond par le code de "
                 "réussite."},
     .wrong = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "rotation=J1,1,z,0,0,0,0,0\n"
              "geom=$ZRN_MACHINE_DEF/head.stl\n"
              "rotation=J2,2,y,0,0,100,0,615\n"
              "rotation=J3,3,y,0,0,100,0,1320\n"
              "rotation=J4,4,x,0,0,855,0,1455\n"
              "rotation=J5,5,y,0,0,855,0,1455\n"
              "rotation=J6,6,x,0,0,855,0,1455\n"
              "tool=-x,855,0,1455\n",
     .right = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "rotation=J1,1,z,0,0,0,0,0\n"
              "geom=$ZRN_MACHINE_DEF/head.stl\n"
              "lien=J1\n"
              "rotation=J2,2,y,0,0,100,0,615\n"
              "rotation=J3,3,y,0,0,100,0,1320\n"
              "rotation=J4,4,x,0,0,855,0,1455\n"
              "rotation=J5,5,y,0,0,855,0,1455\n"
              "rotation=J6,6,x,0,0,855,0,1455\n"
              "tool=-x,855,0,1455\n",
     .exampleFormat = Format::version1,
     .find = withView<classRefused>},
    {.code = "linear-missing",
     .severity = Severity::note,
     .stage = Stage::machine,
     .sentence = {"expected three linear axes in independent directions, found {0}",
                  "trois axes linéaires de directions indépendantes attendus, trouvé : {0}"},
     .suggestion = {},
     .meaning = {"Of such a machine the solver turns the tool to its direction at most and "
                 "leaves the point where it is. Its codes do not say so: compare the point that "
                 "a position gives with the one that was asked for.",
                 "D'une telle machine le solveur oriente l'outil au mieux, et laisse le point où "
                 "il est. Ses codes ne le disent pas : comparez le point que donne une position "
                 "à celui qui était demandé."},
     .wrong = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=X,1,x\n"
              "axis=Z,3,z\n"
              "rotation=C,6,z,0,0,0,0,0\n"
              "tool=z,0,0,0\n",
     .right = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=X,1,x\n"
              "axis=Y,2,y\n"
              "axis=Z,3,z\n"
              "rotation=C,6,z,0,0,0,0,0\n"
              "tool=z,0,0,0\n",
     .exampleFormat = Format::version1,
     .find = withView<linearMissing>},
    {.code = "linear-dependent",
     .severity = Severity::warning,
     .stage = Stage::machine,
     .sentence = {"expected the three linear axes nearest the part in independent directions, "
                  "found {0}: solved positions get a code of failure",
                  "trois axes linéaires les plus proches de la pièce de directions indépendantes "
                  "attendus, trouvé : {0} : des positions résolues reçoivent un code d'échec"},
     .suggestion = {"write the second of two parallel axes behind the third direction",
                    "écrivez le second de deux axes parallèles après la troisième direction"},
     .meaning = {"With more than three linear axes the solver tries them by threes, counted from "
                 "the tool, takes the first three that reach the point, and returns the code of "
                 "the last three. When those lie in one plane every solved position is called "
                 "failed, and the lists of positions stay empty.",
                 "Avec plus de trois axes linéaires le solveur les essaie par trois, comptés "
                 "depuis l'outil, prend les trois premiers qui atteignent le point, et rend le "
                 "code des trois derniers. Quand ceux-ci sont dans un même plan, toute position "
                 "résolue est dite échouée et les listes de positions restent vides."},
     .wrong = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=X,1,x\n"
              "axis=U,7,x\n"
              "axis=Y,2,y\n"
              "axis=Z,3,z\n"
              "rotation=C,6,z,0,0,0,0,0\n"
              "tool=z,0,0,0\n",
     .right = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=X,1,x\n"
              "axis=Y,2,y\n"
              "axis=Z,3,z\n"
              "axis=U,7,x\n"
              "rotation=C,6,z,0,0,0,0,0\n"
              "tool=z,0,0,0\n",
     .exampleFormat = Format::version1,
     .find = withView<linearDependent>},
    {.code = "arm-condition",
     .severity = Severity::warning,
     .stage = Stage::machine,
     .sentence = {"expected an arm that its solver knows, found {0}",
                  "bras connu de son solveur attendu, trouvé : {0}"},
     .suggestion = {"write the exact direction or point, when that is what the arm is built to",
                    "écrivez la direction ou le point exact, si le bras est construit ainsi"},
     .meaning = {"The arm solver knows one layout, exactly: it takes what is off by a hair as if "
                 "it were met, and misses the point by as much. Positions given forward are "
                 "right all the same.",
                 "Le solveur de bras connaît une seule disposition, exactement : il prend ce qui "
                 "s'en écarte d'un rien comme si elle était respectée, et manque le point "
                 "d'autant. Les positions calculées en direct restent justes."},
     .wrong = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "rotation=J1,1,z,0,0,0,0,0\n"
              "rotation=J2,2,0,1,0.002,0,0,100,0,615\n"
              "rotation=J3,3,y,0,0,100,0,1320\n"
              "rotation=J4,4,x,0,0,855,0,1455\n"
              "rotation=J5,5,y,0,0,855,0,1455\n"
              "rotation=J6,6,x,0,0,855,0,1455\n"
              "tool=-x,855,0,1455\n",
     .right = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "rotation=J1,1,z,0,0,0,0,0\n"
              "rotation=J2,2,y,0,0,100,0,615\n"
              "rotation=J3,3,y,0,0,100,0,1320\n"
              "rotation=J4,4,x,0,0,855,0,1455\n"
              "rotation=J5,5,y,0,0,855,0,1455\n"
              "rotation=J6,6,x,0,0,855,0,1455\n"
              "tool=-x,855,0,1455\n",
     .exampleFormat = Format::version1,
     .find = withView<armAlmost>},
    {.code = "arm-layout",
     .severity = Severity::note,
     .stage = Stage::machine,
     .sentence = {"expected an arm of the layout that its solver knows, found {0}",
                  "bras de la disposition connue de son solveur attendu, trouvé : {0}"},
     .suggestion = {},
     .meaning = {"The arm solver answers targets for one layout: the first joint upright on the "
                 "Z line of the file, with the lowest number and nothing before it, the second "
                 "square to it, the third parallel to the second, a ball wrist, and the tool on "
                 "its last joint. For other arms it answers beside the target, without saying "
                 "so.",
                 "Le solveur de bras répond pour une seule disposition : première articulation "
                 "verticale sur la ligne Z du fichier, de plus petit numéro et sans axe avant "
                 "elle, deuxième perpendiculaire, troisième parallèle à la deuxième, poignet "
                 "sphérique, outil sur la dernière articulation. Pour d'autres bras il répond à "
                 "côté de la cible, sans le dire."},
     .wrong = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=RAIL,7,y\n"
              "rotation=J1,1,z,0,0,0,0,0\n"
              "rotation=J2,2,y,0,0,100,0,615\n"
              "rotation=J3,3,y,0,0,100,0,1320\n"
              "rotation=J4,4,x,0,0,855,0,1455\n"
              "rotation=J5,5,y,0,0,855,0,1455\n"
              "rotation=J6,6,x,0,0,855,0,1455\n"
              "tool=-x,855,0,1455\n",
     .right = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "rotation=J1,1,z,0,0,0,0,0\n"
              "rotation=J2,2,y,0,0,100,0,615\n"
              "rotation=J3,3,y,0,0,100,0,1320\n"
              "rotation=J4,4,x,0,0,855,0,1455\n"
              "rotation=J5,5,y,0,0,855,0,1455\n"
              "rotation=J6,6,x,0,0,855,0,1455\n"
              "tool=-x,855,0,1455\n",
     .exampleFormat = Format::version1,
     .find = withView<armOther>},
    {.code = "arm-tool-offset",
     .severity = Severity::note,
     .stage = Stage::machine,
     .sentence = {"expected the tool point in the wrist centre, found it {0} mm away",
                  "point d'outil au centre du poignet attendu, trouvé à {0} mm"},
     .suggestion =
         {"write the tool point in the wrist centre, and shift your targets there along "
          "the tool direction",
          "écrivez le point d'outil au centre du poignet, et décalez-y vos cibles le long "
          "de la direction de l'outil"},
     .meaning = {"For a tool point off the wrist centre the arm solver reaches directions along "
                 "the Z of the file only. Every other direction is missed by this length times "
                 "its difference from Z.",
                 "Pour un point d'outil hors du centre du poignet le solveur de bras n'atteint "
                 "que les directions selon le Z du fichier. Toute autre est manquée de cette "
                 "longueur multipliée par son écart à Z."},
     .wrong = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "rotation=J1,1,z,0,0,0,0,0\n"
              "rotation=J2,2,y,0,0,100,0,615\n"
              "rotation=J3,3,y,0,0,100,0,1320\n"
              "rotation=J4,4,x,0,0,855,0,1455\n"
              "rotation=J5,5,y,0,0,855,0,1455\n"
              "rotation=J6,6,x,0,0,855,0,1455\n"
              "tool=-x,940,0,1455\n",
     .right = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "rotation=J1,1,z,0,0,0,0,0\n"
              "rotation=J2,2,y,0,0,100,0,615\n"
              "rotation=J3,3,y,0,0,100,0,1320\n"
              "rotation=J4,4,x,0,0,855,0,1455\n"
              "rotation=J5,5,y,0,0,855,0,1455\n"
              "rotation=J6,6,x,0,0,855,0,1455\n"
              "tool=-x,855,0,1455\n",
     .exampleFormat = Format::version1,
     .find = withView<armOffset>},
    {.code = "axes-almost-parallel",
     .severity = Severity::warning,
     .stage = Stage::machine,
     .sentence = {"expected axes that are parallel or clearly not, found {0} at {2} degrees from "
                  "parallel to {1}",
                  "axes parallèles ou nettement inclinés attendus, trouvé : {0} à {2} degrés du "
                  "parallélisme avec {1}"},
     .suggestion = {"write the direction with all its digits, or as x, y or z",
                    "écrivez la direction avec toutes ses décimales, ou comme x, y ou z"},
     .meaning = {"An axis that is parallel to the tool but for some hundredths of a degree turns "
                 "it by as much and no more: near there the solvers turn axes far for a "
                 "direction that hardly changes. Most often digits are missing.",
                 "Un axe parallèle à l'outil à quelques centièmes de degré près l'incline "
                 "d'autant et pas plus : près de là les solveurs tournent beaucoup les axes pour "
                 "une direction qui change à peine. Le plus souvent il manque des décimales."},
     .wrong = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=X,1,x\n"
              "axis=Y,2,y\n"
              "axis=Z,3,z\n"
              "rotation=C,6,0.0005,0,1,0,0,0,0,0\n"
              "rotation=B,5,y,0,0,0,0,215\n"
              "tool=z,0,0,0\n",
     .right = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=X,1,x\n"
              "axis=Y,2,y\n"
              "axis=Z,3,z\n"
              "rotation=C,6,z,0,0,0,0,0\n"
              "rotation=B,5,y,0,0,0,0,215\n"
              "tool=z,0,0,0\n",
     .exampleFormat = Format::version1,
     .find = withView<almostParallel>},
    {.code = "axes-almost-square",
     .severity = Severity::warning,
     .stage = Stage::machine,
     .sentence = {"expected axes that are square or clearly not, found {0} at {2} degrees from "
                  "square to {1}",
                  "axes perpendiculaires ou nettement inclinés attendus, trouvé : {0} à {2} "
                  "degrés de la perpendiculaire à {1}"},
     .suggestion = {"write the direction with all its digits, or as x, y or z",
                    "écrivez la direction avec toutes ses décimales, ou comme x, y ou z"},
     .meaning = {"Two rotary axes that are square but for some hundredths of a degree do not "
                 "reach a cone of as many around the first: targets along it, the most frequent "
                 "ones, are refused. Most often digits are missing.",
                 "Deux axes rotatifs perpendiculaires à quelques centièmes de degré près "
                 "n'atteignent pas un cône de même angle autour du premier : les cibles le long "
                 "de celui-ci, les plus fréquentes, sont refusées. Le plus souvent il manque des "
                 "décimales."},
     .wrong = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=X,1,x\n"
              "axis=Y,2,y\n"
              "axis=Z,3,z\n"
              "rotation=C,6,z,0,0,0,0,0\n"
              "rotation=B,5,0,1,0.0005,0,0,0,0,215\n"
              "tool=z,0,0,0\n",
     .right = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=X,1,x\n"
              "axis=Y,2,y\n"
              "axis=Z,3,z\n"
              "rotation=C,6,z,0,0,0,0,0\n"
              "rotation=B,5,y,0,0,0,0,215\n"
              "tool=z,0,0,0\n",
     .exampleFormat = Format::version1,
     .find = withView<almostSquare>},
    {.code = "axis-sense",
     .severity = Severity::note,
     .stage = Stage::machine,
     .sentence = {"expected the sense of ISO 841, found that at +90 of {0} {1} turns {2} seen "
                  "from {3}",
                  "sens de l'ISO 841 attendu, trouvé : à +90 de {0} {1} tourne {2} vu de {3}"},
     .suggestion = {"turn the direction round if the machine does follow ISO 841",
                    "inversez la direction si la machine suit l'ISO 841"},
     .meaning = {"A positive angle turns the tool, relative to the part, counter-clockwise seen "
                 "from the positive end of the axis; a table itself turns the other way. This "
                 "axis turns against that: right if the machine does so, a slip of the sign if "
                 "not.",
                 "Un angle positif tourne l'outil, par rapport à la pièce, dans le sens "
                 "antihoraire vu de l'extrémité positive de l'axe ; une table tourne elle-même "
                 "dans l'autre sens. Cet axe tourne à l'inverse : juste si la machine fait "
                 "ainsi, erreur de signe sinon."},
     .wrong = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=X,1,x\n"
              "axis=Y,2,y\n"
              "axis=Z,3,z\n"
              "rotation=B,5,-y,0,0,0,0,215\n"
              "tool=z,0,0,0\n",
     .right = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "axis=X,1,x\n"
              "axis=Y,2,y\n"
              "axis=Z,3,z\n"
              "rotation=B,5,y,0,0,0,0,215\n"
              "tool=z,0,0,0\n",
     .exampleFormat = Format::version1,
     .find = withView<senses>},
    {.code = "round-trip",
     .severity = Severity::warning,
     .stage = Stage::machine,
     .sentence = {"expected every position back from its own tool point and direction, found {0} "
                  "of {1}, the others up to {2} mm and {3} degrees off",
                  "chaque position attendue en retour de son propre point et de sa direction "
                  "d'outil, trouvé : {0} sur {1}, les autres jusqu'à {2} mm et {3} degrés d'écart"},
     .suggestion = {},
     .meaning = {"Random positions inside the limits are computed forward and solved again from "
                 "close by. Where that misses, the solver does not know this machine, though its "
                 "class looks right; check every answer forward.",
                 "Des positions au hasard dans les limites sont calculées en direct puis "
                 "résolues d'un point voisin. Là où cela échoue, le solveur ne connaît pas cette "
                 "machine, bien que sa classe paraisse juste ; vérifiez chaque réponse en "
                 "direct."},
     .wrong = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "rotation=J1,1,z,0,0,0,0,0\n"
              "rotation=J2,2,y,0,0,100,0,615\n"
              "rotation=J3,3,y,0,0,100,0,1320\n"
              "rotation=J4,4,x,0,0,855,0,1455\n"
              "rotation=J7,7,z,0,0,700,0,1455\n"
              "rotation=J5,5,y,0,0,855,0,1455\n"
              "rotation=J6,6,x,0,0,855,0,1455\n"
              "tool=-x,855,0,1455\n",
     .right = "frame\n"
              "part=x,y,0,0,0\n"
              "lien=BATI\n"
              "rotation=J1,1,z,0,0,0,0,0\n"
              "rotation=J2,2,y,0,0,100,0,615\n"
              "rotation=J3,3,y,0,0,100,0,1320\n"
              "rotation=J4,4,x,0,0,855,0,1455\n"
              "rotation=J5,5,y,0,0,855,0,1455\n"
              "rotation=J6,6,x,0,0,855,0,1455\n"
              "tool=-x,855,0,1455\n",
     .exampleFormat = Format::version1,
     .find = withView<roundTrip>},
};

}  // namespace

std::span<const Rule> solverRules() { return kRules; }

}  // namespace korvo::checking
