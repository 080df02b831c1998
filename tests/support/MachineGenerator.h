#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <rapidcheck.h>

#include "kinematics/KMachine.h"

/// The one generator of machines: properties, fuzzing and benchmarks draw from it. It writes
/// definition texts and loads them through the exported interface, so what it makes is what a user
/// could have written.
namespace korvo::test {

/// The kinds of machine, plainest first.
enum class Topology {
  mill,
  fourAxis,
  tableTable,
  headTable,
  headHead,
  gantry,  ///< With a second linear axis parallel to the first.
  guns,    ///< A tool and two drill guns on one head.
  arm,     ///< Six joints.
  armOnRail,
};
inline constexpr int kTopologies = 9;
const char* nameOf(Topology topology);

/// The numbers that decide everything about a machine, one for each decision. Where they have ended
/// every decision is 0, and 0 is always the plainest choice: so fewer and smaller numbers mean a
/// plainer machine, and shrinking the numbers shrinks the machine.
class Choices {
 public:
  explicit Choices(unsigned seed);  ///< Enough numbers for any machine, always the same for a seed.
  explicit Choices(std::vector<std::uint8_t> numbers) : numbers_(std::move(numbers)) {}

  /// The next decision: 0 to n - 1.
  int below(int n);
  /// True in one of n; false is the plain choice.
  bool oneIn(int n) { return below(n) == n - 1; }
  template <typename T, std::size_t N>
  const T& pick(const T (&table)[N]) {
    return table[below(static_cast<int>(N))];
  }

 private:
  std::vector<std::uint8_t> numbers_;
  std::size_t next_ = 0;
};

/// A machine as its author writes it.
struct MachineText {
  Topology topology = Topology::mill;
  int version = 1;
  std::string text;
};
std::ostream& operator<<(std::ostream& out, const MachineText& machine);

/// A definition of a machine of any kind, or of the one given. Every such definition finalises: one
/// frame, the part reached from the frame, at least one tool, 3 to 7 axes, no null direction.
/// Awkward values are favoured: directions on the -1, 0, 1 grid, almost parallel to a neighbour or
/// tilted, points on the origin.
MachineText machineText(Choices& choices);
MachineText machineText(Choices& choices, Topology topology);

/// The machine of a definition, with tool 1 current; null when it does not finalise.
std::unique_ptr<zkin::KMachine> loadMachine(const std::string& text, int version);
std::unique_ptr<zkin::KMachine> loadMachine(const MachineText& machine);

/// Releases a position as the library asks.
struct ReleasePosition {
  void operator()(zkin::KMachineValueBase* p) const { zkin::KMachineValueBase::_release(p); }
};
using Position = std::unique_ptr<zkin::KMachineValueBase, ReleasePosition>;

Position positionOf(const zkin::KMachine& machine, const std::vector<double>& values = {});

/// Values for a position: zeros, quarter turns and whole numbers favoured.
std::vector<double> positionValues(Choices& choices, int count);

/// RapidCheck's view of the above; counterexamples print as definition text and numbers.
rc::Gen<MachineText> anyMachine();
rc::Gen<MachineText> anyMachine(Topology topology);
rc::Gen<std::vector<double>> anyPosition(const zkin::KMachine& machine);

}  // namespace korvo::test
