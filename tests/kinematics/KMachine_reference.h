#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iostream>
#include <memory>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "kinematics/KMachine.h"
#include "tests/support/InCLocale.h"

/// What the comparisons with published numbers share: a second, plain arithmetic of rigid
/// transforms that uses nothing of the library, and machines loaded from text.
namespace korvo::test::reference {

using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineValueBase;

/// Rows of a 4x4 transform. Written out here so that a fault of the library's matrices shows.
struct Pose {
  double m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

  UVec3d column(int c) const { return {m[0][c], m[1][c], m[2][c]}; }
  UVec3d at(const UVec3d& p) const {
    return column(0) * p.x + column(1) * p.y + column(2) * p.z + column(3);
  }
};

inline Pose operator*(const Pose& a, const Pose& b) {
  Pose r;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      r.m[i][j] = 0.0;
      for (int k = 0; k < 4; ++k) r.m[i][j] += a.m[i][k] * b.m[k][j];
    }
  }
  return r;
}

/// Turn by `degrees` in the plane from axis i to axis j, right-handed about the third.
inline Pose turn(int i, int j, double degrees) {
  const double radians = degrees * std::numbers::pi / 180.0;
  Pose r;
  r.m[i][i] = r.m[j][j] = std::cos(radians);
  r.m[j][i] = std::sin(radians);
  r.m[i][j] = -r.m[j][i];
  return r;
}
inline Pose rx(double degrees) { return turn(1, 2, degrees); }
inline Pose ry(double degrees) { return turn(2, 0, degrees); }
inline Pose rz(double degrees) { return turn(0, 1, degrees); }

inline Pose shift(double x, double y, double z) {
  Pose r;
  r.m[0][3] = x, r.m[1][3] = y, r.m[2][3] = z;
  return r;
}

/// The same turn about an axis through the point (x, y, z).
inline Pose about(double x, double y, double z, const Pose& turned) {
  return shift(x, y, z) * turned * shift(-x, -y, -z);
}

/// A line through `point` along `direction`: an axis at the zero position.
struct Line {
  UVec3d point;
  UVec3d direction;
};

inline std::string numbers(const UVec3d& v) {
  const InCLocale scope;
  char text[96];
  std::snprintf(text, sizeof text, "%.17g,%.17g,%.17g", v.x, v.y, v.z);
  return text;
}

/// Definition text (version 1) of a six-joint arm on the frame.
inline std::string armText(const std::vector<Line>& joints, const Line& tool) {
  std::string text = "frame\npart=x,y,0,0,0\nlien=BATI\n";
  for (std::size_t i = 0; i < joints.size(); ++i) {
    const std::string n = std::to_string(i + 1);
    text += "rotation=J" + n + "," + n + "," + numbers(joints[i].direction) + ",0,0," +
            numbers(joints[i].point) + "\n";
  }
  return text + "tool=" + numbers(tool.direction) + "," + numbers(tool.point) + "\n";
}

/// A machine from a file, tool 1 made current; a failed load fails the test.
inline std::unique_ptr<KMachine> load(const std::filesystem::path& file, int version) {
  auto machine = std::make_unique<KMachine>();
  machine->setDataFilePNE(file.string(), version);
  EXPECT_EQ(machine->readDataFile(), 0) << file;
  machine->setCurrentTool(1);
  EXPECT_EQ(machine->getCurrentTool(), 1) << file;
  return machine;
}

/// The same from definition text, by way of a file that is removed again. The number in its name
/// keeps test programs that run at the same time apart.
inline std::unique_ptr<KMachine> fromText(const std::string& text, int version) {
  const auto* test = testing::UnitTest::GetInstance()->current_test_info();
  std::string name = std::string(test->test_suite_name()) + "." + test->name() + "." +
                     std::to_string(std::random_device()()) + ".def";
  std::replace(name.begin(), name.end(), '/', '_');
  const auto file = std::filesystem::path(testing::TempDir()) / name;
  std::ofstream(file, std::ios::binary) << text;
  auto machine = load(file, version);
  std::filesystem::remove(file);
  return machine;
}

/// A position of a machine that releases itself.
class Position {
 public:
  Position(const KMachine& machine, const std::vector<double>& values)
      : value_(machine.axisValues(values)) {
    EXPECT_NE(value_, nullptr);
    EXPECT_EQ(values.size(), static_cast<std::size_t>(machine.getAxisNum()));
  }
  Position(const Position&) = delete;
  Position& operator=(const Position&) = delete;
  ~Position() { KMachineValueBase::_release(value_); }
  const KMachineValueBase& operator*() const { return *value_; }

