#include "kinematics/KMachineValue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cwchar>
#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/kinematics/Positions.h"
#include "tests/support/TraceCapture.h"

using zkin::KMachineValue;
using zkin::KMachineValueBase;

namespace {

/// What the last non-throwing allocation of this thread asked for, and whether to refuse them.
thread_local std::size_t lastNothrowSize = 0;
thread_local bool refuseNothrow = false;

}  // namespace

/// Replaced to see, and to refuse, the allocations that the library makes without throwing. Rests
/// on the ordinary operator, so it stays a match for every `operator delete`.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  lastNothrowSize = size;
  if (refuseNothrow) return nullptr;
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

namespace {

using korvo::test::Access;
using korvo::test::newPosition;
using korvo::test::Position;
using korvo::test::TracedTest;
using korvo::test::valueOf;
using korvo::test::valuesOf;
using testing::ElementsAre;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

bool equal(KMachineValueBase& a, const KMachineValueBase& b) { return a == b; }
bool unequal(KMachineValueBase& a, const KMachineValueBase& b) { return a != b; }

std::string dimensionName(const testing::TestParamInfo<int>& row) {
  return "Of" + std::to_string(row.param);
}

/// A position of one's own: two values, a `copy` that copies, and a record of the primitive calls.
class Recorder : public KMachineValueBase {
 public:
  explicit Recorder(double first = 0.0, double second = 0.0) : values_{first, second} {}

  int size() const override { return note("size"), 2; }
  void reset() override { values_ = {}; }
  KMachineValueBase* copy() const override { return new Recorder(values_[0], values_[1]); }
  void set(const KMachineValueBase&) override {}
  void set(const double* const p) override { values_ = {p[0], p[1]}; }
  void get(KMachineValueBase&) const override {}
  void get(double* const p) const override { p[0] = values_[0], p[1] = values_[1]; }
  double* const get() override { return note("get"), values_.data(); }
  const double* const get() const override { return note("const get"), values_.data(); }
  double& operator[](int i) override { return note("[" + std::to_string(i) + "]"), at(i); }
  const double& operator[](int i) const override {
    return note("const [" + std::to_string(i) + "]"), values_[i == 0 ? 0 : 1];
  }
  KMachineValueBase& operator=(const KMachineValueBase& v) override {
    assigned = &v;
    return *this;
  }
  bool operator==(const KMachineValueBase&) override { return false; }
  bool operator!=(const KMachineValueBase&) override { return true; }
  void dump(const wchar_t* const, bool) const override {}
  /// The do-nothing assignment of the base.
  KMachineValueBase& assignAsBase(const KMachineValueBase& v) {
    return KMachineValueBase::operator=(v);
  }

  std::vector<std::string>* calls = nullptr;
  const KMachineValueBase* assigned = nullptr;

 private:
  void note(const std::string& call) const {
    if (calls) calls->push_back(call);
  }
  double& at(int i) { return values_[i == 0 ? 0 : 1]; }

