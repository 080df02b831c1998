// Numbers, names and places of axes.

#include <algorithm>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

#include "platform/zgeo/UTools.h"
#include "toolkit/check/Chains.h"
#include "toolkit/check/Misread.h"
#include "toolkit/check/Operands.h"
#include "toolkit/check/References.h"
#include "toolkit/check/Rule.h"

using zkin::KMachineElem;

namespace korvo::checking {
namespace {

// Beyond this the library's table of axis numbers would fill the memory.
constexpr int kMaxAxisNumber = 10000;
// What a machine position holds.
constexpr std::size_t kMaxAxes = 12;

// An axis and the line that declares it.
struct AxisLine {
  const KMachineElem& element;
  const SourceLine& line;

  int number() const { return element.getElemIndex(); }
  std::string name() const { return inQuotes(element.getElemName()); }
  Place placeOfName() const { return line.placeOf(0); }
  // In format 2 the name is the number.
  Place placeOfNumber(int version) const { return line.placeOf(version == 2 ? 0 : 1); }
};

std::vector<AxisLine> allAxesOf(const Source& source) {
  std::vector<AxisLine> axes;
  for (std::size_t i = 0; i < source.linked.elements.size(); ++i) {
    const KMachineElem& e = source.linked.elements[i];
    const SourceLine& line = *source.linked.declarations[i];
    if (isAxis(e) && line.statement.hasOperandPart) axes.push_back({e, line});
  }
  return axes;
}

// Lines without operands, and with semicolons between them, are told by rules of their own.
std::vector<AxisLine> axesOf(const Source& source) {
  std::vector<AxisLine> axes;
  for (const AxisLine& axis : allAxesOf(source)) {
    if (!isUnsplit(axis.line)) axes.push_back(axis);
  }
  return axes;
}

std::vector<AxisLine> movingAxesOf(const Source& source) {
  std::vector<AxisLine> axes;
  for (const AxisLine& axis : axesOf(source)) {
    if (isMovingAxis(axis.element)) axes.push_back(axis);
  }
  return axes;
}

// --- numbers

// Whatever else is to be said of its line: the library has to be kept from it.
Findings axisNumbers(const Source& source) {
  Findings findings;
  for (const AxisLine& axis : allAxesOf(source)) {
    if (axis.number() <= kMaxAxisNumber) continue;
    findings.push_back(Finding(axis.placeOfNumber(source.format.version), {axis.number()}));
  }
  return findings;
}

bool hasNumber(const AxisLine& axis, int version) {
  const std::vector<Step> steps = stepsOf(axis.line, version);
  const Step* const number = stepOf(steps, Role::number);
  return number && number->count > 0;
}

// A ring that comes of such a number, and a direction taken for one, are told by their own rules.
Findings axisNumbersBelowOne(const Source& source) {
  if (hasRing(source.linked)) return {};
  const int version = source.format.version;
  Findings findings;
  for (const AxisLine& axis : axesOf(source)) {
    if (isMovingAxis(axis.element) || !hasNumber(axis, version)) continue;
    if (misreadOf(axis.line, version).why == Misreading::otherFormat) continue;
    findings.push_back(Finding(axis.placeOfNumber(version), {axis.number(), axis.name()}));
  }
  return findings;
}

// Where a direction stands instead of the number a rule of its own says so.
Findings axisPlaces(const Source& source) {
  if (source.format.version == 2) return {};
  Findings findings;
  for (const AxisLine& axis : axesOf(source)) {
    if (isMovingAxis(axis.element) || hasNumber(axis, source.format.version)) continue;
    if (misreadOf(axis.line, source.format.version).why == Misreading::otherFormat) continue;
    findings.push_back(Finding(axis.placeOfName(), {axis.name()}));
  }
  return findings;
}

// In format 2 the name is the number: then the rule about names says it.
Findings axesTwice(const Source& source, bool isByName) {
  if (isByName != (source.format.version == 2)) return {};
  Findings findings;
  std::unordered_map<int, int> lineOf;
  for (const AxisLine& axis : movingAxesOf(source)) {
    const auto [first, isNew] = lineOf.emplace(axis.number(), axis.line.number);
    if (isNew) continue;
    const Words which = isByName ? Words(axis.name()) : Words(axis.number());
    findings.push_back(Finding(axis.placeOfNumber(source.format.version), {which, first->second}));
  }
  return findings;
}

Findings axisNumbersTwice(const Source& source) { return axesTwice(source, false); }

// X is 1, Y 2, Z 3, A 4, B 5 and C 6, as format 2 has it: a machine without some of them leaves
// their numbers out, and format 2 has no choice.
bool bearsNumberOfLetter(const AxisLine& axis) {
  constexpr std::wstring_view kLetters = L"XYZABC";
  if (axis.number() > std::ssize(kLetters)) return false;
  const std::wstring name = zgeo::UTools::_up(axis.element.getElemName());
  return name.starts_with(kLetters[static_cast<std::size_t>(axis.number()) - 1]);
}

// Up to 6 a hole is that of a letter that the machine has not, when all around bear theirs.
bool isHoleOfLetters(const AxisLine& before, const AxisLine& after) {
  return bearsNumberOfLetter(before) && (bearsNumberOfLetter(after) || after.number() == 7);
}

Findings axisNumberGaps(const Source& source) {
  std::vector<AxisLine> axes = movingAxesOf(source);
  std::vector<const AxisLine*> sorted;
  sorted.reserve(axes.size());
  for (const AxisLine& axis : axes) sorted.push_back(&axis);
  const auto rank = [](const AxisLine* a) { return std::pair(a->number(), a->line.number); };
  std::sort(sorted.begin(), sorted.end(),
            [&rank](const AxisLine* a, const AxisLine* b) { return rank(a) < rank(b); });
  Findings findings;
  for (std::size_t i = 1; i < sorted.size(); ++i) {
    const AxisLine &before = *sorted[i - 1], &after = *sorted[i];
    if (after.number() - before.number() < 2 || isHoleOfLetters(before, after)) continue;
    findings.push_back(Finding(after.placeOfNumber(source.format.version),
                               {before.number(), after.number(), after.name()}));
  }
  return findings;
}

Findings axisCount(const Source& source) {
  std::set<int> numbers;
  for (const KMachineElem& e : source.linked.elements) {
    if (KMachineElem::_isIndexAxis(e.getElemIndex())) numbers.insert(e.getElemIndex());
  }
  if (!numbers.empty() && numbers.size() <= kMaxAxes) return {};
  return {Finding({}, {static_cast<int>(numbers.size())})};
}

// --- names

// A line that says its number, and a file of the other format, are told by rules of their own.
Findings axisNamesUnknown(const Source& source) {
  if (source.format.version != 2 || isOfOtherFormat(source.format, source.likely)) return {};
  Findings findings;
  for (const AxisLine& axis : axesOf(source)) {
    const bool isOther = misreadOf(axis.line, 2).why == Misreading::otherFormat;
    if (isMovingAxis(axis.element) || isOther) continue;
    const bool isRotary = axis.element.getElemType() == KMachineElem::KMET_TYPE_AROT;
    const Words wanted =
        isRotary ? Words("A, B or C", "A, B ou C") : Words("X, Y or Z", "X, Y ou Z");
    findings.push_back(Finding(axis.placeOfName(), {wanted, inQuotes(axis.element.getElemName())}));
  }
  return findings;
}

// Of one number they are one axis twice, which is told by its own rule.
Findings axisNamesTwice(const Source& source) {
  Findings findings = axesTwice(source, true);
  std::unordered_map<std::wstring, AxisLine> firsts;
  for (const AxisLine& axis : movingAxesOf(source)) {
    if (axis.element.getElemName().empty()) continue;
    const auto [at, isNew] = firsts.emplace(zgeo::UTools::_low(axis.element.getElemName()), axis);
    if (isNew || at->second.number() == axis.number()) continue;
    findings.push_back(Finding(axis.placeOfName(), {axis.name(), at->second.line.number}));
  }
  return findings;
}

// Names of other elements, and the words for all tools in collision lines.
bool isReserved(const std::wstring& name) {
  static const std::set<std::wstring> kNames = {L"bati",  L"piece", L"outil", L"geom",
                                                L"drill", L"tool",  L"gun",   L"gundrill"};
  return kNames.count(zgeo::UTools::_low(name)) > 0;
}

Findings axisNamesReserved(const Source& source) {
  Findings findings;
  for (const AxisLine& axis : movingAxesOf(source)) {
    if (!isReserved(axis.element.getElemName())) continue;
    findings.push_back(Finding(axis.placeOfName(), {axis.name()}));
  }
  return findings;
}

// --- places in the chain

// Where the chain itself is at fault, the rule about that fault says so.
Findings axesOffChains(const Source& source) {
  if (chainFaultOf(source.linked) != ChainFault::none) return {};
  const std::vector<bool> isOn = onToolChains(source.linked);
  Findings findings;
  for (std::size_t i = 0; i < isOn.size(); ++i) {
    const KMachineElem& e = source.linked.elements[i];
    if (isOn[i] || !isMovingAxis(e)) continue;
    const AxisLine axis{e, *source.linked.declarations[i]};
    findings.push_back(Finding(axis.placeOfName(), {axis.name()}));
  }
  return findings;
}

constexpr Rule kRules[] = {
    {.code = "axis-number",
     .severity = Severity::error,
     .isEndless = true,
     .sentence = {"expected axis numbers up to 10000, found {0}",
                  "numéros d'axe attendus jusqu'à 10000, trouvé : {0}"},
     .suggestion = {"number the axes 1, 2, 3, ...", "numérotez les axes 1, 2, 3, ..."},
     .meaning = {"The library keeps a table with one entry for each number up to the largest: a "
                 "number of nine digits fills the memory.",
                 "La bibliothèque tient une table d'une entrée par numéro jusqu'au plus grand : un "
                 "numéro de neuf chiffres remplit la mémoire."},
     .wrong = "translation=X,20000,x\n",
     .right = "translation=X,2,x\n",
     .find = axisNumbers},
    {.code = "axis-number-low",
     .severity = Severity::warning,
     .sentence = {"expected an axis number from 1 up, found {0} for {1}, which never moves",
                  "numéro d'axe à partir de 1 attendu, trouvé : {0} pour {1}, qui ne bouge jamais"},
     .suggestion = {"give the axis a number from 1 up that no other axis has",
                    "donnez à l'axe un numéro à partir de 1 qu'aucun autre ne porte"},
     .meaning = {"Only numbers from 1 up are those of axes: 0 is the frame's, -1 the part's, and "
                 "lower ones belong to tools and bodies. Such an axis has no place in positions, "
                 "and what follows hangs on the element that has the number, past the axis.",
                 "Seuls les numéros à partir de 1 sont ceux d'axes : 0 est celui du bâti, -1 celui "
                 "de la pièce, les suivants ceux des outils et des corps. Un tel axe n'a pas de "
                 "place dans les positions, et la suite s'accroche à l'élément qui porte le "
                 "numéro, en contournant l'axe."},
     .wrong = "translation=W,0,z\n",
     .right = "translation=W,1,z\n",
     .exampleFormat = Format::version1,
     .find = axisNumbersBelowOne},
    {.code = "axis-count",
     .severity = Severity::error,
     .sentence = {"expected 1 to 12 numbered axes, found {0}",
                  "1 à 12 axes numérotés attendus, trouvé : {0}"},
     .suggestion = {},
     .meaning = {"A position holds at most twelve values, and a machine without an axis has no "
                 "positions: no question about one would be answered.",
                 "Une position contient au plus douze valeurs, et une machine sans axe n'a pas de "
                 "position : aucune question ne recevrait de réponse."},
     .wrong = "frame\npart=x,y,0,0,0\nlien=BATI\ntool=z,0,0,0\n",
     .right = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\n",
     .find = axisCount},
    {.code = "axis-place",
     .severity = Severity::warning,
     .sentence = {"expected an axis number from 1 up behind the name, found {0} without one, which "
                  "never moves",
                  "numéro d'axe à partir de 1 attendu après le nom, trouvé : {0} sans numéro, qui "
                  "ne bouge jamais"},
     .suggestion = {"write number and direction behind the name",
                    "écrivez le numéro et la direction après le nom"},
     .meaning = {"An axis without a number from 1 up has no place in positions: it stands in the "
                 "chain, but no value moves it.",
                 "Un axe sans numéro à partir de 1 n'a pas de place dans les positions : il est "
                 "dans la chaîne, mais aucune valeur ne le déplace."},
     .wrong = "translation=W,column.stl\n",
     .right = "translation=W,1,z,column.stl\n",
     .exampleFormat = Format::version1,
     .find = axisPlaces},
    {.code = "axis-number-twice",
     .severity = Severity::warning,
     .sentence = {"expected each axis number once, found {0} again, after line {1}",
                  "chaque numéro d'axe attendu une seule fois, trouvé : {0} à nouveau, après la "
                  "ligne {1}"},
     .suggestion = {"give one of the two axes another number",
                    "donnez un autre numéro à l'un des deux axes"},
     .meaning = {"Elements are looked up by their number and the first one answers: the other axis "
                 "is never found, and both move with one value.",
                 "Les éléments sont cherchés par leur numéro et le premier répond : l'autre axe "
                 "n'est jamais trouvé, et les deux suivent une même valeur."},
     .wrong = "translation=X,1,x\ntranslation=Y,1,y\n",
     .right = "translation=X,1,x\ntranslation=Y,2,y\n",
     .find = axisNumbersTwice},
    {.code = "axis-number-gap",
     .severity = Severity::note,
     .sentence =
         {"expected axis numbers without a gap, found none between {0} and {1}, that of {2}",
          "numéros d'axe sans lacune attendus, trouvé : aucun entre {0} et {1}, celui de "
          "{2}"},
     .suggestion = {},
     .meaning = {"Gaps are allowed: positions hold the axes in the order of their numbers, without "
                 "places for missing ones. A gap may be a slip of the pen, though, and the place "
                 "of an axis in positions is then not its number.",
                 "Les lacunes sont permises : les positions contiennent les axes dans l'ordre de "
                 "leurs numéros, sans place pour les absents. Mais une lacune peut être une faute "
                 "de frappe, et la place d'un axe dans les positions n'est alors pas son numéro."},
     .wrong = "axis=J1,1,x\naxis=J2,22,y\n",
     .right = "axis=J1,1,x\naxis=J2,2,y\n",
     .exampleFormat = Format::version1,
     .find = axisNumberGaps},
    {.code = "axis-name-unknown",
     .severity = Severity::warning,
     .sentence = {"expected {0} as the name of such an axis in format 2, found {1}, which never "
                  "moves",
                  "nom {0} attendu pour un tel axe au format 2, trouvé : {1}, qui ne bouge jamais"},
     .suggestion = {"use one of these names, or write the file in format 1 with a number behind "
                    "each name",
                    "employez l'un de ces noms, ou écrivez le fichier au format 1 avec un numéro "
                    "après chaque nom"},
     .meaning = {"Format 2 knows the linear axes X, Y, Z and the rotary axes A, B, C, and their "
                 "names stand for their numbers. Another name gets the number of the frame: the "
                 "axis never moves, and what follows hangs on the frame, past the axis.",
                 "Le format 2 connaît les axes linéaires X, Y, Z et les axes rotatifs A, B, C, "
                 "dont le nom tient lieu de numéro. Un autre nom reçoit le numéro du bâti : l'axe "
                 "ne bouge jamais, et la suite s'accroche au bâti, en contournant l'axe."},
     .wrong = "axis=X,x\naxis=W,z\n",
     .right = "axis=X,x\naxis=Z,z\n",
     .exampleFormat = Format::version2,
     .find = axisNamesUnknown},
    {.code = "axis-name-twice",
     .severity = Severity::warning,
     .sentence = {"expected each axis name once, found {0} again, after line {1}",
                  "chaque nom d'axe attendu une seule fois, trouvé : {0} à nouveau, après la ligne "
                  "{1}"},
     .suggestion = {"give one of the two axes another name",
                    "donnez un autre nom à l'un des deux axes"},
     .meaning = {"Limits, links and collision pairs find an axis by its name, whatever its case, "
                 "and the first one answers: none of them reaches the second axis.",
                 "Limites, liens et paires de collision trouvent un axe par son nom, sans égard à "
                 "la casse, et le premier répond : rien n'atteint le second axe."},
     .wrong = "axis=X,1,x\naxis=x,2,y\n",
     .right = "axis=X,1,x\naxis=Y,2,y\n",
     .exampleFormat = Format::version1,
     .find = axisNamesTwice},
    {.code = "axis-name-reserved",
     .severity = Severity::warning,
     .sentence = {"expected an axis name that means no other element, found {0}",
                  "nom d'axe ne désignant aucun autre élément attendu, trouvé : {0}"},
     .suggestion = {"give the axis another name", "donnez un autre nom à l'axe"},
     .meaning = {"BATI, PIECE, OUTIL, DRILL and GEOM are the names of frame, part, tools, guns and "
                 "bodies in other lines; tool, gun and gundrill mean all tools in collision lines. "
                 "An axis of that name is found instead of them, or they instead of the axis.",
                 "BATI, PIECE, OUTIL, DRILL et GEOM sont les noms du bâti, de la pièce, des "
                 "outils, des canons et des corps dans les autres lignes ; tool, gun et gundrill "
                 "désignent tous les outils dans les lignes de collision. Un axe de ce nom est "
                 "trouvé à leur place, ou eux à la sienne."},
     .wrong = "axis=TOOL,1,x\n",
     .right = "axis=X,1,x\n",
     .exampleFormat = Format::version1,
     .find = axisNamesReserved},
    {.code = "axis-off-chain",
     .severity = Severity::warning,
     .sentence = {"expected every axis between the part and a tool, found {0} in none",
                  "chaque axe attendu entre la pièce et un outil, trouvé : {0} dans aucune chaîne"},
     .suggestion = {"put its line between the frame and a tool, or link the tool to it",
                    "placez sa ligne entre le bâti et un outil, ou liez-y l'outil"},
     .meaning = {"Such an axis moves neither part nor tool. Most often a \"lien\" line goes past "
                 "it, or it stands behind the tool.",
                 "Un tel axe ne déplace ni la pièce ni l'outil. Le plus souvent une ligne « lien » "
                 "le contourne, ou il est placé après l'outil."},
     .wrong = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\nlien=BATI\naxis=Y,2,y\n",
     .right = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\ntool=z,0,0,0\n",
     .find = axesOffChains},
};

}  // namespace

std::span<const Rule> axisRules() { return kRules; }

}  // namespace korvo::checking
