// What reads only may run on one adapter in many threads at once.
#include <atomic>
#include <vector>

#include <gtest/gtest.h>

#include "adapter/NMachine.h"
#include "platform/ombra/EntityMesh.h"
#include "platform/zgeo/UTri.h"
#include "tests/ombra/Machines.h"
#include "tests/threads/Threads.h"

namespace korvo::test {
namespace {

using zgeo::UTri;
using zgeo::UVec3d;
using zkin::NMachine;

constexpr double kLength = 60;

/// The machine with a body on its head; its turns have ranges, so that lists stay short.
Machine bodied(Machine machine) {
  Ombra::Kin::Kinematic& k = machine.EditKinematic();
  for (const int reg : {3, 4}) {
    k.EditEntity(k.GetEntity(Register(reg))->GetEntityId())->SetRange(-200, 180);
  }
  Ombra::Kin::EntityMesh mesh;
  mesh.AddMesh({3}, {0, 1, 2}, {0, 0, 0, 1, 9, 0, 0, 1, 0, 9, 1, 1});
  k.EditEntity(k.GetEntityHead(HeadIndex())->GetEntityId())->SetEntityMesh(mesh);
  return machine;
}

void addPosition(std::vector<double>& out, const NMachine& adapter, const MachinePosition& p) {
  const std::vector<double> values = adapter.axisValues(p);
  out.insert(out.end(), values.begin(), values.end());
}

void addList(std::vector<double>& out, const NMachine& adapter,
             std::vector<MachinePosition*>& list) {
  out.push_back(static_cast<double>(list.size()));
  for (const MachinePosition* p : list) addPosition(out, adapter, *p);
  NMachine::_release(list);
}

/// What every query answers that only reads, the target being where the tool is at `p`.
std::vector<double> answersOf(const NMachine& adapter, const MachinePosition& p) {
  std::vector<double> out;
  add(out, adapter.getMatrix(p));
  add(out, adapter.getMatrix_H2T(p));
  add(out, adapter.getMatrix_TP2U(p));
  UVec3d pos, dir;
  out.push_back(adapter.getTool(p, pos, dir));
  add(out, pos), add(out, dir);
  addPosition(out, adapter, adapter.axisTranslation(p, {1, 2, 3}));

  const UVec3d tip = pos - dir * kLength;
  std::vector<MachinePosition*> list;
  out.push_back(adapter.getPossibleAngles(dir, list));
  addList(out, adapter, list);
  out.push_back(adapter.getPossibleConfigs(dir, tip, list));
  addList(out, adapter, list);
  MachinePosition nearest;
  out.push_back(adapter.getConfigPlus(adapter.newMachinePosition(), tip, dir, nearest));
  addPosition(out, adapter, nearest);

  std::vector<UTri> triangles;
  adapter.getTrianglesU(p, triangles);
  for (const UTri& t : triangles) add(out, t.p[0]), add(out, t.p[1]), add(out, t.p[2]);
  for (int i = -1; i < 6; ++i) out.push_back(adapter.isLocked(i));
  return out;
}

class NMachineThreads : public testing::TestWithParam<Machine (*)()> {};

TEST_P(NMachineThreads, EightOnOneAdapterGetTheAnswersOfOneBitByBit) {
  const Machine machine = bodied(GetParam()());
  NMachine adapter(&machine, HeadIndex(), TableIndex());
  adapter.setTHELength(kLength);
  adapter.lockAxis(5);  // of no register
  std::vector<MachinePosition> positions;
  std::vector<std::vector<double>> answers;
  for (int i = 0; i < 20; ++i) {
    positions.push_back(position({i * 7.5, 30.0 - i, i * 2.25, i * 17.0 - 170, 95.0 - i * 9}));
    answers.push_back(answersOf(adapter, positions.back()));
  }
  std::atomic<int> different = 0;
  runTogether([&] {
    for (std::size_t i = 0; i < positions.size(); ++i) {
      if (!isSameBits(answersOf(adapter, positions[i]), answers[i])) ++different;
    }
  });
  EXPECT_EQ(different, 0);
  adapter.reset(true);
}

INSTANTIATE_TEST_SUITE_P(Machines, NMachineThreads, testing::Values(&headHead, &tableTable),
                         [](const auto& row) { return row.index == 0 ? "Fork" : "Trunnion"; });

}  // namespace
}  // namespace korvo::test
