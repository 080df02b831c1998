// All solutions at once. A five-axis target, both rotary axes within a turn each way, against the
// closed form of that one machine written by hand: at most 10 times is wanted. A frame of a
// six-joint arm, all eight branches within half a turn each way, verified, against one forward
// computation of Orocos KDL: at most 4 times is wanted.
#include <array>
#include <cmath>
#include <cstdio>
#include <kdl/chainfksolverpos_recursive.hpp>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "benchmarks/KdlChain.h"
#include "benchmarks/Measure.h"
#include "toolkit/Machine.h"
#include "toolkit/solve/Solver.h"

namespace {

using korvo::FrameTarget, korvo::Joint, korvo::Machine, korvo::Solution, korvo::Solver,
    korvo::Target, korvo::Values;
using korvo::bench::kdlChain, korvo::bench::median, korvo::bench::secondsOf;
using zgeo::UVec3d;

constexpr int kTargets = 1000, kRounds = 101;
constexpr double kDegree = std::numbers::pi / 180;

/// Gives every rotary axis the same limits.
void limitTurns(Machine& machine, double degrees) {
  for (int i = 0; i < machine->getElemNumber(); ++i) {
    zkin::KMachineElem* e = machine->getElemByRank(i);
    if (!korvo::bench::turns(*e)) continue;
    e->setMin(-degrees, true);
    e->setMax(degrees, true);
  }
}

std::vector<Values> positions(const Solver& solver, double within) {
  std::mt19937 random(1);
  std::vector<Values> all(kTargets);
  for (Values& values : all) {
    for (const Joint& joint : solver.chain().joints) {
      const bool isTurn = joint.motion == Joint::Motion::turn;
      const double low = isTurn ? -within : joint.min, high = isTurn ? within : joint.max;
      values[static_cast<std::size_t>(joint.place)] =
          low + (high - low) * (static_cast<double>(random()) / 4294967296.0);
    }
  }
  return all;
}

/// table-ac by hand: the part on C about z, on A about x through (., -0.5, 60); X, Y and Z carry
/// the tool, whose point at zero is (0, 0, 120).
struct TableAc {
  struct Entry {
    double x, y, z, a, c;
  };
  std::array<Entry, 8> entries;
  int count = 0;

  // As the file has it: the part's chain comes first, A nearest the frame, then C; walked from the
  // part C turns first, by Rz(C) Rx(A).
  void solve(const Target& target) {
    count = 0;
    const UVec3d& d = target.direction;
    const double tilt = std::acos(d.z);
    for (const double a : {tilt, -tilt}) {
      // Rz(c) Rx(a) z = (sin c sin a, -cos c sin a, cos a)
      const double s = a < 0 ? -1 : 1;
      const double c = std::atan2(s * d.x, -s * d.y);
      const double sinC = std::sin(c), cosC = std::cos(c), sinA = std::sin(a), cosA = std::cos(a);
      const UVec3d back(cosC * target.tip.x + sinC * target.tip.y,
                        -sinC * target.tip.x + cosC * target.tip.y, target.tip.z);
      const double y = back.y + 0.5, z = back.z - 60;
      const UVec3d at(back.x, cosA * y + sinA * z - 0.5, -sinA * y + cosA * z + 60);
      add(at, a / kDegree, c / kDegree);
    }
  }

