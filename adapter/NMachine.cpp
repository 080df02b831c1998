// Construction, copies, accessors, locks.

#include "adapter/NMachine.h"

using Ombra::Kin::Entity;
using Ombra::Kin::HeadIndex;
using Ombra::Kin::Machine;
using Ombra::Kin::Register;
using Ombra::Kin::TableIndex;
using zgeo::UMatrix;

namespace zkin {

// Of an adapter that does not come to be nobody else could free the copy.
NMachine::NMachine(const Machine* const m, HeadIndex h, TableIndex t) {
  try {
    set(m, h, t);
  } catch (...) {
    delete machine_;
    throw;
  }
}

NMachine::NMachine(const NMachine& o) {
  try {
    set(o);
  } catch (...) {
    delete machine_;
    throw;
  }
}

// As reset(false): the copy stays.
NMachine::~NMachine() = default;

NMachine& NMachine::operator=(const NMachine& o) = default;

// --- copies

// The one place where machines are copied: what hosts never free is known to leak from here.
void NMachine::keepCopyOf(const Machine& m) { machine_ = new Machine(m); }

void NMachine::set(const Machine* const m, HeadIndex h, TableIndex t) {
  reset(false);
  if (!m) return;
  keepCopyOf(*m);
  head_ = h;
  table_ = t;
  axisAnalysis();
}

void NMachine::set(const NMachine& o) {
  reset(false);  // of `o` as well, when it is this adapter
  if (o.machine_) {
    keepCopyOf(*o.machine_);
    head_ = o.head_;
    table_ = o.table_;
    axisAnalysis();
  }
  if (&o != this) name_ = o.name_;
  theLength_ = o.theLength_;
  setUNI2MAC(o.uni2mac_);
}

void NMachine::reset(bool destroy) {
  if (destroy) delete machine_;
  machine_ = nullptr;
  name_ = L"<unnamed>";
}

int NMachine::axisAnalysis() {
  rotations_.clear();
  translations_.clear();
  const int count = registerNb().value;
  locked_.assign(count, false);
  for (int i = 0; i < count; ++i) {
    const Entity* const e = machine_->GetKinematic().GetEntity(Register(i));
    if (!e || e->GetEntityType() != Ombra::Kin::Axis) continue;
    const int kind = e->GetEntityLink().kind;
    if (kind == Ombra::Kin::Linear) translations_.emplace_back(i);
    if (kind == Ombra::Kin::Rotary) rotations_.emplace_back(i);
  }
  rotations_.shrink_to_fit();
  translations_.shrink_to_fit();
  if (translations_.size() < 3) return -3;
  return rotations_.size() < 2 ? -2 : 0;
}

// --- accessors

Register NMachine::registerNb() const { return machine_ ? machine_->GetRegisterNb() : Register(0); }

void NMachine::setUNI2MAC(const UMatrix& m) {
  uni2mac_ = m;
  mac2uni_ = m.inverse();
}

// --- locks

bool NMachine::isLocked(int i) const {
  const bool known = i >= 0 && i < std::ssize(locked_);
  return !known || locked_[i];
}

void NMachine::lockAxis(int i) {
  if (i >= 0 && i < std::ssize(locked_)) locked_[i] = true;
}

void NMachine::unlockAxis(int i) {
  if (i >= 0 && i < std::ssize(locked_)) locked_[i] = false;
}

}  // namespace zkin
