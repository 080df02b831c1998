// Operands: numbers, directions, points, and what is left of them.

#include <algorithm>
#include <charconv>
#include <cmath>

#include "platform/text/Number.h"
#include "toolkit/Text.h"
#include "toolkit/check/Chains.h"
#include "toolkit/check/Misread.h"
#include "toolkit/check/Numbers.h"
#include "toolkit/check/Operands.h"
#include "toolkit/check/Rule.h"

using korvo::text::Keyword;
using zgeo::UVec3d;
using zkin::KMachineElem;

namespace korvo::checking {
namespace {

// "1,0,0"
std::string listOf(const SourceLine& line, int first, int count) {
  std::wstring list;
  for (int i = first; i < first + count; ++i) {
    if (i > first) list += L',';
    list += operandOf(line, i);
  }
  return inQuotes(list);
}

// Six digits, with a point whatever the host's locale.
std::string shown(double value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 6);
  return std::string(text, end.ptr);
}

// --- numbers

// Then the numbers are not those of these operands.
bool isOtherwiseMeant(const SourceLine& line, int version) {
  const Misreading why = misreadOf(line, version).why;
  return why == Misreading::semicolon || why == Misreading::otherFormat ||
         why == Misreading::swallowedPoint || why == Misreading::shortVector;
}

Findings partialNumbers(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    for (const Numeric& number : numbersOf(line, source.format.version)) {
      const std::wstring_view text = operandOf(line, number.operand);
      const std::size_t used = usedOf(text, number.isInteger);
      if (used == 0 || used == text.size() || isQuoted(text)) continue;
      if (isOtherwiseMeant(line, source.format.version)) break;
      findings.push_back(
          Finding(line.placeOf(number.operand), {inQuotes(text), toUtf8(text.substr(0, used))}));
    }
  }
  return findings;
}

// Travels may be infinite: such an axis has no end. Directions have a rule of their own.
bool mayBeInfinite(const SourceLine& line, const Numeric& number) {
  return line.keyword == Keyword::limits || line.keyword == Keyword::minimum ||
         line.keyword == Keyword::maximum || number.role == Role::direction || number.isInteger;
}

Findings numbersNotFinite(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    for (const Numeric& number : numbersOf(line, source.format.version)) {
      const std::wstring_view text = operandOf(line, number.operand);
      double value = 0.0;
      text::scanDouble(text, value);
      if (std::isfinite(value) || mayBeInfinite(line, number)) continue;
      findings.push_back(Finding(line.placeOf(number.operand), {inQuotes(text)}));
    }
  }
  return findings;
}

// --- what is not read as meant

// Calls `report(line, misread)` for the lines that are misread for one reason.
template <class Report>
Findings misreads(const Source& source, Misreading why, const Report& report) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    const Misread misread = misreadOf(line, source.format.version);
    if (misread.why == why) findings.push_back(report(line, misread));
  }
  return findings;
}

Finding listed(const SourceLine& line, const Misread& misread) {
  return Finding(line.placeOf(misread.first, misread.count),
                 {listOf(line, misread.first, misread.count)});
}

Finding commaFinding(const SourceLine& line, const Misread& misread) {
  const int first = misread.first, count = misread.count;
  const std::wstring number = std::wstring(operandOf(line, misread.pair - 1)) + L'.' +
                              std::wstring(operandOf(line, misread.pair));
  const std::string many = std::to_string(misread.wanted);
  const Words wanted = misread.wanted == 1 ? Words("one number", "un nombre")
                                           : Words(many + " numbers", many + " nombres");
  return Finding(line.placeOf(first, count), {wanted, listOf(line, first, count)})
      .suggest({inQuotes(number)});
}

Findings decimalCommas(const Source& source) {
  return misreads(source, Misreading::decimalComma, commaFinding);
}

// Commas in one of the operands would be decimal commas: then nobody knows which ones to change.
Finding semicolonFinding(const SourceLine& line, const Misread& misread) {
  const int all = static_cast<int>(line.statement.operands.size());
  Finding finding = listed(line, misread);
  if (all > 1) return finding;
  const Place place = line.placeOf(0);
  std::string mended = line.raw.substr(static_cast<std::size_t>(place.column - 1),
                                       static_cast<std::size_t>(place.length));
  std::replace(mended.begin(), mended.end(), ';', ',');
  return finding.mend(place, mended);
}

