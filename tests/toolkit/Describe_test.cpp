#include "toolkit/Describe.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>

#include "tests/support/TempFile.h"

using korvo::Language;
using korvo::MachineInfo;
using korvo::test::TempDir;

namespace {

MachineInfo describeText(const std::string& text) {
  const TempDir folder;
  const korvo::Loaded loaded = korvo::load(folder.write("m.def", text));
  EXPECT_TRUE(loaded);
  return korvo::describe(*loaded.machine);
}

constexpr const char* kTableAc =
    "frame=z\nrotation=A,-x,0,0,0,0,50\nrotation=C,z,0,0,0,0,0\npart=x,y,0,0,0\n"
    "lien=BATI\naxis=X,x\naxis=Y,y\naxis=Z,z\ntool=z,0,0,150\n"
    "limits=A,-120,30\ncourseminimum=X,-5\ncollisions=tool,A,PIECE\n";

TEST(Describe, TreeRunsFromThePartToTheTools) {
  const MachineInfo info = describeText(kTableAc);
  const std::vector<std::string> names{"PIECE", "C", "A", "BATI", "X", "Y", "Z", "tool 1"};
  ASSERT_EQ(info.tree.size(), names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(info.tree[i].name, names[i]);
    EXPECT_EQ(info.tree[i].depth, static_cast<int>(i));
    EXPECT_EQ(info.tree[i].onPartSide, i < 4);
  }
  EXPECT_EQ(info.tree[0].type, "part");
  EXPECT_EQ(info.tree[1].type, "rotary");
  EXPECT_EQ(info.tree[3].type, "frame");
  EXPECT_EQ(info.tree[4].type, "linear");
  EXPECT_EQ(info.tree[7].type, "tool");
}

TEST(Describe, BranchesFollowTheirParent) {
  const MachineInfo info = describeText(
      "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,x\ntool=z,0,0,0\nlien=X\ngun=z,0,0,0\n");
  ASSERT_EQ(info.tree.size(), 5u);
  EXPECT_EQ(info.tree[3].name, "tool 1");
  EXPECT_EQ(info.tree[4].name, "tool 2");
  EXPECT_EQ(info.tree[4].type, "gun");
  EXPECT_EQ(info.tree[3].depth, info.tree[4].depth);
}

TEST(Describe, AxesAreInValueOrderWithLimitsAndSense) {
  const MachineInfo info = describeText(kTableAc);
  ASSERT_EQ(info.axes.size(), 5u);
  EXPECT_EQ(info.axes[0].name, "X");
  EXPECT_EQ(info.axes[0].min, -5.0);
  EXPECT_FALSE(info.axes[0].max.has_value());
  EXPECT_FALSE(info.axes[0].sense.has_value());
  const korvo::AxisInfo& a = info.axes[3];
  EXPECT_EQ(a.name, "A");
  EXPECT_EQ(a.number, 4);
  EXPECT_EQ(a.valueIndex, 3);
  EXPECT_EQ(a.direction, zgeo::UVec3d(-1, 0, 0));
  EXPECT_EQ(a.min, -120.0);
  EXPECT_EQ(a.max, 30.0);
  ASSERT_TRUE(a.sense.has_value());
  EXPECT_EQ(a.sense->body, korvo::RotaryBody::table);
  EXPECT_FALSE(a.sense->isIso841);
  EXPECT_TRUE(info.axes[4].sense->isIso841);
}

TEST(Describe, ToolHasItsClassInWords) {
  const MachineInfo info = describeText(kTableAc);
  ASSERT_EQ(info.tools.size(), 1u);
  EXPECT_EQ(info.tools[0].kine.kinematicClass, 3);
  EXPECT_EQ(info.tools[0].kinematicClass,
            "three linear axes and two rotary axes (all under the part)");
  EXPECT_EQ(info.tools[0].armShape, "");
  EXPECT_EQ(info.tools[0].nose, zgeo::UVec3d(0, 0, 150));
  EXPECT_EQ(info.tools[0].direction, zgeo::UVec3d(0, 0, 1));
}

TEST(Describe, CollisionPairsHaveNames) {
  const MachineInfo info = describeText(kTableAc);
  ASSERT_EQ(info.collisions.size(), 2u);
  EXPECT_EQ(info.collisions[0].a, "tool 1");
  EXPECT_EQ(info.collisions[0].b, "A");
  EXPECT_EQ(info.collisions[0].indices, std::make_pair(-101, 4));
  EXPECT_EQ(info.collisions[1].b, "PIECE");
}

// Two tools on one head at 0 and 80 mm below its B axis: the last row of each table carries its own
// distance, although the elements hold only the last tool's.
TEST(Describe, EachToolHasItsOwnDenavitHartenbergTable) {
  const MachineInfo info = describeText(
      "frame=z\npart=x,y,0,0,0\nlien=BATI\naxis=X,x\naxis=Y,y\naxis=Z,z\n"
      "rotation=C,z,0,0,0,0,0\nrotation=B,y,0,0,0,0,300\ntool=z,30,0,0\nlien=B\ntool=z,70,0,0\n");
  ASSERT_EQ(info.tools.size(), 2u);
  // The tool line is parallel to Z at x = 30 (70): B's line is square to it at that distance.
  EXPECT_NEAR(std::abs(info.tools[0].dhTable.back().dh.a), 30.0, 1e-9);
  EXPECT_NEAR(std::abs(info.tools[1].dhTable.back().dh.a), 70.0, 1e-9);
  EXPECT_EQ(info.tools[0].dhTable.back().name, "tool 1");
  EXPECT_EQ(info.tools[1].dhTable.back().name, "tool 2");
}

// --- the base of the table

std::vector<std::string> exampleFiles() {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(KORVO_MACHINES)) {
    if (entry.path().extension() == ".def") files.push_back(entry.path().string());
  }
  return files;
}

