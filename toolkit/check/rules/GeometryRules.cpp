// Geometry files: are they named so that the library finds them, and do they hold a body?

#include <algorithm>
#include <cmath>
#include <set>
#include <string>

#include "toolkit/Text.h"
#include "toolkit/answer/Words.h"
#include "toolkit/check/Characters.h"
#include "toolkit/check/Closest.h"
#include "toolkit/check/GeometryFile.h"
#include "toolkit/check/Misread.h"
#include "toolkit/check/Rule.h"
#include "toolkit/check/Travels.h"

using zkin::KMachineElem;

namespace korvo::checking {
namespace {

// Of a file that names more bodies, the first are looked at: each costs a look at the disk.
constexpr std::size_t kMostFiles = 200;

// A geometry file that an element line names, at the first line that does.
struct Named {
  std::wstring name;
  Place place;
  bool isTool = false;  // of a tool or gun
};

// Lines with another fault in their operands are left to the rules about those.
bool isTakenForFile(const Source& source, int rank) {
  const SourceLine& line = lineOf(source, rank);
  return misreadOf(line, source.format.version).why == Misreading::none;
}

std::vector<Named> filesOf(const Source& source) {
  std::vector<Named> files;
  std::set<std::wstring_view> known;
  for (std::size_t i = 0; i < source.linked.elements.size(); ++i) {
    const KMachineElem& e = source.linked.elements[i];
    if (files.size() == kMostFiles) break;
    const bool isName = e.getGeomFile().find(L'\0') == std::wstring::npos;
    const bool isQuoted = e.getGeomFile().find_first_of(L"\"'") != std::wstring::npos;
    if (!isName || isQuoted || e.getGeomFile().empty() || !known.insert(e.getGeomFile()).second)
      continue;
    const int rank = static_cast<int>(i);
    if (!isTakenForFile(source, rank)) continue;
    files.push_back({e.getGeomFile(), placeOf(source, rank, Role::file), e.isTool()});
  }
  return files;
}

std::string shown(std::wstring_view name) { return "'" + utf8OfLine(bytesOf(name)) + "'"; }

bool isOfKind(std::wstring_view name) {
  const std::wstring extension = extensionOf(name);
  return extension == L".stl" || extension == L".zrn";
}

bool hasFolderWord(std::wstring_view name) {
  return name.find(kFolderWord) != std::wstring_view::npos;
}

// --- the name alone

// What looks like a word for a folder at the beginning of a name: "$NAME", "${NAME}", "%NAME%".
std::wstring_view variableOf(std::wstring_view name) {
  if (!name.starts_with(L'$') && !name.starts_with(L'%')) return {};
  return name.substr(0, name.find_first_of(L"\\/"));
}

// Of any length: what is far from the one word is some other program's.
bool isMeantForFolder(std::wstring_view variable) {
  constexpr int kSlips = 3;
  return variable.size() < 2 * kFolderWord.size() && editDistance(variable, kFolderWord) <= kSlips;
}

Findings variables(const Source& source) {
  Findings findings;
  for (const Named& file : filesOf(source)) {
    const std::wstring_view variable = variableOf(file.name);
    if (variable.empty() || hasFolderWord(file.name)) continue;
    Finding finding(file.place, {shown(variable)});
    const int length = static_cast<int>(variable.size());
    if (isMeantForFolder(variable) && static_cast<int>(file.name.size()) == file.place.length) {
      finding.mend({file.place.line, file.place.column, length}, toUtf8(kFolderWord));
    }
    findings.push_back(finding);
  }
  return findings;
}

bool hasOtherVariable(std::wstring_view name) {
  return !variableOf(name).empty() && !hasFolderWord(name);
}

Findings kinds(const Source& source) {
  Findings findings;
  for (const Named& file : filesOf(source)) {
    if (isOfKind(file.name)) continue;
    findings.push_back(Finding(file.place, {shown(file.name)}));
  }
  return findings;
}

Findings absolutes(const Source& source) {
  Findings findings;
  for (const Named& file : filesOf(source)) {
    if (!isOfKind(file.name) || !isAbsolute(file.name)) continue;
    const std::size_t slash = file.name.find_last_of(L"\\/");
    const std::wstring last =
        file.name.substr(slash == std::wstring::npos ? std::size_t{2} : slash + 1);
    findings.push_back(Finding(file.place, {shown(file.name)}));
    findings.back().suggest({shown(std::wstring(kFolderWord) + L"/" + last)});
  }
  return findings;
}

// --- whether it is found

// What the disk says to a name that is relative and of a known kind.
template <typename Look>
Findings lookAtFiles(const Source& source, Look look) {
  Findings findings;
  GeometryFolders folders(source.folder);
  for (const Named& file : filesOf(source)) {
    if (!isOfKind(file.name) || hasOtherVariable(file.name)) continue;
    if (const std::optional<Finding> finding = look(file, folders)) findings.push_back(*finding);
  }
  return findings;
}

std::optional<Finding> told(const Named& file) { return Finding(file.place, {shown(file.name)}); }

// An absolute name that is not found is told as absolute, one with blanks by the rule about them.
bool isLookedFor(const Named& file) {
  return !isAbsolute(file.name) && static_cast<int>(file.name.size()) == file.place.length;
}

std::wstring lastOf(std::wstring_view name) {
  const std::size_t slash = name.find_last_of(L"\\/");
  return std::wstring(slash == std::wstring_view::npos ? name : name.substr(slash + 1));
}

std::wstring withoutDigits(std::wstring text) {
  std::erase_if(text, [](wchar_t c) { return c >= L'0' && c <= L'9'; });
  return text;
}

// The neighbour that was most likely meant: none that another line names, nor another number of a
// row of bodies.
std::optional<std::wstring> meantBy(const Named& file, GeometryFolders& folders,
                                    const std::vector<Named>& all) {
  const std::wstring last = lastOf(file.name);
  std::vector<std::wstring> names = folders.neighbours(file.name);
  std::erase_if(names, [&](const std::wstring& name) {
    const auto isIt = [&](const Named& other) { return lastOf(other.name) == name; };
    return withoutDigits(name) == withoutDigits(last) || std::any_of(all.begin(), all.end(), isIt);
  });
  return closest(last, names);
}

Findings missing(const Source& source) {
  const std::vector<Named> all = filesOf(source);
  return lookAtFiles(source, [&](const Named& file, GeometryFolders& folders) {
    const bool isThere = folders.find(file.name) || folders.beside(file.name);
    const bool isMissing = isLookedFor(file) && !isThere && !meantBy(file, folders, all);
    return isMissing ? told(file) : std::nullopt;
  });
}

Findings misspelt(const Source& source) {
  const std::vector<Named> all = filesOf(source);
  return lookAtFiles(source, [&](const Named& file, GeometryFolders& folders) {
    const bool isThere = folders.find(file.name) || folders.beside(file.name);
    const auto meant = isThere ? std::nullopt : meantBy(file, folders, all);
    std::optional<Finding> finding = isLookedFor(file) && meant ? told(file) : std::nullopt;
    if (finding) finding->suggest({inQuotes(*meant)});
    return finding;
  });
}

bool isSameFile(const std::filesystem::path& a, const std::filesystem::path& b) {
  std::error_code error;
  return std::filesystem::equivalent(a, b, error) && !error;
}

// Beside the definition, but found only by programs that run there, if at all. Another file that
// is found comes first: then the name is meant as it is.
Findings besides(const Source& source) {
  return lookAtFiles(source, [&](const Named& file, GeometryFolders& folders) {
    const bool isPlain = isLookedFor(file) && !hasFolderWord(file.name);
    const auto beside = isPlain ? folders.beside(file.name) : std::nullopt;
    const auto found = beside ? folders.find(file.name) : std::nullopt;
    const bool isMeant = beside && (!found || isSameFile(found->path, *beside));
    std::optional<Finding> finding = isMeant ? told(file) : std::nullopt;
    if (!finding) return finding;
    finding->suggest({shown(std::wstring(kFolderWord) + L"/" + file.name)});
    finding->mend({file.place.line, file.place.column, 0}, toUtf8(kFolderWord) + "/");
    return finding;
  });
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > 0; });
}

