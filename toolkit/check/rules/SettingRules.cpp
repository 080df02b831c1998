// Strategy, mode, rotation points and collision pairs.

#include <algorithm>
#include <compare>
#include <map>
#include <set>

#include "platform/text/Number.h"
#include "toolkit/check/Chains.h"
#include "toolkit/check/References.h"
#include "toolkit/check/Rule.h"

using korvo::text::Keyword;
using zkin::KMachineElem;

namespace korvo::checking {
namespace {

// How many operands of a rotation point are read.
constexpr std::size_t kMaxAxes = 12;

// The reader tries an operand that is no number for ever, so the first of them is enough.
Findings rotationPointNumbers(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword != Keyword::rotationPoint) continue;
    const std::vector<text::Token>& operands = line.statement.operands;
    for (std::size_t i = 0; i < std::min(operands.size(), kMaxAxes); ++i) {
      double value = 0.0;
      if (text::scanDouble(std::wstring_view(operands[i].text), value)) continue;
      findings.push_back(Finding(line.placeOf(static_cast<int>(i)),
                                 {inQuotes(operands[i].text), static_cast<int>(i) + 1}));
      break;
    }
  }
  return findings;
}

std::size_t axisCountOf(const LinkedElements& linked) {
  std::set<int> numbers;
  for (const KMachineElem& e : linked.elements) {
    if (isMovingAxis(e)) numbers.insert(e.getElemIndex());
  }
  return numbers.size();
}

// Beyond twelve axes there are no positions, which is told by its own rule.
Findings rotationPointsShort(const Source& source) {
  const std::size_t wanted = axisCountOf(source.linked);
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword != Keyword::rotationPoint || !line.statement.hasOperandPart) continue;
    const std::size_t count = line.statement.operands.size();
    if (count >= wanted || wanted > kMaxAxes || hasSemicolon(line)) continue;
    findings.push_back(Finding(line.placeOf(static_cast<int>(count)),
                               {static_cast<int>(wanted), static_cast<int>(count)}));
  }
  return findings;
}

// --- strategy and mode

Place placeOfOperands(const SourceLine& line) {
  return line.placeOf(0, static_cast<int>(line.statement.operands.size()));
}

// As the library reads it: 0 when nothing scans.
int valueOf(const SourceLine& line) {
  int value = 0;
  text::scanInt(std::wstring_view(operandText(line)), value);
  return value;
}

bool isWhole(std::wstring_view text) {
  int value = 0;
  return text::scanInt(text, value).length == text.size() && !text.empty();
}

// What is read in part only is told by the rules about numbers.
Findings valuesOf(const Source& source, Keyword keyword) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword != keyword || !line.statement.hasOperandPart) continue;
    const text::Token& operand = line.statement.operands[0];
    int value = 0;
    if (text::scanInt(std::wstring_view(operand.text), value)) continue;
    findings.push_back(Finding(line.placeOf(operand), {inQuotes(operand.text)}));
  }
  return findings;
}

Findings strategyValues(const Source& source) { return valuesOf(source, Keyword::strategy); }
Findings modeValues(const Source& source) { return valuesOf(source, Keyword::mode); }

Findings strategiesOther(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword != Keyword::strategy || !line.statement.hasOperandPart) continue;
    const int value = valueOf(line);
    if (!isWhole(line.statement.operands[0].text) || (value >= 0 && value <= 2)) continue;
    findings.push_back(Finding(placeOfOperands(line), {inQuotes(operandText(line))}));
  }
  return findings;
}

// The same value again does no harm.
void findAgain(const Source& source, Keyword keyword, Findings& findings) {
  const SourceLine* before = nullptr;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword != keyword) continue;
    if (before && valueOf(*before) != valueOf(line)) {
      const std::string now = std::to_string(valueOf(line));
      findings.push_back(
          Finding(line.placeOf(line.statement.keyword),
                  {inQuotes(line.statement.keyword.text), now, before->number, valueOf(*before)}));
    }
    before = &line;
  }
}

Findings settingsTwice(const Source& source) {
  Findings findings;
  findAgain(source, Keyword::strategy, findings);
  findAgain(source, Keyword::mode, findings);
  return findings;
}

// --- collision pairs

Findings collisionsUnknown(const Source& source) {
  return findingsFor(source, {Keyword::collision}, Lost::unknown);
}

