#include "tests/adapter/Comparison.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace korvo::test {

using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValueBase;

namespace {

constexpr double kLength = 73.5;  // of the tool, mm
constexpr double kSameSolution = 1e-3;
constexpr double kNearLimit = 1e-4;

using Rows = std::vector<std::vector<double>>;

/// Positions of the definition's model as rows of numbers; released.
Rows takeRows(const KMachine& machine, std::vector<KMachineValueBase*>& list) {
  Rows rows;
  for (const KMachineValueBase* v : list) rows.push_back(machine.axisValues(*v));
  KMachineValueBase::_release(list);
  return rows;
}

bool isSame(const std::vector<double>& a, const std::vector<double>& b,
            const std::vector<Register>& registers) {
  return std::all_of(registers.begin(), registers.end(), [&](const Register& r) {
    return std::abs(a[r.value] - b[r.value]) < kSameSolution;
  });
}

int countWithout(const Rows& rows, const Rows& others, const std::vector<Register>& registers) {
  return static_cast<int>(std::count_if(rows.begin(), rows.end(), [&](const auto& row) {
    return std::none_of(others.begin(), others.end(),
                        [&](const auto& other) { return isSame(row, other, registers); });
  }));
}

}  // namespace

BothModels::BothModels(std::unique_ptr<KMachine> definition, zkin::Bodies bodies)
    : definition_(std::move(definition)) {
  definition_->setTHELength(kLength, 1);
  adapter_ = std::make_unique<Adapter>(*zkin::machineFromDefinition(*definition_, bodies));
  adapter_->setTHELength(kLength);
}

bool BothModels::areRotaryLimited() const {
  const auto& registers = adapter_->rotations();
  return std::all_of(registers.begin(), registers.end(), [this](const Register& r) {
    const auto& axis = *adapter_->machine()->GetKinematic().GetEntity(r);
    return axis.GetCheckRangeAxis() && std::isfinite(axis.GetRangeMin()) &&
           std::isfinite(axis.GetRangeMax());
  });
}

bool BothModels::areRotaryParallel() const {
  const auto& k = adapter_->machine()->GetKinematic();
  const Vector3D a = k.GetEntity(adapter_->rotations()[0])->GetDirection();
  const Vector3D b = k.GetEntity(adapter_->rotations()[1])->GetDirection();
  const Vector3D cross = a ^ b;
  return cross * cross < 1e-24 * (a * a) * (b * b);
}

bool BothModels::areLinearDependent() const {
  const auto& k = adapter_->machine()->GetKinematic();
  const auto direction = [&](int i) {
    return k.GetEntity(adapter_->translations()[i])->GetDirection();
  };
  return std::abs(direction(0) * (direction(1) ^ direction(2))) < 1e-9;
}

bool BothModels::areLastThreeDependent() const {
  std::vector<UVec3d> directions;
  for (const KMachineElem* e : definition_->getChain(KMachineElem::_getToolIndex(1))) {
    if (e->getElemType() == KMachineElem::KMET_TYPE_ALIN) directions.push_back(e->getElemAxis());
  }
  return std::abs(directions.at(0) * (directions.at(1) ^ directions.at(2))) < 1e-9;
}

std::vector<double> BothModels::anyPosition(Dice& dice) const {
  const auto& k = adapter_->machine()->GetKinematic();
  std::vector<double> values;
  for (int i = 0; i < definition_->getAxisNum(); ++i) {
    const auto* const axis = k.GetEntity(Register(i));
    const double reach = axis && axis->GetEntityLink().kind == Ombra::Kin::Rotary ? 360 : 1000;
    double low = -reach, high = reach;
    if (axis && axis->GetCheckRangeAxis()) {
      low = std::max(low, axis->GetRangeMin());
      high = std::min(high, axis->GetRangeMax());
    }
    values.push_back(low < high ? dice.between(low, high) : low);
  }
  return values;
}

BothModels::Target BothModels::anyTarget(Dice& dice) const {
  const Position p = positionOf(*definition_, anyPosition(dice));
  Target target;
  definition_->getTool(*p, target.tip, target.dir, 1);
  target.tip -= target.dir * kLength;
  return target;
}

// --- forward

void BothModels::compareForward(Dice& dice, int count, Comparison& result) const {
  for (int i = 0; i < count; ++i) {
    const std::vector<double> values = anyPosition(dice);
    const Position p = positionOf(*definition_, values);
    const MachinePosition q = adapter_->axisValues(values);
    UVec3d pos, dir, posN, dirN;
    definition_->getTool(*p, pos, dir, 1);
    adapter_->getTool(q, posN, dirN);
    const UVec3d tip = definition_->getMatrix_TP2U(*p).getOrigin();
    const UVec3d tipN = adapter_->getMatrix_TP2U(q).getOrigin();
    for (const double d : {difference(pos, posN), difference(dir, dirN), difference(tip, tipN)}) {
      if (!(d <= result.largest)) result.largest = d;
    }
  }
  result.positions += count;
}

// --- lists