Findings semicolons(const Source& source) {
  return misreads(source, Misreading::semicolon, semicolonFinding);
}

Findings shortVectors(const Source& source) {
  return misreads(source, Misreading::shortVector, listed);
}

Findings unreadVectors(const Source& source) {
  return misreads(source, Misreading::unreadVector, listed);
}

Findings swallowedPoints(const Source& source) {
  return misreads(source, Misreading::swallowedPoint, [](const SourceLine& line, const Misread& m) {
    Place before = line.placeOf(m.first);
    before.length = 0;
    return listed(line, m).mend(before, "0,0,");
  });
}

Findings frameDirections(const Source& source) {
  return misreads(source, Misreading::frameDirection, listed);
}

Findings operandsAsFiles(const Source& source) {
  return misreads(source, Misreading::operandAsFile, listed);
}

Findings colourParts(const Source& source) {
  return misreads(source, Misreading::colourParts, listed);
}

Findings operandsLeft(const Source& source) { return misreads(source, Misreading::left, listed); }

// When all axis lines are of the other format one finding says so for the file.
Findings axesOfOtherFormat(const Source& source, int version) {
  if (source.format.version != version) return {};
  if (isOfOtherFormat(source.format, source.likely)) return {};
  return misreads(source, Misreading::otherFormat, listed);
}

Findings unwantedNumbers(const Source& source) { return axesOfOtherFormat(source, 2); }
Findings missingNumbers(const Source& source) { return axesOfOtherFormat(source, 1); }

// --- directions

// The line of each element, and how its operands are read.
struct ElementLine {
  const SourceLine& line;
  const KMachineElem& element;
};

std::vector<ElementLine> elementLines(const Source& source) {
  std::vector<ElementLine> found;
  std::size_t i = 0;
  for (const SourceLine& line : source.document.lines) {
    if (i == source.linked.lines.size()) break;
    if (line.number == source.linked.lines[i]) found.push_back({line, source.linked.elements[i++]});
  }
  return found;
}

// Operands stand there, but the reader of the direction got nothing from them.
bool isMisreadDirection(const SourceLine& line, int version) {
  const std::vector<Step> steps = stepsOf(line, version);
  const Step* const direction = stepOf(steps, Role::direction);
  if (!direction || direction->count > 0) return false;
  switch (misreadOf(line, version).why) {
    case Misreading::semicolon:
    case Misreading::quoted:
    case Misreading::otherFormat:
    case Misreading::shortVector:
    case Misreading::tornVector:
    case Misreading::unreadVector:
      return true;
    default:
      return false;
  }
}

Place directionPlace(const SourceLine& line, int version) {
  const std::vector<Step> steps = stepsOf(line, version);
  const Step* const direction = stepOf(steps, Role::direction);
  if (!direction || direction->count == 0) return {line.number};
  return line.placeOf(direction->first, direction->count);
}

