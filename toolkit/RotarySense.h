#pragma once

#include <string>

#include "platform/zgeo/UVec3d.h"
#include "toolkit/Export.h"
#include "toolkit/Language.h"

namespace korvo {

/// What carries a rotary axis.
enum class RotaryBody {
  table,  ///< Turns the part.
  head,   ///< Turns the tool.
  arm,    ///< Turns the tool, as a joint of an articulated arm.
};

/// Which way a rotary axis turns at a positive value.
struct RotarySense {
  RotaryBody body = RotaryBody::head;
  std::string seenFrom;           ///< "+Z", or "(0, 0.7071, 0.7071)" for a tilted axis.
  bool bodyTurnsCounter = false;  ///< Counter-clockwise seen from there, at a positive value.
  bool isIso841 = false;          ///< Positive is the sense of ISO 841.
  std::string text;               ///< All of it in a sentence.
};

/// Which way head or table physically turns at +90.
///
/// A direction in a definition file is that of the tool's motion relative to the part,
/// right-handed. A head turns so itself; a table must turn the other way. It is looked at from the
/// positive end of the coordinate axis that A, B, C turn about (X, Y, Z), for other names and for
/// axes square to it of the one nearest to the direction.
///
/// @source  ISO 841:2001: positive A, B, C turn the tool, relative to the part, as right-handed
///          screws advancing along +X, +Y, +Z, that is counter-clockwise seen from the positive
///          end; a workpiece-carrying member moves the opposite way.
KORVO_TOOLKIT_API RotarySense rotarySense(const std::string& name, const zgeo::UVec3d& direction,
                                          RotaryBody body, Language language = Language::english);

}  // namespace korvo
