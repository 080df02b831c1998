#include "kinematics/read/DefinitionReader.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "kinematics/KMachine.h"
#include "kinematics/read/KnownElements.h"
#include "kinematics/read/Operands.h"
#include "kinematics/tolerances.h"
#include "platform/os/Files.h"
#include "platform/text/Keywords.h"
#include "platform/text/Lines.h"
#include "platform/zgeo/UTools.h"

using korvo::text::Keyword;
using zgeo::UTools;
using zgeo::UVec3d;

namespace zkin {
namespace {

constexpr const wchar_t* kFolderWord = L"$ZRN_MACHINE_DEF";

std::wstring withoutAxePrefix(std::wstring_view name) {
  // Deliberate: once and in upper case only: it is a way of writing, not a part of the name, and
  // what looks elements up by name removes another.
  return UTools::_removeFrom(std::wstring(name), L"AXE_");
}

std::wstring replacedAll(std::wstring text, const std::wstring& what, const std::wstring& by) {
  for (std::size_t at = text.find(what); at != std::wstring::npos;
       at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

// The whole text, which `_waccess` would take up to a NUL only.
bool isReadable(const std::wstring& path) { return korvo::os::openRead(path) != nullptr; }

// The state of one reading: the definition so far and where the next element hangs.
class DefinitionReader {
 public:
  explicit DefinitionReader(const ReadContext& context)
      : context_(context), collisions_(context.collisions) {
    definition_.elements.reserve(9);
  }

  void readLine(const std::wstring& line);
  Definition take();

 private:
  void readLink(std::wstring_view operand);
  void readLoop(const Operands& operands);
  void addElement(Keyword keyword, const Operands& operands);
  void readMinimum(const Operands& operands);
  void readMaximum(const Operands& operands);
  void readLimits(const Operands& operands);
  void readRotationPoint(const Operands& operands);
  void readCollisions(const Operands& operands);

  void findGeometry(KMachineElem& e) const;
  void number(KMachineElem& e);
  void reverseBehindPart();
  int indexOfName(std::wstring_view name, int version);
  KMachineElem* elementAt(std::optional<std::size_t> rank);
  KMachineElem* elementOf(int index);
  KMachineElem* elementNamed(std::wstring_view name, int version);
  KMachineElem* limitedAxis(const Operands& operands);
  std::vector<int> collisionGroup(std::wstring_view word);

  const ReadContext& context_;
  Definition definition_;
  KnownElements known_;
  Operands parts_, operands_;  // of the line, kept for their storage
  CollisionPairs collisions_;
  int link_ = KMachineElem::KMET_NONE;  // the next element hangs on the element of this index
  int stop_ = KMachineElem::KMET_NONE;  // a part reverses the chain behind it up to this one
  int geometries_ = 0;
};

Definition DefinitionReader::take() {
  definition_.collisions = collisions_.take();
  return std::move(definition_);
}

// --- keywords

int intOperand(const Operands& parts) {
  int pos = 1, value = 0;
  readValue(parts, pos, value);
  return value;
}

void DefinitionReader::readLine(const std::wstring& line) {
  Operands& parts = parts_;
  Operands& operands = operands_;
  splitAt(line, L'=', false, parts);
  if (parts.empty()) return;
  const Keyword keyword = korvo::text::keywordOf(parts[0]);
  const std::wstring_view operand = parts.size() > 1 ? parts[1] : std::wstring_view();
  operands.clear();
  if (parts.size() > 1) splitAt(operand, L',', true, operands);
  if (korvo::text::isElementKeyword(keyword)) return addElement(keyword, operands);
  switch (keyword) {
    case Keyword::link:
      return readLink(operand);
    case Keyword::loop:
      return readLoop(operands);
    case Keyword::strategy:
      definition_.strategy = intOperand(parts);
      return;
    case Keyword::mode:
      definition_.modeRTCP = intOperand(parts);
      return;
    case Keyword::minimum:
      return readMinimum(operands);
    case Keyword::maximum:
      return readMaximum(operands);
    case Keyword::limits:
      return readLimits(operands);
    case Keyword::rotationPoint:
      return readRotationPoint(operands);
    case Keyword::collision:
      return readCollisions(operands);
    default:
      return;  // an unknown keyword
  }
}

// --- links

int DefinitionReader::indexOfName(std::wstring_view name, int version) {
  const KMachineElem* e = elementNamed(name, version);
  return e ? e->getElemIndex() : static_cast<int>(KMachineElem::KMET_NONE);
}

KMachineElem* DefinitionReader::elementAt(std::optional<std::size_t> rank) {
  return rank ? &definition_.elements[*rank] : nullptr;
}

KMachineElem* DefinitionReader::elementOf(int index) { return elementAt(known_.ofIndex(index)); }

// As `KMachine::_getElemByName` looks it up.
KMachineElem* DefinitionReader::elementNamed(std::wstring_view name, int version) {
  std::wstring wanted = UTools::_up(std::wstring(untilNul(name)));
  if (version == 2) wanted = UTools::_removeFrom(wanted, L"AXE_");
  return elementAt(known_.ofName(wanted));
}

// Deliberate: the whole operand part is the name, commas included. A name that is not found keeps
// the link but forgets the stop: a part that follows turns the chain around up to its root.
void DefinitionReader::readLink(std::wstring_view operand) {
  const KMachineElem* e = elementNamed(withoutAxePrefix(operand), context_.version);
  if (e) link_ = e->getElemIndex();
  stop_ = e ? e->getElemIndex() : static_cast<int>(KMachineElem::KMET_NONE);
}

// Deliberate: hooks the element whose index is the link, which after a link line is not the one
// added last.
void DefinitionReader::readLoop(const Operands& operands) {
  const std::wstring name = operands.empty() ? std::wstring() : withoutAxePrefix(operands[0]);
  UVec3d point;
  int pos = 1;
  readVector(operands, pos, point);
  if (KMachineElem* e = elementOf(link_)) e->setHook(indexOfName(name, context_.version), point);
}

// --- elements

void DefinitionReader::addElement(Keyword keyword, const Operands& operands) {
  KMachineElem e;
  readElement(e, keyword, operands, context_.version);
  findGeometry(e);
  e.setPrevIndex(link_);
  number(e);
  if (e.getElemType() == KMachineElem::KMET_TYPE_PART) {
    reverseBehindPart();
    e.setPrevIndex(KMachineElem::KMET_NONE);
  }
  link_ = e.getElemIndex();
  known_.add(e, definition_.elements.size());
  definition_.elements.push_back(std::move(e));
}

void DefinitionReader::findGeometry(KMachineElem& e) const {
  if (e.getGeomFile().empty()) return;
  bool found = isReadable(e.getGeomFile());
  if (!found) {
    const std::wstring beside = replacedAll(e.getGeomFile(), kFolderWord, context_.folder);
    found = beside != e.getGeomFile() && isReadable(beside);
    if (found) e.setGeomFile(beside);
  }
  UTools::_trace(found ? L"\t(actual geom. file OK %s)" : L"\t(geom. file not found %s)",
                 e.getGeomFile().c_str());
}

void DefinitionReader::number(KMachineElem& e) {
  if (e.isTool()) e.setElemIndex(KMachineElem::_getToolIndex(++definition_.tools));
  if (e.getElemType() == KMachineElem::KMET_TYPE_GEOM) e.setElemIndex(-200 - ++geometries_);
}

// The part becomes the root: the elements from the link to the stop hang on their successors and
// run on the part's side.
//
// Deliberate: the walk knows no types. It turns an earlier part, a tool or the frame like an axis,
// since "lien" lines alone say where the chain behind a part begins. Where links form a ring it
// comes back the way it went in, so a walk that ends turns no element more than twice. One that
// leads back to an earlier part, which has the index of the part now read, would never end: it is
// left there.
void DefinitionReader::reverseBehindPart() {
  int partSide = KMachineElem::KMET_PART;
  std::size_t turns = 2 * definition_.elements.size();
  for (KMachineElem* e = elementOf(link_); e && turns > 0; --turns) {
    const int before = e->getPrevIndex();
    e->invert();
    e->setPrevIndex(partSide);
    partSide = e->getElemIndex();
    e = partSide == stop_ ? nullptr : elementOf(before);
  }
}

// --- limits

// Deliberate: not the look-up of links and hooks: the name is not put in upper case, so "axe_x"
// keeps its prefix in every version. Any element may be named, for the name alone decides.
KMachineElem* DefinitionReader::limitedAxis(const Operands& operands) {
  const std::wstring name = operands.empty() ? std::wstring() : withoutAxePrefix(operands[0]);
  return elementAt(known_.ofName(name));
}

void readMin(KMachineElem& axis, const Operands& operands, int& pos) {
  double value = 0.0;
  const bool isSet = readValue(operands, pos, value);
  axis.setMin(value, isSet);
}

void readMax(KMachineElem& axis, const Operands& operands, int& pos) {
  double value = 0.0;
  const bool isSet = readValue(operands, pos, value);
  axis.setMax(value, isSet);
}

void DefinitionReader::readMinimum(const Operands& operands) {
  int pos = 1;
  if (KMachineElem* axis = limitedAxis(operands)) readMin(*axis, operands, pos);
}

void DefinitionReader::readMaximum(const Operands& operands) {
  int pos = 1;
  if (KMachineElem* axis = limitedAxis(operands)) readMax(*axis, operands, pos);
}

// Deliberate: a minimum that does not scan leaves its operand to the maximum.
void DefinitionReader::readLimits(const Operands& operands) {
  int pos = 1;
  KMachineElem* axis = limitedAxis(operands);
  if (!axis) return;
  readMin(*axis, operands, pos);
  readMax(*axis, operands, pos);
}

// --- rotation points and collisions

void DefinitionReader::readRotationPoint(const Operands& operands) {
  const int count = static_cast<int>(operands.size());
  // Deliberate: counted against the axes of the load before, for those of this one get their
  // numbers only when the whole file is read.
  if (count <= context_.axisNum) return;
  KMachineValue<12> point;
  // Deliberate: an operand that does not scan is tried again for ever.
  for (int pos = 0; pos < count && pos < kMaxAxes;) {
    const int place = pos;
    double value = 0.0;
    if (readValue(operands, pos, value)) point[place] = value;
  }
  definition_.rotationPoints.push_back(point);
}

bool isToolWord(std::wstring_view word) {
  static constexpr const wchar_t* kWords[] = {L"axe_outil", L"outil", L"tool", L"gun", L"gundrill"};
  return std::any_of(std::begin(kWords), std::end(kWords),
                     [&](const wchar_t* w) { return isWord(word, w); });
}

// Deliberate: the name comes first, by the version-2 rules in every version; since every tool is
// named OUTIL, "outil" gives only the first tool once one was read.
std::vector<int> DefinitionReader::collisionGroup(std::wstring_view word) {
  const KMachineElem* e = elementNamed(word, 2);
  if (e) return {e->getElemIndex()};
  std::vector<int> tools;
  if (isToolWord(word)) KMachine::_getToolsIndices(definition_.elements, tools);
  return tools;
}

// A partner that is named again can only repeat pairs: each is taken once, where it comes first.
void DefinitionReader::readCollisions(const Operands& operands) {
  if (operands.size() < 2) return;
  std::vector<int> partners;
  std::unordered_set<int> taken;
  for (std::size_t i = 1; i < operands.size(); ++i) {
    for (const int b : collisionGroup(operands[i])) {
      if (taken.insert(b).second) partners.push_back(b);
    }
  }
  for (const int a : collisionGroup(operands[0])) {
    for (const int b : partners) collisions_.add(a, b);
  }
}

}  // namespace

Definition readDefinition(std::FILE* file, const ReadContext& context) {
  korvo::text::LineReader lines(file);
  DefinitionReader reader(context);
  std::wstring line, clean;
  while (lines.next(line)) {
    korvo::text::cleanLine(line, clean);
    if (!clean.empty()) reader.readLine(clean);
  }
  return reader.take();
}

}  // namespace zkin
