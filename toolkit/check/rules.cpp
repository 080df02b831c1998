#include "toolkit/check/rules.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_map>

#include "platform/text/Number.h"
#include "toolkit/Text.h"

using zkin::KMachineElem;

namespace korvo::checking {
namespace {

using Findings = std::vector<Finding>;

// Beyond this the library's table of axis numbers would fill the memory.
constexpr int kMaxAxisNumber = 10000;
// What a machine position holds, and so how many operands of a rotation point are read.
constexpr std::size_t kMaxAxes = 12;

std::string quoted(std::wstring_view text) { return "'" + toUtf8(text) + "'"; }

// --- rotation points

// The reader tries an operand that is no number for ever, so the first of them is enough.
Findings rotationPointNumbers(const Source& source) {
  Findings findings;
  for (const SourceLine& line : source.document) {
    if (line.keyword != text::Keyword::rotationPoint) continue;
    const std::vector<text::Token>& operands = line.statement.operands;
    for (std::size_t i = 0; i < std::min(operands.size(), kMaxAxes); ++i) {
      double value = 0.0;
      if (text::scanDouble(std::wstring_view(operands[i].text), value)) continue;
      findings.push_back({line.number, operands[i].column,
                          quoted(operands[i].text) + " as operand " + std::to_string(i + 1)});
      break;
    }
  }
  return findings;
}

// --- chains

// rank -> rank of the previous element, or -1: the first element that has the wanted index.
std::vector<int> previousRanks(const std::vector<KMachineElem>& elements) {
  std::unordered_map<int, int> rankOf;
  for (std::size_t i = 0; i < elements.size(); ++i) {
    rankOf.emplace(elements[i].getElemIndex(), static_cast<int>(i));
  }
  std::vector<int> previous;
  for (const KMachineElem& e : elements) {
    const auto at = rankOf.find(e.getPrevIndex());
    previous.push_back(at == rankOf.end() ? -1 : at->second);
  }
  return previous;
}

// The members of every ring of previous elements: each element is walked over once.
std::vector<std::vector<int>> rings(const std::vector<int>& previous) {
  std::vector<std::vector<int>> found;
  std::vector<int> walk(previous.size(), -1);  // the walk that passed there first
  for (int start = 0; start < static_cast<int>(previous.size()); ++start) {
    int at = start;
    for (; at >= 0 && walk[at] < 0; at = previous[at]) walk[at] = start;
    if (at < 0 || walk[at] != start) continue;
    std::vector<int> ring{at};
    for (int next = previous[at]; next != at; next = previous[next]) ring.push_back(next);
    found.push_back(std::move(ring));
  }
  return found;
}

std::string namesOf(const LinkedElements& linked, const std::vector<int>& ring) {
  std::string names;
  for (const int rank : ring) {
    if (names.size() > 200) return names + "...";
    names += toUtf8(linked.elements[rank].getElemName()) + " (line " +
             std::to_string(linked.lines[rank]) + ") on ";
  }
  return names + toUtf8(linked.elements[ring.front()].getElemName());
}

// A ring is reported at its last line: the one that closes it.
Findings elementCycles(const Source& source) {
  Findings findings;
  if (source.linked.endlessPartLine) {
    findings.push_back({source.linked.endlessPartLine, 0, "a ring behind this part"});
  }
  for (const std::vector<int>& ring : rings(previousRanks(source.linked.elements))) {
    int last = 0;
    for (const int rank : ring) last = std::max(last, source.linked.lines[rank]);
    findings.push_back({last, 0, "a ring, " + namesOf(source.linked, ring)});
  }
  return findings;
}

// --- axes

Findings axisNumbers(const Source& source) {
  Findings findings;
  for (std::size_t i = 0; i < source.linked.elements.size(); ++i) {
    const int number = source.linked.elements[i].getElemIndex();
    if (number <= kMaxAxisNumber) continue;
    findings.push_back({source.linked.lines[i], 0, std::to_string(number)});
  }
  return findings;
}

bool isAxis(const KMachineElem& e) {
  return e.getElemType() == KMachineElem::KMET_TYPE_ALIN ||
         e.getElemType() == KMachineElem::KMET_TYPE_AROT;
}

bool isMovingAxis(const KMachineElem& e) {
  return isAxis(e) && KMachineElem::_isIndexAxis(e.getElemIndex());
}

std::string nameOf(const KMachineElem& e) { return quoted(e.getElemName()); }

Findings axisDirections(const Source& source) {
  Findings findings;
  for (std::size_t i = 0; i < source.linked.elements.size(); ++i) {
    const KMachineElem& e = source.linked.elements[i];
    const zgeo::UVec3d& d = e.getElemAxis();
    const bool isFinite = std::isfinite(d.x) && std::isfinite(d.y) && std::isfinite(d.z);
    if (!isMovingAxis(e) || (isFinite && d != zgeo::UVec3d())) continue;
    const char* found = isFinite ? "none for " : "one that is not finite for ";
    findings.push_back({source.linked.lines[i], 0, found + nameOf(e)});
  }
  return findings;
}

// Most often a version-2 name such as W, or a version-1 line that forgot its number.
Findings axisPlaces(const Source& source) {
  Findings findings;
  for (std::size_t i = 0; i < source.linked.elements.size(); ++i) {
    const KMachineElem& e = source.linked.elements[i];
    if (!isAxis(e) || isMovingAxis(e)) continue;
    findings.push_back({source.linked.lines[i], 0, nameOf(e) + " without, which never moves"});
  }
  return findings;
}

Findings axisNumbersTwice(const Source& source) {
  Findings findings;
  std::unordered_map<int, int> lineOf;
  for (std::size_t i = 0; i < source.linked.elements.size(); ++i) {
    const int number = source.linked.elements[i].getElemIndex();
    if (!isMovingAxis(source.linked.elements[i])) continue;
    const auto [first, isNew] = lineOf.emplace(number, source.linked.lines[i]);
    if (isNew) continue;
    findings.push_back(
        {source.linked.lines[i], 0,
         std::to_string(number) + " again, after line " + std::to_string(first->second)});
  }
  return findings;
}

// Walks from every tool towards the root; a walk ends where one has passed, rings included.
std::vector<bool> onToolChains(const LinkedElements& linked) {
  const std::vector<int> previous = previousRanks(linked.elements);
  std::vector<bool> isOn(linked.elements.size());
  for (std::size_t i = 0; i < linked.elements.size(); ++i) {
    if (!linked.elements[i].isTool()) continue;
    for (int at = static_cast<int>(i); at >= 0 && !isOn[at]; at = previous[at]) isOn[at] = true;
  }
  return isOn;
}

Findings axesOffChains(const Source& source) {
  const std::vector<bool> isOn = onToolChains(source.linked);
  if (std::find(isOn.begin(), isOn.end(), true) == isOn.end()) return {};  // no tool at all
  Findings findings;
  for (std::size_t i = 0; i < isOn.size(); ++i) {
    const KMachineElem& e = source.linked.elements[i];
    if (isOn[i] || !isMovingAxis(e)) continue;
    findings.push_back({source.linked.lines[i], 0, nameOf(e) + " in none"});
  }
  return findings;
}

Findings axisCount(const Source& source) {
  std::set<int> numbers;
  for (const KMachineElem& e : source.linked.elements) {
    if (KMachineElem::_isIndexAxis(e.getElemIndex())) numbers.insert(e.getElemIndex());
  }
  if (!numbers.empty() && numbers.size() <= kMaxAxes) return {};
  return {{0, 0, std::to_string(numbers.size())}};
}

// --- the elements that every machine has

std::vector<int> linesOf(const LinkedElements& linked, KMachineElem::KME_TYPE type) {
  std::vector<int> lines;
  for (std::size_t i = 0; i < linked.elements.size(); ++i) {
    if (linked.elements[i].getElemType() == type) lines.push_back(linked.lines[i]);
  }
  return lines;
}

Findings exactlyOne(const LinkedElements& linked, KMachineElem::KME_TYPE type) {
  const std::vector<int> lines = linesOf(linked, type);
  if (lines.size() == 1) return {};
  if (lines.empty()) return {{0, 0, "none"}};
  return {{lines[1], 0, "another one, after line " + std::to_string(lines[0])}};
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
  return {{0, 0, guns ? "drill guns only" : "none"}};
}

constexpr Rule kRules[] = {
    // The library never ends on these two.
    {"rotation-point-number", Severity::error,
     "expected a number in each of the first 12 operands of a rotation point",
     rotationPointNumbers},
    {"element-cycle", Severity::error, "expected chains of elements that end", elementCycles},
    // The library would fill the memory, or answer nothing.
    {"axis-number", Severity::error, "expected axis numbers up to 10000", axisNumbers},
    {"axis-count", Severity::error, "expected 1 to 12 numbered axes", axisCount},
    {"one-frame", Severity::error, "expected one frame line", oneFrame},
    {"one-part", Severity::error, "expected one part line", onePart},
    {"some-tool", Severity::error, "expected at least one tool line", someTool},
    // The file loads, but hardly as it was meant.
    {"axis-direction", Severity::warning, "expected a direction for every axis", axisDirections},
    {"axis-place", Severity::warning,
     "expected an axis number from 1 up (in version 2 a name X, Y, Z, A, B or C)", axisPlaces},
    {"axis-number-twice", Severity::warning, "expected each axis number once", axisNumbersTwice},
    {"axis-off-chain", Severity::warning, "expected every axis between the part and a tool",
     axesOffChains},
};

}  // namespace

std::span<const Rule> rules() { return kRules; }

}  // namespace korvo::checking