bool isFinite(const UVec3d& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

Findings axisDirections(const Source& source) {
  Findings findings;
  const int version = source.format.version;
  for (const auto& [line, e] : elementLines(source)) {
    const UVec3d& d = e.getElemAxis();
    if (!isMovingAxis(e) || (isFinite(d) && d != UVec3d())) continue;
    if (!line.statement.hasOperandPart || isMisreadDirection(line, version)) continue;
    const Words none("none", "aucune"), infinite("one that is not finite", "une non finie");
    findings.push_back(Finding(directionPlace(line, version),
                               {isFinite(d) ? none : infinite, inQuotes(e.getElemName())}));
  }
  return findings;
}

Findings toolDirections(const Source& source) {
  Findings findings;
  const int version = source.format.version;
  for (const auto& [line, e] : elementLines(source)) {
    const UVec3d& d = e.getElemAxis();
    if (!e.isTool() || (isFinite(d) && d != UVec3d())) continue;
    if (!line.statement.hasOperandPart || isMisreadDirection(line, version)) continue;
    const Words none("none", "aucune"), infinite("one that is not finite", "une non finie");
    findings.push_back(Finding(directionPlace(line, version), {isFinite(d) ? none : infinite}));
  }
  return findings;
}

// Directions such as 0,1,1 are written so on purpose.
bool isPlainDiagonal(const UVec3d& v) {
  const auto isPlain = [](double c) { return c == 0.0 || std::abs(c) == 1.0; };
  return isPlain(v.x) && isPlain(v.y) && isPlain(v.z);
}

// Wider than what rounding to three decimals does to a direction of length 1.
constexpr double kUnitLength = 1e-3;

Findings directionsNotUnit(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    const std::vector<Step> steps = stepsOf(line, source.format.version);
    const Step* const direction = stepOf(steps, Role::direction);
    if (!direction || direction->count < 3) continue;
    if (misreadOf(line, source.format.version).why != Misreading::none) continue;
    const UVec3d v = vectorAt(line, *direction);
    const double length = std::hypot(v.x, v.y, v.z);
    if (!std::isfinite(length) || length == 0.0 || std::abs(length - 1.0) <= kUnitLength) continue;
    if (line.keyword != Keyword::frame && isPlainDiagonal(v)) continue;
    findings.push_back(Finding(line.placeOf(direction->first, 3),
                               {listOf(line, direction->first, 3), shown(length)})
                           .suggest({"'" + shown(v.x / length) + "," + shown(v.y / length) + "," +
                                     shown(v.z / length) + "'"}));
  }
  return findings;
}

// --- points

// Nothing there, or a point 0,0,0 that was swallowed: the pivot is the same.
bool hasNoPoint(const SourceLine& line, int version) {
  const std::vector<Step> steps = stepsOf(line, version);
  const Step* const point = stepOf(steps, Role::point);
  if (!point || point->count > 0 || !line.statement.hasOperandPart) return false;
  const Misreading why = misreadOf(line, version).why;
  return why == Misreading::none || why == Misreading::swallowedOrigin;
}

Findings missingPoints(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword != Keyword::rotaryAxis || !hasNoPoint(line, source.format.version)) continue;
    findings.push_back(Finding({line.number}, {inQuotes(operandOf(line, 0))}));
  }
  return findings;
}

// --- colours

Findings coloursOutOfRange(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    const std::vector<Step> steps = stepsOf(line, source.format.version);
    const Step* const colour = stepOf(steps, Role::colour);
    for (int i = 0; colour && i < colour->count; ++i) {
      const std::wstring_view text = operandOf(line, colour->first + i);
      int part = 0;
      text::scanInt(text, part);
      if (part >= 0 && part <= 255) continue;
      findings.push_back(Finding(line.placeOf(colour->first + i), {inQuotes(text)}));
    }
  }
  return findings;
}

// --- the part

struct PartLine {
  const SourceLine& line;
  Step x, y, position;
};

std::vector<PartLine> partLines(const Source& source) {
  std::vector<PartLine> found;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword != Keyword::part) continue;
    const std::vector<Step> steps = stepsOf(line, source.format.version);
    if (misreadOf(line, source.format.version).why != Misreading::none) continue;
    found.push_back({line, *stepOf(steps, Role::xDirection), *stepOf(steps, Role::yDirection),
                     *stepOf(steps, Role::position)});
  }
  return found;
}

Findings partPositions(const Source& source) {
  Findings findings;
  for (const PartLine& part : partLines(source)) {
    const auto& [line, x, y, position] = part;
    if (position.count == 0 || vectorAt(line, position) == UVec3d()) continue;
    findings.push_back(Finding(line.placeOf(position.first, position.count),
                               {listOf(line, position.first, position.count)}));
  }
  return findings;
}

bool isAlong(const SourceLine& line, const Step& step, const UVec3d& axis) {
  if (step.count == 0) return true;
  const UVec3d v = vectorAt(line, step).normalised();
  return std::abs(v * axis - 1.0) <= kUnitLength * kUnitLength;
}

