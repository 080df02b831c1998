// Memory that runs out at any one allocation of a query: it answers with what it found so far, or
// with nothing, throws nothing and leaves no line of the trace open.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "platform/ombra/EntityMesh.h"
#include "platform/zgeo/UTools.h"
#include "tests/adapter/External.h"
#include "tests/alloc/Allocations.h"

namespace korvo::test {
namespace {

using Ombra::Kin::Entity;
using Ombra::Kin::EntityMesh;
using zgeo::UTools;
using zgeo::UTri;
using zgeo::UVec3d;
using zkin::NMachine;

using Rows = std::vector<std::vector<double>>;

/// Looks at the traced lines without memory of its own.
class TraceWatch : public zgeo::UTraceSink {
 public:
  TraceWatch() : previous_(UTools::_setTraceSink(this)) {}
  ~TraceWatch() override { UTools::_setTraceSink(previous_); }
  TraceWatch(const TraceWatch&) = delete;
  TraceWatch& operator=(const TraceWatch&) = delete;

  void line(const std::wstring& text, std::chrono::system_clock::time_point) override {
    saysNone_ = text.ends_with(L"(NO RES)");
    isEnd_ = text == L"end";
  }

  bool saysNone() const { return saysNone_; }  ///< The last line.
  /// Whether a new text stands on a line of its own.
  bool isLineEnded() const {
    UTools::_trace(L"end");
    return isEnd_;
  }

 private:
  zgeo::UTraceSink* const previous_;
  bool saysNone_ = false;
  bool isEnd_ = false;
};

const UVec3d kUp(0.3, -0.2, 0.8);
const UVec3d kPoint(10, 20, 30);

class Shortage : public testing::Test {
 protected:
  Shortage() {
    EntityMesh mesh;
    mesh.AddMesh({3, 3}, {0, 1, 2, 0, 2, 3}, {0, 0, 0, 1, 9, 0, 0, 1, 0, 9, 0, 1, 0, 0, 9, 1});
    machine_.EditKinematic().EditEntity(EntityId(4))->SetEntityMesh(mesh);
    machine_.EditKinematic().EditEntity(EntityId(6))->SetEntityMesh(mesh);
    adapter = std::make_unique<Adapter>(machine_);
  }

  const Entity* entity(int id) const {
    return adapter->machine()->GetKinematic().GetEntity(EntityId(id));
  }

  std::unique_ptr<Adapter> adapter;

