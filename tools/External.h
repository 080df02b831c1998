#pragma once

#include <cstddef>
#include <vector>

#include "adapter/NMachine.h"
#include "adapter/machineFromDefinition.h"
#include "platform/zgeo/UMatrix.h"
#include "toolkit/answer/Answer.h"
#include "toolkit/export/Bodies.h"
#include "tools/Session.h"
#include "tools/ToolPoint.h"

namespace korvo::tools {

/// The machine of a session as one of the external kinematics library, with the session's tool,
/// tool length, part zero and locks.
class External {
 public:
  /// Throws Failure when the machine cannot be made into such a one.
  explicit External(const Session& session, zkin::Bodies bodies = zkin::Bodies::none,
                    Language language = Language::english);
  ~External() { adapter_.reset(true); }
  External(const External&) = delete;
  External& operator=(const External&) = delete;

  ToolPoint toolPoint(const Position& v) const;      ///< In part zero.
  zgeo::UMatrix toolFrame(const Position& v) const;  ///< In the machine frame.
  zgeo::UMatrix tipFrame(const Position& v) const;   ///< In part zero.

  /// The bodies at a position, in the machine frame; none unless it was made with them.
  std::vector<Body> bodies(const Position& v) const;

  /// Positions on a target in the machine frame: the one that the library takes from `from`, or all
  /// of them, the nearest `most`. Only what is verified with the library's own model, is inside
  /// the limits and leaves locked axes where they are counts.
  Answers nearest(const Target& target, const Position& from) const;
  Answers all(const Target& target, const Position& from, std::size_t most) const;

 private:
  void addIfGood(const Ombra::Kin::MachinePosition& p, const Target& target, const Position& from,
                 Answers& answers) const;
  bool isGood(const Answer& answer, const Position& from) const;
  Ombra::Kin::MachinePosition toExternal(const Position& v) const;

  Answer none(const Target& target, const Position& from) const;

  const Session& session_;
  Language language_;
  zkin::NMachine adapter_;
};

}  // namespace korvo::tools
