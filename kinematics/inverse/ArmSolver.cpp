// A six-joint arm with a ball wrist: the wrist centre from the tool, the first joint from the
// centre's lateral offset, the second and third from two circles in the plane of the arm, then the
// wrist. Of two branches the one nearer to the joints' present angles is taken. The trace is the
// protocol by which people set up an arm; its texts and their order are fixed.
//
// A, D, R and theta0 of a joint are its Denavit-Hartenberg twist, offsets and zero angle.
#include <algorithm>
#include <cmath>
#include <utility>

#include "kinematics/inverse/MachineSolve.h"
#include "kinematics/inverse/WrapNear.h"
#include "platform/zgeo/UTools.h"

using zgeo::UMatrix;
using zgeo::UTools;
using zgeo::UVec3d;

namespace zkin {

namespace {

using Chain = std::vector<const KMachineElem*>;

UMatrix transition(const KMachineElem& e) { return KMachineElem::_transitionMatrix(e.getDHmCur()); }

double alpha(const KMachineElem& e) { return e.getDHmCur().alpha; }
double a(const KMachineElem& e) { return e.getDHmCur().a; }
double d(const KMachineElem& e) { return e.getDHmCur().d; }
double theta0(const KMachineElem& e) { return e.getDHmRef().theta; }
double angle(const KMachineElem& e) { return e.getDHmValue(true); }
double acosClamped(double c) { return c > 1 ? 0.0 : c < -1 ? kPi : std::acos(c); }

// Without a reader the protocol costs a glance: no open line is left to end behind the first one.
template <typename... Values>
void traceLine(const wchar_t* format, Values... values) {
  if (UTools::_isTracing()) UTools::_trace(format, values...);
}

void dumpLine(const UVec3d& v, const wchar_t* label, const wchar_t* rest) {
  if (!UTools::_isTracing()) return;
  v.dump(label, true);
  UTools::_trace(L"%s", rest);
}

struct Twist {
  double cos, sin;

  explicit Twist(const KMachineElem& e) : cos(std::cos(alpha(e))), sin(std::sin(alpha(e))) {}
};

/// The way of the wrist centre and the joints that place it.
struct Arm {
  const KMachineElem& j1;
  const KMachineElem& j2;
  const KMachineElem& j3;
  const KMachineElem& j4;
  KMachineValueBase& out;
  const Twist twist2{j2}, twist3{j3}, twist4{j4};

