#include "toolkit/Text.h"

namespace {

TEST(Text, WideTextBecomesUtf8) {
  EXPECT_EQ(korvo::toUtf8(L"axis \u00e9 \u20ac"), "axis \xC3\xA9 \xE2\x82\xAC");
}

TEST(Text, CharactersBeyondTheFirstPlaneTakeFourBytes) {
  EXPECT_EQ(korvo::toUtf8(L"\U0001F600"), "\xF0\x9F\x98\x80");
}

TEST(Text, WhatIsNoCharacterIsReplaced) {
  const wchar_t broken[] = {static_cast<wchar_t>(0xD800), 0};
  EXPECT_EQ(korvo::toUtf8(broken), "\xEF\xBF\xBD");
}

TEST(Text, Utf8ComesBack) {
  EXPECT_EQ(korvo::toWide("t\xC3\xAAte"), L"t\u00eate");
  EXPECT_EQ(korvo::toWide(""), L"");
}

TEST(Text, BytesThatAreNotUtf8AreLatin1) { EXPECT_EQ(korvo::toWide("t\xEAte"), L"t\u00eate"); }

}  // namespace