Rows BothModels::clearOfLimits(const Rows& rows, const std::vector<Register>& registers) const {
  const auto& k = adapter_->machine()->GetKinematic();
  Rows kept;
  for (const auto& row : rows) {
    const bool isClear = std::all_of(registers.begin(), registers.end(), [&](const Register& r) {
      const auto& axis = *k.GetEntity(r);
      return !axis.GetCheckRangeAxis() ||
             (std::abs(row[r.value] - axis.GetRangeMin()) > kNearLimit &&
              std::abs(row[r.value] - axis.GetRangeMax()) > kNearLimit);
    });
    if (isClear) kept.push_back(row);
  }
  return kept;
}

void BothModels::compareRows(Rows ours, Rows theirs, const std::vector<Register>& registers,
                             Comparison& result) const {
  ours = clearOfLimits(ours, registers);
  theirs = clearOfLimits(theirs, registers);
  result.solutions += static_cast<int>(ours.size());
  result.missing += countWithout(ours, theirs, registers);
  result.more += countWithout(theirs, ours, registers);
}

void BothModels::compareAngles(Dice& dice, int count, Comparison& result) const {
  for (int i = 0; i < count; ++i) {
    const Target target = anyTarget(dice);
    std::vector<KMachineValueBase*> ours;
    Positions theirs;
    definition_->getPossibleAngles(target.dir, ours, 1);
    adapter_->getPossibleAngles(target.dir, theirs.list);
    compareRows(takeRows(*definition_, ours), theirs.values(), adapter_->rotations(), result);
  }
}

void BothModels::compareConfigs(Dice& dice, int count, Comparison& result) const {
  std::vector<Register> all = adapter_->rotations();
  all.insert(all.end(), adapter_->translations().begin(), adapter_->translations().end());
  for (int i = 0; i < count; ++i) {
    const Target target = anyTarget(dice);
    std::vector<KMachineValueBase*> ours;
    Positions theirs;
    definition_->getPossibleConfigs(target.dir, target.tip, ours, 1);
    adapter_->getPossibleConfigs(target.dir, target.tip, theirs.list);
    compareRows(takeRows(*definition_, ours), theirs.values(), all, result);
  }
}

// --- the nearest one

bool BothModels::isOn(const Target& target, const std::vector<double>& values) const {
  const Position p = positionOf(*definition_, values);
  double largest = 1000;
  for (const double v : values) largest = std::max(largest, std::abs(v));
  UVec3d pos, dir;
  definition_->getTool(*p, pos, dir, 1);
  return difference(pos - dir * kLength, target.tip) < 1e-12 * largest + 1e-7 &&
         difference(dir, target.dir) < 1e-8;
}

void BothModels::compareNearest(Dice& dice, int count, Comparison& result) const {
  for (int i = 0; i < count; ++i) {
    const Target target = anyTarget(dice);
    const std::vector<double> start = anyPosition(dice);
    const Position from = positionOf(*definition_, start), found = positionOf(*definition_);
    if (definition_->getConfigPlus(*from, target.tip, target.dir, *found) == 0) {
      ++result.solved;
      result.missed += !isOn(target, definition_->axisValues(*found));
    }
    MachinePosition out;
    adapter_->getConfigPlus(adapter_->axisValues(start), target.tip, target.dir, out);
    if (out.Size() > 0) {
      ++result.solvedToo;
      result.missed += !isOn(target, adapter_->axisValues(out));
    }
  }
  result.targets += count;
}

// --- triangles

double BothModels::compareTriangles(Dice& dice, int count) const {
  double largest = 0.0;
  for (int i = 0; i < count; ++i) {
    const std::vector<double> values = anyPosition(dice);
    std::vector<zgeo::UTri> ours, theirs;
    definition_->getTrianglesU(*positionOf(*definition_, values), ours);
    adapter_->getTrianglesU(adapter_->axisValues(values), theirs);
    if (ours.empty() || ours.size() != theirs.size())
      return std::numeric_limits<double>::infinity();
    for (std::size_t t = 0; t < ours.size(); ++t) {
      for (int k = 0; k < 3; ++k) {
        const double d = difference(ours[t].p[k], theirs[t].p[k]);
        if (!(d <= largest)) largest = d;
      }
    }
  }
  return largest;
}

// --- variants and the report

void limitRotaryAxes(KMachine& machine, unsigned seed) {
  constexpr double limits[][2] = {{-180, 180}, {-360, 360}, {-120, 30}, {-100, 250},
                                  {0, 360},    {-30, 110},  {-200, 200}};
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    KMachineElem& e = *machine.getElemByRank(rank);
    if (e.getElemType() != KMachineElem::KMET_TYPE_AROT) continue;
    e.setMin(limits[seed % 7][0], true);
    e.setMax(limits[seed % 7][1], true);
    seed = seed / 7 + 3;
  }
}

const char* const kTableHead =
    "| machine | linear + rotary | positions | largest difference | targets | solutions | missing |"
    " more | off target | |\n|---|---|---|---|---|---|---|---|---|---|\n";

std::string toRow(const Comparison& c) {
  char text[300];
  std::snprintf(text, sizeof text, "| %s | %d + %d | %d | %.1e | %d | %d | %d | %d | %d | %s |\n",
                c.name.c_str(), c.linear, c.rotary, c.positions, c.largest, c.targets, c.solutions,
                c.missing, c.more, c.missed, c.note.c_str());
  return text;
}

}  // namespace korvo::test
