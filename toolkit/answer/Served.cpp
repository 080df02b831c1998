#include "toolkit/answer/Served.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <optional>
#include <set>

#include "toolkit/answer/ArmLayout.h"
#include "toolkit/answer/FreeAxes.h"
#include "toolkit/answer/Sentences.h"
#include "toolkit/answer/Words.h"
#include "toolkit/solve/Arm.h"

using zgeo::UVec3d;

namespace korvo {
namespace {

constexpr double kDependent = 1e-10;

using Joints = std::vector<const Joint*>;

Joints axesOf(const JointChain& chain, Joint::Motion motion) {
  Joints axes;
  for (const Joint& joint : chain.joints) {
    if (joint.place >= 0 && joint.motion == motion) axes.push_back(&joint);
  }
  return axes;
}

std::vector<int> placesOf(const Joints& axes) {
  std::vector<int> places;
  std::transform(axes.begin(), axes.end(), std::back_inserter(places),
                 [](const Joint* axis) { return axis->place; });
  return places;
}

// Whether a direction is none that the others can make up.
bool isNew(const Joints& carriers, const UVec3d& d) {
  const auto unit = [&](std::size_t i) { return carriers[i]->direction.normalised(); };
  const UVec3d u = d.normalised();
  switch (carriers.size()) {
    case 0:
      return u.norm2() > 0;
    case 1:
      return (unit(0) ^ u).norm() > kDependent;
    case 2:
      return std::abs((unit(0) ^ unit(1)) * u) > kDependent;
    default:
      return false;
  }
}

// Moves to `served.redundant` all of `axes` that stand as the options say.
void takeStanding(const Machine& machine, const SolverOptions& options, Joints& axes,
                  Served& served) {
  std::erase_if(axes, [&](const Joint* axis) {
    const auto place = static_cast<std::size_t>(axis->place);
    const bool isLocked = machine->getAxisElem(axis->place + 1)->isLocked();
    const bool isStanding = !isLocked && options.redundancy[place].rule != Redundancy::Rule::start;
    if (isStanding) served.redundant.push_back(axis->place);
    return isStanding;
  });
}

void takeLocked(Joints& axes, Served& served) {
  std::erase_if(axes, [&](const Joint* axis) {
    if (axis->isLocked) served.locked.push_back(axis->place);
    return axis->isLocked;
  });
}

// The first three that can carry, counted from the tool; in the order of the chain.
void takeCarriers(Joints slides, Served& served) {
  Joints carriers;
  std::reverse(slides.begin(), slides.end());
  for (const Joint* slide : slides) {
    const bool carries = isNew(carriers, slide->direction);
    if (carries) carriers.push_back(slide);
    (carries ? served.carrying : served.redundant).push_back(slide->place);
  }
  std::reverse(served.carrying.begin(), served.carrying.end());
}

// Of an arm the last three joints turn the tool and the three before them carry the wrist; all
// others are held.
void takeArm(const JointChain& chain, const Joints& turns, const Joints& slides, Served& served) {
  const ArmShape arm = *ArmShape::of(chain);
  std::set<int> taken;
  for (int k = 0; k < 6; ++k) {
    const Joint& joint = chain.joints[static_cast<std::size_t>(arm.joint(k))];
    if (!joint.isLocked) (k < 3 ? served.carrying : served.turning).push_back(joint.place);
    taken.insert(joint.place);
  }
  for (const Joints* axes : {&turns, &slides}) {
    for (const Joint* axis : *axes) {
      if (!taken.count(axis->place)) served.redundant.push_back(axis->place);
    }
  }
}

// --- why not

int coupledPlace(const JointChain& chain) {
  std::set<int> seen;
  for (const Joint& joint : chain.joints) {
    if (joint.place >= 0 && !seen.insert(joint.place).second) return joint.place;
  }
  return -1;
}

class Saying {
 public:
  Saying(const Machine& machine, Served& served) : machine_(machine), served_(served) {}

  Words whyNot(const JointChain& chain) const {
    const Joints turns = axesOf(chain, Joint::Motion::turn);
    switch (served_.unserved) {
      case Unserved::noTool:
        return filled(sentences::kNoTool, {});
      case Unserved::coupledAxes:
        served_.unsuited = {coupledPlace(chain)};
        return askLibrary(filled(sentences::kCoupled, {names(served_.unsuited)}));
      case Unserved::fewJoints: {
        const Joints slides = axesOf(chain, Joint::Motion::slide);
        return askLibrary(filled(sentences::kFewJoints, {static_cast<int>(slides.size()),
                                                         static_cast<int>(turns.size())}));
      }
      case Unserved::wristOnThird:
        return askLibrary(wristOnThird(turns));
      case Unserved::splitWrist:
        // The library's arm solver takes the wrist for whole, and misses.
        return filled(sentences::kNorLibrary, {splitWrist(chain, turns)});
      default:
        return askLibrary(noBallWrist(chain, turns));
    }
  }

