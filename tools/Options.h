#pragma once

#include <array>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/Machine.h"

namespace korvo::tools {

class Verb;

/// The options that every verb on a machine has, as given.
struct CommonOptions {
  std::string machine;  ///< Path, or name of an example.
  std::string format = "auto";
  std::optional<std::string> tool;
  std::optional<std::string> toolLength;
  std::optional<std::string> frame;
  std::vector<std::string> lock;
  std::optional<std::string> strategy;
  std::optional<std::string> trace;
  bool noCheck = false;
  bool json = false;
};

/// Adds MACHINE and the common options to a verb. Those that play no part in its answer (`idle`,
/// as in "--lock") are taken, since one set of options goes with a machine whatever is asked of it;
/// the help leaves them out, and a warning says so to who gives one.
void addCommonOptions(Verb& verb, CommonOptions& options,
                      std::initializer_list<const char*> idle = {});

/// Gives a verb that reads no machine the names of these options, to refuse them with a reason.
void refuseCommonOptions(Verb& verb);

/// Where part zero lies: place (mm) and turns (degrees) about X, then Y, then Z of the machine.
struct PartZero {
  std::array<double, 6> values{};  ///< x, y, z, a, b, c
};

/// The common options, checked as far as this goes without a machine.
struct CheckedOptions {
  Format format = Format::automatic;
  Checks checks = Checks::all;
  int tool = 1;
  bool hasTool = false;  ///< --tool was given.
  std::optional<double> toolLength;
  PartZero partZero;
  std::vector<std::string> lock;
  std::optional<int> strategy;
};

/// "auto", "1" or "2" after --format; throws Failure (usage) for other words.
Format formatOf(const std::string& word);

/// "en" or "fr" after --lang; throws Failure (usage) for other words.
Language languageOf(const std::string& word);

/// Reads the numbers and words; throws Failure (usage) for what is none.
CheckedOptions checked(const CommonOptions& options);

}  // namespace korvo::tools
