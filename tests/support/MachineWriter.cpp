#include "tests/support/MachineWriter.h"

#include <charconv>
#include <string_view>

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

/// The shortest text that reads back as the same double.
std::string number(double value) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

std::string vector(const UVec3d& v) { return number(v.x) + "," + number(v.y) + "," + number(v.z); }

/// Names come from bytes, one character each.
std::string bytes(const std::wstring& text) {
  std::string out;
  for (const wchar_t c : text) out += static_cast<char>(c);
  return out;
}

/// The element that `e` followed in the file. On the part side the links were reversed: there it is
/// the one that now points at `e`.
const KMachineElem* predecessorInFile(const KMachine& machine, const KMachineElem& e) {
  const bool reversed = e.isInverted() || e.getElemType() == KMachineElem::KMET_TYPE_PART;
  if (!reversed) return machine.getPrevElem(&e);
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    const KMachineElem* const other = machine.getElemByRank(rank);
    if (other->isInverted() && other->getPrevIndex() == e.getElemIndex()) return other;
  }
  return nullptr;
}

std::string axisHead(const char* keyword, const KMachineElem& e, int version) {
  std::string text = std::string(keyword) + "=" + bytes(e.getElemName()) + ",";
  if (version != 2) text += std::to_string(e.getElemIndex()) + ",";
  return text + vector(e.getElemAxis());
}

std::string partFrame(const KMachineElem& e) {
  return vector(e.getElemAxisX()) + "," + vector(e.getElemAxis() ^ e.getElemAxisX()) + ",0,0,0";
}

std::string declaration(const KMachineElem& e, int version) {
  switch (e.getElemType()) {
    case KMachineElem::KMET_TYPE_BATI:
      return version == 2 ? "frame=" + vector(e.getElemAxis()) : "frame=";
    case KMachineElem::KMET_TYPE_PART:
      return "part=" + partFrame(e);
    case KMachineElem::KMET_TYPE_TOOL:
      return "tool=" + vector(e.getElemAxis()) + "," + vector(e.getElemPivot());
    case KMachineElem::KMET_TYPE_DGUN:
      return "gun=" + vector(e.getElemAxis()) + "," + vector(e.getElemPivot());
    case KMachineElem::KMET_TYPE_ALIN:
      return axisHead("axis", e, version);
    case KMachineElem::KMET_TYPE_AROT:  // two integers to skip, so that none of the point's are
      return axisHead("rotation", e, version) + ",0,0," + vector(e.getElemPivot());
    default:
      return "geom=";
  }
}

std::string geometry(const KMachineElem& e) {
  if (e.getGeomFile().empty()) return "";
  int r, g, b;
  e.getGeomRGB(r, g, b);
  return bytes(e.getGeomFile()) + "," + std::to_string(r) + "," + std::to_string(g) + "," +
         std::to_string(b);
}

std::string elementLine(const KMachineElem& e, int version) {
  std::string text = declaration(e, version);
  const std::string file = geometry(e);
  if (!file.empty() && text.back() != '=') text += ",";
  return text + file + "\n";
}

std::string hookLine(const KMachine& machine, const KMachineElem& e) {
  UVec3d point;
  const KMachineElem* const target = machine.getElemByIndex(e.getHook(point));
  if (target == nullptr) return "";
  return "loop=" + bytes(target->getElemName()) + "," + vector(point) + "\n";
}

std::string limitLines(const KMachineElem& e) {
  const std::string name = bytes(e.getElemName());
  std::string text;
  if (e.hasMin()) text += "courseminimum=" + name + "," + number(e.getMin()) + "\n";
  if (e.hasMax()) text += "coursemaximum=" + name + "," + number(e.getMax()) + "\n";
  return text;
}

std::string elements(const KMachine& machine) {
  std::string text;
  const KMachineElem* before = nullptr;
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    const KMachineElem* const e = machine.getElemByRank(rank);
    const KMachineElem* const wanted = predecessorInFile(machine, *e);
    if (wanted != before && wanted != nullptr)
      text += "lien=" + bytes(wanted->getElemName()) + "\n";
    text += elementLine(*e, machine.getVersion()) + hookLine(machine, *e) + limitLines(*e);
    before = e;
  }
  return text;
}

/// Tools and bodies share their names; only the first of a name can be written.
bool isFoundByName(const KMachine& machine, const KMachineElem* e) {
  return e != nullptr && machine.getElemByName(e->getElemName().c_str()) == e;
}

std::string collisions(const KMachine& machine) {
  std::string text;
  for (const auto& [a, b] : machine.getCollCheck()) {
    const KMachineElem* const first = machine.getElemByIndex(a);
    const KMachineElem* const second = machine.getElemByIndex(b);
    if (!isFoundByName(machine, first) || !isFoundByName(machine, second)) continue;
    text += "collisions=" + bytes(first->getElemName()) + "," + bytes(second->getElemName()) + "\n";
  }
  return text;
}

std::string rotationPoints(const KMachine& machine) {
  std::string text;
  for (int i = 0; const auto* point = machine.getRotationPoint(i); ++i) {
    text += "rotationpoint=";
    for (int k = 0; k < point->size(); ++k) text += (k == 0 ? "" : ",") + number((*point)[k]);
    text += "\n";
  }
  return text;
}

}  // namespace

std::string definitionText(const KMachine& machine) {
  return elements(machine) + "strategy=" + std::to_string(machine.getStrategy()) +
         "\nmode=" + std::to_string(machine.getMode_RTCP()) + "\n" + collisions(machine) +
         rotationPoints(machine);
}

}  // namespace korvo::test
