// The data lines of each kind: what they give, and that each of them is required.

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "geometry/ZrnFile.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/ZrnStream.h"
#include "tests/support/ZrnText.h"

namespace zkin {
namespace {

using korvo::test::CommaLocale;
using korvo::test::dataOf;
using korvo::test::dataText;
using korvo::test::restOf;
using korvo::test::Stream;
using korvo::test::streamOf;

using Lines = std::vector<std::string>;

struct Layout {
  const char* name;
  long long a, b, code;
  Lines lines;        ///< The data lines, complete.
  std::string data;   ///< What they give, as in ZrnText.h.
  std::string fresh;  ///< What a new object holds.
  int anything = -1;  ///< Rank of the line that may say anything.
};

std::ostream& operator<<(std::ostream& out, const Layout& layout) { return out << layout.name; }

std::string joined(const Lines& lines, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += lines[i] + '\n';
  return text;
}

bool read(CGeomFileEntity& entity, std::FILE* stream) {
  return entity.GetGeom()->ReadDatas(stream, nullptr, nullptr, nullptr);
}

bool read(CGeomFileEntity& entity, const std::string& text) {
  return read(entity, streamOf(text).get());
}

class ZrnData : public testing::TestWithParam<Layout> {
 protected:
  ZrnData() { entity.SetHeader(GetParam().a, GetParam().b, GetParam().code); }

  const Lines& lines() const { return GetParam().lines; }
  std::string complete() const { return joined(lines(), lines().size()); }

