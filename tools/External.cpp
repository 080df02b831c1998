#include "tools/External.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "tools/Checked.h"
#include "tools/Failure.h"

using Ombra::Kin::HeadIndex;
using Ombra::Kin::MachinePosition;
using Ombra::Kin::Register;
using Ombra::Kin::TableIndex;
using zgeo::UMatrix;
using zgeo::UVec3d;

namespace korvo::tools {

namespace {

bool isInside(const Margin& m) { return m.toMin.value_or(0) >= 0 && m.toMax.value_or(0) >= 0; }

void sortByDistance(Answers& answers) {
  std::vector<std::pair<double, std::size_t>> order;  // equal distances stay in the list's order
  order.reserve(answers.positions.size());
  for (std::size_t i = 0; i < answers.positions.size(); ++i) {
    order.emplace_back(answers.distances[i], i);
  }
  std::sort(order.begin(), order.end());
  Answers sorted;
  for (const auto& [away, i] : order) {
    sorted.positions.push_back(std::move(answers.positions[i]));
    sorted.distances.push_back(away);
  }
  sorted.total = order.size();
  answers = std::move(sorted);
}

}  // namespace

External::External(const Session& session, zkin::Bodies bodies, Language language)
    : session_(session), language_(language), adapter_(nullptr, HeadIndex(), TableIndex()) {
  const zkin::KMachine& machine = *session.machine();
  const auto made = zkin::machineFromDefinition(machine, bodies);
  if (!made) {
    throw Failure(Exit::refused, session.file() +
                                     ": expected a machine that the external library "
                                     "can have, found none");
  }
  adapter_.set(made.get(), HeadIndex(session.tool() - 1), TableIndex());
  adapter_.setTHELength(machine.getTHELength(session.tool()));
  adapter_.setUNI2MAC(machine.getUNI2MAC());
  for (int i = 0; i < machine.getAxisNum(); ++i) {
    if (session.isLocked(i)) adapter_.lockAxis(i);
  }
}

MachinePosition External::toExternal(const Position& v) const {
  return adapter_.axisValues(session_.machine()->axisValues(*v));
}

// --- forward

ToolPoint External::toolPoint(const Position& v) const {
  ToolPoint at;
  adapter_.getTool(toExternal(v), at.nose, at.direction);
  adapter_.getMAC2UNI().apply(at.nose);
  adapter_.getMAC2UNI().applyDir(at.direction);
  at.tip = tipFrame(v).getOrigin();
  return at;
}

UMatrix External::toolFrame(const Position& v) const {
  return adapter_.getMatrix_H2T(toExternal(v));
}

UMatrix External::tipFrame(const Position& v) const {
  return adapter_.getMAC2UNI() * adapter_.getMatrix_TP2U(toExternal(v));
}

// --- bodies

std::vector<Body> External::bodies(const Position& v) const {
  return bodiesOf(*session_.machine(), adapter_, toExternal(v));
}

// --- inverse

bool External::isGood(const Answer& answer, const Position& from) const {
  for (int i = 0; i < from.size(); ++i) {
    if (session_.isLocked(i) && answer.position[i] != from[i]) return false;
  }
  return answer.residual.isReached() &&
         std::all_of(answer.margins.begin(), answer.margins.end(), isInside);
}

void External::addIfGood(const MachinePosition& p, const Target& target, const Position& from,
                         Answers& answers) const {
  Answer answer(from);
  for (int i = 0; i < from.size(); ++i) answer.position[i] = p[Register(i)];
  answer.status = Status::reached;
  answer.residual = residual(session_.machine(), answer.position, target);
  answer.margins = margins(session_.machine(), answer.position);
  answer.singularity = singularity(session_.machine(), answer.position);
  if (!isGood(answer, from)) return;
  answers.distances.push_back(distance(answer.position, from));
  answers.positions.push_back(std::move(answer));
  answers.total = answers.positions.size();
}

// The library does not say why.
Answer External::none(const Target& target, const Position& from) const {
  Answer answer(from);
  answer.residual = residual(session_.machine(), from, target);
  answer.margins = margins(session_.machine(), from);
  answer.reason = Reason::missed;
  answer.by = answer.residual.pointMm;
  answer.unit = Unit::mm;
  answer.text = in(language_,
                   "the external library finds none (it turns two rotary axes and slides three "
                   "linear ones, with all others at 0)",
                   "la bibliothèque externe n'en trouve pas (elle fait tourner deux axes rotatifs "
                   "et déplace trois axes linéaires, tous les autres restant à 0)");
  return answer;
}

Answers External::nearest(const Target& target, const Position& from) const {
  Answers one;
  MachinePosition found;
  adapter_.getConfigPlus(toExternal(from), target.tip, target.direction, found);
  if (found.Size() > 0) addIfGood(found, target, from, one);
  if (one.positions.empty()) one.none = none(target, from);
  return one;
}

Answers External::all(const Target& target, const Position& from, std::size_t most) const {
  std::vector<MachinePosition*> found;
  adapter_.getPossibleConfigs(target.direction, target.tip, found);
  Answers all;
  for (const MachinePosition* p : found) addIfGood(*p, target, from, all);
  zkin::NMachine::_release(found);
  sortByDistance(all);
  if (all.positions.empty()) all.none = none(target, from);
  const std::size_t shown = std::min(most, all.positions.size());
  all.positions.erase(all.positions.begin() + static_cast<std::ptrdiff_t>(shown),
                      all.positions.end());
  all.distances.resize(shown);
  return all;
}

}  // namespace korvo::tools
