// Travels of the axes.

#include <algorithm>
#include <cmath>
#include <optional>

#include "platform/text/Number.h"
#include "toolkit/Text.h"
#include "toolkit/check/Chains.h"
#include "toolkit/check/Misread.h"
#include "toolkit/check/References.h"
#include "toolkit/check/Rule.h"

using korvo::text::Keyword;
using zkin::KMachineElem;

namespace korvo::checking {
namespace {

// The solver's starts stay within one turn either way.
constexpr double kTurn = 360.0;

bool isLimitLine(const SourceLine& line) {
  return line.keyword == Keyword::limits || line.keyword == Keyword::minimum ||
         line.keyword == Keyword::maximum;
}

// --- names

Findings limitsUnknown(const Source& source) {
  return findingsFor(source, {Keyword::limits, Keyword::minimum, Keyword::maximum}, Lost::unknown);
}

Findings limitsBefore(const Source& source) {
  return findingsFor(source, {Keyword::limits, Keyword::minimum, Keyword::maximum}, Lost::later);
}

Findings limitsPrefix(const Source& source) {
  return findingsFor(source, {Keyword::limits, Keyword::minimum, Keyword::maximum}, Lost::prefix);
}

Findings limitsOfOthers(const Source& source) {
  Findings findings;
  for (const Reference& r : source.linked.references) {
    if (!isLimitLine(*r.line) || r.element < 0) continue;
    if (isAxis(source.linked.elements[static_cast<std::size_t>(r.element)])) continue;
    findings.push_back(Finding(placeOf(r), {inQuotes(r.written)}));
  }
  return findings;
}

// --- numbers

// One end of a travel as a line gives it.
struct End {
  const SourceLine* line = nullptr;  ///< Null: none gives it.
  int operand = 0;                   ///< Where it was looked for.
  std::optional<double> value;       ///< Empty: no number was there.
};

End endAt(const SourceLine& line, int operand) {
  End end{&line, operand, {}};
  const auto i = static_cast<std::size_t>(operand);
  double value = 0.0;
  if (i >= line.statement.operands.size()) return end;
  if (text::scanDouble(std::wstring_view(line.statement.operands[i].text), value))
    end.value = value;
  return end;
}

// What a line says of both ends, as the library reads it: a minimum that is no number leaves its
// operand to the maximum.
struct Ends {
  End minimum;
  End maximum;
};

Ends endsOf(const SourceLine& line) {
  if (line.keyword == Keyword::minimum) return {endAt(line, 1), {}};
  if (line.keyword == Keyword::maximum) return {{}, endAt(line, 1)};
  const End minimum = endAt(line, 1);
  return {minimum, endAt(line, minimum.value ? 2 : 1)};
}

bool isWritten(const SourceLine& line, int operand) {
  const auto i = static_cast<std::size_t>(operand);
  return i < line.statement.operands.size() && !line.statement.operands[i].text.empty();
}

// With semicolons or decimal commas the numbers are not those that were meant.
bool isOtherwiseMeant(const SourceLine& line, int version) {
  const Misreading why = misreadOf(line, version).why;
  return why == Misreading::semicolon || why == Misreading::decimalComma;
}

// The references of limit lines that found an axis.
std::vector<Reference> limitedAxes(const Source& source) {
  std::vector<Reference> found;
  for (const Reference& r : source.linked.references) {
    if (!isLimitLine(*r.line) || r.element < 0) continue;
    const KMachineElem& e = source.linked.elements[static_cast<std::size_t>(r.element)];
    if (isAxis(e) && !isOtherwiseMeant(*r.line, source.format.version)) found.push_back(r);
  }
  return found;
}

const text::Token& operandOf(const End& end) {
  return end.line->statement.operands[static_cast<std::size_t>(end.operand)];
}

// What the library makes of a line with an end that is no number.
Words whatBecomesOf(const SourceLine& line, const Ends& ends) {
  if (line.keyword == Keyword::minimum) return {"no minimum is set", "aucun minimum n'est fixé"};
  if (line.keyword == Keyword::maximum) return {"no maximum is set", "aucun maximum n'est fixé"};
  if (ends.minimum.value) return {"only the minimum is set", "seul le minimum est fixé"};
  return {"neither end is set", "aucune des deux limites n'est fixée"};
}

// The operand of a line that should be a number and is none; the minimum's comes first.
std::optional<End> badEnd(const Ends& ends) {
  for (const End& end : {ends.minimum, ends.maximum}) {
    if (end.line && !end.value) return end;
  }
  return std::nullopt;
}

// Something is written there, or behind it, which is lost for want of a number there.
bool isNumberWanted(const SourceLine& line, int operand) {
  const bool isLow = line.keyword == Keyword::limits && operand == 1;
  return isWritten(line, operand) || (isLow && isWritten(line, 2));
}

Findings limitNumbers(const Source& source) {
  Findings findings;
  for (const Reference& r : limitedAxes(source)) {
    const Ends ends = endsOf(*r.line);
    const std::optional<End> bad = badEnd(ends);
    if (!bad || !isNumberWanted(*r.line, bad->operand)) continue;
    findings.push_back(Finding(r.line->placeOf(bad->operand),
                               {inQuotes(operandOf(*bad).text), whatBecomesOf(*r.line, ends)}));
  }
  return findings;
}

Findings limitsMissing(const Source& source) {
  Findings findings;
  for (const Reference& r : limitedAxes(source)) {
    const Ends ends = endsOf(*r.line);
    const std::optional<End> bad = badEnd(ends);
    if (!bad || isNumberWanted(*r.line, bad->operand)) continue;
    if (misreadOf(*r.line, source.format.version).why != Misreading::none) continue;
    findings.push_back(Finding(r.line->placeOf(bad->operand), {whatBecomesOf(*r.line, ends)}));
  }
  return findings;
}

// --- travels

// The travel of an axis once the whole file is read.
struct Travel {
  const KMachineElem* axis = nullptr;
  End minimum;
  End maximum;

