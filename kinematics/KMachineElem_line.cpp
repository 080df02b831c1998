// An element from one line of the machine definition file.

#include <algorithm>
#include <new>

#include "kinematics/KMachineElem.h"
#include "kinematics/read/Operands.h"
#include "platform/os/Names.h"
#include "platform/text/Keywords.h"
#include "platform/zgeo/UTools.h"

using korvo::text::Keyword;
using zgeo::UTools;
using zgeo::UVec3d;

namespace zkin {
namespace {

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
int placeIn(const wchar_t* const (&names)[N], std::wstring_view name) {
  for (std::size_t i = 0; i < N; ++i) {
    if (isWord(name, names[i])) return static_cast<int>(i) + 1;
  }
  return 0;
}

// Version 2: the name says the axis number.
// Deliberate: other names give 0, the frame's index, since version 2 knows these six axes only:
// what follows such an element hangs on the frame. Redundant axes need version 1.
int indexByName(std::wstring_view name, bool rotary) {
  static constexpr const wchar_t* kLinear[] = {L"X", L"Y", L"Z"};
  static constexpr const wchar_t* kRotary[] = {L"A", L"B", L"C"};
  const int place = placeIn(rotary ? kRotary : kLinear, name);
  return place > 0 && rotary ? place + 3 : place;
}

void skipInt(const Operands& tokens, int& pos) {
  int unused = 0;
  readValue(tokens, pos, unused);
}

void readGeometry(KMachineElem& e, const Operands& tokens, int& pos) {
  std::wstring file;
  int rgb[3] = {0, 0, 0};
  if (!readGeomFile(tokens, pos, file, rgb)) return;
  e.setGeomFile(file);
  e.setGeomRGB(rgb[0], rgb[1], rgb[2]);
}

void readFrame(KMachineElem& e, const Operands& tokens, int version) {
  int pos = 0;
  if (version == 2) readVector(tokens, pos, e.getElemAxis());
  readGeometry(e, tokens, pos);
}

void readPart(KMachineElem& e, const Operands& tokens, int version) {
  int pos = 0;
  UVec3d x, y, unused;
  readVector(tokens, pos, x);
  readVector(tokens, pos, y);
  // Deliberate: read and replaced, since a version-2 part lies along the machine's axes.
  if (version == 2) x.set(1, 0, 0), y.set(0, 1, 0);
  x.normalise();
  y.normalise();
  e.setElemAxisX(x);
  e.setElemAxis((x ^ y).normalised());
  // Deliberate: a part position may stand in the file, but the part's point is always the origin.
  readVector(tokens, pos, unused);
  readGeometry(e, tokens, pos);
}

void readTool(KMachineElem& e, const Operands& tokens) {
  int pos = 0;
  readVector(tokens, pos, e.getElemAxis());
  e.getElemAxis().normalise();
  readVector(tokens, pos, e.getElemPivot());
  readGeometry(e, tokens, pos);
}

// Sets name and index; returns the position of the first operand after them.
int readAxisName(KMachineElem& e, const Operands& tokens, int version) {
  std::wstring name(tokens.empty() ? std::wstring_view() : tokens[0]);
  int pos = 1, index = 0;
  if (version == 2) {
    name = UTools::_removeFrom(UTools::_up(name), L"AXE_");
    index = indexByName(name, e.getElemType() == KMachineElem::KMET_TYPE_AROT);
  } else {
    readValue(tokens, pos, index);
  }
  e.setElemName(name);
  e.setElemIndex(index);
  return pos;
}

void readAxis(KMachineElem& e, const Operands& tokens, int version) {
  int pos = readAxisName(e, tokens, version);
  readVector(tokens, pos, e.getElemAxis());
  e.getElemAxis().normalise();
  if (e.getElemType() == KMachineElem::KMET_TYPE_AROT) {
    // Deliberate: lines may hold two integers here that mean nothing to us. Without them the first
    // numbers of the point are taken for them, so "0,0,100" gives no point.
    skipInt(tokens, pos);
    skipInt(tokens, pos);
    readVector(tokens, pos, e.getElemPivot());
  }
  readGeometry(e, tokens, pos);
}

// What a keyword makes: type, name and index before the machine numbers it. The last two of an axis
// are operands.
struct Kind {
  Keyword keyword;
  KMachineElem::KME_TYPE type;
  const wchar_t* name = L"";
  int index{};
};

constexpr Kind kKinds[] = {
    {Keyword::frame, KMachineElem::KMET_TYPE_BATI, L"BATI", KMachineElem::KMET_BATI},
    {Keyword::part, KMachineElem::KMET_TYPE_PART, L"PIECE", KMachineElem::KMET_PART},
    {Keyword::tool, KMachineElem::KMET_TYPE_TOOL, L"OUTIL", KMachineElem::KMET_TOOL},
    {Keyword::geometry, KMachineElem::KMET_TYPE_GEOM, L"GEOM", KMachineElem::KMET_GEOM},
    {Keyword::linearAxis, KMachineElem::KMET_TYPE_ALIN},
    {Keyword::drillGun, KMachineElem::KMET_TYPE_DGUN, L"DRILL", KMachineElem::KMET_TOOL},
    {Keyword::rotaryAxis, KMachineElem::KMET_TYPE_AROT},
};

const Kind* kindOf(Keyword keyword) {
  for (const Kind& kind : kKinds) {
    if (kind.keyword == keyword) return &kind;
  }
  return nullptr;
}

}  // namespace

void readElement(KMachineElem& e, Keyword keyword, const Operands& tokens, int version) {
  const Kind* kind = kindOf(keyword);
  if (!kind) return;
  e.setElemType(kind->type);
  e.setElemName(kind->name);
  e.setElemIndex(kind->index);
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

bool readAxisWord(std::wstring_view text, UVec3d& v) {
  static constexpr const wchar_t* kLetters[] = {L"x", L"y", L"z"};
  const bool hasSign = !text.empty() && (text[0] == L'+' || text[0] == L'-');
  const int place = placeIn(kLetters, hasSign ? text.substr(1) : text);
  if (place == 0) return false;
  const double s = text[0] == L'-' ? -1.0 : 1.0;
  v.set(place == 1 ? s : 0.0, place == 2 ? s : 0.0, place == 3 ? s : 0.0);
  return true;
}

bool isWord(std::wstring_view text, const wchar_t* word) {
  return std::ranges::equal(text.substr(0, text.find(L'\0')), std::wstring_view(word), {},
                            korvo::os::lowered, korvo::os::lowered);
}

void splitAt(std::wstring_view text, wchar_t separator, bool keepEmpty, Operands& parts) {
  parts.clear();
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find(separator, start), text.size());
    if (keepEmpty || end > start) parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
}

bool KMachineElem::setFromLine(const std::wstring& line, int version) try {
  reset();
  const std::wstring clean = squeezed(UTools::_simplified(line, false, false));
  Operands parts, operands;
  splitAt(clean, L'=', false, parts);
  const Keyword keyword = parts.empty() ? Keyword::none : korvo::text::keywordOf(parts[0]);
  if (!korvo::text::isElementKeyword(keyword)) return false;
  if (parts.size() > 1) splitAt(parts[1], L',', true, operands);
  readElement(*this, keyword, operands, version);
  return true;
} catch (const std::bad_alloc&) {
  reset();  // half an element would look like a whole one
  return false;
}

bool KMachineElem::_readValue(const std::vector<std::wstring>& tokens, int& pos, int& value) {
  return readValue(tokens, pos, value);
}

bool KMachineElem::_readValue(const std::vector<std::wstring>& tokens, int& pos, double& value) {
  return readValue(tokens, pos, value);
}

bool KMachineElem::_readVector(const std::vector<std::wstring>& tokens, int& pos, UVec3d& v) {
  return readVector(tokens, pos, v);
}

bool KMachineElem::_readGeomFile(const std::vector<std::wstring>& tokens, int& pos,
                                 std::wstring& file, int* const rgb) {
  return readGeomFile(tokens, pos, file, rgb);
}

}  // namespace zkin