  Words solvedSample() const { return filled(sentences::kSolvedSample, {names(served_.unsuited)}); }

  Words what() const {
    Words text = filled(textOf(served_.kind), {names(served_.turning), names(served_.carrying)});
    if (served_.turning.empty() && served_.carrying.empty()) text = filled(sentences::kStands, {});
    return join(join(text, sentences::kRedundant, served_.redundant), sentences::kStayLocked,
                served_.locked);
  }

 private:
  Words names(const std::vector<int>& places) const {
    std::vector<Words> list;
    list.reserve(places.size());
    for (const int place : places) list.emplace_back(machine_.axisNames()[place]);
    return allOf(list);
  }

  Words noBallWrist(const JointChain& chain, const Joints& turns) const {
    const Joints last(turns.end() - 3, turns.end());
    served_.unsuited = placesOf(last);
    const std::optional<double> apart = ArmShape::wristMiss(chain);
    served_.apartMm = apart.value_or(0.0);
    if (!apart) return filled(sentences::kNoWristPoint, {names(served_.unsuited)});
    return filled(sentences::kNoBallWrist, {names(served_.unsuited), millimetres(*apart)});
  }

  Words wristOnThird(const Joints& turns) const {
    served_.unsuited = {(*(turns.end() - 4))->place};
    return filled(sentences::kWristOnThird,
                  {names(served_.unsuited), names(placesOf({turns.end() - 3, turns.end()}))});
  }

  Words splitWrist(const JointChain& chain, const Joints& turns) const {
    const Joint* const first = *(turns.end() - 3);
    for (const Joint* slide : axesOf(chain, Joint::Motion::slide)) {
      if (slide > first && slide < turns.back()) served_.unsuited.push_back(slide->place);
    }
    return filled(sentences::kSplitWrist,
                  {names(served_.unsuited), names(placesOf({turns.end() - 3, turns.end()}))});
  }

  // The library's arm solver asks for more of an arm than the closed form.
  bool canLibrary() const {
    if (!isArmClass(*machine_)) return true;
    return !wristAxes(*machine_, machine_.position()).empty() &&
           ArmLayout(*machine_).brokenByMachine(Language::english).empty();
  }

  Words askLibrary(const Words& why) const {
    return filled(canLibrary() ? sentences::kAskLibrary : sentences::kNorLibrary, {why});
  }

  Text textOf(SolverKind kind) const {
    switch (kind) {
      case SolverKind::linear:
        return sentences::kServesLinear;
      case SolverKind::oneRotary:
        return served_.carrying.empty() ? sentences::kTurnsAlone : sentences::kServesOne;
      case SolverKind::arm:
        return sentences::kServesArm;
      case SolverKind::moreRotary:
        return sentences::kServesMore;
      default:
        return served_.carrying.empty() ? sentences::kTurnAlone : sentences::kServesTwo;
    }
  }

  Words join(const Words& text, const Text& more, const std::vector<int>& places) const {
    if (places.empty()) return text;
    const Words added = filled(more, {names(places)});
    return {text.english + "; " + added.english, text.french + " ; " + added.french};
  }

  const Machine& machine_;
  Served& served_;
};

}  // namespace

Served servedBy(const Machine& machine, const Solver& solver, const SolverOptions& options,
                Language language) {
  Served served;
  served.kind = solver.kind();
  served.unserved = solver.unserved();
  const Saying saying(machine, served);
  if (served.unserved == Unserved::solvedSample) {
    served.unsuited = solver.solvedSamples();
    served.text = saying.solvedSample().in(language);
    return served;
  }
  if (served.kind == SolverKind::none) {
    served.text = filled(sentences::kUnserved, {saying.whyNot(solver.chain())}, language);
    return served;
  }
  Joints turns = axesOf(solver.chain(), Joint::Motion::turn);
  Joints slides = axesOf(solver.chain(), Joint::Motion::slide);
  for (Joints* axes : {&turns, &slides}) {
    takeStanding(machine, options, *axes, served);
    takeLocked(*axes, served);
  }
  if (served.kind == SolverKind::arm) {
    takeArm(solver.chain(), turns, slides, served);
  } else {
    served.turning = placesOf(turns);
    takeCarriers(slides, served);
  }
  served.text = saying.what().in(language);
  return served;
}

}  // namespace korvo
