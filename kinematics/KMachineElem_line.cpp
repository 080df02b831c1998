// An element from one line of the machine definition file.

#include <algorithm>

#include "kinematics/KMachineElem.h"
#include "platform/os/Files.h"
#include "platform/text/Keywords.h"
#include "platform/text/Number.h"
#include "platform/zgeo/UTools.h"

using korvo::text::Keyword;
using zgeo::UTools;
using zgeo::UVec3d;

namespace zkin {
namespace {

using Tokens = std::vector<std::wstring>;

bool hasToken(const Tokens& tokens, int pos, int count = 1) {
  return pos >= 0 && pos <= static_cast<int>(tokens.size()) - count;
}

bool sameWord(const std::wstring& a, const wchar_t* b) {
  return korvo::os::_wcsicmp(a.c_str(), b) == 0;
}

// Deliberate: squeezes out the blanks by moving the rest forward, then erases one character only,
// so a line of k blanks keeps its last k - 1 characters behind the squeezed text.
std::wstring squeezed(std::wstring line) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] != L' ') line[kept++] = line[i];
  }
  if (kept < line.size()) line.erase(kept, 1);
  return line;
}

// A name's place in a list of axis names, from 1; 0 when it is not there.
template <std::size_t N>
int placeIn(const wchar_t* const (&names)[N], const std::wstring& name) {
  for (std::size_t i = 0; i < N; ++i) {
    if (sameWord(name, names[i])) return static_cast<int>(i) + 1;
  }
  return 0;
}

// Version 2: the name says the axis number.
// Deliberate: other names give 0, the frame's index, since version 2 knows these six axes only:
// what follows such an element hangs on the frame. Redundant axes need version 1.
int indexByName(const std::wstring& name, bool rotary) {
  static constexpr const wchar_t* kLinear[] = {L"X", L"Y", L"Z"};
  static constexpr const wchar_t* kRotary[] = {L"A", L"B", L"C"};
  const int place = placeIn(rotary ? kRotary : kLinear, name);
  return place > 0 && rotary ? place + 3 : place;
}

void skipInt(const Tokens& tokens, int& pos) {
  int unused = 0;
  KMachineElem::_readValue(tokens, pos, unused);
}

void readGeometry(KMachineElem& e, const Tokens& tokens, int& pos) {
  std::wstring file;
  int rgb[3] = {0, 0, 0};
  if (!KMachineElem::_readGeomFile(tokens, pos, file, rgb)) return;
  e.setGeomFile(file);
  e.setGeomRGB(rgb[0], rgb[1], rgb[2]);
}

void readFrame(KMachineElem& e, const Tokens& tokens, int version) {
  int pos = 0;
  if (version == 2) KMachineElem::_readVector(tokens, pos, e.getElemAxis());
  readGeometry(e, tokens, pos);
}

void readPart(KMachineElem& e, const Tokens& tokens, int version) {
  int pos = 0;
  UVec3d x, y, unused;
  KMachineElem::_readVector(tokens, pos, x);
  KMachineElem::_readVector(tokens, pos, y);
  // Deliberate: read and replaced, since a version-2 part lies along the machine's axes.
  if (version == 2) x.set(1, 0, 0), y.set(0, 1, 0);
  x.normalise();
  y.normalise();
  e.setElemAxisX(x);
  e.setElemAxis((x ^ y).normalised());
  // Deliberate: a part position may stand in the file, but the part's point is always the origin.
  KMachineElem::_readVector(tokens, pos, unused);
  readGeometry(e, tokens, pos);
}

void readTool(KMachineElem& e, const Tokens& tokens) {
  int pos = 0;
  KMachineElem::_readVector(tokens, pos, e.getElemAxis());
  e.getElemAxis().normalise();
  KMachineElem::_readVector(tokens, pos, e.getElemPivot());
  readGeometry(e, tokens, pos);
}

// Sets name and index; returns the position of the first operand after them.
int readAxisName(KMachineElem& e, const Tokens& tokens, int version) {
  std::wstring name = tokens.empty() ? std::wstring() : tokens[0];
  int pos = 1, index = 0;
  if (version == 2) {
    name = UTools::_removeFrom(UTools::_up(name), L"AXE_");
    index = indexByName(name, e.getElemType() == KMachineElem::KMET_TYPE_AROT);
  } else {
    KMachineElem::_readValue(tokens, pos, index);
  }
  e.setElemName(name);
  e.setElemIndex(index);
  return pos;
}

void readAxis(KMachineElem& e, const Tokens& tokens, int version) {
  int pos = readAxisName(e, tokens, version);
  KMachineElem::_readVector(tokens, pos, e.getElemAxis());
  e.getElemAxis().normalise();
  if (e.getElemType() == KMachineElem::KMET_TYPE_AROT) {
    // Deliberate: lines may hold two integers here that mean nothing to us. Without them the first
    // numbers of the point are taken for them, so "0,0,100" gives no point.
    skipInt(tokens, pos);
    skipInt(tokens, pos);
    KMachineElem::_readVector(tokens, pos, e.getElemPivot());
  }
  readGeometry(e, tokens, pos);
}

