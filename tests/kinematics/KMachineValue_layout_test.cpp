// The order of a position's virtual operations is part of the binary interface: hosts compiled
// against another build call them by their place. The places are read from running objects here.
// This is the Itanium layout (all but MSVC): an object starts with the address of its table.

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "kinematics/KMachineValue.h"
#include "tests/kinematics/Positions.h"
#include "tests/support/TraceCapture.h"

#if !defined(_MSC_VER)

using korvo::test::Access;
using zkin::KMachineValue;
using zkin::KMachineValueBase;

namespace {

/// Places in the table.
enum Slot {
  kSize,
  kReset,
  kCopy,
  kSet,
  kSetArray,
  kGet,
  kGetArray,
  kAddress,
  kConstAddress,
  kAccess,
  kConstAccess,
  kAssign,
  kEqual,
  kUnequal,
  kPlus,
  kMinus,
  kAdd,
  kSubtract,
  kDump,
  kDestructor,
};
static_assert(kDump == 18);

void* entry(const KMachineValueBase& object, Slot slot) {
  void** table = nullptr;
  std::memcpy(&table, static_cast<const void*>(&object), sizeof table);
  return table[slot];
}

/// Calls the function at a place with the object as its first argument, as compiled callers do.
template <class Result, class... Arguments>
#if defined(__clang__)
__attribute__((no_sanitize("function")))  // the raw call is the point
#endif
Result
call(const KMachineValueBase& object, Slot slot, Arguments... arguments) {
  using Function = Result (*)(const KMachineValueBase*, Arguments...);
  return reinterpret_cast<Function>(entry(object, slot))(&object, arguments...);
}

/// A position of `GetParam()` values 1, 2, 3 ... from the factory, and another one of all tens.
class KMachineValueSlots : public korvo::test::TracedTest, public testing::WithParamInterface<int> {
 protected:
  void SetUp() override {
    for (int i = 0; i < dim; ++i) v->get()[i] = i + 1, tens->get()[i] = 10;
  }
  void TearDown() override {
    KMachineValueBase::_release(v);
    KMachineValueBase::_release(tens);
  }
  std::vector<double> values(const KMachineValueBase* p) const {
    return {p->get(), p->get() + p->size()};
  }
  /// The values factor * (1, 2, 3 ...) + offset.
  std::vector<double> expected(double factor, double offset) const {
    std::vector<double> list;
    for (int i = 1; i <= dim; ++i) list.push_back(factor * i + offset);
    return list;
  }

