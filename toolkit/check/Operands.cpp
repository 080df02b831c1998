#include "toolkit/check/Operands.h"

#include <algorithm>

#include "kinematics/KMachineElem.h"
#include "platform/text/Number.h"
#include "toolkit/Text.h"

using zkin::KMachineElem;

namespace korvo::checking {
namespace {

std::vector<std::wstring> tokensOf(const SourceLine& line) {
  std::vector<std::wstring> tokens;
  tokens.reserve(line.statement.operands.size());
  for (const text::Token& operand : line.statement.operands) tokens.push_back(operand.text);
  return tokens;
}

// Walks over the operands with the library's own readers.
class Walk {
 public:
  explicit Walk(const SourceLine& line) : tokens_(tokensOf(line)) { steps_.reserve(8); }

  void name() { take(Role::name, std::min<int>(1, size())); }

  void number() {
    int next = pos_, value = 0;
    KMachineElem::_readValue(tokens_, next, value);
    take(Role::number, next - pos_);
  }

  void skipped() {
    int next = pos_, value = 0;
    KMachineElem::_readValue(tokens_, next, value);
    if (next > pos_) take(Role::skipped, next - pos_);
  }

  void vector(Role role) {
    int next = pos_;
    zgeo::UVec3d v;
    KMachineElem::_readVector(tokens_, next, v);
    take(role, next - pos_);
  }

  void file() {
    int next = pos_, rgb[3] = {};
    std::wstring name;
    KMachineElem::_readGeomFile(tokens_, next, name, rgb);
    const int taken = next - pos_;
    take(Role::file, std::min(taken, 1));
    if (taken > 1) take(Role::colour, taken - 1);
  }

  std::vector<Step> steps() {
    if (pos_ < size()) take(Role::rest, size() - pos_);
    return std::move(steps_);
  }

 private:
  int size() const { return static_cast<int>(tokens_.size()); }

  void take(Role role, int count) {
    steps_.push_back({role, pos_, count});
    pos_ += count;
  }

