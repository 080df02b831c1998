#pragma once

#include <gtest/gtest.h>

#include <utility>

#include "kinematics/KMachineElem.h"

namespace korvo::test {

/// An element in which every field that can be set holds another value than its default.
inline zkin::KMachineElem sampleElem() {
  zkin::KMachineElem e;
  e.setElemType(zkin::KMachineElem::KMET_TYPE_AROT);
  e.setElemAxis({0, 0.6, 0.8});
  e.setElemAxisX({1, 0, 0});
  e.setElemPivot({10, 20, 30});
  e.setElemIndex(5);
  e.setValueIndex(3);
  e.setPrevIndex(2);
  e.setHook(4, {7, 8, 9});
  e.setElemName(L"Head");
  e.setGeomFile(L"Head.stl");
  e.setGeomRGB(11, 12, 13);
  e.setTHELength(150);
  e.setLocked(true);
  e.setElemLaw(6);
  e.setMin(-90, true);
  e.setMax(120, true);
  e.invert();
  e.setDHmRef({0.1, 0.2, 0.3, 0.4});
  e.setDHmValue(zkin::KMachineElem::_sUDHm{0.5, 0.6, 0.7, 0.8});
  return e;
}

inline void expectDHm(const zkin::KMachineElem::_sUDHm& h, double alpha, double a, double theta,
                      double d) {
  EXPECT_EQ(h.alpha, alpha);
  EXPECT_EQ(h.a, a);
  EXPECT_EQ(h.theta, theta);
  EXPECT_EQ(h.d, d);
}

inline void expectColour(const zkin::KMachineElem& e, int red, int green, int blue) {
  int r = -1, g = -1, b = -1;
  e.getGeomRGB(r, g, b);
  EXPECT_EQ(r, red);
  EXPECT_EQ(g, green);
  EXPECT_EQ(b, blue);
}

/// Expects what `reset` leaves in every field.
inline void expectDefaults(const zkin::KMachineElem& e) {
  expectDHm(e.getDHmRef(), 0, 0, 0, 0);
  expectDHm(e.getDHmCur(), 0, 0, 0, 0);
  EXPECT_EQ(static_cast<int>(e.getElemType()), 0);
  EXPECT_TRUE(e.getElemAxis() == zgeo::UVec3d(0, 0, 0));
  EXPECT_TRUE(e.getElemAxisX() == zgeo::UVec3d(0, 0, 0));
  EXPECT_TRUE(e.getElemPivot() == zgeo::UVec3d(0, 0, 0));
  EXPECT_EQ(e.getElemIndex(), -10);
  EXPECT_EQ(e.getValueIndex(), -1);
  EXPECT_EQ(e.getPrevIndex(), -10);
  zgeo::UVec3d point(1, 1, 1);
  EXPECT_EQ(e.getHook(point), -10);
  EXPECT_TRUE(point == zgeo::UVec3d(0, 0, 0));
  EXPECT_EQ(e.getElemName(), L"");
  EXPECT_EQ(e.getGeomFile(), L"");
  expectColour(e, 0, 0, 0);
  EXPECT_FALSE(e.isInverted());
  EXPECT_EQ(e.getTHELength(), 0.0);
  EXPECT_FALSE(e.isLocked());
  EXPECT_EQ(e.getElemLaw(), 0);
  EXPECT_FALSE(e.hasMin());
  EXPECT_FALSE(e.hasMax());
  EXPECT_EQ(e.getMin(), 0.0);
  EXPECT_EQ(e.getMax(), 0.0);
}

}  // namespace korvo::test