  CGeomFileEntity entity;
};

TEST_P(ZrnData, OfANewObjectIsEmpty) { EXPECT_EQ(dataText(entity), GetParam().fresh); }

TEST_P(ZrnData, IsAsWritten) {
  ASSERT_TRUE(read(entity, complete()));
  EXPECT_EQ(dataText(entity), GetParam().data);
}

TEST_P(ZrnData, IsTheSameUnderADecimalComma) {
  const CommaLocale locale;
  ASSERT_TRUE(locale.isSet());
  ASSERT_TRUE(read(entity, complete()));
  EXPECT_EQ(dataText(entity), GetParam().data);
}

TEST_P(ZrnData, NeedsNoLastLineFeed) {
  std::string text = complete();
  if (!text.empty()) text.pop_back();
  ASSERT_TRUE(read(entity, text));
  EXPECT_EQ(dataText(entity), GetParam().data);
}

TEST_P(ZrnData, LeavesWhatFollows) {
  const Stream stream = streamOf(complete() + "next\n");
  ASSERT_TRUE(read(entity, stream.get()));
  EXPECT_EQ(restOf(stream.get()), "next\n");
}

TEST_P(ZrnData, IgnoresWhatALineHoldsBehindItsFields) {
  std::string text;
  for (const std::string& line : lines()) text += line + " # remark\r\n";
  ASSERT_TRUE(read(entity, text));
  EXPECT_EQ(dataText(entity), GetParam().data);
}

TEST_P(ZrnData, ReadAgainReplacesTheFirst) {
  ASSERT_TRUE(read(entity, complete()));
  ASSERT_TRUE(read(entity, complete()));
  EXPECT_EQ(dataText(entity), GetParam().data);
}

TEST_P(ZrnData, NeedsEveryLine) {
  for (std::size_t count = 0; count < lines().size(); ++count) {
    EXPECT_FALSE(read(entity, joined(lines(), count))) << count << " lines";
  }
}

TEST_P(ZrnData, NeedsNumbersInEveryLine) {
  for (const char* const bad : {"", "x", ".", "# 1 2 3 4", "-"}) {
    for (std::size_t i = 0; i < lines().size(); ++i) {
      Lines changed = lines();
      changed[i] = bad;
      const bool mayBeAnything = static_cast<int>(i) == GetParam().anything;
      EXPECT_EQ(read(entity, joined(changed, changed.size())), mayBeAnything)
          << "line " << i << ": " << bad;
    }
  }
}

TEST_P(ZrnData, UsesUpTheLineThatDoesNotFit) {
  for (std::size_t i = 0; i < lines().size(); ++i) {
    if (static_cast<int>(i) == GetParam().anything) continue;
    const Stream stream = streamOf(joined(lines(), i) + "bad\nnext\n");
    EXPECT_FALSE(read(entity, stream.get()));
    EXPECT_EQ(restOf(stream.get()), "next\n") << "line " << i;
  }
}

TEST_P(ZrnData, IsGoneAfterResetAndAfterClear) {
  for (const bool clears : {false, true}) {
    ASSERT_TRUE(read(entity, complete()));
    clears ? entity.GetGeom()->Clear() : entity.GetGeom()->Reset();
    EXPECT_EQ(dataText(entity), GetParam().fresh);
  }
}

const auto layoutName = [](const auto& info) { return std::string(info.param.name); };

const std::string kFreshArc = "0 0 0 0 0 0|1 0 0 0 1 0 0 0 1|0 0 0";

INSTANTIATE_TEST_SUITE_P(
    Curves, ZrnData,
    testing::Values(
        Layout{"Polyline", 2, 2, 1, {"0.5 1 2", "3 4 5e1"}, "0.5 1 2 3 4 50", ""},
        Layout{"Polyline22", 2, 0, 22, {"0.5 1 2", "3 4 5e1"}, "0.5 1 2 3 4 50", ""},
        Layout{"PolylineWithoutPoints", 2, 0, 1, {}, "", ""},
        Layout{"PolylineOfNegativeCount", 2, -3, 1, {}, "", ""},
        Layout{"Polyline22OfNegativeCount", -3, 0, 22, {}, "", ""},
        Layout{"PolylineUV", 3, 1, 2, {"0 .5", "1 -1", "2 0x10"}, "0 0.5 1 -1 2 16", ""},
        Layout{"PolylineUVWithoutPoints", 0, 1, 2, {}, "", ""},
        Layout{"PolylineUVOfNegativeCount", -1, 1, 2, {}, "", ""},
        Layout{"PolynomialCurve", 3, 1, 4, {"1 2 3", "4 5 6", "7 8 9"}, "1 2 3 4 5 6 7 8 9", ""},
        Layout{"TrimPolynomialCurve",
               2,
               0,
               5,
               {"0.25 0.75", "1 2 3", "4 5 6"},
               "0 0|1 2 3 4 5 6",
               "0 0|",
               0},
        Layout{"NurbsCurve",
               2,
               1,
               9,
               {"1 2 3 0.5", "4 5 6 0.25", "1 99", "1 98", "0.5 1.5", "7 8", "4", "0", "0", "2",
                "2", "77"},
               "1 2 3 0.5 4 5 6 0.25|0 1 1 0.5 1.5|0 0 2 2",
               "|0 0 0 0 0|"},
        Layout{"NurbsCurveThatIsNotPeriodic",
               2,
               1,
               9,
               {"1 2 3 1", "4 5 6 1", "3 0", "2 1", "0 1", "0 0", "0", "0"},
               "1 2 3 1 4 5 6 1|0 3 0 0 1|",
               "|0 0 0 0 0|"},
        Layout{"NurbsCurveWithNegativeKnotCount",
               2,
               1,
               9,
               {"1 2 3 1", "4 5 6 1", "3 0", "0 0", "0 1", "0 0", "-5", "0"},
               "1 2 3 1 4 5 6 1|0 3 0 0 1|",
               "|0 0 0 0 0|"},
        Layout{"NurbsCurveInAPlane",
               3,
               1,
               9,
               {"1 2 0.5", "4 5 0.25", "6 7 8", "2 0", "0 0", "0 1", "0 0", "1", "0.5", "0"},
               "1 2 0 0.5 4 5 0 0.25 6 7 0 8|1 2 0 0 1|0.5",
               "|0 0 0 0 0|"},
        Layout{"Arc",
               1,
               1,
               14,
               {"0.5 1.5", "25", "1 2 3", "0 1 0", "-1 0 0", "0 0 1", "7 8 9"},
               "0.5 1.5 25 1 2 3|0 1 0 -1 0 0 0 0 1|7 8 9",
               kFreshArc}),
    layoutName);

INSTANTIATE_TEST_SUITE_P(
    Surfaces, ZrnData,
    testing::Values(
        Layout{"PolynomialSurface",
               2,
               3,
               4,
               {"1 0 0", "2 0 0", "3 0 0", "4 0 0", "5 0 0", "6 0 0"},
               "1 0 0 2 0 0 3 0 0 4 0 0 5 0 0 6 0 0",
               ""},
        Layout{
            "Multipatch", 1, 1, 8, {"2", "0.5", "1.5", "3", "1", "2", "3"}, "0.5 1.5|1 2 3", "|"},
        Layout{"MultipatchWithoutParameters", 1, 1, 8, {"0", "-7"}, "|", "|"},
        Layout{"NurbsSurface",
               2,
               3,
               9,
               {"1 0 0 .5", "2 0 0 1", "3 0 0 1", "4 0 0 1", "5 0 0 1", "6 0 0 2", "1 2", "1 0",
                "0 1", "2 3", "2", "0.5", "1.5", "3", "7", "8", "9"},
               "1 0 0 0.5 2 0 0 1 3 0 0 1 4 0 0 1 5 0 0 1 6 0 0 2|1 2 1 0 0 1 2 3|0.5 1.5|7 8 9",
               "|0 0 0 0 0 0 0 0||"},
        Layout{"NurbsSurfaceRationalInV",
               2,
               2,
               9,
               {"1 0 0 1", "2 0 0 1", "3 0 0 1", "4 0 0 1", "1 2", "2 1", "0 1", "2 3", "0", "-1"},
               "1 0 0 1 2 0 0 1 3 0 0 1 4 0 0 1|1 2 0 1 0 1 2 3||",
               "|0 0 0 0 0 0 0 0||"},
        Layout{"Planar", 5, 6, 10, {"0.5 1 -2"}, "0.5 1 -2", "0 0 0"}),
    layoutName);

// --- what the table above cannot show

TEST(ZrnNurbsCurve, IsDecidedByItsFirstPole) {
  CGeomFileEntity entity;
  entity.SetHeader(2, 1, 9);
  const std::string rest = "1 0\n0 0\n0 1\n0 0\n0\n0\n";
  // Planar: of four reals the first three count, the third being the weight.
  ASSERT_TRUE(read(entity, "1 2 .5\n3 4 5 6\n" + rest));
  EXPECT_EQ(dataText(entity), "1 2 0 0.5 3 4 0 5|1 1 0 0 1|");
  // In space: three reals do not do.
  EXPECT_FALSE(read(entity, "1 2 3 .5\n3 4 5\n" + rest));
  // Read again, the flag is that of the new lines.
  ASSERT_TRUE(read(entity, "1 2 3 .5\n3 4 5 6\n" + rest));
  EXPECT_EQ(dataText(entity), "1 2 3 0.5 3 4 5 6|0 1 0 0 1|");
}

TEST(ZrnNurbsCurve, IntegerFieldsAreTakenFromRealsAsFarAsTheyGo) {
  CGeomFileEntity entity;
  entity.SetHeader(2, 1, 9);
  const std::string poles = "0 0 0 1\n0 0 0 1\n";
  EXPECT_FALSE(read(entity, poles + "1.9 1.9\n0 0\n0 1\n0 0\n0\n0\n"));
  // A count of 1.7 is 1.
  ASSERT_TRUE(read(entity, poles + "1 0\n0 0\n0 1\n0 0\n1.7\n5\n0.5\n"));
  EXPECT_EQ(dataText(entity), "0 0 0 1 0 0 0 1|0 1 0 0 1|5");
}

TEST(ZrnScaling, IsOneUntilRead) {
  CGeomFileEntity entity;
  entity.SetHeader(2, 2, 100);
  const auto& scaling = dataOf<CGeomFilePrivateScaling>(entity);
  EXPECT_EQ(scaling.factor, 1.0);
  ASSERT_TRUE(read(entity, "25.4 mm\n"));
  EXPECT_EQ(scaling.factor, 25.4);
  entity.GetGeom()->Reset();
  EXPECT_EQ(scaling.factor, 1.0);
  ASSERT_TRUE(read(entity, "2\n"));
  entity.GetGeom()->Clear();
  EXPECT_EQ(scaling.factor, 1.0);
  EXPECT_FALSE(read(entity, "x\n"));
  EXPECT_FALSE(read(entity, ""));
  EXPECT_EQ(scaling.factor, 1.0);
}

TEST(ZrnReset, KeepsStorageAndClearGivesItBack) {
  CGeomFilePrivatePolylineCurve curve(100);
  std::string text;
  for (int i = 0; i < 100; ++i) text += "1 2 3\n";
  ASSERT_TRUE(curve.ReadDatas(streamOf(text).get(), nullptr, nullptr, nullptr));
  curve.Reset();
  EXPECT_GE(curve.points.capacity(), 100u);
  EXPECT_EQ(curve.n, 100);
  curve.Clear();
  EXPECT_EQ(curve.points.capacity(), 0u);
  EXPECT_EQ(curve.n, 100);
}

Lines attributesOf(const CGeomFileEntity& entity) {
  const CGeomFileLines& lines = dataOf<CGeomFilePrivateAttribute>(entity).lines;
  Lines texts;
  for (std::size_t i = 0; i < lines.size(); ++i) texts.emplace_back(lines[i]);
  return texts;
}

TEST(ZrnAttribute, IsEveryLineUpToTheNextHeader) {
  CGeomFileEntity entity;
  entity.SetHeader(2, 2, 210);
  const Stream stream = streamOf("<CAD_ATTR>(INT) 5,(CHAR) a\n\n1 2\r\n.5 1 2\n2 2 10\n0 0 1\n");
  ASSERT_TRUE(read(entity, stream.get()));
  EXPECT_EQ(attributesOf(entity),
            (Lines{"<CAD_ATTR>(INT) 5,(CHAR) a\n", "\n", "1 2\r\n", ".5 1 2\n"}));
  EXPECT_EQ(restOf(stream.get()), "2 2 10\n0 0 1\n");
}

TEST(ZrnAttribute, EndsAtTextThatLooksLikeAHeader) {
  CGeomFileEntity entity;
  entity.SetHeader(2, 2, 210);
  const Stream stream = streamOf("text\n1 2 3 are my favourites\nmore\n");
  ASSERT_TRUE(read(entity, stream.get()));
  EXPECT_EQ(attributesOf(entity), (Lines{"text\n"}));
  EXPECT_EQ(restOf(stream.get()), "1 2 3 are my favourites\nmore\n");
}

TEST(ZrnAttribute, MayBeEmptyAndMayEndWithTheFile) {
  CGeomFileEntity entity;
  entity.SetHeader(2, 2, 210);
  ASSERT_TRUE(read(entity, ""));
  EXPECT_EQ(attributesOf(entity), Lines{});
  ASSERT_TRUE(read(entity, "0 0 0\n"));
  EXPECT_EQ(attributesOf(entity), Lines{});
  ASSERT_TRUE(read(entity, "last"));
  EXPECT_EQ(attributesOf(entity), (Lines{"last"}));
  entity.GetGeom()->Reset();
  EXPECT_EQ(attributesOf(entity), Lines{});
  ASSERT_TRUE(read(entity, "last"));
  entity.GetGeom()->Clear();
  EXPECT_EQ(attributesOf(entity), Lines{});
}

TEST(ZrnUnreadSurfaces, ReadNothing) {
  for (const int code : {11, 17, 18, 20, 110}) {
    CGeomFileEntity entity;
    entity.SetHeader(2, 2, code);
    const Stream stream = streamOf("1 2 3\n");
    EXPECT_FALSE(read(entity, stream.get()));
    EXPECT_EQ(restOf(stream.get()), "1 2 3\n");
    entity.GetGeom()->Reset();
    entity.GetGeom()->Clear();
  }
}

// --- the kind is looked at before a read

struct Reader {
  const char* name;
  bool (*read)(std::FILE*, CGeomFileEntity&, const ZRN_Callbacks&);
  long long a, b, code;
  std::string data;
  const char* text;
};

const Reader kReaders[] = {
    {"PolyLine", GetPolyLineCurveDatas, 2, 1, 1, "1 2 3\n",
     "GetPolyLineCurveDatas:: type inconsistent with datas"},
    {"UVPolyLine", GetUVPolyLineCurveDatas, 1, 1, 2, "1 2\n",
     "GetUVPolyLineCurveDatas :: type inconsistent with datas"},
    {"PolynomialCurve", GetPolynomialCurveDatas, 2, 1, 4, "1 2 3\n1 2 3\n",
     "GetPolynomialCurveDatas:: type inconsistent with datas"},
    {"PolynomialSurface", GetPolynomialSurfaceDatas, 2, 2, 4, "1 2 3\n1 2 3\n1 2 3\n1 2 3\n",
     "GetPolynomialSurfaceDatas:: type inconsistent with datas"},
    {"TrimmedPolynomialCurve", GetTrimmedPolynomialCurveDatas, 2, 0, 5, "0 1\n1 2 3\n1 2 3\n",
     "GetTrimmedPolynomialCurveDatas:: type inconsistent with datas"},
    {"Multipatch", GetMultipatchSurfaceDatas, 1, 1, 8, "0\n0\n",
     "GetMultipatchSurfaceDatas:: type inconsistent with datas"},
    {"NurbsCurve", GetNurbsCurveDatas, 2, 1, 9, "0 0 0 1\n0 0 0 1\n1 0\n0 0\n0 1\n0 0\n0\n0\n",
     "GetNurbsCurveDatas:: type inconsistent with datas"},
    {"NurbsSurface", GetNurbsSurfaceDatas, 2, 2, 9,
     "0 0 0 1\n0 0 0 1\n0 0 0 1\n0 0 0 1\n1 1\n0 0\n0 1\n0 1\n0\n0\n",
     "GetNurbsSurfaceDatas:: type inconsistent with datas"},
    {"PlanarSurface", GetPlanarSurfaceDatas, 2, 2, 10, "0 0 1\n",
     "GetPlanarSurfaceDatas:: type inconsistent with datas"},
    {"CircularArc", GetCircularArcCurveDatas, 1, 1, 14,
     "0 1\n1\n0 0 0\n1 0 0\n0 1 0\n0 0 1\n0 0 0\n",
     "GetCircularArcCurveDatas:: type inconsistent with datas"},
    {"Scale", GetScaleDatas, 2, 2, 100, "5\n", "GetScaleDatas:: type inconsistent with datas"},
    {"Attributes", GetAttributesDatas, 2, 2, 210, "text\n",
     "GetAttributesDatas:: type inconsistent with datas"},
};

std::ostream& operator<<(std::ostream& out, const Reader& reader) { return out << reader.name; }

class ZrnDatasOfOneKind : public testing::TestWithParam<Reader> {
 protected:
  std::vector<std::string> said;
  ZRN_Callbacks callbacks{nullptr, nullptr, [this](const char* text) { said.emplace_back(text); }};
};

TEST_P(ZrnDatasOfOneKind, AreReadIntoAnEntityOfThatKind) {
  CGeomFileEntity entity;
  entity.SetHeader(GetParam().a, GetParam().b, GetParam().code);
  EXPECT_TRUE(GetParam().read(streamOf(GetParam().data).get(), entity, callbacks));
  const bool mayBeEmpty = GetParam().code == 210;
  EXPECT_EQ(GetParam().read(streamOf("").get(), entity, callbacks), mayBeEmpty);
  EXPECT_TRUE(said.empty());
}

TEST_P(ZrnDatasOfOneKind, AreRefusedForAnyOtherKindAndForNone) {
  for (const Reader& other : kReaders) {
    if (other.code == GetParam().code && other.b == GetParam().b) continue;
    CGeomFileEntity entity;
    entity.SetHeader(other.a, other.b, other.code);
    const Stream stream = streamOf(other.data);
    said.clear();
    EXPECT_FALSE(GetParam().read(stream.get(), entity, callbacks)) << other.name;
    EXPECT_EQ(said, (std::vector<std::string>{GetParam().text}));
    EXPECT_EQ(restOf(stream.get()), other.data);
  }
  CGeomFileEntity none;
  said.clear();
  EXPECT_FALSE(GetParam().read(streamOf("0\n").get(), none, callbacks));
  EXPECT_EQ(said, (std::vector<std::string>{GetParam().text}));
  EXPECT_FALSE(GetParam().read(streamOf("0\n").get(), none, {}));  // nobody to tell
}

const auto readerName = [](const auto& info) { return std::string(info.param.name); };

INSTANTIATE_TEST_SUITE_P(Every, ZrnDatasOfOneKind, testing::ValuesIn(kReaders), readerName);

}  // namespace
}  // namespace zkin
