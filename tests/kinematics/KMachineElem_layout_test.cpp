// Elements and machines have one virtual operation, the destructor: hosts compiled against another
// build rely on it. Itanium layout, as in KMachineValue_layout_test.cpp.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "kinematics/KMachine.h"
#include "kinematics/KMachineElem.h"

#if !defined(_MSC_VER)

using zkin::KMachine;
using zkin::KMachineElem;

namespace {

static_assert(std::has_virtual_destructor_v<KMachineElem>);
static_assert(std::has_virtual_destructor_v<KMachine>);

/// Adds a virtual operation, whose place follows those of the base.
template <class Base>
struct OneMore : Base {
  virtual void added() {}
};

/// How many places the base has in its table. A pointer to a virtual member holds the distance of
/// its place from the table's start, in bytes; its lowest bit says on some systems that it is one.
template <class Base>
std::size_t placesOf() {
  void (OneMore<Base>::* const added)() = &OneMore<Base>::added;
  std::size_t distance = 0;
  std::memcpy(&distance, &added, sizeof distance);
  return (distance & ~std::size_t{1}) / sizeof(void*);
}

// A virtual destructor has two places: for objects that go with their storage and without.
TEST(VirtualOperations, DestructorIsTheOnlyOne) {
  EXPECT_EQ(placesOf<KMachineElem>(), 2u);
  EXPECT_EQ(placesOf<KMachine>(), 2u);
}

}  // namespace

#endif
