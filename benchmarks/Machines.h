#pragma once

#include <string>
#include <vector>

#include "benchmarks/peers/TableAc.h"
#include "toolkit/Machine.h"

/// The machines that the rows ask, and positions of theirs.
namespace korvo::bench {

/// An example machine; ends the program when it does not load.
Machine example(const std::string& name);

/// Any definition file.
Machine loaded(const std::string& path, Format format);

/// Gives every rotary axis the same limits, so many degrees each way.
void limitTurns(Machine& machine, double degrees);

/// Drawn inside the travels, and at most so many degrees either way.
std::vector<Position> positions(const Machine& machine, int count, double degrees = 180);

/// Positions of table-ac as its formulas by hand take them.
std::vector<TableAc::Entry> entriesOf(const std::vector<Position>& all);

/// What a tool shall reach.
struct Aim {
  zgeo::UVec3d tip, direction;
};

/// Where the tool is at each of the positions.
std::vector<Aim> aims(const Machine& machine, const std::vector<Position>& all);

double difference(const zgeo::UMatrix& a, const zgeo::UMatrix& b);  ///< The largest of any value.

}  // namespace korvo::bench
