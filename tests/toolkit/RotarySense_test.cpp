#include "toolkit/RotarySense.h"

using korvo::RotaryBody;
using korvo::RotarySense;
using zgeo::UVec3d;

namespace {

// The turn of the tool about the part is right-handed about the direction of the file, that is
// counter-clockwise seen from where the direction points to; a table turns the other way; ISO 841
// wants the tool counter-clockwise seen from the positive end.
struct Row {
  const char* label;
  const char* name;
  UVec3d direction;
  RotaryBody body;
  const char* seenFrom;
  bool counter;
  bool iso;
};

class SenseTable : public testing::TestWithParam<Row> {};

TEST_P(SenseTable, IsToldFromThePositiveEnd) {
  const Row& row = GetParam();
  const RotarySense sense = korvo::rotarySense(row.name, row.direction, row.body);
  EXPECT_EQ(sense.seenFrom, row.seenFrom);
  EXPECT_EQ(sense.bodyTurnsCounter, row.counter);
  EXPECT_EQ(sense.isIso841, row.iso);
}

INSTANTIATE_TEST_SUITE_P(
    RotarySense, SenseTable,
    testing::Values(Row{"StandardHead", "B", {0, 1, 0}, RotaryBody::head, "+Y", true, true},
                    Row{"ReversedHead", "B", {0, -1, 0}, RotaryBody::head, "+Y", false, false},
                    Row{"StandardTable", "C", {0, 0, 1}, RotaryBody::table, "+Z", false, true},
                    Row{"ReversedTable", "C", {0, 0, -1}, RotaryBody::table, "+Z", true, false},
                    Row{"ArmJoint", "J2", {0, -1, 0}, RotaryBody::arm, "+Y", false, false},
                    Row{"TiltedHeadByItsLetter",
                        "B",
                        {0, 1, 1},
                        RotaryBody::head,
                        "(0, 0.7071, 0.7071)",
                        true,
                        true},
                    Row{"TiltedAgainstItsLetter",
                        "B",
                        {0, -1, 1},
                        RotaryBody::head,
                        "(0, 0.7071, -0.7071)",
                        false,
                        false},
                    Row{"OtherLetterTakesTheLargestPart",
                        "C",
                        {-1, 0, 0},
                        RotaryBody::head,
                        "+X",
                        false,
                        false},
                    Row{"LowerCaseName", "a", {2, 0, 0}, RotaryBody::table, "+X", false, true}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(RotarySense, SaysItInASentence) {
  EXPECT_EQ(korvo::rotarySense("C", {0, 0, 1}, RotaryBody::table).text,
            "at +90 the table turns clockwise seen from +Z, so the tool counter-clockwise about "
            "the part: the sense of ISO 841");
  EXPECT_EQ(korvo::rotarySense("C", {0, 0, 1}, RotaryBody::table, korvo::Language::french).text,
            "à +90 la table tourne dans le sens des aiguilles d'une montre, vu depuis +Z, donc "
            "l'outil dans le sens inverse des aiguilles d'une montre autour de la pièce : le sens "
            "de l'ISO 841");
  EXPECT_EQ(korvo::rotarySense("A", {-1, 0, 0}, RotaryBody::head).text,
            "at +90 the head turns clockwise seen from +X: against the sense of ISO 841");
  EXPECT_EQ(korvo::rotarySense("J1", {0, 0, 1}, RotaryBody::arm).text,
            "at +90 the arm turns counter-clockwise seen from +Z: the sense of ISO 841");
}

}  // namespace
