#pragma once

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "tests/support/LoadText.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/Matchers.h"

/// What the tests of the inverse queries share.
namespace korvo::test {

using Numbers = std::vector<double>;
using Kine = zkin::KMachine::_sUKine;

inline const std::wstring kNoRotations = L"getConfig failed (no rotations)";
inline const std::wstring kNoSolution = L"** NO SOLUTION";

/// Linear axes 1 to 3 of a head.
inline const std::string kXYZ = "axis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\n";

inline double rad(double degrees) { return degrees * std::numbers::pi / 180.0; }

inline Numbers numbersOf(const zkin::KMachineValueBase& v) { return {v.get(), v.get() + v.size()}; }

/// A solver's code and what it left in its result.
struct Solved {
  int code;
  Numbers v;
};

inline const Numbers kUntouched(12, 12345.0);

/// `query` (getConfigPlus and its relatives) into a result full of a number that no solver gives.
template <typename Query>
Solved solvedBy(Query query, const zkin::KMachine& machine, const Numbers& start,
                const zgeo::UVec3d& pos, const zgeo::UVec3d& dir) {
  const Position out = positionOf(machine, kUntouched);
  const int code = (machine.*query)(*positionOf(machine, start), pos, dir, *out);
  return {code, numbersOf(*out)};
}

inline Solved solve(const zkin::KMachine& machine, const Numbers& start, const zgeo::UVec3d& pos,
                    const zgeo::UVec3d& dir) {
  return solvedBy(&zkin::KMachine::getConfigPlus, machine, start, pos, dir);
}

MATCHER_P2(AllNear, expected, tolerance, "has every number within a tolerance") {
  if (arg.size() != expected.size()) return false;
  for (std::size_t i = 0; i < arg.size(); ++i) {
    if (!(std::abs(arg[i] - expected[i]) <= tolerance)) return false;
  }
  return true;
}

/// Where a tool stands: its tip, one length back from its point, and its direction.
struct Tip {
  zgeo::UVec3d point, dir;
};

inline Tip tipAt(const zkin::KMachine& machine, const Numbers& v, int tool = -1) {
  Tip tip;
  EXPECT_TRUE(machine.getTool(*positionOf(machine, v), tip.point, tip.dir, tool));
  tip.point = tip.point - tip.dir * machine.getTHELength(tool);
  return tip;
}

/// A list as the list queries fill it; releases what is left in it.
class Entries {
 public:
  Entries() = default;
  Entries(const Entries&) = delete;
  Entries& operator=(const Entries&) = delete;
  ~Entries() { zkin::KMachineValueBase::_release(list); }

  void add(const zkin::KMachine& machine, const Numbers& v) {
    list.push_back(positionOf(machine, v).release());
  }

  std::vector<Numbers> numbers() const {
    std::vector<Numbers> out;
    for (const auto* entry : list) out.push_back(numbersOf(*entry));
    return out;
  }

  /// One value of every entry.
  Numbers column(int place) const {
    Numbers out;
    for (const auto* entry : list) out.push_back((*entry)[place]);
    return out;
  }

  std::vector<zkin::KMachineValueBase*> list;
};

/// Machines of version 1 with tool 1 current.
class InverseTest : public LoadingTest {
 protected:
  zkin::KMachine machineOf(const std::string& text) {
    zkin::KMachine machine = load(text, 1);
    trace.claimAll(L"... ? Unrecognized stuff");  // arms of no known shape
    EXPECT_EQ(result, 0);
    machine.setCurrentTool(1);
    return machine;
  }

  /// All axes in the head: the chain is part, frame, `axes`, tool.
  zkin::KMachine head(const std::string& axes, const std::string& tool = "tool=z,0,0,0\n") {
    return machineOf("frame\npart=x,y\nlien=BATI\n" + axes + tool);
  }

  /// Rotary axes under the part, X Y Z in the head. `axes` go from the frame to the part.
  zkin::KMachine table(const std::string& axes, const std::string& tool = "tool=z,0,0,0\n") {
    return machineOf("frame\n" + axes + "part=x,y\nlien=BATI\n" + kXYZ + tool);
  }

  /// Claims `line` as often as it was traced.
  int count(const std::wstring& line) {
    int n = 0;
    while (trace.claim(line)) ++n;
    return n;
  }
};

}  // namespace korvo::test
