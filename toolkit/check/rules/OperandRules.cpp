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
  return why == Misreading::semicolon || why == Misreading::blanks ||
         why == Misreading::otherFormat || why == Misreading::swallowedPoint ||
         why == Misreading::shortVector;
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

// "0x10" is 16 to the library, and most likely a slip of the pen for "0" and something.
bool isHexadecimal(std::wstring_view text) {
  if (text.starts_with(L'+') || text.starts_with(L'-')) text.remove_prefix(1);
  return text.starts_with(L"0x") || text.starts_with(L"0X");
}

Findings hexadecimals(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    for (const Numeric& number : numbersOf(line, source.format.version)) {
      const std::wstring_view text = operandOf(line, number.operand);
      double value = 0.0;
      const text::Scan scan = text::scanDouble(text, value);
      if (number.isInteger || !isHexadecimal(text) || scan.length < text.size()) continue;
      findings.push_back(Finding(line.placeOf(number.operand), {inQuotes(text), shown(value)}));
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
    case Misreading::blanks:
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
    findings.push_back(
        Finding(line.placeOf(line.statement.keyword), {inQuotes(operandOf(line, 0))}));
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
    {.code = "number-hexadecimal",
     .severity = Severity::warning,
     .sentence = {"expected a decimal number, found {0}, which is read as {1}",
                  "nombre décimal attendu, trouvé : {0}, lu comme {1}"},
     .suggestion = {"write digits with at most one decimal point",
                    "écrivez des chiffres avec au plus un point décimal"},
     .meaning = {"Numbers that begin with 0x are read in base 16: 0x10 is 16. Nobody writes places "
                 "or travels so; a letter has come between the digits.",
                 "Les nombres qui commencent par 0x sont lus en base 16 : 0x10 vaut 16. Personne "
                 "n'écrit ainsi une position ou une course ; une lettre s'est glissée entre les "
                 "chiffres."},
     .wrong = "tool=z,0,0,0x10\n",
     .right = "tool=z,0,0,10\n",
     .find = hexadecimals},
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
