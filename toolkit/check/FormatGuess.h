#pragma once

#include "toolkit/Format.h"
#include "toolkit/check/Document.h"

namespace korvo::checking {

/// The format version to read `document` as: the one asked for, or the one that its axis lines
/// speak for.
///
/// An axis line speaks for a version when that version would read all of its operands: name, in
/// version 1 a number from 1 up, a direction, of a rotary axis a point, and at most a file with its
/// colour. The version that more lines speak for is taken. When that does not decide, version 2 if
/// every axis has one of its six names, else version 1.
FormatChoice chooseFormat(const Document& document, Format asked);

}  // namespace korvo::checking