  double lateral() const {  // S: how far the plane of the arm lies beside the first axis
    return d(j3) * twist3.cos + d(j2) + d(j4) * twist4.cos;
  }
};

// --- the wrist centre

// The product of the wrist's own transitions, the last elements first; the trace shows where each
// puts the tool centre.
UMatrix wristTransition(const Chain& chain, std::size_t wrist, const UVec3d& toolCentre) {
  UMatrix m;
  for (std::size_t i = chain.size(); --i > wrist;) {
    m = transition(*chain[i]) * m;
    if (!UTools::_isTracing()) continue;
    (m.inverse() * toolCentre).dump(L"  TC: ", true);
    UTools::_trace(L" before [%s] tra. (%d)", chain[i]->getElemName().c_str(), static_cast<int>(i));
  }
  return m;
}

void traceAlternative(const Chain& chain, std::size_t wrist) {
  UMatrix n;
  for (std::size_t i = wrist + 1; i < chain.size(); ++i) {
    n = n * transition(*chain[i]);
    (n * UVec3d()).dump(L" Alt: ", true);
    UTools::_trace(L" after [%s] tra. (%d)", chain[i]->getElemName().c_str(), static_cast<int>(i));
  }
}

// Deliberate: the centre that the tool's own direction gives is only traced; the one taken adds a
// vector of tool-frame coordinates to a point of the machine frame, which is right only for a
// wanted direction along the machine's Z or a tool point in the wrist centre
// (OffsetTools.MissByTheOffsetTimesNMinusZ).
UVec3d wristCentre(const SolveView& view, const Target& target, const Chain& chain,
                   std::size_t wrist, const UMatrix& mac2uni) {
  const double length = view.tool->getTHELength();
  const UVec3d toolCentre(0, 0, length);
  if (UTools::_isTracing()) {
    const UVec3d first = target.point + target.dir * (length - d(*chain.back()));
    target.point.dump(L"consigne (MAC) pos: ", true);
    target.dir.dump(L" dir: ", true);
    first.dump(L" -> oPosRotule : ", true);
    (mac2uni * first).dump(L" =UNI: ", false);
    dumpLine(toolCentre, L"oToolCenter: ", L" in ToolElem coords");
  }
  const UMatrix m = wristTransition(chain, wrist, toolCentre);
  const UVec3d centre = target.point + m.inverse() * toolCentre;
  if (UTools::_isTracing()) {
    traceAlternative(chain, wrist);
    dumpLine(centre, L"oSpindle: ", L" defined by oPos+vSpindle");
  }
  return centre;
}

// --- the first joint

void setFirst(const Arm& arm, double theta, const wchar_t* text) {
  arm.out[0] = arm.j1.getUMVValue(theta);
  traceLine(text, theta, arm.out[0]);
}

// Deliberate: the nearer branch, also when only the other one lets the arm reach the centre
// (ArmConditions.TheNearerBranchOfTheFirstJointIsTakenEvenOutOfReach).
void chooseFirst(const Arm& arm, double thetaA, double thetaB) {
  traceLine(L"J1 : either (%.2f | %.1f) or (%.2f | %.1f)", thetaA, arm.j1.getUMVValue(thetaA),
            thetaB, arm.j1.getUMVValue(thetaB));
  const double present = angle(arm.j1);
  const double nearA = wrapNear(thetaA, present), nearB = wrapNear(thetaB, present);
  const bool isA = std::fabs(nearA - present) < std::fabs(nearB - present);
  setFirst(arm, isA ? nearA : nearB, L"  b : (%.2f | %.1f)");
}

// The centre lies beside the first axis by S: x sin(theta) - y cos(theta) = -S sin(A2), of which
// the half angle's tangent is the root of a quadratic.
// Deliberate: on the line of the offset one of two solutions is known, without an offset 0 whatever
// the sign of x (ArmConditions.InThePlaneOfZeroTheFirstJointLooksForward).
void solveFirst(const Arm& arm, const UVec3d& centre) {
  const double x = centre.x, y = centre.y;
  const double s = arm.lateral();
  const double k = s * arm.twist2.sin;
  const double e = y - k;
  if (std::fabs(e) <= kArmLength) {
    if (std::fabs(x) < kArmLength) return;
    return setFirst(arm, 2 * std::atan((k + y) / (2 * x)), L"J1 : (%.2f | %.1f)");
  }
  const double q = x * x + y * y - s * s;
  if (q < 0) return;
  const double r = std::sqrt(q);
  chooseFirst(arm, 2 * std::atan((r - x) / e), 2 * std::atan((-x - r) / e));
}

void traceWas(const wchar_t* format, const KMachineElem& joint, double value) {
  traceLine(format, value * kDegToRad + theta0(joint), value, angle(joint));
}

void firstJoint(const Arm& arm, const UVec3d& centre) {
  traceLine(L"J1 was (%.2f | %.1f)", angle(arm.j1), arm.out[0]);
  solveFirst(arm, centre);
  const double theta = arm.out[0] * kDegToRad + theta0(arm.j1);
  arm.j1.setDHmValue(theta);
  traceLine(L"J1 : (%.2f | %.1f) *CHECK*", theta, arm.out[0]);
  traceWas(L"J2 was (%.2f | %.1f) (%.2f)-check", arm.j2, arm.out[1]);
  traceWas(L"J3 was (%.2f | %.1f) (%.2f)-check", arm.j3, arm.out[2]);
}

// --- the second and third joints

// The wrist centre seen from the second joint.
UVec3d seenFromSecond(const Arm& arm, const UVec3d& centre) {
  UVec3d p = transition(arm.j1).inverse() * centre;
  dumpLine(p, L"oORp: ", L" = oPosRotule L-transformed by T10(J1)");
  UMatrix::_rotation(UVec3d(1, 0, 0), -alpha(arm.j2)).apply(p);
  dumpLine(p, L"oORp: ", L" = oORp X-rotated by -A2");
  p += UVec3d(-a(arm.j2), 0, -d(arm.j2));
  dumpLine(p, L"oORp: ", L" = oORp X-translated by -D2 & Z-translated by -R2");
  return p;
}

/// One meeting point of the two circles and the angles that lead there.
struct Branch {
  double theta2;
  double theta3;
};

/// The angle between two directions of the plane by its cosine and sine, over a squared length.
struct CosSin {
  double c, s;

