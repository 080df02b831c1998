#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

#include "platform/zgeo/UTools.h"

namespace korvo::test {

/// Collects the trace while it lives, and fails the running test for every line that the test did
/// not claim: a text that nobody expects is a finding, whatever the results say.
///
/// Put back on destruction: the sink that was set before. Lines may come from any thread.
class TraceCapture : public zgeo::UTraceSink {
 public:
  TraceCapture();
  ~TraceCapture() override;
  TraceCapture(const TraceCapture&) = delete;
  TraceCapture& operator=(const TraceCapture&) = delete;

  /// The lines not claimed yet, in the order in which they ended.
  std::vector<std::wstring> lines() const;

  /// Removes the first line equal to `line`; whether there was one.
  bool claim(const std::wstring& line);

  /// Removes every line that starts with `prefix` (all lines for the empty one); their number.
  int claimAll(const std::wstring& prefix = L"");

  void line(const std::wstring& text, std::chrono::system_clock::time_point time) override;

 private:
  mutable std::mutex mutex_;
  std::vector<std::wstring> lines_;
  zgeo::UTraceSink* const previous_;
};

/// A test in which every traced line has to be claimed.
class TracedTest : public testing::Test {
 protected:
  TraceCapture trace;
};

/// `text` as UTF-8, for failure messages.
std::string narrow(const std::wstring& text);

}  // namespace korvo::test
