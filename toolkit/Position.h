#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kinematics/KMachine.h"
#include "kinematics/KMachineValue.h"
#include "toolkit/Export.h"

namespace korvo {

/// Names of a machine's axes in value order.
class KORVO_TOOLKIT_API AxisNames {
 public:
  explicit AxisNames(const zkin::KMachine& machine);

  int size() const { return static_cast<int>(names_.size()); }
  const std::string& operator[](int i) const { return names_[static_cast<std::size_t>(i)]; }
  const std::vector<std::string>& all() const { return names_; }

  /// Place of the axis of that name (UTF-8) in a position, or -1. Case does not matter; in a
  /// version-2 machine "AXE_X" names "X". Of two axes of one name the first is meant.
  int find(std::string_view name) const;

 private:
  std::vector<std::string> names_;
  std::vector<std::wstring> keys_;
  int version_ = 0;
};

/// A machine position that releases itself: one value per axis, mm or degrees, in value order.
///
/// It stands wherever the library takes a `KMachineValueBase`. A moved-from position may only be
/// assigned or destroyed.
class KORVO_TOOLKIT_API Position {
 public:
  /// All zero, of the machine's dimension. Throws std::length_error when the machine has no axis or
  /// more than twelve: it has no positions.
  explicit Position(const zkin::KMachine& machine);
  /// The same with names that were made before.
  Position(const zkin::KMachine& machine, std::shared_ptr<const AxisNames> names);

  Position(const Position& o);
  Position(Position&&) noexcept = default;
  Position& operator=(const Position& o);
  Position& operator=(Position&&) noexcept = default;
  ~Position() = default;

  int size() const { return value_->size(); }
  const AxisNames& names() const { return *names_; }

  /// The value at place `i`, clamped to the dimension as the library does.
  double& operator[](int i) { return (*value_)[i]; }
  double operator[](int i) const { return std::as_const(*value_)[i]; }

  /// The value of the axis of that name. Throws std::out_of_range for an unknown name.
  double& operator[](std::string_view axis) { return (*value_)[placeOf(axis)]; }
  double operator[](std::string_view axis) const { return std::as_const(*value_)[placeOf(axis)]; }
  double& operator[](const char* axis) { return (*this)[std::string_view(axis)]; }
  double operator[](const char* axis) const { return (*this)[std::string_view(axis)]; }

  zkin::KMachineValueBase& operator*() { return *value_; }
  const zkin::KMachineValueBase& operator*() const { return *value_; }
  operator zkin::KMachineValueBase&() { return *value_; }              // NOLINT: meant implicit
  operator const zkin::KMachineValueBase&() const { return *value_; }  // NOLINT: meant implicit

  /// Equal as the library compares: same dimension, every value closer than 1e-5.
  friend bool operator==(const Position& a, const Position& b) {
    return *a.value_ == std::as_const(*b.value_);
  }

 private:
  struct Release {
    void operator()(zkin::KMachineValueBase* p) const { zkin::KMachineValueBase::_release(p); }
  };

  int placeOf(std::string_view axis) const;

  std::unique_ptr<zkin::KMachineValueBase, Release> value_;
  std::shared_ptr<const AxisNames> names_;
};

/// A list of positions that releases them: hand `raw()` to the operations that append to a list.
class KORVO_TOOLKIT_API PositionList {
 public:
  PositionList() = default;
  PositionList(PositionList&& o) noexcept : list_(std::move(o.list_)) { o.list_.clear(); }
  PositionList& operator=(PositionList&& o) noexcept {
    list_.swap(o.list_);
    return *this;
  }
  PositionList(const PositionList&) = delete;
  PositionList& operator=(const PositionList&) = delete;
  ~PositionList() { clear(); }

  std::vector<zkin::KMachineValueBase*>& raw() { return list_; }

  std::size_t size() const { return list_.size(); }
  bool empty() const { return list_.empty(); }
  void clear() { zkin::KMachineValueBase::_release(list_); }

  /// The position at `i`, which must be below `size()`.
  const zkin::KMachineValueBase& operator[](std::size_t i) const { return *list_[i]; }

  auto begin() const { return list_.begin(); }  ///< Over pointers to the positions.
  auto end() const { return list_.end(); }

 private:
  std::vector<zkin::KMachineValueBase*> list_;
};

}  // namespace korvo