Findings otherCase(const Source& source) {
  return lookAtFiles(source, [&](const Named& file, GeometryFolders& folders) {
    const auto found = folders.find(file.name);
    std::optional<Finding> finding = found && !found->spelled.empty() ? told(file) : std::nullopt;
    if (!finding) return finding;
    finding->suggest({"'" + found->spelled + "'"});
    if (isAscii(found->spelled)) finding->mend(file.place, found->spelled);
    return finding;
  });
}

// A name in other letters is spelled with "/" by that rule.
Findings backslashes(const Source& source) {
  return lookAtFiles(source, [&](const Named& file, GeometryFolders& folders) {
    const auto found = folders.find(file.name);
    const bool hasOne = file.name.find(L'\\') != std::wstring::npos && !isAbsolute(file.name);
    const bool isLeft = hasOne && (!found || found->spelled.empty());
    std::optional<Finding> finding = isLeft ? told(file) : std::nullopt;
    if (!finding) return finding;
    std::string slashed = utf8OfLine(bytesOf(file.name));
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    finding->suggest({"'" + slashed + "'"});
    if (isAscii(slashed)) finding->mend(file.place, slashed);
    return finding;
  });
}

// --- what it holds

template <class IsIt>
Findings ofContent(const Source& source, IsIt isIt) {
  return lookAtFiles(source, [&](const Named& file, GeometryFolders& folders) {
    const auto found = folders.find(file.name);
    return found && isIt(found->path, extensionOf(file.name)) ? told(file) : std::nullopt;
  });
}

