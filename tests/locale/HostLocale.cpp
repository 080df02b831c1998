#include <langinfo.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <locale>
#include <string>
#include <string_view>

// The locale that KORVO_TEST_LOCALE names is set before `main`, for C and for C++, as a host may do
// that follows its user's settings. A test under a locale that isn't what it should be would prove
// nothing, so the program fails then.
//
// Locales are those of the build folder alone: LOCPATH keeps the C library from any others.
namespace {

[[noreturn]] void fail(const char* name, const char* problem) {
  std::fprintf(stderr, "KORVO_TEST_LOCALE=%s: %s (looked for in %s)\n", name, problem,
               KORVO_LOCALES);
  std::_Exit(EXIT_FAILURE);
}

void setForC(const char* name) {
  if (std::setlocale(LC_ALL, name) == nullptr) fail(name, "there is no such locale");
  char printed[8];
  std::snprintf(printed, sizeof printed, "%.1f", 1.5);
  const bool hasComma = std::strtod("1,5", nullptr) == 1.5 && std::string_view(printed) == "1,5";
  if (!hasComma) fail(name, "its numbers have no comma");
  const std::string_view wanted = name, charset = nl_langinfo(CODESET);
  if (!wanted.ends_with(charset)) fail(name, "its characters are encoded otherwise");
}

void setForCpp(const char* name) try {
  std::locale::global(std::locale(name));
  if (std::use_facet<std::numpunct<char>>(std::locale()).grouping().empty()) {
    fail(name, "its thousands are not grouped");
  }
} catch (const std::exception& e) {
  fail(name, e.what());
}

const bool isSet = [] {
  const char* name = std::getenv("KORVO_TEST_LOCALE");
  if (name == nullptr) return false;
  setenv("LOCPATH", KORVO_LOCALES, 1);
  setForCpp(name);  // which sets that of C, too
  setForC(name);
  return true;
}();

}  // namespace
