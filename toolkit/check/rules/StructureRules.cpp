// What every machine has, and how its elements hang together.

#include <algorithm>
#include <unordered_map>

#include "toolkit/Text.h"
#include "toolkit/check/Chains.h"
#include "toolkit/check/References.h"
#include "toolkit/check/Rule.h"

using korvo::text::Keyword;
using zkin::KMachineElem;

namespace korvo::checking {
namespace {

std::string namesOf(const LinkedElements& linked, const std::vector<int>& ring, const char* line,
                    const char* on) {
  std::string names;
  for (const int rank : ring) {
    if (names.size() > 200) return names + "...";
    names += shownText(linked.elements[rank].getElemName()) + " (" + line + " " +
             std::to_string(linked.lines[rank]) + ") " + on + " ";
  }
  return names + shownText(linked.elements[ring.front()].getElemName());
}

Words ringWords(const LinkedElements& linked, const std::vector<int>& ring) {
  return {"a ring, " + namesOf(linked, ring, "line", "on"),
          "un anneau, " + namesOf(linked, ring, "ligne", "sur")};
}

// A ring is reported at its last line: the one that closes it.
Findings elementCycles(const Source& source) {
  Findings findings;
  if (source.linked.endlessPartLine) {
    const Words behind("a ring behind this part", "un anneau derrière cette pièce");
    findings.push_back(Finding({source.linked.endlessPartLine}, {behind}));
  }
  for (const std::vector<int>& ring : rings(previousRanks(source.linked.elements))) {
    int last = 0;
    for (const int rank : ring) last = std::max(last, source.linked.lines[rank]);
    findings.push_back(Finding({last}, {ringWords(source.linked, ring)}));
  }
  return findings;
}

const SourceLine& declarationOf(const LinkedElements& linked, int rank) {
  return *linked.declarations[static_cast<std::size_t>(rank)];
}

Place placeOfKeyword(const SourceLine& line) { return line.placeOf(line.statement.keyword); }

// The second element of a kind of which a machine has one.
Finding anotherOne(const LinkedElements& linked, KMachineElem::KME_TYPE type, int firstLine) {
  int rank = rankOf(linked, type) + 1;
  while (linked.elements[static_cast<std::size_t>(rank)].getElemType() != type) ++rank;
  const std::string first = std::to_string(firstLine);
  return Finding(placeOfKeyword(declarationOf(linked, rank)),
                 {Words("another one, after line " + first, "une autre, après la ligne " + first)})
      .advise({"remove this line, or the other one", "supprimez cette ligne, ou l'autre"});
}

Findings exactlyOne(const LinkedElements& linked, KMachineElem::KME_TYPE type) {
  const std::vector<int> lines = linesOf(linked, type);
  if (lines.size() == 1) return {};
  if (!lines.empty()) return {anotherOne(linked, type, lines[0])};
  return {Finding({}, {Words("none", "aucune")})};
}

Findings oneFrame(const Source& source) {
  return exactlyOne(source.linked, KMachineElem::KMET_TYPE_BATI);
}

Findings onePart(const Source& source) {
  return exactlyOne(source.linked, KMachineElem::KMET_TYPE_PART);
}

Findings someTool(const Source& source) {
  if (!linesOf(source.linked, KMachineElem::KMET_TYPE_TOOL).empty()) return {};
  const bool guns = !linesOf(source.linked, KMachineElem::KMET_TYPE_DGUN).empty();
  const Words none("none", "aucune"), onlyGuns("drill guns only", "des canons seulement");
  return {Finding({}, {guns ? onlyGuns : none})};
}

// Tools and guns share the numbers 1 to 100.
constexpr int kMaxTools = 100;

const SourceLine& partLine(const LinkedElements& linked) {
  return declarationOf(linked, rankOf(linked, KMachineElem::KMET_TYPE_PART));
}

// Ranks of tools and guns.
std::vector<int> toolsOf(const LinkedElements& linked) {
  std::vector<int> ranks;
  for (std::size_t i = 0; i < linked.elements.size(); ++i) {
    if (linked.elements[i].isTool()) ranks.push_back(static_cast<int>(i));
  }
  return ranks;
}

Findings toolCount(const Source& source) {
  const std::vector<int> tools = toolsOf(source.linked);
  if (tools.size() <= static_cast<std::size_t>(kMaxTools)) return {};
  const SourceLine& first =
      declarationOf(source.linked, tools[static_cast<std::size_t>(kMaxTools)]);
  return {Finding(placeOfKeyword(first), {static_cast<int>(tools.size())})};
}

// --- chains

Findings partsOnTools(const Source& source) {
  if (chainFaultOf(source.linked) != ChainFault::partOnTool) return {};
  for (const int rank : toolsOf(source.linked)) {
    if (!source.linked.elements[static_cast<std::size_t>(rank)].isInverted()) continue;
    return {Finding(placeOfKeyword(partLine(source.linked)),
                    {declarationOf(source.linked, rank).number})};
  }
  return {};
}

// A tool or gun behind another one. Where the part's line turned tools around, or links fail, that
// is what makes it so.
Findings toolsOnTools(const Source& source) {
  const ChainFault fault = chainFaultOf(source.linked);
  if (fault == ChainFault::ring || fault == ChainFault::link || fault == ChainFault::partOnTool) {
    return {};
  }
  const std::vector<Way> ways = waysToRoot(source.linked);
  Findings findings;
  int last = 0;  // line of the tool before
  for (const int rank : toolsOf(source.linked)) {
    const SourceLine& line = declarationOf(source.linked, rank);
    if (ways[static_cast<std::size_t>(rank)].tool) {
      findings.push_back(Finding(placeOfKeyword(line), {last}));
    }
    last = line.number;
  }
  return findings;
}

// The link where the part's side begins; null when no link stands above the part.
const Reference* linkOfPart(const LinkedElements& linked) {
  const Reference* last = nullptr;
  for (const Reference& r : linked.references) {
    if (r.line->number > partLine(linked).number) break;
    if (r.line->keyword == Keyword::link) last = &r;
  }
  return last;
}

Findings linksThatCutTheFrameOff(const Source& source) {
  if (chainFaultOf(source.linked) != ChainFault::frameCutOff) return {};
  const Reference* link = linkOfPart(source.linked);
  if (!link) return {};
  return {Finding(placeOf(*link), {inQuotes(link->written)})};
}

Findings toolsOffParts(const Source& source) {
  if (chainFaultOf(source.linked) != ChainFault::toolOffPart) return {};
  const Reference* link = linkOfPart(source.linked);
  if (!link) return {};
  const std::vector<Way> ways = waysToRoot(source.linked);
  for (const int rank : toolsOf(source.linked)) {
    if (ways[static_cast<std::size_t>(rank)].part) continue;
    return {Finding(placeOf(*link),
                    {inQuotes(link->written), declarationOf(source.linked, rank).number})};
  }
  return {};
}

Findings toolsOffFrames(const Source& source) {
  if (chainFaultOf(source.linked) != ChainFault::toolOffFrame) return {};
  const std::vector<Way> ways = waysToRoot(source.linked);
  Findings findings;
  for (const int rank : toolsOf(source.linked)) {
    if (ways[static_cast<std::size_t>(rank)].frame) continue;
    findings.push_back(Finding(placeOfKeyword(declarationOf(source.linked, rank)),
                               {partLine(source.linked).number}));
  }
  return findings;
}

// --- links and loops

Findings linksUnknown(const Source& source) {
  return findingsFor(source, {Keyword::link}, Lost::unknown);
}

Findings linksBefore(const Source& source) {
  return findingsFor(source, {Keyword::link}, Lost::later);
}

Findings linksPrefix(const Source& source) {
  return findingsFor(source, {Keyword::link, Keyword::loop}, Lost::prefix);
}

// Tools share one name, guns and bodies each another. A link back to the first of them may be
// meant, so this is no more than a note.
Findings linksToFirst(const Source& source) {
  std::unordered_map<std::wstring, int> lastOf;  // name -> rank of the last element above
  const LinkedElements& linked = source.linked;
  std::size_t rank = 0;
  Findings findings;
  for (const Reference& r : linked.references) {
    if (r.line->keyword != Keyword::link || r.element < 0) continue;
    for (; rank < static_cast<std::size_t>(r.above); ++rank) {
      lastOf[linked.elements[rank].getElemName()] = static_cast<int>(rank);
    }
    const KMachineElem& first = linked.elements[static_cast<std::size_t>(r.element)];
    const int last = lastOf[first.getElemName()];
    const bool sharesName = first.isTool() || first.getElemType() == KMachineElem::KMET_TYPE_GEOM;
    if (!sharesName || last == r.element) continue;
    findings.push_back(
        Finding(placeOf(r), {inQuotes(r.written), declarationOf(linked, r.element).number,
                             declarationOf(linked, last).number}));
  }
  return findings;
}

Findings loopsUnknown(const Source& source) {
  return findingsFor(source, {Keyword::loop}, Lost::unknown);
}

Findings loopsBefore(const Source& source) {
  return findingsFor(source, {Keyword::loop}, Lost::later);
}

// A point that is there but cannot be read is told by the rules about operands.
Findings loopPoints(const Source& source) {
  Findings findings;
  for (const Reference& r : source.linked.references) {
    if (r.line->keyword != Keyword::loop) continue;
    const std::vector<text::Token>& operands = r.line->statement.operands;
    const bool isBare = std::all_of(operands.begin() + 1, operands.end(),
                                    [](const text::Token& t) { return t.text.empty(); });
    if (isBare && !isUnsplit(*r.line))
      findings.push_back(Finding(r.line->placeOf(1), {inQuotes(r.written)}));
  }
  return findings;
}

// A file of `count` tools, made by the compiler: nobody reads a hundred lines here.
template <int count>
struct ManyTools {
  static constexpr std::string_view kLine = "tool=z,0,0,0\n";
  char text[count * kLine.size() + 1] = {};
  constexpr ManyTools() {
    for (std::size_t i = 0; i + 1 < sizeof text; ++i) text[i] = kLine[i % kLine.size()];
  }
};
template <int count>
constexpr ManyTools<count> kManyTools;

constexpr Rule kRules[] = {
    {.code = "element-cycle",
     .severity = Severity::error,
     .isEndless = true,
     .sentence = {"expected chains of elements that end, found {0}",
                  "chaînes d'éléments finies attendues, trouvé : {0}"},
     .suggestion = {"hang each element on one that stands before it in the file",
                    "accrochez chaque élément à un autre placé avant lui dans le fichier"},
     .meaning =
         {"Each element hangs on another, up to one that hangs on nothing. When they hang on "
          "each other in a ring, a walk along them never ends.",
          "Chaque élément est accroché à un autre, jusqu'à un qui n'est accroché à rien. "
          "S'ils forment un anneau, le parcours ne finit jamais."},
     .wrong = "axis=X,-10,x\n",
     .right = "axis=X,1,x\n",
     .exampleFormat = Format::version1,
     .find = elementCycles},
    {.code = "one-frame",
     .severity = Severity::error,
     .sentence = {"expected one frame line, found {0}", "une ligne de bâti attendue, trouvé : {0}"},
     .suggestion = {"write one line \"frame\" in front of the axes",
                    "écrivez une ligne « bati » avant les axes"},
     .meaning = {"The frame is the body that stands still. Without it nothing says where head and "
                 "table meet; with two of them only the first is found.",
                 "Le bâti est le corps qui ne bouge pas. Sans lui rien ne dit où tête et table se "
                 "rejoignent ; de deux bâtis, seul le premier est trouvé."},
     .wrong = "part=x,y,0,0,0\naxis=X,1,x\ntool=z,0,0,0\n",
     .right = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\n",
     .find = oneFrame},
    {.code = "one-part",
     .severity = Severity::error,
     .sentence = {"expected one part line, found {0}", "une ligne de pièce attendue, trouvé : {0}"},
     .suggestion = {"write one line \"part=x,y,0,0,0\" behind the axes of the table",
                    "écrivez une ligne « piece=x,y,0,0,0 » après les axes de la table"},
     .meaning = {"Positions and directions are those of the tool as the part sees it: without a "
                 "part there is nothing to see it from.",
                 "Positions et directions sont celles de l'outil vu de la pièce : sans pièce, rien "
                 "d'où le voir."},
     .wrong = "frame\naxis=X,1,x\ntool=z,0,0,0\n",
     .right = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\n",
     .find = onePart},
    {.code = "some-tool",
     .severity = Severity::error,
     .sentence = {"expected at least one tool line, found {0}",
                  "au moins une ligne d'outil attendue, trouvé : {0}"},
     .suggestion = {"end the chain with a line \"tool=z,0,0,0\"",
                    "terminez la chaîne par une ligne « outil=z,0,0,0 »"},
     .meaning =
         {"The tool ends the chain: every query is about one. Drill guns alone do not make a "
          "machine, since the axes are numbered along the chain of a tool.",
          "L'outil termine la chaîne : toute question porte sur un outil. Des canons seuls "
          "ne font pas une machine, car les axes sont numérotés le long de la chaîne d'un "
          "outil."},
     .wrong = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ngun=z,0,0,0\n",
     .right = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\n",
     .find = someTool},
    {.code = "tool-count",
     .severity = Severity::error,
     .sentence = {"expected at most 100 tools and guns, found {0}",
                  "au plus 100 outils et canons attendus, trouvé : {0}"},
     .suggestion = {"leave out tools, or split the file in two machines",
                    "retirez des outils, ou répartissez-les sur deux fichiers"},
     .meaning = {"Tools and guns share the numbers 1 to 100. What comes after them gets a number "
                 "of bodies and is no tool to any query.",
                 "Outils et canons se partagent les numéros 1 à 100. Les suivants reçoivent un "
                 "numéro de corps et ne sont un outil pour aucune question."},
     .wrong = kManyTools<101>.text,
     .right = kManyTools<100>.text,
     .find = toolCount},
    {.code = "part-without-link",
     .severity = Severity::error,
     .sentence =
         {"expected a part on the frame or on axes of its own, found it behind the tool of "
          "line {0}",
          "pièce sur le bâti ou sur ses propres axes attendue, trouvé : derrière l'outil de "
          "la ligne {0}"},
     .suggestion = {"write \"lien=BATI\" behind the tool, in front of the part's side",
                    "écrivez « lien=BATI » après l'outil, avant le côté de la pièce"},
     .meaning = {"Each element hangs on the one above it, so the part hangs on the tool. A part's "
                 "line turns the chain behind it around, as is right for the axes of a table: here "
                 "it turns the tool's side, and no axis is left between part and tool.",
                 "Chaque élément est accroché au précédent, donc la pièce à l'outil. La ligne de "
                 "la pièce retourne la chaîne derrière elle, comme il le faut pour les axes d'une "
                 "table : ici elle retourne le côté de l'outil, et aucun axe ne reste entre pièce "
                 "et outil."},
     .wrong = "frame\naxis=X,1,x\ntool=z,0,0,0\npart=x,y,0,0,0\n",
     .right = "frame\naxis=X,1,x\ntool=z,0,0,0\nlien=BATI\npart=x,y,0,0,0\n",
     .find = partsOnTools},
    {.code = "tool-not-at-end",
     .severity = Severity::warning,
     .sentence = {"expected every tool at the end of its chain, found this one behind that of line "
                  "{0}",
                  "chaque outil attendu au bout de sa chaîne, trouvé : celui-ci derrière celui de "
                  "la ligne {0}"},
     .suggestion = {"write \"lien=\" with the axis that carries both in front of this line",
                    "écrivez « lien= » avec l'axe qui porte les deux avant cette ligne"},
     .meaning = {"Without a link back the second tool hangs on the first, which becomes a joint of "
                 "its chain: the load may then move the first tool's point along its line, and "
                 "queries about it answer for another point.",
                 "Sans lien de retour le second outil est accroché au premier, qui devient une "
                 "articulation de sa chaîne : le chargement peut alors déplacer le point du "
                 "premier le long de sa droite, et les réponses valent pour un autre point."},
     .wrong = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\ntool=x,40,0,5\n",
     .right = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\nlien=X\n"
              "tool=x,40,0,5\n",
     .exampleFormat = Format::version1,
     .find = toolsOnTools},
    {.code = "link-unknown",
     .severity = Severity::error,
     .sentence = {"expected a link to an element of the file, found {0}",
                  "lien vers un élément du fichier attendu, trouvé : {0}"},
     .suggestion = {"did you mean {0}?", "vouliez-vous dire {0} ?"},
     .meaning = {"A link to nothing leaves the next element where it would hang without the line, "
                 "on the one above. Worse, a part that follows turns its chain around up to the "
                 "root. The frame's name is BATI, the part's PIECE, that of tools OUTIL.",
                 "Un lien vers rien laisse l'élément suivant où il serait sans la ligne, accroché "
                 "au précédent. Pire, une pièce qui suit retourne sa chaîne jusqu'à la racine. Le "
                 "nom du bâti est BATI, celui de la pièce PIECE, celui des outils OUTIL."},
     .wrong = "frame\nlien=BATTI\n",
     .right = "frame\nlien=BATI\n",
     .find = linksUnknown},
    {.code = "link-before",
     .severity = Severity::error,
     .sentence = {"expected a link to an element above, found {0}, which line {1} declares",
                  "lien vers un élément placé au-dessus attendu, trouvé : {0}, déclaré à la ligne "
                  "{1}"},
     .suggestion = {"move the link below the line of the element",
                    "placez le lien sous la ligne de l'élément"},
     .meaning = {"The file is read once from top to bottom: when the link is read there is no such "
                 "element yet. The next element hangs on the one above as if there were no link.",
                 "Le fichier est lu une fois de haut en bas : quand le lien est lu, l'élément "
                 "n'existe pas encore. L'élément suivant est accroché au précédent, comme sans "
                 "lien."},
     .wrong = "part=x,y,0,0,0\nlien=BATI\nframe\naxis=X,1,x\ntool=z,0,0,0\n",
     .right = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\n",
     .find = linksBefore},
    {.code = "link-axe-prefix",
     .severity = Severity::error,
     .sentence = {"expected the name of an element, found {0}, which does not find that of line "
                  "{1}",
                  "nom d'un élément attendu, trouvé : {0}, qui ne désigne pas celui de la ligne "
                  "{1}"},
     .suggestion = {"{0}", "{0}"},
     .meaning = {"In links and loops \"AXE_\" in capitals is removed from the name. In format 1 an "
                 "axis keeps the prefix in its own name, so \"AXE_X\" does not find AXE_X there, "
                 "and \"axe_x\" does not find X. The line does nothing.",
                 "Dans les liens et les boucles « AXE_ » en capitales est retiré du nom. Au format "
                 "1 un axe garde le préfixe dans son propre nom : « AXE_X » n'y désigne pas AXE_X, "
                 "ni « axe_x » X. La ligne ne fait rien."},
     .wrong = "axis=X,1,x\nlien=axe_x\n",
     .right = "axis=X,1,x\nlien=AXE_X\n",
     .exampleFormat = Format::version1,
     .find = linksPrefix},
    {.code = "link-to-first",
     .severity = Severity::note,
     .sentence = {"expected a link to the only element of its name, found {0}, which finds that of "
                  "line {1} and not that of line {2}",
                  "lien au seul élément de ce nom attendu, trouvé : {0}, qui désigne celui de la "
                  "ligne {1} et non celui de la ligne {2}"},
     .suggestion = {"link to the axis that carries it", "liez à l'axe qui le porte"},
     .meaning = {"All tools have the name OUTIL, all guns DRILL and all bodies GEOM, and a link "
                 "always finds the first of them. To hang something on a later one, write it "
                 "directly below that line.",
                 "Tous les outils ont le nom OUTIL, tous les canons DRILL et tous les corps GEOM, "
                 "et un lien désigne toujours le premier. Pour accrocher un élément à un autre, "
                 "écrivez-le juste sous sa ligne."},
     .wrong = "axis=X,1,x\ngeom=a.stl\nlien=X\ngeom=b.stl\nlien=GEOM\naxis=Y,2,y\n",
     .right = "axis=X,1,x\ngeom=a.stl\nlien=X\ngeom=b.stl\nlien=X\naxis=Y,2,y\n",
     .exampleFormat = Format::version1,
     .find = linksToFirst},
    {.code = "link-middle",
     .severity = Severity::warning,
     .sentence = {"expected the part's side to begin at the frame, found it linked to {0}, which "
                  "cuts the frame off",
                  "côté de la pièce commençant au bâti attendu, trouvé : lié à {0}, ce qui coupe "
                  "le bâti"},
     .suggestion = {"write \"lien=BATI\"", "écrivez « lien=BATI »"},
     .meaning = {"A part's line turns the chain behind it around, up to the element of the last "
                 "link and no further. The frame beyond hangs on nothing then: it is on no tool's "
                 "chain and does not move against the part, whatever the axes do.",
                 "La ligne de la pièce retourne la chaîne derrière elle jusqu'à l'élément du "
                 "dernier lien, pas plus loin. Le bâti au-delà n'est plus accroché à rien : il "
                 "n'est dans la chaîne d'aucun outil et ne bouge pas par rapport à la pièce, quoi "
                 "que fassent les axes."},
     .wrong = "frame\naxis=X,1,x\naxis=Y,2,y\ntool=z,0,0,0\nlien=X\npart=x,y,0,0,0\n",
     .right = "frame\naxis=X,1,x\naxis=Y,2,y\ntool=z,0,0,0\nlien=BATI\npart=x,y,0,0,0\n",
     .find = linksThatCutTheFrameOff},
    {.code = "tool-off-part",
     .severity = Severity::error,
     .sentence = {"expected a way from the part to every tool, found the part's side ending at {0} "
                  "by this link, and the tool of line {1} beyond",
                  "chemin de la pièce à chaque outil attendu, trouvé : le côté de la pièce finit à "
                  "{0} par ce lien, et l'outil de la ligne {1} est au-delà"},
     .suggestion = {"write \"lien=BATI\", and the axes of the table below it",
                    "écrivez « lien=BATI », puis les axes de la table"},
     .meaning = {"A part's line turns the chain behind it around, up to the element of the last "
                 "link and no further. A tool that hangs on what is beyond never meets the part: "
                 "its answers leave out the part and the axes that carry it.",
                 "La ligne de la pièce retourne la chaîne derrière elle jusqu'à l'élément du "
                 "dernier lien, pas plus loin. Un outil accroché au-delà ne rencontre jamais la "
                 "pièce : ses réponses ignorent la pièce et les axes qui la portent."},
     .wrong = "frame\naxis=X,1,x\nlien=BATI\naxis=Z,3,z\ntool=z,0,0,0\nlien=X\n"
              "part=x,y,0,0,0\n",
     .right = "frame\naxis=Z,3,z\ntool=z,0,0,0\nlien=BATI\naxis=X,1,x\npart=x,y,0,0,0\n",
     .find = toolsOffParts},
    {.code = "tool-off-frame",
     .severity = Severity::warning,
     .sentence = {"expected the frame between the part of line {0} and the tool, found the tool on "
                  "the part's side",
                  "bâti attendu entre la pièce de la ligne {0} et l'outil, trouvé : l'outil du "
                  "côté de la pièce"},
     .suggestion = {"write \"lien=BATI\" behind the part, in front of the axes of the tool",
                    "écrivez « lien=BATI » après la pièce, avant les axes de l'outil"},
     .meaning = {"Without a link back to the frame the elements below the part hang on the part. "
                 "The axes between part and frame then do not move part and tool against each "
                 "other.",
                 "Sans lien de retour au bâti, les éléments placés sous la pièce sont accrochés à "
                 "la pièce. Les axes entre pièce et bâti ne déplacent alors pas l'outil par "
                 "rapport à la pièce."},
     .wrong = "frame\naxis=X,1,x\npart=x,y,0,0,0\naxis=Z,3,z\ntool=z,0,0,0\n",
     .right = "frame\naxis=X,1,x\npart=x,y,0,0,0\nlien=BATI\naxis=Z,3,z\ntool=z,0,0,0\n",
     .find = toolsOffFrames},
    {.code = "loop-unknown",
     .severity = Severity::error,
     .sentence = {"expected a loop to an element of the file, found {0}",
                  "boucle vers un élément du fichier attendue, trouvé : {0}"},
     .suggestion = {"did you mean {0}?", "vouliez-vous dire {0} ?"},
     .meaning = {"The element gets the point of the loop, but is hooked to nothing: hosts that "
                 "look at loops see none.",
                 "L'élément reçoit le point de la boucle, mais n'est relié à rien : les programmes "
                 "qui consultent les boucles n'en voient aucune."},
     .wrong = "frame\nloop=BATTI,1,2,3\n",
     .right = "frame\nloop=BATI,1,2,3\n",
     .find = loopsUnknown},
    {.code = "loop-before",
     .severity = Severity::error,
     .sentence = {"expected a loop to an element above, found {0}, which line {1} declares",
                  "boucle vers un élément placé au-dessus attendue, trouvé : {0}, déclaré à la "
                  "ligne {1}"},
     .suggestion = {"move the loop below the line of the element, behind a link back to where it "
                    "belongs",
                    "placez la boucle sous la ligne de l'élément, après un lien de retour"},
     .meaning = {"The file is read once from top to bottom: when the loop is read there is no such "
                 "element yet. The loop keeps its point, but leads to nothing.",
                 "Le fichier est lu une fois de haut en bas : quand la boucle est lue, l'élément "
                 "n'existe pas encore. La boucle garde son point, mais ne mène à rien."},
     .wrong = "axis=X,1,x\nloop=Y,1,2,3\naxis=Y,2,y\n",
     .right = "axis=X,1,x\naxis=Y,2,y\nlien=X\nloop=Y,1,2,3\n",
     .exampleFormat = Format::version1,
     .find = loopsBefore},
    {.code = "loop-point",
     .severity = Severity::warning,
     .sentence = {"expected the point of a loop behind {0}, found none",
                  "point de la boucle attendu après {0}, trouvé : aucun"},
     .suggestion = {"write its three coordinates", "écrivez ses trois coordonnées"},
     .meaning = {"A loop says where the element is hooked to another one. Without a point that is "
                 "the origin of the file.",
                 "Une boucle dit où l'élément est relié à un autre. Sans point, c'est l'origine du "
                 "fichier."},
     .wrong = "frame\nloop=BATI\n",
     .right = "frame\nloop=BATI,0,0,250\n",
     .find = loopPoints},
};

}  // namespace

std::span<const Rule> structureRules() { return kRules; }

}  // namespace korvo::checking