  void add(const UVec3d& at, double a, double c) {
    if (at.x < -300 || at.x > 300 || at.y < -255 || at.y > 255 || at.z - 120 < -20 ||
        at.z - 120 > 440) {
      return;
    }
    for (const double turnA : {a, a < 0 ? a + 360 : a - 360}) {
      for (const double turnC : {c, c < 0 ? c + 360 : c - 360}) {
        entries[static_cast<std::size_t>(count++)] = {at.x, at.y, at.z - 120, turnA, turnC};
      }
    }
  }
};

bool agree(const Machine& machine, const TableAc& byHand, const std::vector<Solution>& ours) {
  if (static_cast<std::size_t>(byHand.count) != ours.size()) return false;
  for (int i = 0; i < byHand.count; ++i) {
    const auto& [x, y, z, a, c] = byHand.entries[static_cast<std::size_t>(i)];
    const korvo::Position at = machine.position({{"X", x}, {"Y", y}, {"Z", z}, {"A", a}, {"C", c}});
    const auto isIt = [&](const Solution& s) {
      for (int k = 0; k < at.size(); ++k) {
        if (std::abs(s.values[static_cast<std::size_t>(k)] - at[k]) > 1e-7) return false;
      }
      return true;
    };
    if (std::none_of(ours.begin(), ours.end(), isIt)) return false;
  }
  return true;
}

void fiveAxes() {
  korvo::Loaded loaded = korvo::load(std::string(KORVO_MACHINES "/table-ac.def"));
  if (!loaded) return;
  limitTurns(*loaded.machine, 360);
  const Solver solver(*loaded.machine);
  std::vector<Target> targets;
  for (const Values& values : positions(solver, 180)) {
    const korvo::ToolPose pose = solver.chain().pose(values);
    targets.push_back({pose.point, pose.direction});
  }
  TableAc byHand;
  std::vector<Solution> ours;
  std::size_t solutions = 0;
  int different = 0;
  for (const Target& target : targets) {
    byHand.solve(target);
    solver.solve(target, {}, ours);
    different += !agree(*loaded.machine, byHand, ours);
    solutions += ours.size();
  }
  std::vector<double> ourTime, ratio;
  double sum = 0;
  for (int round = 0; round < kRounds; ++round) {
    ourTime.push_back(secondsOf([&] {
      for (const Target& target : targets) {
        solver.solve(target, {}, ours);
        sum += ours.empty() ? 0 : ours[0].values[0];
      }
    }));
    ratio.push_back(ourTime.back() / secondsOf([&] {
                      for (const Target& target : targets) {
                        byHand.solve(target);
                        sum += byHand.entries[0].x;
                      }
                    }));
  }
  std::printf(
      "table-ac: %.0f ns a target, %.1f solutions, %d unlike those by hand; ratio %.1f (%g)\n",
      median(ourTime) / kTargets * 1e9, static_cast<double>(solutions) / kTargets, different,
      median(ratio), sum);
}

void arm() {
  korvo::Loaded loaded = korvo::load(std::string(KORVO_MACHINES "/arm-irb2400.def"));
  if (!loaded) return;
  limitTurns(*loaded.machine, 180);
  const Solver solver(*loaded.machine);
  const KDL::Chain chain = kdlChain(**loaded.machine);
  KDL::ChainFkSolverPos_recursive forward(chain);
  const std::vector<Values> all = positions(solver, 180);
  std::vector<FrameTarget> targets;
  std::vector<KDL::JntArray> joints;
  std::vector<Solution> ours;
  std::size_t solutions = 0;
  double largest = 0;
  for (const Values& values : all) {
    FrameTarget target{solver.chain().motion(values)};
    target.frame.setOrigin(solver.chain().tipOf(solver.chain().pose(values)));
    KDL::JntArray q(6);
    for (unsigned k = 0; k < 6; ++k) q(k) = values[k] * kDegree;
    solver.solve(target, {}, ours);
    if (ours.size() != 8) continue;
    targets.push_back(target);
    joints.push_back(q);
    solutions += ours.size();
    for (const Solution& s : ours) largest = std::max(largest, s.residual.pointMm);
  }
  std::vector<double> ourTime, theirTime, ratio;
  double sum = 0;
  KDL::Frame frame;
  for (int round = 0; round < kRounds; ++round) {
    ourTime.push_back(secondsOf([&] {
      for (const FrameTarget& target : targets) {
        solver.solve(target, {}, ours);
        sum += ours[0].values[0];
      }
    }));
    theirTime.push_back(secondsOf([&] {
      for (const KDL::JntArray& q : joints) {
        forward.JntToCart(q, frame);
        sum += frame.p.x();
      }
    }));
    ratio.push_back(ourTime.back() / theirTime.back());
  }
  const auto count = static_cast<double>(targets.size());
  std::printf(
      "arm-irb2400: %.0f ns a frame of 8 solutions (%.0f frames), within %.1e mm; KDL forward %.0f "
      "ns; ratio %.2f (%g)\n",
      median(ourTime) / count * 1e9, count, largest, median(theirTime) / count * 1e9, median(ratio),
      sum);
}

}  // namespace

int main() {
  fiveAxes();
  arm();
}
