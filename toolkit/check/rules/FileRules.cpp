// Is the file what it looks like: can it be read, are its lines whole, are its keywords known?

#include <algorithm>
#include <array>

#include "platform/text/Number.h"
#include "toolkit/Text.h"
#include "toolkit/check/Characters.h"
#include "toolkit/check/MeantKeyword.h"
#include "toolkit/check/Misread.h"
#include "toolkit/check/Numbers.h"
#include "toolkit/check/Operands.h"
#include "toolkit/check/Rule.h"

using korvo::text::Keyword;

namespace korvo::checking {
namespace {

Place stretch(const SourceLine& line, std::size_t begin, std::size_t length) {
  return {line.number, static_cast<int>(begin) + 1, static_cast<int>(length)};
}

// --- can it be read?

Findings unreadable(const Source& source) {
  if (source.unreadable.english.empty()) return {};
  return {Finding({}, {source.unreadable})};
}

Findings encoding(const Source& source) {
  if (source.document.isUtf16) return {Finding({}, {"UTF-16"})};
  for (const SourceLine& line : source.document.lines) {
    const std::size_t at = line.text.find(L'\0');
    if (at == std::wstring::npos) continue;
    const Words zeros("a NUL character", "un caractère nul");
    return {Finding({line.number, line.columns[at], 1}, {zeros})};
  }
  return {};
}

// Carriage returns with nothing but white space behind them end the line, however many they are.
std::size_t lostLineEnd(const SourceLine& line) {
  const std::size_t last = line.raw.find_last_not_of(kBlanks);
  const std::size_t at = line.raw.find('\r');
  return last == std::string::npos || at > last ? std::string::npos : at;
}

Findings lineEnds(const Source& source) {
  const Document& document = source.document;
  if (document.isUtf16 || document.nulLine) return {};  // no text: that is said already
  const Words whole("carriage returns alone: the whole file is one line",
                    "des retours chariot seuls : tout le fichier est une ligne");
  if (document.lineCount == 1 && document.carriageReturns > 0) return {Finding({}, {whole})};
  const Words inside("a carriage return inside the line", "un retour chariot dans la ligne");
  Findings findings;
  for (const SourceLine& line : document.lines) {
    const std::size_t at = lostLineEnd(line);
    if (at != std::string::npos) findings.push_back(Finding(stretch(line, at, 1), {inside}));
  }
  return findings;
}

Findings empty(const Source& source) {
  const Document& document = source.document;
  const bool isRead = source.unreadable.english.empty() && !document.isUtf16;
  if (!isRead || !document.lines.empty() || document.carriageReturns > 0) return {};
  const std::string count = std::to_string(document.lineCount);
  const bool isOne = document.lineCount == 1, isFew = document.lineCount < 2;
  return {Finding(
      {}, {Words(count + (isOne ? " line" : " lines"), count + (isFew ? " ligne" : " lignes"))})};
}

// What is lost may be a comment, or blanks at the end of a line of a fixed width.
bool losesNothing(const SourceLine& line) {
  return line.raw.find('#') != std::string::npos ||
         (line.raw.ends_with("  ") || line.raw.ends_with("\t"));
}

Findings longLines(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (!line.wasCut || losesNothing(line)) continue;
    findings.push_back(Finding(stretch(line, line.raw.size(), 0)));
  }
  return findings;
}

// --- keywords

// "tool z,0,0,0" and "tool: z,0,0,0"
struct MissingEquals {
  std::string keyword;
  Place gap;  ///< What stands where the equal sign should be.
};

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

// Operands are separated by commas, the words of a sentence by blanks.
bool isProse(std::string_view rest) {
  for (std::size_t begin = 0; begin <= rest.size();) {
    const std::size_t end = std::min(rest.find(',', begin), rest.size());
    const std::string_view piece = trimmed(rest.substr(begin, end - begin));
    if (std::any_of(piece.begin(), piece.end(), isBlank)) return true;
    begin = end + 1;
  }
  return false;
}

std::optional<MissingEquals> missingEquals(const SourceLine& line) {
  if (line.text.find(L'=') != std::wstring::npos) return std::nullopt;
  const std::string_view said = std::string_view(line.raw).substr(0, line.raw.find('#'));
  const std::size_t begin = said.find_first_not_of(kBlanks);
  const std::size_t end = said.find_first_of(": \t", begin);
  const std::size_t operands = said.find_first_not_of(": \t", end);
  if (operands == std::string_view::npos) return std::nullopt;
  const std::string_view word = said.substr(begin, end - begin);
  const Keyword keyword = text::keywordOf(std::wstring(word.begin(), word.end()));
  const std::string_view rest = trimmed(said.substr(operands));
  const bool takesOne =
      keyword == Keyword::link || keyword == Keyword::strategy || keyword == Keyword::mode;
  const bool isStatement = takesOne || rest.find(',') != std::string_view::npos;
  if (keyword == Keyword::none || rest.empty() || !isStatement || isProse(rest)) {
    return std::nullopt;
  }
  return MissingEquals{std::string(word), stretch(line, end, operands - end)};
}

Findings equalsMissing(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword != Keyword::none) continue;
    const std::optional<MissingEquals> missing = missingEquals(line);
    if (!missing) continue;
    findings.push_back(
        Finding(missing->gap, {"'" + missing->keyword + "'"}).mend(missing->gap, "="));
  }
  return findings;
}