// The direction and a point of the line that the file gives to an element, by the element's name.
struct FileLine {
  zgeo::UVec3d direction, point;
  bool hasPoint = false;  // a linear axis has none
};

std::map<std::string, FileLine> fileLines(const MachineInfo& info) {
  std::map<std::string, FileLine> lines;
  for (const korvo::AxisInfo& a : info.axes) {
    lines[a.name] = {a.direction.normalised(), a.point, a.isRotary};
  }
  for (const korvo::ToolInfo& t : info.tools) {
    lines["tool " + std::to_string(t.number)] = {t.direction, t.nose, true};
  }
  return lines;
}

class DhBaseOf : public testing::TestWithParam<std::string> {};

// The table's angles carry the rounding of an arc sine near 90 degrees, about 1e-8 of a turn.
TEST_P(DhBaseOf, TimesTheRowsIsEachElementsLine) {
  const korvo::Loaded loaded = korvo::load(GetParam());
  ASSERT_TRUE(loaded);
  const MachineInfo info = korvo::describe(*loaded.machine);
  const auto lines = fileLines(info);
  for (const korvo::ToolInfo& tool : info.tools) {
    ASSERT_TRUE(tool.dhBase.has_value());
    zgeo::UMatrix frame = *tool.dhBase;
    int checked = 0;
    for (const korvo::DhRow& row : tool.dhTable) {
      frame = frame * zkin::KMachineElem::_transitionMatrix(row.dh);
      const auto line = lines.find(row.name);
      if (line == lines.end()) continue;  // the part
      zgeo::UVec3d z(0, 0, 1);
      frame.applyDir(z);
      EXPECT_LT(z.distanceTo(line->second.direction), 1e-6) << row.name;
      if (line->second.hasPoint) {
        const zgeo::UVec3d offset = line->second.point - frame.getOrigin();
        EXPECT_LT((offset ^ line->second.direction).norm(), 1e-4) << row.name;
      }
      ++checked;
    }
    EXPECT_EQ(checked + 1, static_cast<int>(tool.dhTable.size()));
    EXPECT_NEAR(frame.getOrigin().distanceTo(tool.nose), 0.0, 1e-4);
  }
}