 private:
  Machine machine_ = headHead();
};

bool beginsWith(const Rows& all, const Rows& first) {
  return first.size() <= all.size() && std::equal(first.begin(), first.end(), all.begin());
}

TEST_F(Shortage, LeavesTheAnglesFoundSoFar) {
  Positions all;
  ASSERT_EQ(adapter->getPossibleAngles(kUp, all.list), 0);
  Positions some;
  int code = 0;
  const int failures = failEach(
      [&] {
        NMachine::_release(some.list);
        code = adapter->getPossibleAngles(kUp, some.list);
      },
      [&] {
        EXPECT_EQ(code, 0);
        EXPECT_TRUE(beginsWith(all.values(), some.values()));
      });
  EXPECT_GT(failures, 50);
}

TEST_F(Shortage, LeavesTheConfigurationsFoundSoFar) {
  Positions all;
  ASSERT_EQ(adapter->getPossibleConfigs(kUp, kPoint, all.list), 0);
  ASSERT_GT(all.list.size(), 1u);
  Positions some;
  int code = 0, shorter = 0;
  const int failures = failEach(
      [&] {
        NMachine::_release(some.list);
        code = adapter->getPossibleConfigs(kUp, kPoint, some.list);
      },
      [&] {
        EXPECT_EQ(code, 0);
        EXPECT_TRUE(beginsWith(all.values(), some.values()));
        shorter += !some.list.empty() && some.list.size() < all.list.size();
      });
  EXPECT_GT(failures, 50);
  EXPECT_GT(shorter, 0);
}

TEST_F(Shortage, FindsTheNearestPositionOrNone) {
  const MachinePosition start = position({0, 0, 0, 10, 20});
  const MachinePosition before = position({1, 2, 3, 4, 5});
  MachinePosition found;
  ASSERT_EQ(adapter->getConfigPlus(start, kPoint, kUp, found), 0);
  ASSERT_EQ(found.Size(), 5);
  const TraceWatch trace;
  MachinePosition out = before;
  int code = 0, none = 0;
  const int failures = failEach(
      [&] {
        out = before;
        code = adapter->getConfigPlus(start, kPoint, kUp, out);
      },
      [&] {
        EXPECT_EQ(code, 0);
        const bool isNone = trace.saysNone();
        EXPECT_EQ(valuesOf(out), valuesOf(isNone ? before : found));
        EXPECT_TRUE(trace.isLineEnded());
        none += isNone;
      });
  EXPECT_GT(failures, 50);
  EXPECT_GT(none, 10);  // the others were short of memory for the trace alone
}

TEST_F(Shortage, OfTheMachinesTrianglesLeavesNone) {
  const MachinePosition at = position({1, 2, 3, 40, 50});
  std::vector<UTri> all;
  adapter->getTrianglesU(at, all);
  ASSERT_EQ(all.size(), 4u);
  std::vector<UTri> tris;
  int empty = 0;
  const auto ask = [&] {
    std::vector<UTri>().swap(tris);
    adapter->getTrianglesU(at, tris);
  };
  const int failures = failEach(ask, [&] {
    EXPECT_TRUE(tris.empty() || tris == all);
    empty += tris.empty();
  });
  EXPECT_GT(failures, 5);
  EXPECT_GT(empty, 5);
  EXPECT_LT(empty, failures) << "room that is only likely to be needed";

  const TraceWatch trace;
  failEach(ask, [&] { EXPECT_TRUE(trace.isLineEnded()); });
}

TEST_F(Shortage, OfAnEntitysTrianglesIsToldByTheCode) {
  std::vector<UTri> tris;
  int code = 0, refused = 0;
  const auto ask = [&] {
    std::vector<UTri>().swap(tris);
    code = NMachine::_ombraEntityGeom(entity(4), tris);
  };
  const auto judge = [&] {
    EXPECT_EQ(code, tris.empty() ? -1 : 0);
    EXPECT_TRUE(tris.empty() || tris.size() == 2u);
    refused += code != 0;
  };
  // The room asked for at first is more than the triangles need: without it they find their own.
  EXPECT_GT(failEach(ask, judge), 0);
  EXPECT_EQ(refused, 0);

  const TraceWatch trace;
  failEach(ask, [&] {
    judge();
    EXPECT_TRUE(trace.isLineEnded());
  });
  EXPECT_GT(refused, 0);
}

// --- machines in the making

TEST(ShortageInBuilding, AddsAnEntityWholeOrNot) {
  Ombra::Kin::Kinematic kinematic;
  int added = 0;
  const std::wstring name(100, L'n');
  for (int i = 0; i < 9; ++i) {  // past some growths of every list
    failEach(
        [&] {
          try {
            if (kinematic.AddTable(name) != EntityId(0)) ++added;
          } catch (const std::bad_alloc&) {
          }
        },
        [&] {
          ASSERT_EQ(std::ssize(kinematic.GetListEntity()), added);
          const EntityId next = kinematic.AddTable(L"next");
          ASSERT_EQ(next, EntityId(++added));
          EXPECT_EQ(kinematic.GetEntity(next)->GetEntityName(), L"next");
        });
  }
  EXPECT_GT(added, 27);
  for (int i = added; i >= 1; --i) EXPECT_TRUE(kinematic.RemoveEntity(EntityId(i)));
  for (const Entity* e : kinematic.GetListEntity()) EXPECT_EQ(e, nullptr);
}

}  // namespace
}  // namespace korvo::test