// "word=operands": a statement, whatever the word. Of several words it is a sentence.
bool isStatement(const SourceLine& line) {
  const text::Token& word = line.statement.keyword;
  const bool isOneWord = line.placeOf(word).length == static_cast<int>(word.text.size());
  return line.text.find(L'=') != std::wstring::npos && !word.text.empty() && isOneWord;
}

Findings unknownKeywords(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword != Keyword::none || missingEquals(line)) continue;
    const std::optional<MeantKeyword> meant = meantKeyword(line);
    if (!meant && !isStatement(line)) continue;
    const Place place = line.placeOf(line.statement.keyword);
    Finding finding(place, {inQuotes(line.statement.keyword.text)});
    if (meant) finding.suggest({inQuotes(meant->word)});
    if (meant && meant->isCertain) finding.mend(place, toUtf8(meant->word));
    findings.push_back(std::move(finding));
  }
  return findings;
}

// The beginning of a line that is no statement: enough to know it by.
std::string shortened(const std::wstring& word) {
  constexpr std::size_t kShown = 30;
  return inQuotes(word.size() <= kShown ? word : word.substr(0, kShown) + L"...");
}

Findings ignoredLines(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword != Keyword::none || missingEquals(line) || isStatement(line)) continue;
    if (meantKeyword(line)) continue;
    findings.push_back(
        Finding(line.placeOf(line.statement.keyword), {shortened(line.statement.keyword.text)}));
  }
  return findings;
}

// A frame, a part and a body may stand without operands.
bool needsOperands(Keyword keyword) {
  return keyword != Keyword::none && keyword != Keyword::frame && keyword != Keyword::part &&
         keyword != Keyword::geometry;
}

Findings loneKeywords(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (!needsOperands(line.keyword) || line.statement.hasOperandPart) continue;
    findings.push_back(
        Finding(line.placeOf(line.statement.keyword), {inQuotes(line.statement.keyword.text)}));
  }
  return findings;
}

// --- what is cut off or lost

// Where the second equal sign stands that has something behind it; npos when none has.
std::size_t secondEquals(const std::wstring& text) {
  const std::size_t keyword = text.find_first_not_of(L'=');
  const std::size_t operands = text.find_first_not_of(L'=', text.find(L'=', keyword));
  const std::size_t second = text.find(L'=', operands);
  return text.find_first_not_of(L'=', second) == std::wstring::npos ? std::wstring::npos : second;
}

Findings equalsTwice(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword == Keyword::none || !line.statement.hasOperandPart) continue;
    const std::size_t at = secondEquals(line.text);
    if (at == std::wstring::npos) continue;
    const Place place{line.number, line.columns[at], line.columns.back() - line.columns[at] + 1};
    findings.push_back(Finding(place, {inQuotes(std::wstring_view(line.text).substr(at))}));
  }
  return findings;
}

// Whether what follows a "#" goes on with an operand: "body#2.stl", "X#2,-1,1", "10#5". A comment
// behind an operand begins with a blank, or with a word and more of them.
bool goesOn(std::string_view rest) {
  if (rest.empty() || std::any_of(rest.begin(), rest.end(), isBlank)) return false;
  return (rest[0] >= '0' && rest[0] <= '9') || rest.find_first_of(".,") != std::string_view::npos;
}

