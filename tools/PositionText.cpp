#include "tools/PositionText.h"

#include <nlohmann/json.hpp>
#include <set>

#include "tools/Failure.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"

using zgeo::UVec3d;

namespace korvo::tools {
namespace {

double valueOf(const std::string& text, const std::string& option) {
  const std::optional<double> value = numberOf(text);
  if (!value) failUsage("a finite decimal number in " + option, inQuotes(text));
  return *value;
}

void setNamed(Position& v, const std::vector<std::string>& parts, const std::string& option) {
  std::set<int> seen;
  for (const std::string& part : parts) {
    const std::size_t equals = part.find('=');
    if (equals == std::string::npos) failUsage("AXIS=VALUE in " + option, inQuotes(part));
    const std::string_view name = trimmed(std::string_view(part).substr(0, equals));
    const int place = v.names().find(name);
    if (place < 0) {
      failUsage("axes among " + joined(v.names().all()) + " in " + option, inQuotes(name));
    }
    if (!seen.insert(place).second) {
      failUsage("each axis once in " + option, inQuotes(name) + " again");
    }
    v[place] = valueOf(part.substr(equals + 1), option);
  }
}

void setAll(Position& v, const std::vector<std::string>& parts, const std::string& option) {
  if (static_cast<int>(parts.size()) != v.size()) {
    failUsage(std::to_string(v.size()) + " values (" + joined(v.names().all()) + ") in " + option,
              std::to_string(parts.size()));
  }
  for (int i = 0; i < v.size(); ++i) v[i] = valueOf(parts[static_cast<std::size_t>(i)], option);
}

std::string listed(const Position& v, std::string (*textOfValue)(double)) {
  std::string text;
  for (int i = 0; i < v.size(); ++i) {
    text += (i ? " " : "") + v.names()[i] + "=" + textOfValue(v[i]);
  }
  return text;
}

}  // namespace

Position positionOf(const Session& session, const std::string& text, const std::string& option) {
  Position v = session.machine().position();
  if (text.find('=') != std::string::npos) {
    setNamed(v, split(text, ','), option);
  } else {
    setAll(v, split(text, ','), option);
  }
  return v;
}

UVec3d vectorOf(const std::string& text, const std::string& wanted) {
  const std::vector<std::string> parts = split(text, ',');
  double values[3] = {};
  bool isGood = parts.size() == 3;
  for (std::size_t i = 0; isGood && i < 3; ++i) {
    const std::optional<double> value = numberOf(parts[i]);
    isGood = value.has_value();
    values[i] = value.value_or(0.0);
  }
  if (!isGood) failUsage(wanted, inQuotes(text));
  return {values[0], values[1], values[2]};
}

std::string textOf(const Position& v) { return listed(v, plain); }

std::string roundedText(const Position& v) { return listed(v, rounded); }

std::string textOf(const UVec3d& v) {
  return rounded(v.x) + "  " + rounded(v.y) + "  " + rounded(v.z);
}

nlohmann::json jsonOf(const Position& v) {
  nlohmann::json values = nlohmann::json::array();
  for (int i = 0; i < v.size(); ++i) values.push_back({{"axis", v.names()[i]}, {"value", v[i]}});
  return values;
}

}  // namespace korvo::tools
