#include "kinematics/KMachineValue.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "kinematics/tolerances.h"
#include "platform/zgeo/UTools.h"

using zgeo::UTools;

namespace zkin {

// --- KMachineValueBase

// Deliberate: does nothing; only positions of a dimension have values to copy.
KMachineValueBase& KMachineValueBase::operator=(const KMachineValueBase&) { return *this; }

// Deliberate: `copy` gives no object, so the result is not usable; the interface stays as it is.
KMachineValueBase* KMachineValueBase::operator+(const KMachineValueBase& v) const {
  KMachineValueBase* sum = copy();
  *sum += v;
  return sum;
}

KMachineValueBase* KMachineValueBase::operator-(const KMachineValueBase& v) const {
  KMachineValueBase* difference = copy();
  *difference -= v;
  return difference;
}

// Deliberate: written on the virtual operations alone, for any class of position: the size is asked
// for after every value, and a shorter `v` repeats its last one because access is clamped.
void KMachineValueBase::operator+=(const KMachineValueBase& v) {
  for (int i = 0; i < size(); ++i) {
    const double added = v[i];
    (*this)[i] += added;
  }
}

// Deliberate: as `+=`.
void KMachineValueBase::operator-=(const KMachineValueBase& v) {
  for (int i = 0; i < size(); ++i) {
    const double taken = v[i];
    (*this)[i] -= taken;
  }
}

void KMachineValueBase::_release(KMachineValueBase*& p) {
  // The destructor is not virtual on purpose; the destroying delete below makes this defined.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdelete-non-virtual-dtor"
#if defined(__clang__)
#pragma GCC diagnostic ignored "-Wdelete-abstract-non-virtual-dtor"
#endif
  delete p;
#pragma GCC diagnostic pop
  p = nullptr;
}

void KMachineValueBase::_release(std::vector<KMachineValueBase*>& v) {
  for (KMachineValueBase*& p : v) _release(p);
  v.clear();
}

void KMachineValueBase::operator delete(KMachineValueBase* p, std::destroying_delete_t) {
  ::operator delete(static_cast<void*>(p));
}

namespace {

template <int N>
KMachineValueBase* newValue() {
  return new (std::nothrow) KMachineValue<N>();
}

template <int... N>
KMachineValueBase* newValueOf(int dim, std::integer_sequence<int, N...>) {
  KMachineValueBase* (*const makers[])() = {newValue<N + 1>...};
  return makers[dim - 1]();
}

}  // namespace

KMachineValueBase* KMachineValueBase::_newMachineValue(int dim) {
  if (dim >= 1 && dim <= kMaxAxes) {
    return newValueOf(dim, std::make_integer_sequence<int, kMaxAxes>());
  }
  UTools::_trace(L"zkin::KMachineValueBase::_newMachineValue, unhandled dimension<%d>", dim);
  // Narrow on purpose: a wide write would change the orientation of the host's stream for good.
  std::fprintf(stderr, "zkin::KMachineValueBase::_newMachineValue, unhandled dimension<%d>\n", dim);
  return nullptr;
}

// --- KMachineValue<N>: what does not depend on N is written once

namespace {

// Deliberate: gives a block of one word that is no object; see the header.
KMachineValueBase* copyOfNothing() {
  void* block = ::operator new(sizeof(void*), std::nothrow);
  if (block) *static_cast<void**>(block) = nullptr;
  return static_cast<KMachineValueBase*>(block);
}

void dumpValues(const double* values, int n, const wchar_t* name, bool keepLine) {
  if (!UTools::_isTracing()) return keepLine ? void() : UTools::_traceTF();
  UTools::_traceTS(L"KMV<%d> (%s) [ ", n, name);
  for (int i = 0; i < n; ++i) {
    if (i > 0) UTools::_traceTS(L" | ");
    UTools::_traceTS(L"%+10.3lf", values[i]);
  }
  UTools::_traceTS(L" ]");
  if (!keepLine) UTools::_traceTF();
}

bool equalValues(const double* values, int n, const KMachineValueBase& v) {
  for (int i = 0; i < n; ++i) {
    if (!(std::abs(values[i] - v[i]) < kValueEqual)) return false;  // NaN is unequal
  }
  return true;
}

}  // namespace

template <int N>
KMachineValue<N>& KMachineValue<N>::operator=(const KMachineValue& o) {
  if (this != &o) std::copy_n(o.values_, N, values_);
  return *this;
}

template <int N>
int KMachineValue<N>::size() const {
  return N;
}

template <int N>
void KMachineValue<N>::reset() {
  std::fill_n(values_, N, 0.0);
}

template <int N>
KMachineValueBase* KMachineValue<N>::copy() const {
  return copyOfNothing();
}

template <int N>
void KMachineValue<N>::set(const KMachineValueBase& v) {
  static_cast<KMachineValueBase&>(*this) = v;  // the virtual one, also for the same dimension
}

template <int N>
void KMachineValue<N>::set(const double* const p) {
  std::copy_n(p, N, values_);
}

template <int N>
void KMachineValue<N>::get(KMachineValueBase& v) const {
  v = *this;
}

template <int N>
void KMachineValue<N>::get(double* const p) const {
  std::copy_n(values_, N, p);
}

template <int N>
double* const KMachineValue<N>::get() {
  return values_;
}

template <int N>
const double* const KMachineValue<N>::get() const {
  return values_;
}

template <int N>
double& KMachineValue<N>::operator[](int i) {
  return values_[std::clamp(i, 0, N - 1)];
}

template <int N>
const double& KMachineValue<N>::operator[](int i) const {
  return values_[std::clamp(i, 0, N - 1)];
}

template <int N>
KMachineValueBase& KMachineValue<N>::operator=(const KMachineValueBase& v) {
  const double* from = v.get();
  if (from != values_) std::copy_n(from, std::min(N, v.size()), values_);
  return *this;
}

template <int N>
bool KMachineValue<N>::operator==(const KMachineValueBase& v) {
  return v.size() == N && equalValues(values_, N, v);
}

template <int N>
bool KMachineValue<N>::operator!=(const KMachineValueBase& v) {
  return !static_cast<KMachineValueBase&>(*this).operator==(v);
}

template <int N>
void KMachineValue<N>::dump(const wchar_t* const name, bool keepLine) const {
  dumpValues(values_, N, name, keepLine);
}

template class KMachineValue<1>;
template class KMachineValue<2>;
template class KMachineValue<3>;
template class KMachineValue<4>;
template class KMachineValue<5>;
template class KMachineValue<6>;
template class KMachineValue<7>;
template class KMachineValue<8>;
template class KMachineValue<9>;
template class KMachineValue<10>;
template class KMachineValue<11>;
template class KMachineValue<12>;

}  // namespace zkin
