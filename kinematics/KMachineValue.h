#pragma once

#include <new>
#include <vector>

#include "kinematics/Export.h"

namespace zkin {

/// A machine position: one double per axis, mm for linear axes and degrees for rotary ones, in
/// value order. The dimension (1 to 12) is fixed at creation.
///
/// The order of the virtual operations is part of the binary interface; add none in between. Their
/// places in the virtual table are those of the Itanium C++ ABI, which follows the declarations;
/// compilers that group overloads (the Microsoft C++ ABI) order them otherwise, and nothing is
/// promised there.
/// Indices are clamped to the dimension, never rejected. Nothing here throws.
///
/// Deliberate: the destructor is not virtual. A position created by the library is released with
/// `_release`, which frees the storage and runs no destructor; a position holds nothing that would
/// need one.
class KORVO_KINEMATICS_API KMachineValueBase {
 public:
  KMachineValueBase() = default;
  KMachineValueBase(const KMachineValueBase&) = default;

  virtual int size() const = 0;  ///< Number of values, 1 to 12.
  virtual void reset() = 0;      ///< Sets all values to 0.
  /// Deliberate: does not copy. Returns a pointer-sized block that is no valid object, or null when
  /// the allocation fails. Take positions from `KMachine::newMachineValue` instead.
  virtual KMachineValueBase* copy() const = 0;
  virtual void set(const KMachineValueBase& v) = 0;  ///< Assigns `v`, see `operator=`.
  virtual void set(const double* const p) = 0;       ///< Copies size() doubles from `p`.
  virtual void get(KMachineValueBase& v) const = 0;  ///< Assigns this position to `v`.
  virtual void get(double* const p) const = 0;       ///< Copies size() doubles to `p`.
  virtual double* const get() = 0;                   ///< Address of the first value.
  virtual const double* const get() const = 0;       ///< Address of the first value.

  /// The value at `i`; below 0 the first, beyond the end the last.
  virtual double& operator[](int i) = 0;
  virtual const double& operator[](int i) const = 0;

  /// Copies the values that both dimensions have; the rest keep what they held.
  virtual KMachineValueBase& operator=(const KMachineValueBase& v);

  /// Same dimension and every value strictly closer than 1e-5. A NaN difference is unequal.
  /// Not const: write `*a == std::as_const(*b)`.
  virtual bool operator==(const KMachineValueBase& v) = 0;
  virtual bool operator!=(const KMachineValueBase& v) = 0;

  /// Deliberate: rest on `copy()`, so their results are not usable values. Use `+=` and `-=`.
  virtual KMachineValueBase* operator+(const KMachineValueBase& v) const;
  virtual KMachineValueBase* operator-(const KMachineValueBase& v) const;

  /// Adds (subtracts) `v[i]` for every i of this position; a shorter `v` repeats its last value.
  virtual void operator+=(const KMachineValueBase& v);
  virtual void operator-=(const KMachineValueBase& v);

  /// Traces "KMV<n> (name) [ v0 | v1 ... ]".
  /// @param keepLine  True leaves the trace line open for the next text.
  virtual void dump(const wchar_t* const name, bool keepLine) const = 0;

  /// Releases `p` (null allowed) and sets it to null. Only for positions that the library created.
  static void _release(KMachineValueBase*& p);

  /// Releases every non-null element and empties the vector; its capacity stays.
  static void _release(std::vector<KMachineValueBase*>& v);

  /// Frees the storage and runs no destructor: what deleting through this base means.
  static void operator delete(KMachineValueBase* p, std::destroying_delete_t);

 protected:
  /// A new position of `dim` zeros, owned by the caller.
  /// @errors  Outside 1 to 12: one trace line, the same on standard error, and null. Null, without
  ///          a message, when memory is out.
  static KMachineValueBase* _newMachineValue(int dim);

  friend class KMachine;
  friend class NMachine;
};

/// A machine position of N axes, 1 to 12.
template <int N>
class KORVO_KINEMATICS_API KMachineValue : public KMachineValueBase {
  static_assert(N >= 1 && N <= 12);

 public:
  KMachineValue() = default;
  KMachineValue(const KMachineValue& o) = default;
  KMachineValue& operator=(const KMachineValue& o);

  int size() const override;
  void reset() override;
  KMachineValueBase* copy() const override;
  void set(const KMachineValueBase& v) override;
  void set(const double* const p) override;
  void get(KMachineValueBase& v) const override;
  void get(double* const p) const override;
  double* const get() override;
  const double* const get() const override;
  double& operator[](int i) override;
  const double& operator[](int i) const override;
  KMachineValueBase& operator=(const KMachineValueBase& v) override;
  bool operator==(const KMachineValueBase& v) override;
  bool operator!=(const KMachineValueBase& v) override;
  void dump(const wchar_t* const name, bool keepLine) const override;
  virtual ~KMachineValue() = default;

  /// Ordinary deletion for what is created and deleted as a KMachineValue<N>.
  static void operator delete(void* p) { ::operator delete(p); }

 private:
  double values_[N] = {};
};

extern template class KMachineValue<1>;
extern template class KMachineValue<2>;
extern template class KMachineValue<3>;
extern template class KMachineValue<4>;
extern template class KMachineValue<5>;
extern template class KMachineValue<6>;
extern template class KMachineValue<7>;
extern template class KMachineValue<8>;
extern template class KMachineValue<9>;
extern template class KMachineValue<10>;
extern template class KMachineValue<11>;
extern template class KMachineValue<12>;

}  // namespace zkin
