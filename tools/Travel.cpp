#include "tools/Travel.h"

#include <limits>

namespace korvo::tools {

Travel::Travel(const Machine& machine) : names_(machine.axisNames().all()) {
  constexpr double kEndless = std::numeric_limits<double>::infinity();
  for (int r = 0; r < machine->getElemNumber(); ++r) {
    const zkin::KMachineElem& e = *machine->getElemByRank(r);
    if (e.getValueIndex() < 0 || (!e.hasMin() && !e.hasMax())) continue;
    limits_.push_back({e.getValueIndex(), e.hasMin() ? e.getMin() : -kEndless,
                       e.hasMax() ? e.getMax() : kEndless});
  }
}

unsigned Travel::outside(const double* values) const {
  unsigned bits = 0;
  for (const Limit& limit : limits_) {
    const double value = values[limit.place];
    if (value < limit.min || value > limit.max) bits |= 1u << limit.place;
  }
  return bits;
}

std::vector<std::string> Travel::namesOf(unsigned outside) const {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < names_.size(); ++i) {
    if (outside & (1u << i)) names.push_back(names_[i]);
  }
  return names;
}

std::vector<std::string> outsideLimits(const Machine& machine, const Position& position) {
  const Travel travel(machine);
  double values[12] = {};
  for (int i = 0; i < position.size(); ++i) values[i] = position[i];
  return travel.namesOf(travel.outside(values));
}

}  // namespace korvo::tools
