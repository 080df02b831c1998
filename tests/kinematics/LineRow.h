#pragma once

#include <gtest/gtest.h>

#include <string>

#include "kinematics/KMachineElem.h"
#include "tests/kinematics/SampleElem.h"

namespace korvo::test {

/// Short names of the element types.
namespace elemtype {
enum Type { kFrame = 1, kPart, kTool, kLinear, kRotary, kGun, kGeometry };
}  // namespace elemtype

/// What a line gives; everything else has its default.
struct Read {
  int type;
  const wchar_t* name;
  int index;
  zgeo::UVec3d axis = {};
  zgeo::UVec3d axisX = {};
  zgeo::UVec3d pivot = {};
  const wchar_t* file = L"";
  int red = 0, green = 0, blue = 0;
};

inline void expectVector(const zgeo::UVec3d& v, const zgeo::UVec3d& expected) {
  EXPECT_DOUBLE_EQ(v.x, expected.x);
  EXPECT_DOUBLE_EQ(v.y, expected.y);
  EXPECT_DOUBLE_EQ(v.z, expected.z);
}

inline void expectElem(zkin::KMachineElem e, const Read& read) {
  EXPECT_EQ(static_cast<int>(e.getElemType()), read.type);
  EXPECT_EQ(e.getElemName(), read.name);
  EXPECT_EQ(e.getElemIndex(), read.index);
  expectVector(e.getElemAxis(), read.axis);
  expectVector(e.getElemAxisX(), read.axisX);
  expectVector(e.getElemPivot(), read.pivot);
  EXPECT_EQ(e.getGeomFile(), read.file);
  expectColour(e, read.red, read.green, read.blue);
  // The rest has its defaults: put back what a line can set, and compare all.
  e.setElemType(zkin::KMachineElem::KMET_TYPE_NONE);
  e.setElemName(L"");
  e.setElemIndex(zkin::KMachineElem::KMET_NONE);
  e.setElemAxis({});
  e.setElemAxisX({});
  e.setElemPivot({});
  e.setGeomFile(L"");
  e.setGeomRGB(0, 0, 0);
  expectDefaults(e);
}

/// A line of a definition file and what it gives.
struct LineRow {
  const char* name;
  int version;
  const wchar_t* line;
  Read read;
};

inline std::string lineName(const testing::TestParamInfo<LineRow>& row) { return row.param.name; }

}  // namespace korvo::test