  std::array<double, 2> values_;
};

// --- the class and its layout

static_assert(std::is_abstract_v<KMachineValueBase>);
static_assert(!std::has_virtual_destructor_v<KMachineValueBase>);
static_assert(sizeof(KMachineValueBase) == sizeof(void*));  // no data of its own
static_assert(std::has_virtual_destructor_v<KMachineValue<1>>);
static_assert(std::has_virtual_destructor_v<KMachineValue<12>>);
static_assert(sizeof(KMachineValue<1>) == sizeof(void*) + 1 * sizeof(double));
static_assert(sizeof(KMachineValue<5>) == sizeof(void*) + 5 * sizeof(double));
static_assert(sizeof(KMachineValue<12>) == sizeof(void*) + 12 * sizeof(double));
static_assert(std::is_convertible_v<KMachineValue<3>*, KMachineValueBase*>);
static_assert(std::is_same_v<
              decltype(std::declval<KMachineValue<3>&>() = std::declval<const KMachineValue<3>&>()),
              KMachineValue<3>&>);

/// Only machines make positions: the factory is no public operation.
template <class T>
concept MakesPositions = requires { T::_newMachineValue(1); };
static_assert(!MakesPositions<KMachineValueBase>);
static_assert(!MakesPositions<KMachineValue<3>>);
static_assert(MakesPositions<korvo::test::Access>);  // which makes it public

class EveryDimension : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(KMachineValue, EveryDimension, testing::Range(1, 13), dimensionName);

TEST_P(EveryDimension, FactoryGivesZerosOfThatSize) {
  const Position position = newPosition(GetParam());
  ASSERT_NE(position, nullptr);
  EXPECT_EQ(position->size(), GetParam());
  EXPECT_EQ(valuesOf(*position), std::vector<double>(static_cast<std::size_t>(GetParam()), 0.0));
}

TEST_P(EveryDimension, ValuesLieRightBehindTheObjectHeader) {
  const Position position = newPosition(GetParam());
  const auto* object = reinterpret_cast<const char*>(position.get());
  EXPECT_EQ(reinterpret_cast<const char*>(position->get()), object + sizeof(void*));
  EXPECT_EQ(static_cast<const void*>(std::as_const(*position).get()),
            static_cast<const void*>(position->get()));
}

TEST_P(EveryDimension, FactoryGivesNullWithoutMessageWhenMemoryIsOut) {
  refuseNothrow = true;
  const Position position = newPosition(GetParam());
  refuseNothrow = false;
  EXPECT_EQ(position, nullptr);
}

TEST_P(EveryDimension, CopyGivesOnlyAPointerSizedBlockThatIsNoObject) {
  const Position position = newPosition(GetParam());
  KMachineValueBase* block = position->copy();
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(lastNothrowSize, sizeof(void*));
  EXPECT_NE(*reinterpret_cast<void**>(block), *reinterpret_cast<void**>(position.get()));
  ::operator delete(static_cast<void*>(block));
}

TEST_P(EveryDimension, BlockOfCopyIsReleasedAsPositionsAre) {
  const Position position = newPosition(GetParam());
  KMachineValueBase* block = position->copy();
  ASSERT_NE(block, nullptr);
  KMachineValueBase::_release(block);
  EXPECT_EQ(block, nullptr);
}

TEST_P(EveryDimension, CopyGivesNullWhenMemoryIsOut) {
  const Position position = newPosition(GetParam());
  refuseNothrow = true;
  KMachineValueBase* block = position->copy();
  refuseNothrow = false;
  EXPECT_EQ(block, nullptr);
}

TEST(KMachineValue, DefaultConstructorGivesZeros) {
  const KMachineValue<4> value;
  EXPECT_THAT(valuesOf(value), ElementsAre(0, 0, 0, 0));
}

TEST(KMachineValue, CopyConstructorAndAssignmentCopyAllValues) {
  const KMachineValue<3> value = valueOf({1, 2, 3});
  const KMachineValue<3> copied(value);
  KMachineValue<3> assigned;
  KMachineValue<3>& result = assigned = value;
  EXPECT_EQ(&result, &assigned);
  EXPECT_THAT(valuesOf(copied), ElementsAre(1, 2, 3));
  EXPECT_THAT(valuesOf(assigned), ElementsAre(1, 2, 3));
}

TEST(KMachineValue, ResetZeroesAllValues) {
  KMachineValue<3> value = valueOf({1, 2, 3});
  value.reset();
  EXPECT_THAT(valuesOf(value), ElementsAre(0, 0, 0));
}

TEST(KMachineValue, PlainArraysAreCopiedInAndOut) {
  const double in[] = {7, -8, 9};
  double out[] = {0, 0, 0, 42};
  KMachineValue<3> value;
  value.set(in);
  value.get(out);
  EXPECT_THAT(out, ElementsAre(7, -8, 9, 42));
}

TEST(KMachineValue, AddressOfTheValuesWritesThrough) {
  KMachineValue<2> value;
  value.get()[1] = 5;
  EXPECT_EQ(std::as_const(value)[1], 5);
}

// --- clamped access

struct ClampRow {
  const char* name;
  int index;
  double value;
};

class ClampedAccess : public testing::TestWithParam<ClampRow> {};
INSTANTIATE_TEST_SUITE_P(
    KMachineValue, ClampedAccess,
    testing::Values(ClampRow{"FarBelow", -5, 1}, ClampRow{"JustBelow", -1, 1},
                    ClampRow{"First", 0, 1}, ClampRow{"Middle", 1, 2}, ClampRow{"Last", 2, 3},
                    ClampRow{"JustBeyond", 3, 3}, ClampRow{"FarBeyond", 7, 3},
                    ClampRow{"LeastInt", std::numeric_limits<int>::min(), 1},
                    ClampRow{"GreatestInt", std::numeric_limits<int>::max(), 3}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(ClampedAccess, ReadsTheNearestValue) {
  KMachineValue<3> value = valueOf({1, 2, 3});
  EXPECT_EQ(value[GetParam().index], GetParam().value);
  EXPECT_EQ(std::as_const(value)[GetParam().index], GetParam().value);
}

TEST_P(ClampedAccess, WritesTheNearestValue) {
  KMachineValue<3> value = valueOf({1, 2, 3});
  value[GetParam().index] = 42;
  const double nearest = GetParam().value;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(value.get()[i], i + 1 == nearest ? 42 : i + 1);
}

// --- assignment over dimensions

TEST(KMachineValueAssignment, ShorterKeepsTheRest) {
  KMachineValue<4> value = valueOf({1, 2, 3, 4});
  KMachineValueBase& result = value = static_cast<const KMachineValueBase&>(valueOf({5, 6}));
  EXPECT_EQ(&result, &value);
  EXPECT_THAT(valuesOf(value), ElementsAre(5, 6, 3, 4));
}

TEST(KMachineValueAssignment, LongerIsCut) {
  KMachineValue<2> value = valueOf({9, 9});
  value = static_cast<const KMachineValueBase&>(valueOf({1, 2, 3, 4}));
  EXPECT_THAT(valuesOf(value), ElementsAre(1, 2));
}

TEST(KMachineValueAssignment, ToItselfChangesNothing) {
  KMachineValue<3> value = valueOf({1, 2, 3});
  value.set(static_cast<const KMachineValueBase&>(value));
  EXPECT_THAT(valuesOf(value), ElementsAre(1, 2, 3));
}

TEST(KMachineValueAssignment, SetTakesFromTheOtherAndGetGivesToIt) {
  KMachineValue<3> value = valueOf({1, 2, 3});
  KMachineValue<4> other = valueOf({6, 7, 8, 9});
  value.get(static_cast<KMachineValueBase&>(other));
  EXPECT_THAT(valuesOf(other), ElementsAre(1, 2, 3, 9));
  value.set(static_cast<const KMachineValueBase&>(valueOf({4, 5})));
  EXPECT_THAT(valuesOf(value), ElementsAre(4, 5, 3));
}

TEST(KMachineValueAssignment, GetUsesTheOthersVirtualAssignment) {
  Recorder other;
  const KMachineValue<3> value = valueOf({1, 2, 3});
  value.get(static_cast<KMachineValueBase&>(other));
  EXPECT_EQ(other.assigned, &value);
}

/// A position whose assignment and equality are overridden again.
class Overriding : public KMachineValue<2> {
 public:
  KMachineValueBase& operator=(const KMachineValueBase& v) override {
    assigned = &v;
    return *this;
  }
  bool operator==(const KMachineValueBase&) override { return answer; }

  const KMachineValueBase* assigned = nullptr;
  bool answer = false;
};

TEST(KMachineValueAssignment, SetUsesItsOwnVirtualAssignment) {
  Overriding value;
  const KMachineValue<2> other = valueOf({5, 6});
  value.set(static_cast<const KMachineValueBase&>(other));
  EXPECT_EQ(value.assigned, &other);
  EXPECT_THAT(valuesOf(value), ElementsAre(0, 0));
}

TEST(KMachineValueAssignment, OfTheBaseDoesNothing) {
  Recorder value(1, 2);
  KMachineValueBase& result = value.assignAsBase(valueOf({5, 6}));
  EXPECT_EQ(&result, &value);
  EXPECT_THAT(valuesOf(value), ElementsAre(1, 2));
}

std::vector<double> anyValues() {
  const auto length = static_cast<std::size_t>(*rc::gen::inRange(1, 13));
  std::vector<double> values(length);
  for (double& value : values) value = *rc::gen::inRange(-1000, 1000);
  return values;
}

RC_GTEST_PROP(KMachineValueAssignment, CopiesWhatBothDimensionsHave, ()) {
  const std::vector<double> to = anyValues();
  const std::vector<double> from = anyValues();
  const Position target = newPosition(to);
  *target = *newPosition(from);
  std::vector<double> expected = to;
  std::copy_n(from.begin(), std::min(from.size(), to.size()), expected.begin());
  RC_ASSERT(valuesOf(*target) == expected);
}

// --- equality

struct EqualityRow {
  const char* name;
  std::vector<double> left;
  std::vector<double> right;
  bool equal;
};

class KMachineValueEquality : public testing::TestWithParam<EqualityRow> {};
INSTANTIATE_TEST_SUITE_P(
    Positions, KMachineValueEquality,
    testing::Values(EqualityRow{"Same", {1, 2, 3}, {1, 2, 3}, true},
                    EqualityRow{"WithinTolerance", {1, 2, 3}, {1.000009, 2, 3}, true},
                    EqualityRow{"AtTolerance", {1, 2, 3}, {1.00001, 2, 3}, false},
                    EqualityRow{"ExactlyTolerance", {0}, {1e-5}, false},
                    EqualityRow{"ExactlyToleranceBelow", {0}, {-1e-5}, false},
                    EqualityRow{"JustBelowTolerance", {0}, {std::nextafter(1e-5, 0.0)}, true},
                    EqualityRow{"JustBelowToleranceBelow", {0}, {std::nextafter(-1e-5, 0.0)}, true},
                    EqualityRow{"FirstDiffers", {1, 2, 3}, {9, 2, 3}, false},
                    EqualityRow{"MiddleDiffers", {1, 2, 3}, {1, 9, 3}, false},
                    EqualityRow{"LastDiffers", {1, 2, 3}, {1, 2, 9}, false},
                    EqualityRow{"LongerOther", {1, 2, 3}, {1, 2, 3, 3}, false},
                    EqualityRow{"ShorterOther", {1, 2, 2}, {1, 2}, false},
                    EqualityRow{"ZerosOfOtherSize", {0, 0, 0}, {0, 0, 0, 0}, false},
                    EqualityRow{"NoNumberOnTheLeft", {kNaN}, {0}, false},
                    EqualityRow{"NoNumberOnTheRight", {0}, {kNaN}, false},
                    EqualityRow{"NoNumberOnBoth", {kNaN}, {kNaN}, false},
                    EqualityRow{"InfinityOnBoth", {kInf}, {kInf}, false},
                    EqualityRow{"FullTurnIsAnotherValue", {0}, {360}, false},
                    EqualityRow{"SignOfZero", {0.0}, {-0.0}, true}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(KMachineValueEquality, IsByToleranceAndDimension) {
  const Position left = newPosition(GetParam().left);
  const Position right = newPosition(GetParam().right);
  EXPECT_EQ(equal(*left, *right), GetParam().equal);
  EXPECT_EQ(unequal(*left, *right), !GetParam().equal);
  EXPECT_EQ(equal(*right, *left), GetParam().equal);
}

TEST(KMachineValueComparison, ReadsTheOtherThroughItsAccessUpToTheFirstDifference) {
  std::vector<std::string> calls;
  Recorder other(1, 2);
  other.calls = &calls;
  KMachineValue<2> first = valueOf({9, 2});
  EXPECT_FALSE(equal(first, other));
  EXPECT_THAT(calls, ElementsAre("size", "const [0]"));
  calls.clear();
  KMachineValue<2> same = valueOf({1, 2});
  EXPECT_TRUE(equal(same, other));
  EXPECT_THAT(calls, ElementsAre("size", "const [0]", "const [1]"));
}

TEST(KMachineValueComparison, ReadsNoValueOfAnotherDimension) {
  std::vector<std::string> calls;
  Recorder other;
  other.calls = &calls;
  KMachineValue<3> value;
  EXPECT_FALSE(equal(value, other));
  EXPECT_THAT(calls, ElementsAre("size"));
}

TEST(KMachineValueComparison, InequalityNegatesTheVirtualEquality) {
  Overriding value;
  value.answer = true;
  EXPECT_FALSE(unequal(value, KMachineValue<5>()));
  value.answer = false;
  EXPECT_TRUE(unequal(value, value));
}

// --- sums

TEST(KMachineValueSum, AddsAndSubtractsElementByElement) {
  KMachineValue<3> value = valueOf({1, 2, 3});
  value += valueOf({10, 20, 30});
  EXPECT_THAT(valuesOf(value), ElementsAre(11, 22, 33));
  value -= valueOf({1, 2, 3});
  EXPECT_THAT(valuesOf(value), ElementsAre(10, 20, 30));
}

TEST(KMachineValueSum, ShorterOperandRepeatsItsLastValue) {
  KMachineValue<4> sum = valueOf({1, 1, 1, 1});
  sum += valueOf({10, 20});
  EXPECT_THAT(valuesOf(sum), ElementsAre(11, 21, 21, 21));
  KMachineValue<4> difference = valueOf({1, 1, 1, 1});
  difference -= valueOf({10, 20});
  EXPECT_THAT(valuesOf(difference), ElementsAre(-9, -19, -19, -19));
}

TEST(KMachineValueSum, LongerOperandIsCut) {
  KMachineValue<2> value = valueOf({1, 2});
  value += valueOf({10, 20, 30});
  EXPECT_THAT(valuesOf(value), ElementsAre(11, 22));
  value -= valueOf({1, 1, 1, 1});
  EXPECT_THAT(valuesOf(value), ElementsAre(10, 21));
}

TEST(KMachineValueSum, OfItself) {
  KMachineValue<2> value = valueOf({1, 2});
  value += value;
  EXPECT_THAT(valuesOf(value), ElementsAre(2, 4));
  value -= value;
  EXPECT_THAT(valuesOf(value), ElementsAre(0, 0));
}

TEST(KMachineValueSum, IsMadeOfTheVirtualPrimitives) {
  std::vector<std::string> calls;
  Recorder value(1, 2);
  value.calls = &calls;
  Recorder other(10, 20);
  other.calls = &calls;
  const std::vector<std::string> expected = {"size",      "const [0]", "[0]", "size",
                                             "const [1]", "[1]",       "size"};
  static_cast<KMachineValueBase&>(value) += other;
  EXPECT_EQ(calls, expected);
  calls.clear();
  static_cast<KMachineValueBase&>(value) -= other;
  EXPECT_EQ(calls, expected);
}

TEST(KMachineValueSum, NewSumsRestOnCopy) {
  const Recorder value(1, 2);
  const KMachineValueBase& base = value;
  const Position sum(base + valueOf({10, 20}));
  const Position difference(base - valueOf({10, 20}));
  EXPECT_THAT(valuesOf(*sum), ElementsAre(11, 22));
  EXPECT_THAT(valuesOf(*difference), ElementsAre(-9, -18));
  EXPECT_THAT(valuesOf(value), ElementsAre(1, 2));
}

RC_GTEST_PROP(KMachineValueSum, ReadsTheOperandClamped, ()) {
  const std::vector<double> left = anyValues();
  const std::vector<double> right = anyValues();
  const Position sum = newPosition(left);
  const Position difference = newPosition(left);
  *sum += *newPosition(right);
  *difference -= *newPosition(right);
  for (std::size_t i = 0; i < left.size(); ++i) {
    const double operand = i < right.size() ? right[i] : right.back();
    RC_ASSERT(sum->get()[i] == left[i] + operand);
    RC_ASSERT(difference->get()[i] == left[i] - operand);
  }
}

// --- factory and release

class KMachineValueFactory : public TracedTest, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(UnhandledDimension, KMachineValueFactory,
                         testing::Values(0, 13, -1, 100, std::numeric_limits<int>::min(),
                                         std::numeric_limits<int>::max()),
                         [](const testing::TestParamInfo<int>& row) {
                           return "Case" + std::to_string(row.index);
                         });

TEST_P(KMachineValueFactory, GivesNullAndSaysSoTwice) {
  testing::internal::CaptureStderr();
  KMachineValueBase* position = Access::_newMachineValue(GetParam());
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_EQ(position, nullptr);
  EXPECT_EQ(said, "zkin::KMachineValueBase::_newMachineValue, unhandled dimension<" +
                      std::to_string(GetParam()) + ">\n");
  EXPECT_TRUE(trace.claim(L"zkin::KMachineValueBase::_newMachineValue, unhandled dimension<" +
                          std::to_wstring(GetParam()) + L">"));
}

TEST(KMachineValueRefusal, SaysItOnStandardErrorWithoutATraceSink) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(Access::_newMachineValue(13), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "zkin::KMachineValueBase::_newMachineValue, unhandled dimension<13>\n");
}

TEST(KMachineValueRefusal, LeavesStandardErrorNarrow) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(Access::_newMachineValue(0), nullptr);
  const int orientation = std::fwide(stderr, 0);
  testing::internal::GetCapturedStderr();
  EXPECT_LE(orientation, 0);
}

TEST(KMachineValueRelease, SetsThePointerToNull) {
  KMachineValueBase* position = Access::_newMachineValue(3);
  KMachineValueBase::_release(position);
  EXPECT_EQ(position, nullptr);
}

TEST(KMachineValueRelease, OfNullDoesNothing) {
  KMachineValueBase* position = nullptr;
  KMachineValueBase::_release(position);
  EXPECT_EQ(position, nullptr);
}

TEST(KMachineValueRelease, EmptiesAListAndKeepsItsCapacity) {
  std::vector<KMachineValueBase*> list;
  list.reserve(7);
  for (const int dim : {1, 5, 12}) list.push_back(Access::_newMachineValue(dim));
  list.insert(list.begin() + 1, nullptr);
  const auto capacity = list.capacity();
  KMachineValueBase::_release(list);
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(list.capacity(), capacity);
}

TEST(KMachineValueRelease, OfAnEmptyListDoesNothing) {
  std::vector<KMachineValueBase*> list;
  KMachineValueBase::_release(list);
  EXPECT_TRUE(list.empty());
}

/// Counts the destructors run.
class Counted : public KMachineValue<2> {
 public:
  ~Counted() override { ++destroyed; }
  static inline int destroyed = 0;
};

TEST(KMachineValueRelease, RunsNoDestructor) {
  Counted::destroyed = 0;
  KMachineValueBase* position = new Counted;
  KMachineValueBase::_release(position);
  EXPECT_EQ(Counted::destroyed, 0);
}

TEST(KMachineValueRelease, DeletingTheConcreteClassRunsIts) {
  Counted::destroyed = 0;
  const KMachineValue<2>* position = new Counted;
  delete position;
  EXPECT_EQ(Counted::destroyed, 1);
}

}  // namespace