Findings ofContent(const Source& source, BodyContent content) {
  return ofContent(source, [content](const auto& path, std::wstring_view extension) {
    return contentOf(path, extension) == content;
  });
}

Findings empties(const Source& source) { return ofContent(source, BodyContent::nothing); }
Findings damages(const Source& source) {
  return ofContent(source, [](const auto& path, std::wstring_view extension) {
    const BodyContent content = contentOf(path, extension);
    return content == BodyContent::damaged ||
           (content == BodyContent::triangles && losesParts(path, extension));
  });
}
Findings withoutTriangles(const Source& source) {
  return ofContent(source, BodyContent::noTriangles);
}

// The longest that the file says of the machine's size (mm).
double machineLength(const Source& source) {
  double longest = 0.0;
  for (const StatedPoint& p : pointsOf(source.linked)) longest = std::max(longest, p.distance);
  for (const Travel& travel : travelsOf(source)) {
    const KMachineElem& e = source.linked.elements[static_cast<std::size_t>(travel.rank)];
    if (e.getElemType() != KMachineElem::KMET_TYPE_ALIN || !travel.length()) continue;
    longest = std::max(longest, std::abs(*travel.length()));
  }
  return longest;
}

// A body of a few millimetres on a machine of hundreds. Tools may be as small. Bodies in inches are
// a twentieth of their size, as many a sound body is, so nothing is said of them.
Findings metres(const Source& source) {
  constexpr double kSmallBody = 5.0, kLargeMachine = 100.0;
  const double machine = machineLength(source);
  if (machine <= kLargeMachine) return {};
  return lookAtFiles(source, [&](const Named& file, GeometryFolders& folders) {
    const auto found = file.isTool ? std::nullopt : folders.find(file.name);
    const bool isRead = found && extensionOf(file.name) == L".stl";
    const auto extent = isRead ? extentOf(found->path, kSmallBody) : std::nullopt;
    std::optional<Finding> finding;
    if (!extent || *extent >= kSmallBody || *extent <= 0) return finding;
    finding = Finding(file.place, {shown(file.name), words(*extent), words(machine)});
    return finding;
  });
}

