#include "tools/Session.h"

#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <numbers>

#include "platform/zgeo/UTools.h"
#include "toolkit/Text.h"
#include "tools/Checked.h"
#include "tools/Examples.h"
#include "tools/Failure.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"

using nlohmann::json;
using zgeo::UMatrix;
using zgeo::UVec3d;

namespace korvo::tools {

namespace {

/// Writes a line for each traced one, names as the definition file has them.
class TraceText : public zgeo::UTraceSink {
 public:
  explicit TraceText(std::ostream& stream) : stream_(stream) {}
  void line(const std::wstring& text, std::chrono::system_clock::time_point) override {
    stream_ << shownText(text) << '\n';
  }

 private:
  std::ostream& stream_;
};

}  // namespace

/// Sends the library's trace to a file or to standard error while it lives.
class Session::Trace {
 public:
  explicit Trace(const std::string& file) {
    if (file != "-") open(file);
    sink_.emplace(file == "-" ? std::cerr : static_cast<std::ostream&>(stream_));
    zgeo::UTools::_setTraceSink(&*sink_);
  }
  ~Trace() { zgeo::UTools::_setTraceSink(nullptr); }
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;

  void close() {
    zgeo::UTools::_setTraceSink(nullptr);
    if (!stream_.is_open()) return;
    stream_.close();
    if (!stream_) fail("expected room for the whole trace, found a full or failing disk");
  }

 private:
  void open(const std::string& file) {
    name_ = file;
    stream_.open(file);
    if (!stream_) fail("expected a file to write the trace to, found none");
  }

  [[noreturn]] void fail(const std::string& problem) const {
    throw Failure(Exit::refused, name_ + ": " + problem);
  }

  std::string name_;
  std::ofstream stream_;
  std::optional<TraceText> sink_;
};

namespace {

// What was found but for notes, and a hint when the file looks like the other format version.
std::string linesOf(const Loaded& loaded) {
  constexpr int kMost = 20;
  std::string text;
  int count = 0;
  for (const Diagnostic& d : loaded.reasons) {
    if (d.severity == Severity::note) continue;
    if (++count <= kMost) text += (text.empty() ? "" : "\n") + toString(d);
  }
  if (count > kMost) text += "\nkorvo: and " + std::to_string(count - kMost) + " more";
  if (!loaded) text += "\nkorvo: 'korvo check' says how to mend it";
  const int taken = loaded.format.version, likely = loaded.likely.version;
  if (text.empty() || likely == 0 || likely == taken) return text;
  return text + "\nkorvo: read as format " + std::to_string(taken) +
         ", but the axis lines look like " + std::to_string(likely) + ": try --format " +
         std::to_string(likely);
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

bool isSameFile(const std::string& a, const std::filesystem::path& b) {
  std::error_code error;
  return std::filesystem::equivalent(a, b, error) && !error;
}

}  // namespace

Session::Session(const CommonOptions& options, const std::optional<std::string>& table)
    : options_(checked(options)),
      path_(findMachine(options.machine)),
      file_(shownText(path_.string())) {
  loadMachine();  // before the trace file is made: a refused machine leaves no file behind
  openTrace(table, options.trace);
  if (trace_) loadAgain();
  setTool();
  setPartZero();
  lockAxes();
  if (options_.strategy) (*machine_)->setStrategy(*options_.strategy);
}

Session::~Session() = default;

void Session::openTrace(const std::optional<std::string>& table,
                        const std::optional<std::string>& trace) {
  if (!trace) return;
  const std::string tableFile = table ? *table == "-" ? "/dev/stdin" : *table : "";
  if (isSameFile(*trace, path_) || isSameFile(*trace, tableFile)) {
    failUsage("a file of its own after --trace", inQuotes(*trace) + ", which is read");
  }
  trace_ = std::make_unique<Trace>(*trace);
}

void Session::closeTrace() {
  if (trace_) trace_->close();
}

void Session::loadMachine() {
  Loaded loaded = load(path_, options_.format, options_.checks);
  const std::string lines = linesOf(loaded);
  if (!loaded) throw Failure(Exit::refused, lines);
  if (!lines.empty()) say(lines);
  machine_ = std::move(loaded.machine);
  format_ = loaded.format;
  findings_ = std::move(loaded.reasons);
}

// The trace is that of the library reading the file, not of the checks that ask the machine.
void Session::loadAgain() {
  Loaded loaded = load(path_, options_.format, Checks::endless);
  if (!loaded) throw Failure(Exit::refused, linesOf(loaded));
  machine_ = std::move(loaded.machine);
}

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
    if (place < 0) failUsage("axes among " + joined(names.all()) + " after --lock", inQuotes(name));
    locked_[static_cast<std::size_t>(place)] = true;
  }
  for (int r = 0; r < (*machine_)->getElemNumber(); ++r) {
    zkin::KMachineElem* e = (*machine_)->getElemByRank(r);
    const int place = e->getValueIndex();
    if (place >= 0 && isLocked(place)) e->setLocked(true);
  }
}

// The reason for the format is said in English alone.
std::string Session::settingsText(Language l) const {
  std::string zero;
  for (const double v : options_.partZero.values) zero += (zero.empty() ? "" : ",") + exact(v);
  const std::vector<std::string> locked = lockedNames(machine_->axisNames(), locked_);
  const std::string format = std::to_string(format_.version);
  const std::string length = exact((*machine_)->getTHELength(tool()));
  return in(l, "format " + format + " (" + format_.reason + "); tool ",
            "format " + format + " ; outil ") +
         std::to_string(tool()) +
         in(l, ", length " + length + " mm; part zero ",
            ", longueur " + length + " mm ; zéro pièce ") +
         zero + in(l, "; strategy ", " ; stratégie ") + std::to_string((*machine_)->getStrategy()) +
         in(l, "; locked: ", " ; bloqués : ") +
         (locked.empty() ? in(l, "none", "aucun") : joined(locked));
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