  double angle() const { return s < 0 ? -acosClamped(c) : acosClamped(c); }
};

CosSin between(double px, double py, double x, double h, double square) {
  return {(py * h + x * px) / square, (px * h - x * py) / square};
}

void traceCircles(double d3, double rad4, double radR) {
  if (!UTools::_isTracing()) return;
  UTools::_trace(L"We shall intersect 2 circles:");
  UVec3d(d3, 0, 0).dump(L"C4 center", true);
  UTools::_trace(L" rad4=%.1lf", rad4);
  UVec3d().dump(L"CR center", true);
  UTools::_trace(L" radR=%.1lf", radR);
}

void traceMeeting(double x, double h) {
  traceLine(L"   u : (%.1lf, %.1lf)", x, h);
  traceLine(L"   d : (%.1lf, %.1lf)", x, -h);
}

void traceBranch(const wchar_t* format, const CosSin& cs, const KMachineElem& joint, double theta) {
  traceLine(format, cs.c, cs.s, theta, joint.getUMVValue(theta));
}

void traceJoints(const wchar_t* format, const Arm& arm, double theta2, double theta3) {
  traceLine(format, theta2, arm.j2.getUMVValue(theta2), theta3, arm.j3.getUMVValue(theta3));
}

// Deliberate: the third angle is not brought near its present one
// (ArmSolver.ThirdJointMayBeATurnAway), and the trace says "d" whichever branch it is
// (ArmProtocol.RecordsOfTheHostAreTakenAsTheyAre).
void takeBranch(const Arm& arm, Branch up, Branch down) {
  const double present = angle(arm.j2);
  up.theta2 = wrapNear(up.theta2, present);
  down.theta2 = wrapNear(down.theta2, present);
  const bool isDown = !(std::fabs(down.theta2 - present) > std::fabs(up.theta2 - present));
  Branch best = isDown ? down : up;
  const double c3 = arm.twist3.cos;  // 1, or -1 when the third axis points the other way
  best.theta3 = best.theta3 * c3 + std::acos(c3);
  traceJoints(L"-> d : J2 (%.2f | %.1f) J3 (%.2f | %.1f)", arm, best.theta2, best.theta3);
  traceJoints(L"    i: J2 (%.2f | %.1f) J3 (%.2f | %.1f)", arm, theta0(arm.j2), theta0(arm.j3));
  arm.out[1] = arm.j2.getUMVValue(best.theta2);
  arm.out[2] = arm.j3.getUMVValue(best.theta3);
  traceJoints(L"    f: J2 (%.2f | %.1f) J3 (%.2f | %.1f)", arm, best.theta2, best.theta3);
  arm.j2.setDHmValue(best.theta2);
  arm.j3.setDHmValue(best.theta3);
}

UVec3d forearm(const Arm& arm) {
  UVec3d p(a(arm.j4), -d(arm.j4) * arm.twist4.sin, d(arm.j4) * arm.twist4.cos);
  p.dump(L"oO4j3: ", false);
  return p;
}

// Deliberate: the radii are lengths in space, not in the plane of the arm
// (ArmProtocol.RecordsOfTheHostAreTakenAsTheyAre), and without an upper arm x is over zero
// (ArmConditions.WithoutAnUpperArmTheFirstJointAndTheWristAreAllThatMoves).
void secondAndThird(const Arm& arm, UVec3d o4, const UVec3d& centre) {
  o4.z += d(arm.j3) * arm.twist3.cos;
  dumpLine(o4, L"oO4p: ", L" = oO4j3 Z-translated by +R3");
  const UVec3d o = seenFromSecond(arm, centre);

  const double d3 = a(arm.j3), rad4 = o4.norm(), radR = o.norm();
  traceCircles(d3, rad4, radR);
  const double x = (d3 * d3 + radR * radR - rad4 * rad4) / (2 * d3);
  const double h2 = radR * radR - x * x;
  if (h2 < 0) return traceLine(L"no intersection ?");
  const double h = std::sqrt(h2);
  traceMeeting(x, h);

  const CosSin u2 = between(o.x, o.y, x, h, o.norm2()), d2 = between(o.x, o.y, x, -h, o.norm2());
  const double theta2u = -u2.angle(), theta2d = -d2.angle();
  traceLine(L"J2:");
  traceBranch(L"   u : cs(-t2)=(%.3lf, %.3lf)-> J2u: (%.2f | %.1f)", u2, arm.j2, theta2u);
  traceBranch(L"   d : cs(-t2)=(%.3lf, %.3lf)-> J2d: (%.2f | %.1f)", d2, arm.j2, theta2d);

  const double s4 = o4.norm2();
  const CosSin u3 = between(o4.x, o4.y, x - d3, h, s4), n3 = between(o4.x, o4.y, x - d3, -h, s4);
  const double theta3u = u3.angle(), theta3d = n3.angle();
  traceLine(L"J3:");
  traceBranch(L"   u : cs(+t3)=(%.3lf, %.3lf)-> J3u: (%.2f | %.1f)", u3, arm.j3, theta3u);
  traceBranch(L"   d : cs(+t3)=(%.3lf, %.3lf)-> J3d: (%.2f | %.1f)", n3, arm.j3, theta3d);
  takeBranch(arm, {theta2u, theta3u}, {theta2d, theta3d});
}

// The second joint square to the first, the third parallel to the second.
bool hasShape(const Arm& arm) {
  return std::fabs(arm.twist2.cos) < kArmShape && std::fabs(arm.twist3.sin) < kArmShape;
}

void solveJoints(const SolveView& view, const Target& target, const Chain& chain,
                 Chain::const_iterator j1, int rotule, const UMatrix& mac2uni,
                 KMachineValueBase& out) {
  const auto wrist = std::find_if(chain.begin(), chain.end(), [rotule](const KMachineElem* e) {
    return e->getElemIndex() == rotule;
  });
  const Arm arm{*j1[0], *j1[1], *j1[2], *j1[3], out};
  if (wrist == chain.end() || !hasShape(arm)) return;
  const UVec3d centre =
      wristCentre(view, target, chain, static_cast<std::size_t>(wrist - chain.begin()), mac2uni);
  const UVec3d o4 = forearm(arm);
  firstJoint(arm, centre);
  secondAndThird(arm, o4, centre);
}

}  // namespace

// Deliberate: 0 whatever was reached (ArmSolver.OutOfReachStillAnswersZeroAndTurnsTheWrist), and
// the first three joints move although locked (LockedArm.IsMovedAllTheSame).
int solveArm(const SolveView& view, const KMachineValueBase& current, const Target& target,
             int rotule, const UMatrix& mac2uni, KMachineValueBase& out) {
  current.dump(L"\n--solveConfig1", true);
  target.point.dump(L" pos", true);
  target.dir.dump(L" dir", false);
  // Once warm, solving allocates nothing; the list is taken out, for a trace sink may solve too.
  thread_local Chain spare;
  Chain chain = std::move(spare);
  chain.assign(view.chain.begin(), view.chain.end());
  std::erase_if(chain, [](const KMachineElem* e) { return !e->isActive(); });
  const auto j1 = std::find_if(chain.begin(), chain.end(), [](const KMachineElem* e) {
    return e->getElemType() == KMachineElem::KMET_TYPE_AROT;
  });
  const bool isShort = j1 != chain.end() && chain.end() - j1 < 4;
  if (j1 != chain.end() && !isShort) solveJoints(view, target, chain, j1, rotule, mac2uni, out);
  spare = std::move(chain);
  if (isShort) return -1;
  turnWrist(view, target.dir, out);
  return 0;
}

}  // namespace zkin
