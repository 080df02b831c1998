#include "toolkit/Position.h"

#include <stdexcept>
#include <utility>

#include "platform/zgeo/UTools.h"
#include "toolkit/Text.h"

using zgeo::UTools;
using zkin::KMachineValue;
using zkin::KMachineValueBase;

namespace korvo {
namespace {

template <int... N>
KMachineValueBase* copyOf(const KMachineValueBase& v, std::integer_sequence<int, N...>) {
  using Maker = KMachineValueBase* (*)(const KMachineValueBase&);
  // The library's own copy() gives no position, by contract.
  const Maker makers[] = {[](const KMachineValueBase& from) -> KMachineValueBase* {
    return new KMachineValue<N + 1>(static_cast<const KMachineValue<N + 1>&>(from));
  }...};
  return makers[v.size() - 1](v);
}

KMachineValueBase* copyOf(const KMachineValueBase& v) {
  return copyOf(v, std::make_integer_sequence<int, 12>());
}

KMachineValueBase* newPosition(const zkin::KMachine& machine) {
  const int axes = machine.getAxisNum();
  if (axes < 1 || axes > 12) {  // asked here: the library would also write to standard error
    throw std::length_error("a machine of " + std::to_string(axes) + " axes has no positions");
  }
  KMachineValueBase* value = machine.newMachineValue();
  if (!value) throw std::bad_alloc();
  return value;
}

}  // namespace

AxisNames::AxisNames(const zkin::KMachine& machine) : version_(machine.getVersion()) {
  for (int k = 1; const zkin::KMachineElem* axis = machine.getAxisElem(k); ++k) {
    names_.push_back(shownText(axis->getElemName()));
    keys_.push_back(UTools::_up(toWide(names_.back())));
  }
}

int AxisNames::find(std::string_view name) const {
  std::wstring key = UTools::_up(toWide(std::string(name)));
  if (version_ == 2) key = UTools::_removeFrom(key, L"AXE_");
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    if (keys_[i] == key) return static_cast<int>(i);
  }
  return -1;
}

Position::Position(const zkin::KMachine& machine)
    : Position(machine, std::make_shared<const AxisNames>(machine)) {}

Position::Position(const zkin::KMachine& machine, std::shared_ptr<const AxisNames> names)
    : value_(newPosition(machine)), names_(std::move(names)) {}

Position::Position(const Position& o) : value_(copyOf(*o.value_)), names_(o.names_) {}

Position& Position::operator=(const Position& o) {
  if (this == &o) return *this;
  value_.reset(copyOf(*o.value_));  // not set(): the dimension comes along
  names_ = o.names_;
  return *this;
}

int Position::placeOf(std::string_view axis) const {
  const int place = names_->find(axis);
  if (place < 0) throw std::out_of_range("no axis '" + std::string(axis) + "'");
  return place;
}

}  // namespace korvo