// What a keyword makes: type, name and index before the machine numbers it.
struct Kind {
  Keyword keyword;
  KMachineElem::KME_TYPE type;
  const wchar_t* name;
  int index;
};

constexpr Kind kKinds[] = {
    {Keyword::frame, KMachineElem::KMET_TYPE_BATI, L"BATI", KMachineElem::KMET_BATI},
    {Keyword::part, KMachineElem::KMET_TYPE_PART, L"PIECE", KMachineElem::KMET_PART},
    {Keyword::tool, KMachineElem::KMET_TYPE_TOOL, L"OUTIL", KMachineElem::KMET_TOOL},
    {Keyword::geometry, KMachineElem::KMET_TYPE_GEOM, L"GEOM", KMachineElem::KMET_GEOM},
    {Keyword::linearAxis, KMachineElem::KMET_TYPE_ALIN, L"", 0},
    {Keyword::drillGun, KMachineElem::KMET_TYPE_DGUN, L"DRILL", KMachineElem::KMET_TOOL},
    {Keyword::rotaryAxis, KMachineElem::KMET_TYPE_AROT, L"", 0},
};

const Kind* kindOf(const std::wstring& word) {
  const Keyword keyword = korvo::text::keywordOf(word);
  for (const Kind& kind : kKinds) {
    if (kind.keyword == keyword) return &kind;
  }
  return nullptr;
}

void readOperands(KMachineElem& e, Keyword keyword, const Tokens& tokens, int version) {
  int pos = 0;
  switch (keyword) {
    case Keyword::frame:
      return readFrame(e, tokens, version);
    case Keyword::part:
      return readPart(e, tokens, version);
    case Keyword::tool:
    case Keyword::drillGun:
      return readTool(e, tokens);
    case Keyword::linearAxis:
    case Keyword::rotaryAxis:
      return readAxis(e, tokens, version);
    default:
      return readGeometry(e, tokens, pos);
  }
}

// A direction word: an optional sign and an axis letter.
bool axisWord(const std::wstring& token, UVec3d& v) {
  static constexpr const wchar_t* kLetters[] = {L"x", L"y", L"z"};
  const bool hasSign = !token.empty() && (token[0] == L'+' || token[0] == L'-');
  const int place = placeIn(kLetters, hasSign ? token.substr(1) : token);
  if (place == 0) return false;
  const double s = token[0] == L'-' ? -1.0 : 1.0;
  v.set(place == 1 ? s : 0.0, place == 2 ? s : 0.0, place == 3 ? s : 0.0);
  return true;
}

}  // namespace

bool KMachineElem::setFromLine(const std::wstring& line, int version) {
  reset();
  const Tokens parts =
      UTools::_split(squeezed(UTools::_simplified(line, false, false)), L'=', false);
  const Kind* kind = parts.empty() ? nullptr : kindOf(parts[0]);
  if (!kind) return false;
  type_ = kind->type;
  name_ = kind->name;
  elemIndex_ = kind->index;
  const Tokens tokens = parts.size() < 2 ? Tokens() : UTools::_split(parts[1], L',', true);
  readOperands(*this, kind->keyword, tokens, version);
  return true;
}

bool KMachineElem::_readValue(const Tokens& tokens, int& pos, int& value) {
  if (!hasToken(tokens, pos) || !korvo::text::scanInt(tokens[pos], value)) return false;
  ++pos;
  return true;
}

bool KMachineElem::_readValue(const Tokens& tokens, int& pos, double& value) {
  if (!hasToken(tokens, pos) || !korvo::text::scanDouble(tokens[pos], value)) return false;
  ++pos;
  return true;
}

bool KMachineElem::_readVector(const Tokens& tokens, int& pos, UVec3d& v) {
  if (!hasToken(tokens, pos)) return false;
  if (axisWord(tokens[pos], v)) return ++pos, true;
  if (!hasToken(tokens, pos, 3)) return false;
  UVec3d read;
  int next = pos;
  if (!_readValue(tokens, next, read.x) || !_readValue(tokens, next, read.y) ||
      !_readValue(tokens, next, read.z)) {
    return false;
  }
  v = read;
  pos = next;
  return true;
}

bool KMachineElem::_readGeomFile(const Tokens& tokens, int& pos, std::wstring& file,
                                 int* const rgb) {
  if (!hasToken(tokens, pos)) return false;
  file = tokens[pos++];
  if (hasToken(tokens, pos, 3)) {
    // Deliberate: a component that does not scan leaves its token to the next one, like every
    // other operand.
    for (int i = 0; i < 3; ++i) _readValue(tokens, pos, rgb[i]);
  } else {
    std::fill_n(rgb, 3, 200);
  }
  return !file.empty();
}

}  // namespace zkin
