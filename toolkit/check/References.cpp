#include "toolkit/check/References.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <span>

#include "platform/zgeo/UTools.h"
#include "toolkit/Text.h"
#include "toolkit/check/Chains.h"
#include "toolkit/check/Closest.h"
#include "toolkit/check/MeantKeyword.h"
#include "toolkit/check/Operands.h"

using korvo::text::Keyword;
using zgeo::UTools;
using zkin::KMachineElem;

namespace korvo::checking {
namespace {

constexpr std::wstring_view kPrefix = L"axe_";

// Names to choose from for "did you mean"; a machine has a dozen, and more only cost time.
constexpr std::size_t kMostNames = 40;

bool isOneOf(Keyword keyword, std::initializer_list<Keyword> keywords) {
  return std::find(keywords.begin(), keywords.end(), keyword) != keywords.end();
}

bool isLimitLine(const Reference& reference) {
  return !isOneOf(reference.line->keyword, {Keyword::link, Keyword::loop, Keyword::collision});
}

// Operands with semicolons between them are one operand to the library: no name was meant.
bool isName(const Reference& reference) {
  return reference.line->statement.hasOperandPart && !isUnsplit(*reference.line);
}

// The first operands of lines with an unknown keyword. One of them may have been meant to declare
// what is not found, and is told already.
std::set<std::wstring> namesOfIgnoredLines(const Document& document) {
  std::set<std::wstring> names;
  for (const SourceLine& line : document.lines) {
    if (line.keyword != Keyword::none || line.statement.operands.empty()) continue;
    const std::wstring low = UTools::_low(line.statement.operands[0].text);
    names.insert(low.starts_with(kPrefix) ? low.substr(kPrefix.size()) : low);
  }
  return names;
}

bool hasNone(const LinkedElements& linked, KMachineElem::KME_TYPE type) {
  return rankOf(linked, type) < 0;
}

// That there is no frame, part or tool at all is told by rules of their own.
bool isOfMissingKind(const LinkedElements& linked, const std::wstring& key) {
  return (key == L"bati" && hasNone(linked, KMachineElem::KMET_TYPE_BATI)) ||
         (key == L"piece" && hasNone(linked, KMachineElem::KMET_TYPE_PART)) ||
         (key == L"outil" && hasNone(linked, KMachineElem::KMET_TYPE_TOOL));
}

// The element that is found when the prefix is removed, or is not.
int rankBehindPrefix(const Reference& reference, const NamedElements& named) {
  const std::wstring low = UTools::_low(reference.written);
  if (!low.starts_with(kPrefix)) return -1;
  const int bare = named.rankOf(low.substr(kPrefix.size()));
  return bare >= 0 ? bare : named.rankOf(low);
}

LostName lostName(const Reference& reference, const NamedElements& named) {
  const int later = named.rankOf(reference.key);
  if (later >= 0) return {&reference, Lost::later, later};
  const int hidden = rankBehindPrefix(reference, named);
  return {&reference, hidden < 0 ? Lost::unknown : Lost::prefix, hidden};
}

std::vector<std::wstring> candidates(const LinkedElements& linked, const Reference& reference) {
  std::vector<std::wstring> names;
  const auto count = std::min(static_cast<std::size_t>(reference.above), linked.elements.size());
  for (std::size_t i = 0; i < count && names.size() < kMostNames; ++i) {
    const KMachineElem& e = linked.elements[i];
    if (!isLimitLine(reference) || isAxis(e)) names.push_back(e.getElemName());
  }
  if (reference.line->keyword == Keyword::collision) names.push_back(L"tool");
  return names;
}

bool isAscii(const std::wstring& text) {
  return std::all_of(text.begin(), text.end(), [](wchar_t c) { return c < 0x80; });
}

struct KindWord {
  std::wstring_view word;
  KMachineElem::KME_TYPE type;
};

// Words of the file, accents apart, that name an element of which a machine has one: in links and
// pairs it has another name.
constexpr KindWord kKindWords[] = {
    {L"frame", KMachineElem::KMET_TYPE_BATI},     {L"bati", KMachineElem::KMET_TYPE_BATI},
    {L"bed", KMachineElem::KMET_TYPE_BATI},       {L"base", KMachineElem::KMET_TYPE_BATI},
    {L"part", KMachineElem::KMET_TYPE_PART},      {L"table", KMachineElem::KMET_TYPE_PART},
    {L"piece", KMachineElem::KMET_TYPE_PART},     {L"tool", KMachineElem::KMET_TYPE_TOOL},
    {L"workpiece", KMachineElem::KMET_TYPE_PART}, {L"outil", KMachineElem::KMET_TYPE_TOOL},
    {L"spindle", KMachineElem::KMET_TYPE_TOOL},   {L"broche", KMachineElem::KMET_TYPE_TOOL},
};

// The ranks of the elements above a line that are of the kind that its word says.
std::vector<int> ranksOfKind(const LinkedElements& linked, const Reference& reference) {
  const std::wstring word = plain(reference.written);
  const auto* const kind = std::find_if(std::begin(kKindWords), std::end(kKindWords),
                                        [&](const KindWord& row) { return row.word == word; });
  std::vector<int> ranks;
  for (int i = 0; kind != std::end(kKindWords) && i < reference.above; ++i) {
    if (linked.elements[static_cast<std::size_t>(i)].getElemType() == kind->type)
      ranks.push_back(i);
  }
  return ranks;
}

void suggestName(Finding& finding, const LinkedElements& linked, const Reference& reference) {
  const std::vector<int> kin =
      isLimitLine(reference) ? std::vector<int>{} : ranksOfKind(linked, reference);
  if (!kin.empty()) {
    const std::wstring& name = linked.elements[static_cast<std::size_t>(kin[0])].getElemName();
    finding.suggest({inQuotes(name)});
    if (kin.size() == 1) finding.mend(placeOf(reference), shownText(name));
    return;
  }
  const auto name = closest(reference.written, candidates(linked, reference));
  if (name) finding.suggest({inQuotes(*name)});
}

// A name without the prefix can be mended; an axis that bears it in its own name has to lose it.
void suggestPrefix(Finding& finding, const LostName& lost, const KMachineElem& e) {
  const std::wstring& name = e.getElemName();
  if (UTools::_low(name) != UTools::_low(lost.reference->written)) {
    finding.suggest({Words("write " + inQuotes(name), "écrivez " + inQuotes(name))});
    if (isAscii(name)) finding.mend(placeOf(*lost.reference), shownText(name));
    return;
  }
  const std::string bare = inQuotes(std::wstring_view(name).substr(kPrefix.size()));
  finding.suggest({Words("name the axis " + bare, "nommez l'axe " + bare)});
}

Finding findingFor(const LinkedElements& linked, const LostName& lost) {
  Finding finding(placeOf(*lost.reference), {inQuotes(lost.reference->written)});
  if (lost.why == Lost::unknown) {
    suggestName(finding, linked, *lost.reference);
    return finding;
  }
  const auto rank = static_cast<std::size_t>(lost.element);
  finding.found.push_back(linked.lines[rank]);
  if (lost.why == Lost::prefix) suggestPrefix(finding, lost, linked.elements[rank]);
  return finding;
}

}  // namespace

NamedElements::NamedElements(const LinkedElements& linked) {
  for (std::size_t i = 0; i < linked.elements.size(); ++i) {
    ranks_.emplace(UTools::_low(linked.elements[i].getElemName()), static_cast<int>(i));
  }
}

int NamedElements::rankOf(const std::wstring& key) const {
  const auto at = ranks_.find(key);
  return at == ranks_.end() ? -1 : at->second;
}

bool isUnsplit(const SourceLine& line) {
  return line.text.find(L';') != std::wstring::npos || isSplitByBlanks(line);
}

bool isToolWord(const std::wstring& word) {
  static constexpr const wchar_t* kWords[] = {L"axe_outil", L"outil", L"tool", L"gun", L"gundrill"};
  const std::wstring low = UTools::_low(word);
  return std::any_of(std::begin(kWords), std::end(kWords),
                     [&](const wchar_t* w) { return low == w; });
}

std::vector<LostName> lostNames(const Source& source, std::initializer_list<Keyword> keywords) {
  const NamedElements named(source.linked);
  const std::set<std::wstring> ignored = namesOfIgnoredLines(source.document);
  std::vector<LostName> lost;
  for (const Reference& r : source.linked.references) {
    const bool isTool = r.line->keyword == Keyword::collision && isToolWord(r.written);
    if (r.element >= 0 || isTool || !isOneOf(r.line->keyword, keywords) || !isName(r)) continue;
    if (ignored.count(r.key) || isOfMissingKind(source.linked, r.key)) continue;
    lost.push_back(lostName(r, named));
  }
  return lost;
}

Findings findingsFor(const Source& source, std::initializer_list<Keyword> keywords, Lost why) {
  Findings findings;
  for (const LostName& lost : lostNames(source, keywords)) {
    if (lost.why == why) findings.push_back(findingFor(source.linked, lost));
  }
  return findings;
}

Place placeOf(const Reference& reference) {
  const SourceLine& line = *reference.line;
  if (line.keyword != Keyword::link) return line.placeOf(reference.operand);
  return line.placeOf(0, static_cast<int>(line.statement.operands.size()));
}

}  // namespace korvo::checking