Findings collisionsBefore(const Source& source) {
  return findingsFor(source, {Keyword::collision}, Lost::later);
}

Findings collisionsPrefix(const Source& source) {
  return findingsFor(source, {Keyword::collision}, Lost::prefix);
}

bool isCollision(const Reference& reference) {
  return reference.line->keyword == Keyword::collision;
}

bool meansAllTools(const Reference& reference) {
  return reference.element < 0 && isToolWord(reference.written);
}

// Without any tool that is told, and not this.
Findings collisionsBeforeTool(const Source& source) {
  const bool hasTools = std::any_of(source.linked.elements.begin(), source.linked.elements.end(),
                                    [](const KMachineElem& e) { return e.isTool(); });
  if (!hasTools) return {};
  Findings findings;
  for (const Reference& r : source.linked.references) {
    if (!isCollision(r) || !meansAllTools(r) || r.tools > 0) continue;
    findings.push_back(Finding(placeOf(r), {inQuotes(r.written)}));
  }
  return findings;
}

Findings collisionsShort(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword != Keyword::collision || line.statement.operands.size() != 1) continue;
    if (hasSemicolon(line)) continue;
    findings.push_back(Finding(line.placeOf(1), {inQuotes(line.statement.operands[0].text)}));
  }
  return findings;
}

// What a name of a collision line means: an element, or (below 0) that many tools.
struct Body {
  int rank = -1;
  int tools = 0;
  auto operator<=>(const Body&) const = default;
  bool isSomething() const { return rank >= 0 || tools > 0; }
  bool isOne() const { return rank >= 0 || tools == 1; }
};

// One tool alone is the element itself, whichever word finds it.
Body bodyOf(const Reference& reference, int firstTool) {
  if (reference.element >= 0) return {reference.element, 0};
  if (!meansAllTools(reference)) return {};
  return reference.tools == 1 ? Body{firstTool, 0} : Body{-1, reference.tools};
}

// The pairs as written: the first name of a line with each of the others.
struct Pair {
  const Reference& first;
  const Reference& other;
  Body a;
  Body b;
};

std::vector<Pair> pairsOf(const Source& source) {
  const std::vector<Reference>& references = source.linked.references;
  const auto tool = std::find_if(source.linked.elements.begin(), source.linked.elements.end(),
                                 [](const KMachineElem& e) { return e.isTool(); });
  const int firstTool = static_cast<int>(tool - source.linked.elements.begin());
  std::vector<Pair> pairs;
  const Reference* first = nullptr;
  for (const Reference& r : references) {
    if (!isCollision(r)) continue;
    if (r.operand == 0) first = &r;
    if (r.operand == 0) continue;
    pairs.push_back({*first, r, bodyOf(*first, firstTool), bodyOf(r, firstTool)});
  }
  return pairs;
}

Findings collisionsSelf(const Source& source) {
  Findings findings;
  for (const Pair& pair : pairsOf(source)) {
    if (!pair.a.isSomething() || pair.a != pair.b || !pair.a.isOne()) continue;
    findings.push_back(
        Finding(placeOf(pair.other), {inQuotes(pair.first.written), inQuotes(pair.other.written)}));
  }
  return findings;
}

Findings collisionsTwice(const Source& source) {
  std::map<std::pair<Body, Body>, int> lineOf;
  Findings findings;
  for (const Pair& pair : pairsOf(source)) {
    if (!pair.a.isSomething() || !pair.b.isSomething()) continue;
    if (pair.a == pair.b && pair.a.isOne()) continue;
    const int line = pair.other.line->number;
    const auto [at, isNew] = lineOf.emplace(std::minmax(pair.a, pair.b), line);
    if (isNew) continue;
    findings.push_back(Finding(placeOf(pair.other), {inQuotes(pair.first.written),
                                                     inQuotes(pair.other.written), at->second}));
  }
  return findings;
}

// The names of tools and guns, which read like the words for all of them.
Findings collisionsFirstTool(const Source& source) {
  Findings findings;
  for (const Reference& r : source.linked.references) {
    if (!isCollision(r) || r.element < 0 || r.tools < 2) continue;
    if (!source.linked.elements[static_cast<std::size_t>(r.element)].isTool()) continue;
    findings.push_back(Finding(placeOf(r), {inQuotes(r.written), r.tools}));
  }
  return findings;
}