INSTANTIATE_TEST_SUITE_P(Describe, DhBaseOf, testing::ValuesIn(exampleFiles()),
                         [](const auto& row) {
                           std::string name = std::filesystem::path(row.param).stem().string();
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

// The table starts from the common normal of the part's Z line and the X axis, which lies along Y:
// its base is turned by a quarter about Z.
TEST(Describe, TheBaseOfATableMayBeTurned) {
  const MachineInfo info =
      describeText("frame=z\npart=x,y,0,0,0\nlien=BATI\naxis=X,x\ntool=z,30,40,0\n");
  ASSERT_TRUE(info.tools[0].dhBase.has_value());
  const zgeo::UMatrix& base = *info.tools[0].dhBase;
  EXPECT_NEAR(base(0, 0), 0.0, 1e-9);
  EXPECT_NEAR(std::abs(base(1, 0)), 1.0, 1e-9);
  EXPECT_NEAR(base(2, 2), 1.0, 1e-9);
}

// All lines along Z: how the table is turned is seen from where they stand, else it does not
// matter.
TEST(Describe, ATableOfParallelLinesHasABase) {
  const MachineInfo info = describeText(
      "frame\npart=x,y,0,0,0\nlien=BATI\nrotation=C,1,z,0,0,10,0,0\n"
      "rotation=D,2,z,0,0,10,20,0\ntool=z,10,20,5\n");
  ASSERT_TRUE(info.tools[0].dhBase.has_value());
  zgeo::UMatrix frame = *info.tools[0].dhBase;
  for (const korvo::DhRow& row : info.tools[0].dhTable) {
    frame = frame * zkin::KMachineElem::_transitionMatrix(row.dh);
  }
  EXPECT_LT(frame.getOrigin().distanceTo({10, 20, 5}), 1e-9);
  const MachineInfo single =
      describeText("frame=z\npart=x,y,0,0,0\nlien=BATI\naxis=Z,z\ntool=z,0,0,7\n");
  EXPECT_EQ(single.tools[0].dhBase, zgeo::UMatrix());
}

TEST(Describe, AChainWithoutADirectionHasNoBase) {
  const MachineInfo info =
      describeText("frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\naxis=Y,2\ntool=z,0,0,0\n");
  EXPECT_FALSE(info.tools[0].dhBase.has_value());
}

TEST(Describe, GeometryFilesAreFoundOrNot) {
  const TempDir folder;
  folder.write("Head.stl", "solid\nendsolid\n");
  const auto path =
      folder.write("m.def",
                   "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x,$ZRN_MACHINE_DEF\\Head.stl\n"
                   "tool=z,0,0,0,nowhere.stl\n");
  const korvo::Loaded loaded = korvo::load(path);
  ASSERT_TRUE(loaded);
  const MachineInfo info = korvo::describe(*loaded.machine);
  ASSERT_EQ(info.geometry.size(), 2u);
  EXPECT_EQ(info.geometry[0].element, "X");
  EXPECT_TRUE(info.geometry[0].found);
  EXPECT_EQ(info.geometry[1].element, "tool 1");
  EXPECT_EQ(info.geometry[1].file, "nowhere.stl");
  EXPECT_FALSE(info.geometry[1].found);
}

TEST(Describe, ClassesAreSaidInWords) {
  zkin::KMachine::_sUKine k;
  EXPECT_EQ(korvo::kinematicClassText(k, 0, 0), "not classified");
  k.kinematicClass = 1;
  EXPECT_EQ(korvo::kinematicClassText(k, 0, 0), "three linear axes, no rotary axis");
  k.kinematicClass = 2;
  EXPECT_EQ(korvo::kinematicClassText(k, 1, 0),
            "three linear axes and one rotary axis (in the head)");
  EXPECT_EQ(korvo::kinematicClassText(k, 0, 1),
            "three linear axes and one rotary axis (under the part)");
  k.kinematicClass = 3;
  EXPECT_EQ(korvo::kinematicClassText(k, 1, 1),
            "three linear axes and two rotary axes (1 in the head, 1 under the part)");
  k.kinematicClass = 4;
  EXPECT_EQ(korvo::kinematicClassText(k, 3, 0),
            "three linear axes and three or more rotary axes (all in the head)");
  k.kinematicClass = 5;
  EXPECT_EQ(korvo::kinematicClassText(k, 6, 0),
            "no three independent linear axes (articulated arm or unknown layout)");
}

TEST(Describe, ClassesAndShapesAreSaidInFrench) {
  zkin::KMachine::_sUKine k;
  k.kinematicClass = 3;
  EXPECT_EQ(korvo::kinematicClassText(k, 1, 1, Language::french),
            "trois axes linéaires et deux axes rotatifs (1 dans la tête, 1 sous la pièce)");
  k.kinematicClass = 5;
  k.armType = 1;
  k.wristType = 2;
  EXPECT_EQ(korvo::armShapeText(k, Language::french),
            "bras avec un axe rotatif après le premier ; poignet sphérique, l'outil sur son "
            "dernier axe");
}

TEST(Describe, LinearAxesBeyondThreeAreCounted) {
  const MachineInfo info = describeText(
      "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\n"
      "rotation=C,6,z,0,0,0,0,0\naxis=W,7,z\ntool=z,0,0,0\n");
  EXPECT_EQ(info.tools.front().kinematicClass,
            "three linear axes and one rotary axis (in the head); 4 linear axes in all");
}

TEST(Describe, ArmShapesAreSaidInWords) {
  zkin::KMachine::_sUKine k;
  k.kinematicClass = 3;
  EXPECT_EQ(korvo::armShapeText(k), "");
  k.kinematicClass = 5;
  k.armType = 1;
  k.wristType = 2;
  EXPECT_EQ(
      korvo::armShapeText(k),
      "arm with a rotary axis after its first one; ball wrist with the tool on its last axis");
  k.armType = 3;
  k.wristType = 4;
  EXPECT_EQ(
      korvo::armShapeText(k),
      "arm with a linear, then a rotary axis after its first rotary one; ball wrist with the tool "
      "off its last axis");
  k.armType = 4;
  k.wristType = -1;
  EXPECT_EQ(korvo::armShapeText(k),
            "arm with two linear axes after its first rotary one; no ball wrist");
  k.armType = -1;
  EXPECT_EQ(korvo::armShapeText(k), "no known arm shape; no ball wrist");
}

}  // namespace
