#include "toolkit/check/Hover.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "kinematics/KMachineElem.h"
#include "platform/text/Keywords.h"
#include "platform/text/Lines.h"
#include "toolkit/check/Rule.h"

using zkin::KMachineElem;

namespace korvo {
namespace {

using text::Keyword;

// What stands behind the "=", and what the line does. Operands are English and French; a second
// form is that of format 2.
struct KeywordPage {
  Keyword keyword;
  Text operands;
  Text operands2;
  Text meaning;
};

constexpr KeywordPage kPages[] = {
    {Keyword::link,
     {"element", "élément"},
     {},
     {"The next element hangs on the one of this name, which a line above declares. Without it, it "
      "hangs on the element of the line above.",
      "L'élément suivant est porté par celui de ce nom, déclaré plus haut. Sans cette ligne, il "
      "est porté par l'élément de la ligne précédente."}},
    {Keyword::loop,
     {"element,x,y,z", "élément,x,y,z"},
     {},
     {"Hooks the current element to the named one at a point. Kept for the host; no motion depends "
      "on it.",
      "Accroche l'élément courant à celui de ce nom en un point. Gardé pour l'hôte ; aucun "
      "mouvement n'en dépend."}},
    {Keyword::frame,
     {"[file[,red,green,blue]]", "[fichier[,rouge,vert,bleu]]"},
     {"[direction][,file[,red,green,blue]]", "[direction][,fichier[,rouge,vert,bleu]]"},
     {"The machine frame, which other lines call BATI. A file has exactly one. Its direction is "
      "kept; no motion depends on it.",
      "Le bâti de la machine, que les autres lignes nomment BATI. Un fichier en a exactement un. "
      "Sa direction est gardée ; aucun mouvement n'en dépend."}},
    {Keyword::part,
     {"x direction,y direction,x,y,z[,file[,red,green,blue]]",
      "direction x,direction y,x,y,z[,fichier[,rouge,vert,bleu]]"},
     {},
     {"Where the workpiece is clamped; other lines call it PIECE. A file has exactly one. The path "
      "from it to the frame is the part's side. The position is read and not used.",
      "Là où la pièce est serrée ; les autres lignes la nomment PIECE. Un fichier en a exactement "
      "une. Le chemin d'elle au bâti est le côté pièce. La position est lue et ne sert pas."}},
    {Keyword::tool,
     {"direction,x,y,z[,file[,red,green,blue]]", "direction,x,y,z[,fichier[,rouge,vert,bleu]]"},
     {},
     {"A tool, which other lines call OUTIL: the direction from its tip to the spindle, and the "
      "gauge point in mm with all axes at 0. A file has at least one.",
      "Un outil, que les autres lignes nomment OUTIL : la direction de sa pointe vers la broche, "
      "et le point de jauge en mm, tous les axes à 0. Un fichier en a au moins un."}},
    {Keyword::geometry,
     {"file[,red,green,blue]", "fichier[,rouge,vert,bleu]"},
     {},
     {"A body that rides on the element of the line above, drawn from an STL or ZRN file. It is an "
      "element too: the next line hangs on it.",
      "Un corps porté par l'élément de la ligne précédente, dessiné d'un fichier STL ou ZRN. C'est "
      "aussi un élément : la ligne suivante est portée par lui."}},
    {Keyword::linearAxis,
     {"name,number,direction[,file[,red,green,blue]]",
      "nom,numéro,direction[,fichier[,rouge,vert,bleu]]"},
     {"X|Y|Z,direction[,file[,red,green,blue]]", "X|Y|Z,direction[,fichier[,rouge,vert,bleu]]"},
     {"A linear axis, in mm. Its direction is that of the tool's motion relative to the part, on "
      "the head and on the table alike.",
      "Un axe linéaire, en mm. Sa direction est celle du mouvement de l'outil par rapport à la "
      "pièce, côté tête comme côté table."}},
    {Keyword::drillGun,
     {"direction,x,y,z[,file[,red,green,blue]]", "direction,x,y,z[,fichier[,rouge,vert,bleu]]"},
     {},
     {"A drill gun, which other lines call DRILL: the direction from its tip to its drive, and its "
      "nose in mm with all axes at 0. Guns share the numbers of the tools; put tools first.",
      "Un canon de perçage, que les autres lignes nomment DRILL : la direction de sa pointe vers "
      "l'entraînement, et son nez en mm, tous les axes à 0. Les canons partagent les numéros des "
      "outils ; écrivez les outils d'abord."}},
    {Keyword::rotaryAxis,
     {"name,number,direction,0,0,x,y,z[,file[,red,green,blue]]",
      "nom,numéro,direction,0,0,x,y,z[,fichier[,rouge,vert,bleu]]"},
     {"A|B|C,direction,0,0,x,y,z[,file[,red,green,blue]]",
      "A|B|C,direction,0,0,x,y,z[,fichier[,rouge,vert,bleu]]"},
     {"A rotary axis, in degrees: its direction, two integers that are skipped, and a point on its "
      "line in mm. Its sense is that of the tool's motion relative to the part.",
      "Un axe rotatif, en degrés : sa direction, deux entiers sans effet, et un point de sa ligne "
      "en mm. Son sens est celui du mouvement de l'outil par rapport à la pièce."}},
    {Keyword::strategy,
     {"integer", "entier"},
     {},
     {"Which of two ways to a tool direction is taken: 1 the one with the smaller turn of the axis "
      "nearer the part, 2 of the axis nearer the tool, any other number the one with the smallest "
      "single turn.",
      "Laquelle de deux voies vers une direction d'outil est prise : 1 celle où l'axe le plus "
      "proche de la pièce tourne le moins, 2 celle de l'axe le plus proche de l'outil, tout autre "
      "nombre celle qui contient la plus petite rotation d'un seul axe."}},
    {Keyword::mode,
     {"integer", "entier"},
     {},
     {"The tool-centre-point mode, kept for the host.",
      "Le mode de pilotage du point d'outil, gardé pour l'hôte."}},
    {Keyword::minimum,
     {"axis,number", "axe,nombre"},
     {},
     {"The lower end of an axis's travel, in mm or degrees. The axis stands on a line above.",
      "La borne inférieure de la course d'un axe, en mm ou en degrés. L'axe est déclaré plus "
      "haut."}},
    {Keyword::maximum,
     {"axis,number", "axe,nombre"},
     {},
     {"The upper end of an axis's travel, in mm or degrees. The axis stands on a line above.",
      "La borne supérieure de la course d'un axe, en mm ou en degrés. L'axe est déclaré plus "
      "haut."}},
    {Keyword::limits,
     {"axis,minimum,maximum", "axe,minimum,maximum"},
     {},
     {"The travel of an axis, in mm or degrees. The axis stands on a line above; without limits it "
      "is endless.",
      "La course d'un axe, en mm ou en degrés. L'axe est déclaré plus haut ; sans limites il est "
      "sans fin."}},
    {Keyword::rotationPoint,
     {"number,number,...", "nombre,nombre,..."},
     {},
     {"A position kept for the host, where it may turn the rotary axes: up to twelve numbers and "
      "nothing else. On any other operand the library would read for ever.",
      "Une position gardée pour l'hôte, où il peut tourner les axes rotatifs : jusqu'à douze "
      "nombres et rien d'autre. Sur tout autre opérande la bibliothèque lirait sans fin."}},
    {Keyword::collision,
     {"element,element,...", "élément,élément,..."},
     {},
     {"Pairs to check for collision: the first element with each of the others, all declared "
      "above. tool, gun and gundrill mean all tools and guns.",
      "Paires à contrôler en collision : le premier élément avec chacun des autres, tous déclarés "
      "plus haut. tool, gun et gundrill désignent tous les outils et canons."}},
};

const KeywordPage* pageOf(Keyword keyword) {
  const auto at = std::find_if(std::begin(kPages), std::end(kPages),
                               [keyword](const KeywordPage& p) { return p.keyword == keyword; });
  return at == std::end(kPages) ? nullptr : &*at;
}

std::string formOf(const std::string& word, const Text& operands, Language language) {
  return word + "=" + filled(operands, {}, language);
}

// "axis=X|Y|Z,direction", in both formats where they differ.
std::string formsOf(const KeywordPage& page, const std::string& word, Language language) {
  std::string form = formOf(word, page.operands, language);
  if (!*page.operands2.english) return form;
  return "format 1: " + form + "\nformat 2: " + formOf(word, page.operands2, language);
}

// --- lines, as the library reads them: one byte one character

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

struct Line {
  std::size_t begin = 0;  ///< In the text.
  std::string_view bytes;
};

std::size_t beginOfText(std::string_view text) {
  return text.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0;
}

Line lineFrom(std::string_view text, std::size_t begin) {
  const std::size_t end = std::min(text.find('\n', begin), text.size());
  return {begin, text.substr(begin, end - begin)};
}

Line lineAt(std::string_view text, std::size_t offset) {
  const std::size_t before = offset == 0 ? text.npos : text.rfind('\n', offset - 1);
  return lineFrom(text, before == text.npos ? std::min(beginOfText(text), offset) : before + 1);
}

// And back: what comes out of a line is as it was written.
std::string bytesOf(std::wstring_view text) {
  std::string bytes;
  for (const wchar_t c : text) bytes += static_cast<char>(c);
  return bytes;
}

text::CleanLine cleaned(std::string_view bytes) {
  std::wstring line;
  for (const char c : bytes.substr(0, text::kMaxLine)) line += static_cast<unsigned char>(c);
  return text::cleanLine(line);
}

// --- completion

Completions keywordsAt(std::size_t begin, Language language) {
  Completions found{begin, {}};
  for (const text::KeywordRow& row : text::keywordTable()) {
    const KeywordPage* page = pageOf(row.keyword);
    if (!page) continue;
    const std::string word = bytesOf(row.word);
    found.words.push_back(
        {word, true, formsOf(*page, word, language), filled(page->meaning, {}, language)});
  }
  return found;
}

bool isAxis(const KMachineElem& e) {
  return e.getElemType() == KMachineElem::KMET_TYPE_ALIN ||
         e.getElemType() == KMachineElem::KMET_TYPE_AROT;
}

// Names as they are written: format 2 drops "AXE_" and case on both sides, format 1 on none.
constexpr int kNamesAsWritten = 1;

class Names {
 public:
  explicit Names(bool axesOnly) : axesOnly_(axesOnly) {}

