// A host that writes numbers with a decimal comma: files and traces keep the point.

#include "tests/support/LoadText.h"

#include "tests/kinematics/KMachine_describe.h"
#include "tests/support/CommaLocale.h"

using korvo::test::CommaLocale;
using korvo::test::describe;
using zgeo::UTools;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValue;

namespace {

class DecimalComma : public korvo::test::LoadingTest {
 protected:
  void SetUp() override { ASSERT_TRUE(comma.isSet()); }
  void TearDown() override {  // the host's locale is still its own
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "korvo_comma");
    EXPECT_EQ(std::strtod("2,5", nullptr), 2.5);
  }

  CommaLocale comma;
};

TEST_F(DecimalComma, FilesAreReadWithPoints) {
  const KMachine machine = load(
      "rotation=C,0,0,0.5,1,1,10.25,-0.5,1e-1\nlimits=C,-1.5,2.75\nrotationpoint=1.5,2.5\n", 2);
  EXPECT_EQ(describe(machine), "C(6<-10) dir 0 0 1 at 10.25 -0.5 0.1 min -1.5 max 2.75");
  ASSERT_NE(machine.getRotationPoint(0), nullptr);
  EXPECT_EQ((*machine.getRotationPoint(0))[0], 1.5);
  EXPECT_EQ((*machine.getRotationPoint(0))[1], 2.5);
}

TEST_F(DecimalComma, PositionsAreDumpedWithPoints) {
  KMachineValue<2> value;
  value[0] = 1234.5, value[1] = -0.25;
  value.dump(L"p", false);
  EXPECT_TRUE(trace.claim(L"KMV<2> (p) [  +1234.500 |     -0.250 ]"));
}

TEST_F(DecimalComma, ElementsAreDumpedWithPoints) {
  KMachineElem e(L"axis=X,0,0,1,x.stl", 2);
  e.setMin(-1234.5, true);
  e.setHook(4, {0.5, 0, 0});
  e.dump(L"e");
  EXPECT_TRUE(
      trace.claim(L"e_LIN,      X (i:   1, p: -10) <x.stl>  dir: (   0.00 ;    0.00 ;    1.00) "
                  L"  min: -1234.50 SET ; max:    0.00 unset hook=4 (0.500, 0.000, 0.000)"));
}

}  // namespace
