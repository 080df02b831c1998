#include "kinematics/LoadTrace.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "platform/zgeo/UTools.h"

namespace {

using Lines = std::vector<std::wstring>;

/// Keeps the lines traced while it lives.
class Recorder : public zgeo::UTraceSink {
 public:
  Recorder() : previous_(zgeo::UTools::_setTraceSink(this)) {}
  ~Recorder() override { zgeo::UTools::_setTraceSink(previous_); }
  void line(const std::wstring& text, std::chrono::system_clock::time_point) override {
    lines.push_back(text);
  }
  Lines lines;

 private:
  zgeo::UTraceSink* previous_;
};

TEST(LibraryLoad, TracesOneLineWhenLoadedAndOneWhenUnloaded) {
  Recorder recorder;
  void* library = dlopen(KORVO_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  EXPECT_EQ(recorder.lines, Lines({L"korvo_kinematics | DllMain (PROCESS_ATTACH)"}));
  recorder.lines.clear();
  dlclose(library);
  EXPECT_EQ(recorder.lines, Lines({L"korvo_kinematics | DllMain (PROCESS_DETACH)"}));
}

TEST(LibraryLoad, NewThreadsTraceNothingWhereTheLoaderDoesNotReportThem) {
  Recorder recorder;
  void* library = dlopen(KORVO_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  recorder.lines.clear();
  std::thread([] {}).join();
  EXPECT_TRUE(recorder.lines.empty());
  dlclose(library);
}

TEST(LibraryLoad, EveryReasonHasItsOwnText) {
  Recorder recorder;
  for (unsigned long reason = 0; reason < 5; ++reason) zkin::traceLoadReason(reason);
  EXPECT_EQ(recorder.lines, Lines({L"korvo_kinematics | DllMain (PROCESS_DETACH)",
                                   L"korvo_kinematics | DllMain (PROCESS_ATTACH)",
                                   L"korvo_kinematics | DllMain (THREAD_ATTACH)",
                                   L"korvo_kinematics | DllMain (THREAD_DETACH)"}));
}

}  // namespace
