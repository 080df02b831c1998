#include "toolkit/check/Chains.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

using zkin::KMachineElem;

namespace korvo::checking {

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

// Each element is walked over once.
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

bool hasRing(const LinkedElements& linked) {
  return linked.endlessPartLine || !rings(previousRanks(linked.elements)).empty();
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

// --- ways

namespace {

Way wayOver(const KMachineElem& previous, Way beyond) {
  beyond.part |= previous.getElemType() == KMachineElem::KMET_TYPE_PART;
  beyond.frame |= previous.getElemType() == KMachineElem::KMET_TYPE_BATI;
  beyond.tool |= previous.isTool();
  beyond.axis |= isMovingAxis(previous);
  return beyond;
}

}  // namespace

// Goes down from every element to one that is known, then back up.
std::vector<Way> waysToRoot(const LinkedElements& linked) {
  const std::vector<int> previous = previousRanks(linked.elements);
  std::vector<Way> ways(previous.size());
  std::vector<bool> isPassed(previous.size());
  std::vector<int> path;
  for (int start = 0; start < static_cast<int>(previous.size()); ++start) {
    for (int at = start; at >= 0 && !isPassed[at]; at = previous[at]) {
      isPassed[at] = true;
      path.push_back(at);
    }
    for (; !path.empty(); path.pop_back()) {
      const int at = path.back(), before = previous[at];
      if (before >= 0) ways[at] = wayOver(linked.elements[before], ways[before]);
    }
  }
  return ways;
}

// --- faults

namespace {

bool isCountRight(const LinkedElements& linked) {
  const bool hasTool = std::any_of(linked.elements.begin(), linked.elements.end(),
                                   [](const KMachineElem& e) { return e.isTool(); });
  return hasTool && linesOf(linked, KMachineElem::KMET_TYPE_BATI).size() == 1 &&
         linesOf(linked, KMachineElem::KMET_TYPE_PART).size() == 1;
}

bool areNumbersRight(const LinkedElements& linked) {
  std::unordered_set<int> numbers;
  return std::all_of(linked.elements.begin(), linked.elements.end(), [&](const KMachineElem& e) {
    return !isAxis(e) || (isMovingAxis(e) && numbers.insert(e.getElemIndex()).second);
  });
}

bool areLinksRight(const LinkedElements& linked) {
  return std::none_of(linked.references.begin(), linked.references.end(), [](const Reference& r) {
    return r.line->keyword == text::Keyword::link && r.element < 0;
  });
}

// Only a part's line turns elements around.
bool isPartOnTool(const LinkedElements& linked) {
  return std::any_of(linked.elements.begin(), linked.elements.end(),
                     [](const KMachineElem& e) { return e.isTool() && e.isInverted(); });
}

ChainFault faultOfWays(const LinkedElements& linked) {
  const std::vector<Way> ways = waysToRoot(linked);
  const Way& frame = ways[rankOf(linked, KMachineElem::KMET_TYPE_BATI)];
  bool arePartsMet = true, areFramesMet = true;
  for (std::size_t i = 0; i < ways.size(); ++i) {
    if (!linked.elements[i].isTool()) continue;
    arePartsMet = arePartsMet && ways[i].part;
    areFramesMet = areFramesMet && ways[i].frame;
  }
  if (!arePartsMet) return ChainFault::toolOffPart;
  if (!frame.part) return ChainFault::frameCutOff;
  // A frame that stands still against the part may be left out.
  return areFramesMet || !frame.axis ? ChainFault::none : ChainFault::toolOffFrame;
}

}  // namespace

ChainFault chainFaultOf(const LinkedElements& linked) {
  if (!isCountRight(linked)) return ChainFault::count;
  if (hasRing(linked)) return ChainFault::ring;
  if (!areNumbersRight(linked)) return ChainFault::number;
  if (!areLinksRight(linked)) return ChainFault::link;
  if (isPartOnTool(linked)) return ChainFault::partOnTool;
  return faultOfWays(linked);
}

// --- types

std::vector<int> linesOf(const LinkedElements& linked, KMachineElem::KME_TYPE type) {
  std::vector<int> lines;
  for (std::size_t i = 0; i < linked.elements.size(); ++i) {
    if (linked.elements[i].getElemType() == type) lines.push_back(linked.lines[i]);
  }
  return lines;
}

int rankOf(const LinkedElements& linked, KMachineElem::KME_TYPE type) {
  for (std::size_t i = 0; i < linked.elements.size(); ++i) {
    if (linked.elements[i].getElemType() == type) return static_cast<int>(i);
  }
  return -1;
}

}  // namespace korvo::checking