Findings partAxesReplaced(const Source& source) {
  if (source.format.version != 2) return {};
  Findings findings;
  for (const auto& [line, x, y, position] : partLines(source)) {
    if (isAlong(line, x, UVec3d(1, 0, 0)) && isAlong(line, y, UVec3d(0, 1, 0))) continue;
    const int count = x.count + y.count;
    findings.push_back(Finding(line.placeOf(x.first, count), {listOf(line, x.first, count)}));
  }
  return findings;
}

// What is wrong with the directions of a part in format 1; empty words when nothing is.
Words faultOfAxes(const PartLine& part) {
  if (part.y.count == 0) return {"no Y direction", "aucune direction Y"};
  const UVec3d x = vectorAt(part.line, part.x).normalised();
  const UVec3d y = vectorAt(part.line, part.y).normalised();
  if (x == UVec3d() || y == UVec3d()) return {"one of length zero", "une de longueur nulle"};
  const double length = (x ^ y).norm(), cosine = x * y;
  if (length <= kUnitLength) return {"parallel ones", "des directions parallèles"};
  if (std::abs(cosine) <= kUnitLength) return "";
  const std::string angle = shown(std::atan2(length, cosine) * 180.0 / std::acos(-1.0));
  return {"an angle of " + angle + " degrees", "un angle de " + angle + " degrés"};
}

Findings partAxes(const Source& source) {
  if (source.format.version == 2) return {};
  Findings findings;
  for (const PartLine& part : partLines(source)) {
    if (part.x.count == 0) continue;
    const Words fault = faultOfAxes(part);
    if (fault.english.empty()) continue;
    findings.push_back(
        Finding(part.line.placeOf(part.x.first, part.x.count + part.y.count), {fault}));
  }
  return findings;
}

