// Awkward machines converted for the external kinematics library: they stand where the author's
// numbers put them, and what the adapter solves is right.
#include <cmath>

#include "adapter/NMachine.h"
#include "adapter/machineFromDefinition.h"
#include "tests/awkward/Awkward.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::NMachine;
using Numbers = std::vector<double>;

/// An adapter that frees its copy of the machine, which hosts have to do.
class Converted : public NMachine {
 public:
  Converted(const KMachine& machine, int tool)
      : NMachine(zkin::machineFromDefinition(machine, zkin::Bodies::none).get(),
                 Ombra::Kin::HeadIndex(tool - 1), Ombra::Kin::TableIndex(0)) {}
  Converted(const Converted&) = delete;
  Converted& operator=(const Converted&) = delete;
  ~Converted() { reset(true); }
};

class AwkwardAdapter : public AwkwardTest {
 protected:
  template <typename Law>
  void onPositions(int machines, Law law) {
    onMachines(
        machines, [](Dice& dice) { return awkwardMachine(dice, LimitKinds::any); },
        [&](const AwkwardMachine& drawn, Dice& dice) {
          const auto machine = drawn.load();
          const int tool = 1 + dice.below(drawn.tools());
          Converted adapter(*machine, tool);
          adapter.setTHELength(drawn.lengths[static_cast<std::size_t>(tool - 1)]);
          for (int i = 0; i < 3 && !HasFailure(); ++i) {
            Marks marks = drawn.marks;
            const Numbers values = awkwardValues(drawn, false, dice, marks);
            tally.add(marks);
            note = "\ntool " + std::to_string(tool) + " at" + textOf(values);
            law(drawn, *machine, adapter, tool, values);
          }
        });
    tally.expectCommon({mark::almostParallel, mark::parallel, mark::onePoint, mark::almostMeeting,
                        mark::atOrigin, mark::huge, mark::tiny, mark::noLength, mark::turns,
                        mark::manyTurns, mark::slight, mark::nothing, mark::onLimit, mark::oneUlp,
                        mark::equalLimits, mark::crossedLimits, mark::farLimits});
  }
};

void expectWithin(const UVec3d& is, const Exact& wanted, double bound, const char* what) {
  EXPECT_LE(static_cast<double>(length(exact(is) - wanted)), bound)
      << what << textOf(is) << " instead of" << textOf(rounded(wanted));
}

TEST_F(AwkwardAdapter, ToolStandsWhereTheDefinitionsNumbersPutIt) {
  onPositions(500, [](const AwkwardMachine& drawn, const KMachine& machine, const NMachine& adapter,
                      int tool, const Numbers& values) {
    const ExactPose wanted = drawn.pose(values, tool);
    const double bound = drawn.pointBound(machine, values);
    const auto position = adapter.axisValues(values);
    UVec3d point, direction;
    ASSERT_TRUE(adapter.getTool(position, point, direction));
    expectWithin(point, wanted.point, bound, "point");
    expectWithin(direction, wanted.direction, drawn.directionBound(values), "direction");
    expectWithin(adapter.getMatrix_TP2U(position).getOrigin(), drawn.tip(values, tool), bound,
                 "tip");
  });
}

TEST_F(AwkwardAdapter, ListedAnglesOfTwoRotaryAxesTurnTheToolThere) {
  int entries = 0;
  onPositions(60, [&entries](const AwkwardMachine& drawn, const KMachine&, const NMachine& adapter,
                             int tool, const Numbers& values) {
    if (adapter.rotations().size() != 2) return;
    std::vector<Ombra::Kin::MachinePosition*> list;
    const Exact wanted = drawn.pose(values, tool).direction;
    EXPECT_EQ(adapter.getPossibleAngles(rounded(wanted), list), 0);
    for (const auto* p : list) {
      const Numbers at = adapter.axisValues(*p);
      const auto miss = static_cast<double>(angleBetween(drawn.pose(at, tool).direction, wanted));
      EXPECT_LE(miss, 1.001e-9 + drawn.directionBound(at)) << textOf(at);
      ++entries;
    }
    NMachine::_release(list);
  });
  EXPECT_GT(entries, 0);
}

}  // namespace
}  // namespace korvo::test
