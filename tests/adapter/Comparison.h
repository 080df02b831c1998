#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "adapter/machineFromDefinition.h"
#include "kinematics/KMachine.h"
#include "tests/adapter/External.h"
#include "tests/support/Dice.h"
#include "tests/support/MachineGenerator.h"

/// Both models of one machine, asked the same.
namespace korvo::test {

/// What a comparison found, and of how much.
struct Comparison {
  std::string name;
  int linear = 0, rotary = 0;  ///< Axes.
  int positions = 0;
  double largest = 0.0;  ///< Difference of a component of tool point, tip or direction.
  int targets = 0;       ///< For angles, for complete positions and for the nearest one each.
  int solutions = 0;     ///< Of the definition's model.
  int missing = 0;       ///< That the external one has not.
  int more = 0;          ///< That only the external one has.
  int solved = 0;        ///< Targets that the definition's model has a nearest solution for,
  int solvedToo = 0;     ///< and that the external one has.
  int missed = 0;        ///< Nearest solutions that are off the target, of either model.
  std::string note;
};

/// A loaded machine and the adapter over the external machine made of it, with the same tool
/// length, for tool 1.
class BothModels {
 public:
  explicit BothModels(std::unique_ptr<zkin::KMachine> definition,
                      zkin::Bodies bodies = zkin::Bodies::none);

  const zkin::KMachine& definition() const { return *definition_; }
  const Adapter& adapter() const { return *adapter_; }

  /// What can be said of the axes of tool 1.
  int linearAxes() const { return static_cast<int>(adapter_->translations().size()); }
  int rotaryAxes() const { return static_cast<int>(adapter_->rotations().size()); }
  bool areRotaryLimited() const;    ///< At both ends.
  bool areRotaryParallel() const;   ///< The first two.
  bool areLinearDependent() const;  ///< Three linear axes, at the zero position.

  /// Of more than three linear axes those that the definition's model tries last, the ones next to
  /// the root: their code is its answer.
  bool areLastThreeDependent() const;

  /// Values inside the limits and within one turn or a metre.
  std::vector<double> anyPosition(Dice& dice) const;

  void compareForward(Dice& dice, int count, Comparison& result) const;
  void compareAngles(Dice& dice, int count, Comparison& result) const;
  void compareConfigs(Dice& dice, int count, Comparison& result) const;
  void compareNearest(Dice& dice, int count, Comparison& result) const;

  /// Largest difference of a corner at some positions; infinite where the numbers of triangles
  /// differ, or are 0.
  double compareTriangles(Dice& dice, int count) const;

 private:
  struct Target {
    zgeo::UVec3d tip, dir;
  };

  Target anyTarget(Dice& dice) const;
  std::vector<std::vector<double>> clearOfLimits(const std::vector<std::vector<double>>& rows,
                                                 const std::vector<Register>& registers) const;
  bool isOn(const Target& target, const std::vector<double>& values) const;
  void compareRows(std::vector<std::vector<double>> ours, std::vector<std::vector<double>> theirs,
                   const std::vector<Register>& registers, Comparison& result) const;

  std::unique_ptr<zkin::KMachine> definition_;
  std::unique_ptr<Adapter> adapter_;
};

/// Gives both rotary axes limits at both ends, a different pair for each seed.
void limitRotaryAxes(zkin::KMachine& machine, unsigned seed);

/// One row of a Markdown table, and its head.
std::string toRow(const Comparison& c);
extern const char* const kTableHead;

}  // namespace korvo::test