constexpr Rule kRules[] = {
    {.code = "number-partial",
     .severity = Severity::warning,
     .sentence = {"expected a number, found {0}, of which {1} is read",
                  "nombre attendu, trouvé : {0}, dont {1} est lu"},
     .suggestion = {"write digits with at most one decimal point, without unit; an axis number, a "
                    "strategy or a colour without decimals",
                    "écrivez des chiffres avec au plus un point décimal, sans unité ; un numéro "
                    "d'axe, une stratégie ou une couleur sans décimales"},
     .meaning = {"The library reads the longest beginning of an operand that is a number and "
                 "passes over the rest: 1O0 with a letter O is 1, and axis number 1.5 is 1.",
                 "La bibliothèque lit le plus long début d'opérande qui soit un nombre et ignore "
                 "le reste : 1O0 avec une lettre O vaut 1, et le numéro d'axe 1.5 vaut 1."},
     .wrong = "tool=z,0,0,1O0\n",
     .right = "tool=z,0,0,100\n",
     .find = partialNumbers},
    {.code = "number-not-finite",
     .severity = Severity::error,
     .sentence = {"expected a finite number, found {0}", "nombre fini attendu, trouvé : {0}"},
     .suggestion = {"write the place in millimetres or degrees",
                    "écrivez la position en millimètres ou en degrés"},
     .meaning = {"\"inf\", \"nan\" and numbers too large for the computer are read as infinite or "
                 "as no number. Every place that is computed from them is no number either.",
                 "« inf », « nan » et les nombres trop grands pour l'ordinateur sont lus comme "
                 "infinis ou comme n'étant pas un nombre. Toute position calculée à partir d'eux "
                 "n'est pas un nombre non plus."},
     .wrong = "tool=z,0,0,1e999\n",
     .right = "tool=z,0,0,999\n",
     .find = numbersNotFinite},
    {.code = "decimal-comma",
     .severity = Severity::error,
     .sentence = {"expected {0}, found more, as if {1} had a decimal comma",
                  "attendu : {0} ; trouvé : davantage, comme si {1} avait une virgule décimale"},
     .suggestion = {"write a decimal point: {0}", "écrivez un point décimal : {0}"},
     .meaning = {"A comma always separates two operands. A number with a decimal comma is read as "
                 "two: its decimals become the next number, all others move on by one place, and "
                 "the last one is taken for the name of a geometry file.",
                 "Une virgule sépare toujours deux opérandes. Un nombre à virgule décimale est lu "
                 "comme deux : ses décimales deviennent le nombre suivant, les autres se décalent "
                 "d'une place, et le dernier est pris pour un nom de fichier de géométrie."},
     .wrong = "tool=z,0,0,100,5\n",
     .right = "tool=z,0,0,100.5\n",
     .find = decimalCommas},
    {.code = "operand-semicolon",
     .severity = Severity::error,
     .sentence = {"expected commas between operands, found semicolons in {0}",
                  "virgules attendues entre les opérandes, trouvé : points-virgules dans {0}"},
     .suggestion = {"write commas, and decimal points in numbers",
                    "écrivez des virgules, et des points décimaux dans les nombres"},
     .meaning = {"Only a comma separates operands. What stands between two commas is one operand "
                 "to the library, whatever else is in it: a name that nothing has, or a number of "
                 "which only the beginning is read.",
                 "Seule une virgule sépare des opérandes. Ce qui est entre deux virgules est un "
                 "seul opérande, quoi qu'il contienne : un nom que rien ne porte, ou un nombre "
                 "dont seul le début est lu."},
     .wrong = "tool=z;0;0;100\n",
     .right = "tool=z,0,0,100\n",
     .find = semicolons},
    {.code = "axis-number-unwanted",
     .severity = Severity::error,
     .sentence =
         {"expected a direction behind the axis name in format 2, found the axis number {0}",
          "direction attendue après le nom de l'axe au format 2, trouvé : le numéro {0}"},
     .suggestion = {"remove the number", "supprimez le numéro"},
     .meaning =
         {"In format 2 the name X, Y, Z, A, B or C stands for the axis number, and the "
          "direction comes at once. With a number in front of it the direction is lost.",
          "Au format 2 le nom X, Y, Z, A, B ou C tient lieu de numéro d'axe, et la direction "
          "suit aussitôt. Avec un numéro devant elle, la direction est perdue."},
     .wrong = "axis=X,x\naxis=Y,y\naxis=Z,3,z\n",
     .right = "axis=X,x\naxis=Y,y\naxis=Z,z\n",
     .exampleFormat = Format::version2,
     .find = unwantedNumbers},
    {.code = "axis-number-missing",
     .severity = Severity::error,
     .sentence = {"expected an axis number behind the axis name in format 1, found the direction "
                  "{0}",
                  "numéro d'axe attendu après le nom de l'axe au format 1, trouvé : la direction "
                  "{0}"},
     .suggestion = {"write the axis number between name and direction",
                    "écrivez le numéro d'axe entre le nom et la direction"},
     .meaning =
         {"In format 1 the first integer behind the name is the axis number. When that is "
          "the first number of the direction, the axis gets a wrong number and no direction.",
          "Au format 1 le premier entier après le nom est le numéro d'axe. Quand c'est le "
          "premier nombre de la direction, l'axe a un faux numéro et pas de direction."},
     .wrong = "axis=X,1,1,0,0\naxis=Y,2,0,1,0\naxis=Z,0,0,1\n",
     .right = "axis=X,1,1,0,0\naxis=Y,2,0,1,0\naxis=Z,3,0,0,1\n",
     .exampleFormat = Format::version1,
     .find = missingNumbers},
    {.code = "vector-two-numbers",
     .severity = Severity::error,
     .sentence = {"expected a direction or point of three numbers, found only {0}",
                  "direction ou point de trois nombres attendu, trouvé seulement : {0}"},
     .suggestion = {"write all three numbers, zeros too",
                    "écrivez les trois nombres, zéros compris"},
     .meaning = {"One or two numbers are no direction and no point. The library leaves it at "
                 "(0, 0, 0) and takes the first of the numbers for the name of a geometry file.",
                 "Un ou deux nombres ne font ni direction ni point. La bibliothèque laisse "
                 "(0, 0, 0) et prend le premier nombre pour un nom de fichier de géométrie."},
     .wrong = "tool=z,0,100\n",
     .right = "tool=z,0,0,100\n",
     .find = shortVectors},
    {.code = "vector-unread",
     .severity = Severity::error,
     .sentence = {"expected x, y, z, -x, -y, -z or three numbers, found {0}",
                  "x, y, z, -x, -y, -z ou trois nombres attendus, trouvé : {0}"},
     .suggestion = {"write one of the words, or three numbers with commas between them",
                    "écrivez un des mots, ou trois nombres séparés par des virgules"},
     .meaning = {"The library reads a direction or point here. What is neither stays where it is "
                 "and is taken for the name of a geometry file; direction or point are (0, 0, 0).",
                 "La bibliothèque lit ici une direction ou un point. Ce qui n'est ni l'un ni "
                 "l'autre est pris pour un nom de fichier de géométrie ; la direction ou le point "
                 "vaut (0, 0, 0)."},
     .wrong = "tool=up,0,0,100\n",
     .right = "tool=z,0,0,100\n",
     .find = unreadVectors},
    {.code = "axis-direction",
     .severity = Severity::warning,
     .sentence = {"expected a direction for every axis, found {0} for {1}",
                  "direction attendue pour chaque axe, trouvé : {0} pour {1}"},
     .suggestion = {"write x, y, z, -x, -y, -z, or three numbers that are not all zero",
                    "écrivez x, y, z, -x, -y, -z, ou trois nombres non tous nuls"},
     .meaning = {"An axis without a direction moves nothing. The operand after the name (in format "
                 "1 after the number) is read as a direction: one of the words, or three numbers.",
                 "Un axe sans direction ne déplace rien. L'opérande après le nom (au format 1 "
                 "après le numéro) est lu comme une direction : un des mots, ou trois nombres."},
     .wrong = "translation=X,1,0,0,0\n",
     .right = "translation=X,1,1,0,0\n",
     .exampleFormat = Format::version1,
     .find = axisDirections},
    {.code = "tool-direction",
     .severity = Severity::warning,
     .sentence = {"expected a direction from the tip to the drive, found {0}",
                  "direction de la pointe vers l'entraînement attendue, trouvé : {0}"},
     .suggestion = {"write z for an upright spindle, or three numbers that are not all zero",
                    "écrivez z pour une broche verticale, ou trois nombres non tous nuls"},
     .meaning = {"Tool and drill gun begin with their direction. Without one the tool has a point "
                 "only: every answer has the direction (0, 0, 0), and nothing can be solved for.",
                 "L'outil et le canon commencent par leur direction. Sans elle l'outil n'a qu'un "
                 "point : toute réponse a la direction (0, 0, 0), et rien ne peut être résolu."},
     .wrong = "tool=0,0,0,0,0,100\n",
     .right = "tool=0,0,1,0,0,100\n",
     .find = toolDirections},
    {.code = "direction-not-unit",
     .severity = Severity::note,
     .sentence = {"expected a direction of length 1, found {0} of length {1}",
                  "direction de longueur 1 attendue, trouvé : {0} de longueur {1}"},
     .suggestion = {"if the direction is right, {0} is the same",
                    "si la direction est juste, {0} est la même"},
     .meaning =
         {"The library takes a direction of any length and shortens it to 1; only that of a "
          "frame stays as written. Three numbers of another length may be a slip of the pen, "
          "or a point that stands where the direction belongs.",
          "La bibliothèque accepte une direction de toute longueur et la ramène à 1 ; seule "
          "celle d'un bâti reste telle quelle. Trois nombres d'une autre longueur peuvent "
          "être une faute de frappe, ou un point à la place de la direction."},
     .wrong = "tool=0.6,0,0.9,0,0,0\n",
     .right = "tool=0.6,0,0.8,0,0,0\n",
     .find = directionsNotUnit},
    {.code = "rotary-point-swallowed",
     .severity = Severity::error,
     .sentence = {"expected two integers and a point, found the point {0} alone",
                  "deux entiers et un point attendus, trouvé : le point {0} seul"},
     .suggestion = {"write two integers in front of the point, such as 0,0",
                    "écrivez deux entiers devant le point, par exemple 0,0"},
     .meaning = {"In front of the point of a rotary axis the library skips two integers. Without "
                 "them it skips the first two numbers of the point, and the third alone is none: "
                 "the axis is laid through (0, 0, 0).",
                 "Devant le point d'un axe rotatif la bibliothèque saute deux entiers. Sans eux "
                 "elle saute les deux premiers nombres du point, et le troisième seul n'en est pas "
                 "un : l'axe passe par (0, 0, 0)."},
     .wrong = "rotation=B,y,0,0,100\n",
     .right = "rotation=B,y,0,0,0,0,100\n",
     .find = swallowedPoints},
    {.code = "rotary-point-missing",
     .severity = Severity::note,
     .sentence = {"expected a point on the axis {0}, found none",
                  "point de l'axe {0} attendu, trouvé : aucun"},
     .suggestion = {"write two integers and the point behind the direction: 0,0,0,0,0",
                    "écrivez deux entiers et le point après la direction : 0,0,0,0,0"},
     .meaning = {"A rotary axis whose line has no point passes through (0, 0, 0). That may be "
                 "right; written out, it shows that it is meant.",
                 "Un axe rotatif dont la ligne n'a pas de point passe par (0, 0, 0). C'est "
                 "peut-être voulu ; écrit en toutes lettres, cela se voit."},
     .wrong = "rotation=C,z\n",
     .right = "rotation=C,z,0,0,0,0,0\n",
     .find = missingPoints},
    {.code = "frame-direction",
     .severity = Severity::warning,
     .sentence = {"expected a geometry file or nothing on the frame line of format 1, found {0}",
                  "fichier de géométrie ou rien attendu sur la ligne de bâti au format 1, trouvé : "
                  "{0}"},
     .suggestion = {"remove it, or load the file as format 2",
                    "supprimez-le, ou chargez le fichier au format 2"},
     .meaning = {"Only in format 2 does a frame begin with a direction. In format 1 what stands "
                 "there is taken for the name of a geometry file.",
                 "Un bâti ne commence par une direction qu'au format 2. Au format 1 ce qui est là "
                 "est pris pour un nom de fichier de géométrie."},
     .wrong = "frame=z\n",
     .right = "frame\n",
     .exampleFormat = Format::version1,
     .find = frameDirections},
    {.code = "file-is-number",
     .severity = Severity::warning,
     .sentence = {"expected a geometry file or nothing more, found {0}",
                  "fichier de géométrie ou rien de plus attendu, trouvé : {0}"},
     .suggestion = {"remove it; behind directions and points only a file and its colour may stand",
                    "supprimez-le ; après les directions et les points il n'y a place que pour un "
                    "fichier et sa couleur"},
     .meaning = {"All directions and points of the line are read, so what comes next is taken for "
                 "the name of a geometry file. A number or direction there means that the line has "
                 "one too many, or that an operand in front of it is not what it was meant to be.",
                 "Toutes les directions et tous les points de la ligne sont lus : ce qui suit est "
                 "pris pour un nom de fichier de géométrie. Un nombre ou une direction signifie "
                 "que la ligne en a un de trop, ou qu'un opérande précédent n'est pas ce qu'il "
                 "devait être."},
     .wrong = "tool=z,0,0,0,0\n",
     .right = "tool=z,0,0,0\n",
     .find = operandsAsFiles},
    {.code = "operands-left",
     .severity = Severity::warning,
     .sentence = {"expected no more operands, found {0}",
                  "plus aucun opérande attendu, trouvé : {0}"},
     .suggestion = {"remove them, or write them on a line of their own",
                    "supprimez-les, ou écrivez-les sur une ligne à part"},
     .meaning = {"Nothing of the library reads these operands. Most often one in front of them is "
                 "too many, so that the others are not where they belong.",
                 "Rien dans la bibliothèque ne lit ces opérandes. Le plus souvent il y en a un de "
                 "trop avant eux, et les autres ne sont plus à leur place."},
     .wrong = "axis=X,1,x,slide.stl,200,200,200,250\n",
     .right = "axis=X,1,x,slide.stl,200,200,200\n",
     .find = operandsLeft},
    {.code = "colour-partial",
     .severity = Severity::warning,
     .sentence = {"expected three integers for the colour behind the file, found {0}",
                  "trois entiers attendus pour la couleur après le fichier, trouvé : {0}"},
     .suggestion = {"write red, green and blue, each from 0 to 255, or none of them",
                    "écrivez rouge, vert et bleu, chacun de 0 à 255, ou aucun"},
     .meaning = {"With fewer than three operands behind the file the body is light grey. Of three "
                 "or more that are not all numbers the parts that cannot be read are 0, and the "
                 "others are not where they belong.",
                 "Avec moins de trois opérandes après le fichier, le corps est gris clair. De "
                 "trois ou plus qui ne sont pas tous des nombres, les parties illisibles valent 0, "
                 "et les autres ne sont plus à leur place."},
     .wrong = "geom=head.stl,255,0\n",
     .right = "geom=head.stl,255,0,0\n",
     .find = colourParts},
    {.code = "colour-range",
     .severity = Severity::warning,
     .sentence = {"expected a part of a colour from 0 to 255, found {0}",
                  "composante de couleur de 0 à 255 attendue, trouvé : {0}"},
     .suggestion = {"write an integer from 0 to 255", "écrivez un entier de 0 à 255"},
     .meaning = {"The library keeps the number as it is and hands it to whoever draws the body, "
                 "who most likely takes its lowest eight bits: another colour.",
                 "La bibliothèque garde le nombre tel quel et le donne à qui dessine le corps, qui "
                 "n'en prend sans doute que les huit bits de poids faible : une autre couleur."},
     .wrong = "geom=head.stl,256,0,0\n",
     .right = "geom=head.stl,255,0,0\n",
     .find = coloursOutOfRange},
    {.code = "part-position",
     .severity = Severity::warning,
     .sentence = {"expected 0,0,0 as the place of the part, found {0}",
                  "0,0,0 attendu comme position de la pièce, trouvé : {0}"},
     .suggestion =
         {"write 0,0,0 and choose the origin of the whole file where the part has its own",
          "écrivez 0,0,0 et placez l'origine de tout le fichier là où la pièce a la "
          "sienne"},
     .meaning = {"The place of a part is read and never used: its origin is that of the file. "
                 "Answers are not moved by these numbers.",
                 "La position d'une pièce est lue et jamais utilisée : son origine est celle du "
                 "fichier. Ces nombres ne déplacent aucune réponse."},
     .wrong = "part=x,y,0,0,50\n",
     .right = "part=x,y,0,0,0\n",
     .find = partPositions},
    {.code = "part-axes-replaced",
     .severity = Severity::warning,
     .sentence = {"expected x,y as the directions of a part in format 2, found {0}",
                  "x,y attendu comme directions d'une pièce au format 2, trouvé : {0}"},
     .suggestion = {"write x,y, or write the machine in format 1",
                    "écrivez x,y, ou écrivez la machine au format 1"},
     .meaning = {"In format 2 a part always lies along X and Y of the machine: other directions "
                 "are read and replaced.",
                 "Au format 2 une pièce est toujours orientée selon X et Y de la machine : "
                 "d'autres directions sont lues, puis remplacées."},
     .wrong = "part=z,x,0,0,0\n",
     .right = "part=x,y,0,0,0\n",
     .exampleFormat = Format::version2,
     .find = partAxesReplaced},
    {.code = "part-axes",
     .severity = Severity::warning,
     .sentence = {"expected X and Y directions of a part at a right angle, found {0}",
                  "directions X et Y de la pièce à angle droit attendues, trouvé : {0}"},
     .suggestion = {"write two directions at a right angle, such as x,y",
                    "écrivez deux directions à angle droit, par exemple x,y"},
     .meaning = {"The Z direction of a part is worked out from the two that are written. Without "
                 "two different ones there is none; of two that are not square the second is not "
                 "kept.",
                 "La direction Z d'une pièce se calcule à partir des deux qui sont écrites. Sans "
                 "deux directions différentes il n'y en a pas ; de deux qui ne sont pas d'équerre "
                 "la seconde n'est pas gardée."},
     .wrong = "part=x,-x,0,0,0\n",
     .right = "part=x,y,0,0,0\n",
     .exampleFormat = Format::version1,
     .find = partAxes},
};

}  // namespace

std::span<const Rule> operandRules() { return kRules; }

}  // namespace korvo::checking