Findings commentsInside(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword == Keyword::none || !line.statement.hasOperandPart) continue;
    const std::size_t at = line.raw.find('#');
    if (at == std::string::npos || at == 0 || isBlank(line.raw[at - 1])) continue;
    const std::string_view rest = trimmed(std::string_view(line.raw).substr(at + 1));
    if (isBlank(line.raw[std::min(at + 1, line.raw.size() - 1)]) || !goesOn(rest)) continue;
    const int last = static_cast<int>(line.statement.operands.size()) - 1;
    findings.push_back(Finding(stretch(line, at, rest.size() + 1),
                               {inQuotes(line.statement.operands[last].text)}));
  }
  return findings;
}

// --- names

struct Named {
  const SourceLine& line;
  int operand;

  const text::Token& token() const {
    return line.statement.operands[static_cast<std::size_t>(operand)];
  }
  Place place() const { return line.placeOf(operand); }
  bool hasBlanks() const { return place().length > static_cast<int>(token().text.size()); }
  std::string written() const { return std::string(writtenOf(line, operand)); }
};

// The operands of a role in all element lines; numbers and empty ones are no names.
std::vector<Named> namesOf(const Source& source, Role role) {
  std::vector<Named> names;
  for (const SourceLine& line : source.document.lines) {
    const std::vector<Step> steps = stepsOf(line, source.format.version);
    const Step* const step = stepOf(steps, role);
    if (!step || step->count == 0 || isSplitByBlanks(line)) continue;
    const Named name{line, step->first};
    const std::wstring& text = name.token().text;
    if (!text.empty() && !isWholeNumber(text) && !isQuoted(text)) names.push_back(name);
  }
  return names;
}

Findings blanksIn(const Source& source, Role role) {
  Findings findings;
  for (const Named& name : namesOf(source, role)) {
    if (!name.hasBlanks()) continue;
    findings.push_back(Finding(name.place(), {inQuotes(name.token().text)}));
  }
  return findings;
}

Findings nameBlanks(const Source& source) { return blanksIn(source, Role::name); }
Findings fileBlanks(const Source& source) { return blanksIn(source, Role::file); }

// A single limit is none: two that stand without a comma are not one large number.
bool isTorn(const Named& number) {
  const std::string written = number.written();
  const bool isTwoLimits =
      number.line.keyword == Keyword::limits && number.line.statement.operands.size() == 2;
  return isTornNumber(written) || (isTwoLimits && isGroupedNumber(written));
}

Findings tornNumbers(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword == Keyword::none || isSplitByBlanks(line)) continue;
    for (int i = 0; i < std::ssize(line.statement.operands); ++i) {
      const Named number{line, i};
      if (!number.hasBlanks() || !beginsAsNumber(number.token().text)) continue;
      if (!isTorn(number)) continue;
      findings.push_back(Finding(number.place(), {"'" + utf8OfLine(number.written()) + "'",
                                                  inQuotes(number.token().text)}));
    }
  }
  return findings;
}

// Read as most people mean them, but blanks are also what is left of a lost comma.
Findings spacedNumbers(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    for (const Numeric& numeric : numbersOf(line, source.format.version)) {
      const Named number{line, numeric.operand};
      if (!number.hasBlanks() || isTorn(number) || !isWholeNumber(number.token().text)) continue;
      findings.push_back(Finding(number.place(), {"'" + utf8OfLine(number.written()) + "'",
                                                  shownText(number.token().text)}));
    }
  }
  return findings;
}

Findings quotedNames(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document.lines) {
    if (line.keyword == Keyword::none) continue;
    for (int i = 0; i < std::ssize(line.statement.operands); ++i) {
      const Named name{line, i};
      if (!isQuoted(name.token().text)) continue;
      const std::string written = name.written();
      findings.push_back(Finding(name.place(), {utf8OfLine(written)})
                             .mend(name.place(), written.substr(1, written.size() - 2)));
    }
  }
  return findings;
}