constexpr Rule kRules[] = {
    {.code = "rotation-point-number",
     .severity = Severity::error,
     .isEndless = true,
     .sentence = {"expected a number in each of the first 12 operands of a rotation point, found "
                  "{0} as operand {1}",
                  "un nombre attendu dans chacun des 12 premiers opérandes d'un point de rotation, "
                  "trouvé : {0} comme opérande {1}"},
     .suggestion = {"write numbers only, separated by commas",
                    "n'écrivez que des nombres, séparés par des virgules"},
     .meaning = {"The reader tries an operand that is no number again and again: loading the file "
                 "would never end.",
                 "Le lecteur essaie sans fin un opérande qui n'est pas un nombre : le chargement "
                 "du fichier ne finirait jamais."},
     .wrong = "rotationpoint=0,0,zero\n",
     .right = "rotationpoint=0,0,0\n",
     .find = rotationPointNumbers},
    {.code = "rotation-point-short",
     .severity = Severity::warning,
     .sentence = {"expected a number for each of the {0} axes in a rotation point, found {1}",
                  "un nombre attendu pour chacun des {0} axes dans un point de rotation, trouvé : "
                  "{1}"},
     .suggestion = {"write a value for every axis, in the order of their numbers",
                    "écrivez une valeur par axe, dans l'ordre de leurs numéros"},
     .meaning = {"A rotation point is a position: the first number belongs to the axis with the "
                 "lowest number, and so on. Axes without one get 0. An object that loads a file "
                 "again takes only points with more numbers than it has axes.",
                 "Un point de rotation est une position : le premier nombre appartient à l'axe de "
                 "plus petit numéro, et ainsi de suite. Les axes sans nombre reçoivent 0. Un objet "
                 "qui relit un fichier ne prend que les points ayant plus de nombres qu'il n'a "
                 "d'axes."},
     .wrong = "axis=X,1,x\naxis=Y,2,y\nrotationpoint=100\n",
     .right = "axis=X,1,x\naxis=Y,2,y\nrotationpoint=100,200\n",
     .exampleFormat = Format::version1,
     .find = rotationPointsShort},
    {.code = "strategy-value",
     .severity = Severity::warning,
     .sentence = {"expected a whole number as the strategy, found {0}, which is read as 0",
                  "un nombre entier attendu comme stratégie, trouvé : {0}, lu comme 0"},
     .suggestion = {"write 0, 1 or 2", "écrivez 0, 1 ou 2"},
     .meaning = {"Of two ways to a tool direction strategy 1 takes the one that turns the axis "
                 "nearer the part least, 2 that of the axis nearer the tool, any other number the "
                 "one with the smallest single turn. Only a whole number at the beginning is read, "
                 "and 0 when there is none.",
                 "De deux chemins vers une direction d'outil, la stratégie 1 prend celui qui "
                 "tourne le moins l'axe proche de la pièce, 2 l'axe proche de l'outil, tout autre "
                 "nombre celui dont une rotation est la plus petite. Seul un entier au début est "
                 "lu, et 0 s'il n'y en a pas."},
     .wrong = "strategy=first\n",
     .right = "strategy=1\n",
     .find = strategyValues},
    {.code = "strategy-other",
     .severity = Severity::note,
     .sentence = {"expected strategy 0, 1 or 2, found {0}, which chooses as 0 does",
                  "stratégie 0, 1 ou 2 attendue, trouvé : {0}, qui choisit comme 0"},
     .suggestion = {},
     .meaning = {"Only 1 and 2 choose in a way of their own. Every other number is kept and "
                 "chooses as 0 does: the way with the smallest single turn.",
                 "Seuls 1 et 2 choisissent à leur façon. Tout autre nombre est gardé et choisit "
                 "comme 0 : le chemin dont une rotation est la plus petite."},
     .wrong = "strategy=7\n",
     .right = "strategy=0\n",
     .find = strategiesOther},
    {.code = "mode-value",
     .severity = Severity::warning,
     .sentence = {"expected a whole number as the mode, found {0}, which is read as 0",
                  "un nombre entier attendu comme mode, trouvé : {0}, lu comme 0"},
     .suggestion = {"write a whole number, such as 0 or 1",
                    "écrivez un nombre entier, comme 0 ou 1"},
     .meaning = {"The mode says for the host how the tool centre point is kept. Only a whole "
                 "number at the beginning is read, and 0 when there is none.",
                 "Le mode dit au programme comment le centre de l'outil est tenu. Seul un entier "
                 "au début est lu, et 0 s'il n'y en a pas."},
     .wrong = "mode=on\n",
     .right = "mode=1\n",
     .find = modeValues},
    {.code = "setting-twice",
     .severity = Severity::warning,
     .sentence = {"expected {0} once, found {1} here, which replaces {3} of line {2}",
                  "{0} attendu une seule fois, trouvé ici : {1}, qui remplace {3} de la ligne {2}"},
     .suggestion = {"keep one of the two lines", "ne gardez qu'une des deux lignes"},
     .meaning = {"A machine has one strategy and one mode; the last line counts.",
                 "Une machine a une stratégie et un mode ; la dernière ligne compte."},
     .wrong = "strategy=1\nstrategy=2\n",
     .right = "strategy=2\n",
     .find = settingsTwice},
    {.code = "collision-unknown",
     .severity = Severity::error,
     .sentence = {"expected the name of an element, or a word for all tools, found {0}",
                  "nom d'un élément, ou mot désignant tous les outils attendu, trouvé : {0}"},
     .suggestion = {"did you mean {0}?", "vouliez-vous dire {0} ?"},
     .meaning = {"Nothing has that name, so the pairs with it are left out in silence and never "
                 "checked. The frame's name is BATI, the part's PIECE; tool means all tools and "
                 "guns above the line.",
                 "Rien ne porte ce nom : ses paires sont omises en silence et jamais contrôlées. "
                 "Le nom du bâti est BATI, celui de la pièce PIECE ; tool désigne tous les outils "
                 "et canons placés au-dessus."},
     .wrong = "frame\naxis=X,1,x\ncollisions=BATTI,X\n",
     .right = "frame\naxis=X,1,x\ncollisions=BATI,X\n",
     .exampleFormat = Format::version1,
     .find = collisionsUnknown},
    {.code = "collision-before",
     .severity = Severity::error,
     .sentence = {"expected elements above the line, found {0}, which line {1} declares",
                  "éléments placés au-dessus de la ligne attendus, trouvé : {0}, déclaré à la "
                  "ligne {1}"},
     .suggestion = {"move this line to the end of the file",
                    "placez cette ligne à la fin du fichier"},
     .meaning = {"The file is read once from top to bottom: when the line is read there is no such "
                 "element yet. The pairs with it are left out in silence and never checked.",
                 "Le fichier est lu une fois de haut en bas : quand la ligne est lue, l'élément "
                 "n'existe pas encore. Ses paires sont omises en silence et jamais contrôlées."},
     .wrong = "frame\ncollisions=BATI,X\naxis=X,1,x\n",
     .right = "frame\naxis=X,1,x\ncollisions=BATI,X\n",
     .exampleFormat = Format::version1,
     .find = collisionsBefore},
    {.code = "collision-axe-prefix",
     .severity = Severity::error,
     .sentence = {"expected the name of an element, found {0}, which does not find that of line "
                  "{1}",
                  "nom d'un élément attendu, trouvé : {0}, qui ne désigne pas celui de la ligne "
                  "{1}"},
     .suggestion = {"{0}", "{0}"},
     .meaning = {"In collision lines \"AXE_\" is always removed from a name, in format 1 too, "
                 "where an axis keeps the prefix in its own name: such an axis is never found, and "
                 "its pairs are left out in silence.",
                 "Dans les lignes de collision « AXE_ » est toujours retiré du nom, même au format "
                 "1 où un axe garde le préfixe dans son propre nom : un tel axe n'est jamais "
                 "trouvé, et ses paires sont omises en silence."},
     .wrong = "frame\naxis=AXE_X,1,x\ncollisions=BATI,AXE_X\n",
     .right = "frame\naxis=X,1,x\ncollisions=BATI,AXE_X\n",
     .exampleFormat = Format::version1,
     .find = collisionsPrefix},
    {.code = "collision-before-tool",
     .severity = Severity::error,
     .sentence = {"expected a tool above the line that speaks of all tools, found none for {0}",
                  "un outil attendu au-dessus de la ligne qui parle de tous les outils, trouvé : "
                  "aucun pour {0}"},
     .suggestion = {"move this line below the tools", "placez cette ligne sous les outils"},
     .meaning = {"The word means the tools and guns above the line. Before the first of them it "
                 "means nothing, and the pairs with it are left out in silence.",
                 "Le mot désigne les outils et canons placés au-dessus de la ligne. Avant le "
                 "premier il ne désigne rien, et ses paires sont omises en silence."},
     .wrong = "frame\ncollisions=tool,BATI\ntool=z,0,0,0\n",
     .right = "frame\ntool=z,0,0,0\ncollisions=tool,BATI\n",
     .find = collisionsBeforeTool},
    {.code = "collision-short",
     .severity = Severity::warning,
     .sentence = {"expected at least two names in a collision line, found only {0}",
                  "au moins deux noms attendus dans une ligne de collision, trouvé : {0} seul"},
     .suggestion = {"name what it may collide with behind it",
                    "nommez ensuite ce qu'il peut heurter"},
     .meaning = {"The first name is paired with each of the others. One name alone makes no pair, "
                 "and nothing is checked.",
                 "Le premier nom forme une paire avec chacun des autres. Un nom seul ne forme "
                 "aucune paire, et rien n'est contrôlé."},
     .wrong = "frame\ntool=z,0,0,0\ncollisions=tool\n",
     .right = "frame\ntool=z,0,0,0\ncollisions=tool,BATI\n",
     .find = collisionsShort},
    {.code = "collision-self",
     .severity = Severity::warning,
     .sentence = {"expected two different bodies in a pair, found {0} and {1}, which are one",
                  "deux corps différents attendus dans une paire, trouvé : {0} et {1}, qui n'en "
                  "font qu'un"},
     .suggestion = {"name another body", "nommez un autre corps"},
     .meaning = {"A body does not collide with itself: such a pair is passed over. With several "
                 "tools \"tool,tool\" makes pairs of each two of them; with one tool it makes "
                 "none.",
                 "Un corps ne se heurte pas lui-même : une telle paire est ignorée. Avec plusieurs "
                 "outils « tool,tool » forme des paires deux à deux ; avec un seul, aucune."},
     .wrong = "frame\naxis=X,1,x\ncollisions=X,BATI,X\n",
     .right = "frame\naxis=X,1,x\ncollisions=X,BATI\n",
     .exampleFormat = Format::version1,
     .find = collisionsSelf},
    {.code = "collision-twice",
     .severity = Severity::note,
     .sentence = {"expected each pair once, found {0} and {1} again, after line {2}",
                  "chaque paire attendue une seule fois, trouvé : {0} et {1} à nouveau, après la "
                  "ligne {2}"},
     .suggestion = {},
     .meaning = {"A pair is kept once, whichever of the two is named first. Nothing is lost, but "
                 "another pair may have been meant.",
                 "Une paire est gardée une fois, dans quelque ordre que les deux soient nommés. "
                 "Rien n'est perdu, mais peut-être une autre paire était-elle visée."},
     .wrong = "frame\naxis=X,1,x\ncollisions=X,BATI\ncollisions=BATI,X\n",
     .right = "frame\naxis=X,1,x\ncollisions=X,BATI\n",
     .exampleFormat = Format::version1,
     .find = collisionsTwice},
    {.code = "collision-first-tool",
     .severity = Severity::note,
     .sentence = {"expected a word for all {1} tools and guns, found {0}, which finds one alone",
                  "mot désignant les {1} outils et canons attendu, trouvé : {0}, qui n'en désigne "
                  "qu'un"},
     .suggestion = {"write tool for all of them", "écrivez tool pour les désigner tous"},
     .meaning = {"OUTIL is the name of every tool and DRILL that of every gun, and a name finds "
                 "the first element that bears it. The words tool, gun and gundrill are no names: "
                 "each of them means all tools and guns above the line.",
                 "OUTIL est le nom de chaque outil et DRILL celui de chaque canon, et un nom "
                 "désigne le premier élément qui le porte. Les mots tool, gun et gundrill ne sont "
                 "pas des noms : chacun désigne tous les outils et canons placés au-dessus."},
     .wrong = "frame\ntool=z,0,0,0\nlien=BATI\ntool=z,9,0,0\ncollisions=outil,BATI\n",
     .right = "frame\ntool=z,0,0,0\nlien=BATI\ntool=z,9,0,0\ncollisions=tool,BATI\n",
     .find = collisionsFirstTool},
};

}  // namespace

std::span<const Rule> settingRules() { return kRules; }

}  // namespace korvo::checking
