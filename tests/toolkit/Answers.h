#pragma once

#include <gtest/gtest.h>
#include <cmath>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TempFile.h"
#include "toolkit/answer/Answer.h"

namespace korvo::test {

using zgeo::UVec3d;

inline constexpr double kDegToRad = std::numbers::pi / 180.0;
inline const double kHalf = std::sqrt(0.5);  // sine and cosine of 45 degrees
inline const UVec3d kUp(0, 0, 1);

inline Machine example(const std::string& name) {
  korvo::Loaded loaded = korvo::load(std::filesystem::path(KORVO_MACHINES) / (name + ".def"));
  EXPECT_TRUE(loaded);
  return std::move(*loaded.machine);
}

inline Machine machineOf(const std::string& text) {
  const korvo::test::TempDir folder;
  korvo::Loaded loaded = korvo::load(folder.write("m.def", text));
  EXPECT_TRUE(loaded);
  return std::move(*loaded.machine);
}

inline zkin::KMachineElem& axisAt(Machine& machine, int place) {
  return *machine->getElemByIndex(std::as_const(*machine).getAxisElem(place + 1)->getElemIndex());
}

inline Machine withLock(Machine machine, int place) {
  axisAt(machine, place).setLocked(true);
  return machine;
}

inline UVec3d fromZ(double degrees, double heading) {
  const double t = degrees * kDegToRad, h = heading * kDegToRad;
  return {std::sin(t) * std::cos(h), std::sin(t) * std::sin(h), std::cos(t)};
}

// A tip 100 mm from where the trunnion's cradle turns, along the tool: near the middle of all
// travels.
inline Target above(const UVec3d& direction) {
  return {UVec3d(0, 0, 60) + direction * 100, direction};
}

inline void expectValues(const korvo::Position& at, const std::vector<double>& values,
                         double tolerance = 1e-9) {
  for (int i = 0; i < at.size(); ++i) {
    EXPECT_NEAR(at[i], values[static_cast<std::size_t>(i)], tolerance) << at.names()[i];
  }
}

inline void expectReached(const Answer& answer) {
  EXPECT_EQ(answer.status, Status::reached) << answer.text;
  EXPECT_LE(answer.residual.pointMm, korvo::kReachedMm);
  EXPECT_LE(answer.residual.directionRad, korvo::kReachedRad);
  EXPECT_EQ(answer.reason, Reason::none);
  EXPECT_TRUE(answer.text.empty());
}

inline void expectMissed(const Answer& answer, Reason reason, double by, double tolerance = 1e-9) {
  EXPECT_NE(answer.status, Status::reached);
  EXPECT_EQ(answer.reason, reason) << answer.text;
  EXPECT_NEAR(answer.by, by, tolerance) << answer.text;
  EXPECT_FALSE(answer.text.empty());
}

}  // namespace korvo::test