  std::vector<std::wstring> tokens_;
  std::vector<Step> steps_;
  int pos_ = 0;
};

void walkAxis(Walk& walk, bool isRotary, int version) {
  walk.name();
  if (version != 2) walk.number();
  walk.vector(Role::direction);
  if (!isRotary) return;
  walk.skipped();
  walk.skipped();
  walk.vector(Role::point);
}

void walkTool(Walk& walk) {
  walk.vector(Role::direction);
  walk.vector(Role::point);
}

void walkPart(Walk& walk) {
  walk.vector(Role::xDirection);
  walk.vector(Role::yDirection);
  walk.vector(Role::position);
}

bool isLetter(wchar_t c) { return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z'); }

bool isAxisKeyword(text::Keyword keyword) {
  return keyword == text::Keyword::linearAxis || keyword == text::Keyword::rotaryAxis;
}

// How many words a line has at least that are operands: "left column" is a name, and "1 000" may
// be a number. 0: its operand may be anything.
std::size_t leastWords(text::Keyword keyword) {
  switch (keyword) {
    case text::Keyword::minimum:
    case text::Keyword::maximum:
    case text::Keyword::tool:
    case text::Keyword::drillGun:
    case text::Keyword::part:
      return 2;
    case text::Keyword::frame:
    case text::Keyword::linearAxis:
    case text::Keyword::rotaryAxis:
    case text::Keyword::limits:
      return 3;
    default:
      return 0;
  }
}

std::vector<std::string> splitAtBlanks(std::string_view text) {
  std::vector<std::string> words;
  for (std::size_t at = text.find_first_not_of(kBlanks); at != text.npos;) {
    const std::size_t end = std::min(text.find_first_of(kBlanks, at), text.size());
    words.emplace_back(text.substr(at, end - at));
    at = text.find_first_not_of(kBlanks, end);
  }
  return words;
}

}  // namespace

std::vector<Step> stepsOf(const SourceLine& line, int version) {
  if (!text::isElementKeyword(line.keyword)) return {};
  Walk walk(line);
  switch (line.keyword) {
    case text::Keyword::frame:
      if (version == 2) walk.vector(Role::direction);
      break;
    case text::Keyword::part:
      walkPart(walk);
      break;
    case text::Keyword::tool:
    case text::Keyword::drillGun:
      walkTool(walk);
      break;
    case text::Keyword::linearAxis:
    case text::Keyword::rotaryAxis:
      walkAxis(walk, line.keyword == text::Keyword::rotaryAxis, version);
      break;
    default:
      break;
  }
  walk.file();
  return walk.steps();
}

const Step* stepOf(const std::vector<Step>& steps, Role role) {
  const auto at =
      std::find_if(steps.begin(), steps.end(), [role](const Step& s) { return s.role == role; });
  return at == steps.end() ? nullptr : &*at;
}

std::wstring_view operandOf(const SourceLine& line, int i) {
  return line.statement.operands[static_cast<std::size_t>(i)].text;
}

std::string listOf(const SourceLine& line, int first, int count) {
  std::wstring list;
  for (int i = first; i < first + count; ++i) {
    if (i > first) list += L',';
    list += operandOf(line, i);
  }
  return "'" + shownText(list) + "'";
}

std::string_view writtenOf(const SourceLine& line, int i) {
  const Place place = line.placeOf(i);
  return std::string_view(line.raw).substr(static_cast<std::size_t>(place.column - 1),
                                           static_cast<std::size_t>(place.length));
}

zgeo::UVec3d vectorAt(const SourceLine& line, const Step& step) {
  int next = step.first;
  zgeo::UVec3d v;
  KMachineElem::_readVector(tokensOf(line), next, v);
  return v;
}

bool isVector(Role role) {
  return role == Role::direction || role == Role::xDirection || role == Role::yDirection ||
         role == Role::position || role == Role::point;
}

bool isWholeNumber(std::wstring_view text) {
  double value = 0.0;
  const text::Scan scan = text::scanDouble(text, value);
  return scan && scan.length == text.size();
}

bool beginsAsNumber(std::wstring_view text) {
  double value = 0.0;
  return static_cast<bool>(text::scanDouble(text, value));
}

bool isDirectionWord(std::wstring_view text) {
  if (text.starts_with(L'+') || text.starts_with(L'-')) text.remove_prefix(1);
  constexpr std::wstring_view kLetters = L"xyzXYZ";
  return text.size() == 1 && kLetters.find(text[0]) != std::wstring_view::npos;
}

bool looksLikeFile(std::wstring_view text) {
  if (isWholeNumber(text)) return false;
  if (text.find_first_of(L"/\\$") != std::wstring_view::npos) return true;
  for (std::size_t dot = text.find(L'.'); dot != text.npos; dot = text.find(L'.', dot + 1)) {
    if (dot + 2 < text.size() && isLetter(text[dot + 1]) && isLetter(text[dot + 2])) return true;
  }
  return false;
}

bool isQuoted(std::wstring_view text) {
  const bool begins = text.starts_with(L'"') || text.starts_with(L'\'');
  return begins && text.size() > 2 && text.back() == text.front();
}

std::vector<std::string> wordsOf(const SourceLine& line) {
  const std::size_t least = leastWords(line.keyword);
  if (least == 0 || line.statement.operands.size() != 1) return {};
  std::vector<std::string> words = splitAtBlanks(writtenOf(line, 0));
  if (words.size() < least) return {};
  const std::size_t first =
      text::isElementKeyword(line.keyword) && !isAxisKeyword(line.keyword) ? 0 : 1;
  for (std::size_t i = first; i < words.size(); ++i) {
    const std::wstring word(words[i].begin(), words[i].end());
    const bool isFile = i + 1 == words.size() && i > first && looksLikeFile(word);
    if (!isFile && !isWholeNumber(word) && !isDirectionWord(word)) return {};
  }
  return words;
}

bool isBlankFrom(const SourceLine& line, int first) {
  const std::vector<text::Token>& operands = line.statement.operands;
  const auto begin = operands.begin() + std::min<std::ptrdiff_t>(first, std::ssize(operands));
  return std::all_of(begin, operands.end(), [](const text::Token& t) { return t.text.empty(); });
}

}  // namespace korvo::checking