 private:
  KMachineValueBase* value_;
};

/// Where a machine's tool 1 stands.
struct ToolPlace {
  UVec3d point;
  UVec3d direction;
};

inline ToolPlace toolAt(const KMachine& machine, const std::vector<double>& values, int tool = 1) {
  ToolPlace place;
  EXPECT_TRUE(machine.getTool(*Position(machine, values), place.point, place.direction, tool));
  return place;
}

/// The largest errors seen in one table: printed, and recorded beside the test's result.
class LargestError {
 public:
  explicit LargestError(std::string table) : table_(std::move(table)) {}
  LargestError(const LargestError&) = delete;
  LargestError& operator=(const LargestError&) = delete;
  ~LargestError() {
    char text[160];
    std::snprintf(text, sizeof text, "%d comparisons, point %.2e mm, direction %.2e", count_,
                  point_, direction_);
    testing::Test::RecordProperty("largest_error", text);
    std::cout << "largest error, " << table_ << ": " << text << "\n";
  }

  /// Compares a place with the expected one; a NaN never passes.
  void compare(const ToolPlace& seen, const ToolPlace& expected, double pointTolerance,
               double directionTolerance, const std::string& row) {
    const double point = largest(seen.point - expected.point);
    const double direction = largest(seen.direction - expected.direction);
    point_ = std::max(point_, point), direction_ = std::max(direction_, direction), ++count_;
    EXPECT_LE(point, pointTolerance) << table_ << ", " << row;
    EXPECT_LE(direction, directionTolerance) << table_ << ", " << row;
  }

  /// Compares a 3x3 rotation, element by element.
  void compareRotation(const Pose& seen, const Pose& expected, double tolerance,
                       const std::string& row) {
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        const double difference = std::abs(seen.m[i][j] - expected.m[i][j]);
        direction_ = std::max(direction_, difference);
        EXPECT_LE(difference, tolerance) << table_ << ", " << row << ", rotation " << i << j;
      }
    }
  }

 private:
  static double largest(const UVec3d& d) {
    return std::max({std::abs(d.x), std::abs(d.y), std::abs(d.z)});
  }

  std::string table_;
  int count_ = 0;
  double point_ = 0.0;
  double direction_ = 0.0;
};

inline Pose poseOf(const UMatrix& m) {
  Pose r;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) r.m[i][j] = m(i, j);
  }
  return r;
}

inline std::string rowText(const std::vector<double>& values) {
  std::string text = "at";
  for (const double value : values) text += " " + std::to_string(value);
  return text;
}

/// What an arm's frame says of its tool: the end point, and the direction from the tip back to the
/// flange, which is against the frame's Z.
inline ToolPlace armTool(const Pose& end) { return {end.column(3), -end.column(2)}; }

/// Compares an arm's tool and its tool frame with the end frame `expected`; `zero` is the end frame
/// at the zero position, since the tool frame holds the change of orientation from there.
inline void compareArm(LargestError& error, const KMachine& machine,
                       const std::vector<double>& joints, const Pose& zero, const Pose& expected,
                       double pointTolerance, double directionTolerance) {
  const std::string row = rowText(joints);
  error.compare(toolAt(machine, joints), armTool(expected), pointTolerance, directionTolerance,
                row);
  const Pose frame = poseOf(machine.getMatrix_H2T(*Position(machine, joints)));
  error.compareRotation(frame * zero, expected, directionTolerance, row);
  error.compare({frame.column(3), {}}, {expected.column(3), {}}, pointTolerance, 0.0, row);
}

/// Positions for the comparisons with a formula: the same in every run.
class RandomValues {
 public:
  double operator()(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(engine_);
  }
  std::vector<double> operator()(const std::vector<std::pair<double, double>>& ranges) {
    std::vector<double> values;
    for (const auto& [low, high] : ranges) values.push_back((*this)(low, high));
    return values;
  }

 private:
  std::mt19937_64 engine_{20140611};
};

/// What "equal to the formula" means here: double arithmetic on lengths of a few metres.
inline constexpr double kPointMm = 1e-9;
inline constexpr double kDirection = 1e-12;
inline constexpr int kFormulaPositions = 1000;

}  // namespace korvo::test::reference
