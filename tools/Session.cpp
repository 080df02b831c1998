#include "tools/Session.h"

#include <fstream>
#include <iostream>
#include <numbers>

#include "platform/zgeo/UTools.h"
#include "toolkit/Text.h"
#include "tools/Examples.h"
#include "tools/Failure.h"
#include "tools/Numbers.h"

using nlohmann::json;
using zgeo::UMatrix;
using zgeo::UVec3d;

namespace korvo::tools {

/// Sends the library's trace to a file or to standard error while it lives.
class Session::Trace {
 public:
  explicit Trace(const std::string& file) {
    if (file.empty()) return;
    if (file != "-") open(file);
    sink_.emplace(file == "-" ? std::cerr : static_cast<std::ostream&>(stream_));
    zgeo::UTools::_setTraceSink(&*sink_);
  }
  ~Trace() { zgeo::UTools::_setTraceSink(nullptr); }
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;

 private:
  void open(const std::string& file) {
    stream_.open(file);
    if (!stream_) {
      throw Failure(Exit::refused, file + ": expected a file to write the trace to, found none");
    }
  }

  std::ofstream stream_;
  std::optional<zgeo::UStreamTraceSink> sink_;
};

namespace {

std::string joined(const std::vector<Diagnostic>& diagnostics) {
  std::string text;
  for (const Diagnostic& d : diagnostics) text += (text.empty() ? "" : "\n") + toString(d);
  return text;
}

constexpr double kDegToRad = std::numbers::pi / 180.0;

// Universal (part zero) to machine: turned about the machine's X, then Y, then Z, then shifted.
UMatrix partZeroMatrix(const std::array<double, 6>& v) {
  return UMatrix::_translation({v[0], v[1], v[2]}) *
         UMatrix::_rotation({0, 0, 1}, v[5] * kDegToRad) *
         UMatrix::_rotation({0, 1, 0}, v[4] * kDegToRad) *
         UMatrix::_rotation({1, 0, 0}, v[3] * kDegToRad);
}

std::vector<std::string> lockedNames(const AxisNames& names, const std::vector<bool>& locked) {
  std::vector<std::string> list;
  for (int i = 0; i < names.size(); ++i) {
    if (locked[static_cast<std::size_t>(i)]) list.push_back(names[i]);
  }
  return list;
}

std::string list(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text.empty() ? "none" : text;
}

}  // namespace

Session::Session(const CommonOptions& options)
    : options_(checked(options)), trace_(std::make_unique<Trace>(options.trace)) {
  const std::filesystem::path path = findMachine(options.machine);
  file_ = toUtf8(toWide(path.string()));
  Loaded loaded = load(path, options_.format);
  if (!loaded) throw Failure(Exit::refused, joined(loaded.reasons));
  if (!loaded.reasons.empty()) std::cerr << joined(loaded.reasons) << '\n';
  machine_ = std::move(loaded.machine);
  format_ = loaded.format;
  setTool();
  setPartZero();
  lockAxes();
  if (options_.strategy) (*machine_)->setStrategy(*options_.strategy);
}

Session::~Session() = default;

void Session::setTool() {
  zkin::KMachine& machine = **machine_;
  machine.setCurrentTool(options_.tool);
  if (machine.getCurrentTool() != options_.tool) {
    failUsage("a tool from 1 to " + std::to_string(machine.getToolNumber()) + " after --tool",
              std::to_string(options_.tool));
  }
  if (options_.toolLength) machine.setTHELength(*options_.toolLength, options_.tool);
}

void Session::setPartZero() { (*machine_)->setUNI2MAC(partZeroMatrix(options_.partZero.values)); }

void Session::lockAxes() {
  const AxisNames& names = machine_->axisNames();
  locked_.assign(static_cast<std::size_t>(names.size()), false);
  for (const std::string& name : options_.lock) {
    const int place = names.find(name);
    if (place < 0) failUsage("axes among " + list(names.all()) + " after --lock", "'" + name + "'");
    locked_[static_cast<std::size_t>(place)] = true;
  }
  for (int r = 0; r < (*machine_)->getElemNumber(); ++r) {
    zkin::KMachineElem* e = (*machine_)->getElemByRank(r);
    const int place = e->getValueIndex();
    if (place >= 0 && isLocked(place)) e->setLocked(true);
  }
}

std::string Session::settingsText() const {
  std::string zero;
  for (const double v : options_.partZero.values) zero += (zero.empty() ? "" : ",") + rounded(v);
  return "format " + std::to_string(format_.version) + " (" + format_.reason + "); tool " +
         std::to_string(tool()) + ", length " + rounded((*machine_)->getTHELength(tool())) +
         " mm; part zero " + zero + "; strategy " + std::to_string((*machine_)->getStrategy()) +
         "; locked: " + list(lockedNames(machine_->axisNames(), locked_));
}

json Session::settingsJson() const {
  return {{"tool", tool()},
          {"toolLength", (*machine_)->getTHELength(tool())},
          {"partZero", options_.partZero.values},
          {"strategy", (*machine_)->getStrategy()},
          {"locked", lockedNames(machine_->axisNames(), locked_)}};
}

json Session::machineJson() const {
  return {{"file", file_}, {"format", format_.version}, {"formatReason", format_.reason}};
}

json unitsJson() { return {{"length", "mm"}, {"angle", "degree"}}; }

}  // namespace korvo::tools
