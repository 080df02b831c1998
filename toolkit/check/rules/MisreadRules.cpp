// Operands that are not read as their writer meant them: one finding a line.

#include <algorithm>

#include "toolkit/Text.h"
#include "toolkit/check/Chains.h"
#include "toolkit/check/Characters.h"
#include "toolkit/check/Misread.h"
#include "toolkit/check/Operands.h"
#include "toolkit/check/Rule.h"

namespace korvo::checking {
namespace {

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
  const std::string many = std::to_string(misread.wanted);
  const Words wanted = misread.wanted == 1 ? Words("one number", "un nombre")
                                           : Words(many + " numbers", many + " nombres");
  Finding finding(line.placeOf(first, count), {wanted, listOf(line, first, count)});
  if (!misread.mended.empty()) finding.suggest({inQuotes(misread.mended)});
  return finding;
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

Findings blanks(const Source& source) {
  return misreads(source, Misreading::blanks, [](const SourceLine& line, const Misread&) {
    std::string mended;
    for (const std::string& word : wordsOf(line)) mended += (mended.empty() ? "" : ",") + word;
    const std::string written = "'" + utf8OfLine(writtenOf(line, 0)) + "'";
    return Finding(line.placeOf(0), {written}).mend(line.placeOf(0), mended);
  });
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

// Which of the numbers is too many nobody knows: it need not be the last one.
Findings operandsAsFiles(const Source& source) {
  return misreads(source, Misreading::operandAsFile, [](const SourceLine& line, const Misread& m) {
    Finding finding = listed(line, m);
    if (!isWholeNumber(operandOf(line, m.first))) return finding;
    return finding.advise({"remove what is too many, and write decimal points, not commas",
                           "supprimez ce qui est de trop, et écrivez des points décimaux, pas des "
                           "virgules"});
  });
}

Findings colourParts(const Source& source) {
  return misreads(source, Misreading::colourParts, listed);
}

Findings numbersLeft(const Source& source) {
  return misreads(source, Misreading::numbersLeft, listed);
}

Findings operandsLeft(const Source& source) { return misreads(source, Misreading::left, listed); }

// When all axis lines are of the other format one finding says so for the file.
Findings axesOfOtherFormat(const Source& source, int version) {
  if (source.format.version != version) return {};
  if (isOfOtherFormat(source.format, source.likely)) return {};
  return misreads(source, Misreading::otherFormat, listed);
}

Findings unwantedNumbers(const Source& source) { return axesOfOtherFormat(source, 2); }

// The axis line with a number behind its name.
std::string numbered(const SourceLine& line, int number) {
  std::wstring text = line.statement.keyword.text + L'=' + std::wstring(operandOf(line, 0)) + L',' +
                      std::to_wstring(number);
  for (int i = 1; i < std::ssize(line.statement.operands); ++i) {
    text += L',' + std::wstring(operandOf(line, i));
  }
  return shownText(text);
}

// Each of them gets the next number that is free.
Findings missingNumbers(const Source& source) {
  Findings findings = axesOfOtherFormat(source, 1);
  FreeNumbers free(source.linked);
  for (Finding& finding : findings) {
    const auto line = std::lower_bound(source.document.lines.begin(), source.document.lines.end(),
                                       finding.place.line,
                                       [](const SourceLine& l, int n) { return l.number < n; });
    finding.suggest({numbered(*line, free.next())});
  }
  return findings;
}

constexpr Rule kRules[] = {
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
    {.code = "operand-blanks",
     .severity = Severity::error,
     .sentence = {"expected commas between operands, found blanks in {0}",
                  "virgules attendues entre les opérandes, trouvé : des blancs dans {0}"},
     .suggestion = {"write a comma for each blank between operands",
                    "écrivez une virgule pour chaque blanc entre opérandes"},
     .meaning = {"Every blank of a line is removed before it is split at the commas. Without a "
                 "comma all that stands behind \"=\" is one operand: a name that nothing has, or a "
                 "number of many digits.",
                 "Tous les blancs d'une ligne sont retirés avant qu'elle soit coupée aux virgules. "
                 "Sans virgule, tout ce qui suit le « = » est un seul opérande : un nom que rien "
                 "ne porte, ou un nombre de nombreux chiffres."},
     .wrong = "tool=z 0 0 100\n",
     .right = "tool=z,0,0,100\n",
     .find = blanks},
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
     .suggestion = {"write the axis number between name and direction: {0}",
                    "écrivez le numéro d'axe entre le nom et la direction : {0}"},
     .meaning =
         {"In format 1 the first integer behind the name is the axis number. Without it no value "
          "moves the axis; when the direction is written in numbers, its first one is taken for "
          "the axis number, and the axis has no direction.",
          "Au format 1 le premier entier après le nom est le numéro d'axe. Sans lui aucune valeur "
          "ne déplace l'axe ; quand la direction est écrite en nombres, le premier est pris pour "
          "le numéro d'axe, et l'axe n'a pas de direction."},
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
     .severity = Severity::error,
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
    {.code = "numbers-left",
     .severity = Severity::error,
     .sentence = {"expected no more numbers, found {0}", "plus aucun nombre attendu, trouvé : {0}"},
     .suggestion = {"remove what is too many, and write decimal points, not commas",
                    "supprimez ce qui est de trop, et écrivez des points décimaux, pas des "
                    "virgules"},
     .meaning = {"The line has all its numbers, and nothing of the library reads these. One in "
                 "front of them is too many, or has a decimal comma: then the others are not where "
                 "they belong, and place or travel are not those that were meant.",
                 "La ligne a tous ses nombres, et rien dans la bibliothèque ne lit ceux-ci. Il y "
                 "en a un de trop avant eux, ou un avec une virgule décimale : les autres ne sont "
                 "plus à leur place, et la position ou la course n'est pas celle qui était "
                 "voulue."},
     .wrong = "limits=X,-1.5,1.5,0\n",
     .right = "limits=X,-1.5,1.5\n",
     .find = numbersLeft},
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
     .wrong = "geom=slide.stl,200,200,200,head.stl\n",
     .right = "geom=slide.stl,200,200,200\n",
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
};

}  // namespace

std::span<const Rule> misreadRules() { return kRules; }

}  // namespace korvo::checking