  void read(const Line& line) {
    const text::CleanLine clean = cleaned(line.bytes);
    const std::wstring_view word = std::wstring_view(clean.text).substr(0, clean.text.find(L'='));
    if (!text::isElementKeyword(text::keywordOf(word))) return;
    const KMachineElem element(clean.text, kNamesAsWritten);
    if (!axesOnly_ || isAxis(element)) add(bytesOf(element.getElemName()), bytesOf(clean.text));
  }

  void add(const std::string& name, const std::string& detail) {
    if (!name.empty() && seen_.insert(name).second) words_.push_back({name, false, detail, {}});
  }

  std::vector<Completion> take() { return std::move(words_); }

 private:
  bool axesOnly_;
  std::set<std::string> seen_;
  std::vector<Completion> words_;
};

bool isTravel(Keyword keyword) {
  return keyword == Keyword::limits || keyword == Keyword::minimum || keyword == Keyword::maximum;
}

// Whether operand `i` of a line is a name.
bool isNamePlace(Keyword keyword, std::ptrdiff_t i) {
  if (keyword == Keyword::collision) return true;
  return i == 0 && (isTravel(keyword) || keyword == Keyword::link || keyword == Keyword::loop);
}

std::vector<Completion> namesAbove(std::string_view text, std::size_t end, Keyword keyword) {
  Names names(isTravel(keyword));
  for (std::size_t begin = beginOfText(text); begin < end;) {
    const Line line = lineFrom(text, begin);
    names.read(line);
    begin += line.bytes.size() + 1;
  }
  if (keyword == Keyword::collision) {
    for (const char* word : {"tool", "gun", "gundrill"}) names.add(word, "");
  }
  return names.take();
}

std::size_t skipBlanks(std::string_view text, std::size_t begin) {
  return std::min(text.find_first_not_of(" \t\r\v\f", begin), text.size());
}

bool isComment(std::string_view before) {
  const std::string_view said = before.substr(skipBlanks(before, 0));
  return said.starts_with('*') || said.starts_with('/') || said.find('#') != said.npos;
}

// Of the statement's keyword, in the text.
Hover placeOf(const Line& line, const text::CleanLine& clean, const text::Token& keyword) {
  const auto at = std::find(clean.columns.begin(), clean.columns.end(), keyword.column);
  const int last = at[static_cast<std::ptrdiff_t>(keyword.text.size()) - 1];
  return {line.begin + static_cast<std::size_t>(*at) - 1,
          line.begin + static_cast<std::size_t>(last),
          {}};
}

}  // namespace

std::optional<Hover> hoverAt(const std::string& text, std::size_t offset, Language language) {
  const Line line = lineAt(text, std::min(offset, text.size()));
  const text::CleanLine clean = cleaned(line.bytes);
  const text::Statement statement = text::statementOf(clean);
  const KeywordPage* page = pageOf(text::keywordOf(statement.keyword.text));
  if (!page) return std::nullopt;
  Hover hover = placeOf(line, clean, statement.keyword);
  if (offset < hover.begin || offset > hover.end) return std::nullopt;
  hover.text = formsOf(*page, bytesOf(statement.keyword.text), language) + "\n\n" +
               filled(page->meaning, {}, language);
  return hover;
}

Completions completionsAt(const std::string& text, std::size_t offset, Language language) {
  const std::size_t cursor = std::min(offset, text.size());
  const Line line = lineAt(text, cursor);
  const std::string_view before = line.bytes.substr(0, cursor - line.begin);
  if (isComment(before)) return {cursor, {}};
  const std::size_t equals = before.find('=');
  if (equals == before.npos) return keywordsAt(line.begin + skipBlanks(before, 0), language);

  const Keyword keyword = text::keywordOf(cleaned(before.substr(0, equals)).text);
  const std::string_view operands = before.substr(equals + 1);
  const bool hasSecond = operands.find('=') != operands.npos;
  if (hasSecond || !isNamePlace(keyword, std::count(operands.begin(), operands.end(), ',')))
    return {cursor, {}};
  const std::size_t token = skipBlanks(before, before.find_last_of("=,") + 1);
  return {line.begin + token, namesAbove(text, line.begin, keyword)};
}

}  // namespace korvo
