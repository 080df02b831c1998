#pragma once

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "toolkit/answer/Answer.h"
#include "tools/Session.h"

namespace korvo::tools {

/// A position that was found, for people: values, tip, direction, residuals, singularity, margins;
/// of one in a list the least margin alone.
void printFound(std::ostream& out, const Session& session, const Answer& answer,
                Language language = Language::english, bool isListed = false);

/// Why there is none.
void printNone(std::ostream& out, const Session& session, const Answer& answer,
               Language language = Language::english);

nlohmann::json foundJson(const Session& session, const Answer& answer);
nlohmann::json reasonJson(const Session& session, const Answer& answer,
                          Language language = Language::english);

/// The sentence of a reason. Where the direction alone misses, by what rounding leaves of it, that
/// is said, and the direction that is reached with all its digits.
std::string reasonText(const Session& session, const Answer& answer, Language language);

/// Margins of every axis, for people and for programs.
void printMargins(std::ostream& out, const Session& session, const Position& at,
                  const std::vector<Margin>& margins, Language language = Language::english);
nlohmann::json marginsJson(const Session& session, const std::vector<Margin>& margins);

/// Whether positions of that solver have branches.
bool hasBranches(SolverKind kind);

/// Whether the axis at that place is rotary, and the word of its unit.
bool isRotary(const Session& session, int place);
std::string unitWord(const Session& session, int place, Language language = Language::english);

/// Names of the axes at these places.
std::vector<std::string> namesOf(const Session& session, const std::vector<int>& places);

/// Names of the axes outside.
std::vector<std::string> namesOf(const Session& session, const std::vector<Margin>& margins);

/// The unit of Answer::by: "degree", "mm" or "" when the reason has no amount.
std::string unitOf(const Answer& answer);

inline constexpr double kRadToDeg = 57.29577951308232;

}  // namespace korvo::tools
