// Radians where degrees are meant, metres where millimetres are, and places far away.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <string>

#include "toolkit/answer/Words.h"
#include "toolkit/check/Chains.h"
#include "toolkit/check/Rule.h"
#include "toolkit/check/Travels.h"

using zgeo::UVec3d;
using zkin::KMachineElem;

namespace korvo::checking {
namespace {

constexpr double kPi = std::numbers::pi;

// No travel and no pivot length of a machine tool is as short as this (mm), and no machine as large
// in metres.
constexpr double kShort = 10.0;

// Of machines that are written in millimetres something is longer (mm).
constexpr double kLong = 100.0;

const KMachineElem& elementOf(const Source& source, int rank) {
  return source.linked.elements[static_cast<std::size_t>(rank)];
}

bool isOfType(const Source& source, const Travel& travel, KMachineElem::KME_TYPE type) {
  return elementOf(source, travel.rank).getElemType() == type;
}

bool isWhole(double value) { return value == std::round(value); }

bool isNearer(const StatedPoint& a, const StatedPoint& b) { return a.distance < b.distance; }

double furthest(const std::vector<StatedPoint>& points) {
  return points.empty() ? 0.0 : std::max_element(points.begin(), points.end(), isNearer)->distance;
}

// "-180, 180": the limits of a travel, each times `factor`, rounded to what people write.
std::string limitsTimes(const Travel& travel, double factor) {
  std::string text;
  for (const std::optional<double>& limit : {travel.min, travel.max}) {
    if (limit) appendWord(text, words(std::round(*limit * factor * 1e3) / 1e3));
  }
  return text;
}

// --- radians

// A multiple of a half, third, quarter or sixth of a half turn, in radians as people round them:
// 3.14, 1.57, 0.785, 1.047. Whole numbers are degrees.
bool looksLikeRadians(double value) {
  constexpr double kRounded = 1e-3;
  if (isWhole(value) || std::abs(value) > 2 * kPi * 1.01) return false;
  for (const double part : {kPi / 4, kPi / 6}) {
    const double multiple = std::round(value / part) * part;
    if (multiple != 0 && std::abs(value / multiple - 1) <= kRounded) return true;
  }
  return false;
}

bool isWithinATurn(const std::optional<double>& limit) {
  return !limit || std::abs(*limit) <= 2 * kPi * 1.01;
}

Findings radians(const Source& source) {
  Findings findings;
  for (const Travel& travel : travelsOf(source)) {
    const bool isMin = travel.min && looksLikeRadians(*travel.min);
    const bool isMax = travel.max && looksLikeRadians(*travel.max);
    if (!isOfType(source, travel, KMachineElem::KMET_TYPE_AROT) || (!isMin && !isMax)) continue;
    if (!isWithinATurn(travel.min) || !isWithinATurn(travel.max)) continue;
    const std::string name = inQuotes(elementOf(source, travel.rank).getElemName());
    findings.push_back(
        Finding(isMin ? travel.minPlace : travel.maxPlace, {limitsTimes(travel, 1.0), name}));
    findings.back().suggest({limitsTimes(travel, 180 / kPi)});
  }
  return findings;
}

// --- metres

std::vector<Travel> linearTravels(const Source& source) {
  std::vector<Travel> linear, all = travelsOf(source);
  std::copy_if(all.begin(), all.end(), std::back_inserter(linear), [&](const Travel& t) {
    return t.length() && isOfType(source, t, KMachineElem::KMET_TYPE_ALIN);
  });
  return linear;
}

// Travels below 10 mm on a machine of hundreds; whole numbers alone prove nothing.
Findings metreTravels(const Source& source) {
  const std::vector<Travel> travels = linearTravels(source);
  if (travels.empty() || furthest(pointsOf(source.linked)) < kLong) return {};
  const auto isShort = [](const Travel& t) {
    return std::abs(*t.min) < kShort && std::abs(*t.max) < kShort;
  };
  if (!std::all_of(travels.begin(), travels.end(), isShort)) return {};
  for (const Travel& t : travels) {
    if (isWhole(*t.min) && isWhole(*t.max)) continue;
    Finding finding(isWhole(*t.min) ? t.maxPlace : t.minPlace,
                    {limitsTimes(t, 1.0), inQuotes(elementOf(source, t.rank).getElemName()),
                     words(furthest(pointsOf(source.linked)))});
    return {finding.suggest({limitsTimes(t, 1000.0)})};
  }
  return {};
}

double longestTravel(const Source& source) {
  double longest = 0.0;
  for (const Travel& t : linearTravels(source)) longest = std::max(longest, std::abs(*t.length()));
  return longest;
}

// Distance of the tool point from the line of a rotary axis in the head that tilts it.
double pivotLength(const KMachineElem& axis, const KMachineElem& tool) {
  const UVec3d along = axis.getElemAxis().normalised();
  const bool isTilting = (along ^ tool.getElemAxis().normalised()).norm() > 0.1;
  if (axis.isInverted() || !isTilting) return 0.0;
  return ((tool.getElemPivot() - axis.getElemPivot()) ^ along).norm();
}

// Axes of a head that are meant to meet in the tool point miss it by hundredths of a millimetre.
bool looksLikeMetres(double length) { return length > 0.05 && length < kShort; }

std::optional<Finding> metrePivot(const Source& source, int rank, double length) {
  const KMachineElem& e = elementOf(source, rank);
  Finding finding(placeOf(source, rank, Role::point), {words(length), inQuotes(e.getElemName())});
  return finding.suggest({words(length * 1000.0)});
}

// Heads: the pivot length. Of tables no distance is known to be long.
std::optional<Finding> metreHead(const Source& source) {
  const std::vector<KMachineElem>& all = source.linked.elements;
  const auto tool = std::find_if(all.begin(), all.end(), [](const KMachineElem& e) {
    return e.getElemType() == KMachineElem::KMET_TYPE_TOOL;
  });
  if (tool == all.end() || longestTravel(source) < kLong) return {};
  double longest = 0.0;
  int rank = -1;
  const std::vector<bool> isOn = onToolChains(source.linked);
  for (const StatedPoint& p : pointsOf(source.linked)) {
    const KMachineElem& e = elementOf(source, p.rank);
    if (!isAxis(e) || !isOn[static_cast<std::size_t>(p.rank)]) continue;
    if (pivotLength(e, *tool) <= longest) continue;
    longest = pivotLength(e, *tool);
    rank = p.rank;
  }
  if (!looksLikeMetres(longest)) return {};
  return metrePivot(source, rank, longest);
}

// Arms: the point that is furthest away. Fewer rotary axes may all lie in the origin.
std::optional<Finding> metreArm(const Source& source) {
  constexpr int kJoints = 4;
  const std::vector<KMachineElem>& all = source.linked.elements;
  const auto isRotary = [](const KMachineElem& e) {
    return e.getElemType() == KMachineElem::KMET_TYPE_AROT;
  };
  if (std::count_if(all.begin(), all.end(), isRotary) < kJoints) return {};
  const std::vector<StatedPoint> points = pointsOf(source.linked);
  const auto far = std::max_element(points.begin(), points.end(), isNearer);
  if (far == points.end() || !looksLikeMetres(far->distance)) return {};
  return metrePivot(source, far->rank, far->distance);
}

Findings metrePivots(const Source& source) {
  if (const auto finding = metreArm(source)) return {*finding};
  if (const auto finding = metreHead(source)) return {*finding};
  return {};
}

// --- far away

// No machine is longer than this (mm), whatever its origin.
constexpr double kFar = 1e5;

// A lost decimal point is a factor of ten or more; machines below this (mm) may be written about
// an origin that lies outside them.
constexpr double kFarTimes = 20.0;
constexpr double kFarLeast = 1e4;

// The longest of what a machine says of its size but for its furthest point.
double otherLengths(const Source& source, std::vector<StatedPoint> points) {
  points.erase(std::max_element(points.begin(), points.end(), isNearer));
  double longest = furthest(points);
  for (const Travel& t : linearTravels(source)) {
    longest = std::max({longest, std::abs(*t.min), std::abs(*t.max)});
  }
  return longest;
}

Findings farPoints(const Source& source) {
  const std::vector<StatedPoint> points = pointsOf(source.linked);
  if (furthest(points) <= kFarLeast) return {};
  const double others = otherLengths(source, points);
  const double limit = others > 0 ? std::clamp(kFarTimes * others, kFarLeast, kFar) : kFar;
  Findings findings;
  for (const StatedPoint& p : points) {
    if (p.distance <= limit) continue;
    findings.push_back(Finding(placeOf(source, p.rank, Role::point), {words(p.distance / 1000.0)}));
    if (others > limit) break;  // all of them are far: the origin is
  }
  return findings;
}

constexpr Rule kRules[] = {
    {.code = "limits-radians",
     .severity = Severity::warning,
     .sentence = {"expected limits of a rotary axis in degrees, found {0} for {1}, which look like "
                  "radians",
                  "limites d'un axe rotatif attendues en degrés, trouvé : {0} pour {1}, qui "
                  "ressemblent à des radians"},
     .suggestion = {"write degrees: {0}", "écrivez des degrés : {0}"},
     .meaning = {"Angles in definition files are degrees. An axis that may turn from -3.14 to 3.14 "
                 "degrees hardly turns at all: nearly every position is then outside the limits.",
                 "Les angles des fichiers de définition sont en degrés. Un axe qui tourne de -3.14 "
                 "à 3.14 degrés ne tourne presque pas : presque toute position est alors hors "
                 "limites."},
     .wrong = "rotation=C,1,z,0,0,0,0,0\nlimits=C,-3.1416,3.1416\n",
     .right = "rotation=C,1,z,0,0,0,0,0\nlimits=C,-180,180\n",
     .exampleFormat = Format::version1,
     .find = radians},
    {.code = "limits-metres",
     .severity = Severity::warning,
     .sentence = {"expected limits of a linear axis in millimetres, found {0} for {1} on a machine "
                  "with points {2} mm away",
                  "limites d'un axe linéaire attendues en millimètres, trouvé : {0} pour {1} sur "
                  "une machine dont des points sont à {2} mm"},
     .suggestion = {"write millimetres: {0}", "écrivez des millimètres : {0}"},
     .meaning = {"Lengths in definition files are millimetres. All linear axes of this machine "
                 "travel less than 10 mm while its points lie far apart: the travels are most "
                 "likely metres.",
                 "Les longueurs des fichiers de définition sont en millimètres. Tous les axes "
                 "linéaires de cette machine ont moins de 10 mm de course alors que ses points "
                 "sont éloignés : les courses sont sans doute en mètres."},
     .wrong = "axis=X,1,x\ntool=z,0,0,250\nlimits=X,0,1.25\n",
     .right = "axis=X,1,x\ntool=z,0,0,250\nlimits=X,0,1250\n",
     .exampleFormat = Format::version1,
     .find = metreTravels},
    {.code = "point-metres",
     .severity = Severity::warning,
     .sentence = {"expected points in millimetres, found a distance of {0} mm at {1}, which looks "
                  "like metres",
                  "points attendus en millimètres, trouvé : une distance de {0} mm à {1}, qui "
                  "ressemble à des mètres"},
     .suggestion = {"write millimetres: {0}", "écrivez des millimètres : {0}"},
     .meaning = {"Lengths in definition files are millimetres. A spindle is hundreds of them from "
                 "the axis that tilts it, and so are the joints of an arm from each other; a few "
                 "tenths are most likely metres.",
                 "Les longueurs des fichiers de définition sont en millimètres. Une broche est à "
                 "des centaines de millimètres de l'axe qui l'incline, comme les articulations "
                 "d'un bras entre elles ; quelques dixièmes sont sans doute des mètres."},
     .wrong = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\nrotation=B,2,y,0,0,0,0,0.215\n"
              "tool=z,0,0,0\nlimits=X,0,4000\n",
     .right = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\nrotation=B,2,y,0,0,0,0,215\n"
              "tool=z,0,0,0\nlimits=X,0,4000\n",
     .exampleFormat = Format::version1,
     .find = metrePivots},
    {.code = "point-far",
     .severity = Severity::warning,
     .sentence = {"expected points on the machine, found one {0} m from the origin",
                  "points sur la machine attendus, trouvé : un point à {0} m de l'origine"},
     .suggestion = {"look for a lost decimal point, or move the origin to the machine",
                    "cherchez un point décimal perdu, ou ramenez l'origine à la machine"},
     .meaning = {"A point is said in millimetres from the origin of the file. One that lies a "
                 "hundred metres away, or twenty times as far as all else that the file says of "
                 "the machine's size, is most often a slip, and costs digits of every answer.",
                 "Un point est donné en millimètres depuis l'origine du fichier. Un point à cent "
                 "mètres, ou vingt fois plus loin que tout ce que le fichier dit de la taille de "
                 "la machine, est le plus souvent une erreur, et coûte des décimales à chaque "
                 "réponse."},
     .wrong = "rotation=B,1,y,0,0,0,0,215000\n",
     .right = "rotation=B,1,y,0,0,0,0,215.000\n",
     .exampleFormat = Format::version1,
     .find = farPoints},
};

}  // namespace

std::span<const Rule> unitRules() { return kRules; }

}  // namespace korvo::checking
