#pragma once

#include <vector>

/// A growing array with `int` indices from 0, the currency of this library's interface.
///
/// @errors  An index outside 0 .. GetCount() - 1 is undefined, as for std::vector. Growing may
/// throw
///          std::bad_alloc in the caller; the library's own operations never let it out.
/// @owner   Holds values; an array of pointers does not own what they point at.
template <class T>
class CStd_Array1 {
 public:
  CStd_Array1() = default;

  /// `count` value-initialised items; none when count is negative.
  explicit CStd_Array1(int count) { SetCount(count); }

  /// A copy of `count` items; none when count is negative.
  CStd_Array1(const T* items, int count) : items_(items, items + (count > 0 ? count : 0)) {}

  int GetCount() const { return static_cast<int>(items_.size()); }
  void SetCount(int count) { items_.resize(static_cast<std::size_t>(count > 0 ? count : 0)); }
  void Add(const T& item) { items_.push_back(item); }
  void RemoveAll() { items_.clear(); }

  T& operator[](int i) { return items_[static_cast<std::size_t>(i)]; }
  const T& operator[](int i) const { return items_[static_cast<std::size_t>(i)]; }

  const T* begin() const { return items_.data(); }
  const T* end() const { return items_.data() + items_.size(); }

 private:
  std::vector<T> items_;
};
