// How the facets of a text are laid out: what is learnt from one is taken from the next, in one
// comparison for each stretch between its numbers.

#include "platform/zgeo/StlLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace {

using zgeo::stl::Layout;

constexpr std::string_view kVertex = "\n  vertex ";

/// "facet normal 0 0 1 outer loop vertex ...", as a program would write it.
struct Facet {
  std::string opening = "facet normal";
  std::string normal = " 0 0 1";
  std::string first = "\n outer loop\n  vertex ";
  std::string closing = "\n endloop\n endfacet";
  std::string behind = "\nfacet normal";
  std::array<std::string, 3> corners = {"1 2 3", "-4.5 5e1 6", "7 8 9"};

  std::string whole() const {
    return opening + normal + first + corners[0] + std::string(kVertex) + corners[1] +
           std::string(kVertex) + corners[2] + closing;
  }

  void teach(Layout& layout) const {
    const auto learn = [&layout](Layout::Text text, std::string_view bytes) {
      layout.learn(text, bytes.data(), bytes.data() + bytes.size());
    };
    learn(Layout::kOpening, opening);
    learn(Layout::kVertex1, first);
    learn(Layout::kVertex2, kVertex);
    learn(Layout::kVertex3, kVertex);
    learn(Layout::kClosing, closing);
  }
};

class StlLayout : public testing::Test {
 protected:
  StlLayout() { Facet().teach(layout); }

  /// How many bytes of it are taken as a facet with `behind` behind it, -1: none.
  std::ptrdiff_t taken(const Facet& facet) {
    const std::string text = facet.whole() + facet.behind;
    const char* const end = layout.take(text.data(), text.data() + text.size(), x);
    return end == nullptr ? -1 : end - text.data();
  }

  std::ptrdiff_t whole(const Facet& facet) {
    return static_cast<std::ptrdiff_t>(facet.whole().size());
  }

  Layout layout;
  double x[9] = {};
};

TEST_F(StlLayout, TakesWhatIsLaidOutAsTheOneBefore) {
  const Facet facet;
  ASSERT_EQ(taken(facet), whole(facet));
  const double expected[] = {1, 2, 3, -4.5, 50, 6, 7, 8, 9};
  EXPECT_TRUE(std::ranges::equal(x, expected));
}

TEST_F(StlLayout, PassesOverANormalOfAnyLength) {
  for (const char* normal : {" 1 2 3", " 0.1234567 0.12345678 0.123456789", "  -1e-300\t+2 3",
                             " 0.12345678901234567890123456789 0 0"}) {
    Facet facet;
    facet.normal = normal;
    EXPECT_EQ(taken(facet), whole(facet)) << normal;
  }
  for (const char* normal : {" a 0 1", " 0 0", " 0 0 1 1"}) {
    Facet facet;
    facet.normal = normal;
    EXPECT_EQ(taken(facet), -1) << normal;
  }
}

TEST_F(StlLayout, LeavesWhatIsLaidOutOtherwise) {
  Facet facet;
  facet.opening = "facet  normal";
  EXPECT_EQ(taken(facet), -1);
  facet = {};
  facet.first = "\n outer loop\n   vertex ";
  EXPECT_EQ(taken(facet), -1);
  facet = {};
  facet.closing = "\n endloop\n endfacets";
  EXPECT_EQ(taken(facet), -1);
  facet = {};
  facet.corners[1] = "1 2 nan";
  EXPECT_EQ(taken(facet), -1);
}

// The last word may go on in the next block.
TEST_F(StlLayout, LeavesAFacetThatEndsWithTheText) {
  Facet facet;
  facet.behind = "";
  EXPECT_EQ(taken(facet), -1);
  facet.behind = " ";
  EXPECT_EQ(taken(facet), whole(facet));
}

TEST_F(StlLayout, LeavesATextThatEndsAnywhere) {
  const std::string text = Facet().whole();
  for (std::size_t size = 0; size < text.size(); ++size) {
    const std::string cut = text.substr(0, size);
    EXPECT_EQ(layout.take(cut.data(), cut.data() + size, x), nullptr) << size;
  }
}

TEST_F(StlLayout, TakesNothingBeforeAllIsLearnt) {
  const std::string text = Facet().whole() + " ";
  const Layout empty = {};
  EXPECT_EQ(empty.take(text.data(), text.data() + text.size(), x), nullptr);
}

// 96 bytes between two numbers are remembered, one more is not.
TEST_F(StlLayout, RemembersTextsUpToALength) {
  for (const std::size_t length : {96u, 97u}) {
    Facet facet;
    facet.closing = std::string(length - 8, '\n') + "endfacet";
    facet.teach(layout);
    EXPECT_EQ(taken(facet), length == 96 ? whole(facet) : -1);
  }
}

}  // namespace