  const int dim = GetParam();
  KMachineValueBase* v = Access::_newMachineValue(dim);
  KMachineValueBase* tens = Access::_newMachineValue(dim);
};

INSTANTIATE_TEST_SUITE_P(Dimension, KMachineValueSlots, testing::Range(1, 13),
                         [](const auto& row) { return "Of" + std::to_string(row.param); });

TEST_P(KMachineValueSlots, S0Size) { EXPECT_EQ(call<int>(*v, kSize), dim); }

TEST_P(KMachineValueSlots, S1Reset) {
  call<void>(*v, kReset);
  EXPECT_EQ(values(v), expected(0, 0));
}

TEST_P(KMachineValueSlots, S2Copy) {
  KMachineValueBase* block = call<KMachineValueBase*>(*v, kCopy);
  ASSERT_NE(block, nullptr);
  EXPECT_NE(block, v);
  ::operator delete(static_cast<void*>(block));
}

TEST_P(KMachineValueSlots, S3SetFromPosition) {
  call<void, const KMachineValueBase&>(*v, kSet, *tens);
  EXPECT_EQ(values(v), expected(0, 10));
}

TEST_P(KMachineValueSlots, S4SetFromArray) {
  const std::vector<double> array = expected(2, 1);
  call<void, const double*>(*v, kSetArray, array.data());
  EXPECT_EQ(values(v), array);
}

TEST_P(KMachineValueSlots, S5GetToPosition) {
  call<void, KMachineValueBase&>(*v, kGet, *tens);
  EXPECT_EQ(values(tens), expected(1, 0));
  EXPECT_EQ(values(v), expected(1, 0));
}

TEST_P(KMachineValueSlots, S6GetToArray) {
  std::vector<double> array = expected(0, 0);
  call<void, double*>(*v, kGetArray, array.data());
  EXPECT_EQ(array, expected(1, 0));
}

TEST_P(KMachineValueSlots, S7Address) { EXPECT_EQ(call<double*>(*v, kAddress), v->get()); }

TEST_P(KMachineValueSlots, S8ConstAddress) {
  EXPECT_EQ(call<const double*>(*v, kConstAddress), v->get());
}

TEST_P(KMachineValueSlots, S9Access) {
  double& last = call<double&>(*v, kAccess, 99);
  EXPECT_EQ(&last, v->get() + dim - 1);
}

TEST_P(KMachineValueSlots, S10ConstAccess) {
  const double& last = call<const double&>(*v, kConstAccess, 99);
  EXPECT_EQ(&last, v->get() + dim - 1);
}

TEST_P(KMachineValueSlots, S11Assign) {
  KMachineValueBase& result =
      call<KMachineValueBase&, const KMachineValueBase&>(*v, kAssign, *tens);
  EXPECT_EQ(&result, v);
  EXPECT_EQ(values(v), expected(0, 10));
}

TEST_P(KMachineValueSlots, S12Equal) {
  EXPECT_TRUE((call<bool, const KMachineValueBase&>(*v, kEqual, *v)));
  EXPECT_FALSE((call<bool, const KMachineValueBase&>(*v, kEqual, *tens)));
}

TEST_P(KMachineValueSlots, S13Unequal) {
  EXPECT_FALSE((call<bool, const KMachineValueBase&>(*v, kUnequal, *v)));
  EXPECT_TRUE((call<bool, const KMachineValueBase&>(*v, kUnequal, *tens)));
}

TEST_P(KMachineValueSlots, S16Add) {
  call<void, const KMachineValueBase&>(*v, kAdd, *tens);
  EXPECT_EQ(values(v), expected(1, 10));
}

TEST_P(KMachineValueSlots, S17Subtract) {
  call<void, const KMachineValueBase&>(*v, kSubtract, *tens);
  EXPECT_EQ(values(v), expected(1, -10));
}

TEST_P(KMachineValueSlots, S18Dump) {
  call<void, const wchar_t*, bool>(*v, kDump, L"slot", false);
  EXPECT_EQ(trace.lines().size(), 1u);
  EXPECT_EQ(trace.claimAll(L"KMV<" + std::to_wstring(dim) + L"> (slot) [ "), 1);
}

/// A position whose `copy` gives a position, so that the sums that rest on it can run.
class Copying : public KMachineValue<2> {
 public:
  KMachineValueBase* copy() const override { return new Copying(*this); }
};

TEST(KMachineValueSumSlots, S14PlusAndS15Minus) {
  Copying v, other;
  v[0] = 1, v[1] = 2, other[0] = 10, other[1] = 20;
  using Base = KMachineValueBase;
  Base* sum = call<Base*, const Base&>(v, kPlus, other);
  Base* difference = call<Base*, const Base&>(v, kMinus, other);
  EXPECT_EQ((*sum)[0], 11);
  EXPECT_EQ((*sum)[1], 22);
  EXPECT_EQ((*difference)[0], -9);
  EXPECT_EQ((*difference)[1], -18);
  Base::_release(sum);
  Base::_release(difference);
}

TEST_P(KMachineValueSlots, SumsAreThoseOfTheBase) {
  const Copying copying;
  for (const Slot slot : {kPlus, kMinus, kAdd, kSubtract}) {
    EXPECT_EQ(entry(*v, slot), entry(copying, slot)) << slot;
  }
}

/// Counts the destructors run.
class Counted : public KMachineValue<3> {
 public:
  ~Counted() override { ++destroyed; }
  static inline int destroyed = 0;
};

TEST(KMachineValueDestructorSlot, S19IsTheDestructor) {
  alignas(Counted) unsigned char storage[sizeof(Counted)];
  const auto* object = new (storage) Counted;
  Counted::destroyed = 0;
  call<void>(*object, kDestructor);
  EXPECT_EQ(Counted::destroyed, 1);
}

}  // namespace

#endif
