#include "benchmarks/peers/PlainTable.h"

#include <charconv>
#include <cstdio>
#include <fstream>
#include <memory>

namespace korvo::bench {
namespace {

using zgeo::UVec3d;

void append(std::string& text, double value) {
  char digits[32];
  text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

void append(std::string& text, const UVec3d& v) {
  for (const double value : {v.x, v.y, v.z}) {
    text += ',';
    append(text, value);
  }
}

/// Where the machine has the values of the columns.
struct Places {
  explicit Places(const zkin::KMachine& machine) {
    const char* const names[] = {"X", "Y", "Z", "A", "C"};
    for (int i = 0; i < 5; ++i) at[i] = machine.getElemByName(names[i])->getValueIndex();
  }
  int at[5];
};

void read(const std::string& line, const Places& places, zkin::KMachineValueBase& v) {
  const char* from = line.data();
  for (const int place : places.at) {
    from = std::from_chars(from, line.data() + line.size(), v[place]).ptr + 1;
  }
}

}  // namespace

void plainForward(const zkin::KMachine& machine, const std::string& table, const std::string& out) {
  const Places places(machine);
  zkin::KMachineValue<5> v;
  std::ifstream in(table);
  std::ofstream file(out, std::ios::binary);
  std::string line, text;
  std::getline(in, line);
  file << "line,status,nose_x,nose_y,nose_z,tip_x,tip_y,tip_z,i,j,k,outside_limits\n";
  for (int number = 2; std::getline(in, line); ++number) {
    read(line, places, v);
    UVec3d nose, direction;
    machine.getTool(v, nose, direction, 1);
    text = std::to_string(number);
    text += ",ok";
    append(text, nose);
    append(text, nose);  // a tool of length 0 ends at the nose
    append(text, direction);
    text += ",\n";
    file << text;
  }
}

}  // namespace korvo::bench
