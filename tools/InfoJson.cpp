#include "tools/InfoJson.h"

#include <nlohmann/json.hpp>

#include "tools/AnswerText.h"

using nlohmann::json;

namespace korvo::tools {
namespace {

json limitJson(const std::optional<double>& limit) { return limit ? json(*limit) : json(); }

json treeJson(const MachineInfo& info) {
  json nodes = json::array();
  for (const TreeNode& n : info.tree) {
    nodes.push_back({{"rank", n.rank},
                     {"depth", n.depth},
                     {"name", n.name},
                     {"type", n.type},
                     {"index", n.index},
                     {"partSide", n.onPartSide}});
  }
  return nodes;
}

const char* bodyWord(RotaryBody body) {
  return body == RotaryBody::table ? "table" : body == RotaryBody::arm ? "arm" : "head";
}

json senseJson(const RotarySense& s) {
  return {{"body", bodyWord(s.body)},
          {"seenFrom", s.seenFrom},
          {"bodyTurns", s.bodyTurnsCounter ? "counter-clockwise" : "clockwise"},
          {"iso841", s.isIso841},
          {"text", s.text}};
}

json axisJson(const AxisInfo& a) {
  json axis = {{"name", a.name},
               {"type", a.isRotary ? "rotary" : "linear"},
               {"number", a.number},
               {"valueIndex", a.valueIndex},
               {"direction", vectorJson(a.direction)},
               {"min", limitJson(a.min)},
               {"max", limitJson(a.max)},
               {"locked", a.isLocked},
               {"partSide", a.onPartSide}};
  if (a.isRotary) axis["point"] = vectorJson(a.point);
  if (a.sense) axis["sense"] = senseJson(*a.sense);
  return axis;
}

json dhJson(const ToolInfo& tool) {
  json rows = json::array();
  for (const DhRow& r : tool.dhTable) {
    rows.push_back({{"name", r.name},
                    {"alpha", r.dh.alpha * kRadToDeg},
                    {"a", r.dh.a},
                    {"theta", r.dh.theta * kRadToDeg},
                    {"d", r.dh.d}});
  }
  return rows;
}

json toolJson(const ToolInfo& t, const ToolPoint& at) {
  return {{"number", t.number},
          {"type", t.isGun ? "gun" : "tool"},
          {"length", t.length},
          {"nose", vectorJson(at.nose)},
          {"tip", vectorJson(at.tip)},
          {"direction", vectorJson(at.direction)},
          {"kinematicClass", t.kine.kinematicClass},
          {"kinematicClassText", t.kinematicClass},
          {"armType", t.kine.armType},
          {"wristType", t.kine.wristType},
          {"armShapeText", t.armShape},
          {"denavitHartenberg", dhJson(t)},
          {"denavitHartenbergBase", t.dhBase ? matrixJson(*t.dhBase) : json()}};
}

json pairsJson(const MachineInfo& info) {
  json pairs = json::array();
  for (const CollisionPair& p : info.collisions) {
    pairs.push_back(
        {{"a", p.a}, {"b", p.b}, {"indexA", p.indices.first}, {"indexB", p.indices.second}});
  }
  return pairs;
}

json geometryJson(const MachineInfo& info) {
  json files = json::array();
  for (const GeometryFile& g : info.geometry) {
    files.push_back({{"element", g.element}, {"file", g.file}, {"found", g.found}});
  }
  return files;
}

json servedJson(const Session& session, const Served& served) {
  const bool isServed = served.unserved == Unserved::served;
  return {{"kind", toString(served.kind)},
          {"unserved", isServed ? json() : json(toString(served.unserved))},
          {"turning", namesOf(session, served.turning)},
          {"carrying", namesOf(session, served.carrying)},
          {"redundant", namesOf(session, served.redundant)},
          {"locked", namesOf(session, served.locked)},
          {"unsuited", namesOf(session, served.unsuited)},
          {"apart", served.apartMm > 0 ? json(served.apartMm) : json()},
          {"text", served.text}};
}

}  // namespace

json vectorJson(const zgeo::UVec3d& v) { return {v.x + 0.0, v.y + 0.0, v.z + 0.0}; }

json matrixJson(const zgeo::UMatrix& m) {
  json rows = json::array();
  for (int r = 0; r < 4; ++r) rows.push_back({m(r, 0), m(r, 1), m(r, 2), m(r, 3)});
  return rows;
}

json infoJson(const Session& session, const MachineInfo& info, const std::vector<ToolPoint>& atZero,
              const Served& served) {
  json axes = json::array(), tools = json::array();
  for (const AxisInfo& a : info.axes) axes.push_back(axisJson(a));
  for (std::size_t i = 0; i < info.tools.size(); ++i) {
    tools.push_back(toolJson(info.tools[i], atZero[i]));
  }
  return {{"schema", "korvo.info/1"},
          {"units", unitsJson()},
          {"machine", session.machineJson()},
          {"settings", session.settingsJson()},
          {"tree", treeJson(info)},
          {"axes", std::move(axes)},
          {"tools", std::move(tools)},
          {"solver", servedJson(session, served)},
          {"collisionPairs", pairsJson(info)},
          {"geometryFiles", geometryJson(info)}};
}

}  // namespace korvo::tools
