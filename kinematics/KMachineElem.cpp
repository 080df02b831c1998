#include "kinematics/KMachineElem.h"

#include <algorithm>
#include <cmath>

#include "kinematics/tolerances.h"
#include "platform/os/Files.h"
#include "platform/zgeo/UTools.h"

using zgeo::UMatrix;
using zgeo::UTools;
using zgeo::UVec3d;

namespace zkin {

KMachineElem::KMachineElem(const std::wstring& line, int version) { setFromLine(line, version); }

KMachineElem::~KMachineElem() = default;

void KMachineElem::reset() { *this = KMachineElem(); }

namespace {

bool sameText(const std::wstring& a, const std::wstring& b) {
  return korvo::os::_wcsicmp(a.c_str(), b.c_str()) == 0;
}

bool sameLimit(bool hasA, double a, bool hasB, double b) {
  return hasA == hasB && (!hasA || a == b);
}

}  // namespace

bool KMachineElem::operator==(const KMachineElem& o) const {
  return sameText(name_, o.name_) && link_ == o.link_ && type_ == o.type_ && axis_ == o.axis_ &&
         axisX_ == o.axisX_ && pivot_ == o.pivot_ && theLength_ == o.theLength_ && law_ == o.law_ &&
         locked_ == o.locked_ && hookIndex_ == o.hookIndex_ && hookPoint_ == o.hookPoint_ &&
         inverted_ == o.inverted_ && sameLimit(hasMin_, min_, o.hasMin_, o.min_) &&
         sameLimit(hasMax_, max_, o.hasMax_, o.max_) && sameText(geomFile_, o.geomFile_);
}

bool KMachineElem::isGeomFileReadable() const { return korvo::os::openRead(geomFile_) != nullptr; }

void KMachineElem::getGeomRGB(int& r, int& g, int& b) const {
  r = rgb_[0], g = rgb_[1], b = rgb_[2];
}

void KMachineElem::getGeomRGB(int* const rgb) const { std::copy_n(rgb_, 3, rgb); }

// Deliberate: the interface has this setter under a getter's name.
void KMachineElem::getGeomRGB(const int* const rgb) { std::copy_n(rgb, 3, rgb_); }

void KMachineElem::setGeomRGB(int r, int g, int b) { rgb_[0] = r, rgb_[1] = g, rgb_[2] = b; }

int KMachineElem::getHook(UVec3d& point) const {
  point = hookPoint_;
  return hookIndex_;
}

void KMachineElem::setHook(int index, const UVec3d& point) {
  hookIndex_ = index;
  hookPoint_ = point;
}

// --- types

bool KMachineElem::_isTool(KME_TYPE t) { return t == KMET_TYPE_TOOL || t == KMET_TYPE_DGUN; }

namespace {

constexpr const wchar_t* kTypeNames[] = {L"none", L"BATI", L"PART", L"TOOL",
                                         L"ALin", L"ARot", L"DGun", L"geom"};

}  // namespace

// Deliberate: a gun moves like an axis but never has a value index, so every question about one
// traces the line.
bool KMachineElem::isAxis() const {
  const bool axis = type_ == KMET_TYPE_ALIN || type_ == KMET_TYPE_AROT || type_ == KMET_TYPE_DGUN;
  if (axis && valueIndex_ < 0) {
    UTools::_trace(L"*** ERROR ***, elem<%s> said to be <%S> but value index %d", name_.c_str(),
                   kTypeNames[type_], valueIndex_);
  }
  return axis;
}

std::wstring KMachineElem::_typeName(KME_TYPE t) {
  const int i = t;
  if (i >= 0 && i < static_cast<int>(std::size(kTypeNames))) return kTypeNames[i];
  return UTools::_formatted(L"(unknown_%d)", i);
}

// --- Denavit-Hartenberg and user values
//
// Deliberate: drill guns take no part. A gun moves by its length, which no position holds, so there
// is no user value to convert.

double KMachineElem::getDHmValue(bool current) const {
  const _sUDHm& h = current ? dhmCur_ : dhmRef_;
  if (type_ == KMET_TYPE_AROT) return h.theta;
  if (type_ == KMET_TYPE_ALIN) return h.d;
  return 0.0;
}

void KMachineElem::setDHmValue(double v) const {
  if (type_ == KMET_TYPE_AROT) dhmCur_.theta = v;
  if (type_ == KMET_TYPE_ALIN) dhmCur_.d = v;
}

double KMachineElem::getUMVValue(double v) const {
  if (type_ == KMET_TYPE_AROT) return (v - dhmRef_.theta) * kRadToDeg;
  if (type_ == KMET_TYPE_ALIN) return v - dhmRef_.d;
  return 0.0;
}

double KMachineElem::getUMVValue(const _sUDHm& h) const {
  return getUMVValue(type_ == KMET_TYPE_AROT ? h.theta : h.d);
}

void KMachineElem::setUMVValue(double u) const {
  if (type_ == KMET_TYPE_AROT) dhmCur_.theta = u * kDegToRad + dhmRef_.theta;
  if (type_ == KMET_TYPE_ALIN) dhmCur_.d = u + dhmRef_.d;
}

UMatrix KMachineElem::_transitionMatrix(const _sUDHm& h) {
  const double ca = std::cos(h.alpha), sa = std::sin(h.alpha);
  const double ct = std::cos(h.theta), st = std::sin(h.theta);
  UMatrix m;
  m.set(ct, -st, 0, h.a,                   //
        st * ca, ct * ca, -sa, -sa * h.d,  //
        st * sa, ct * sa, ca, ca * h.d,    //
        0, 0, 0, 1);
  return m;
}

// --- dump

namespace {

void traceVector(const wchar_t* label, const UVec3d& v) {
  UTools::_traceTS(L"%s(%7.2f ; %7.2f ; %7.2f)", label, v.x, v.y, v.z);
}

void traceLimits(const KMachineElem& e) {
  UTools::_traceTS(L"  min: %7.2f %s ; max: %7.2f %s", e.getMin(), e.hasMin() ? L"SET" : L"unset",
                   e.getMax(), e.hasMax() ? L"SET" : L"unset");
}

const wchar_t* headOf(KMachineElem::KME_TYPE t) {
  switch (t) {
    case KMachineElem::KMET_TYPE_BATI:
      return L"BATI, %5s (i:%4d, p:%4d)";
    case KMachineElem::KMET_TYPE_PART:
      return L"PART, %5s (i:%4d, p:%4d)";
    case KMachineElem::KMET_TYPE_TOOL:
      return L"TOOL, %5s (i:%4d, p:%4d)";
    case KMachineElem::KMET_TYPE_ALIN:
      return L"LIN,  %5s (i:%4d, p:%4d)";
    case KMachineElem::KMET_TYPE_AROT:
      return L"ROT,  %5s (i:%4d, p:%4d)";
    case KMachineElem::KMET_TYPE_DGUN:
      return L"GUN,  %5s (i:%4d, p:%4d)";
    case KMachineElem::KMET_TYPE_GEOM:
      return L"GEOM, %5s (i:%4d, p:%4d)";
    default:
      return L" ???  %5s (i:%4d, p:%4d)";
  }
}

void traceBody(const KMachineElem& e) {
  switch (e.getElemType()) {
    case KMachineElem::KMET_TYPE_PART:
      traceVector(L"  pos: ", e.getElemPivot());
      traceVector(L" vZ: ", e.getElemAxis());
      traceVector(L" vX: ", e.getElemAxisX());
      break;
    case KMachineElem::KMET_TYPE_TOOL:
      traceVector(L"  pos: ", e.getElemPivot());
      break;
    case KMachineElem::KMET_TYPE_ALIN:
      traceVector(L"  dir: ", e.getElemAxis());
      UTools::_traceTS(L" %s", e.isInverted() ? L"(INV)" : L"");
      traceLimits(e);
      break;
    case KMachineElem::KMET_TYPE_AROT:
      traceVector(L"  axe: ", e.getElemAxis());
      traceVector(L" pos: ", e.getElemPivot());
      break;
    case KMachineElem::KMET_TYPE_DGUN:
      traceVector(L"  nez: ", e.getElemPivot());
      traceLimits(e);
      break;
    default:
      break;
  }
}

}  // namespace

void KMachineElem::dump(const wchar_t* const prefix) const {
  UTools::_traceTS(L"%s_", prefix);
  UTools::_traceTS(headOf(type_), name_.c_str(), link_.index, link_.previous);
  UTools::_traceTS(L" <%s>", geomFile_.c_str());
  traceBody(*this);
  if (hookIndex_ != KMET_NONE) {
    UTools::_traceTS(L" hook=%d", hookIndex_);
    hookPoint_.dump(L" ", true);
  }
  UTools::_traceTF();
}

}  // namespace zkin
