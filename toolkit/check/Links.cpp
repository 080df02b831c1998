#include "toolkit/check/Links.h"

#include <new>
#include <unordered_map>
#include <utility>

#include "platform/zgeo/UTools.h"

using korvo::text::Keyword;
using zgeo::UTools;
using zkin::KMachineElem;

namespace korvo::checking {
namespace {

constexpr const wchar_t* kPrefix = L"AXE_";

// Links, loops and pairs: the library puts the name in upper case first, in format 2 without
// "AXE_".
std::wstring keyOf(const std::wstring& name, int version) {
  const std::wstring up = UTools::_up(name);
  return UTools::_low(version == 2 ? UTools::_removeFrom(up, kPrefix) : up);
}

bool isLimitLine(Keyword keyword) {
  return keyword == Keyword::limits || keyword == Keyword::minimum || keyword == Keyword::maximum;
}

class Linker {
 public:
  explicit Linker(int version) : version_(version) {}

  void read(const SourceLine& line) {
    if (line.keyword == Keyword::link) return readLink(line);
    if (text::isElementKeyword(line.keyword)) return readElement(line);
    if (line.statement.operands.empty()) return;
    const std::wstring& name = line.statement.operands[0].text;
    const std::wstring bare = UTools::_removeFrom(name, kPrefix);
    if (line.keyword == Keyword::loop) refer(line, 0, name, keyOf(bare, version_));
    if (isLimitLine(line.keyword)) refer(line, 0, name, UTools::_low(bare));
    if (line.keyword == Keyword::collision) readPairs(line);
  }

  LinkedElements take() { return std::move(linked_); }

 private:
  int refer(const SourceLine& line, int operand, const std::wstring& written, std::wstring key) {
    const auto at = rankOfName_.find(key);
    const int element = at == rankOfName_.end() ? -1 : at->second;
    linked_.references.push_back({&line, operand, element,
                                  static_cast<int>(linked_.elements.size()), tools_, std::move(key),
                                  written});
    return element;
  }

  // The whole operand part is the name: a "," belongs to it.
  void readLink(const SourceLine& line) {
    const std::wstring written = operandText(line);
    const std::wstring key = keyOf(UTools::_removeFrom(written, kPrefix), version_);
    const int rank = refer(line, 0, written, key);
    stop_ = rank < 0 ? static_cast<int>(KMachineElem::KMET_NONE)
                     : linked_.elements[static_cast<std::size_t>(rank)].getElemIndex();
    if (rank >= 0) link_ = stop_;
  }

  // By the names of format 2, whatever the file's.
  void readPairs(const SourceLine& line) {
    int operand = 0;
    for (const text::Token& token : line.statement.operands) {
      refer(line, operand++, token.text, keyOf(token.text, 2));
    }
  }

  void readElement(const SourceLine& line) {
    KMachineElem e;
    // A line with an element's keyword is one, whatever else it has: only memory can be wanting.
    if (!e.setFromLine(line.text, version_)) throw std::bad_alloc();
    e.setPrevIndex(link_);
    if (e.isTool()) e.setElemIndex(KMachineElem::_getToolIndex(++tools_));
    if (e.getElemType() == KMachineElem::KMET_TYPE_GEOM) e.setElemIndex(-200 - ++geometries_);
    if (e.getElemType() == KMachineElem::KMET_TYPE_PART) {
      if (!reverseBehindPart()) linked_.endlessPartLine = line.number;
      e.setPrevIndex(KMachineElem::KMET_NONE);
    }
    link_ = e.getElemIndex();
    add(e, line);
  }

  // The first element of an index or a name is the one that is found.
  void add(const KMachineElem& e, const SourceLine& line) {
    const int rank = static_cast<int>(linked_.elements.size());
    rankOfIndex_.emplace(e.getElemIndex(), rank);
    rankOfName_.emplace(UTools::_low(e.getElemName()), rank);
    linked_.elements.push_back(e);
    linked_.lines.push_back(line.number);
    linked_.declarations.push_back(&line);
  }

  // A walk over n elements that ends passes each at most twice (a ring is left where it was
  // entered); the part's own index, taken by another element, at most doubles that.
  bool reverseBehindPart() {
    std::size_t steps = 4 * linked_.elements.size() + 4;
    int partSide = KMachineElem::KMET_PART;
    for (KMachineElem* e = elementOf(link_); e;) {
      if (steps-- == 0) return false;
      const int before = e->getPrevIndex();
      e->invert();
      e->setPrevIndex(partSide);
      partSide = e->getElemIndex();
      e = partSide == stop_ ? nullptr : elementOf(before);
    }
    return true;
  }

  KMachineElem* elementOf(int index) {
    const auto at = rankOfIndex_.find(index);
    if (at == rankOfIndex_.end()) return nullptr;
    return &linked_.elements[static_cast<std::size_t>(at->second)];
  }

  int version_;
  LinkedElements linked_;
  std::unordered_map<int, int> rankOfIndex_;
  std::unordered_map<std::wstring, int> rankOfName_;
  int link_ = KMachineElem::KMET_NONE;
  int stop_ = KMachineElem::KMET_NONE;
  int tools_ = 0;
  int geometries_ = 0;
};

}  // namespace

std::wstring operandText(const SourceLine& line) {
  std::wstring text;
  for (const text::Token& operand : line.statement.operands) {
    if (&operand != &line.statement.operands.front()) text += L',';
    text += operand.text;
  }
  return text;
}

LinkedElements linkElements(const Document& document, int version) {
  Linker linker(version);
  for (const SourceLine& line : document.lines) linker.read(line);
  return linker.take();
}

}  // namespace korvo::checking