Findings utf8Files(const Source& source) {
  Findings findings;
  for (const Named& name : namesOf(source, Role::file)) {
    const std::string written = name.written(), shown = utf8OfLine(written);
    const bool isAscii = std::all_of(written.begin(), written.end(),
                                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (isAscii || shown != written) continue;
    findings.push_back(
        Finding(name.place(), {"'" + shown + "'", "'" + toUtf8(name.token().text) + "'"}));
  }
  return findings;
}

// --- format

Findings formatVersion(const Source& source) {
  if (!isOfOtherFormat(source.format, source.likely)) return {};
  return {
      Finding({}, {source.format.version, source.likely.version}).suggest({source.likely.version})};
}

// A line of 1209 characters.
constexpr auto kLongLine = [] {
  std::array<char, 1211> line{};
  constexpr std::string_view begin = "collisions=tool", pair = ",PIECE";
  for (std::size_t i = 0; i < begin.size(); ++i) line[i] = begin[i];
  for (std::size_t i = begin.size(); i < 1209; ++i) line[i] = pair[(i - begin.size()) % 6];
  line[1209] = '\n';
  return line;
}();

constexpr Rule kRules[] = {
    {.code = "file-unreadable",
     .severity = Severity::error,
     .stage = Stage::file,
     .sentence = {"expected a readable file, found {0}", "fichier lisible attendu, trouvé : {0}"},
     .suggestion = {},
     .meaning =
         {"Nothing of the file could be read: it is not there, is no file, or may not be "
          "read by you. Pipes and devices are not read, since they may never end. A file that the "
          "system fails to read to its end, or that changes meanwhile, counts as not read: "
          "what is lost may matter.",
          "Rien n'a pu être lu : le fichier n'existe pas, n'est pas un fichier, ou vous "
          "n'avez pas le droit de le lire. Les tubes et les périphériques ne sont pas lus, "
          "car ils peuvent ne jamais finir. Un fichier que le système ne peut lire jusqu'au "
          "bout, ou qui change entre-temps, compte comme non lu : ce qui manque peut "
          "importer."},
     .wrong = "",
     .right = "",
     .find = unreadable},
    {.code = "file-encoding",
     .severity = Severity::error,
     .stage = Stage::file,
     .sentence = {"expected text of one byte a character, found {0}",
                  "texte d'un octet par caractère attendu, trouvé : {0}"},
     .suggestion = {"save the file as plain text (ASCII, Latin-1 or UTF-8)",
                    "enregistrez le fichier en texte simple (ASCII, Latin-1 ou UTF-8)"},
     .meaning = {"The library reads each byte as one character. In UTF-16 every second byte is a "
                 "NUL, so no keyword is known and nothing of the file is read. A NUL elsewhere "
                 "comes from a damaged file, or from one that is no text.",
                 "La bibliothèque lit chaque octet comme un caractère. En UTF-16 un octet sur deux "
                 "est nul : aucun mot-clé n'est reconnu et rien n'est lu. Un octet nul ailleurs "
                 "vient d'un fichier abîmé, ou qui n'est pas du texte."},
     .wrong = "\xFF\xFE"
              "frame\n",
     .right = "frame\n",
     .find = encoding},
    {.code = "file-line-ends",
     .severity = Severity::error,
     .stage = Stage::file,
     .sentence = {"expected lines that end with a line feed, found {0}",
                  "lignes terminées par un saut de ligne attendues, trouvé : {0}"},
     .suggestion = {"save the file with the line ends of Unix or Windows",
                    "enregistrez le fichier avec les fins de ligne d'Unix ou de Windows"},
     .meaning = {"A carriage return alone ends no line: what stands behind it is joined to the "
                 "operands in front of it, or belongs to their comment. Very old editors write "
                 "such files.",
                 "Un retour chariot seul ne termine pas la ligne : ce qui le suit s'ajoute aux "
                 "opérandes qui le précèdent, ou à leur commentaire. De très vieux éditeurs "
                 "écrivent de tels fichiers."},
     .wrong = "frame\rpart=x,y,0,0,0\n",
     .right = "frame\r\npart=x,y,0,0,0\n",
     .find = lineEnds},
    {.code = "file-empty",
     .severity = Severity::error,
     .stage = Stage::file,
     .sentence = {"expected the lines of a machine, found none among {0}",
                  "lignes d'une machine attendues, trouvé : aucune sur {0}"},
     .suggestion = {"begin with one of the machines that \"korvo new\" prints",
                    "partez d'une des machines que « korvo new » affiche"},
     .meaning =
         {"The file is empty, or all of its lines are comments: lines that begin with \"#\", "
          "\"*\" or \"/\".",
          "Le fichier est vide, ou toutes ses lignes sont des commentaires : des lignes qui "
          "commencent par « # », « * » ou « / »."},
     .wrong = "# frame\n",
     .right = "frame\n",
     .find = empty},
    {.code = "line-too-long",
     .severity = Severity::error,
     .sentence = {"expected a line of at most 1203 characters, found more",
                  "ligne d'au plus 1203 caractères attendue, trouvé : davantage"},
     .suggestion = {"write several shorter lines, or shorter names",
                    "écrivez plusieurs lignes plus courtes, ou des noms plus courts"},
     .meaning = {"The library reads 1203 characters of a line and passes over the rest in silence: "
                 "operands are lost, and the last one that is read may be half a name or number.",
                 "La bibliothèque lit 1203 caractères d'une ligne et ignore le reste sans rien "
                 "dire : des opérandes sont perdus, et le dernier lu peut être la moitié d'un nom "
                 "ou d'un nombre."},
     .wrong = kLongLine.data(),
     .right = "collisions=tool,PIECE\n",
     .find = longLines},
    {.code = "keyword-unknown",
     .severity = Severity::error,
     .sentence = {"expected a keyword, found {0}", "mot-clé attendu, trouvé : {0}"},
     .suggestion = {"did you mean {0}?", "vouliez-vous dire {0} ?"},
     .meaning = {"The library passes over a line whose keyword it does not know, without a word: "
                 "the element or setting is missing from the machine.",
                 "La bibliothèque ignore sans rien dire une ligne dont elle ne connaît pas le "
                 "mot-clé : l'élément ou le réglage manque à la machine."},
     .wrong = "tanslation=X,1,x\n",
     .right = "translation=X,1,x\n",
     .find = unknownKeywords},
    {.code = "line-ignored",
     .severity = Severity::warning,
     .sentence = {"expected a keyword or a comment, found {0}",
                  "mot-clé ou commentaire attendu, trouvé : {0}"},
     .suggestion = {"begin the line with \"#\" if it is a comment",
                    "commencez la ligne par « # » si c'est un commentaire"},
     .meaning = {"The library passes over a line whose keyword it does not know, and this one is "
                 "like no keyword. If it is a remark, a \"#\" says so to whoever reads the file.",
                 "La bibliothèque ignore une ligne dont elle ne connaît pas le mot-clé, et "
                 "celui-ci ne ressemble à aucun. Si c'est une remarque, un « # » le dit à tout "
                 "lecteur."},
     .wrong = "My milling machine\n",
     .right = "# My milling machine\n",
     .find = ignoredLines},
    {.code = "equals-missing",
     .severity = Severity::error,
     .sentence = {"expected \"=\" behind the keyword {0}, found none",
                  "« = » attendu après le mot-clé {0}, trouvé : aucun"},
     .suggestion = {"write \"=\" between keyword and operands",
                    "écrivez « = » entre le mot-clé et les opérandes"},
     .meaning = {"All blanks of a line are removed before it is split at \"=\". Without that sign "
                 "keyword and operands are one word, which is no keyword: the line is passed over.",
                 "Tous les blancs d'une ligne sont retirés, puis elle est coupée au « = ». Sans ce "
                 "signe, mot-clé et opérandes ne font qu'un mot, qui n'est pas un mot-clé : la "
                 "ligne est ignorée."},
     .wrong = "tool z,0,0,0\n",
     .right = "tool=z,0,0,0\n",
     .find = equalsMissing},
    {.code = "equals-twice",
     .severity = Severity::error,
     .sentence = {"expected one \"=\" in a line, found {0} behind the operands",
                  "un seul « = » par ligne attendu, trouvé : {0} après les opérandes"},
     .suggestion = {"use no \"=\" in names, and one line for each statement",
                    "n'utilisez pas de « = » dans les noms, et une ligne par instruction"},
     .meaning = {"A line is split at every \"=\" and only the first two parts are read. What "
                 "stands behind the second sign is lost, be it the end of a file name.",
                 "Une ligne est coupée à chaque « = » et seules les deux premières parties sont "
                 "lues. Ce qui suit le deuxième signe est perdu, fût-ce la fin d'un nom de "
                 "fichier."},
     .wrong = "geom=head=2.stl\n",
     .right = "geom=head2.stl\n",
     .find = equalsTwice},
    {.code = "keyword-alone",
     .severity = Severity::warning,
     .sentence = {"expected operands behind the keyword {0}, found none",
                  "opérandes attendus après le mot-clé {0}, trouvé : aucun"},
     .suggestion = {"write \"=\" and the operands, or remove the line",
                    "écrivez « = » et les opérandes, ou supprimez la ligne"},
     .meaning = {"The line does nothing, or makes an element without name, direction and place. "
                 "Only a frame, a part and a body may do without operands.",
                 "La ligne ne fait rien, ou crée un élément sans nom, direction ni place. Seuls un "
                 "bâti, une pièce et un corps se passent d'opérandes."},
     .wrong = "tool\n",
     .right = "tool=z,0,0,0\n",
     .find = loneKeywords},
    {.code = "format-version",
     .severity = Severity::warning,
     .sentence = {"expected axis lines of format {0}, as asked for, found those of format {1}",
                  "lignes d'axe au format {0} attendues, comme demandé, trouvé : le format {1}"},
     .suggestion = {"load the file as format {0}", "chargez le fichier au format {0}"},
     .meaning = {"The file does not say its format; whoever loads it does. In format 1 the second "
                 "operand of an axis is its number, in format 2 its name X, Y, Z, A, B or C stands "
                 "for the number: read as the other format, axes lose number or direction.",
                 "Le fichier ne dit pas son format ; c'est à qui le charge de le dire. Au format 1 "
                 "le deuxième opérande d'un axe est son numéro, au format 2 son nom X, Y, Z, A, B "
                 "ou C en tient lieu : lus à l'autre format, les axes perdent numéro ou "
                 "direction."},
     .wrong = "axis=X,1,x\n",
     .right = "axis=X,x\n",
     .exampleFormat = Format::version2,
     .find = formatVersion},
    {.code = "name-blanks",
     .severity = Severity::note,
     .sentence = {"expected a name without blanks, found one that is read as {0}",
                  "nom sans blanc attendu, trouvé : un nom lu comme {0}"},
     .suggestion = {"write \"_\" instead of the blanks", "écrivez « _ » à la place des blancs"},
     .meaning = {"Every blank of a line is removed, inside names too. The other lines of the file "
                 "find the axis all the same; a host that asks for it by name must leave the "
                 "blanks out.",
                 "Tous les blancs d'une ligne sont retirés, y compris dans les noms. Les autres "
                 "lignes du fichier trouvent tout de même l'axe ; un programme qui le demande par "
                 "son nom doit omettre les blancs."},
     .wrong = "axis=left column,1,x\n",
     .right = "axis=left_column,1,x\n",
     .exampleFormat = Format::version1,
     .find = nameBlanks},
    {.code = "file-blanks",
     .severity = Severity::warning,
     .sentence = {"expected a file name without blanks, found one that is read as {0}",
                  "nom de fichier sans blanc attendu, trouvé : un nom lu comme {0}"},
     .suggestion = {"rename the file, for example with \"_\" instead of the blanks",
                    "renommez le fichier, par exemple avec « _ » à la place des blancs"},
     .meaning = {"Every blank of a line is removed, inside file names too. A file with blanks in "
                 "its name or in the names of its folders is never found.",
                 "Tous les blancs d'une ligne sont retirés, y compris dans les noms de fichier. Un "
                 "fichier dont le nom ou le dossier contient des blancs n'est jamais trouvé."},
     .wrong = "geom=left column.stl\n",
     .right = "geom=left_column.stl\n",
     .find = fileBlanks},
    {.code = "number-blanks",
     .severity = Severity::warning,
     .sentence = {"expected a number without blanks, found {0}, which is read as {1}",
                  "nombre sans blanc attendu, trouvé : {0}, lu comme {1}"},
     .suggestion = {"write a comma between two numbers", "écrivez une virgule entre deux nombres"},
     .meaning = {"Every blank of a line is removed before it is split at the commas: two numbers "
                 "with a blank alone between them become one.",
                 "Tous les blancs d'une ligne sont retirés avant qu'elle soit coupée aux virgules "
                 ": deux nombres séparés par un simple blanc n'en font plus qu'un."},
     .wrong = "limits=X,-400 400\n",
     .right = "limits=X,-400,400\n",
     .find = tornNumbers},
    {.code = "number-spaced",
     .severity = Severity::note,
     .sentence = {"expected a number without blanks, found {0}, which is read as {1}",
                  "nombre sans blanc attendu, trouvé : {0}, lu comme {1}"},
     .suggestion = {"remove the blank, or write a comma if there are two numbers",
                    "supprimez le blanc, ou écrivez une virgule s'il y a deux nombres"},
     .meaning = {"Every blank of a line is removed: 1 000 is 1000, and - 5 is -5. Most often that "
                 "is what is meant; without the blank everyone who reads the file is sure of it.",
                 "Tous les blancs d'une ligne sont retirés : 1 000 vaut 1000, et - 5 vaut -5. "
                 "C'est le plus souvent ce qui est voulu ; sans le blanc, tout lecteur du fichier "
                 "en est sûr."},
     .wrong = "tool=z,0,0,1 000\n",
     .right = "tool=z,0,0,1000\n",
     .find = spacedNumbers},
    {.code = "file-name-utf8",
     .severity = Severity::warning,
     .sentence = {"expected a file name of ASCII letters, found {0}, which is looked for as {1}",
                  "nom de fichier en lettres ASCII attendu, trouvé : {0}, cherché comme {1}"},
     .suggestion = {"rename the file without accents", "renommez le fichier sans accents"},
     .meaning =
         {"The library reads each byte as one character, as in Latin-1. In a file saved as "
          "UTF-8 a letter with an accent is two bytes. Some systems still find the file, byte "
          "by byte; Windows looks for another one.",
          "La bibliothèque lit chaque octet comme un caractère, comme en Latin-1. Dans un "
          "fichier enregistré en UTF-8 une lettre accentuée fait deux octets. Certains "
          "systèmes trouvent encore le fichier, octet par octet ; Windows en cherche un "
          "autre."},
     .wrong = "geom=t\xC3\xAAte.stl\n",
     .right = "geom=tete.stl\n",
     .find = utf8Files},
    {.code = "name-quotes",
     .severity = Severity::warning,
     .sentence = {"expected an operand without quotes, found {0}",
                  "opérande sans guillemets attendu, trouvé : {0}"},
     .suggestion = {"remove the quotes", "supprimez les guillemets"},
     .meaning = {"Quotes mean nothing to the library: they belong to the name, which is then that "
                 "of no other element and of no file, and a number in quotes is none.",
                 "Les guillemets n'ont pas de sens pour la bibliothèque : ils font partie du nom, "
                 "qui n'est alors celui d'aucun autre élément ni fichier, et un nombre entre "
                 "guillemets n'en est pas un."},
     .wrong = "geom=\"head.stl\"\n",
     .right = "geom=head.stl\n",
     .find = quotedNames},
    {.code = "comment-inside",
     .severity = Severity::warning,
     .sentence = {"expected a blank in front of a comment, found \"#\" right behind {0}",
                  "blanc attendu devant un commentaire, trouvé : « # » juste après {0}"},
     .suggestion = {"use no \"#\" in names; write a blank in front of a comment",
                    "n'utilisez pas de « # » dans les noms ; écrivez un blanc devant un "
                    "commentaire"},
     .meaning = {"A comment begins at the first \"#\" of a line, wherever it stands. A name or "
                 "number with that sign in it is cut there, and all operands behind it are lost.",
                 "Un commentaire commence au premier « # » de la ligne, où qu'il soit. Un nom ou "
                 "un nombre qui contient ce signe y est coupé, et tous les opérandes suivants sont "
                 "perdus."},
     .wrong = "geom=head#2.stl\n",
     .right = "geom=head2.stl\n",
     .find = commentsInside},
};

}  // namespace

std::span<const Rule> fileRules() { return kRules; }

}  // namespace korvo::checking
