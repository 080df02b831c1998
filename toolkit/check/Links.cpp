#include "toolkit/check/Links.h"

#include <utility>

#include "kinematics/KMachine.h"
#include "platform/zgeo/UTools.h"

using zgeo::UTools;
using zkin::KMachine;
using zkin::KMachineElem;

namespace korvo::checking {
namespace {

class Linker {
 public:
  explicit Linker(int version) : version_(version) {}

  void read(const SourceLine& line) {
    if (line.keyword == text::Keyword::link) readLink(line);
    if (text::isElementKeyword(line.keyword)) readElement(line);
  }

  LinkedElements take() { return std::move(linked_); }

 private:
  void readLink(const SourceLine& line) {
    const KMachineElem* e =
        KMachine::_getElemByName(linked_.elements, nameOf(line).c_str(), version_);
    stop_ = e ? e->getElemIndex() : static_cast<int>(KMachineElem::KMET_NONE);
    if (e) link_ = stop_;
  }

  // The whole operand part is the name: a "," belongs to it.
  static std::wstring nameOf(const SourceLine& line) {
    std::wstring name;
    for (const text::Token& operand : line.statement.operands) {
      if (&operand != &line.statement.operands.front()) name += L',';
      name += operand.text;
    }
    return UTools::_removeFrom(name, L"AXE_");
  }

  void readElement(const SourceLine& line) {
    KMachineElem e(line.text, version_);
    if (e.getElemType() == KMachineElem::KMET_TYPE_NONE) return;
    e.setPrevIndex(link_);
    if (e.isTool()) e.setElemIndex(KMachineElem::_getToolIndex(++tools_));
    if (e.getElemType() == KMachineElem::KMET_TYPE_GEOM) e.setElemIndex(-200 - ++geometries_);
    if (e.getElemType() == KMachineElem::KMET_TYPE_PART) {
      if (!reverseBehindPart()) linked_.endlessPartLine = line.number;
      e.setPrevIndex(KMachineElem::KMET_NONE);
    }
    link_ = e.getElemIndex();
    linked_.elements.push_back(std::move(e));
    linked_.lines.push_back(line.number);
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
    return const_cast<KMachineElem*>(KMachine::_getElemByIndex(linked_.elements, index));
  }

  int version_;
  LinkedElements linked_;
  int link_ = KMachineElem::KMET_NONE;
  int stop_ = KMachineElem::KMET_NONE;
  int tools_ = 0;
  int geometries_ = 0;
};

}  // namespace

LinkedElements linkElements(const Document& document, int version) {
  Linker linker(version);
  for (const SourceLine& line : document) linker.read(line);
  return linker.take();
}

}  // namespace korvo::checking
