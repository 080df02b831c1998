// The index that tells whether a list of positions holds an equal one, against the comparison of
// each with each.
#include <algorithm>
#include <limits>
#include <utility>

#include "tests/kinematics/KMachine_inverse.h"

// The library keeps this class to itself: its source is compiled in here.
#include "kinematics/inverse/SolutionList.cpp"  // NOLINT(bugprone-suspicious-include)

namespace korvo::test {
namespace {

using zkin::KMachineValue;
using zkin::KMachineValueBase;
using zkin::SolutionList;

/// Values a little more or less than the tolerance apart, turns apart, huge, and no numbers.
double value(Choices& choices) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  const double bases[] = {0, 0, 0, 0, 90, 90, -90, 360, 1e7, 1e7, 3e300, inf, -inf, NAN};
  const double offsets[] = {0, 0, 0, 0.4e-5, -0.4e-5, 0.99e-5, -0.99e-5, 1.01e-5, 2e-5};
  const double base = choices.pick(bases);
  return base + choices.pick(offsets);
}

template <int N>
void compareWithEachOther() {
  int equal = 0;
  for (unsigned seed = 0; seed < 300; ++seed) {
    Choices choices(seed);
    std::vector<KMachineValue<N>> values(20);
    std::vector<KMachineValueBase*> list;
    KMachineValue<N == 12 ? 11 : N + 1> longer;
    list.push_back(&longer);  // hosts may keep anything in their list
    list.push_back(nullptr);
    for (auto& v : values) {
      for (int i = 0; i < std::min(N, 3); ++i) v[i] = value(choices);
    }
    for (int i = 0; i < 5; ++i) list.push_back(&values[static_cast<std::size_t>(i)]);
    SolutionList index(list);
    for (auto& v : values) {
      const bool expected = std::any_of(list.begin(), list.end(), [&v](KMachineValueBase* entry) {
        return entry && *entry == std::as_const(v);
      });
      EXPECT_EQ(index.holds(v), expected);
      equal += expected;
      list.push_back(&v);
      index.add(v);
    }
  }
  EXPECT_GT(equal, 300);
}

TEST(SolutionIndex, FindsWhatComparingEachWithEachFinds) {
  compareWithEachOther<1>();
  compareWithEachOther<2>();
  compareWithEachOther<5>();
  compareWithEachOther<12>();
}

// All twelve values just inside the tolerance: the largest difference that still counts as equal.
TEST(SolutionIndex, FindsTheFarthestEqualPosition) {
  for (int i = 0; i < 4000; ++i) {
    KMachineValue<12> a, b;
    for (int k = 0; k < 12; ++k) a[k] = i * 0.001, b[k] = a[k] + 0.999e-5;
    SolutionList index({&a});
    EXPECT_TRUE(index.holds(b));
    SolutionList other({&b});
    EXPECT_TRUE(other.holds(a));
  }
}

}  // namespace
}  // namespace korvo::test
