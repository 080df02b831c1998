#pragma once

#include <string>
#include <utility>

#include "platform/ombra/Export.h"
#include "platform/ombra/Kinematic.h"

namespace Ombra::Kin {

/// A machine: its kinematic and its name. Copies are deep.
class OMBRA_API Machine {
 public:
  explicit Machine(std::wstring name = L"") : name_(std::move(name)) {}
  Machine(const Machine&) = default;
  Machine& operator=(const Machine&) = default;
  virtual ~Machine();

  const std::wstring& GetMachineName() const { return name_; }
  void SetMachineName(const std::wstring& name) { name_ = name; }

  const Kinematic& GetKinematic() const { return kinematic_; }
  Kinematic& EditKinematic() { return kinematic_; }

  /// How many values a position has: what `MachinePosition::Alloc` takes.
  Register GetRegisterNb() const { return kinematic_.GetRegisterNb(); }

  /// The largest number of an entity; smaller ones may be gaps.
  int GetEntityNb() const { return static_cast<int>(kinematic_.GetListEntity().size()); }

 private:
  std::wstring name_;
  Kinematic kinematic_;
};

}  // namespace Ombra::Kin
