#pragma once

#include <locale>
#include <memory>
#include <set>
#include <sstream>
#include <string>

#include "kinematics/KMachine.h"
#include "tests/support/TraceCapture.h"

/// A machine in words, so that a table row states a whole state in one text.
namespace korvo::test {

/// Numbers as rows of tables have them, whatever locale the program is in.
class WordStream : public std::ostringstream {
 public:
  WordStream() { imbue(std::locale::classic()); }
};

inline std::string words(const zgeo::UVec3d& v) {
  WordStream out;
  out << v.x + 0.0 << ' ' << v.y + 0.0 << ' ' << v.z + 0.0;  // + 0.0: no "-0"
  return out.str();
}

/// "NAME(index<previous)" and every field that is not at its default.
inline std::string describe(const zkin::KMachineElem& e) {
  WordStream out;
  zgeo::UVec3d hookPoint;
  int rgb[3];
  e.getGeomRGB(rgb);
  out << narrow(e.getElemName()) << '(' << e.getElemIndex() << '<' << e.getPrevIndex() << ')';
  if (e.isInverted()) out << " inv";
  if (!(e.getElemAxis() == zgeo::UVec3d())) out << " dir " << words(e.getElemAxis());
  if (!(e.getElemAxisX() == zgeo::UVec3d())) out << " vX " << words(e.getElemAxisX());
  if (!(e.getElemPivot() == zgeo::UVec3d())) out << " at " << words(e.getElemPivot());
  if (!e.getGeomFile().empty()) {
    out << " file " << narrow(e.getGeomFile()) << ' ' << rgb[0] << ' ' << rgb[1] << ' ' << rgb[2];
  }
  if (e.hasMin()) out << " min " << e.getMin();
  if (e.hasMax()) out << " max " << e.getMax();
  const int hook = e.getHook(hookPoint);
  if (hook != -10 || !(hookPoint == zgeo::UVec3d()))
    out << " hook " << hook << " at " << words(hookPoint);
  return out.str();
}

inline std::string describe(const zkin::KMachine& machine) {
  std::string all;
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    all += (rank ? "; " : "") + describe(*machine.getElemByRank(rank));
  }
  return all;
}

/// The chain of an element by name, root first.
inline std::string chainWords(const std::vector<const zkin::KMachineElem*>& chain) {
  std::string all;
  for (const zkin::KMachineElem* e : chain)
    all += (all.empty() ? "" : " ") + narrow(e->getElemName());
  return all;
}

/// What lines that are no elements leave: strategy, mode, limits, hooks, pairs, rotation points.
inline std::set<std::string> facts(const zkin::KMachine& machine) {
  std::set<std::string> all;
  all.insert("strategy " + std::to_string(machine.getStrategy()));
  all.insert("mode " + std::to_string(machine.getMode_RTCP()));
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    const zkin::KMachineElem& e = *machine.getElemByRank(rank);
    WordStream min, max, hook;
    zgeo::UVec3d point;
    min << narrow(e.getElemName()) << " min " << e.getMin();
    max << narrow(e.getElemName()) << " max " << e.getMax();
    hook << narrow(e.getElemName()) << " hook " << e.getHook(point) << " at " << words(point);
    if (e.hasMin()) all.insert(min.str());
    if (e.hasMax()) all.insert(max.str());
    if (e.getHookIndex() != -10 || !(point == zgeo::UVec3d())) all.insert(hook.str());
  }
  for (const auto& [a, b] : machine.getCollCheck()) {
    all.insert("pair " + std::to_string(a) + " " + std::to_string(b));
  }
  for (int i = 0; machine.getRotationPoint(i); ++i) {
    WordStream point;
    point << "point";
    for (int k = 0; k < 12; ++k) point << ' ' << (*machine.getRotationPoint(i))[k];
    all.insert(point.str());
  }
  return all;
}

/// The facts of `after` that `before` does not have, as "+fact", and the reverse as "-fact".
inline std::string change(const zkin::KMachine& before, const zkin::KMachine& after) {
  const std::set<std::string> old = facts(before), now = facts(after);
  std::string all;
  for (const std::string& fact : now) {
    if (!old.count(fact)) all += (all.empty() ? "+" : ", +") + fact;
  }
  for (const std::string& fact : old) {
    if (!now.count(fact)) all += (all.empty() ? "-" : ", -") + fact;
  }
  return all;
}

}  // namespace korvo::test