constexpr Rule kRules[] = {
    {.code = "geometry-variable",
     .severity = Severity::warning,
     .sentence = {"expected $ZRN_MACHINE_DEF, the one word for a folder, found {0}",
                  "$ZRN_MACHINE_DEF attendu, le seul mot pour un dossier, trouvé : {0}"},
     .suggestion = {"write $ZRN_MACHINE_DEF, in capitals, for the folder of this file",
                    "écrivez $ZRN_MACHINE_DEF, en capitales, pour le dossier de ce fichier"},
     .meaning = {"In names of geometry files one word is replaced: $ZRN_MACHINE_DEF, by the folder "
                 "of the definition file. Other variables stay as they are, so that no such folder "
                 "is found.",
                 "Dans les noms de fichiers de géométrie un seul mot est remplacé : "
                 "$ZRN_MACHINE_DEF, par le dossier du fichier de définition. Les autres variables "
                 "restent telles quelles, et aucun dossier de ce nom n'est trouvé."},
     .wrong = "geom=$zrn_machine_def/head.stl\n",
     .right = "geom=$ZRN_MACHINE_DEF/head.stl\n",
     .find = variables},
    {.code = "geometry-kind",
     .severity = Severity::warning,
     .sentence = {"expected a file that ends in .stl or .zrn, found {0}",
                  "fichier en .stl ou .zrn attendu, trouvé : {0}"},
     .suggestion = {"export the body as STL", "exportez le corps au format STL"},
     .meaning = {"Two kinds of body files are read, told by the end of their name: .stl and .zrn. "
                 "A file of any other kind gives no triangles, and nothing says so.",
                 "Deux sortes de fichiers de corps sont lues, reconnues à la fin de leur nom : "
                 ".stl et .zrn. Tout autre fichier ne donne aucun triangle, sans message."},
     .wrong = "geom=$ZRN_MACHINE_DEF/head.step\n",
     .right = "geom=$ZRN_MACHINE_DEF/head.stl\n",
     .find = kinds},
    {.code = "geometry-absolute",
     .severity = Severity::note,
     .sentence = {"expected a file beside this one, found the absolute name {0}",
                  "fichier à côté de celui-ci attendu, trouvé : le nom absolu {0}"},
     .suggestion = {"put the file beside this one and write {0}",
                    "placez le fichier à côté de celui-ci et écrivez {0}"},
     .meaning =
         {"An absolute name is right on one computer only. $ZRN_MACHINE_DEF is the folder of "
          "the definition file wherever that is copied to.",
          "Un nom absolu n'est juste que sur un seul ordinateur. $ZRN_MACHINE_DEF est le "
          "dossier du fichier de définition, où qu'il soit copié."},
     .wrong = "geom=C:\\machines\\head.stl\n",
     .right = "geom=$ZRN_MACHINE_DEF/head.stl\n",
     .find = absolutes},
    {.code = "geometry-missing",
     .severity = Severity::note,
     .sentence = {"expected a geometry file, found none named {0}",
                  "fichier de géométrie attendu, trouvé : aucun du nom de {0}"},
     .suggestion = {"put the file there, or leave its name out",
                    "placez-y le fichier, ou retirez son nom"},
     .meaning = {"A name is tried as written, from the folder in which the program runs, then with "
                 "$ZRN_MACHINE_DEF replaced by the folder of the definition file. Without its file "
                 "the element moves as ever, but has no body to draw or to collide.",
                 "Un nom est essayé tel quel, depuis le dossier où le programme tourne, puis avec "
                 "$ZRN_MACHINE_DEF remplacé par le dossier du fichier de définition. Sans son "
                 "fichier l'élément bouge comme prévu, mais n'a pas de corps à dessiner ni à "
                 "heurter."},
     .wrong = "geom=$ZRN_MACHINE_DEF/nothing-like-it.stl\n",
     .right = "geom=$ZRN_MACHINE_DEF/head.stl\n",
     .find = missing},
    {.code = "geometry-misspelt",
     .severity = Severity::warning,
     .sentence = {"expected a geometry file, found none named {0}, but one much like it",
                  "fichier de géométrie attendu, trouvé : aucun du nom de {0}, mais un semblable"},
     .suggestion = {"did you mean {0}?", "vouliez-vous dire {0} ?"},
     .meaning = {"The file is not there, and in its folder lies one whose name differs by a slip "
                 "of the pen. Without its file the element has no body.",
                 "Le fichier n'existe pas, et son dossier en contient un dont le nom diffère d'une "
                 "faute de frappe. Sans son fichier l'élément n'a pas de corps."},
     .wrong = "geom=$ZRN_MACHINE_DEF/haed.stl\n",
     .right = "geom=$ZRN_MACHINE_DEF/head.stl\n",
     .find = misspelt},
    {.code = "geometry-beside",
     .severity = Severity::warning,
     .sentence = {"expected a name that is found from every folder, found {0}, which is looked for "
                  "where the program runs",
                  "nom trouvé depuis tout dossier attendu, trouvé : {0}, cherché là où le "
                  "programme tourne"},
     .suggestion = {"write {0}", "écrivez {0}"},
     .meaning =
         {"A relative name is looked for from the folder in which the program runs, not beside "
          "the definition file, where this one lies. For that folder write "
          "$ZRN_MACHINE_DEF.",
          "Un nom relatif est cherché depuis le dossier où le programme tourne, pas à côté du "
          "fichier de définition, où se trouve celui-ci. Pour ce dossier écrivez "
          "$ZRN_MACHINE_DEF."},
     .wrong = "geom=head.stl\n",
     .right = "geom=$ZRN_MACHINE_DEF/head.stl\n",
     .find = besides},
    {.code = "geometry-case",
     .severity = Severity::note,
     .sentence = {"expected a file name in its own letters, found {0}, which is spelled otherwise "
                  "on the disk",
                  "nom de fichier avec ses propres lettres attendu, trouvé : {0}, écrit autrement "
                  "sur le disque"},
     .suggestion = {"write {0}", "écrivez {0}"},
     .meaning = {"The name differs from the file's in capital letters. The library finds it all "
                 "the same, as Windows does, until a second file fits; other programs on other "
                 "systems do not.",
                 "Le nom diffère de celui du fichier par ses majuscules. La bibliothèque le trouve "
                 "quand même, comme Windows, tant qu'un seul fichier convient ; d'autres "
                 "programmes sur d'autres systèmes ne le trouvent pas."},
     .wrong = "geom=$ZRN_MACHINE_DEF/Head.STL\n",
     .right = "geom=$ZRN_MACHINE_DEF/head.stl\n",
     .find = otherCase},
    {.code = "geometry-backslash",
     .severity = Severity::note,
     .sentence = {"expected / between folders, found \\ in {0}",
                  "/ attendu entre les dossiers, trouvé : \\ dans {0}"},
     .suggestion = {"write {0}", "écrivez {0}"},
     .meaning = {"The library opens names with \\ on every system, other programs on Windows only. "
                 "/ is understood everywhere, on Windows too.",
                 "La bibliothèque ouvre les noms avec \\ sur tous les systèmes, d'autres "
                 "programmes seulement sous Windows. / est compris partout, sous Windows aussi."},
     .wrong = "geom=$ZRN_MACHINE_DEF\\head.stl\n",
     .right = "geom=$ZRN_MACHINE_DEF/head.stl\n",
     .find = backslashes},
    {.code = "geometry-empty",
     .severity = Severity::warning,
     .sentence = {"expected a body, found that {0} is empty",
                  "corps attendu, trouvé : {0} est vide"},
     .suggestion = {"export the body again", "exportez le corps à nouveau"},
     .meaning = {"The file is there and has no bytes: an export that was broken off, or a full "
                 "disk. The element has no body.",
                 "Le fichier existe et n'a aucun octet : un export interrompu, ou un disque plein. "
                 "L'élément n'a pas de corps."},
     .wrong = "geom=$ZRN_MACHINE_DEF/empty.stl\n",
     .right = "geom=$ZRN_MACHINE_DEF/head.stl\n",
     .find = empties},
    {.code = "geometry-damaged",
     .severity = Severity::warning,
     .sentence = {"expected what its name says, found that {0} is damaged or of another kind",
                  "contenu conforme à son nom attendu, trouvé : {0} est abîmé ou d'une autre "
                  "nature"},
     .suggestion = {"export the body again", "exportez le corps à nouveau"},
     .meaning =
         {"A binary STL has 84 bytes and 50 more for each triangle that it counts, a text "
          "one begins with \"solid\"; a .zrn file is text. This file is of another kind, cut "
          "off, or has facets or surfaces that cannot be read (a missing or a spoilt "
          "number): none or not all of its triangles are there.",
          "Un STL binaire a 84 octets et 50 de plus par triangle compté, un STL texte "
          "commence par « solid » ; un fichier .zrn est du texte. Ce fichier est d'une autre "
          "nature, tronqué, ou certaines de ses facettes ou surfaces sont illisibles (un "
          "nombre manque ou est abîmé) : il manque des triangles, ou tous."},
     .wrong = "geom=$ZRN_MACHINE_DEF/damaged.stl\n",
     .right = "geom=$ZRN_MACHINE_DEF/head.stl\n",
     .find = damages},
    {.code = "geometry-no-triangles",
     .severity = Severity::warning,
     .sentence = {"expected a body of triangles, found none in {0}",
                  "corps en triangles attendu, trouvé : aucun dans {0}"},
     .suggestion = {"export the body as STL, or its surfaces as NURBS",
                    "exportez le corps au format STL, ou ses surfaces en NURBS"},
     .meaning = {"The file is sound, but nothing in it becomes a triangle: an STL without facets, "
                 "or a .zrn file without a NURBS surface. Curves, planes, cylinders and other "
                 "surfaces of .zrn files give none.",
                 "Le fichier est sain, mais rien n'y devient un triangle : un STL sans facette, ou "
                 "un fichier .zrn sans surface NURBS. Les courbes, plans, cylindres et autres "
                 "surfaces des fichiers .zrn n'en donnent aucun."},
     .wrong = "geom=$ZRN_MACHINE_DEF/curves.zrn\n",
     .right = "geom=$ZRN_MACHINE_DEF/table.zrn\n",
     .find = withoutTriangles},
    {.code = "geometry-metres",
     .severity = Severity::warning,
     .sentence = {"expected a body in millimetres, found that {0} is {1} mm large on a machine of "
                  "{2} mm",
                  "corps en millimètres attendu, trouvé : {0} mesure {1} mm sur une machine de {2} "
                  "mm"},
     .suggestion = {"export the body in millimetres", "exportez le corps en millimètres"},
     .meaning = {"Body files have no unit and are taken as millimetres. A body of a few "
                 "millimetres on a machine of hundreds was most likely exported in metres: it is "
                 "drawn as a dot and collides with nothing.",
                 "Les fichiers de corps n'ont pas d'unité et sont pris en millimètres. Un corps de "
                 "quelques millimètres sur une machine de centaines a sans doute été exporté en "
                 "mètres : il est dessiné comme un point et ne heurte rien."},
     .wrong = "axis=X,1,x,$ZRN_MACHINE_DEF/metres.stl\nlimits=X,0,600\n",
     .right = "axis=X,1,x,$ZRN_MACHINE_DEF/head.stl\nlimits=X,0,600\n",
     .exampleFormat = Format::version1,
     .find = metres},
};

}  // namespace

std::span<const Rule> geometryRules() { return kRules; }

}  // namespace korvo::checking
