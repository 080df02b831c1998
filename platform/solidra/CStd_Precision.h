#pragma once

/// Lengths that callers hand to the operations on wires.
class CStd_Precision {
 public:
  /// Distance between a curve and what stands for it, in mm: a tenth of the usual mesh tolerance.
  static constexpr double deviation = 0.001;
};