  bool isWhole() const { return minimum.value && maximum.value; }
  bool isRotary() const { return axis->getElemType() == KMachineElem::KMET_TYPE_AROT; }
  std::string name() const { return inQuotes(axis->getElemName()); }
  /// The line that made it what it is.
  const SourceLine& line() const {
    if (!minimum.line || !maximum.line) return minimum.line ? *minimum.line : *maximum.line;
    return minimum.line->number > maximum.line->number ? *minimum.line : *maximum.line;
  }
  /// Of both ends when one line gives them, else of the end that came last.
  Place place() const {
    if (minimum.line == maximum.line) return line().placeOf(minimum.operand, 2);
    return line().placeOf(1);
  }
};

std::vector<Travel> travelsOf(const Source& source) {
  std::vector<Travel> byRank(source.linked.elements.size());
  for (const Reference& r : limitedAxes(source)) {
    Travel& travel = byRank[static_cast<std::size_t>(r.element)];
    const Ends ends = endsOf(*r.line);
    travel.axis = &source.linked.elements[static_cast<std::size_t>(r.element)];
    if (ends.minimum.line) travel.minimum = ends.minimum;
    if (ends.maximum.line) travel.maximum = ends.maximum;
  }
  std::erase_if(byRank, [](const Travel& travel) { return !travel.axis; });
  return byRank;
}

std::string numberText(const End& end) { return toUtf8(operandOf(end).text); }

bool isAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Both numbers of one line, the other way round, with what stands between them as it is.
void mendSwapped(Finding& finding, const Travel& travel) {
  const Place low = travel.line().placeOf(1), high = travel.line().placeOf(2);
  const auto written = [&](int from, int to) {
    return travel.line().raw.substr(static_cast<std::size_t>(from - 1),
                                    static_cast<std::size_t>(to - from));
  };
  const int lowEnd = low.column + low.length, highEnd = high.column + high.length;
  const std::string text =
      written(high.column, highEnd) + written(lowEnd, high.column) + written(low.column, lowEnd);
  if (isAscii(text)) finding.mend({low.line, low.column, highEnd - low.column}, text);
}

bool isSwapped(const Travel& travel) {
  return travel.isWhole() && *travel.minimum.value > *travel.maximum.value;
}

// Of a rotary axis both ways round may be meant: 350 to 10 is a small arc, 10 to 350 the rest.
Findings limitsSwapped(const Source& source) {
  Findings findings;
  for (const Travel& travel : travelsOf(source)) {
    if (!isSwapped(travel)) continue;
    Finding finding(travel.place(),
                    {travel.name(), numberText(travel.minimum), numberText(travel.maximum)});
    if (travel.minimum.line == travel.maximum.line && !travel.isRotary()) {
      mendSwapped(finding, travel);
    }
    findings.push_back(std::move(finding));
  }
  return findings;
}

Findings limitsEqual(const Source& source) {
  Findings findings;
  for (const Travel& travel : travelsOf(source)) {
    if (!travel.isWhole() || *travel.minimum.value != *travel.maximum.value) continue;
    findings.push_back(Finding(travel.place(), {numberText(travel.minimum), travel.name()}));
  }
  return findings;
}

Findings limitsNan(const Source& source) {
  Findings findings;
  for (const Travel& travel : travelsOf(source)) {
    for (const End& end : {travel.minimum, travel.maximum}) {
      if (!end.value || !std::isnan(*end.value)) continue;
      findings.push_back(
          Finding(end.line->placeOf(end.operand), {inQuotes(operandOf(end).text), travel.name()}));
    }
  }
  return findings;
}

// An end without a number, or no number at all, is told by the rules about numbers.
bool isSame(const End& a, const End& b) { return !a.value || !b.value || *a.value == *b.value; }

Findings limitsAgain(const Source& source) {
  std::vector<Ends> byRank(source.linked.elements.size());
  Findings findings;
  for (const Reference& r : limitedAxes(source)) {
    const Ends now = endsOf(*r.line);
    Ends& before = byRank[static_cast<std::size_t>(r.element)];
    const bool isLow = now.minimum.line && !isSame(before.minimum, now.minimum);
    const bool isHigh = now.maximum.line && !isSame(before.maximum, now.maximum);
    const End& old = isLow ? before.minimum : before.maximum;
    if (isLow || isHigh) {
      findings.push_back(Finding(placeOf(r), {inQuotes(r.written), old.line->number}));
    }
    if (now.minimum.line) before.minimum = now.minimum;
    if (now.maximum.line) before.maximum = now.maximum;
  }
  return findings;
}

bool isBeyondTurn(const End& end) {
  return end.value && std::isfinite(*end.value) && std::abs(*end.value) > kTurn;
}

Findings limitsBeyondTurn(const Source& source) {
  Findings findings;
  for (const Travel& travel : travelsOf(source)) {
    const bool isLow = isBeyondTurn(travel.minimum), isHigh = isBeyondTurn(travel.maximum);
    if (!travel.isRotary() || !(isLow || isHigh)) continue;
    const End& end = isLow ? travel.minimum : travel.maximum;
    findings.push_back(Finding(end.line->placeOf(end.operand), {numberText(end), travel.name()}));
  }
  return findings;
}

// The end that the zero position is beyond; swapped limits are told by their own rule.
Findings limitsWithoutZero(const Source& source) {
  const Words minimum("the minimum ", "le minimum "), maximum("the maximum ", "le maximum ");
  Findings findings;
  for (const Travel& travel : travelsOf(source)) {
    const bool isLow = travel.minimum.value && *travel.minimum.value > 0.0;
    const bool isHigh = travel.maximum.value && *travel.maximum.value < 0.0;
    if (isLow == isHigh || isSwapped(travel)) continue;
    const End& end = isLow ? travel.minimum : travel.maximum;
    const Words& which = isLow ? minimum : maximum;
    const Words found(which.english + numberText(end), which.french + numberText(end));
    findings.push_back(Finding(end.line->placeOf(end.operand), {found, travel.name()}));
  }
  return findings;
}

constexpr Rule kRules[] = {
    {.code = "limits-unknown-axis",
     .severity = Severity::error,
     .sentence = {"expected limits of an axis of the file, found {0}",
                  "limites d'un axe du fichier attendues, trouvé : {0}"},
     .suggestion = {"did you mean {0}?", "vouliez-vous dire {0} ?"},
     .meaning = {"No element has that name, so the line is passed over in silence and the axis "
                 "that was meant travels without limits. Names are compared whole, whatever their "
                 "case.",
                 "Aucun élément ne porte ce nom : la ligne est ignorée en silence et l'axe visé se "
                 "déplace sans limites. Les noms sont comparés en entier, sans égard à la casse."},
     .wrong = "axis=RAIL,1,x\nlimits=RIAL,0,400\n",
     .right = "axis=RAIL,1,x\nlimits=RAIL,0,400\n",
     .exampleFormat = Format::version1,
     .find = limitsUnknown},
    {.code = "limits-before-axis",
     .severity = Severity::error,
     .sentence = {"expected limits below the line of their axis, found {0}, which line {1} "
                  "declares",
                  "limites placées sous la ligne de leur axe attendues, trouvé : {0}, déclaré à la "
                  "ligne {1}"},
     .suggestion = {"move the limits below the line of the axis",
                    "placez les limites sous la ligne de l'axe"},
     .meaning = {"The file is read once from top to bottom. When the line is read there is no such "
                 "axis yet, so it is passed over in silence and the axis travels without limits.",
                 "Le fichier est lu une fois de haut en bas. Quand la ligne est lue, l'axe "
                 "n'existe pas encore : elle est ignorée en silence et l'axe se déplace sans "
                 "limites."},
     .wrong = "limits=X,0,400\naxis=X,1,x\n",
     .right = "axis=X,1,x\nlimits=X,0,400\n",
     .exampleFormat = Format::version1,
     .find = limitsBefore},
    {.code = "limits-axe-prefix",
     .severity = Severity::error,
     .sentence = {"expected the name of an axis, found {0}, which does not find the one of line "
                  "{1}",
                  "nom d'un axe attendu, trouvé : {0}, qui ne désigne pas celui de la ligne {1}"},
     .suggestion = {"{0}", "{0}"},
     .meaning = {"In these lines \"AXE_\" is removed from the name when it is written in capitals, "
                 "and only then. So \"axe_x\" does not find X, and in format 1, where an axis "
                 "keeps the prefix in its own name, \"AXE_X\" does not find AXE_X. The line is "
                 "passed over in silence.",
                 "Dans ces lignes « AXE_ » est retiré du nom s'il est écrit en capitales, et "
                 "alors seulement. Ainsi « axe_x » ne désigne pas X et, au format 1, où l'axe "
                 "garde le préfixe dans son propre nom, « AXE_X » ne désigne pas AXE_X. La ligne "
                 "est ignorée en silence."},
     .wrong = "axis=X,x\nlimits=axe_x,0,400\n",
     .right = "axis=X,x\nlimits=AXE_X,0,400\n",
     .exampleFormat = Format::version2,
     .find = limitsPrefix},
    {.code = "limits-not-an-axis",
     .severity = Severity::warning,
     .sentence = {"expected limits of an axis, found {0}, which is none",
                  "limites d'un axe attendues, trouvé : {0}, qui n'en est pas un"},
     .suggestion = {"name a linear or rotary axis", "nommez un axe linéaire ou rotatif"},
     .meaning = {"The limits are kept with the element, but only those of linear and rotary axes "
                 "are ever looked at: frame, part, tools, guns and bodies have no travel.",
                 "Les limites sont gardées avec l'élément, mais seules celles des axes linéaires "
                 "et rotatifs sont consultées : bâti, pièce, outils, canons et corps n'ont pas de "
                 "course."},
     .wrong = "axis=X,1,x\ntool=z,0,0,0\nlimits=OUTIL,0,400\n",
     .right = "axis=X,1,x\ntool=z,0,0,0\nlimits=X,0,400\n",
     .exampleFormat = Format::version1,
     .find = limitsOfOthers},
    {.code = "limits-number",
     .severity = Severity::error,
     .sentence = {"expected a number as a limit, found {0}: {1}",
                  "un nombre attendu comme limite, trouvé : {0} : {1}"},
     .suggestion = {"write a number; for one end alone use courseminimum or coursemaximum",
                    "écrivez un nombre ; pour une seule limite employez courseminimum ou "
                    "coursemaximum"},
     .meaning = {"An end that is no number is not set, and one that an earlier line gave is "
                 "forgotten. When the minimum is no number, the maximum is looked for in the same "
                 "place: then neither end is set.",
                 "Une limite qui n'est pas un nombre n'est pas fixée, et celle d'une ligne "
                 "précédente est oubliée. Si le minimum n'est pas un nombre, le maximum est "
                 "cherché à la même place : aucune des deux n'est alors fixée."},
     .wrong = "axis=X,1,x\nlimits=X,low,400\n",
     .right = "axis=X,1,x\nlimits=X,0,400\n",
     .exampleFormat = Format::version1,
     .find = limitNumbers},
    {.code = "limits-missing",
     .severity = Severity::warning,
     .sentence = {"expected a number for each limit, found none here: {0}",
                  "un nombre attendu pour chaque limite, trouvé : aucun ici : {0}"},
     .suggestion = {"write all numbers; for one end alone use courseminimum or coursemaximum",
                    "écrivez tous les nombres ; pour une seule limite employez courseminimum ou "
                    "coursemaximum"},
     .meaning = {"\"limits\" wants two numbers, \"courseminimum\" and \"coursemaximum\" one. An "
                 "end that is left out is not set: the axis has no limit there, and one that an "
                 "earlier line gave is forgotten.",
                 "« limites » veut deux nombres, « courseminimum » et « coursemaximum » un seul. "
                 "Une limite omise n'est pas fixée : l'axe n'en a pas de ce côté, et celle d'une "
                 "ligne précédente est oubliée."},
     .wrong = "axis=X,1,x\nlimits=X,400\n",
     .right = "axis=X,1,x\ncoursemaximum=X,400\n",
     .exampleFormat = Format::version1,
     .find = limitsMissing},
    {.code = "limits-swapped",
     .severity = Severity::error,
     .sentence = {"expected the minimum of {0} below its maximum, found {1} and {2}",
                  "minimum de {0} inférieur à son maximum attendu, trouvé : {1} et {2}"},
     .suggestion = {"write the minimum first, then the maximum",
                    "écrivez d'abord le minimum, puis le maximum"},
     .meaning = {"No value lies between such limits: every position of the machine is outside of "
                 "them, and no solver finds one.",
                 "Aucune valeur n'est comprise entre de telles limites : toute position de la "
                 "machine est en dehors, et aucun calcul n'en trouve."},
     .wrong = "axis=X,1,x\nlimits=X,400,0\n",
     .right = "axis=X,1,x\nlimits=X,0,400\n",
     .exampleFormat = Format::version1,
     .find = limitsSwapped},
    {.code = "limits-equal",
     .severity = Severity::note,
     .sentence = {"expected a travel between two different limits, found {0} for both of {1}",
                  "course entre deux limites différentes attendue, trouvé : {0} pour les deux de "
                  "{1}"},
     .suggestion = {},
     .meaning =
         {"Such an axis is inside its limits at one value only. To hold an axis still, "
          "hosts lock it instead: the solvers then leave it where it is.",
          "Un tel axe n'est dans ses limites qu'à une seule valeur. Pour le tenir immobile, "
          "les programmes le verrouillent plutôt : les calculs le laissent alors où il est."},
     .wrong = "axis=X,1,x\nlimits=X,0,0\n",
     .right = "axis=X,1,x\nlimits=X,0,400\n",
     .exampleFormat = Format::version1,
     .find = limitsEqual},
    {.code = "limits-nan",
     .severity = Severity::warning,
     .sentence = {"expected a limit that values can be compared with, found {0} for {1}",
                  "limite comparable à des valeurs attendue, trouvé : {0} pour {1}"},
     .suggestion = {"write a number, or remove the limit",
                    "écrivez un nombre, ou supprimez la limite"},
     .meaning = {"Words that begin with \"nan\" are read as the value that is no number. It is "
                 "kept as a limit that no value is ever beyond.",
                 "Les mots qui commencent par « nan » sont lus comme la valeur qui n'est pas un "
                 "nombre. Elle est gardée comme limite, qu'aucune valeur ne dépasse jamais."},
     .wrong = "axis=X,1,x\nlimits=X,0,nan\n",
     .right = "axis=X,1,x\nlimits=X,0,400\n",
     .exampleFormat = Format::version1,
     .find = limitsNan},
    {.code = "limits-again",
     .severity = Severity::warning,
     .sentence = {"expected each limit once, found other ones for {0}, which replace those of line "
                  "{1}",
                  "chaque limite attendue une seule fois, trouvé : d'autres pour {0}, qui "
                  "remplacent celles de la ligne {1}"},
     .suggestion = {"keep one of the two lines", "ne gardez qu'une des deux lignes"},
     .meaning = {"The last line that gives a limit counts. Two lines with different numbers are "
                 "most often a copy in which the name was not changed.",
                 "La dernière ligne qui donne une limite compte. Deux lignes aux nombres "
                 "différents sont le plus souvent une copie dont le nom n'a pas été changé."},
     .wrong = "axis=X,1,x\naxis=Y,2,y\nlimits=X,0,400\nlimits=X,0,250\n",
     .right = "axis=X,1,x\naxis=Y,2,y\nlimits=X,0,400\nlimits=Y,0,250\n",
     .exampleFormat = Format::version1,
     .find = limitsAgain},
    {.code = "limits-beyond-turn",
     .severity = Severity::note,
     .sentence = {"expected limits within one turn either way, found {0} for {1}",
                  "limites à un tour au plus de part et d'autre attendues, trouvé : {0} pour {1}"},
     .suggestion = {},
     .meaning = {"The limits count as written. But the list of all positions for a tool point and "
                 "direction is searched from starts within one turn either way: positions that "
                 "differ only by a further turn are not looked for.",
                 "Les limites comptent telles quelles. Mais la liste de toutes les positions pour "
                 "un point et une direction d'outil est cherchée à partir de départs à un tour au "
                 "plus : celles qui ne diffèrent que d'un tour de plus ne sont pas cherchées."},
     .wrong = "rotation=C,6,z,0,0,0,0,0\nlimits=C,-400,400\n",
     .right = "rotation=C,6,z,0,0,0,0,0\nlimits=C,-360,360\n",
     .exampleFormat = Format::version1,
     .find = limitsBeyondTurn},
    {.code = "limits-without-zero",
     .severity = Severity::note,
     .sentence = {"expected limits with position zero between them, found {0} for {1}",
                  "limites encadrant la position zéro attendues, trouvé : {0} pour {1}"},
     .suggestion = {},
     .meaning = {"All directions and points of the file are those at position zero, which the axis "
                 "cannot reach. That may be right, but a sign or an offset may also be missing: "
                 "values are counted from the zero position of the file.",
                 "Toutes les directions et tous les points du fichier sont ceux de la position "
                 "zéro, que l'axe ne peut atteindre. Cela peut être juste, mais un signe ou un "
                 "décalage peut aussi manquer : les valeurs se comptent depuis la position zéro "
                 "du fichier."},
     .wrong = "axis=X,1,x\nlimits=X,100,400\n",
     .right = "axis=X,1,x\nlimits=X,-100,400\n",
     .exampleFormat = Format::version1,
     .find = limitsWithoutZero},
};

}  // namespace

std::span<const Rule> limitRules() { return kRules; }

}  // namespace korvo::checking
